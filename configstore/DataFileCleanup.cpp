#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "CSLogger.h"
#include "Files.h"
#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "RunStatement.h"
#include "StoreConnection.h"
#include "StorePaths.h"
#include "StoreStatements.h"
#include "ZubEvents.h"

namespace fs = std::filesystem;

namespace NimbConfigStore
{
namespace
{
// Names of the files that the metadata lists, by directory.
using DataFileMap = std::map<std::string, std::set<std::string>>;

void ReportFailure(const char* text)
{
    CSLogger::Log(CSLogger::ERROR, "%s", text);
    DumpZub(ZUB_DFS_CLEANUP_ERROR, 0);
}

int CollectFile(void* map, int, char** values, char**)
{
    if (values[0] != nullptr && values[1] != nullptr) {
        (*static_cast<DataFileMap*>(map))[values[0]].emplace(values[1]);
    }
    return 0;
}

std::string JoinNames(const std::set<std::string>& names)
{
    std::string joined;
    for (const std::string& name : names) {
        joined += joined.empty() ? "" : "','";
        joined += name;
    }
    return joined;
}

void LogDataFileMap(const DataFileMap& map)
{
    CSLogger::Log(CSLogger::INFO, "DataFileMap:");
    for (const auto& [directory, files] : map) {
        CSLogger::Log(CSLogger::DEBUG, "%s : %s", directory.c_str(), JoinNames(files).c_str());
    }
}

// A link is none: what it leads to is not the data-file store's to walk or to remove.
bool IsDirectory(const std::string& path)
{
    std::error_code failure;
    return fs::symlink_status(HostPathNoFollow(path), failure).type() == fs::file_type::directory;
}

void Remove(const char* format, const std::string& path)
{
    CSLogger::Log(CSLogger::INFO, format, path.c_str());
    RemoveTree(path);
}

// Removes what the directory holds beyond @p files and takes the files that it does hold out of the set.
void ReconcileDirectory(const std::string& path, std::set<std::string>& files)
{
    for (const std::string& name : ListFolder(path)) {
        if (files.erase(name) == 0) {
            Remove("Datafile not in store, remove: %s", path + "/" + name);
        }
    }
}

// What is left in the map has no file on disk.
void ReconcileRootEntry(const std::string& name, DataFileMap& map)
{
    const std::string path = std::string(DATAFILE_ROOT) + "/" + name;
    const auto directory = map.find(name);
    if (!IsDirectory(path)) {
        Remove("Delete illegal file at datafiles root: %s", path);
        return;
    }
    if (directory == map.end()) {
        Remove("Datafile directory not in store, remove: %s", path);
        return;
    }
    ReconcileDirectory(path, directory->second);
    CSLogger::Log(CSLogger::INFO, "DataDir found: %s", name.c_str());
    if (directory->second.empty()) {
        map.erase(directory);
    }
}

bool DeleteMetadata(const DBStore::ConnectionPtr& store, const std::string& directory,
                    const std::set<std::string>& files)
{
    std::string text = std::string(Statements::DELETE_MISSING_DATAFILES) + "(";
    std::vector<BoundText> names{directory};
    for (const std::string& file : files) {
        text += "?,";
        names.emplace_back(file);
    }
    text.back() = ')';
    return RunStatement(store, text, names);
}

void DeleteMissingMetadata(const DBStore::ConnectionPtr& store, const DataFileMap& missing)
{
    for (const auto& [directory, files] : missing) {
        if (!DeleteMetadata(store, directory, files)) {
            ReportFailure("CleanupDataFiles failed to clearup metadata");
        }
    }
}

void ReconcileRoot(const DBStore::ConnectionPtr& store, DataFileMap& map)
{
    for (const std::string& name : ListFolder(DATAFILE_ROOT)) {
        ReconcileRootEntry(name, map);
    }
    DeleteMissingMetadata(store, map);
}

void DeleteAllMetadata(const DBStore::ConnectionPtr& store)
{
    if (DBStore::Execute(store, Statements::DELETE_ALL_DATAFILES, DBStore::WAIT_LIMIT_MS) != DBStore::SUCCESS) {
        ReportFailure("CleanupDataFiles clear sql command failed");
    }
}
// False, after a report, when nobody can tell whether the root still holds what the metadata describe: they stay.
bool ReconcileMetadata(const DBStore::ConnectionPtr& store, DataFileMap& map)
{
    std::error_code failure;
    const fs::file_type root = fs::status(HostPath(DATAFILE_ROOT), failure).type();
    if (root == fs::file_type::none) {
        const std::string text = std::string("CleanupDataFiles cannot examine ") + DATAFILE_ROOT;
        ReportFailure((text + ": " + failure.message()).c_str());
        return false;
    }
    if (root == fs::file_type::directory) {
        ReconcileRoot(store, map);
    } else {
        DeleteAllMetadata(store);
    }
    return true;
}
}  // namespace

void CleanupDataFiles()
{
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::DataFileStore, false);
    if (store == nullptr) {
        ReportFailure("Datafile store cleanup failed: could not connect");
        return;
    }
    DataFileMap map;
    if (!RunStatement(store, Statements::SELECT_DATAFILES, {}, CollectFile, &map)) {
        ReportFailure("CleanupDataFiles read sql command failed");
        return;
    }
    LogDataFileMap(map);
    if (ReconcileMetadata(store, map)) {
        CSLogger::Log(CSLogger::INFO, "CleanupDataFiles completed");
    }
}
}  // namespace NimbConfigStore
