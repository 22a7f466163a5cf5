#include <string>
#include <vector>

#include "CSLogger.h"
#include "ConfigStoreException.h"
#include "Files.h"
#include "NimbConfigStore.h"
#include "StoreConnection.h"
#include "StorePaths.h"
#include "StoreStatements.h"
#include "StoreTransaction.h"

namespace NimbConfigStore
{
namespace
{
bool Run(const DBStore::ConnectionPtr& store, const char* statement)
{
    return DBStore::Execute(store, statement, DBStore::WAIT_LIMIT_MS) == DBStore::SUCCESS;
}

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
    const bool deleted = Run(store, Statements::DELETE_ORPHANED_CONFIG);
    (void)schemas.Detach();  // logged there
    if (deleted) {
        CSLogger::Log(CSLogger::INFO, "Cleanup config store completed");
    } else {
        CSLogger::Log(CSLogger::ERROR, "ConfigStore cleanup failed: SQL command unsuccessful");
    }
}

bool ReadOrphanedFolders(const DBStore::ConnectionPtr& store, std::vector<std::string>& folders)
{
    const DBStore::StatementPtr select =
        DBStore::internal::Prepare(store, Statements::SELECT_ORPHANED_DIRS, DBStore::WAIT_LIMIT_MS);
    return DBStore::ExecuteStmt(store, select, CollectName, &folders, DBStore::WAIT_LIMIT_MS) == DBStore::SUCCESS;
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
    if (folders != nullptr && !ReadOrphanedFolders(store, *folders)) {
        CSLogger::Log(CSLogger::ERROR, "Datafile live cleanup failed: read dir SQL command unsuccessful");
        return false;
    }
    if (!Run(store, Statements::DELETE_ORPHANED_DATAFILES)) {
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
    if (!Run(store, Statements::CLEAR_AUTO_CONFIG)) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Error removing auto configuration value.");
    }
    if (!Run(store, Statements::DELETE_EMPTY_ROWS)) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Error cleaning up config.");
    }
}

void CleanupStore(bool keepDataFiles)
{
    CleanupConfigRows();
    CleanupDataFileRows(keepDataFiles);
}
}  // namespace NimbConfigStore
