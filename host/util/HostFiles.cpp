#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "CSLogger.h"
#include "HostUtil.h"
#include "UnfinishedFile.h"

namespace
{
constexpr mode_t NEW_FILE_MODE = 0644;
constexpr mode_t NEW_FOLDER_MODE = 0755;

// The new content of a file.
class Replacement
{
public:
    explicit Replacement(const std::string& path)
        : path_(path), target_(HostPathNoFollow(path)), folder_(FolderOf(target_)), file_(folder_)
    {}

    const FileHandle& File() const { return file_.File(); }

    // A file that is replaced passes its mode on.
    bool TakePlace(mode_t mode)
    {
        struct stat replaced;
        if (lstat(target_.c_str(), &replaced) == 0 && S_ISREG(replaced.st_mode)) {
            mode = replaced.st_mode;
        }
        const bool taken =
            fchmod(File().Get(), mode & 07777) == 0 && fsync(File().Get()) == 0 && file_.TakePlaceOf(target_);
        if (taken && !SyncFolder(folder_)) {
            // Only a power cut could still undo it.
            CSLogger::Log(CSLogger::WARNING, "%s is replaced but its folder is not synced: %s", path_.c_str(),
                          std::strerror(errno));
        }
        return taken;
    }

private:
    const std::string path_;  // the logical one
    const std::string target_;
    const std::string folder_;
    UnfinishedFile file_;
};

bool CopyContent(const FileHandle& from, const FileHandle& to)
{
    constexpr std::size_t CHUNK = std::size_t{1} << 30;
    ssize_t copied = 0;
    do {
        copied = sendfile(to.Get(), from.Get(), nullptr, CHUNK);
    } while (copied > 0 || (copied < 0 && errno == EINTR));
    return copied == 0;
}

FileHandle OpenSource(const std::string& path, struct stat& status)
{
    // Without O_NONBLOCK opening a pipe would wait for its other end.
    FileHandle source(HostOpen(path, O_RDONLY | O_NONBLOCK));
    if (!source.IsOpen() || fstat(source.Get(), &status) != 0) {
        return FileHandle();
    }
    if (!S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return FileHandle();
    }
    return source;
}
}  // namespace

int HostCopyFile(const std::string& from, const std::string& to)
{
    struct stat status = {};
    const FileHandle source = OpenSource(from, status);
    if (!source.IsOpen()) {
        return errno;
    }
    Replacement copy(to);
    const bool done = copy.File().IsOpen() && CopyContent(source, copy.File()) && copy.TakePlace(status.st_mode);
    return done ? 0 : errno;
}

int HostReplaceFile(const std::string& path, const std::string& content)
{
    Replacement file(path);
    const bool done = file.File().IsOpen() && file.File().WriteAll(content) && file.TakePlace(NEW_FILE_MODE);
    return done ? 0 : errno;
}

int HostOpen(const std::string& path, int flags, mode_t mode)
{
    // Where anyone may plant a link under the name that is about to be created.
    if ((flags & O_CREAT) != 0 && IsWorldWritable(FolderOf(HostPathNoFollow(path)))) {
        flags |= O_NOFOLLOW;
    }
    const std::string real = (flags & O_NOFOLLOW) != 0 ? HostPathNoFollow(path) : HostPath(path);
    return open(real.c_str(), flags | O_CLOEXEC, mode);
}

int HostOpenRegular(const std::string& path)
{
    struct stat status = {};
    return OpenSource(path, status).Release();
}

int HostMakeFolders(const std::string& path)
{
    const std::string real = HostPath(path);
    // Never the root itself: a mistyped root must not come into being.
    const std::size_t firstName = IsRealHost() ? 1 : HostRoot().size() + 1;
    for (std::size_t end = real.find('/', firstName);; end = real.find('/', end + 1)) {
        if (mkdir(real.substr(0, end).c_str(), NEW_FOLDER_MODE) != 0 && errno != EEXIST) {
            return errno;
        }
        if (end == std::string::npos) {
            break;
        }
    }
    struct stat status;
    return stat(real.c_str(), &status) != 0 ? errno : S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
}
