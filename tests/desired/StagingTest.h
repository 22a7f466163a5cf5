#pragma once

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <ostream>
#include <string>
#include <vector>

#include "ConfigStoreDocument.h"
#include "NimbConfigStore.h"
#include "StoreFault.h"
#include "TestHost.h"
#include "Thrown.h"

/// A host whose packages declare the objects that staging treats in a way of its own, and a few others. Of component
/// "nimb", all with text identifiers "id" unless said otherwise:
///   network/dns           singleton, version 2.5
///   network/routes        instances with generated identifiers
///   network/list          singleton whose value is an array
///   network/orvnics       instances
///   network_gnx/switches  instances, identified by their name
///   authentication/user_accounts, authorization/permissions, advanced_options/user_vars   instances
class StagingTest : public HostTest
{
protected:
    StagingTest()
    {
        Host().WithStores().WithPackage(
            "net", "1.0.0_0.1",
            R"([
            {"component": "nimb", "group": "network", "key": "dns", "version": "2.5", "schema": {"type": "object",
             "properties": {"ttl": {"type": "integer"}}}},
            {"component": "nimb", "group": "network", "key": "list", "schema": {"type": "array"}},
            {"component": "nimb", "group": "network", "key": "routes", "singleton": false, "schema": {"type": "object",
             "properties": {"cs_generated_id": {"type": "string", "instanceId": true}}}},
            {"component": "nimb", "group": "network_gnx", "key": "switches", "version": "3", "singleton": false,
             "schema": {"type": "object", "properties": {"name": {"type": "string", "instanceId": true}}}},)" +
                Instances("network", "orvnics") + "," +
                Instances("authentication", "user_accounts", R"("solutionUserInstances": ["druuser", "backup"],)") +
                "," + Instances("authorization", "permissions") + "," + Instances("advanced_options", "user_vars") +
                "]");
        RegisterSchemas();
    }

    void RegisterSchemas()
    {
        ASSERT_TRUE(NimbConfigStore::ProcessSchemas({}));
        Host().ClearLogs();
    }

    /// A schema element of instances, with further members.
    static std::string Instances(const std::string& group, const std::string& key, const std::string& members = "")
    {
        return R"({"component": "nimb", "group": ")" + group + R"(", "key": ")" + key + R"(", "singleton": false, )" +
               members +
               R"("schema": {"type": "object", "properties": {"id": {"type": "string", "instanceId": true}}}})";
    }

    static NimbConfigStore::JsonDocument Parsed(const std::string& text)
    {
        NimbConfigStore::JsonDocument document;
        EXPECT_TRUE(ConfigStoreDocument::ParseText(text, document)) << text;
        return document;
    }

    static std::string TextOf(const NimbConfigStore::JsonValue& value)
    {
        std::string text;
        ConfigStoreDocument::SerializeValue(value, text);
        return text;
    }

    /// Rows of Config, as SQL writes lists of values: group, key, identifier, user value, vital value.
    void Live(const std::string& values)
    {
        Host().Sql(
            "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue, VitalValue, Version) "
            "SELECT 'nimb', *, 'live' FROM (VALUES " +
            values + ")");
    }

    /// Every staged row as "key/identifier value vital action", by key and identifier.
    std::vector<std::string> Staged()
    {
        std::vector<std::string> rows;
        for (const Row& row : Host().Sql("SELECT Name || '/' || COALESCE(Identifier, 'NULL') || ' ' || COALESCE(Value, "
                                         "'NULL') || ' ' || COALESCE(VitalValue, 'NULL') || ' ' || "
                                         "COALESCE(BootAction, 'NULL') FROM DesiredUserConfig "
                                         "ORDER BY Name, Identifier, rowid")) {
            rows.push_back(*row[0]);
        }
        return rows;
    }

    std::string BootMode() { return Host().KeyValue("BOOT_MODE"); }

    /// An earlier staging with a mode of its own, which no failed call may touch.
    void StageEarlier()
    {
        Host().Sql(
            "INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name) VALUES ('nimb', 'network', 'earlier');"
            "INSERT INTO KeyValue (Key, Value) VALUES ('BOOT_MODE', '2')");
    }
    void ExpectEarlier()
    {
        EXPECT_THAT(Staged(), testing::ElementsAre("earlier/NULL NULL NULL NULL"));
        EXPECT_EQ(BootMode(), "2");
        EXPECT_THAT(Host().Log(),
                    testing::Not(testing::Contains(testing::StartsWith("info Desired configuration set"))));
    }
};

/// Work that the databases refuse, as StoreFault does, and what a staging call then throws.
struct Refusal
{
    int action;
    const char* argument;
    const char* failure;
};

inline void PrintTo(const Refusal& refusal, std::ostream* out)
{
    *out << refusal.failure;
}
