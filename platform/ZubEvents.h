#pragma once

#include <array>
#include <string>

#pragma GCC visibility push(default)

namespace NimbConfigStore
{
inline constexpr const char* ZUB_CREATESTORE_COPY_BACKUP_ERROR = "zub.user.cs.createstore.copy.backup.error";
inline constexpr const char* ZUB_DB_OPERATION_ERROR = "zub.user.cs.db.operation.error";
inline constexpr const char* ZUB_SCHEMA_FILE_ERROR = "zub.user.cs.schema.file.error";
inline constexpr const char* ZUB_SCHEMA_METADATA_ERROR = "zub.user.cs.schema.metadata.error";
inline constexpr const char* ZUB_SCHEMA_VALIDATION_ERROR = "zub.user.cs.schema.validation.error";
inline constexpr const char* ZUB_DFS_RESTORE_ERROR = "zub.user.cs.dfs.restore.error";
inline constexpr const char* ZUB_DFS_CLEANUP_ERROR = "zub.user.cs.dfs.cleanup.error";
inline constexpr const char* ZUB_DESIRED_CONFIG_ERROR = "zub.user.cs.desired.config.error";
inline constexpr const char* ZUB_UPGRADE_CONFIG_ERROR = "zub.user.cs.upgrade.config.error";

/// An observation event and the template of its text; each %s takes one argument of the raiser.
struct ZubTemplate
{
    const char* id;
    const char* text;
};

inline constexpr std::array<ZubTemplate, 9> ZUB_TEMPLATES{{
    {ZUB_CREATESTORE_COPY_BACKUP_ERROR, "Error copying ConfigStore from backup %s."},
    {ZUB_DB_OPERATION_ERROR, "ConfigStore database operation failed."},
    {ZUB_SCHEMA_FILE_ERROR, "Error processing schema file %s."},
    {ZUB_SCHEMA_METADATA_ERROR, "Invalid metadata in schema file %s."},
    {ZUB_SCHEMA_VALIDATION_ERROR, "BrevId validation failed for schema file %s."},
    {ZUB_DFS_RESTORE_ERROR, "DataFile store cannot be restored."},
    {ZUB_DFS_CLEANUP_ERROR, "Error cleaning up Datafile store."},
    {ZUB_DESIRED_CONFIG_ERROR, "Failed to setup desired configuration."},
    {ZUB_UPGRADE_CONFIG_ERROR, "Error in upgrading config %s."},
}};

/// Raises the observation event @p id with @p count arguments, each a const char*: one JSON object on a line of
/// /var/log/talvor/events.jsonl with the members time, kind ("observation"), id, text (the template filled in)
/// and args. The line is written by one write. Never throws; a line that cannot be written is logged.
void DumpZub(const std::string& id, int count, ...);

/// Raises a system alert: the same line with kind "alert", the text as it is, no arguments.
/// @return false when the line could not be written.
bool RaiseSystemAlert(const std::string& text);
}  // namespace NimbConfigStore

#pragma GCC visibility pop
