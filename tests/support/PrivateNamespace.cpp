#include "PrivateNamespace.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace
{
constexpr int PASSED = 0;
constexpr int FAILED = 1;
constexpr int UNAVAILABLE = 100;  // and the errno of the step that failed

bool WriteLine(const char* file, const std::string& line)
{
    const int descriptor = open(file, O_WRONLY | O_CLOEXEC);
    const bool written =
        descriptor >= 0 && write(descriptor, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return written;
}

/// Its user becomes the administrator in there, its mounts stay in there.
bool Enter()
{
    const std::string user = "0 " + std::to_string(geteuid()) + " 1";
    const std::string group = "0 " + std::to_string(getegid()) + " 1";
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && WriteLine("/proc/self/uid_map", user) &&
           WriteLine("/proc/self/setgroups", "deny") && WriteLine("/proc/self/gid_map", group) &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

[[noreturn]] void RunChild(const std::function<void()>& body)
{
    if (!Enter()) {
        _exit(UNAVAILABLE + errno);
    }
    body();
    fflush(nullptr);
    _exit(testing::Test::HasFailure() ? FAILED : PASSED);
}
}  // namespace

std::string RunInPrivateNamespace(const std::function<void()>& body)
{
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        RunChild(body);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) {
        return std::string("no child process: ") + strerror(errno);
    }
    const int result = WIFEXITED(status) ? WEXITSTATUS(status) : FAILED;
    if (result >= UNAVAILABLE) {
        return std::string("no namespaces of one's own: ") + strerror(result - UNAVAILABLE);
    }
    EXPECT_EQ(result, PASSED) << "in the private namespace, see above; status " << status;
    return "";
}
