#include "Commands.h"
#include "HostEvents.h"
#include "InspectStatements.h"
#include "JsonChanges.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "ObjectPath.h"
#include "StoreReader.h"

using NimbSchemaStore::SchemaObject;
using NimbSchemaStore::SchemaObjectCachePtr;
using NimbSchemaStore::SchemaObjectId;

namespace ConfigStoreCtl
{
namespace
{
const std::vector<Column> SHOWN = {{"object", nullptr},
                                   {nullptr, "component"},
                                   {nullptr, "group"},
                                   {nullptr, "key"},
                                   {"version", "version"},
                                   {"multi-instance", "multiInstance"},
                                   {"instance identifier", "instanceId"},
                                   {"mutable default", "mutableDefault"},
                                   {"excluded instances", "excludedInstances"},
                                   {"solution user instances", "solutionUserInstances"},
                                   {"file", "filePath"},
                                   {"file persistence", "filePersistence"},
                                   {"file enabled", "fileEnabled"},
                                   {"schema", "schema"}};

SchemaObjectCachePtr ReadSchemas()
{
    RequireStore(DBStore::Type::SchemaStore);
    return NimbSchemaStore::SchemaStore::GetStore(false)->GetCache();
}

/// Tells what a registration run left behind, or why it failed.
void ReportRun(bool succeeded, CallWatch& watch, Output& output)
{
    if (!succeeded) {
        watch.ThrowErrors("failed; the log says why");
    }
    const StoreRow defaults = ReadRows(DBStore::Type::ConfigStore, Statements::COUNT_DEFAULTS).at(0);
    const auto objects = static_cast<std::int64_t>(ReadSchemas()->GetIds().size());
    output.Record({{{"schema objects", "schemaObjects"}, {"default rows", "defaultRows"}, {"events", "events"}},
                   {{objects, NumberOf(defaults[0]), EventTexts(watch.Events())}}});
}

/// The path of the file that the object declares, and how it persists.
std::vector<Field> FileFields(const SchemaObject& object)
{
    std::string persistence;
    std::string path;
    bool enabled = false;
    return {object.GetFilePath(path) ? Field(path) : Field(),
            object.GetFilePersistence(persistence) ? Field(persistence) : Field(),
            object.GetFileEnabled(enabled) ? Field(enabled) : Field()};
}
}  // namespace

void SchemaProcess(const Arguments& arguments, Output& output)
{
    CallWatch watch;
    ReportRun(NimbConfigStore::ProcessSchemas(arguments.values), watch, output);
}

void SchemaRefresh(const Arguments& arguments, Output& output)
{
    CallWatch watch;
    ReportRun(NimbConfigStore::RefreshConfigStore(arguments.All("--schema"), arguments.All("--module")), watch, output);
}

void SchemaList(const Arguments&, Output& output)
{
    const SchemaObjectCachePtr schemas = ReadSchemas();
    Listing listing{{{"OBJECT", nullptr},
                     {nullptr, "component"},
                     {nullptr, "group"},
                     {nullptr, "key"},
                     {"VERSION", "version"},
                     {"MULTI-INSTANCE", "multiInstance"},
                     {"MUTABLE DEFAULT", "mutableDefault"}},
                    {}};
    for (const SchemaObjectId& id : schemas->GetIds()) {
        const NimbSchemaStore::SchemaObjectPtr object = schemas->Get(id);
        listing.rows.push_back({id.toString(), id.component, id.group, id.name, object->GetVersion(),
                                object->IsMultiInstance(), object->HasMutableDefaultConfig()});
    }
    output.Table(listing);
}

void SchemaShow(const Arguments& arguments, Output& output)
{
    const std::vector<std::string> parts = SplitObjectPath(arguments.values[0]);
    const SchemaObjectId id(parts[0], parts[1], parts[2]);
    const NimbSchemaStore::SchemaObjectPtr object = ReadSchemas()->Find(id);
    if (object == nullptr) {
        throw CommandFailure(id.toString(), "no such object in the schema store");
    }
    const std::string& property = object->GetInstanceIdProperty();
    std::vector<Field> row{id.toString(),
                           id.component,
                           id.group,
                           id.name,
                           object->GetVersion(),
                           object->IsMultiInstance(),
                           property.empty() ? Field() : Field(property),
                           object->HasMutableDefaultConfig(),
                           object->GetExcludedInstances(),
                           object->GetSolutionUserInstances()};
    const std::vector<Field> file = FileFields(*object);
    row.insert(row.end(), file.begin(), file.end());
    row.emplace_back(JsonText{Serialized(object->GetInstanceSchema())});
    output.Record({SHOWN, {row}});
}
}  // namespace ConfigStoreCtl
