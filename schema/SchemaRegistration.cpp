#include "SchemaRegistration.h"

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "JsonText.h"
#include "StorePaths.h"
#include "ZubEvents.h"

namespace NimbConfigStore
{
namespace
{
bool IsForThisSide(const JsonValue& element, bool nimbio)
{
    if (!ConfigStoreDocument::ValueExists(element, "smartnic")) {
        return !nimbio;
    }
    const std::string placement = TextMember(element["smartnic"], "schema");
    return placement == "nimb-shared" || (placement == "nimbio-only" && nimbio);
}

void RegisterElement(const std::string& schemaId, const JsonValue& element, const RegistrationRun& run)
{
    const std::string key = TextMember(element, "key");
    const std::string group = TextMember(element, "group");
    const std::string component = TextMember(element, "component");
    const bool isNamed = !key.empty() && !group.empty() && !component.empty();
    if (isNamed && run.placement && !IsForThisSide(element, run.nimbio)) {
        CSLogger::Log(CSLogger::INFO, "[SchemaProcessor]: Skipping schema %s/%s/%s for nimbio=%d", component.c_str(),
                      group.c_str(), key.c_str(), run.nimbio ? 1 : 0);
        return;
    }
    std::string text;
    ConfigStoreDocument::SerializeValue(element, text);
    // Without a name too: the store refuses it, and so learns that the file is not complete.
    NimbSchemaStore::SetSchema(schemaId, component, group, key, text, run.store,
                               ConfigStoreDocument::ValueExists(element, "smartnic"));
}

void RegisterElements(const SchemaFile& file, const RegistrationRun& run)
{
    for (const JsonValue& element : RequiredArray(*file.document->document, "data").GetArray()) {
        RegisterElement(file.schemaId, element, run);
    }
    CSLogger::Log(CSLogger::INFO, "[SchemaProcessor] Schema file processed successfully");
}

bool IsAccepted(const SchemaFile& file, const RegistrationRun& run)
{
    if (file.schemaId.empty()) {
        DumpZub(ZUB_SCHEMA_METADATA_ERROR, 1, file.name.c_str());
        CSLogger::Log(CSLogger::ERROR, "[SchemaProcessor] Invalid format in schema file %s", file.name.c_str());
        return false;
    }
    if (!run.expectedIds.contains(file.schemaId)) {
        DumpZub(ZUB_SCHEMA_VALIDATION_ERROR, 1, file.name.c_str());
        CSLogger::Log(CSLogger::ERROR, "[SchemaProcessor] Schema-id '%s' does not align with expected schema-ids.",
                      file.schemaId.c_str());
        return false;
    }
    return true;
}
}  // namespace

bool ProcessSchemaFile(SchemaFile& file, const RegistrationRun& run)
{
    CSLogger::Log(CSLogger::INFO, "Processing schema file '%s'.", file.name.c_str());
    try {
        if (file.document == nullptr) {
            file = ReadSchemaFile(file.name, SCHEMA_FOLDER);
        }
        if (IsAccepted(file, run)) {
            RegisterElements(file, run);
        }
        return true;
    } catch (const ConfigStoreException& error) {
        CSLogger::Log(CSLogger::ERROR, "[SchemaProcessor] %s: %s", file.name.c_str(), error.what());
        CSLogger::Log(CSLogger::ERROR, "[SchemaProcessor] Schema file has errors.");
    } catch (const std::exception& error) {
        CSLogger::Log(CSLogger::ERROR, "[SchemaProcessor] Failed to process schema file: %s", error.what());
    }
    DumpZub(ZUB_SCHEMA_FILE_ERROR, 1, file.name.c_str());
    return false;
}
}  // namespace NimbConfigStore
