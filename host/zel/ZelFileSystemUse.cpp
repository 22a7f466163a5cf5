#include "ZelFileSystemUse.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>

#include "FileHandle.h"
#include "HostUtil.h"

int ReadZelFileSystemUse(const std::string& point, ZelFileSystemUse& use, std::optional<dev_t> device)
{
    const FileHandle place(HostOpen(point, O_PATH));  // that what is told apart is what is measured
    struct stat seen = {};
    struct statvfs found = {};
    if (!place.IsOpen() || fstat(place.Get(), &seen) != 0 || fstatvfs(place.Get(), &found) != 0) {
        return errno;
    }
    if (device && seen.st_dev != *device) {
        return ENOENT;
    }
    use = {.totalBytes = found.f_blocks * found.f_frsize,
           .freeBytes = found.f_bfree * found.f_frsize,
           .availableBytes = found.f_bavail * found.f_frsize,
           .inodes = found.f_files,
           .freeInodes = found.f_ffree};
    return 0;
}
