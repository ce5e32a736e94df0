#include "MemoryMeasure.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <stdexcept>

#include <unistd.h>

#include "HeapCounters.h"
#include "Publishing.h"

namespace bench {

namespace {

constexpr std::string_view loadRequest = "--measure-load";
constexpr std::string_view libraryLoader = "library";
constexpr std::string_view publishRequest = "--measure-publishing";
constexpr std::string_view loadOperation = "load";

std::int64_t residentBytes() {
    std::ifstream file("/proc/self/statm");
    std::int64_t all = 0;
    std::int64_t resident = 0;
    file >> all >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

// The figures of work whose result is looked at while it lives.
template <class Work>
MemoryFigures figuresOf(Work work) {
    auto const before = residentBytes();
    startHeapCounting();
    auto const result = work();
    auto const heap = stopHeapCounting();
    return {heap.bytes, heap.allocations, residentBytes() - before};
}

MemoryFigures figuresOfPublishing(std::string_view operation, Directories const& directories,
                                  std::string const& agentString) {
    if (operation == loadOperation)
        return figuresOf([&] { return loadWrap(directories, agentString); });
    auto const question = std::ranges::find_if(
        publishQuestions, [&](auto const& known) { return known.operation == operation; });
    if (question == publishQuestions.end())
        throw std::invalid_argument("no such operation");
    auto const wrap = loadWrap(directories, agentString);
    return figuresOf([&] { return question->ask(*wrap, agentString); });
}

std::string shellWord(std::string_view text) {
    std::string result = "'";
    for (char const c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

MemoryFigures runAgain(std::initializer_list<std::string_view> arguments) {
    auto command = shellWord(std::filesystem::read_symlink("/proc/self/exe").string());
    for (auto const argument : arguments)
        command.append(" ").append(shellWord(argument));
    std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), &pclose);
    long long heap = 0;
    unsigned long long allocations = 0;
    long long resident = 0;
    if (!output || std::fscanf(output.get(), "%lld %llu %lld", &heap, &allocations, &resident) != 3)
        throw std::runtime_error("cannot measure memory in a process of its own");
    return {heap, allocations, resident};
}

int print(MemoryFigures const& figures) {
    std::printf("%lld %llu %lld\n", static_cast<long long>(figures.heapBytes),
                static_cast<unsigned long long>(figures.allocations),
                static_cast<long long>(figures.residentBytes));
    return 0;
}

} // namespace

MemoryFigures measureLoad(std::string const& loader, Directories const& directories) {
    return runAgain({loadRequest, loader, directories.preinit, directories.profiles});
}

MemoryFigures measurePublishing(std::string_view operation, Directories const& directories,
                                std::string const& agentString) {
    return runAgain(
        {publishRequest, operation, directories.preinit, directories.profiles, agentString});
}

std::optional<int> measureIfAsked(int argc, char** argv) {
    if (argc == 5 && argv[1] == loadRequest) {
        Directories const directories{argv[3], argv[4]};
        return print(argv[2] == libraryLoader
                         ? figuresOf([&] { return loadByLibrary(directories); })
                         : figuresOf([&] { return loadPlainly(directories); }));
    }
    if (argc == 6 && argv[1] == publishRequest)
        return print(figuresOfPublishing(argv[2], {argv[3], argv[4]}, argv[5]));
    return std::nullopt;
}

} // namespace bench
