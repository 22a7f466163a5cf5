#include "BootApply.h"

#include <string>
#include <vector>

#include "CSLogger.h"
#include "NimbSchemaStore.h"
#include "RunStatement.h"
#include "StoreStatements.h"

namespace NimbConfigStore
{
namespace
{
constexpr int KIND_WITH_EXCLUDED_INSTANCES = 5;
constexpr const char* GENERATED_ID = "cs_generated_id";

/// The key of a row that a whole document leaves alone.
struct ExcludedRow
{
    NimbSchemaStore::SchemaObjectId object;
    std::string identifier;
};

/// Generated identifiers mean nothing outside the store, so a list of them excludes nothing.
bool IsKeyedByItsOwnProperty(const NimbSchemaStore::SchemaObject& object)
{
    const std::string& property = object.GetInstanceIdProperty();
    return object.IsMultiInstance() && !property.empty() && property != GENERATED_ID;
}

std::vector<ExcludedRow> ExcludedRows()
{
    std::vector<ExcludedRow> rows;
    const NimbSchemaStore::SchemaStorePtr store = NimbSchemaStore::SchemaStore::GetStore(false);
    for (const NimbSchemaStore::SchemaObjectPtr& object : store->GetObjectsOfKind(KIND_WITH_EXCLUDED_INSTANCES)) {
        if (!IsKeyedByItsOwnProperty(*object)) {
            continue;
        }
        for (const std::string& identifier : object->GetExcludedInstances()) {
            rows.push_back({object->GetId(), identifier});
        }
    }
    return rows;
}

/// With no excluded row the text does not prepare: a store whose schemas exclude nothing takes no whole document.
std::string MarkingStatement(std::size_t excludedRows)
{
    std::string sql = std::string(Statements::MARK_USER_CONFIG) + "(";
    for (std::size_t i = 0; i < excludedRows; ++i) {
        sql += "(?,?,?,?),";
    }
    sql.back() = ')';
    return sql;
}

void MarkUserConfig(const DBStore::ConnectionPtr& connection)
{
    const std::vector<ExcludedRow> excluded = ExcludedRows();
    const std::string sql = MarkingStatement(excluded.size());
    CSLogger::Log(CSLogger::INFO, "Delete existing user configuration query = %s", sql.c_str());
    std::vector<BoundText> keys;
    for (const auto& [object, identifier] : excluded) {
        keys.insert(keys.end(), {object.component, object.group, object.name, identifier});
    }
    RunOrThrow(connection, sql, "Failed to mark user configuration for delete", keys);
}
}  // namespace

void ApplyDesiredDocumentConfig(const DBStore::ConnectionPtr& connection)
{
    CSLogger::Log(CSLogger::INFO, "Boot with new desired configuration.");
    MarkUserConfig(connection);
    RunOrThrow(connection, Statements::INSERT_STAGED, "Failed to insert desired configuration to config table");
    RunOrThrow(connection, Statements::UPDATE_FROM_STAGED, "Failed to update config table");
    RunOrThrow(connection, Statements::EMPTY_STAGING_AFTER_APPLY, "Failed to cleanup desired configuration");
    RunOrThrow(connection, Statements::DELETE_MARKED, "Failed to cleanup previous user configuration");
}

void ApplyHostApiConfig(const DBStore::ConnectionPtr& connection)
{
    CSLogger::Log(CSLogger::INFO, "Setting up hostapi configuration.");
    RunOrThrow(connection, Statements::MARK_STAGED_INSTANCES,
               "Failed to mark configurations with BootAction=DELETE_INSTANCE for deletion");
    RunOrThrow(connection, Statements::MARK_STAGED_OBJECTS, "Failed to mark configurations for deletion");
    RunOrThrow(connection, Statements::INSERT_SET_ROWS, "Failed to process BootAction=SET for new configs");
    RunOrThrow(connection, Statements::UPDATE_SET_ROWS, "Failed to process BootAction=SET to update existing configs");
    RunOrThrow(connection, Statements::DELETE_MARKED, "Failed to process BootAction=DELETE");
    RunOrThrow(connection, Statements::RESTORE_DEFAULTS,
               "Failed to process BootAction=SET_DEFAULT for deleted configs");
    CSLogger::Log(CSLogger::INFO, "Setting up hostapi configuration completed.");
}

void ApplySmartnicBootConfig(const DBStore::ConnectionPtr& connection)
{
    CSLogger::Log(CSLogger::INFO, "Setting up smartnic boot configuration.");
    RunOrThrow(connection, Statements::DELETE_STAGED_OBJECTS, "Failed to process BootAction=DELETE");
    RunOrThrow(connection, Statements::RESTORE_DEFAULTS, "Failed to process BootAction=SET_DEFAULT");
    RunOrThrow(connection, Statements::INSERT_SMARTNIC_ROWS, "Failed to process BootAction=SET for new configs");
    RunOrThrow(connection, Statements::UPDATE_SMARTNIC_ROWS, "Failed to process BootAction=SET for existing configs");
    RunOrThrow(connection, Statements::DELETE_UNSTAGED_SHARED_ROWS,
               "Failed to process BootAction=SET for non-existing configs");
    CSLogger::Log(CSLogger::INFO, "Smartnic boot configuration completed.");
}

void FoldDesiredValues(const DBStore::ConnectionPtr& connection)
{
    RunOrThrow(connection, Statements::FOLD_DESIRED_VALUES, "Failed to reset success flag for configuration");
}
}  // namespace NimbConfigStore
