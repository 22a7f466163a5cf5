// The whole boot load against its floor, in time and peak memory.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "LoadFloor.h"
#include "LoadHost.h"
#include "NimbConfigStore.h"

namespace
{
constexpr int ITERATIONS = 5;
constexpr LoadSize SIZES[] = {{50, 200, 1000}, {500, 2000, 10000}};

struct Cost
{
    double seconds = 1e9;  // the best of all runs: what disturbs a run only adds
    double peakMiB = 0;
};

std::map<std::pair<int, std::string>, Cost> costs;  // by schema files and contender

std::unique_ptr<TestHost> host;  // the one in use; main removes it
int filledFiles = 0;

TestHost& HostOf(const LoadSize& size)
{
    if (filledFiles != size.schemaFiles) {
        host.reset();
        host = std::make_unique<TestHost>();
        FillLoadHost(*host, size);
        filledFiles = size.schemaFiles;
    }
    return *host;
}

void ForgetPeak()
{
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
}

double PeakMiB()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes) {
            return kilobytes / 1024;
        }
    }
    return 0;
}

template <typename Load>
void Measure(benchmark::State& state, const std::string& contender, Load load)
{
    const LoadSize& size = SIZES[state.range(0)];
    TestHost& filled = HostOf(size);
    Cost& cost = costs[{size.schemaFiles, contender}];
    for (auto iteration : state) {
        (void)iteration;
        filled.ClearLogs();
        ForgetPeak();
        const auto begin = std::chrono::steady_clock::now();
        load(filled);
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        state.SetIterationTime(seconds);
        cost.seconds = std::min(cost.seconds, seconds);
        cost.peakMiB = std::max(cost.peakMiB, PeakMiB());
    }
    state.counters["peakMiB"] = cost.peakMiB;
}

void Floor(benchmark::State& state)
{
    Measure(state, "floor", RunLoadFloor);
}

void Library(benchmark::State& state)
{
    Measure(state, "library", [&state](const TestHost& loaded) {
        const bool ended = NimbConfigStore::LoadStore(true) == 0;
        if (!ended || loaded.KeyValue("BOOT_INFO") != R"({"type":1})") {
            state.SkipWithError("the load failed");
        }
    });
}

void PrintRatios()
{
    for (const LoadSize& size : SIZES) {
        const Cost& floor = costs[{size.schemaFiles, "floor"}];
        const Cost& library = costs[{size.schemaFiles, "library"}];
        std::printf("%4d schema files, %5d descriptors, %6d rows: time %.2fx of its floor, peak memory %.2fx\n",
                    size.schemaFiles, size.descriptors, size.rows, library.seconds / floor.seconds,
                    library.peakMiB / floor.peakMiB);
    }
    const double growth =
        costs[{SIZES[1].schemaFiles, "library"}].seconds / costs[{SIZES[0].schemaFiles, "library"}].seconds;
    std::printf("time grows with size to the power of %.2f\n", std::log10(growth));
}
}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    for (int size = 0; size < 2; ++size) {
        for (const auto& [name, contender] : {std::pair("floor", &Floor), std::pair("library", &Library)}) {
            benchmark::RegisterBenchmark(name, contender)
                ->Arg(size)
                ->UseManualTime()
                ->Iterations(ITERATIONS)
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    PrintRatios();
    host.reset();  // while the library's own globals still stand
    return 0;
}
