#pragma once

#include <cstddef>
#include <cstdint>

#pragma GCC visibility push(default)

/// The kernel's system information: a tree of nodes that are read (GET) and set (SET) with typed data. On a real host
/// it is the running kernel; inside another root the facts of /etc/talvor/platform/kernel.json.
/// Nothing here throws; every call answers with a status.

using ORV_ReturnStatus = std::int32_t;
inline constexpr ORV_ReturnStatus ORV_OK = 0;
inline constexpr ORV_ReturnStatus ORV_FAILURE = 1;
inline constexpr ORV_ReturnStatus ORV_NOT_FOUND = 2;
inline constexpr ORV_ReturnStatus ORV_BAD_PARAM = 3;
inline constexpr ORV_ReturnStatus ORV_NO_MEMORY = 4;
inline constexpr ORV_ReturnStatus ORV_NOT_SUPPORTED = 5;
inline constexpr ORV_ReturnStatus ORV_READ_ONLY = 6;
inline constexpr ORV_ReturnStatus ORV_LIMIT_EXCEEDED = 7;

/// The status in words. Never null.
const char* ORV_ReturnStatusToString(ORV_ReturnStatus status);

/// A node of the tree's definition. An instance of an instance branch is chosen by an instance argument.
enum ZEL_NodeID : std::uint32_t
{
    ZEL_NODE_system_bootCmdLine,  ///< text: the kernel's boot command line
    ZEL_NODE_system_bootMAC,      ///< text: the MAC address of the network card booted from; empty otherwise
    ZEL_NODE_system_bootOption,   ///< four bytes; the fourth is nonzero when booted from installer media
    ZEL_NODE_system_bootFsUUID,   ///< text: the UUID of the boot file system
    ZEL_NODE_system_sysAlert,     ///< SET only: raises a system alert with one text
    ZEL_NODE_system_quenfs_ramdisks_memUsageLimit, ///< SET, GET: warning and error limit of a ramdisk, in percent
    ZEL_NODE_system_quenfs_inodes_stats,           ///< GET: ZEL_InodeStats of one inode
};

/// Layout of /system/quenfs/inodes/<number>/stats.
struct ZEL_InodeStats
{
    std::uint64_t inode;
    std::uint64_t sizeBytes;
    char tardisk[256]; ///< name of the tardisk that delivered the file; empty when none did
};

/// Signature of the definitions this process was built with.
extern const char ZEL_DefsMD5Sum[];

/// 0 when the kernel's definitions have the signature @p md5 and interface version @p version; the system's is 21.
inline constexpr int ZEL_INTERFACE_VERSION = 21;
ORV_ReturnStatus ZEL_CheckSig(const char* md5, int version);

struct ZEL_ParamList;

/// A list of typed parameters. @p isInstance is 1 for instance arguments, 0 for input of a SET. Null when out of memory.
ZEL_ParamList* ZEL_ParamListCreate(int isInstance, int capacity);
ORV_ReturnStatus ZEL_ParamListAddString(ZEL_ParamList* list, const char* text);
ORV_ReturnStatus ZEL_ParamListAddInt(ZEL_ParamList* list, std::int64_t number);
/// Null is allowed.
void ZEL_ParamListDestroy(ZEL_ParamList* list);

/// Reads a leaf into @p buffer of @p size bytes: a text cut to fit and NUL-terminated, anything else only when it fits.
ORV_ReturnStatus ZEL_Get(ZEL_NodeID node, const ZEL_ParamList* instance, void* buffer, std::size_t size);

/// Sets a leaf. The last two arguments are for output that no node here has: null.
ORV_ReturnStatus ZEL_Set(ZEL_NodeID node, const ZEL_ParamList* instance, const ZEL_ParamList* input, void* output,
                         void* outputSize);

#pragma GCC visibility pop
