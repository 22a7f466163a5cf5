#include "BootDocument.h"

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "DesiredWalk.h"
#include "HostUtil.h"
#include "InstanceId.h"
#include "JsonText.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "RunStatement.h"
#include "StorePaths.h"
#include "StoreStatements.h"

namespace NimbConfigStore
{
namespace
{
using NimbSchemaStore::SchemaObjectId;
using NimbSchemaStore::SchemaObjectPtr;

/// What the walk works with.
struct BootDocumentRun
{
    JsonAllocator& allocator;  // of the document
    DBStore::ConnectionPtr connection;
    NimbSchemaStore::SchemaObjectCachePtr cache;
};

void WriteInstance(const BootDocumentRun& run, const SchemaObjectId& id, const SchemaObjectPtr& schema,
                   JsonValue& value)
{
    PopulateGeneratedInstanceId(schema->GetInstanceSchema(), value, run.allocator);
    const std::string instanceId = GetInstanceIdFromValue(value, schema);
    std::string text;
    ConfigStoreDocument::SerializeValue(value, text);
    RunOrThrow(run.connection, Statements::UPSERT_USER_CONFIG, "Write user config failed",
               {instanceId, id.name, id.group, id.component, schema->GetVersion(), text});
}

void WriteObject(const BootDocumentRun& run, const SchemaObjectId& id, const SchemaObjectPtr& schema, JsonValue& value)
{
    if (value.IsArray() && schema->IsMultiInstance()) {
        for (JsonValue& instance : value.GetArray()) {
            WriteInstance(run, id, schema, instance);
        }
    } else if (value.IsObject() || value.IsArray()) {
        WriteInstance(run, id, schema, value);
    } else {
        CSLogger::Log(CSLogger::INFO, "Default configuration for %s will be deleted.", id.toString().c_str());
    }
}

bool IsEmpty(const JsonValue& value)
{
    return value.IsNull() || (value.IsObject() && value.ObjectEmpty()) || (value.IsArray() && value.Empty());
}

/// The value is an object, an array, or "DELETE_DEFAULT": nothing else can be written.
bool HasWritableType(const JsonValue& value, const SchemaObjectPtr& schema)
{
    return value.IsObject() || value.IsArray() || (value.IsString() && schema->HasMutableDefaultConfig());
}

void ApplyObject(const BootDocumentRun& run, const SchemaObjectId& id, JsonValue& value)
{
    const std::string text = id.toString();
    const SchemaObjectPtr schema = run.cache->Find(id);
    if (schema == nullptr) {
        CSLogger::Log(CSLogger::ERROR, "Schema not found for %s, skipping", text.c_str());
        return;
    }
    if (!ValidateUserObject(schema->GetSchema(), value, text, schema->HasMutableDefaultConfig()) ||
        !HasWritableType(value, schema)) {
        CSLogger::Log(CSLogger::ERROR, "Validation failed for %s, skipping", text.c_str());
        return;
    }
    if (schema->HasMutableDefaultConfig()) {
        RunOrThrow(run.connection, Statements::DELETE_OBJECT_ROWS, "Delete mutable default config failed",
                   {id.name, id.group, id.component});
    }
    WriteObject(run, id, schema, value);
}

void ApplyKey(const BootDocumentRun& run, const SchemaObjectId& id, JsonValue& value)
{
    if (IsEmpty(value)) {
        CSLogger::Log(CSLogger::ERROR, "%s is empty, skipping", id.toString().c_str());
        return;
    }
    try {
        ApplyObject(run, id, value);
    } catch (const std::exception& error) {
        CSLogger::Log(CSLogger::ERROR, "%s: %s, skipping", error.what(), id.toString().c_str());
    }
}

void ApplyGroup(const BootDocumentRun& run, const std::string& component, const std::string& group, JsonValue& keys)
{
    if (!keys.IsObject()) {
        CSLogger::Log(CSLogger::ERROR, "/%s/%s is invalid, skipping", component.c_str(), group.c_str());
        return;
    }
    for (auto& member : keys.GetObject()) {
        ApplyKey(run, {component, group, JsonText(member.name)}, member.value);
    }
}

void ApplyComponent(const BootDocumentRun& run, const std::string& component, JsonValue& groups)
{
    if (!groups.IsObject()) {
        CSLogger::Log(CSLogger::ERROR, "/%s is invalid, skipping", component.c_str());
        return;
    }
    for (auto& member : groups.GetObject()) {
        ApplyGroup(run, component, JsonText(member.name), member.value);
    }
}
}  // namespace

void ApplyBootDocument(const std::shared_ptr<DBStore::StoreConnection>& connection)
{
    if (!File_Exists(BOOT_DOCUMENT_FILE)) {
        return;
    }
    CSLogger::Log(CSLogger::INFO, "Processing boot document %s", BOOT_DOCUMENT_FILE);
    const std::shared_ptr<JsonDoc> document = CreateDocumentFromFile(BOOT_DOCUMENT_FILE);
    const BootDocumentRun run{*document->allocator, connection,
                              NimbSchemaStore::SchemaStore::GetStore(false)->GetCache()};
    JsonValue& root = Profile(*document->GetJsonValuePtr());
    if (!root.IsObject()) {
        CSLogger::Log(CSLogger::ERROR, "Failed to process, document should be an object");
        return;
    }
    for (auto& member : root.GetObject()) {
        ApplyComponent(run, JsonText(member.name), member.value);
    }
    CSLogger::Log(CSLogger::INFO, "Boot document processed.");
}
}  // namespace NimbConfigStore
