#pragma once

#include <string>

#include "DesiredDocument.h"
#include "StagingTest.h"
#include "StoreConnection.h"

/// Lines that a document with nothing in it leaves in the log.
inline constexpr const char* NO_SWITCHES = "info GNX objects are not getting deleted, skip GNX special-handling logic";
inline constexpr const char* SOLUTION_USERS =
    "info Found 2 solutionInstances for id='nimb/authentication/user_accounts'";
inline constexpr const char* NO_TCON =
    "debug 'tcon' is not among the solutionInstances of id='nimb/authentication/user_accounts'";
inline constexpr const char* NO_PERMISSIONS = "info Found 0 permissions in ConfigStore";
inline constexpr const char* OPTIONS = "info Successfully preserved BRX user-var advanced options.";

/// Whole documents on the host of StagingTest, without the exported call around them.
class DesiredDocumentTest : public StagingTest
{
protected:
    static void Process(NimbConfigStore::JsonDocument& document)
    {
        NimbConfigStore::ProcessDesiredDocument(document,
                                                NimbConfigStore::GetDBConnection(DBStore::Type::ConfigStore, true));
    }

    static void Process(const std::string& text)
    {
        NimbConfigStore::JsonDocument document = Parsed(text);
        Process(document);
    }

    static void ProcessNetwork(const std::string& keys) { Process(R"({"nimb": {"network": {)" + keys + "}}}"); }

    static std::string Failure(const std::string& text = "{}")
    {
        return ThrownBy([&] { Process(text); });
    }

    void PreserveTheNetwork()
    {
        Host().WithFeatures(R"({"preserveNetworkConfiguration": true})");
        Host().WriteFile("/etc/talvor/host_configuration.json", "");
    }

    /// Rows of DefaultConfig, as SQL writes lists of values: group, key, identifier, value, vital and cached value.
    void Default(const std::string& values)
    {
        Host().Sql(
            "INSERT INTO DefaultConfig (Component, ConfigGroup, Name, Identifier, Value, VitalValue, CachedValue, "
            "Version) SELECT 'nimb', *, '8' FROM (VALUES " +
            values + ")");
    }
};
