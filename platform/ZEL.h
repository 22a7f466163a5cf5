#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ZelType.h"

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

// ---- Definitions --------------------------------------------------------------------------------------------------

/// A node of the tree's definition. Those that programs address directly have names; the others are numbered by the
/// definitions of this build and found from the root.
enum ZEL_NodeID : std::uint32_t
{
    ZEL_NODE_root,                ///< the branch that all others are below
    ZEL_NODE_system_bootCmdLine,  ///< text: the kernel's boot command line
    ZEL_NODE_system_bootMAC,      ///< text: the MAC address of the network card booted from; empty otherwise
    ZEL_NODE_system_bootOption,   ///< four bytes; the fourth is nonzero when booted from installer media
    ZEL_NODE_system_bootFsUUID,   ///< text: the UUID of the boot file system
    ZEL_NODE_system_sysAlert,     ///< SET only: raises a system alert with one text
    ZEL_NODE_system_quenfs_ramdisks_memUsageLimit,  ///< SET, GET: warning and error limit of a ramdisk, in percent
    ZEL_NODE_system_quenfs_inodes_stats,            ///< GET: ZEL_InodeStats of one inode
    ZEL_NODE_system_quenfs_ramdisks_stats,          ///< GET: ZEL_RamdiskStats of one ramdisk
    ZEL_NODE_firstUnnamed = 64,
};

/// Layout of `/system/quenfs/inodes/<number>/stats`.
struct ZEL_InodeStats
{
    std::uint64_t inode;
    std::uint64_t sizeBytes;
    std::uint64_t device;  ///< of the file system that the inode belongs to, as stat() gives it
    char tardisk[256];     ///< name of the tardisk that delivered the file; empty when none did
};

/// Layout of `/system/quenfs/ramdisks/<name>/stats`.
struct ZEL_RamdiskStats
{
    std::uint64_t totalBytes;
    std::uint64_t usedBytes;
    std::uint32_t usedPercent;  ///< rounded up
    std::uint32_t state;        ///< against the limits: 0 normal, 1 warning, 2 error
    char mountPoint[256];
};

/// Layout of `/system/quenfs/ramdisks/<name>/memUsageLimit`; a SET takes the two as integers, in this order.
struct ZEL_MemUsageLimit
{
    std::int64_t warningPercent;
    std::int64_t errorPercent;  ///< at most 100 and not below the warning limit
};

enum ZEL_NodeKind : std::uint32_t
{
    ZEL_KIND_BRANCH,           ///< its children are nodes
    ZEL_KIND_LEAF,             ///< is read, set or both
    ZEL_KIND_INSTANCE_BRANCH,  ///< its children are instances found at run time; below each stand the node's children
};

/// A node as it is defined, whatever instances there are. Null is no text here: what does not apply is empty.
struct ZEL_NodeDefinition
{
    ZEL_NodeID node;
    ZEL_NodeID parent;  ///< the root is its own
    ZEL_NodeKind kind;
    const char* name;            ///< one component of a path; empty for the root
    const char* path;            ///< "/net/interfaces/<interface>/stats": instances stand under their argument's name
    const char* help;            ///< one line
    const char* instanceName;    ///< of an instance branch: what one instance is called ("interface")
    ZEL_DataKind instanceKind;   ///< of an instance branch: ZEL_DATA_TEXT, or ZEL_DATA_UINT64 written in decimal
    const ZEL_Type* outputType;  ///< of a leaf that can be read, else null
    const ZEL_Type* inputType;   ///< of a leaf that can be set, else null
    const char* unit;            ///< of a leaf whose value is one number
};

/// The definition of a node; null for a number that is no node's. Definitions live as long as the process.
const ZEL_NodeDefinition* ZEL_LookupNode(ZEL_NodeID node);

/// Every definition, the root first, each branch before what is below it; null past the last.
const ZEL_NodeDefinition* ZEL_NodeDefinitionAt(std::size_t index);

/// The children of a branch or instance branch as they are defined, in their order; null past the last.
const ZEL_NodeDefinition* ZEL_ChildAt(ZEL_NodeID branch, std::size_t index);

/// The child of that name; null when there is none.
const ZEL_NodeDefinition* ZEL_FindChild(ZEL_NodeID branch, const char* name);

/// Signature of the definitions this process was built with: the MD5 digest of them all (nodes, types, members, names
/// of values), 32 lower-case digits.
extern const char* const ZEL_DefsMD5Sum;

/// Of the interface that these definitions belong to.
inline constexpr int ZEL_INTERFACE_VERSION = 21;

/// 0 when the kernel's definitions have the signature @p md5 and interface version @p version.
ORV_ReturnStatus ZEL_CheckSig(const char* md5, int version);

// ---- Parameters ---------------------------------------------------------------------------------------------------

struct ZEL_ParamList;

/// A list of at most @p capacity typed parameters. @p isInstance is 1 for instance arguments, 0 for input of a SET.
/// Null when out of memory or @p capacity is negative.
ZEL_ParamList* ZEL_ParamListCreate(int isInstance, int capacity);
/// Each adds a copy: ORV_LIMIT_EXCEEDED when the list is full, ORV_BAD_PARAM for a null list or text. An unsigned
/// number is added as the 64 bits that it is.
/// @{
ORV_ReturnStatus ZEL_ParamListAddString(ZEL_ParamList* list, const char* text);
ORV_ReturnStatus ZEL_ParamListAddInt(ZEL_ParamList* list, std::int64_t number);
/// @}
/// Null is allowed.
void ZEL_ParamListDestroy(ZEL_ParamList* list);

// ---- Instances ----------------------------------------------------------------------------------------------------

/// The instances of an instance branch at this moment, sorted: numbers by value, texts by their bytes. @p instance
/// holds the arguments of the instance branches above it; null when there are none. A name may hold any byte but NUL,
/// slashes and blanks too, and is never empty.
/// ORV_NOT_FOUND when an instance above does not exist, ORV_BAD_PARAM for a node that is no instance branch. On failure
/// @p names is untouched.
ORV_ReturnStatus ZEL_ListInstances(ZEL_NodeID branch, const ZEL_ParamList* instance, std::vector<std::string>& names);

// ---- Reading and setting ------------------------------------------------------------------------------------------

/// The type of a node's GET. Release it with ZEL_ReleaseType. ORV_NOT_SUPPORTED for a node that cannot be read.
ORV_ReturnStatus ZEL_LookupOutputTypeOfGet(ZEL_NodeID node, const ZEL_Type** type);
/// Null is allowed.
void ZEL_ReleaseType(const ZEL_Type* type);

/// Reads a leaf into @p buffer of @p size bytes: a text cut to fit and NUL-terminated, anything else only when it fits
/// (ORV_LIMIT_EXCEEDED otherwise). @p instance is null for a node without instances. ORV_NOT_SUPPORTED for a node that
/// cannot be read, or not on this host; ORV_NOT_FOUND for an instance that does not exist (any longer). On failure
/// @p buffer is untouched.
ORV_ReturnStatus ZEL_Get(ZEL_NodeID node, const ZEL_ParamList* instance, void* buffer, std::size_t size);

/// Reads a leaf whole, however long it is: as many bytes as its type says, or as there are of a type of any length.
/// Statuses are those of ZEL_Get; on failure @p data is untouched.
ORV_ReturnStatus ZEL_GetData(ZEL_NodeID node, const ZEL_ParamList* instance, std::string& data);

/// Sets a leaf. The input has one parameter, or of a structure one for each member, in their order: booleans, integers
/// and enumerations as integers, all else as strings in their text form.
/// ORV_READ_ONLY for a node that cannot be set, ORV_BAD_PARAM for parameters of another number, kind or range than the
/// node takes; nothing is set then. The last two arguments are for output that no node here has: null.
ORV_ReturnStatus ZEL_Set(ZEL_NodeID node, const ZEL_ParamList* instance, const ZEL_ParamList* input, void* output,
                         void* outputSize);

/// For as long as one lives, its thread reads facts that take long to gather (the facts of another root, the origin of
/// its inodes) or that tell of many instances at once (mounts, counts and addresses of interfaces, times of processors)
/// once: for programs that read many nodes, and want them of one moment. May be nested.
class ZEL_Snapshot
{
public:
    ZEL_Snapshot();
    ~ZEL_Snapshot();
    ZEL_Snapshot(const ZEL_Snapshot&) = delete;
    ZEL_Snapshot& operator=(const ZEL_Snapshot&) = delete;
};

#pragma GCC visibility pop
