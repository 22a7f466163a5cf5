#include "LoadHost.h"

#include <filesystem>

#include "HostUtil.h"
#include "StorePaths.h"

namespace
{
constexpr int OBJECTS = 10;

const char* const INSTANCE_SCHEMA = R"({"type": "object", "additionalProperties": false, "required": ["id", "name"],
  "properties": {
    "id": {"type": "string", "instanceId": true, "description": "What tells the instance from the others"},
    "name": {"type": "string", "minLength": 1, "maxLength": 64, "description": "What people call it"},
    "enabled": {"type": "boolean", "description": "Whether it takes part"},
    "mtu": {"type": "integer", "minimum": 1280, "maximum": 9190, "description": "Largest packet in bytes"},
    "servers": {"type": "array", "maxItems": 8, "items": {"type": "string"}, "description": "In order of preference"},
    "mac": {"type": "string", "vital": true, "description": "Address that the host was given"},
    "state": {"type": "object", "cached": true, "properties": {"since": {"type": "integer"}}}}})";

std::string Package(int number)
{
    return "package" + std::to_string(number);
}

std::string Identity(int number, int object)
{
    return R"("component": ")" + Package(number) + R"(", "group": "group", "key": "object)" + std::to_string(object) +
           "\"";
}

std::string SchemaData(int number)
{
    std::string data;
    for (int object = 0; object < OBJECTS; ++object) {
        const std::string kind = object == 0 ? R"(, "schemaType": 5, "excludedInstances": ["kept"])" : "";
        data += (data.empty() ? "[{" : ",{") + Identity(number, object) + R"(, "singleton": false, )" +
                R"("dspIntegrated": true)" + kind + R"(, "schema": )" + INSTANCE_SCHEMA + "}";
    }
    return data + "]";
}

std::string DefaultData(int number)
{
    std::string data;
    for (int object = 0; object < OBJECTS; ++object) {
        data += (data.empty() ? "[{" : ",{") + Identity(number, object) +
                R"(, "config": [{"id": "one", "name": "first", "enabled": true, "mtu": 1500, "servers": ["a", "b"]}]})";
    }
    return data + "]";
}

void FillStore(const TestHost& host, const LoadSize& size)
{
    const std::string objects = std::to_string(size.schemaFiles * OBJECTS);
    const std::string rows = "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < " +
                             std::to_string(size.rows) + ") ";
    const std::string key = "'package' || (i % " + objects + ") / 10, 'group', 'object' || (i % 10), 'id' || i, ";
    const std::string value = R"('{"id":"id' || i || '","name":"instance","enabled":true,"mtu":1500}')";
    host.Sql(rows + "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue, Success) SELECT " + key +
             value + ", 1 FROM n");
    host.Sql(rows +
             "INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, Value, BootAction) SELECT " +
             key + value + ", 'SET' FROM n WHERE i % 10 = 0");
    host.Sql("INSERT OR REPLACE INTO KeyValue (Key, Value) VALUES ('BOOT_MODE', '1')");
}
}  // namespace

void FillLoadHost(TestHost& host, const LoadSize& size)
{
    using namespace NimbConfigStore;
    const std::string version = "1.0.0_1.0";
    for (int number = 0; number < size.descriptors; ++number) {
        const bool hasSchema = number < size.schemaFiles;
        host.WithPackage(Package(number), version, hasSchema ? SchemaData(number) : "", {"Vendor:any", "Class:driver"},
                         {Package(number) + ".td"});
        if (hasSchema) {
            host.WithDefaultConfig(Package(number), version, DefaultData(number));
        }
    }
    host.WithStores();
    FillStore(host, size);
    const auto copy = std::filesystem::copy_options::overwrite_existing;
    std::filesystem::copy_file(host.Real(CURRENT_STORE_FILE),
                               host.Real(std::string(BACKUP_FOLDER) + CURRENT_STORE_NAME), copy);
    std::filesystem::copy_file(host.Real(DATAFILE_STORE_FILE),
                               host.Real(std::string(BACKUP_FOLDER) + DATAFILE_STORE_NAME), copy);
}
