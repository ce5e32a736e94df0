// Whole loads of generated devices, by the library and by the plain loader beside it: everything,
// as the database side does, and one agent among many, as an agent does when it starts.
#include "LoadBenchmark.h"

#include <map>
#include <memory>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

#include "BenchmarkParts.h"
#include "GeneratedDevice.h"
#include "Loads.h"
#include "MemoryMeasure.h"
#include "SameResult.h"

namespace bench {

namespace {

using benchmark::State;

// Devices live until the program ends: several benchmarks load each.
GeneratedDevice const& deviceOf(std::size_t lines) {
    static std::map<std::size_t, std::unique_ptr<GeneratedDevice>> devices;
    auto& device = devices[lines];
    if (!device) {
        DeviceShape shape;
        shape.lines = lines;
        device = std::make_unique<GeneratedDevice>(shape);
    }
    return *device;
}

// Runs a check once and remembers what it found, by the number that names the device.
template <class Check>
std::string const& checkedOnce(std::map<std::size_t, std::string>& known, std::size_t lines,
                               Check check) {
    auto const found = known.find(lines);
    return found != known.end() ? found->second : known.emplace(lines, check()).first->second;
}

std::string const& differenceInLoads(GeneratedDevice const& device) {
    static std::map<std::size_t, std::string> known;
    return checkedOnce(known, device.shape().lines, [&] {
        auto const directories = directoriesOf(device);
        return difference(*loadByLibrary(directories), *loadPlainly(directories));
    });
}

std::string const& differenceInAgents(GeneratedDevice const& device) {
    static std::map<std::size_t, std::string> known;
    return checkedOnce(known, device.shape().lines, [&]() -> std::string {
        auto const directories = directoriesOf(device);
        auto const plain = startAgentPlainly(directories, device.agentString());
        return plain->records().size() < 10
                   ? "the agent has hardly a path"
                   : difference(*startAgentByLibrary(directories, device.agentString()), *plain);
    });
}

MemoryFigures const& figuresOf(std::string const& loader, GeneratedDevice const& device) {
    static std::map<std::pair<std::string, std::size_t>, MemoryFigures> known;
    auto const key = std::pair(loader, device.shape().lines);
    auto const found = known.find(key);
    if (found != known.end())
        return found->second;
    return known.emplace(key, measureLoad(loader, directoriesOf(device))).first->second;
}

// Times loads that each begin with nothing loaded: tear-down stands outside the clock, and so does
// forgetting the strings of the load before.
template <class Load>
void timeLoads(State& state, Load load) {
    for (auto _ : state) {
        auto loaded = load();
        benchmark::DoNotOptimize(loaded);
        state.PauseTiming();
        loaded.reset();
        Rook::String::defragment();
        state.ResumeTiming();
    }
}

double perLine(GeneratedDevice const& device, double total) {
    return total / static_cast<double>(device.shape().lines);
}

template <class Load>
void loadEverything(State& state, std::string const& loader, Load load) {
    auto const& device = deviceOf(static_cast<std::size_t>(state.range(0)));
    if (refused(state, differenceInLoads(device)))
        return;
    auto const directories = directoriesOf(device);
    timeLoads(state, [&] { return load(directories); });
    auto const& figures = figuresOf(loader, device);
    state.counters["time/line"] = timePer(device.shape().lines);
    state.counters["heap_B/line"] = perLine(device, static_cast<double>(figures.heapBytes));
    state.counters["rss_B/line"] = perLine(device, static_cast<double>(figures.residentBytes));
    state.counters["allocs/line"] = perLine(device, static_cast<double>(figures.allocations));
}

template <class Load>
void startAgent(State& state, Load load) {
    constexpr std::size_t linesPerProfile = DeviceShape().linesPerProfile;
    auto const& device = deviceOf(static_cast<std::size_t>(state.range(0)) * linesPerProfile);
    if (refused(state, differenceInAgents(device)))
        return;
    auto const directories = directoriesOf(device);
    timeLoads(state, [&] { return load(directories, device.agentString()); });
    state.counters["time/profile"] = timePer(device.figures().profiles);
}

} // namespace

void addLoadBenchmarks() {
    for (std::int64_t const lines : {10'000, 100'000, 1'000'000}) {
        add("Load/library/lines", lines,
            [](State& state) { loadEverything(state, "library", loadByLibrary); });
        add("Load/plain/lines", lines,
            [](State& state) { loadEverything(state, "plain", loadPlainly); });
    }
    for (std::int64_t const profiles : {100, 1'000, 5'000}) {
        add("AgentStart/library/profiles", profiles,
            [](State& state) { startAgent(state, startAgentByLibrary); });
        add("AgentStart/plain/profiles", profiles,
            [](State& state) { startAgent(state, startAgentPlainly); });
    }
}

} // namespace bench
