#include <cstddef>
#include <cstdlib>
#include <new>
#include <set>

#include "CSLogger.h"
#include "ConfigSplit.h"
#include "ConfigStoreDocument.h"
#include "DBStore.h"
#include "DefaultConfigErrors.h"
#include "Errors.h"
#include "HostUtil.h"
#include "InstanceId.h"
#include "JsonText.h"
#include "JsonValidator.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "RunStatement.h"
#include "SchemaFiles.h"
#include "StoreConnection.h"
#include "StorePaths.h"
#include "StoreStatements.h"
#include "StoreTransaction.h"

namespace NimbConfigStore
{
namespace
{
using NimbSchemaStore::SchemaObjectId;
using NimbSchemaStore::SchemaObjectPtr;

const std::set<int> RULES{JsonValidator::RULE_TYPES, JsonValidator::RULE_PRESENCE, JsonValidator::RULE_VALUES,
                          JsonValidator::RULE_ARRAYS, JsonValidator::RULE_MEMBERS};

// Enough for the parts of most instances; the pool grows by as much for larger ones.
constexpr std::size_t PARTS_BYTES = 4096;

/// What one rebuild of the table works with.
struct DefaultConfigRun
{
    DBStore::ConnectionPtr connection;
    NimbSchemaStore::SchemaStorePtr schemas;
    bool nimbio;
    bool versioning;
};

/// One instance as it will be written. A part that nothing belongs to is NULL.
struct DefaultRow
{
    std::string identifier;
    std::optional<std::string> user;
    std::optional<std::string> vital;
    std::optional<std::string> cached;
};

/// One element of a file, ready to be written: no row when it has errors.
struct DefaultEntry
{
    SchemaObjectId id{"", "", ""};
    std::string version;
    std::vector<DefaultRow> rows;
};

std::optional<std::string> PartText(const std::map<std::string, JsonValue>& parts, const char* className)
{
    const auto part = parts.find(className);
    if (part == parts.end()) {
        return std::nullopt;
    }
    std::string text;
    ConfigStoreDocument::SerializeValue(part->second, text);
    return text;
}

DefaultRow MakeRow(const std::string& identifier, const JsonValue& instance, const SchemaObjectPtr& schema)
{
    alignas(std::max_align_t) char memory[PARTS_BYTES];
    JsonAllocator allocator(memory, sizeof memory, sizeof memory);
    const std::map<std::string, JsonValue> parts = SplitConfig(instance, schema->GetInstanceSchema(), allocator);
    return {identifier, PartText(parts, "user"), PartText(parts, "vital"), PartText(parts, "cached")};
}

/// The instance that a finding's place ("/N/…") lies in, as far as it has an identifier.
std::string IdentifierAt(const std::string& place, const JsonValue& value, const SchemaObjectPtr& schema)
{
    const std::string& property = schema->GetInstanceIdProperty();
    if (!value.IsArray() || property.empty() || place.size() < 2) {
        return "";
    }
    const unsigned long index = std::strtoul(place.c_str() + 1, nullptr, 10);
    if (index >= value.Size()) {
        return "";
    }
    return TextMember(value[static_cast<rapidjson::SizeType>(index)], property.c_str());
}

bool IsValid(const SchemaObjectId& id, const JsonValue& value, const SchemaObjectPtr& schema,
             DefaultConfigErrors& errors)
{
    JsonDocument report;
    JsonValidator::Validate(schema->GetSchema(), value, report, RULES, "");
    for (const JsonValue& finding : report.GetArray()) {
        const std::string place = JsonText(finding["field"]);
        errors.Add(id, IdentifierAt(place, value, schema), place + ": " + JsonText(finding["error"]));
    }
    if (!report.Empty()) {
        CSLogger::Log(CSLogger::ERROR, "Validation failed for key: %s", id.name.c_str());
    }
    return report.Empty();
}

JsonValue& DefaultValue(JsonValue& element, bool nimbio)
{
    if (nimbio && ConfigStoreDocument::ValueExists(element, "nimbio_config")) {
        return element["nimbio_config"];
    }
    if (!ConfigStoreDocument::ValueExists(element, "config")) {
        throw ConfigStoreException(CS_ERROR_JSON_TYPE, "JSON error: member \"config\" is missing");
    }
    return element["config"];
}

std::vector<DefaultRow> MakeRows(JsonValue& value, const SchemaObjectPtr& schema, JsonAllocator& allocator)
{
    if (!value.IsArray() || !schema->IsMultiInstance()) {
        return {MakeRow("", value, schema)};
    }
    std::vector<DefaultRow> rows;
    for (JsonValue& instance : value.GetArray()) {
        PopulateGeneratedInstanceId(schema->GetInstanceSchema(), instance, allocator);
        rows.push_back(MakeRow(GetInstanceIdFromValue(instance, schema), instance, schema));
    }
    return rows;
}

void FillEntry(DefaultEntry& entry, JsonValue& element, JsonAllocator& allocator, const DefaultConfigRun& run,
               DefaultConfigErrors& errors)
{
    entry.id.name = RequiredText(element, "key");
    entry.id.component = RequiredText(element, "component");
    entry.id.group = RequiredText(element, "group");
    const SchemaObjectPtr schema =
        NimbSchemaStore::GetSchema(entry.id.component, entry.id.group, entry.id.name, run.schemas);
    if (schema == nullptr) {
        errors.Add(entry.id, "", "Schema not found");
        return;
    }
    JsonValue& value = DefaultValue(element, run.nimbio);
    if (IsValid(entry.id, value, schema, errors)) {
        entry.version = schema->GetVersion();
        entry.rows = MakeRows(value, schema, allocator);
    }
}

/// Everything that can be wrong with an element is found here, so that a failed one writes nothing.
DefaultEntry ReadEntry(JsonValue& element, JsonAllocator& allocator, const DefaultConfigRun& run,
                       DefaultConfigErrors& errors)
{
    DefaultEntry entry;
    try {
        FillEntry(entry, element, allocator, run, errors);
    } catch (const std::bad_alloc&) {
        throw;  // no mistake of the element: it would be dropped from the defaults
    } catch (const std::exception& error) {
        errors.Add(entry.id, "", error.what());
    }
    return entry;
}

void WriteRow(const DefaultEntry& entry, const DefaultRow& row, const DBStore::ConnectionPtr& connection)
{
    if (!RunStatement(connection, Statements::UPSERT_DEFAULT_CONFIG,
                      {entry.id.component, entry.id.group, entry.id.name, row.identifier, row.user, row.vital,
                       row.cached, entry.version})) {
        const std::string text =
            Format("Failed to write default config for %s/%s", entry.id.toString().c_str(), row.identifier.c_str());
        CSLogger::Log(CSLogger::ERROR, "%s", text.c_str());
        throw ConfigStoreException(CS_ERROR_OPERATION, text.c_str());
    }
}

/// A file whose version is unknown is not applied: it could replace a newer one's values.
const char* FileError(const SchemaFile& file, bool versioning)
{
    if (versioning && file.schemaId.empty()) {
        return "\"data\", \"metadata\", \"brevname\" or \"brevversion\" is missing";
    }
    const JsonDocument& document = *file.document->document;
    return ConfigStoreDocument::ValueExists(document, "data") && document["data"].IsArray()
               ? nullptr
               : "\"data\" is not an array";
}

void ProcessElements(const SchemaFile& file, const DefaultConfigRun& run, DefaultConfigErrors& errors)
{
    for (JsonValue& element : (*file.document->document)["data"].GetArray()) {
        const DefaultEntry entry = ReadEntry(element, *file.document->allocator, run, errors);
        for (const DefaultRow& row : entry.rows) {
            WriteRow(entry, row, run.connection);
        }
    }
}

/// False when the file has errors, which its error file then lists. @throws ConfigStoreException when it does not
/// parse or the store fails.
bool ProcessFile(SchemaFile& file, const DefaultConfigRun& run)
{
    CSLogger::Log(CSLogger::INFO, "Processing default config from '%s'", file.path.c_str());
    if (file.document == nullptr) {
        file.document = CreateDocumentFromFile(file.path);
    }
    DefaultConfigErrors errors;
    if (const char* error = FileError(file, run.versioning)) {
        errors.Add({"", "", ""}, "", error);
    } else {
        ProcessElements(file, run, errors);
    }
    if (errors.Empty()) {
        return true;
    }
    errors.Write(file.name);
    CSLogger::Log(CSLogger::ERROR, "Default configuration failed '%s'", file.name.c_str());
    return false;
}

bool ProcessFiles(std::list<SchemaFile>& files, const DefaultConfigRun& run)
{
    bool succeeded = true;
    for (SchemaFile& file : files) {
        if (file.superseded) {
            LogSuperseded(file);
            continue;
        }
        succeeded = ProcessFile(file, run) && succeeded;
        file.document.reset();
    }
    return succeeded;
}

bool RebuildDefaultConfig(bool nimbio)
{
    RemoveDefaultConfigErrors();
    const std::optional<std::list<std::string>> names = FindSchemaFiles(DEFAULT_CONFIG_FOLDER);
    if (!names) {
        CSLogger::Log(CSLogger::ERROR, "Failed to open %s", DEFAULT_CONFIG_FOLDER);
        return false;
    }
    const bool versioning = FeatureState_InitSilentMode().schemaVersioning;
    std::list<SchemaFile> files = OrderSchemaFiles(*names, DEFAULT_CONFIG_FOLDER, versioning);
    const DefaultConfigRun run{GetDBConnection(DBStore::Type::ConfigStore, true),
                               NimbSchemaStore::SchemaStore::GetStore(false), nimbio, versioning};
    // Before the table is emptied: a schema store that cannot be read would make every entry an entry with errors.
    (void)run.schemas->GetCache();
    StoreTransaction transaction(run.connection);
    if (!transaction.IsOpen()) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to begin default config transaction");
    }
    RunOrThrow(run.connection, Statements::EMPTY_DEFAULT_CONFIG, "Failed to cleanup default config");
    const bool succeeded = ProcessFiles(files, run);
    if (!transaction.Commit()) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to commit default config");
    }
    return succeeded;
}
}  // namespace

bool ProcessDefaultConfiguration(bool nimbio)
{
    CSLogger::Log(CSLogger::INFO, "Processing default configuration.");
    bool succeeded = false;
    try {
        succeeded = RebuildDefaultConfig(nimbio);
    } catch (const std::exception& error) {
        CSLogger::Log(CSLogger::ERROR, "DefaultConfiguration Failed %s", error.what());
    }
    CSLogger::Log(CSLogger::INFO, "Completed processing default configuration: %s.", succeeded ? "success" : "failure");
    return succeeded;
}
}  // namespace NimbConfigStore
