#include "CSLogger.h"
#include "DesiredDocument.h"
#include "NimbConfigStore.h"
#include "Staging.h"
#include "StoreConnection.h"

namespace NimbConfigStore
{
void SetDesiredUserConfig(rapidjson::Document& desired)
{
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    StoreTransaction change(store);
    if (!change.IsOpen()) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to start set desired transaction");
    }
    try {
        EmptyStaging(store);
        ProcessDesiredDocument(desired, store);
        StageBootMode(BOOTMODE_DESIRED_CONFIG);
        CommitStaging(change);
        CSLogger::Log(CSLogger::INFO, "Desired configuration set");
    } catch (const std::exception& failure) {
        throw StagingFailure("SetDesiredUserConfig", failure);
    }
}
}  // namespace NimbConfigStore
