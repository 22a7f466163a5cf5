#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

#include "ZelTypes.h"

/// How full a file system is.
struct ZelFileSystemUse
{
    std::uint64_t totalBytes;
    std::uint64_t freeBytes;
    std::uint64_t availableBytes;
    std::uint64_t inodes;
    std::uint64_t freeInodes;
};

inline constexpr ZEL_TypeMember ZEL_FILE_SYSTEM_USE_MEMBERS[] = {
    ZEL_MEMBER(ZelFileSystemUse, totalBytes, "bytes", "capacity"),
    ZEL_MEMBER(ZelFileSystemUse, freeBytes, "bytes", "space that nothing uses"),
    ZEL_MEMBER(ZelFileSystemUse, availableBytes, "bytes", "free space that is not set aside for the administrator"),
    ZEL_MEMBER(ZelFileSystemUse, inodes, "", "files that there is room for; 0 where there is no such limit"),
    ZEL_MEMBER(ZelFileSystemUse, freeInodes, "", "files that can be made yet"),
};

/// Asks the file system that is seen at the logical path @p point of the running system. @return 0, or an errno: ENOENT
/// when @p device is given and the file system is on another one.
int ReadZelFileSystemUse(const std::string& point, ZelFileSystemUse& use, std::optional<dev_t> device = std::nullopt);
