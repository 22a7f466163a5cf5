#include "Staging.h"

#include "RunStatement.h"
#include "StoreStatements.h"

namespace NimbConfigStore
{
void EmptyStaging(const DBStore::ConnectionPtr& connection)
{
    RunOrThrow(connection, Statements::EMPTY_STAGING, "Failed to cleanup desired configuration.");
}

bool StageAction(const DBStore::ConnectionPtr& connection, const NimbSchemaStore::SchemaObjectId& id,
                 const char* action)
{
    return RunStatement(connection, Statements::STAGE_ACTION, {id.component, id.group, id.name, action});
}

void StageBootMode(BOOTMODE mode)
{
    SetBootMode(mode);
    if (GetBootMode() != mode) {
        throw ConfigStoreException(CS_ERROR_OPERATION, ("Failed to set boot mode " + std::to_string(mode)).c_str());
    }
}

void CommitStaging(StoreTransaction& change)
{
    if (!change.Commit()) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to commit set desired transaction");
    }
}

ConfigStoreException StagingFailure(const char* call, const std::exception& reason)
{
    return {CS_ERROR_OPERATION, (std::string(call) + " failed: " + reason.what()).c_str()};
}
}  // namespace NimbConfigStore
