// What loading and publishing cost in memory, measured in a process of its own: in one that has
// loaded before, the string table and the heap's free lists would hide part of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Loads.h"

namespace bench {

struct MemoryFigures {
    std::int64_t heapBytes = 0;     // in use while the result lives
    std::uint64_t allocations = 0;  // blocks asked for meanwhile
    std::int64_t residentBytes = 0; // memory of the process, as the kernel counts it
};

// These run this program again, and throw std::runtime_error when that fails.

// `loader` is "library" or "plain".
MemoryFigures measureLoad(std::string const& loader, Directories const& directories);
// What answering takes beyond what the entity has loaded; `operation` is that of a PublishQuestion,
// or "load" for the load itself.
MemoryFigures measurePublishing(std::string_view operation, Directories const& directories,
                                std::string const& agentString);

// The work of the process that these run: nothing when the arguments do not ask for it, otherwise
// the exit status.
std::optional<int> measureIfAsked(int argc, char** argv);

} // namespace bench
