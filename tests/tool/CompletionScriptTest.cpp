// kelda completion: what the scripts of all shells have in common.
#include <gtest/gtest.h>

#include "Shell.h"

namespace {

using support::completionScript;
using support::KeldaProgram;
using support::runScript;

class EveryShell : public testing::TestWithParam<std::string> {};

TEST_P(EveryShell, HasAScriptThatItCanRead) {
    SKIP_WITHOUT(GetParam());
    auto const outcome = runScript(GetParam() + " -n", completionScript(GetParam()));
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_P(EveryShell, HasTheSameScriptEveryTime) {
    EXPECT_EQ(completionScript(GetParam()), completionScript(GetParam()));
}

TEST_P(EveryShell, HasAScriptWithoutAWordAboutIt) {
    auto const outcome = KeldaProgram().run({"completion", GetParam()});
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

INSTANTIATE_TEST_SUITE_P(Completion, EveryShell, testing::Values("bash", "zsh"));

} // namespace
