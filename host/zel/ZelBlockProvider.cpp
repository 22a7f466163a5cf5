#include "ZelKernelFolder.h"
#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZelTypes.h"

// Block devices: whole ones and their partitions, under the names of /sys.

namespace
{
constexpr std::uint64_t SECTOR_BYTES = 512;  // the kernel counts in these whatever the device has
const std::string BLOCK_FOLDER = "/sys/class/block";

enum Kind : std::uint32_t
{
    KIND_DISK,
    KIND_PARTITION,
    KIND_VIRTUAL,
};
constexpr ZEL_Enumerator KINDS[] = {{KIND_DISK, "disk"}, {KIND_PARTITION, "partition"}, {KIND_VIRTUAL, "virtual"}};
constexpr ZEL_Type KIND = ZelEnumType("deviceKind", KINDS);

struct DeviceInfo
{
    std::uint64_t sizeBytes;
    std::uint32_t kind;
    std::uint32_t major;
    std::uint32_t minor;
    std::uint32_t logicalBlockBytes;
    std::uint32_t physicalBlockBytes;
    bool readOnly;
    bool removable;
    bool rotational;
    char scheduler[33];
    char vendor[64];
    char model[64];
};
constexpr ZEL_TypeMember INFO_MEMBERS[] = {
    ZEL_MEMBER(DeviceInfo, sizeBytes, "bytes", "capacity"),
    ZEL_TYPED_MEMBER(DeviceInfo, kind, KIND, "", "whole device, part of one, or one that software makes"),
    ZEL_MEMBER(DeviceInfo, major, "", "major device number"),
    ZEL_MEMBER(DeviceInfo, minor, "", "minor device number"),
    ZEL_MEMBER(DeviceInfo, logicalBlockBytes, "bytes", "smallest unit that can be addressed; 0 for a partition"),
    ZEL_MEMBER(DeviceInfo, physicalBlockBytes, "bytes", "smallest unit written at once; 0 for a partition"),
    ZEL_MEMBER(DeviceInfo, readOnly, "", "whether writing is refused"),
    ZEL_MEMBER(DeviceInfo, removable, "", "whether the medium can be taken out"),
    ZEL_MEMBER(DeviceInfo, rotational, "", "whether it has spinning disks"),
    ZEL_MEMBER(DeviceInfo, scheduler, "", "schedulers of requests, the one in use in brackets"),
    ZEL_MEMBER(DeviceInfo, vendor, "", "maker, where the device tells"),
    ZEL_MEMBER(DeviceInfo, model, "", "model, where the device tells"),
};
constexpr ZEL_Type INFO = ZelStructType<DeviceInfo>("deviceInfo", INFO_MEMBERS);

struct DeviceStats
{
    std::uint64_t reads;
    std::uint64_t readBytes;
    std::uint64_t readMs;
    std::uint64_t writes;
    std::uint64_t writtenBytes;
    std::uint64_t writeMs;
    std::uint64_t underWay;
    std::uint64_t busyMs;
};
constexpr ZEL_TypeMember STATS_MEMBERS[] = {
    ZEL_MEMBER(DeviceStats, reads, "", "reads completed"),
    ZEL_MEMBER(DeviceStats, readBytes, "bytes", "data read"),
    ZEL_MEMBER(DeviceStats, readMs, "ms", "time that reads took, added up"),
    ZEL_MEMBER(DeviceStats, writes, "", "writes completed"),
    ZEL_MEMBER(DeviceStats, writtenBytes, "bytes", "data written"),
    ZEL_MEMBER(DeviceStats, writeMs, "ms", "time that writes took, added up"),
    ZEL_MEMBER(DeviceStats, underWay, "", "requests under way"),
    ZEL_MEMBER(DeviceStats, busyMs, "ms", "time with any request under way"),
};
constexpr ZEL_Type STATS = ZelStructType<DeviceStats>("deviceStats", STATS_MEMBERS);

ORV_ReturnStatus ListDevices(const ZEL_ParamList&, std::vector<std::string>& names)
{
    names = ListKernelFolder(BLOCK_FOLDER);
    return ORV_OK;
}

Kind KindOf(const ZelKernelFolder& device)
{
    if (device.Has("partition")) {
        return KIND_PARTITION;
    }
    return device.Has("device/uevent") ? KIND_DISK : KIND_VIRTUAL;
}

DeviceInfo InfoOf(const ZelKernelFolder& device)
{
    const std::string numbers = device.Text("dev");
    DeviceInfo info = {.sizeBytes = device.Value("size") * SECTOR_BYTES,
                       .kind = KindOf(device),
                       .major = ZelNumber<std::uint32_t>(numbers),
                       .minor = ZelNumber<std::uint32_t>(numbers.substr(numbers.find(':') + 1)),
                       .logicalBlockBytes = device.Value<std::uint32_t>("queue/logical_block_size"),
                       .physicalBlockBytes = device.Value<std::uint32_t>("queue/physical_block_size"),
                       .readOnly = device.Flag("ro"),
                       .removable = device.Flag("removable"),
                       .rotational = device.Flag("queue/rotational"),
                       .scheduler = {},
                       .vendor = {},
                       .model = {}};
    ZelFillText(info.scheduler, device.Text("queue/scheduler"));
    ZelFillText(info.vendor, device.Text("device/vendor"));
    ZelFillText(info.model, device.Text("device/model"));
    return info;
}

/// A device is known by its number; what has none is no device, or gone.
bool IsDevice(const std::string& name)
{
    return ZelIsFileName(name) && ZelKernelFolder(BLOCK_FOLDER + "/" + name).Has("dev");
}

ORV_ReturnStatus GetDeviceInfo(const ZEL_ParamList& instance, std::string& data)
{
    if (!IsDevice(instance.Text(0))) {
        return ORV_NOT_FOUND;
    }
    data = ZelBytesOf(InfoOf(ZelKernelFolder(BLOCK_FOLDER + "/" + instance.Text(0))));
    return ORV_OK;
}

ORV_ReturnStatus GetDeviceStats(const ZEL_ParamList& instance, std::string& data)
{
    if (!IsDevice(instance.Text(0))) {
        return ORV_NOT_FOUND;
    }
    const std::string text = ReadKernelFile(BLOCK_FOLDER + "/" + instance.Text(0) + "/stat").value_or("");
    const std::vector<std::string_view> words = ZelWords(text);
    const auto count = [&](std::size_t word) { return ZelNumber(ZelWord(words, word)); };
    const DeviceStats stats = {.reads = count(0),
                               .readBytes = count(2) * SECTOR_BYTES,
                               .readMs = count(3),
                               .writes = count(4),
                               .writtenBytes = count(6) * SECTOR_BYTES,
                               .writeMs = count(7),
                               .underWay = count(8),
                               .busyMs = count(9)};
    data = ZelBytesOf(stats);
    return ORV_OK;
}

constexpr ZelNode NODES[] = {
    {.path = "/storage", .help = "where data is kept"},
    {.path = "/storage/devices/<device>", .help = "block devices and their partitions", .list = ListDevices},
    {.path = "/storage/devices/<device>/info", .help = "what the device is", .output = &INFO, .get = GetDeviceInfo},
    {.path = "/storage/devices/<device>/stats",
     .help = "requests since the device was found",
     .output = &STATS,
     .get = GetDeviceStats},
};
}  // namespace

constinit const ZelProvider ZEL_BLOCK_PROVIDER = NODES;
