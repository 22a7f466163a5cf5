#include <unistd.h>

#include <algorithm>

#include "ZelKernelFolder.h"
#include "ZelParamList.h"
#include "ZelProviders.h"
#include "ZelTypes.h"

namespace
{
struct Load
{
    std::uint32_t oneMinute;
    std::uint32_t fiveMinutes;
    std::uint32_t fifteenMinutes;
    std::uint32_t running;
    std::uint32_t threads;
};
constexpr ZEL_TypeMember LOAD_MEMBERS[] = {
    ZEL_MEMBER(Load, oneMinute, "1/1000", "threads that ran or wanted to, on average over the last minute"),
    ZEL_MEMBER(Load, fiveMinutes, "1/1000", "the same over five minutes"),
    ZEL_MEMBER(Load, fifteenMinutes, "1/1000", "the same over fifteen minutes"),
    ZEL_MEMBER(Load, running, "", "threads that run or want to"),
    ZEL_MEMBER(Load, threads, "", "all threads"),
};
constexpr ZEL_Type LOAD = ZelStructType<Load>("load", LOAD_MEMBERS);

// Their values are the letters that the kernel tells states by.
constexpr ZEL_Enumerator STATES[] = {{'R', "running"}, {'S', "sleeping"}, {'D', "waiting"},
                                     {'T', "stopped"}, {'t', "traced"},   {'Z', "zombie"},
                                     {'X', "dead"},    {'I', "idle"},     {'P', "parked"}};
constexpr ZEL_Type STATE = ZelEnumType("processState", STATES);

struct ProcessStats
{
    std::uint64_t userMs;
    std::uint64_t systemMs;
    std::uint64_t startMs;
    std::uint64_t virtualBytes;
    std::uint64_t residentBytes;
    std::uint64_t minorFaults;
    std::uint64_t majorFaults;
    std::uint32_t pid;
    std::uint32_t parent;
    std::uint32_t state;
    std::uint32_t user;
    std::uint32_t threads;
    std::uint32_t cpu;
    std::int32_t priority;
    std::int32_t nice;
    char name[64];
};
constexpr ZEL_TypeMember STATS_MEMBERS[] = {
    ZEL_MEMBER(ProcessStats, userMs, "ms", "processor time in the program"),
    ZEL_MEMBER(ProcessStats, systemMs, "ms", "processor time in the kernel"),
    ZEL_MEMBER(ProcessStats, startMs, "ms", "when it was started, after the start of the kernel"),
    ZEL_MEMBER(ProcessStats, virtualBytes, "bytes", "address space"),
    ZEL_MEMBER(ProcessStats, residentBytes, "bytes", "memory in use"),
    ZEL_MEMBER(ProcessStats, minorFaults, "", "page faults served from memory"),
    ZEL_MEMBER(ProcessStats, majorFaults, "", "page faults served from storage"),
    ZEL_MEMBER(ProcessStats, pid, "", "number of the process"),
    ZEL_MEMBER(ProcessStats, parent, "", "number of its parent"),
    ZEL_TYPED_MEMBER(ProcessStats, state, STATE, "", "what it is doing"),
    ZEL_MEMBER(ProcessStats, user, "", "number of the user that it acts for"),
    ZEL_MEMBER(ProcessStats, threads, "", "its threads"),
    ZEL_MEMBER(ProcessStats, cpu, "", "logical processor that it ran on last"),
    ZEL_MEMBER(ProcessStats, priority, "", "priority in the scheduler"),
    ZEL_MEMBER(ProcessStats, nice, "", "niceness"),
    ZEL_MEMBER(ProcessStats, name, "", "name of the program"),
};
constexpr ZEL_Type STATS = ZelStructType<ProcessStats>("processStats", STATS_MEMBERS);

ORV_ReturnStatus GetLoad(const ZEL_ParamList&, std::string& data)
{
    const std::optional<std::string> text = ReadKernelFile("/proc/loadavg");
    if (!text) {
        return ORV_NOT_SUPPORTED;
    }
    const std::vector<std::string_view> words = ZelWords(*text);  // "0.10 0.20 0.30 RUNNING/THREADS LASTPID"
    const auto average = [&](std::size_t word) {
        return static_cast<std::uint32_t>(ZelThousandths(ZelWord(words, word)));
    };
    const std::string_view counts = ZelWord(words, 3);
    const std::string_view threads = counts.substr(std::min(counts.find('/'), counts.size()));
    const Load load = {average(0), average(1), average(2), ZelNumber<std::uint32_t>(counts),
                       ZelNumber<std::uint32_t>(threads.substr(threads.empty() ? 0 : 1))};
    data = ZelBytesOf(load);
    return ORV_OK;
}

ORV_ReturnStatus ListProcesses(const ZEL_ParamList&, std::vector<std::string>& names)
{
    for (const std::string& entry : ListKernelFolder("/proc")) {
        if (std::to_string(ZelNumber(entry)) == entry && entry != "0") {
            names.push_back(entry);
        }
    }
    return ORV_OK;
}

/// "PID (NAME) STATE PARENT ...": a name may hold anything, blanks and parentheses too.
bool FillStats(std::string_view text, ProcessStats& stats)
{
    const std::size_t open = text.find('(');
    const std::size_t close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
        return false;
    }
    const std::vector<std::string_view> words = ZelWords(text.substr(close + 1));
    const auto number = [&](std::size_t word) { return ZelNumber(ZelWord(words, word)); };
    const auto small = [&](std::size_t word) { return ZelNumber<std::uint32_t>(ZelWord(words, word)); };
    const auto ms = [&](std::size_t word) {
        return number(word) * 1000 / static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
    };
    const std::string_view state = ZelWord(words, 0);
    stats.state = state.empty() ? 0 : static_cast<unsigned char>(state[0]);
    stats.parent = small(1);
    stats.minorFaults = number(7);
    stats.majorFaults = number(9);
    stats.userMs = ms(11);
    stats.systemMs = ms(12);
    stats.priority = ZelNumber<std::int32_t>(ZelWord(words, 15));
    stats.nice = ZelNumber<std::int32_t>(ZelWord(words, 16));
    stats.threads = small(17);
    stats.startMs = ms(19);
    stats.virtualBytes = number(20);
    stats.residentBytes = number(21) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    stats.cpu = small(36);
    ZelFillText(stats.name, std::string(text.substr(open + 1, close - open - 1)));
    return true;
}

/// A process that ends meanwhile is not found, whichever of its files tells first.
ORV_ReturnStatus GetProcessStats(const ZEL_ParamList& instance, std::string& data)
{
    const std::string folder = "/proc/" + instance.Name(0);
    const std::optional<std::string> stat = ReadKernelFile(folder + "/stat");
    const std::optional<std::string> status = ReadKernelFile(folder + "/status");
    ProcessStats stats = {};
    if (!stat || !status || !FillStats(*stat, stats)) {
        return ORV_NOT_FOUND;
    }
    stats.pid = static_cast<std::uint32_t>(instance.Integer(0));
    stats.user = ZelNumber<std::uint32_t>(ZelWord(ZelWords(ZelValueOf(*status, "Uid")), 1));  // the effective one
    data = ZelBytesOf(stats);
    return ORV_OK;
}

// The kernel starts no program with more than 6 MiB of words, but a process may point at other memory of its own as
// them.
constexpr std::size_t MAX_COMMAND_LINE = 8 << 20;

ORV_ReturnStatus GetCommandLine(const ZEL_ParamList& instance, std::string& data)
{
    std::optional<std::string> words = ReadKernelFile("/proc/" + instance.Name(0) + "/cmdline", MAX_COMMAND_LINE);
    if (!words) {
        return ORV_NOT_FOUND;
    }
    while (words->ends_with('\0')) {
        words->pop_back();
    }
    std::replace(words->begin(), words->end(), '\0', ' ');
    data = *words;
    return ORV_OK;
}

constexpr ZelNode NODES[] = {
    {.path = "/sched", .help = "what runs on the host"},
    {.path = "/sched/load", .help = "how busy the host is", .output = &LOAD, .get = GetLoad},
    {.path = "/sched/processes/<pid>",
     .help = "processes by number",
     .list = ListProcesses,
     .instanceKind = ZEL_DATA_UINT64},
    {.path = "/sched/processes/<pid>/stats",
     .help = "state, time and memory of the process",
     .output = &STATS,
     .get = GetProcessStats},
    {.path = "/sched/processes/<pid>/cmdLine",
     .help = "the words that it was started with, parted by blanks, at most 8 MiB; empty for a thread of the kernel",
     .output = &ZEL_TEXT,
     .get = GetCommandLine},
};
}  // namespace

constinit const ZelProvider ZEL_PROCESS_PROVIDER = NODES;
