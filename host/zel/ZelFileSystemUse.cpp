#include "ZelFileSystemUse.h"

#include <sys/statvfs.h>

#include <cerrno>

#include "HostUtil.h"

int ReadZelFileSystemUse(const std::string& point, ZelFileSystemUse& use)
{
    struct statvfs found = {};
    if (statvfs(HostPath(point).c_str(), &found) != 0) {
        return errno;
    }
    use = {.totalBytes = found.f_blocks * found.f_frsize,
           .freeBytes = found.f_bfree * found.f_frsize,
           .availableBytes = found.f_bavail * found.f_frsize,
           .inodes = found.f_files,
           .freeInodes = found.f_ffree};
    return 0;
}
