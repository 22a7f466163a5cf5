#pragma once

#include "DBStore.h"
#include "StoreStatements.h"

// Every statement of the catalogue once, for what checks them all: that each prepares, and that each reads only the
// rows it has to. The tests hold this list against the catalogue itself.
namespace NimbConfigStore::Statements
{
struct ListedStatement
{
    const char* name;
    const char* text;
    const char* completion;  // stands in for what is appended at run time
    DBStore::Type store;
    const char* read;  // the tables it reads row by row because every row counts, by their name in the plan
};

inline constexpr DBStore::Type CONFIG = DBStore::Type::ConfigStore;
inline constexpr DBStore::Type DATAFILES = DBStore::Type::DataFileStore;

inline constexpr ListedStatement kAllStatements[] = {
    {"MARK_USER_CONFIG", MARK_USER_CONFIG, "((?,?,?,?),(?,?,?,?))", CONFIG, "s"},
    {"INSERT_STAGED", INSERT_STAGED, "", CONFIG, "DesiredUserConfig"},
    {"UPDATE_FROM_STAGED", UPDATE_FROM_STAGED, "", CONFIG, "Config"},
    {"EMPTY_STAGING_AFTER_APPLY", EMPTY_STAGING_AFTER_APPLY, "", CONFIG, ""},
    {"DELETE_MARKED", DELETE_MARKED, "", CONFIG, ""},
    {"MARK_STAGED_INSTANCES", MARK_STAGED_INSTANCES, "", CONFIG, ""},
    {"MARK_STAGED_OBJECTS", MARK_STAGED_OBJECTS, "", CONFIG, ""},
    {"INSERT_SET_ROWS", INSERT_SET_ROWS, "", CONFIG, ""},
    {"UPDATE_SET_ROWS", UPDATE_SET_ROWS, "", CONFIG, ""},
    {"RESTORE_DEFAULTS", RESTORE_DEFAULTS, "", CONFIG, ""},
    {"DELETE_STAGED_OBJECTS", DELETE_STAGED_OBJECTS, "", CONFIG, ""},
    {"INSERT_SMARTNIC_ROWS", INSERT_SMARTNIC_ROWS, "", CONFIG, ""},
    {"UPDATE_SMARTNIC_ROWS", UPDATE_SMARTNIC_ROWS, "", CONFIG, ""},
    {"DELETE_UNSTAGED_SHARED_ROWS", DELETE_UNSTAGED_SHARED_ROWS, "", CONFIG, ""},
    {"FOLD_DESIRED_VALUES", FOLD_DESIRED_VALUES, "", CONFIG, "c"},
    {"UPSERT_USER_CONFIG", UPSERT_USER_CONFIG, "", CONFIG, ""},
    {"DELETE_OBJECT_ROWS", DELETE_OBJECT_ROWS, "", CONFIG, ""},
    {"EMPTY_STAGING", EMPTY_STAGING, "", CONFIG, ""},
    {"STAGE_INSTANCE", STAGE_INSTANCE, "", CONFIG, ""},
    {"STAGE_ACTION", STAGE_ACTION, "", CONFIG, ""},
    {"SELECT_LIVE_ORVNIC", SELECT_LIVE_ORVNIC, "", CONFIG, ""},
    {"STAGE_LIVE_NETWORK", STAGE_LIVE_NETWORK, "", CONFIG, ""},
    {"SELECT_UNSTAGED_SWITCHES", SELECT_UNSTAGED_SWITCHES, "", CONFIG, ""},
    {"STAGE_PRESERVED_ROW", STAGE_PRESERVED_ROW, "", CONFIG, ""},
    {"STAGE_DEFAULTS", STAGE_DEFAULTS, " AND Identifier NOT IN (?,?)", CONFIG, ""},
    {"SELECT_LIVE_PERMISSIONS", SELECT_LIVE_PERMISSIONS, "", CONFIG, ""},
    {"STAGE_PERMISSION", STAGE_PERMISSION, "", CONFIG, ""},
    {"STAGE_LIVE_AGENT_OPTIONS", STAGE_LIVE_AGENT_OPTIONS, "", CONFIG, ""},
    {"STAGE_UNMENTIONED_SHARED", STAGE_UNMENTIONED_SHARED, "", CONFIG, ""},
    {"CLEAR_AUTO_CONFIG", CLEAR_AUTO_CONFIG, "", CONFIG, "Config"},
    {"DELETE_EMPTY_ROWS", DELETE_EMPTY_ROWS, "", CONFIG, ""},
    {"DELETE_ORPHANED_CONFIG", DELETE_ORPHANED_CONFIG, "", CONFIG, "Config"},
    {"SELECT_ORPHANED_DIRS", SELECT_ORPHANED_DIRS, "", DATAFILES, "DataFileMetadata"},
    {"DELETE_ORPHANED_DATAFILES", DELETE_ORPHANED_DATAFILES, "", DATAFILES, "DataFileMetadata"},
    {"SELECT_DATAFILES", SELECT_DATAFILES, "", DATAFILES, "DataFileMetadata"},
    {"DELETE_ALL_DATAFILES", DELETE_ALL_DATAFILES, "", DATAFILES, ""},
    {"DELETE_MISSING_DATAFILES", DELETE_MISSING_DATAFILES, "(?,?)", DATAFILES, ""},
    {"EMPTY_DEFAULT_CONFIG", EMPTY_DEFAULT_CONFIG, "", CONFIG, ""},
    {"UPSERT_DEFAULT_CONFIG", UPSERT_DEFAULT_CONFIG, "", CONFIG, ""},
    {"SELECT_RESTORE_FAILURES", SELECT_RESTORE_FAILURES, "", CONFIG, "s"},
    {"SUM_VITAL_SIZE", SUM_VITAL_SIZE, "", CONFIG, "Config"},
    {"SUM_USER_SIZE", SUM_USER_SIZE, "", CONFIG, "Config"},
    {"SUM_CACHED_SIZE", SUM_CACHED_SIZE, "", CONFIG, "Config"},
    {"COUNT_CONFIG_ROWS", COUNT_CONFIG_ROWS, "", CONFIG, "Config"},
    {"SELECT_ROW_SIZES", SELECT_ROW_SIZES, "", CONFIG, "Config"},
};
}  // namespace NimbConfigStore::Statements
