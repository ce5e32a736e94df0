// What a load costs in memory, measured in a process of its own: in one that has loaded before, the
// string table and the heap's free lists would hide part of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Loads.h"

namespace bench {

struct LoadFigures {
    std::int64_t heapBytes = 0;     // in use while the loaded object lives
    std::uint64_t allocations = 0;  // blocks asked for while loading
    std::int64_t residentBytes = 0; // memory of the process, as the kernel counts it
};

// `loader` is "library" or "plain". Runs this program again; throws std::runtime_error when that
// fails.
LoadFigures measureLoad(std::string const& loader, Directories const& directories);

// The work of the process that measureLoad runs: nothing when the arguments do not ask for it,
// otherwise the exit status.
std::optional<int> measureLoadIfAsked(int argc, char** argv);

} // namespace bench
