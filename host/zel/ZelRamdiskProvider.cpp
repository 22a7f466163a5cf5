#include <algorithm>
#include <cstring>
#include <fstream>

#include "CSLogger.h"
#include "HostUtil.h"
#include "MountTable.h"
#include "RemoteMounts.h"
#include "ZelFileSystemUse.h"
#include "ZelKernelFolder.h"
#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZelTypes.h"

namespace
{
const std::string LIMIT_FOLDER = "/var/run/talvor/zel/memUsageLimit";

constexpr ZEL_TypeMember LIMIT_MEMBERS[] = {
    ZEL_MEMBER(ZEL_MemUsageLimit, warningPercent, "percent", "fill level at which the ramdisk warns"),
    ZEL_MEMBER(ZEL_MemUsageLimit, errorPercent, "percent", "fill level at which it fails, not below the warning"),
};
constexpr ZEL_Type MEM_USAGE_LIMIT = ZelStructType<ZEL_MemUsageLimit>("memUsageLimit", LIMIT_MEMBERS);

enum FillState : std::uint32_t
{
    FILL_NORMAL,
    FILL_WARNING,
    FILL_ERROR,
};
constexpr ZEL_Enumerator FILL_STATES[] = {{FILL_NORMAL, "normal"}, {FILL_WARNING, "warning"}, {FILL_ERROR, "error"}};
constexpr ZEL_Type FILL_STATE = ZelEnumType("fillState", FILL_STATES);

constexpr ZEL_TypeMember STATS_MEMBERS[] = {
    ZEL_MEMBER(ZEL_RamdiskStats, totalBytes, "bytes", "memory that it may use"),
    ZEL_MEMBER(ZEL_RamdiskStats, usedBytes, "bytes", "memory that it uses"),
    ZEL_MEMBER(ZEL_RamdiskStats, usedPercent, "percent", "fill level, rounded up"),
    ZEL_TYPED_MEMBER(ZEL_RamdiskStats, state, FILL_STATE, "", "fill level against its limits"),
    ZEL_MEMBER(ZEL_RamdiskStats, mountPoint, "", "folder that it is mounted at"),
};
constexpr ZEL_Type STATS = ZelStructType<ZEL_RamdiskStats>("ramdiskStats", STATS_MEMBERS);

/// A ramdisk's name becomes a file's name, beside those that are about to replace others.
bool IsRamdiskName(const std::string& name)
{
    return ZelIsFileName(name) && name.size() < 128 && !name.starts_with(".new-");
}

/// A file system in memory that was given a name of its own: those that every host has are mounted from their type.
bool IsRamdisk(const MountEntry& entry)
{
    static const char* const UNNAMED[] = {"", "none", "ramfs", "shm", "tmpfs"};
    const bool named = std::find(std::begin(UNNAMED), std::end(UNNAMED), entry.source) == std::end(UNNAMED);
    return named && (entry.type == "tmpfs" || entry.type == "ramfs") && IsRamdiskName(entry.source);
}

/// Part of a whole in percent, rounded up: what is used at all is never 0.
std::uint32_t PercentOf(std::uint64_t part, std::uint64_t whole)
{
    return whole == 0 ? 0 : static_cast<std::uint32_t>((part * 100 + whole - 1) / whole);
}

ORV_ReturnStatus ListRamdisks(const ZEL_ParamList&, std::vector<std::string>& names)
{
    // Of a host that is not running, only the limits are known.
    if (!IsRealHost()) {
        names = ListKernelFolder(LIMIT_FOLDER);
        std::erase_if(names, [](const std::string& name) { return !IsRamdiskName(name); });
    }
    const std::vector<MountEntry> mounts = HostMounts().value_or(std::vector<MountEntry>());
    for (const MountEntry& entry : mounts) {
        if (IsRamdisk(entry)) {
            names.push_back(entry.source);
        }
    }
    return ORV_OK;
}

bool ReadLimit(const std::string& ramdisk, ZEL_MemUsageLimit& limit)
{
    std::ifstream kept(HostPath(LIMIT_FOLDER + "/" + ramdisk));
    return static_cast<bool>(kept >> limit.warningPercent >> limit.errorPercent);
}

FillState StateOf(const std::string& ramdisk, std::uint32_t percent)
{
    ZEL_MemUsageLimit limit = {};
    if (!ReadLimit(ramdisk, limit) || percent < limit.warningPercent) {
        return FILL_NORMAL;
    }
    return percent < limit.errorPercent ? FILL_WARNING : FILL_ERROR;
}

/// Of several ramdisks of one name, the one mounted last; none when another file system covers it.
ORV_ReturnStatus GetRamdiskStats(const ZEL_ParamList& instance, std::string& data)
{
    const std::string& name = instance.Text(0);
    const std::vector<MountEntry> mounts = HostMounts().value_or(std::vector<MountEntry>());
    const auto isNamed = [&](const MountEntry& entry) { return entry.source == name && IsRamdisk(entry); };
    const auto ramdisk = std::find_if(mounts.rbegin(), mounts.rend(), isNamed);
    if (ramdisk == mounts.rend()) {
        return ORV_NOT_FOUND;
    }
    if (!MayBeAskedHowFull(mounts, *ramdisk)) {
        return ORV_NOT_SUPPORTED;
    }
    ZelFileSystemUse use = {};
    if (ReadZelFileSystemUse(ramdisk->point, use, DeviceNumber(ramdisk->device)) != 0) {
        return ORV_NOT_FOUND;
    }
    const std::uint64_t used = use.totalBytes - use.freeBytes;
    ZEL_RamdiskStats stats = {.totalBytes = use.totalBytes,
                              .usedBytes = used,
                              .usedPercent = PercentOf(used, use.totalBytes),
                              .state = FILL_NORMAL,
                              .mountPoint = {}};
    stats.state = StateOf(name, stats.usedPercent);
    ZelFillText(stats.mountPoint, ramdisk->point);
    data = ZelBytesOf(stats);
    return ORV_OK;
}

ORV_ReturnStatus GetMemUsageLimit(const ZEL_ParamList& instance, std::string& data)
{
    const std::string& ramdisk = instance.Text(0);
    if (!IsRamdiskName(ramdisk)) {
        return ORV_NOT_FOUND;
    }
    if (!File_Exists((LIMIT_FOLDER + "/" + ramdisk).c_str())) {
        return ORV_NOT_FOUND;
    }
    ZEL_MemUsageLimit limit = {};
    if (!ReadLimit(ramdisk, limit)) {
        return ORV_FAILURE;
    }
    data = ZelBytesOf(limit);
    return ORV_OK;
}

ORV_ReturnStatus SetMemUsageLimit(const ZEL_ParamList& instance, const ZEL_ParamList& input)
{
    const std::string& ramdisk = instance.Text(0);
    const ZEL_MemUsageLimit limit = {input.Integer(0), input.Integer(1)};
    if (!IsRamdiskName(ramdisk) || limit.warningPercent < 0 || limit.errorPercent < limit.warningPercent ||
        limit.errorPercent > 100) {
        return ORV_BAD_PARAM;
    }
    int error = HostMakeFolders(LIMIT_FOLDER);
    if (error == 0) {
        error = HostReplaceFile(LIMIT_FOLDER + "/" + ramdisk,
                                std::to_string(limit.warningPercent) + " " + std::to_string(limit.errorPercent) + "\n");
    }
    if (error != 0) {
        CSLogger::Log(CSLogger::ERROR, "Cannot keep the usage limits of ramdisk %s in %s: %s", ramdisk.c_str(),
                      LIMIT_FOLDER.c_str(), std::strerror(error));
        return ORV_FAILURE;
    }
    return ORV_OK;
}

constexpr ZelNode NODES[] = {
    {.path = "/system/quenfs/ramdisks/<ramdisk>",
     .help = "memory-backed file systems that have a name",
     .list = ListRamdisks,
     .inEveryRoot = true},
    {.path = "/system/quenfs/ramdisks/<ramdisk>/stats",
     .help = "use of the ramdisk's memory",
     .id = ZEL_NODE_system_quenfs_ramdisks_stats,
     .output = &STATS,
     .get = GetRamdiskStats,
     .inEveryRoot = true},
    {.path = "/system/quenfs/ramdisks/<ramdisk>/memUsageLimit",
     .help = "fill levels at which a ramdisk warns and fails: 0 to 100, the second not below the first",
     .id = ZEL_NODE_system_quenfs_ramdisks_memUsageLimit,
     .output = &MEM_USAGE_LIMIT,
     .get = GetMemUsageLimit,
     .input = &MEM_USAGE_LIMIT,
     .set = SetMemUsageLimit,
     .inEveryRoot = true},
};
}  // namespace

constinit const ZelProvider ZEL_RAMDISK_PROVIDER = NODES;
