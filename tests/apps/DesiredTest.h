#pragma once

#include "CommandTest.h"

/// A host whose schemas declare every kind of object that staging and applying tell apart, and whose live rows are
/// worth preserving. All objects are of component "nimb", and all but the keyboard part of desired documents:
///   network/dns                    singleton with a default that users may change
///   network/routes                 instances with generated identifiers
///   network/vswitch                instances, shared with a SmartNIC
///   network/uplinks                instances with a mutable default, shared with a SmartNIC
///   network/orvnics, network_gnx/switches, authorization/permissions, advanced_options/user_vars   instances
///   authentication/user_accounts   instances; "root" is excluded from whole documents, "druuser" a solution user
///   system/keyboard                singleton, reports its success itself
class DesiredTest : public CommandTest
{
protected:
    void SetUp() override
    {
        Host()
            .WithStores()
            .WithPackage("net-core", "1.0.0_1.0", Schemas())
            .WithDefaultConfig("net-core", "1.0.0_1.0", R"([
                {"component": "nimb", "group": "network", "key": "dns", "config": {"servers": ["10.0.0.1"]}},
                {"component": "nimb", "group": "network", "key": "uplinks", "config": [{"name": "up0", "mtu": 1500}]}])");
        ASSERT_EQ(Run({"schema", "process"}).status, 0);
        ASSERT_EQ(Run({"boot", "finish"}).status, 0);
        Host().ClearLogs();
    }

    /// Rows of Config, as SQL writes lists of values: group, key, identifier, user value, vital value.
    void Live(const std::string& values)
    {
        Host().Sql(
            "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue, VitalValue, Version, Revision, "
            "Success, CreationTime) SELECT 'nimb', *, '1.0.0', 1, 1, '2026-01-02 03:04:05' FROM (VALUES " +
            values + ")");
    }

    /// What a host has in service: an adapter on a switch, two permissions, an option of the agent.
    void WithLiveRows()
    {
        Live(R"(
            ('network', 'dns', '', '{"servers":["10.0.0.9"]}', NULL),
            ('network', 'orvnics', 'orv0', '{"id":"orv0","port_connection_type":"GNX","gnx_port":{"port_key":"7"}}',
             NULL),
            ('network_gnx', 'switches', 'sw1', '{"name":"sw1","mtu":9000}', '{"uuid":"u1"}'),
            ('authorization', 'permissions', 'p1', '{"id":"p1","principal":"svc-qrm-7"}', '{"seen":1}'),
            ('authorization', 'permissions', 'p2', '{"id":"p2","principal":"alice"}', NULL),
            ('advanced_options', 'user_vars', 'BRX_IP', '{"id":"BRX_IP","value":"10.0.0.5"}', NULL))");
    }

    void SetEntry(const std::string& key, const std::string& value)
    {
        Host().Sql("INSERT OR REPLACE INTO KeyValue (Key, Value) VALUES ('" + key + "', '" + value + "')");
    }

    /// Stages a document with "desired VERB", which must succeed.
    Ran Stage(const std::string& verb, const std::string& document)
    {
        Input(document);
        Ran ran = Run({"desired", verb, "-"});
        EXPECT_EQ(ran.status, 0) << ran.errors;
        return ran;
    }

    /// Every staged row as "key/identifier value vital action", by key and identifier.
    std::vector<std::string> Staged()
    {
        std::vector<std::string> rows;
        for (const Row& row :
             Host().Sql("SELECT Name || '/' || COALESCE(Identifier, 'NULL') || ' ' || COALESCE(Value, 'NULL') || ' ' "
                        "|| COALESCE(VitalValue, 'NULL') || ' ' || COALESCE(BootAction, 'NULL') "
                        "FROM DesiredUserConfig ORDER BY Name, Identifier, rowid")) {
            rows.push_back(*row[0]);
        }
        return rows;
    }

private:
    static std::string Instances(const std::string& group, const std::string& key, const std::string& members = "",
                                 const std::string& property = "id")
    {
        return R"({"component": "nimb", "group": ")" + group + R"(", "key": ")" + key +
               R"(", "singleton": false, "dspIntegrated": true, )" + members +
               R"("schema": {"type": "object", "properties": {")" + property +
               R"(": {"type": "string", "instanceId": true}}}})";
    }

    static std::string Schemas()
    {
        return
            R"([{"component": "nimb", "group": "network", "key": "dns", "dspIntegrated": true,
             "mutableDefaultConfig": true, "schema": {"type": "object", "additionalProperties": false,
             "properties": {"servers": {"type": "array", "items": {"type": "string"}}}}},
            {"component": "nimb", "group": "system", "key": "keyboard", "noRestore": 0,
             "schema": {"type": "object", "properties": {"layout": {"type": "string"}}}},)" +
            Instances("network", "routes", "", "cs_generated_id") + "," +
            Instances("network", "vswitch", R"("smartnic": {"schema": "nimb-shared"},)", "name") + "," +
            Instances("network", "uplinks", R"("smartnic": {"schema": "nimb-shared"}, "mutableDefaultConfig": true,)",
                      "name") +
            "," + Instances("network", "orvnics") + "," + Instances("network_gnx", "switches", "", "name") + "," +
            Instances("authorization", "permissions") + "," + Instances("advanced_options", "user_vars") + "," +
            Instances("authentication", "user_accounts",
                      R"("schemaType": 5, "excludedInstances": ["root"], "solutionUserInstances": ["druuser"],)") +
            "]";
    }
};
