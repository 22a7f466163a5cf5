#pragma once

#include <string>
#include <vector>

#include "Json.h"
#include "TestHost.h"

/// A throwaway host that is a copy of the sample host, with empty stores.
class SampleHostTest : public HostTest
{
protected:
    SampleHostTest();

    /// Lays an overlay of the sample host over it, and removes what the overlay says is gone.
    void WithOverlay(const std::string& name);

    /// Installs the upgrade module as it was built. @return its logical path.
    std::string WithUpgradeModule();

    /// The first column of every row, in order.
    std::vector<std::string> Column(const std::string& sql, DBStore::Type type = DBStore::Type::ConfigStore);

    /// The elements of "data" of every file that counts below a logical folder (older versions of a package do not),
    /// in order of file names.
    std::vector<NimbConfigStore::JsonDocument> Elements(const std::string& folder);
};

/// COMPONENT/GROUP/KEY of an element of a schema or default-configuration file.
std::string ObjectName(const NimbConfigStore::JsonValue& element);

/// A file of the sources, as text and as a document. A missing one fails the test.
std::string SourceText(const std::string& path);
NimbConfigStore::JsonDocument SourceDocument(const std::string& path);
