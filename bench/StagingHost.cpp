#include "StagingHost.h"

#include "NimbSchemaStore.h"

namespace
{
constexpr int KEYS_OF_A_GROUP = 10;

bool IsSingleton(int key)
{
    return key % KEYS_OF_A_GROUP == 0;
}

std::string Instance(int number)
{
    const std::string text = std::to_string(number);
    return R"({"id": "instance-)" + text + R"(", "name": "switch port )" + text +
           R"(", "enabled": true, "mtu": 1500, "mode": "trunk", "servers": ["ntp1.example.com", "ntp2.example.com"], )"
           R"("limits": {"low": 10, "high": )" +
           text + R"(, "unit": "Mbit/s"}, "comment": "as ordered by the network team, see the plan of the hall"})";
}

std::string Value(int key, int instances)
{
    std::string value = IsSingleton(key) ? "" : "[";
    for (int i = 0; i < instances; ++i) {
        value += (i > 0 ? ", " : "") + Instance(i);
    }
    return value + (IsSingleton(key) ? "" : "]");
}
}  // namespace

std::string StagingSchema(int key)
{
    return R"({"type": "object", "additionalProperties": false, "required": ["id", "name"],
  "description": "What object)" +
           std::to_string(key) + R"( configures",
  "properties": {
    "id": {"type": "string", "minLength": 1, "maxLength": 64, "instanceId": true},
    "name": {"type": "string", "minLength": 1, "maxLength": 64, "description": "What people call it"},
    "enabled": {"type": "boolean"},
    "mtu": {"type": "integer", "minimum": 1280, "maximum": 9190},
    "mode": {"enum": ["access", "trunk", "hybrid"]},
    "servers": {"type": "array", "maxItems": 8, "items": {"type": "string", "maxLength": 253}},
    "limits": {"type": "object", "additionalProperties": false, "properties": {
      "low": {"type": "integer", "minimum": 0}, "high": {"type": "integer", "minimum": 0},
      "unit": {"type": "string"}}},
    "comment": {"type": "string", "maxLength": 512}}})";
}

void FillStagingHost(TestHost& host)
{
    host.WithStores();
    const auto store = NimbSchemaStore::SchemaStore::GetStore(true);
    for (int key = 0; key < STAGING_KEYS; ++key) {
        const std::string group = "group" + std::to_string(key / KEYS_OF_A_GROUP);
        const std::string name = "object" + std::to_string(key);
        NimbSchemaStore::SetSchema("bench-1.0.0_1.0", "nimb", group, name,
                                   R"({"component": "nimb", "group": ")" + group + R"(", "key": ")" + name +
                                       R"(", "singleton": )" + (IsSingleton(key) ? "true" : "false") +
                                       R"(, "schema": )" + StagingSchema(key) + "}",
                                   store, false);
    }
    NimbSchemaStore::RemoveUndeclaredSchemas({}, store);
}

std::string StagingDocument(int objects)
{
    const int singletons = STAGING_KEYS / KEYS_OF_A_GROUP;
    const int arrays = STAGING_KEYS - singletons;
    std::string document = R"({"nimb": {)";
    for (int key = 0, array = 0; key < STAGING_KEYS; ++key) {
        if (IsSingleton(key)) {
            document += std::string(key > 0 ? "}, " : "") + "\"group" + std::to_string(key / KEYS_OF_A_GROUP) + "\": {";
        }
        // What does not divide evenly goes to the first ones.
        const int instances =
            IsSingleton(key) ? 1
                             : (objects - singletons) / arrays + (array++ < (objects - singletons) % arrays ? 1 : 0);
        document += std::string(IsSingleton(key) ? "" : ", ") + "\"object" + std::to_string(key) +
                    "\": " + Value(key, instances);
    }
    return document + "}}}";
}
