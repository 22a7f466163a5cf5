#include "DesiredObject.h"

#include <rapidjson/pointer.h>

#include <string>
#include <string_view>

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "ConfigStoreException.h"
#include "InstanceId.h"
#include "JsonText.h"
#include "RunStatement.h"
#include "Staging.h"
#include "StoreStatements.h"

namespace NimbConfigStore
{
namespace
{
constexpr const char* CONNECTION_TYPE = "port_connection_type";
constexpr const char* PORT = "gnx_port";
constexpr const char* PORT_BINDING[] = {"switch_uuid", "port_key", "connection_cookie"};

int ParseUserValue(void* context, int columns, char** values, char**)
{
    JsonDocument parsed;
    // What does not parse counts as no row: it holds no port that could be preserved.
    if (columns == 1 && values[0] != nullptr && ConfigStoreDocument::ParseText(values[0], parsed)) {
        static_cast<JsonDocument*>(context)->Swap(parsed);
    }
    return 0;
}

/// The user value of a live adapter; an empty object when there is none that parses.
JsonDocument ReadLiveOrvnic(const DBStore::ConnectionPtr& connection, const std::string& instanceId)
{
    JsonDocument live(rapidjson::kObjectType);
    RunOrThrow(connection, Statements::SELECT_LIVE_ORVNIC, "Read orvnic configuration failed", {instanceId},
               ParseUserValue, &live);
    if (!live.IsObject()) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Orvnic configuration is invalid.");
    }
    return live;
}

bool HoldsSwitchPort(const JsonValue& orvnic)
{
    return TextMember(orvnic, CONNECTION_TYPE) == "GNX" && ConfigStoreDocument::ValueExists(orvnic, PORT);
}

void PreservePortBinding(JsonAllocator& allocator, const DBStore::ConnectionPtr& connection,
                         const std::string& instanceId, JsonValue& desired)
{
    CSLogger::Log(CSLogger::INFO, "Desired Orvnic {%s} is connected to GNX", instanceId.c_str());
    const JsonDocument live = ReadLiveOrvnic(connection, instanceId);
    if (live.ObjectEmpty()) {
        CSLogger::Log(CSLogger::INFO, "Orvnic {%s} not found on NIMB host, no GNX configuration to preserve.",
                      instanceId.c_str());
        return;
    }
    if (!HoldsSwitchPort(desired) || !HoldsSwitchPort(live)) {
        return;
    }
    for (const char* name : PORT_BINDING) {
        if (ConfigStoreDocument::ValueExists(live[PORT], name)) {
            const rapidjson::Pointer place(("/" + std::string(PORT) + "/" + name).c_str());
            place.Create(desired, allocator).CopyFrom(live[PORT][name], allocator);
            CSLogger::Log(CSLogger::INFO, "Orvnic {%s} GNX %s perserved.", instanceId.c_str(), name);
        }
    }
}
}  // namespace

void ProcessDesiredObject(JsonAllocator& allocator, const std::shared_ptr<DBStore::StoreConnection>& connection,
                          const char* version, const char* component, const char* group, const char* key,
                          const std::shared_ptr<NimbSchemaStore::SchemaObject>& schemaObject, JsonValue& value)
{
    PopulateGeneratedInstanceId(schemaObject->GetInstanceSchema(), value, allocator);
    const std::string instanceId = GetInstanceIdFromValue(value, schemaObject);
    if (std::string_view(key) == ORVNICS) {
        PreservePortBinding(allocator, connection, instanceId, value);
    }
    std::string text;
    ConfigStoreDocument::SerializeValue(value, text);
    RunOrThrow(connection, Statements::STAGE_INSTANCE, "Write desired config failed",
               {instanceId, key, group, component, version, text, BOOT_ACTION_SET});
}

void ProcessDesiredInstances(JsonAllocator& allocator, const std::shared_ptr<DBStore::StoreConnection>& connection,
                             const std::shared_ptr<NimbSchemaStore::SchemaObject>& schemaObject, JsonValue& value)
{
    const NimbSchemaStore::SchemaObjectId& id = schemaObject->GetId();
    const auto process = [&](JsonValue& instance) {
        ProcessDesiredObject(allocator, connection, schemaObject->GetVersion().c_str(), id.component.c_str(),
                             id.group.c_str(), id.name.c_str(), schemaObject, instance);
    };
    if (!value.IsArray() || !schemaObject->IsMultiInstance()) {
        process(value);
        return;
    }
    for (JsonValue& instance : value.GetArray()) {
        process(instance);
    }
}
}  // namespace NimbConfigStore
