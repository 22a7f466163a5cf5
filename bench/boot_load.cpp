// The whole boot load against its floor, in time and peak memory.
#include <iterator>
#include <stdexcept>

#include "Comparison.h"
#include "LoadFloor.h"
#include "LoadHost.h"
#include "NimbConfigStore.h"

namespace
{
constexpr LoadSize SIZES[] = {{50, 200, 1000}, {500, 2000, 10000}, {500, 2000, 100000}};

void LoadWithTheLibrary(const TestHost& host)
{
    if (NimbConfigStore::LoadStore(true) != 0 || host.KeyValue("BOOT_INFO") != R"({"type":1})") {
        throw std::runtime_error("the load failed");
    }
}

void BootLoad(benchmark::State& state)
{
    const LoadSize& size = SIZES[state.range(0)];
    TestHost host;
    FillLoadHost(host, size);
    const auto measured = [&host](void (*load)(const TestHost&)) {
        host.ClearLogs();
        return Measured([&] { load(host); });
    };
    Compare(state, {"boot load", size.rows, [&] { return measured(LoadWithTheLibrary); },
                    [&] { return measured(RunLoadFloor); }});
}
}  // namespace

int main(int argc, char** argv)
{
    for (int size = 0; size < static_cast<int>(std::size(SIZES)); ++size) {
        benchmark::RegisterBenchmark("BootLoad", BootLoad)
            ->Arg(size)
            ->UseManualTime()
            ->Iterations(7)
            ->Unit(benchmark::kMillisecond);
    }
    return RunBenchmarks(argc, argv);
}
