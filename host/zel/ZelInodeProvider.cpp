#include <algorithm>

#include "CSLogger.h"
#include "HostUtil.h"
#include "ZelKernelFacts.h"
#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZelSnapshot.h"
#include "ZelTypes.h"

using NimbConfigStore::JsonValue;

// The inodes of files that the image's tardisks delivered. A plain Linux host has no such file system: there are none.

namespace
{
constexpr ZEL_TypeMember STATS_MEMBERS[] = {
    ZEL_MEMBER(ZEL_InodeStats, inode, "", "number of the inode"),
    ZEL_MEMBER(ZEL_InodeStats, sizeBytes, "bytes", "size of the file"),
    ZEL_MEMBER(ZEL_InodeStats, device, "", "number of the file system's device"),
    ZEL_MEMBER(ZEL_InodeStats, tardisk, "", "tardisk that delivered the file"),
};
constexpr ZEL_Type STATS = ZelStructType<ZEL_InodeStats>("inodeStats", STATS_MEMBERS);

bool ListsFilesByTardisk(const JsonValue& tardisks)
{
    const auto isPath = [](const JsonValue& file) { return file.IsString(); };
    const auto isList = [&](const JsonValue::Member& tardisk) {
        return tardisk.value.IsArray() && std::all_of(tardisk.value.Begin(), tardisk.value.End(), isPath);
    };
    return tardisks.IsObject() && std::all_of(tardisks.MemberBegin(), tardisks.MemberEnd(), isList);
}

/// Null, after a log line, when the facts do not say what was delivered.
std::shared_ptr<const ZelInodeIndex> GatherInodes()
{
    const KernelFacts facts = LoadKernelFacts();
    if (facts == nullptr) {
        return nullptr;
    }
    const auto tardisks = facts->FindMember("tardisks");
    if (tardisks == facts->MemberEnd()) {
        return std::make_shared<const ZelInodeIndex>();  // as on a plain Linux host
    }
    if (!ListsFilesByTardisk(tardisks->value)) {
        CSLogger::Log(CSLogger::ERROR, "The kernel's facts in %s give no files by tardisk", KERNEL_FACTS_FILE);
        return nullptr;
    }
    return MakeZelInodeIndex(tardisks->value);
}

std::shared_ptr<const ZelInodeIndex> DeliveredInodes()
{
    return OncePerZelSnapshot(&ZelSnapshotFacts::inodes, GatherInodes);
}

ORV_ReturnStatus ListInodes(const ZEL_ParamList&, std::vector<std::string>& names)
{
    if (IsRealHost()) {
        return ORV_OK;
    }
    const std::shared_ptr<const ZelInodeIndex> inodes = DeliveredInodes();
    if (inodes == nullptr) {
        return ORV_FAILURE;
    }
    for (const auto& [number, inode] : *inodes) {
        if (!inode.ambiguous) {
            names.push_back(std::to_string(number));
        }
    }
    return ORV_OK;
}

ORV_ReturnStatus GetInodeStats(const ZEL_ParamList& instance, std::string& data)
{
    if (IsRealHost()) {
        return ORV_NOT_FOUND;
    }
    const std::shared_ptr<const ZelInodeIndex> inodes = DeliveredInodes();
    if (inodes == nullptr) {
        return ORV_FAILURE;
    }
    const auto found = inodes->find(static_cast<std::uint64_t>(instance.Integer(0)));
    // A number that several file systems use does not tell the file: better no answer than the wrong tardisk.
    if (found == inodes->end() || found->second.ambiguous) {
        return ORV_NOT_FOUND;
    }
    ZEL_InodeStats stats = {found->first, found->second.sizeBytes, found->second.device, {}};
    ZelFillText(stats.tardisk, found->second.tardisk);
    data = ZelBytesOf(stats);
    return ORV_OK;
}

constexpr ZelNode NODES[] = {
    {.path = "/system/quenfs/inodes/<inode>",
     .help = "files that the image delivered, by inode number",
     .list = ListInodes,
     .instanceKind = ZEL_DATA_UINT64,
     .inEveryRoot = true},
    {.path = "/system/quenfs/inodes/<inode>/stats",
     .help = "size and origin of one inode",
     .id = ZEL_NODE_system_quenfs_inodes_stats,
     .output = &STATS,
     .get = GetInodeStats,
     .inEveryRoot = true},
};
}  // namespace

constinit const ZelProvider ZEL_INODE_PROVIDER = NODES;
