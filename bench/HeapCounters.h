// Counts what the whole process asks of the heap, the C library's own requests included.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bench {

struct HeapFigures {
    std::int64_t bytes = 0;        // in use now less in use when counting began
    std::uint64_t allocations = 0; // blocks asked for since counting began
};

// The program replaces malloc and its relatives by functions that count while counting is on and
// then call the C library's. A block counts with its usable size and the word that the C library
// keeps before it. Counting is for one thread; when it is off it costs a load and a branch a call.
void startHeapCounting();
HeapFigures stopHeapCounting();

} // namespace bench
