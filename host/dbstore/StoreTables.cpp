#include "StoreTables.h"

#include <string_view>

namespace DBStore
{
namespace
{
// Identifier may be NULL (a singleton). UNIQUE takes NULLs for different, so two such rows of one object can coexist.
// Columns that every boot reads stand before the values: they are found without following a long value's pages.
constexpr const char* CONFIG_STORE_DEFINITIONS[] = {
    "CREATE TABLE IF NOT EXISTS Config (Component TEXT NOT NULL, ConfigGroup TEXT NOT NULL, Name TEXT NOT NULL, "
    "Identifier TEXT, Version TEXT, CreationTime TEXT, Revision INTEGER, Success INTEGER, DesiredValue TEXT, "
    "UserValue TEXT, VitalValue TEXT, CachedValue TEXT, AutoConfValue TEXT, "
    "UNIQUE (Component, ConfigGroup, Name, Identifier))",

    "CREATE INDEX IF NOT EXISTS ConfigMarked ON Config (UserValue) WHERE UserValue = 'mark for deletion'",

    "CREATE INDEX IF NOT EXISTS ConfigEmpty ON Config (UserValue) WHERE UserValue IS NULL AND VitalValue IS NULL AND "
    "CachedValue IS NULL AND DesiredValue IS NULL",

    "CREATE TABLE IF NOT EXISTS DesiredUserConfig (Component TEXT NOT NULL, ConfigGroup TEXT NOT NULL, "
    "Name TEXT NOT NULL, Identifier TEXT, Version TEXT, BootAction TEXT, Value TEXT, VitalValue TEXT, "
    "CachedValue TEXT, UNIQUE (Component, ConfigGroup, Name, Identifier))",

    "CREATE INDEX IF NOT EXISTS StagedByAction ON DesiredUserConfig "
    "(BootAction, Component, ConfigGroup, Name, Identifier)",

    "CREATE TABLE IF NOT EXISTS DefaultConfig (Component TEXT NOT NULL, ConfigGroup TEXT NOT NULL, "
    "Name TEXT NOT NULL, Identifier TEXT, Version TEXT, Value TEXT, VitalValue TEXT, CachedValue TEXT, "
    "UNIQUE (Component, ConfigGroup, Name, Identifier))",

    "CREATE TABLE IF NOT EXISTS KeyValue (Key TEXT NOT NULL PRIMARY KEY, Value TEXT NOT NULL)",
};

constexpr const char* SCHEMA_STORE_DEFINITIONS[] = {
    "CREATE TABLE IF NOT EXISTS ConfigSchema (Component TEXT NOT NULL, ConfigGroup TEXT NOT NULL, "
    "Name TEXT NOT NULL, DSPIntegrated INTEGER NOT NULL DEFAULT 0, SchemaType INTEGER NOT NULL DEFAULT 0, "
    "MutableDefaultConfig INTEGER NOT NULL DEFAULT 0, PreserveNonUser INTEGER NOT NULL DEFAULT 0, "
    "NoRestore INTEGER NOT NULL DEFAULT 1, Singleton INTEGER NOT NULL DEFAULT 1, Version TEXT NOT NULL DEFAULT '', "
    "SchemaId TEXT NOT NULL DEFAULT '', SchemaJson TEXT NOT NULL DEFAULT '', "
    "PRIMARY KEY (Component, ConfigGroup, Name))",

    "CREATE TABLE IF NOT EXISTS SmartnicSchema (Component TEXT NOT NULL, ConfigGroup TEXT NOT NULL, "
    "Name TEXT NOT NULL, ValueType TEXT NOT NULL, PRIMARY KEY (Component, ConfigGroup, Name))",

    "CREATE INDEX IF NOT EXISTS SmartnicByType ON SmartnicSchema (ValueType, Component, ConfigGroup, Name)",

    "CREATE TABLE IF NOT EXISTS DataFileSchema (Component TEXT NOT NULL, KEY TEXT NOT NULL, "
    "SchemaId TEXT NOT NULL DEFAULT '', SchemaJson TEXT NOT NULL DEFAULT '', PRIMARY KEY (Component, KEY))",
};

constexpr const char* DATAFILE_STORE_DEFINITIONS[] = {
    "CREATE TABLE IF NOT EXISTS DataFileMetadata (Component TEXT NOT NULL, KEY TEXT NOT NULL, DirName TEXT NOT NULL, "
    "FileName TEXT NOT NULL, UNIQUE (DirName, FileName))",

    "CREATE INDEX IF NOT EXISTS DataFileByKey ON DataFileMetadata (Component, KEY, DirName)",
};

constexpr const char* CONFIG_STORE_TABLES[] = {"Config", "DesiredUserConfig", "DefaultConfig", "KeyValue"};
constexpr const char* SCHEMA_STORE_TABLES[] = {"ConfigSchema", "SmartnicSchema", "DataFileSchema"};
constexpr const char* DATAFILE_STORE_TABLES[] = {"DataFileMetadata"};

// Fixed expectations, so that a plan depends neither on luck nor on when somebody ran ANALYZE. With these the mark
// starts from the schema table, and the whole-document update looks each row's staged values up by all four columns.
constexpr TableStatistics CONFIG_STORE_STATISTICS[] = {
    {"Config", "sqlite_autoindex_Config_1", "100000 10000 1000 100 1"},
    {"Config", "ConfigMarked", "1000 1000"},
    {"Config", "ConfigEmpty", "1000 1000"},
    {"DesiredUserConfig", "sqlite_autoindex_DesiredUserConfig_1", "100000 10000 1000 100 1"},
    {"DesiredUserConfig", "StagedByAction", "100000 25000 2500 250 25 1"},
    {"DefaultConfig", "sqlite_autoindex_DefaultConfig_1", "100000 10000 1000 100 1"},
};
constexpr TableStatistics SCHEMA_STORE_STATISTICS[] = {
    {"ConfigSchema", "sqlite_autoindex_ConfigSchema_1", "1000 100 10 1"},
    {"SmartnicSchema", "sqlite_autoindex_SmartnicSchema_1", "100 10 2 1"},
    {"SmartnicSchema", "SmartnicByType", "100 50 5 2 1"},
    {"DataFileSchema", "sqlite_autoindex_DataFileSchema_1", "100 10 1"},
};
constexpr TableStatistics DATAFILE_STORE_STATISTICS[] = {
    {"DataFileMetadata", "sqlite_autoindex_DataFileMetadata_1", "10000 100 1"},
    {"DataFileMetadata", "DataFileByKey", "10000 1000 100 10"},
};

constexpr StoreDefinition CONFIG_STORE = {"/etc/talvor/configstore/current-store-1", CONFIG_STORE_TABLES,
                                          CONFIG_STORE_DEFINITIONS, CONFIG_STORE_STATISTICS};
constexpr StoreDefinition SCHEMA_STORE = {"/var/lib/talvor/configstore/schema-store", SCHEMA_STORE_TABLES,
                                          SCHEMA_STORE_DEFINITIONS, SCHEMA_STORE_STATISTICS};
constexpr StoreDefinition DATAFILE_STORE = {"/etc/talvor/configstore/datafile-store", DATAFILE_STORE_TABLES,
                                            DATAFILE_STORE_DEFINITIONS, DATAFILE_STORE_STATISTICS};
}  // namespace

const StoreDefinition* DefinitionOf(Type type)
{
    switch (type) {
        case Type::ConfigStore:
            return &CONFIG_STORE;
        case Type::SchemaStore:
            return &SCHEMA_STORE;
        case Type::DataFileStore:
            return &DATAFILE_STORE;
    }
    return nullptr;
}

const StoreDefinition& DefinitionForFile(std::string_view baseName)
{
    if (baseName == "datafile-store") {
        return DATAFILE_STORE;
    }
    return baseName == "schema-store" ? SCHEMA_STORE : CONFIG_STORE;
}

const char* StorePath(Type type)
{
    const StoreDefinition* definition = DefinitionOf(type);
    return definition != nullptr ? definition->path : "";
}
}  // namespace DBStore
