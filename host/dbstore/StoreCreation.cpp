#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "CSLogger.h"
#include "Connection.h"
#include "FileHandle.h"
#include "HostUtil.h"
#include "StoreTables.h"

namespace DBStore
{
namespace
{
std::string FolderOf(const std::string& path)
{
    return path.substr(0, path.find_last_of('/'));
}

/// Makes the names of a new file and of the folders above it durable.
bool SyncFolders(const std::string& path)
{
    for (std::string folder = FolderOf(path); !folder.empty(); folder = FolderOf(folder)) {
        const FileHandle file(HostOpen(folder, O_RDONLY | O_DIRECTORY));
        if (!file.IsOpen() || fsync(file.Get()) != 0) {
            return false;
        }
    }
    return true;
}

bool HasStatistics(const DatabaseHandle& database, const TableStatistics& statistics)
{
    char* sql =
        sqlite3_mprintf("SELECT 1 FROM sqlite_stat1 WHERE tbl = %Q AND idx = %Q", statistics.table, statistics.index);
    const bool found = !QueryText(database, sql).empty();
    sqlite3_free(sql);
    return found;
}

bool AddStatistics(const DatabaseHandle& database, const TableStatistics& statistics)
{
    char* sql = sqlite3_mprintf("INSERT INTO sqlite_stat1 (tbl, idx, stat) VALUES (%Q, %Q, %Q)", statistics.table,
                                statistics.index, statistics.expectation);
    const int result = RunSql(database, sql);
    sqlite3_free(sql);
    return result == SQLITE_OK;
}

bool WriteStatistics(const DatabaseHandle& database, const StoreDefinition& definition)
{
    // Analysing the catalogue alone makes an empty sqlite_stat1, which nothing else can create.
    if (QueryText(database, "SELECT 1 FROM sqlite_schema WHERE name = 'sqlite_stat1'").empty() &&
        RunSql(database, "ANALYZE sqlite_schema") != SQLITE_OK) {
        return false;
    }
    for (const TableStatistics& statistics : definition.statistics) {
        if (!HasStatistics(database, statistics) && !AddStatistics(database, statistics)) {
            return false;
        }
    }
    return true;
}

bool WriteDefinitions(const DatabaseHandle& database, const StoreDefinition& definition)
{
    if (RunSql(database, "BEGIN IMMEDIATE") != SQLITE_OK) {
        return false;
    }
    for (const char* statement : definition.definitions) {
        if (RunSql(database, statement) != SQLITE_OK) {
            return false;
        }
    }
    return WriteStatistics(database, definition) && RunSql(database, "COMMIT") == SQLITE_OK;
}

bool ReportFailure(const StoreDefinition& definition, const char* reason)
{
    CSLogger::Log(CSLogger::ERROR, "Cannot create store database %s: %s", definition.path, reason);
    return false;
}

bool CreateStore(const StoreDefinition& definition)
{
    const int error = HostMakeFolders(FolderOf(definition.path));
    if (error != 0) {
        return ReportFailure(definition, std::strerror(error));
    }
    const bool isNew = !File_Exists(definition.path);
    std::string reason;
    const DatabaseHandle database =
        OpenDatabase(HostPath(definition.path), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, reason);
    if (!database) {
        return ReportFailure(definition, reason.c_str());
    }
    if (!WriteDefinitions(database, definition)) {
        return ReportFailure(definition, sqlite3_errmsg(database.get()));
    }
    return !isNew || SyncFolders(definition.path) || ReportFailure(definition, std::strerror(errno));
}
}  // namespace

int CreateDatabases()
{
    bool created = true;
    for (const Type type : {Type::ConfigStore, Type::SchemaStore, Type::DataFileStore}) {
        created = CreateStore(*DefinitionOf(type)) && created;  // one that fails does not keep the others away
    }
    return created ? SUCCESS : FAILURE;
}
}  // namespace DBStore
