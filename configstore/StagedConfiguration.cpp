#include "StagedConfiguration.h"

#include <exception>
#include <string>

#include "BootApply.h"
#include "BootDocument.h"
#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "ConfigStoreException.h"
#include "NimbConfigStore.h"
#include "StoreConnection.h"
#include "StoreKeys.h"
#include "StoreTransaction.h"
#include "ZubEvents.h"

namespace NimbConfigStore
{
namespace
{
void ApplyMode(BOOTMODE mode, const DBStore::ConnectionPtr& store)
{
    switch (mode) {
        case BOOTMODE_DESIRED_CONFIG:
            ApplyDesiredDocumentConfig(store);
            break;
        case BOOTMODE_BOOT_CONFIG:
            ApplyBootDocument(store);
            break;
        case BOOTMODE_SMARTNIC:
            ApplySmartnicBootConfig(store);
            break;
        case BOOTMODE_HOSTAPI:
            ApplyHostApiConfig(store);
            break;
        case BOOTMODE_NONE:
        default:
            break;
    }
}

// What the staged mode applies, the fold that every boot ends with, and the commit. @p desiredApplied tells that the
// desired document was applied to its end, whatever came after it.
void ApplyInTransaction(BOOTMODE mode, const DBStore::ConnectionPtr& store, StoreTransaction& change,
                        bool& desiredApplied)
{
    ApplyMode(mode, store);
    desiredApplied = mode == BOOTMODE_DESIRED_CONFIG;
    FoldDesiredValues(store);
    // With the rows: the next boot must not apply the emptied staging table again, should this one get no further.
    if (DBStore::WriteKeyValue(BOOT_MODE, std::to_string(BOOTMODE_NONE), store) != DBStore::SUCCESS) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to take the boot mode back");
    }
    if (!change.Commit()) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to commit desired configuration transaction");
    }
}

// True when the desired document was applied. Failures are logged and raised.
bool Apply(BOOTMODE mode, const DBStore::ConnectionPtr& store)
{
    bool desiredApplied = false;
    try {
        StoreTransaction change(store);
        if (change.IsOpen()) {
            ApplyInTransaction(mode, store, change, desiredApplied);
            return desiredApplied;
        }
        CSLogger::Log(CSLogger::ERROR, "Failed to begin desired configuration transaction");
    } catch (const std::exception& failure) {
        CSLogger::Log(CSLogger::ERROR, "GenerateDesiredConfiguration failed: %s", failure.what());
    }
    DumpZub(ZUB_DESIRED_CONFIG_ERROR, 0);
    return desiredApplied;
}

void WriteBootInfo(bool desiredApplied)
{
    JsonDocument info(rapidjson::kObjectType);
    info.AddMember("type", desiredApplied ? 1 : 0, info.GetAllocator());
    std::string text;
    ConfigStoreDocument::SerializeValue(info, text);
    (void)DBStore::WriteKeyValue(BOOT_INFO, text, GetDBConnection(DBStore::Type::ConfigStore, true));  // logged there
}
}  // namespace

void ApplyStagedConfiguration()
{
    const BOOTMODE mode = GetBootMode();
    CSLogger::Log(CSLogger::INFO, "Generating desired user config: BootMode = %d", static_cast<int>(mode));
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    AttachedSchemaStore schemas(store);
    if (!schemas.IsAttached()) {
        CSLogger::Log(CSLogger::ERROR, "Failed to attach schema store");
        DumpZub(ZUB_DESIRED_CONFIG_ERROR, 0);
        return;
    }
    const bool desiredApplied = Apply(mode, store);
    if (!schemas.Detach()) {
        DumpZub(ZUB_DESIRED_CONFIG_ERROR, 0);
    }
    WriteBootInfo(desiredApplied);
    CSLogger::Log(CSLogger::INFO, "Desired user config generated successfully.");
}
}  // namespace NimbConfigStore
