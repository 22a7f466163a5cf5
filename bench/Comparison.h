#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <string>

/// What one run of a piece of work cost.
struct Sample
{
    double milliseconds = 1e9;
    double peakMiB = 0;  ///< largest resident size of the process while it ran
};

/// Runs @p work once and measures it.
Sample Measured(const std::function<void()>& work);

/// The library and its floor at one size.
struct Comparison
{
    std::string name;
    int size;
    std::function<Sample()> measured;  ///< the library: sets up and measures one run
    std::function<Sample()> floor;
};

/// Runs both, in turns, as often as @p state says, and keeps the best of each: what disturbs a run only adds.
void Compare(benchmark::State& state, const Comparison& comparison);

/// Runs what has been registered and prints a table of all comparisons: ratios, and how time grows from one size of
/// a name to the next (its exponent).
int RunBenchmarks(int argc, char** argv);
