// The benchmarks of what `kelda check` does: a whole device, read, written down and checked.
#pragma once

#include <optional>

namespace bench {

// Registers them, side by side with the plain load of the same device.
void addCheckBenchmarks();

// The work of the process in which memory is measured: nothing when the arguments do not ask for
// it, otherwise the exit status.
std::optional<int> measureCheckIfAsked(int argc, char** argv);

} // namespace bench
