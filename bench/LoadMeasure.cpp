#include "LoadMeasure.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string_view>

#include <unistd.h>

#include "HeapCounters.h"

namespace bench {

namespace {

constexpr std::string_view request = "--measure-load";
constexpr std::string_view libraryLoader = "library";

std::int64_t residentBytes() {
    std::ifstream file("/proc/self/statm");
    std::int64_t all = 0;
    std::int64_t resident = 0;
    file >> all >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

template <class Load>
LoadFigures figuresOf(Load load, Directories const& directories) {
    auto const before = residentBytes();
    startHeapCounting();
    auto const loaded = load(directories);
    auto const heap = stopHeapCounting();
    return {heap.bytes, heap.allocations, residentBytes() - before};
}

std::string quoted(std::string const& text) {
    std::string result = "'";
    for (char const c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

} // namespace

LoadFigures measureLoad(std::string const& loader, Directories const& directories) {
    auto const program = std::filesystem::read_symlink("/proc/self/exe").string();
    auto const command = quoted(program) + " " + std::string(request) + " " + loader + " " +
                         quoted(directories.preinit) + " " + quoted(directories.profiles);
    std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), &pclose);
    long long heap = 0;
    unsigned long long allocations = 0;
    long long resident = 0;
    if (!output || std::fscanf(output.get(), "%lld %llu %lld", &heap, &allocations, &resident) != 3)
        throw std::runtime_error("cannot measure a load in a process of its own");
    return {heap, allocations, resident};
}

std::optional<int> measureLoadIfAsked(int argc, char** argv) {
    if (argc != 5 || argv[1] != request)
        return std::nullopt;
    Directories const directories{argv[3], argv[4]};
    auto const figures = argv[2] == libraryLoader ? figuresOf(loadByLibrary, directories)
                                                  : figuresOf(loadPlainly, directories);
    std::printf("%lld %llu %lld\n", static_cast<long long>(figures.heapBytes),
                static_cast<unsigned long long>(figures.allocations),
                static_cast<long long>(figures.residentBytes));
    return 0;
}

} // namespace bench
