#include <cerrno>

#include "HostUtil.h"
#include "KernelFile.h"
#include "MountTable.h"
#include "RemoteMounts.h"
#include "ZelFileSystemUse.h"
#include "ZelKernelText.h"
#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZelSnapshot.h"
#include "ZelTypes.h"

// Mounted file systems by the folder that they are seen at; of several at one place, the last, which covers the others.

namespace
{
struct MountInfo
{
    std::uint32_t major;
    std::uint32_t minor;
    bool readOnly;
    char type[63];
    char source[256];
    char root[256];
    char options[256];
    char superOptions[512];
};
constexpr ZEL_TypeMember INFO_MEMBERS[] = {
    ZEL_MEMBER(MountInfo, major, "", "major number of its device"),
    ZEL_MEMBER(MountInfo, minor, "", "minor number of its device"),
    ZEL_MEMBER(MountInfo, readOnly, "", "whether writing is refused here"),
    ZEL_MEMBER(MountInfo, type, "", "type of the file system"),
    ZEL_MEMBER(MountInfo, source, "", "device, server or name that it was mounted from"),
    ZEL_MEMBER(MountInfo, root, "", "folder of the file system that is seen here"),
    ZEL_MEMBER(MountInfo, options, "", "options of this mount"),
    ZEL_MEMBER(MountInfo, superOptions, "", "options of the file system"),
};
constexpr ZEL_Type INFO = ZelStructType<MountInfo>("mountInfo", INFO_MEMBERS);
constexpr ZEL_Type STATS = ZelStructType<ZelFileSystemUse>("mountStats", ZEL_FILE_SYSTEM_USE_MEMBERS);

std::shared_ptr<const std::vector<MountEntry>> MountTable()
{
    return OncePerZelSnapshot(&ZelSnapshotFacts::mounts, [] {
        return std::make_shared<const std::vector<MountEntry>>(
            ParseMountTable(ReadKernelFile(MOUNT_TABLE_FILE).value_or("")));
    });
}

ORV_ReturnStatus ListMounts(const ZEL_ParamList&, std::vector<std::string>& names)
{
    const std::shared_ptr<const std::vector<MountEntry>> table = MountTable();
    for (const MountEntry& entry : *table) {
        names.push_back(entry.point);
    }
    return ORV_OK;
}

bool IsReadOnly(const MountEntry& entry)
{
    const auto says = [](const std::string& options) { return options == "ro" || options.starts_with("ro,"); };
    return says(entry.options) || says(entry.superOptions);
}

ORV_ReturnStatus GetMountInfo(const ZEL_ParamList& instance, std::string& data)
{
    const std::shared_ptr<const std::vector<MountEntry>> table = MountTable();
    const MountEntry* entry = FindMount(*table, instance.Text(0));
    if (entry == nullptr) {
        return ORV_NOT_FOUND;
    }
    MountInfo info = {};
    info.major = major(DeviceNumber(entry->device));
    info.minor = minor(DeviceNumber(entry->device));
    info.readOnly = IsReadOnly(*entry);
    ZelFillText(info.type, entry->type);
    ZelFillText(info.source, entry->source);
    ZelFillText(info.root, entry->root);
    ZelFillText(info.options, entry->options);
    ZelFillText(info.superOptions, entry->superOptions);
    data = ZelBytesOf(info);
    return ORV_OK;
}

ORV_ReturnStatus GetMountStats(const ZEL_ParamList& instance, std::string& data)
{
    const std::shared_ptr<const std::vector<MountEntry>> table = MountTable();
    const MountEntry* entry = FindMount(*table, instance.Text(0));
    if (entry == nullptr) {
        return ORV_NOT_FOUND;
    }
    // The folders of another root are not what its mount table speaks of.
    if (!IsRealHost() || !MayBeAskedHowFull(*table, *entry)) {
        return ORV_NOT_SUPPORTED;
    }
    ZelFileSystemUse use = {};
    const int error = ReadZelFileSystemUse(entry->point, use);
    if (error != 0) {
        return error == ENOENT ? ORV_NOT_FOUND : ORV_NOT_SUPPORTED;
    }
    data = ZelBytesOf(use);
    return ORV_OK;
}

constexpr ZelNode NODES[] = {
    {.path = "/storage/mounts/<path>", .help = "mounted file systems", .list = ListMounts},
    {.path = "/storage/mounts/<path>/info", .help = "what is mounted and how", .output = &INFO, .get = GetMountInfo},
    {.path = "/storage/mounts/<path>/stats",
     .help = "how full it is; not told of network file systems and what lies in them: servers may not answer",
     .output = &STATS,
     .get = GetMountStats},
};
}  // namespace

constinit const ZelProvider ZEL_MOUNT_PROVIDER = NODES;
