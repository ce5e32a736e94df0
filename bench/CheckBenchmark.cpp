// A device as `kelda check` takes it: loaded without a fault's place being kept (the measure for
// the rest), loaded and written down, and checked.
#include "CheckBenchmark.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <unistd.h>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "BenchmarkParts.h"
#include "GeneratedDevice.h"
#include "HeapCounters.h"
#include "Loads.h"
#include "MemoryMeasure.h"
#include "database/DatabaseMountFileInfo.h"

namespace bench {

namespace {

using benchmark::State;
using KeldaDatabase::DatabaseMountFileInfo;
using Parser = std::unique_ptr<Kelda::MountFileInfo>;

constexpr std::string_view request = "--measure-check";

Parser loadLeniently(Directories const& directories) {
    return loadByLibrary(directories);
}

Parser writeDown(Directories const& directories) {
    auto parser =
        std::make_unique<DatabaseMountFileInfo>(directories.preinit, directories.profiles);
    parser->doInit();
    return parser;
}

Parser check(Directories const& directories) {
    auto parser =
        std::make_unique<DatabaseMountFileInfo>(directories.preinit, directories.profiles);
    parser->staticCheckIs(true);
    parser->findings();
    return parser;
}

struct Step {
    std::string_view name;
    Parser (*run)(Directories const& directories);
};

constexpr Step steps[] = {{"lenient", loadLeniently}, {"recorded", writeDown}, {"checked", check}};

// Profiles of some 200 lines: a million lines are 5,000 profiles.
GeneratedDevice const& deviceOf(std::size_t lines) {
    static std::map<std::size_t, std::unique_ptr<GeneratedDevice>> devices;
    auto& device = devices[lines];
    if (!device) {
        DeviceShape shape;
        shape.lines = lines;
        shape.linesPerProfile = 200;
        device = std::make_unique<GeneratedDevice>(shape);
    }
    return *device;
}

// What keeps the benchmark of a device from being one: empty where nothing does.
std::string whatIsMissing(GeneratedDevice const& device) {
    DatabaseMountFileInfo parser(device.preinitDir(), device.profileDir());
    auto const& written = parser.device();
    if (!written.faults.empty())
        return "the device has a fault: " +
               std::string(written.faults.front().exception.msg.view());
    return written.mounts.size() == device.figures().linesRead
               ? std::string()
               : "other mounts than the device has lines";
}

std::string const& whatIsMissingOnce(GeneratedDevice const& device) {
    static std::map<std::size_t, std::string> known;
    auto const found = known.find(device.shape().lines);
    return found != known.end()
               ? found->second
               : known.emplace(device.shape().lines, whatIsMissing(device)).first->second;
}

std::int64_t residentBytes() {
    std::ifstream file("/proc/self/statm");
    std::int64_t all = 0;
    std::int64_t resident = 0;
    file >> all >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

// Runs this program again for one step of a device.
MemoryFigures measure(Step const& step, Directories const& directories) {
    auto const command = fmt::format("'{}' {} {} '{}' '{}'",
                                     std::filesystem::read_symlink("/proc/self/exe").string(),
                                     request, step.name, directories.preinit, directories.profiles);
    std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), &pclose);
    long long heap = 0;
    unsigned long long allocations = 0;
    long long resident = 0;
    if (!output || std::fscanf(output.get(), "%lld %llu %lld", &heap, &allocations, &resident) != 3)
        throw std::runtime_error("cannot measure memory in a process of its own");
    return {heap, allocations, resident};
}

MemoryFigures const& measuredOnce(Step const& step, GeneratedDevice const& device) {
    static std::map<std::pair<std::string_view, std::size_t>, MemoryFigures> known;
    auto const key = std::pair(step.name, device.shape().lines);
    auto const found = known.find(key);
    return found != known.end()
               ? found->second
               : known.emplace(key, measure(step, directoriesOf(device))).first->second;
}

void runStep(State& state, Step const& step) {
    auto const& device = deviceOf(static_cast<std::size_t>(state.range(0)));
    if (refused(state, whatIsMissingOnce(device)))
        return;
    auto const directories = directoriesOf(device);
    for (auto _ : state) {
        auto parser = step.run(directories);
        benchmark::DoNotOptimize(parser);
        state.PauseTiming(); // each begins with nothing loaded
        parser.reset();
        Rook::String::defragment();
        state.ResumeTiming();
    }
    auto const lines = static_cast<double>(device.shape().lines);
    auto const& figures = measuredOnce(step, device);
    state.counters["time/line"] = timePer(device.shape().lines);
    state.counters["heap_B/line"] = static_cast<double>(figures.heapBytes) / lines;
    state.counters["rss_B/line"] = static_cast<double>(figures.residentBytes) / lines;
    state.counters["allocs/line"] = static_cast<double>(figures.allocations) / lines;
}

} // namespace

void addCheckBenchmarks() {
    for (std::int64_t const lines : {10'000, 100'000, 1'000'000})
        for (auto const& step : steps)
            add("Check/" + std::string(step.name) + "/lines", lines,
                [&step](State& state) { runStep(state, step); });
}

std::optional<int> measureCheckIfAsked(int argc, char** argv) {
    if (argc != 5 || argv[1] != request)
        return std::nullopt;
    Directories const directories{argv[3], argv[4]};
    for (auto const& step : steps) {
        if (argv[2] != step.name)
            continue;
        auto const before = residentBytes();
        startHeapCounting();
        auto const parser = step.run(directories);
        auto const heap = stopHeapCounting();
        std::printf("%lld %llu %lld\n", static_cast<long long>(heap.bytes),
                    static_cast<unsigned long long>(heap.allocations),
                    static_cast<long long>(residentBytes() - before));
        return 0;
    }
    return 2;
}

} // namespace bench
