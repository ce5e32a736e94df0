// The benchmarks of the library; README.md says what each figure means.
#include <benchmark/benchmark.h>

#include "BenchmarkParts.h"
#include "CheckBenchmark.h"
#include "LoadBenchmark.h"
#include "MemoryMeasure.h"
#include "PublishBenchmark.h"

int main(int argc, char** argv) {
    if (auto const status = bench::measureIfAsked(argc, argv))
        return *status;
    if (auto const status = bench::measureCheckIfAsked(argc, argv))
        return *status;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    bench::addLoadBenchmarks();
    bench::addPublishBenchmarks();
    bench::addCheckBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return bench::anyRefused() ? 1 : 0;
}
