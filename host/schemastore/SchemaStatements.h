#pragma once

// Every SQL text that runs on the schema store, named for what it does.
namespace NimbSchemaStore::Statements
{
inline constexpr const char* UPSERT_OBJECT =
    "INSERT OR REPLACE INTO ConfigSchema (Component, ConfigGroup, Name, DSPIntegrated, SchemaType, "
    "MutableDefaultConfig, PreserveNonUser, NoRestore, Singleton, Version, SchemaId, SchemaJson) "
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";

inline constexpr const char* UPSERT_PLACEMENT =
    "INSERT OR REPLACE INTO SmartnicSchema (Component, ConfigGroup, Name, ValueType) VALUES (?, ?, ?, ?)";

inline constexpr const char* DELETE_PLACEMENT =
    "DELETE FROM SmartnicSchema WHERE Component = ? AND ConfigGroup = ? AND Name = ?";

inline constexpr const char* UPSERT_DATAFILE_KEY =
    "INSERT OR REPLACE INTO DataFileSchema (Component, KEY, SchemaId, SchemaJson) VALUES (?, ?, ?, ?)";

inline constexpr const char* SELECT_SCHEMA_IDS =
    "SELECT SchemaId FROM ConfigSchema UNION SELECT SchemaId FROM DataFileSchema";

inline constexpr const char* DELETE_PLACEMENTS_OF_ID =
    "DELETE FROM SmartnicSchema WHERE (Component, ConfigGroup, Name) IN (SELECT Component, ConfigGroup, Name "
    "FROM ConfigSchema WHERE SchemaId = ?)";

inline constexpr const char* DELETE_OBJECTS_OF_ID = "DELETE FROM ConfigSchema WHERE SchemaId = ?";

inline constexpr const char* DELETE_DATAFILE_KEYS_OF_ID = "DELETE FROM DataFileSchema WHERE SchemaId = ?";

inline constexpr const char* SELECT_OBJECTS =
    "SELECT Component, ConfigGroup, Name, SchemaType, MutableDefaultConfig, Singleton, Version, SchemaJson "
    "FROM ConfigSchema ORDER BY Component, ConfigGroup, Name";
}  // namespace NimbSchemaStore::Statements
