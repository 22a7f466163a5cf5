#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "CSLogger.h"
#include "Connection.h"
#include "HostUtil.h"
#include "UnfinishedFile.h"

namespace DBStore
{
namespace
{
bool TakeAccessRights(const FileHandle& file, const std::string& original)
{
    struct stat info = {};
    return stat(original.c_str(), &info) == 0 && fchmod(file.Get(), info.st_mode & 0777) == 0;
}

std::string SystemReason()
{
    return std::strerror(errno);
}

/// Copies what is committed; a change that is under way in this process stays out of it.
std::string CopyPages(const std::string& from, const std::string& to)
{
    std::string reason;
    const DatabaseHandle source = OpenDatabase(from, SQLITE_OPEN_READWRITE, reason);
    const DatabaseHandle target = source ? OpenDatabase(to, SQLITE_OPEN_READWRITE, reason) : nullptr;
    if (!target) {
        return reason;
    }
    // Nobody reads the copy before it is whole and synced, so it needs neither a journal nor a sync of its own.
    RunSql(target, "PRAGMA journal_mode = MEMORY; PRAGMA synchronous = OFF");
    sqlite3_backup* copy = sqlite3_backup_init(target.get(), "main", source.get(), "main");
    const int result = copy != nullptr ? sqlite3_backup_step(copy, -1) : SQLITE_ERROR;
    sqlite3_backup_finish(copy);
    return result == SQLITE_DONE ? "" : sqlite3_errstr(result);
}

std::string CopyStore(Type type, const std::string& realPath)
{
    const std::string store = HostPath(StorePath(type));
    UnfinishedFile copy(FolderOf(realPath));
    if (!copy.File().IsOpen() || !TakeAccessRights(copy.File(), store)) {
        return SystemReason();
    }
    std::string reason = CopyPages(store, copy.Path());
    if (!reason.empty()) {
        return reason;
    }
    const bool replaced = fsync(copy.File().Get()) == 0 && copy.TakePlaceOf(realPath) && SyncFolder(FolderOf(realPath));
    return replaced ? "" : SystemReason();
}

/// The result of a copy; a failure is logged.
int Told(Type type, const std::string& path, const std::string& reason)
{
    if (!reason.empty()) {
        CSLogger::Log(CSLogger::ERROR, "Cannot copy store database %s to %s: %s", StorePath(type), path.c_str(),
                      reason.c_str());
        return FAILURE;
    }
    return SUCCESS;
}
}  // namespace

int Backup(Type type, const std::string& path)
{
    return Told(type, path, CopyStore(type, HostPath(path)));
}

int CopyToRoot(Type type, const std::string& root)
{
    const std::string path = root + StorePath(type);
    std::error_code reason;
    std::filesystem::create_directories(FolderOf(path), reason);
    return Told(type, path, reason ? reason.message() : CopyStore(type, path));
}
}  // namespace DBStore
