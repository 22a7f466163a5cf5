#include <unistd.h>

#include <set>

#include "ZelKernelFolder.h"
#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZelSnapshot.h"
#include "ZelTypes.h"

namespace
{
struct CpuSummary
{
    std::uint32_t cpus;
    std::uint32_t online;
    std::uint32_t cores;
    std::uint32_t packages;
    char vendor[64];
    char model[128];
};
constexpr ZEL_TypeMember SUMMARY_MEMBERS[] = {
    ZEL_MEMBER(CpuSummary, cpus, "", "logical processors"),
    ZEL_MEMBER(CpuSummary, online, "", "logical processors that are in use"),
    ZEL_MEMBER(CpuSummary, cores, "", "cores of those in use"),
    ZEL_MEMBER(CpuSummary, packages, "", "packages of those in use"),
    ZEL_MEMBER(CpuSummary, vendor, "", "maker, where the processor tells"),
    ZEL_MEMBER(CpuSummary, model, "", "model, where the processor tells"),
};
constexpr ZEL_Type SUMMARY = ZelStructType<CpuSummary>("cpuSummary", SUMMARY_MEMBERS);

struct CpuInfo
{
    std::uint64_t currentKHz;
    std::uint64_t minKHz;
    std::uint64_t maxKHz;
    std::int32_t package;
    std::int32_t core;
    bool online;
    char governor[31];
};
constexpr ZEL_TypeMember INFO_MEMBERS[] = {
    ZEL_MEMBER(CpuInfo, currentKHz, "kHz", "frequency now; 0 where the kernel does not control it"),
    ZEL_MEMBER(CpuInfo, minKHz, "kHz", "lowest frequency"),
    ZEL_MEMBER(CpuInfo, maxKHz, "kHz", "highest frequency"),
    ZEL_MEMBER(CpuInfo, package, "", "number of the package"),
    ZEL_MEMBER(CpuInfo, core, "", "number of the core in its package"),
    ZEL_MEMBER(CpuInfo, online, "", "whether it is in use"),
    ZEL_MEMBER(CpuInfo, governor, "", "policy that chooses the frequency"),
};
constexpr ZEL_Type INFO = ZelStructType<CpuInfo>("cpuInfo", INFO_MEMBERS);

struct CpuStats
{
    std::uint64_t userMs;
    std::uint64_t niceMs;
    std::uint64_t systemMs;
    std::uint64_t idleMs;
    std::uint64_t ioWaitMs;
    std::uint64_t interruptMs;
    std::uint64_t softInterruptMs;
    std::uint64_t stealMs;
};
constexpr ZEL_TypeMember STATS_MEMBERS[] = {
    ZEL_MEMBER(CpuStats, userMs, "ms", "time in programs"),
    ZEL_MEMBER(CpuStats, niceMs, "ms", "time in programs of low priority"),
    ZEL_MEMBER(CpuStats, systemMs, "ms", "time in the kernel"),
    ZEL_MEMBER(CpuStats, idleMs, "ms", "time without work"),
    ZEL_MEMBER(CpuStats, ioWaitMs, "ms", "idle time while input or output was under way"),
    ZEL_MEMBER(CpuStats, interruptMs, "ms", "time in interrupts"),
    ZEL_MEMBER(CpuStats, softInterruptMs, "ms", "time in deferred work of interrupts"),
    ZEL_MEMBER(CpuStats, stealMs, "ms", "time that the hypervisor gave to others"),
};
constexpr ZEL_Type STATS = ZelStructType<CpuStats>("cpuStats", STATS_MEMBERS);

const std::string CPU_FOLDER = "/sys/devices/system/cpu";

ORV_ReturnStatus ListCpus(const ZEL_ParamList&, std::vector<std::string>& names)
{
    for (const std::string& entry : ListKernelFolder(CPU_FOLDER)) {
        const std::string number = entry.starts_with("cpu") ? entry.substr(3) : "";
        if (!number.empty() && std::to_string(ZelNumber(number)) == number) {
            names.push_back(number);
        }
    }
    return ORV_OK;
}

std::string CpuFolder(const std::string& number)
{
    return CPU_FOLDER + "/cpu" + number;
}

/// The first processor has no switch where it cannot be taken out of use.
bool IsOnline(const ZelKernelFolder& cpu)
{
    return cpu.Flag("online") || !cpu.Has("online");
}

CpuInfo InfoOf(const std::string& number)
{
    const ZelKernelFolder cpu(CpuFolder(number));
    CpuInfo info = {.currentKHz = cpu.Value("cpufreq/scaling_cur_freq"),
                    .minKHz = cpu.Value("cpufreq/cpuinfo_min_freq"),
                    .maxKHz = cpu.Value("cpufreq/cpuinfo_max_freq"),
                    .package = cpu.Value<std::int32_t>("topology/physical_package_id"),
                    .core = cpu.Value<std::int32_t>("topology/core_id"),
                    .online = IsOnline(cpu),
                    .governor = {}};
    ZelFillText(info.governor, cpu.Text("cpufreq/scaling_governor"));
    return info;
}

ORV_ReturnStatus GetCpuSummary(const ZEL_ParamList& none, std::string& data)
{
    std::vector<std::string> numbers;
    (void)ListCpus(none, numbers);  // it cannot fail
    std::set<std::int32_t> packages;
    std::set<std::string> cores;  // by their threads: core numbers start anew on each die
    CpuSummary summary = {};
    for (const std::string& number : numbers) {
        const ZelKernelFolder cpu(CpuFolder(number));
        ++summary.cpus;
        if (IsOnline(cpu)) {
            ++summary.online;
            packages.insert(cpu.Value<std::int32_t>("topology/physical_package_id"));
            cores.insert(cpu.Text("topology/thread_siblings_list"));
        }
    }
    summary.cores = static_cast<std::uint32_t>(cores.size());
    summary.packages = static_cast<std::uint32_t>(packages.size());
    const std::string text = ReadKernelFile("/proc/cpuinfo").value_or("");
    ZelFillText(summary.vendor, ZelValueOf(text, "vendor_id"));
    ZelFillText(summary.model, ZelValueOf(text, "model name"));
    data = ZelBytesOf(summary);
    return summary.cpus != 0 ? ORV_OK : ORV_NOT_SUPPORTED;
}

bool Exists(const ZEL_ParamList& instance)
{
    return IsKernelFolder(CpuFolder(instance.Name(0)));
}

ORV_ReturnStatus GetCpuInfo(const ZEL_ParamList& instance, std::string& data)
{
    if (!Exists(instance)) {
        return ORV_NOT_FOUND;
    }
    data = ZelBytesOf(InfoOf(instance.Name(0)));
    return ORV_OK;
}

/// The words of "cpu7 USER NICE SYSTEM ..."; a processor out of use has no line, and its times are 0.
std::vector<std::string_view> TimesOf(std::string_view text, const std::string& number)
{
    const std::string label = "cpu" + number + " ";
    const std::size_t start = text.starts_with(label) ? 0 : text.find("\n" + label);
    if (start == std::string_view::npos) {
        return {};
    }
    const std::string_view rest = text.substr(start + label.size());
    return ZelWords(rest.substr(0, rest.find('\n', 1)));
}

ORV_ReturnStatus GetCpuStats(const ZEL_ParamList& instance, std::string& data)
{
    if (!Exists(instance)) {
        return ORV_NOT_FOUND;
    }
    const auto text = ReadOncePerZelSnapshot(&ZelSnapshotFacts::processorTimes, "/proc/stat");
    const std::vector<std::string_view> times = TimesOf(*text, instance.Name(0));
    const auto ms = [&](std::size_t word) {
        return ZelNumber(ZelWord(times, word)) * 1000 / static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
    };
    const CpuStats stats = {ms(0), ms(1), ms(2), ms(3), ms(4), ms(5), ms(6), ms(7)};
    data = ZelBytesOf(stats);
    return ORV_OK;
}

constexpr ZelNode NODES[] = {
    {.path = "/hardware", .help = "what the host is made of"},
    {.path = "/hardware/cpu", .help = "processors"},
    {.path = "/hardware/cpu/summary", .help = "all processors", .output = &SUMMARY, .get = GetCpuSummary},
    {.path = "/hardware/cpu/cpus/<cpu>",
     .help = "logical processors by number",
     .list = ListCpus,
     .instanceKind = ZEL_DATA_UINT64},
    {.path = "/hardware/cpu/cpus/<cpu>/info", .help = "place and frequency", .output = &INFO, .get = GetCpuInfo},
    {.path = "/hardware/cpu/cpus/<cpu>/stats",
     .help = "how the time since the start was spent",
     .output = &STATS,
     .get = GetCpuStats},
};
}  // namespace

constinit const ZelProvider ZEL_CPU_PROVIDER = NODES;
