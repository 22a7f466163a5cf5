#include "CSLogger.h"
#include "DesiredObject.h"
#include "DesiredWalk.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "RunStatement.h"
#include "Staging.h"
#include "StoreConnection.h"
#include "StoreStatements.h"

namespace NimbConfigStore
{
namespace
{
using NimbSchemaStore::SchemaObjectId;
using NimbSchemaStore::SchemaObjectPtr;

/// An object, an array, or "DELETE_DEFAULT": nothing else can be staged, and a shared object that the document does
/// hold must not be taken for one that it leaves out.
bool CanBeStaged(const JsonValue& value, const SchemaObjectPtr& schema)
{
    return value.IsObject() || value.IsArray() || (value.IsString() && schema->HasMutableDefaultConfig());
}

bool IsValid(const SchemaObjectId& id, const JsonValue& value, const SchemaObjectPtr& schema)
{
    const std::string name = id.toString();
    if (schema == nullptr) {
        CSLogger::Log(CSLogger::ERROR, "Schema not found for %s", name.c_str());
    } else if (ValidateUserObject(schema->GetSchema(), value, name, schema->HasMutableDefaultConfig()) &&
               CanBeStaged(value, schema)) {
        return true;
    }
    CSLogger::Log(CSLogger::ERROR, "Validation failed for configuration {%s}", name.c_str());
    return false;
}

void StageValue(JsonAllocator& allocator, const DBStore::ConnectionPtr& connection, const SchemaObjectPtr& schema,
                JsonValue& value)
{
    if (!value.IsString()) {
        ProcessDesiredInstances(allocator, connection, schema, value);
    } else if (!StageAction(connection, schema->GetId(), BOOT_ACTION_DELETE)) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Write desired config failed");
    }
}

/// Every key is checked before the first failure counts, so that the log tells them all.
void StageValues(JsonDocument& desired, const DBStore::ConnectionPtr& connection)
{
    const NimbSchemaStore::SchemaObjectCachePtr cache = NimbSchemaStore::SchemaStore::GetStore(false)->GetCache();
    bool valid = true;
    ForEachObject(desired, [&](const SchemaObjectId& id, JsonValue& value) {
        const SchemaObjectPtr schema = cache->Find(id);
        if (IsValid(id, value, schema)) {
            StageValue(desired.GetAllocator(), connection, schema, value);
        } else {
            valid = false;
        }
    });
    if (!valid) {
        throw ConfigStoreException(
            CS_ERROR_OPERATION,
            "Failed to validate smartnic configuration, Check logs for specific validation errors.");
    }
}

void StageUnmentionedObjects(const DBStore::ConnectionPtr& connection)
{
    RunOrThrow(connection, Statements::STAGE_UNMENTIONED_SHARED,
               "Failed to initialize the configuration for smartnic.");
}
}  // namespace

void SetDesiredSmartnicConfiguration(rapidjson::Document& desired)
{
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    AttachedSchemaStore schemas(store);
    if (!schemas.IsAttached()) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to attach schema store");
    }
    StoreTransaction change(store);
    if (!change.IsOpen()) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to start set desired transaction");
    }
    try {
        EmptyStaging(store);
        StageValues(desired, store);
        StageUnmentionedObjects(store);
        StageBootMode(BOOTMODE_SMARTNIC);
        CommitStaging(change);
        (void)schemas.Detach();  // logged there; what is committed stands
        CSLogger::Log(CSLogger::INFO, "Desired configuration set for smartnic.");
    } catch (const std::exception& failure) {
        throw StagingFailure("SetDesiredSmartnicConfiguration", failure);
    }
}
}  // namespace NimbConfigStore
