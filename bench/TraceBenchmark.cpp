// What a trace call costs while its level is off: the same loop of work with and without one.
#include <array>
#include <cstdint>

#include <benchmark/benchmark.h>

#include <Trace/Trace.h>

namespace {

using benchmark::State;

Trace::Handle& traceHandle() {
    static auto& handle = Trace::handle("Benchmark");
    handle.setMask(0);
    return handle;
}

constexpr std::array<unsigned char, 80> work = {"components/component/3/subcomponents/sensors/"};
constexpr std::size_t rounds = 1000;

// One round of work, about what looking at one character of a line costs. Rounds do not wait for
// each other: a trace call could hide in the wait.
std::uint32_t step(std::size_t round) {
    return (static_cast<std::uint32_t>(round) ^ work[round % work.size()]) * 16777619U;
}

void workAlone(State& state) {
    for (auto _ : state)
        for (std::size_t round = 0; round < rounds; ++round) {
            auto result = step(round);
            benchmark::DoNotOptimize(result);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rounds));
}

void workTraced(State& state) {
    auto const& handle = traceHandle();
    for (auto _ : state)
        for (std::size_t round = 0; round < rounds; ++round) {
            auto result = step(round);
            TRACE_MESSAGE(handle, 9, "( round : {}, result : {} )", round, result);
            benchmark::DoNotOptimize(result);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(rounds));
}

} // namespace

BENCHMARK(workAlone)->Name("Trace/loop/alone");
BENCHMARK(workTraced)->Name("Trace/loop/traced_off");
