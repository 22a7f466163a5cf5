#include "BootHost.h"

#include <filesystem>

#include "NimbConfigStore.h"

namespace fs = std::filesystem;

namespace
{
constexpr const char* NETWORK_SCHEMAS = R"([
    {"component": "nimb", "group": "network", "key": "dns", "dspIntegrated": true, "mutableDefaultConfig": true,
     "schema": {"type": "object", "properties": {"hostname": {"type": "string"}}}},
    {"component": "nimb", "group": "network", "key": "vswitch", "singleton": false, "dspIntegrated": true,
     "smartnic": {"schema": "nimb-shared"},
     "schema": {"type": "object", "properties": {"name": {"type": "string", "instanceId": true},
                                                 "mtu": {"type": "integer", "cached": true}}}}])";

constexpr const char* SYSTEM_SCHEMAS = R"([
    {"component": "nimb", "group": "security", "key": "accounts", "singleton": false, "dspIntegrated": true,
     "schemaType": 5, "excludedInstances": ["root"],
     "schema": {"type": "object", "properties": {"name": {"type": "string", "instanceId": true}}}},
    {"component": "nimb", "group": "system", "key": "keyboard", "noRestore": 0,
     "schema": {"type": "object", "properties": {"layout": {"type": "string"}}}},
    {"component": "files", "group": "host", "key": "declared",
     "file": {"enabled": true, "persistence": "config", "path": "/etc/declared.conf"}},
    {"component": "sampler", "group": "data", "key": "samples", "dataFile": true}])";

constexpr const char* DNS_DEFAULT =
    R"([{"component": "nimb", "group": "network", "key": "dns", "config": {"hostname": "localhost"}}])";

std::string KeyColumns(const std::string& object, const std::string& identifier)
{
    const std::size_t slash = object.find('/');
    return "'nimb', '" + object.substr(0, slash) + "', '" + object.substr(slash + 1) + "', '" + identifier + "'";
}

std::string Text(const std::vector<Row>& rows)
{
    std::string text;
    for (const Row& row : rows) {
        for (const std::optional<std::string>& value : row) {
            text += value.value_or("NULL") + "|";
        }
        text += "\n";
    }
    return text;
}
}  // namespace

BootHostTest::BootHostTest()
{
    Host().WithPackage("net-core", "1.0.0_1.0", NETWORK_SCHEMAS);
    Host().WithPackage("sys-core", "2.1.0_1.0", SYSTEM_SCHEMAS);
    Host().WithDefaultConfig("net-core", "1.0.0_1.0", DNS_DEFAULT);
    Host().WithStores();
    EXPECT_TRUE(NimbConfigStore::ProcessSchemas({}));
    NimbConfigStore::CleanupBootState();
    Host().ClearLogs();
}

void BootHostTest::AddRow(const std::string& object, const std::string& identifier, const std::string& userValue)
{
    Host().Sql("INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, Revision, UserValue) VALUES (" +
               KeyColumns(object, identifier) + ", '1.0.0_1.0', 1, '" + userValue + "')");
}

void BootHostTest::StageRow(const std::string& object, const std::string& identifier, const std::string& value,
                            const std::string& action)
{
    Host().Sql(
        "INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, Version, Value, BootAction) "
        "VALUES (" +
        KeyColumns(object, identifier) + ", '1.0.0_1.0', '" + value + "', '" + action + "')");
}

void BootHostTest::SetKey(const std::string& key, const std::string& value)
{
    Host().Sql("INSERT OR REPLACE INTO KeyValue (Key, Value) VALUES ('" + key + "', '" + value + "')");
}

void BootHostTest::SaveBackup()
{
    for (const char* name : {"/current-store-1", "/datafile-store"}) {
        fs::copy_file(Host().Real("/etc/talvor/configstore") + name,
                      Host().Real("/var/lib/talvor/configstore/backup") + name, fs::copy_options::overwrite_existing);
    }
}

std::string BootHostTest::UserValue(const std::string& object, const std::string& identifier)
{
    const std::vector<Row> rows =
        Host().Sql("SELECT UserValue FROM Config WHERE (Component, ConfigGroup, Name, Identifier) = (" +
                   KeyColumns(object, identifier) + ")");
    return rows.empty() ? "none" : rows[0][0].value_or("NULL");
}

std::string BootHostTest::DumpStore(DBStore::Type type)
{
    std::string dump;
    for (const Row& table : Host().Sql("SELECT m.name, group_concat(c.name) FROM sqlite_schema AS m, "
                                       "pragma_table_info(m.name) AS c WHERE m.type = 'table' AND m.name NOT LIKE "
                                       "'sqlite_%' AND c.name <> 'CreationTime' GROUP BY m.name ORDER BY m.name",
                                       type)) {
        dump += *table[0] + ":\n";
        dump += Text(Host().Sql("SELECT " + *table[1] + " FROM " + *table[0] + " ORDER BY " + *table[1], type));
    }
    return dump;
}
