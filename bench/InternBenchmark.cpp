// Rook::String beside std::string: making strings of new and of known texts, copying, comparing and
// hashing them. The texts are paths of some eighty characters with long common beginnings.
#include <functional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <Rook/String.h>

#include "DeviceNames.h"

namespace {

using benchmark::State;

constexpr std::size_t count = 10'000;

std::vector<std::string> const& texts() {
    static auto const paths = [] {
        bench::DeviceNames const names(1);
        std::vector<std::string> made;
        for (std::size_t agent = 0; made.size() < count; ++agent)
            for (std::size_t path = 0; path < 25 && made.size() < count; ++path)
                made.push_back(names.path(names.agent(agent, 0), path).path);
        return made;
    }();
    return paths;
}

template <class Text>
std::vector<Text> all() {
    return {texts().begin(), texts().end()};
}

void countTexts(State& state) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

// Makes strings of all texts; none of them exists when an iteration begins.
template <class Text>
void makeNew(State& state) {
    std::vector<Text> made;
    made.reserve(count);
    for (auto _ : state) {
        for (std::string_view const text : texts())
            made.emplace_back(text);
        state.PauseTiming();
        made.clear();
        Rook::String::defragment();
        state.ResumeTiming();
    }
    countTexts(state);
}

// Makes strings of texts that others hold already.
template <class Text>
void makeKnown(State& state) {
    auto const known = all<Text>();
    for (auto _ : state)
        for (std::string_view const text : texts())
            benchmark::DoNotOptimize(Text(text));
    countTexts(state);
}

template <class Text>
void copy(State& state) {
    auto const known = all<Text>();
    for (auto _ : state)
        for (auto const& text : known)
            benchmark::DoNotOptimize(Text(text));
    countTexts(state);
}

// Compares each string with an equal one that was made on its own.
template <class Text>
void compareEqual(State& state) {
    auto const some = all<Text>();
    auto const others = all<Text>();
    for (auto _ : state)
        for (std::size_t i = 0; i < count; ++i)
            benchmark::DoNotOptimize(some[i] == others[i]);
    countTexts(state);
}

template <class Text>
void compareDifferent(State& state) {
    auto const some = all<Text>();
    for (auto _ : state)
        for (std::size_t i = 1; i < count; ++i)
            benchmark::DoNotOptimize(some[i - 1] == some[i]);
    countTexts(state);
}

template <class Text>
void order(State& state) {
    auto const some = all<Text>();
    for (auto _ : state)
        for (std::size_t i = 1; i < count; ++i)
            benchmark::DoNotOptimize(some[i - 1] < some[i]);
    countTexts(state);
}

template <class Text>
void hash(State& state) {
    auto const some = all<Text>();
    for (auto _ : state)
        for (auto const& text : some)
            benchmark::DoNotOptimize(std::hash<Text>()(text));
    countTexts(state);
}

} // namespace

#define KELDA_BENCH_BOTH(function)                                                                 \
    BENCHMARK_TEMPLATE(function, Rook::String)->Name("String/" #function "/Rook");                 \
    BENCHMARK_TEMPLATE(function, std::string)->Name("String/" #function "/std")

KELDA_BENCH_BOTH(makeNew);
KELDA_BENCH_BOTH(makeKnown);
KELDA_BENCH_BOTH(copy);
KELDA_BENCH_BOTH(compareEqual);
KELDA_BENCH_BOTH(compareDifferent);
KELDA_BENCH_BOTH(order);
KELDA_BENCH_BOTH(hash);
