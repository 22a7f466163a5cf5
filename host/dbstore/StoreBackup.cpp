#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "CSLogger.h"
#include "Connection.h"
#include "FileHandle.h"
#include "HostUtil.h"

namespace DBStore
{
namespace
{
/// An unfinished copy beside the target; removed unless it took the target's place.
class TemporaryCopy
{
public:
    explicit TemporaryCopy(std::string path) : path_(std::move(path)) {}
    ~TemporaryCopy()
    {
        (void)unlink(path_.c_str());  // gone already after a success
    }
    TemporaryCopy(const TemporaryCopy&) = delete;
    TemporaryCopy& operator=(const TemporaryCopy&) = delete;

    const std::string& Path() const { return path_; }

    /// Creates the empty file under a name that nobody else has, with the access rights of @p original.
    bool CreateLike(const std::string& original)
    {
        struct stat info = {};
        const FileHandle file(mkostemp(path_.data(), O_CLOEXEC));
        return file.IsOpen() && stat(original.c_str(), &info) == 0 && fchmod(file.Get(), info.st_mode & 0777) == 0;
    }

private:
    std::string path_;
};

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

bool SyncFile(const std::string& path, int flags)
{
    const FileHandle file(open(path.c_str(), flags | O_RDONLY | O_CLOEXEC));
    return file.IsOpen() && fsync(file.Get()) == 0;
}

std::string FolderOf(const std::string& path)
{
    return path.substr(0, path.find_last_of('/') + 1);
}

std::string CopyStore(Type type, const std::string& realPath)
{
    const std::string store = HostPath(StorePath(type));
    TemporaryCopy copy(realPath + ".XXXXXX");
    if (!copy.CreateLike(store)) {
        return SystemReason();
    }
    std::string reason = CopyPages(store, copy.Path());
    if (!reason.empty()) {
        return reason;
    }
    const bool replaced = SyncFile(copy.Path(), 0) && std::rename(copy.Path().c_str(), realPath.c_str()) == 0 &&
                          SyncFile(FolderOf(realPath), O_DIRECTORY);
    return replaced ? "" : SystemReason();
}
}  // namespace

int Backup(Type type, const std::string& path)
{
    const std::string reason = CopyStore(type, HostPath(path));
    if (!reason.empty()) {
        CSLogger::Log(CSLogger::ERROR, "Cannot copy store database %s to %s: %s", StorePath(type), path.c_str(),
                      reason.c_str());
        return FAILURE;
    }
    return SUCCESS;
}
}  // namespace DBStore
