#include "BenchmarkParts.h"

namespace bench {

namespace {

bool any = false;

} // namespace

bool refused(benchmark::State& state, std::string const& difference) {
    if (difference.empty())
        return false;
    any = true;
    state.SkipWithError(difference.c_str());
    return true;
}

bool anyRefused() {
    return any;
}

} // namespace bench
