#include <spawn.h>
#include <unistd.h>

#include <cerrno>

#include "HostUtil.h"

pid_t HostSpawn(const char* const* argv)
{
    if (argv == nullptr || argv[0] == nullptr) {
        errno = EINVAL;
        return -1;
    }
    pid_t child = -1;
    // posix_spawn leaves the arguments alone; its prototype only predates const.
    errno = posix_spawn(&child, argv[0], nullptr, nullptr, const_cast<char* const*>(argv), environ);
    return errno == 0 ? child : -1;
}
