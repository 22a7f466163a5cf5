#include <string>
#include <vector>

#include "CSLogger.h"
#include "Files.h"
#include "NimbConfigStore.h"
#include "RunStatement.h"
#include "StoreConnection.h"
#include "StorePaths.h"
#include "StoreStatements.h"
#include "StoreTransaction.h"

namespace NimbConfigStore
{
namespace
{
int CollectName(void* names, int, char** values, char**)
{
    if (values[0] != nullptr) {
        static_cast<std::vector<std::string>*>(names)->emplace_back(values[0]);
    }
    return 0;
}

void CleanupConfigRows()
{
    CSLogger::Log(CSLogger::INFO, "Cleanup config store");
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, false);
    if (store == nullptr) {
        CSLogger::Log(CSLogger::ERROR, "ConfigStore cleanup failed: could not connect");
        return;
    }
    AttachedSchemaStore schemas(store);
    if (!schemas.IsAttached()) {
        CSLogger::Log(CSLogger::ERROR, "ConfigStore cleanup failed: could not attach to SchemaStore");
        return;
    }
    const bool deleted = RunStatement(store, Statements::DELETE_ORPHANED_CONFIG);
    (void)schemas.Detach();  // logged there
    if (deleted) {
        CSLogger::Log(CSLogger::INFO, "Cleanup config store completed");
    } else {
        CSLogger::Log(CSLogger::ERROR, "ConfigStore cleanup failed: SQL command unsuccessful");
    }
}

// Deletes the metadata that no schema describes; @p folders, when given, receives where its files were. False, after
// a log line, when anything failed.
bool DeleteOrphanedMetadata(const DBStore::ConnectionPtr& store, std::vector<std::string>* folders)
{
    const AttachedSchemaStore schemas(store);
    if (!schemas.IsAttached()) {
        CSLogger::Log(CSLogger::ERROR, "Datafile store cleanup failed: could not attach to data file schemas");
        return false;
    }
    if (folders != nullptr && !RunStatement(store, Statements::SELECT_ORPHANED_DIRS, {}, CollectName, folders)) {
        CSLogger::Log(CSLogger::ERROR, "Datafile live cleanup failed: read dir SQL command unsuccessful");
        return false;
    }
    if (!RunStatement(store, Statements::DELETE_ORPHANED_DATAFILES)) {
        CSLogger::Log(CSLogger::ERROR, "Datafile cleanup failed: SQL command unsuccessful");
        return false;
    }
    return true;
}

// A name that is a path of its own could lead out of the data-file root.
bool IsPlainName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

void RemoveDataFileFolder(const std::string& name)
{
    if (!IsPlainName(name)) {
        CSLogger::Log(CSLogger::ERROR, "Datafile directory name '%s' is not a plain name, left as it is", name.c_str());
        return;
    }
    CSLogger::Log(CSLogger::INFO, "Cleanup datafile directory: %s", name.c_str());
    RemoveTree(std::string(DATAFILE_ROOT) + "/" + name);
}

void CleanupDataFileRows(bool keepDataFiles)
{
    CSLogger::Log(CSLogger::INFO, "Cleanup data file store");
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::DataFileStore, false);
    if (store == nullptr) {
        CSLogger::Log(CSLogger::ERROR, "Datafile store cleanup failed: could not connect");
        return;
    }
    std::vector<std::string> folders;
    if (!DeleteOrphanedMetadata(store, keepDataFiles ? nullptr : &folders)) {
        return;
    }
    for (const std::string& folder : folders) {
        RemoveDataFileFolder(folder);
    }
    CSLogger::Log(CSLogger::INFO, "Cleanup data file store completed");
}
}  // namespace

void CleanupAutoConfig()
{
    CSLogger::Log(CSLogger::INFO, "Cleanup auto configurations");
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, false);
    if (store == nullptr) {
        CSLogger::Log(CSLogger::ERROR, "Cleanup failed: could not connect to ConfigStore");
        return;
    }
    RunOrThrow(store, Statements::CLEAR_AUTO_CONFIG, "Error removing auto configuration value.");
    RunOrThrow(store, Statements::DELETE_EMPTY_ROWS, "Error cleaning up config.");
}

void CleanupStore(bool keepDataFiles)
{
    CleanupConfigRows();
    CleanupDataFileRows(keepDataFiles);
}
}  // namespace NimbConfigStore
