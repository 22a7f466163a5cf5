#pragma once

#include <string>
#include <vector>

#include "TestHost.h"

/// A test on an installed host between two boots: its packages' schemas are registered, its boot file system is
/// remembered. Its objects, all of component "nimb" and all but the keyboard part of desired documents:
///   network/dns         singleton, default configuration that users may change
///   network/vswitch     instances, shared with a SmartNIC
///   security/accounts   instances, of which "root" is excluded from whole documents
///   system/keyboard     singleton, reports its success itself
/// It declares the file /etc/declared.conf and the data-file key samples of component "sampler".
class BootHostTest : public HostTest
{
protected:
    BootHostTest();

    /// A row of Config with a user value, a JSON text; @p object like "network/dns".
    void AddRow(const std::string& object, const std::string& identifier, const std::string& userValue);

    /// A staged row; @p action one of the words of BootAction.
    void StageRow(const std::string& object, const std::string& identifier, const std::string& value,
                  const std::string& action = "SET");

    void SetKey(const std::string& key, const std::string& value);

    /// Copies the stores as they stand to where the next boot restores them from.
    void SaveBackup();

    /// The user value of a row; "none" without the row, "NULL" for no value.
    std::string UserValue(const std::string& object, const std::string& identifier = "");

    /// Every row of every table in a fixed order, without the times of creation.
    std::string DumpStore(DBStore::Type type);
};
