#include <string_view>
#include <vector>

#include "ConfigStoreException.h"
#include "NimbConfigStore.h"
#include "RunStatement.h"
#include "StoreConnection.h"
#include "StoreStatements.h"
#include "StoreTransaction.h"

namespace NimbConfigStore
{
namespace
{
std::string* FieldOf(FailureRecord& record, std::string_view column)
{
    if (column == "Component") {
        return &record.component;
    }
    if (column == "ConfigGroup") {
        return &record.configGroup;
    }
    return column == "Name" ? &record.name : nullptr;
}

int CollectFailure(void* context, int columns, char** values, char** names)
{
    FailureRecord& record = static_cast<std::vector<FailureRecord>*>(context)->emplace_back();
    for (int i = 0; i < columns; ++i) {
        std::string* field = FieldOf(record, names[i]);
        if (field != nullptr && values[i] != nullptr) {
            *field = values[i];
        }
    }
    return 0;
}
}  // namespace

std::vector<FailureRecord> GetBootTimeRestoreFailures()
{
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    const AttachedSchemaStore schemas(store);
    if (!schemas.IsAttached()) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to attach schema store");
    }
    std::vector<FailureRecord> failures;
    RunOrThrow(store, Statements::SELECT_RESTORE_FAILURES, "Failed to read from config store.", {}, CollectFailure,
               &failures);
    return failures;
}
}  // namespace NimbConfigStore
