#include "Files.h"

#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "CSLogger.h"
#include "HostUtil.h"

namespace fs = std::filesystem;

namespace NimbConfigStore
{
namespace
{
pid_t WaitFor(pid_t child, int& status)
{
    pid_t ended = 0;
    do {
        ended = waitpid(child, &status, 0);
    } while (ended < 0 && errno == EINTR);
    return ended;
}
}  // namespace

bool FileExists(const char* path)
{
    return File_Exists(path);
}

bool RemoveFile(const char* path)
{
    const std::string realPath = HostPathNoFollow(path);
    int result = 0;
    do {
        result = remove(realPath.c_str());
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        CSLogger::Log(CSLogger::ERROR, "Failed to remove: %s, err: %d", path, errno);
        return false;
    }
    CSLogger::Log(CSLogger::ERROR, "[%s] file removed.", path);
    return true;
}

bool ExecCommand(const char** argv)
{
    const pid_t child = HostSpawn(argv);
    if (child < 0) {
        CSLogger::LogErrCode(CSLogger::ERROR, CS_ERROR_COMMAND_START, strerror(errno));
        return false;
    }
    int status = 0;
    if (WaitFor(child, status) < 0) {
        CSLogger::LogErrCode(CSLogger::ERROR, CS_ERROR_COMMAND_WAIT, static_cast<int>(child), strerror(errno));
        return false;
    }
    if (status != 0) {
        CSLogger::LogErrCode(CSLogger::ERROR, CS_ERROR_COMMAND_FAILED,
                             WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
        return false;
    }
    return true;
}

void RemoveTree(const std::string& path)
{
    std::error_code failure;
    fs::remove_all(HostPathNoFollow(path), failure);
    if (failure) {
        throw fs::filesystem_error("cannot remove", path, failure);
    }
}

std::vector<std::string> ListFolder(const std::string& path)
{
    std::error_code failure;
    std::vector<std::string> names;
    for (fs::directory_iterator entry(HostPath(path), failure), end; !failure && entry != end;
         entry.increment(failure)) {
        names.push_back(entry->path().filename());
    }
    if (failure) {
        throw fs::filesystem_error("cannot list", path, failure);
    }
    return names;
}
}  // namespace NimbConfigStore
