// The benchmarks that publish what was loaded.
#pragma once

namespace bench {

// Registers the load through the published entity, and each question that it answers with a whole
// collection.
void addPublishBenchmarks();

} // namespace bench
