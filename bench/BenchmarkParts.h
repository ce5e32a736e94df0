// What the benchmarks of generated devices have in common.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "GeneratedDevice.h"
#include "Loads.h"

namespace bench {

// Ends a benchmark whose results differ from what they are compared with, before anything is timed.
bool refused(benchmark::State& state, std::string const& difference);
// Whether any benchmark was.
bool anyRefused();

inline Directories directoriesOf(GeneratedDevice const& device) {
    return {device.preinitDir(), device.profileDir()};
}

// The time of an iteration by `count` things.
inline benchmark::Counter timePer(std::size_t count) {
    return {static_cast<double>(count),
            benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert};
}

// Registers a benchmark of one size that tells the smallest and largest of several rounds too.
template <class Run>
void add(std::string const& name, std::int64_t size, Run run) {
    auto const smallest = [](std::vector<double> const& values) {
        return *std::min_element(values.begin(), values.end());
    };
    auto const largest = [](std::vector<double> const& values) {
        return *std::max_element(values.begin(), values.end());
    };
    benchmark::RegisterBenchmark(name.c_str(), run)
        ->Arg(size)
        ->Unit(benchmark::kMillisecond)
        ->ComputeStatistics("min", smallest)
        ->ComputeStatistics("max", largest);
}

} // namespace bench
