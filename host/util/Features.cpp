#include <cerrno>

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "HostUtil.h"

namespace
{
const char* const FEATURES_FILE = "/etc/talvor/platform/features.json";

void ReadSwitch(const NimbConfigStore::JsonDocument& document, const char* name, bool& enabled)
{
    if (!ConfigStoreDocument::ValueExists(document, name)) {
        return;
    }
    if (!document[name].IsBool()) {
        CSLogger::Log(CSLogger::ERROR, "%s: \"%s\" is not true or false", FEATURES_FILE, name);
        return;
    }
    enabled = document[name].GetBool();
}
}  // namespace

FeatureList FeatureState_InitSilentMode()
{
    FeatureList features;
    if (!File_Exists(FEATURES_FILE)) {
        return features;
    }
    NimbConfigStore::JsonDocument document;
    std::string reason;
    if (!ConfigStoreDocument::ParseFile(FEATURES_FILE, document, &reason)) {
        CSLogger::Log(CSLogger::ERROR, "Cannot read feature switches from %s: %s", FEATURES_FILE, reason.c_str());
    } else if (!document.IsObject()) {
        CSLogger::Log(CSLogger::ERROR, "Cannot read feature switches from %s: not an object", FEATURES_FILE);
    }
    ReadSwitch(document, "schemaVersioning", features.schemaVersioning);
    ReadSwitch(document, "nimbioPlacement", features.nimbioPlacement);
    ReadSwitch(document, "shrinkableBackupRamdisk", features.shrinkableBackupRamdisk);
    ReadSwitch(document, "preserveNetworkConfiguration", features.preserveNetworkConfiguration);
    return features;
}
