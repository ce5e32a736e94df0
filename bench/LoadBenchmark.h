// The benchmarks that load whole devices.
#pragma once

namespace bench {

// Registers them, the library's and the plain loader's of one size side by side.
void addLoadBenchmarks();

} // namespace bench
