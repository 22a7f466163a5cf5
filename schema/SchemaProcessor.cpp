#include "CSLogger.h"
#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "NimbConfigUpgrade.h"
#include "NimbImage.h"
#include "SchemaFiles.h"
#include "SchemaRegistration.h"
#include "StorePaths.h"

namespace NimbConfigStore
{
namespace
{
std::unordered_set<std::string> ExpectedSchemaIds(const std::vector<std::string>& schemaIds)
{
    std::unordered_set<std::string> expected = NimbImage::GetSchemaIds();
    if (!schemaIds.empty()) {
        CSLogger::Log(CSLogger::INFO, "[SchemaProcessor] Schema ID list received as input");
        expected.insert(schemaIds.begin(), schemaIds.end());
    }
    return expected;
}

bool RegisterSchemaFiles(std::unordered_set<std::string> expectedIds, bool nimbio, const FeatureList& features)
{
    const RegistrationRun run{NimbSchemaStore::SchemaStore::GetStore(true), std::move(expectedIds), nimbio,
                              features.nimbioPlacement};
    bool succeeded = true;
    for (SchemaFile& file : OrderSchemaFiles(GetSchemaFiles(SCHEMA_FOLDER), SCHEMA_FOLDER, features.schemaVersioning)) {
        if (file.superseded) {
            LogSuperseded(file);
            continue;
        }
        succeeded = ProcessSchemaFile(file, run) && succeeded;
        file.document.reset();
    }
    NimbSchemaStore::RemoveUndeclaredSchemas(run.expectedIds, run.store);
    return succeeded;
}

bool ProcessSchemaFiles(const std::vector<std::string>& schemaIds, bool nimbio, const FeatureList& features)
{
    CSLogger::Log(CSLogger::INFO, "[SchemaProcessor] Processing schemas..");
    std::unordered_set<std::string> expectedIds = ExpectedSchemaIds(schemaIds);
    bool succeeded = false;
    try {
        succeeded = RegisterSchemaFiles(std::move(expectedIds), nimbio, features);
    } catch (const std::exception& error) {
        CSLogger::Log(CSLogger::ERROR, "[SchemaProcessor] Error processing schemas - '%s'.", error.what());
    }
    CSLogger::Log(CSLogger::INFO, "[SchemaProcessor] Schema processing completed: %s",
                  succeeded ? "success" : "failure");
    return succeeded;
}
}  // namespace

bool ProcessSchemas(const std::vector<std::string>& schemaIds)
{
    const bool nimbio = File_Exists(NIMBIO_MARKER_FILE);
    if (nimbio) {
        CSLogger::Log(CSLogger::INFO, "[SchemaProcessor]: This is nimbio booting up.");
    }
    const FeatureList features = FeatureState_InitSilentMode();
    const bool schemasProcessed = ProcessSchemaFiles(schemaIds, nimbio, features);
    const bool defaultsProcessed = ProcessDefaultConfiguration(nimbio);
    return schemasProcessed && defaultsProcessed;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers were promised a call by value
bool RefreshConfigStore(std::vector<std::string> schemaIds, std::vector<std::string> modules)
{
    CSLogger::Log(CSLogger::INFO, "Refresh Config Store");
    try {
        return ProcessSchemas(schemaIds) && NimbConfigUpgrade::ExecuteLiveInstallModules(modules) >= 0;
    } catch (const ConfigStoreException& error) {
        CSLogger::Log(CSLogger::ERROR, "Refresh of the Config Store failed: %s", error.what());
        return false;
    }
}
}  // namespace NimbConfigStore
