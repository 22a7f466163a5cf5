#include "Comparison.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <vector>

namespace
{
struct Result
{
    std::string name;
    int size;
    Sample measured;
    Sample floor;
};
std::vector<Result> results;

double PeakMiB()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kibibytes = 0;
        if (word == "VmHWM:" && status >> kibibytes) {
            return kibibytes / 1024;
        }
    }
    return 0;
}

void Keep(Sample& best, const Sample& sample)
{
    best.milliseconds = std::min(best.milliseconds, sample.milliseconds);
    best.peakMiB = std::max(best.peakMiB, sample.peakMiB);
}

std::string Exponent(const Result& before, const Result& now)
{
    if (before.name != now.name) {
        return "-";
    }
    const double growth = now.measured.milliseconds / before.measured.milliseconds;
    char text[16];
    std::snprintf(text, sizeof text, "%.2f", std::log(growth) / std::log(double(now.size) / before.size));
    return text;
}

void PrintTable()
{
    std::printf("\n%-28s %8s %12s %12s %7s %9s %12s %10s %7s\n", "", "size", "library ms", "floor ms", "ratio",
                "exponent", "library MiB", "floor MiB", "ratio");
    for (std::size_t i = 0; i < results.size(); ++i) {
        const Result& now = results[i];
        std::printf("%-28s %8d %12.2f %12.2f %7.2f %9s %12.1f %10.1f %7.2f\n", now.name.c_str(), now.size,
                    now.measured.milliseconds, now.floor.milliseconds,
                    now.measured.milliseconds / now.floor.milliseconds,
                    Exponent(i > 0 ? results[i - 1] : Result(), now).c_str(), now.measured.peakMiB, now.floor.peakMiB,
                    now.measured.peakMiB / now.floor.peakMiB);
    }
}
}  // namespace

Sample Measured(const std::function<void()>& work)
{
    sync();  // so that what was written before does not slow this down
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - start;
    return {spent.count(), PeakMiB()};
}

void Compare(benchmark::State& state, const Comparison& comparison)
{
    Result result{comparison.name, comparison.size, {}, {}};
    bool floorFirst = true;
    for ([[maybe_unused]] auto iteration : state) {
        // In turns, so that neither always runs in the wake of the other's writes.
        if (floorFirst) {
            Keep(result.floor, comparison.floor());
        }
        const Sample sample = comparison.measured();
        if (!floorFirst) {
            Keep(result.floor, comparison.floor());
        }
        floorFirst = !floorFirst;
        Keep(result.measured, sample);
        state.SetIterationTime(sample.milliseconds / 1000);
    }
    results.push_back(result);
    state.counters["floor_ms"] = result.floor.milliseconds;
    state.counters["ratio"] = result.measured.milliseconds / result.floor.milliseconds;
}

int RunBenchmarks(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    PrintTable();
    return 0;
}
