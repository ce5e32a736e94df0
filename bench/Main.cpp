// The benchmarks of the library; README.md says what each figure means.
#include <benchmark/benchmark.h>

#include "LoadBenchmark.h"
#include "LoadMeasure.h"

int main(int argc, char** argv) {
    if (auto const status = bench::measureLoadIfAsked(argc, argv))
        return *status;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    bench::addLoadBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return bench::anyLoadDiffered() ? 1 : 0;
}
