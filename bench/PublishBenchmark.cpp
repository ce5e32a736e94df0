// What publishing costs beside loading: each round loads the entity of one agent, then asks it, and
// times both.
#include "PublishBenchmark.h"

#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <benchmark/benchmark.h>

#include "BenchmarkParts.h"
#include "GeneratedDevice.h"
#include "MemoryMeasure.h"
#include "Publishing.h"

namespace bench {

namespace {

using benchmark::State;

// A device of which one agent mounts so many paths that others own, and how it answers.
struct CollectedDevice {
    explicit CollectedDevice(DeviceShape const& shape)
        : device(shape), directories(directoriesOf(device)),
          difference(differenceInPublishing(directories, device.collector())) {}

    GeneratedDevice const device;
    Directories const directories;
    std::string const difference;
};

// Devices live until the program ends: several benchmarks load each.
CollectedDevice const& deviceOf(std::size_t paths) {
    static std::map<std::size_t, std::unique_ptr<CollectedDevice>> devices;
    auto& device = devices[paths];
    if (!device) {
        DeviceShape shape;
        // More lines than paths: the device has include files and default groups too.
        shape.lines = paths + paths / 4;
        shape.sharedShare = 0;
        shape.collectedPaths = paths;
        device = std::make_unique<CollectedDevice>(shape);
    }
    return *device;
}

double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The result of some work, and its time added to `seconds`.
template <class Work>
auto timed(double& seconds, Work work) {
    auto const begin = processorSeconds();
    auto result = work();
    seconds += processorSeconds() - begin;
    return result;
}

MemoryFigures const& figuresOf(std::string_view operation, CollectedDevice const& collected) {
    static std::map<std::pair<std::string_view, CollectedDevice const*>, MemoryFigures> known;
    auto const key = std::pair(operation, &collected);
    auto const found = known.find(key);
    if (found != known.end())
        return found->second;
    return known
        .emplace(key,
                 measurePublishing(operation, collected.directories, collected.device.collector()))
        .first->second;
}

void count(State& state, CollectedDevice const& collected, std::string_view operation,
           std::size_t paths) {
    auto const& figures = figuresOf(operation, collected);
    auto const perPath = [&](auto total) {
        return static_cast<double>(total) / static_cast<double>(paths);
    };
    state.counters["paths"] = static_cast<double>(paths);
    state.counters["time/path"] = timePer(paths);
    state.counters["heap_B/path"] = perPath(figures.heapBytes);
    state.counters["allocs/path"] = perPath(figures.allocations);
}

void load(State& state) {
    auto const paths = static_cast<std::size_t>(state.range(0));
    auto const& collected = deviceOf(paths);
    if (refused(state, collected.difference))
        return;
    for (auto _ : state) {
        auto wrap = loadWrap(collected.directories, collected.device.collector());
        state.PauseTiming();
        wrap = nullptr;
        Rook::String::defragment();
        state.ResumeTiming();
    }
    count(state, collected, "load", paths);
}

void ask(State& state, PublishQuestion const& question) {
    auto const& collected = deviceOf(static_cast<std::size_t>(state.range(0)));
    if (refused(state, collected.difference))
        return;
    auto const agent = collected.device.collector();
    double loading = 0;
    double publishing = 0;
    std::size_t paths = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto wrap = timed(loading, [&] { return loadWrap(collected.directories, agent); });
        state.ResumeTiming();
        auto answer = timed(publishing, [&] { return question.ask(*wrap, agent); });
        state.PauseTiming();
        paths = answer.paths;
        answer = {};
        wrap = nullptr;
        Rook::String::defragment();
        state.ResumeTiming();
    }
    count(state, collected, question.operation, paths);
    state.counters["publish/load"] = publishing / loading;
}

} // namespace

void addPublishBenchmarks() {
    for (std::int64_t const paths : {1'000, 10'000, 100'000}) {
        add("Publish/load/paths", paths, load);
        for (auto const& question : publishQuestions)
            add("Publish/" + std::string(question.operation) + "/paths", paths,
                [&question](State& state) { ask(state, question); });
    }
}

} // namespace bench
