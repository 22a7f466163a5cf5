#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <vector>

#include "CSLogger.h"
#include "Connection.h"
#include "HostUtil.h"
#include "StoreTables.h"

namespace DBStore
{
namespace
{
constexpr int READ_AHEAD = 1 << 20;

/// SQLite treats an empty file as an empty database, and may remove a journal that lies beside it.
bool IsFilledFile(const std::string& realPath)
{
    struct stat info = {};
    return stat(realPath.c_str(), &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0;
}

/// The connection's own file. Any other descriptor would, when closed, drop the locks that this process has on it.
sqlite3_file* FileOf(const DatabaseHandle& database)
{
    sqlite3_file* file = nullptr;
    sqlite3_file_control(database.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
    return file != nullptr && file->pMethods != nullptr ? file : nullptr;
}

/// Reading in order first brings the file into memory far sooner than the check's own jumps from page to page.
void ReadInOrder(sqlite3_file* file)
{
    sqlite3_int64 size = 0;
    file->pMethods->xFileSize(file, &size);
    std::vector<char> buffer(READ_AHEAD);
    for (sqlite3_int64 offset = 0; offset < size; offset += READ_AHEAD) {
        const auto amount = static_cast<int>(std::min<sqlite3_int64>(READ_AHEAD, size - offset));
        if (file->pMethods->xRead(file, buffer.data(), amount, offset) != SQLITE_OK) {
            return;  // the check itself will say why
        }
    }
}

/// A file in write-ahead mode is none of ours, and reading it would create files beside it.
bool UsesRollbackJournal(sqlite3_file* file)
{
    std::array<unsigned char, 20> header = {};
    return file->pMethods->xRead(file, header.data(), header.size(), 0) == SQLITE_OK && header[18] == 1 &&
           header[19] == 1;
}

bool HasTable(const DatabaseHandle& database, const char* table)
{
    char* sql = sqlite3_mprintf("SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = %Q", table);
    const bool found = !QueryText(database, sql).empty();
    sqlite3_free(sql);
    return found;
}

/// Why the database is not consistent; empty when it is.
std::string Examine(const DatabaseHandle& database, const StoreDefinition& definition)
{
    const std::string report = QueryText(database, "PRAGMA cell_size_check = ON; PRAGMA integrity_check(1)");
    if (report != "ok") {
        return report.empty() ? sqlite3_errmsg(database.get()) : report;
    }
    for (const char* table : definition.tables) {
        if (!HasTable(database, table)) {
            return std::string("no table ") + table;
        }
    }
    return "";
}

std::string WhyInconsistent(const std::string& path)
{
    const std::string realPath = HostPath(path);
    if (!IsFilledFile(realPath)) {
        return "no file, or an empty one";
    }
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(realPath.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
    const DatabaseHandle database(opened);
    sqlite3_file* file = result == SQLITE_OK ? FileOf(database) : nullptr;
    if (file == nullptr) {
        return opened != nullptr ? sqlite3_errmsg(opened) : sqlite3_errstr(result);
    }
    Configure(opened);
    if (!UsesRollbackJournal(file)) {
        return "not a store database";
    }
    ReadInOrder(file);
    return Examine(database, DefinitionForFile(path.substr(path.find_last_of('/') + 1)));
}
}  // namespace

bool Check(const char* path)
{
    const std::string reason = WhyInconsistent(path);
    if (!reason.empty()) {
        CSLogger::Log(CSLogger::WARNING, "Store database %s is inconsistent: %s", path, reason.c_str());
    }
    return reason.empty();
}
}  // namespace DBStore
