#include "Commands.h"
#include "HostEvents.h"
#include "NimbConfigStore.h"
#include "ZEL.h"

namespace ConfigStoreCtl
{
namespace
{
constexpr const char* RAMDISKS[] = {"configstore", "configstorebkp"};

/// Reads a leaf of one ramdisk. @return false when there is no such data.
template <typename Data>
bool ReadRamdisk(ZEL_NodeID leaf, const char* ramdisk, Data& data)
{
    const std::unique_ptr<ZEL_ParamList, void (*)(ZEL_ParamList*)> instance(ZEL_ParamListCreate(1, 1),
                                                                            ZEL_ParamListDestroy);
    return ZEL_ParamListAddString(instance.get(), ramdisk) == ORV_OK &&
           ZEL_Get(leaf, instance.get(), &data, sizeof data) == ORV_OK;
}

/// Why a step failed is in the log alone, beside the failure that the library reports.
std::string Reasons(CallWatch& watch)
{
    std::vector<std::string> lines = watch.ErrorAndWarningLines();
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("CONFIGSTORE:"); });
    return lines.empty() ? "" : ": " + Joined(lines);
}

std::vector<Field> RamdiskRow(const char* ramdisk)
{
    ZEL_RamdiskStats stats = {};
    if (!ReadRamdisk(ZEL_NODE_system_quenfs_ramdisks_stats, ramdisk, stats)) {
        throw CommandFailure(ramdisk, "is not there after it was mounted");
    }
    ZEL_MemUsageLimit limit = {};
    const bool limited = ReadRamdisk(ZEL_NODE_system_quenfs_ramdisks_memUsageLimit, ramdisk, limit);
    return {ramdisk, stats.mountPoint, static_cast<std::int64_t>(stats.totalBytes),
            limited ? Field(limit.warningPercent) : Field(), limited ? Field(limit.errorPercent) : Field()};
}
}  // namespace

void RamdiskSetup(const Arguments&, Output& output)
{
    CallWatch watch;
    try {
        NimbConfigStore::SetupStoreRamDisk();
    } catch (const NimbConfigStore::ConfigStoreException& failure) {
        throw std::runtime_error(failure.what() + Reasons(watch));
    }
    Listing listing{{{"RAMDISK", "ramdisk"},
                     {"MOUNT POINT", "mountPoint"},
                     {"SIZE", "sizeBytes"},
                     {"WARNING %", "warningPercent"},
                     {"ERROR %", "errorPercent"}},
                    {}};
    for (const char* ramdisk : RAMDISKS) {
        listing.rows.push_back(RamdiskRow(ramdisk));
    }
    output.Table(listing);
}
}  // namespace ConfigStoreCtl
