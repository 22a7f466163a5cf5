#include "UnfinishedFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace
{
constexpr const char* NAME_START = ".new-";
constexpr const char* NAME_TEMPLATE = ".new-XXXXXX";
constexpr std::size_t NAME_LENGTH = 11;

void RemoveIfAbandoned(const std::string& path)
{
    const FileHandle file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (file.IsOpen() && fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) &&
        flock(file.Get(), LOCK_EX | LOCK_NB) == 0) {
        (void)unlink(path.c_str());  // the next one tries again
    }
}

void RemoveAbandoned(const std::string& folder)
{
    if (IsWorldWritable(folder)) {
        return;
    }
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end; entry.increment(failure)) {
        const std::string name = entry->path().filename().string();
        if (name.starts_with(NAME_START) && name.size() == NAME_LENGTH) {
            RemoveIfAbandoned(entry->path().string());
        }
    }
}
}  // namespace

bool IsWorldWritable(const std::string& folder)
{
    struct stat status = {};
    return stat(folder.c_str(), &status) == 0 && (status.st_mode & S_IWOTH) != 0;
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
}

bool SyncFolder(const std::string& folder)
{
    const FileHandle handle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return handle.IsOpen() && fsync(handle.Get()) == 0;
}

UnfinishedFile::UnfinishedFile(const std::string& folder)
{
    RemoveAbandoned(folder);
    while (Create(folder) && !IsKept()) {
    }
}

UnfinishedFile::~UnfinishedFile()
{
    if (file_.IsOpen() && !finished_) {
        (void)unlink(path_.c_str());  // the next one to be begun in the folder tries again
    }
}

bool UnfinishedFile::Create(const std::string& folder)
{
    path_ = folder + "/" + NAME_TEMPLATE;
    file_ = FileHandle(mkostemp(path_.data(), O_CLOEXEC));
    return file_.IsOpen();
}

/// False when another process took the file for abandoned before it was locked, and removes it.
bool UnfinishedFile::IsKept() const
{
    struct stat status = {};
    return (flock(file_.Get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) && fstat(file_.Get(), &status) == 0 &&
           status.st_nlink > 0;
}

bool UnfinishedFile::TakePlaceOf(const std::string& target)
{
    finished_ = std::rename(path_.c_str(), target.c_str()) == 0;
    return finished_;
}
