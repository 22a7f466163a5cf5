#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#pragma GCC visibility push(default)

/// The kernel's system information: a tree of nodes that are read (GET) and set (SET) with typed data. On a real host
/// it is the running kernel; inside another root the facts of /etc/talvor/platform/kernel.json. What is set is kept
/// under /var/run/talvor/zel, where other processes read it back.
/// Nothing here throws; every call answers with a status. Calls may be made from any thread; a parameter list belongs
/// to one thread at a time.

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
    ZEL_NODE_system_quenfs_ramdisks_memUsageLimit,  ///< SET, GET: warning and error limit of a ramdisk, in percent
    ZEL_NODE_system_quenfs_inodes_stats,            ///< GET: ZEL_InodeStats of one inode
};

/// Layout of /system/quenfs/inodes/<number>/stats.
struct ZEL_InodeStats
{
    std::uint64_t inode;
    std::uint64_t sizeBytes;
    char tardisk[256];  ///< name of the tardisk that delivered the file; empty when none did
};

/// Layout of /system/quenfs/ramdisks/<name>/memUsageLimit; a SET takes the two as integers, in this order.
struct ZEL_MemUsageLimit
{
    std::int64_t warningPercent;
    std::int64_t errorPercent;  ///< at most 100 and not below the warning limit
};

enum ZEL_DataKind : std::uint32_t
{
    ZEL_DATA_NONE,
    ZEL_DATA_TEXT,     ///< NUL-terminated
    ZEL_DATA_BYTES,    ///< as many as the size says
    ZEL_DATA_INTEGER,  ///< in the host's byte order, 8 bytes
    ZEL_DATA_RECORD,   ///< a struct of the members listed
};

/// One member of a record; of a text the size counts the NUL.
struct ZEL_TypeMember
{
    const char* name;
    ZEL_DataKind kind;
    std::size_t offset;
    std::size_t size;
};

/// What a GET gives or a SET takes.
struct ZEL_Type
{
    const char* name;
    ZEL_DataKind kind;
    std::size_t size;  ///< bytes of the data; 0 for a text of any length
    const ZEL_TypeMember* members;
    std::size_t memberCount;
};

/// One row of the tree's definition. A component "<NAME:integer>" or "<NAME:text>" of the path stands for the
/// instances of an instance branch.
struct ZEL_NodeDefinition
{
    ZEL_NodeID node;
    const char* path;
    const ZEL_Type* output;  ///< null when the node cannot be read
    const ZEL_Type* input;   ///< null when the node cannot be set; a record's members are the parameters
    const char* help;
};

/// The definitions in order of node, or null past the last. They live as long as the process.
const ZEL_NodeDefinition* ZEL_NodeDefinitionAt(std::size_t index);

/// The kind of instance argument that a component of a definition's path stands for: ZEL_DATA_INTEGER or
/// ZEL_DATA_TEXT, and ZEL_DATA_NONE for a component that is a plain name.
ZEL_DataKind ZEL_PlaceholderKind(std::string_view component);

/// Signature of the definitions this process was built with: the MD5 digest of them all, 32 lower-case digits.
extern const char* const ZEL_DefsMD5Sum;

/// 0 when the kernel's definitions have the signature @p md5 and interface version @p version; the system's is 21.
inline constexpr int ZEL_INTERFACE_VERSION = 21;
ORV_ReturnStatus ZEL_CheckSig(const char* md5, int version);

struct ZEL_ParamList;

/// A list of at most @p capacity typed parameters. @p isInstance is 1 for instance arguments, 0 for input of a SET.
/// Null when out of memory or @p capacity is negative.
ZEL_ParamList* ZEL_ParamListCreate(int isInstance, int capacity);
/// Each adds a copy: ORV_LIMIT_EXCEEDED when the list is full, ORV_BAD_PARAM for a null list or text.
ORV_ReturnStatus ZEL_ParamListAddString(ZEL_ParamList* list, const char* text);
ORV_ReturnStatus ZEL_ParamListAddInt(ZEL_ParamList* list, std::int64_t number);
/// Null is allowed.
void ZEL_ParamListDestroy(ZEL_ParamList* list);

/// The type of a node's GET. Release it with ZEL_ReleaseType. ORV_NOT_SUPPORTED for a node that cannot be read.
ORV_ReturnStatus ZEL_LookupOutputTypeOfGet(ZEL_NodeID node, const ZEL_Type** type);
/// Null is allowed.
void ZEL_ReleaseType(const ZEL_Type* type);

/// Reads a leaf into @p buffer of @p size bytes: a text cut to fit and NUL-terminated, anything else only when it fits
/// (ORV_LIMIT_EXCEEDED otherwise). @p instance is null for a node without instances. ORV_NOT_SUPPORTED for a node that
/// cannot be read, ORV_NOT_FOUND for an instance that does not exist. On failure @p buffer is untouched.
ORV_ReturnStatus ZEL_Get(ZEL_NodeID node, const ZEL_ParamList* instance, void* buffer, std::size_t size);

/// Sets a leaf. ORV_READ_ONLY for a node that cannot be set, ORV_BAD_PARAM for parameters of another number, kind or
/// range than the node takes. The last two arguments are for output that no node here has: null.
ORV_ReturnStatus ZEL_Set(ZEL_NodeID node, const ZEL_ParamList* instance, const ZEL_ParamList* input, void* output,
                         void* outputSize);

#pragma GCC visibility pop
