// Aliases: their expansion in paths, and the expressions that define them.
#include <cstring>

#include <benchmark/benchmark.h>

#include "LenientLoad.h"

namespace {

using benchmark::State;

// A parser that has read nothing and knows the aliases of one file.
class Aliases : public bench::LenientLoad {
  public:
    Aliases() : LenientLoad("", "") {
        perFileAliasesPushBack("%slot", "3");
        perFileAliasesPushBack("%protocolName", "regular");
        perFileAliasesPushBack("%groupName", "backup-blue");
        perFileAliasesPushBack("%isLab", "");
        for (char const* const more : {"%queueName", "%areaId", "%policyName", "%identifier"})
            perFileAliasesPushBack(more, "main");
    }
};

// Copies the path into the buffer, as a caller does, and expands it.
void expandPath(State& state, char const* path) {
    Aliases parser;
    Kelda::LineBuffer buffer{};
    auto const bytes = std::strlen(path) + 1;
    for (auto _ : state) {
        std::memcpy(buffer.data(), path, bytes);
        parser.expandAliasInPath(buffer.data(), buffer.size());
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    }
    if (std::strchr(buffer.data(), '%') != nullptr || !parser.exceptions().empty())
        state.SkipWithError("the path was not expanded");
}

void evaluate(State& state, char const* expression, char const* expected) {
    Aliases parser;
    Rook::String value;
    for (auto _ : state) {
        value = parser.evaluateAliasExpr(expression);
        benchmark::DoNotOptimize(value);
    }
    if (value != expected || !parser.exceptions().empty())
        state.SkipWithError("the expression has another value");
}

} // namespace

BENCHMARK_CAPTURE(expandPath, no_token,
                  "network-instances/network-instance/default/protocols/protocol/BGP/peer-groups")
    ->Name("Alias/expandPath/0");
BENCHMARK_CAPTURE(expandPath, one_token,
                  "components/component/%slot/subcomponents/sensors/temperature/thresholds/state")
    ->Name("Alias/expandPath/1");
BENCHMARK_CAPTURE(expandPath, three_tokens,
                  "components/component/%slot/protocols/%protocolName/peer-groups/%groupName/state")
    ->Name("Alias/expandPath/3");
BENCHMARK_CAPTURE(evaluate, literal, "main", "main")->Name("Alias/expression/literal");
BENCHMARK_CAPTURE(evaluate, alias, "%slot", "3")->Name("Alias/expression/alias");
BENCHMARK_CAPTURE(evaluate, list, "backup,%slot", "backup-3")->Name("Alias/expression/list");
BENCHMARK_CAPTURE(evaluate, test, "%groupName~blue", "backup-blue")->Name("Alias/expression/test");
BENCHMARK_CAPTURE(evaluate, choice, "%isLab?special:%protocolName", "regular")
    ->Name("Alias/expression/choice");
