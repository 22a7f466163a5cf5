#include "DesiredDocument.h"

#include <set>

#include "CSLogger.h"
#include "DesiredObject.h"
#include "DesiredWalk.h"
#include "HostUtil.h"
#include "NimbSchemaStore.h"
#include "Preservation.h"
#include "StorePaths.h"

namespace NimbConfigStore
{
namespace
{
using NimbSchemaStore::SchemaObjectCache;
using NimbSchemaStore::SchemaObjectId;

/// On a host whose network is managed elsewhere, documents leave it alone.
bool IsNetworkPreserved()
{
    return FeatureState_InitSilentMode().preserveNetworkConfiguration && File_Exists(HOST_CONFIGURATION_FILE);
}

bool BelongsToNetwork(const SchemaObjectId& id)
{
    return id.name == ORVNICS || (id.group == SWITCHES_GROUP && id.name == SWITCHES);
}

void StageValue(JsonAllocator& allocator, const DBStore::ConnectionPtr& connection,
                const NimbSchemaStore::SchemaObjectPtr& schema, JsonValue& value)
{
    if (value.IsObject() || value.IsArray()) {
        ProcessDesiredInstances(allocator, connection, schema, value);
    } else if (value == "DELETE_DEFAULT") {
        const SchemaObjectId& id = schema->GetId();
        CSLogger::Log(CSLogger::INFO, "Default configuration for comp:%s, group:%s key:%s will be deleted.",
                      id.component.c_str(), id.group.c_str(), id.name.c_str());
    }
}

/// Stages what the document says. @return the objects with a default that users may change which it does not mention.
std::set<SchemaObjectId> StageValues(JsonDocument& desired, const DBStore::ConnectionPtr& connection,
                                     const SchemaObjectCache& cache, bool networkPreserved)
{
    const std::vector<SchemaObjectId> mutableIds = cache.GetMutableDefaultConfigIds();
    std::set<SchemaObjectId> unmentioned(mutableIds.begin(), mutableIds.end());
    ForEachObject(Profile(desired), [&](const SchemaObjectId& id, JsonValue& value) {
        const NimbSchemaStore::SchemaObjectPtr schema = cache.Get(id);
        unmentioned.erase(id);
        if (!networkPreserved || !BelongsToNetwork(id)) {
            StageValue(desired.GetAllocator(), connection, schema, value);
        }
    });
    return unmentioned;
}
}  // namespace

void ProcessDesiredDocument(JsonDocument& desired, const std::shared_ptr<DBStore::StoreConnection>& connection)
{
    const NimbSchemaStore::SchemaObjectCachePtr cache = NimbSchemaStore::SchemaStore::GetStore(false)->GetCache();
    const bool networkPreserved = IsNetworkPreserved();
    const std::set<SchemaObjectId> unmentioned = StageValues(desired, connection, *cache, networkPreserved);
    if (networkPreserved) {
        PreserveNetwork(connection);
    } else {
        PreserveSwitches(connection, *cache);
    }
    StageMutableDefaults(connection, *cache, unmentioned);
    PreserveSolutionUserPermissions(connection, *cache);
    PreserveAgentOptions(connection);
}
}  // namespace NimbConfigStore
