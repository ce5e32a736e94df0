// Help texts and the version.
#include <gtest/gtest.h>

#include <regex>

#include "ProgramHelp.h"

namespace {

using support::expected;
using support::KeldaProgram;
using support::Words;

struct HelpCall {
    Words words;
    std::string kept; // file with the expected text
};

class EveryHelp : public testing::TestWithParam<HelpCall> {};

TEST_P(EveryHelp, IsTheKeptText) {
    auto const outcome = KeldaProgram().run(GetParam().words);
    EXPECT_EQ(outcome.out, expected(GetParam().kept));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, EveryHelp,
    testing::Values(HelpCall{{"--help"}, "help.txt"}, HelpCall{{"-h"}, "help.txt"},
                    HelpCall{{"mounts", "--help"}, "help-mounts.txt"},
                    HelpCall{{"mounts", "-h"}, "help-mounts.txt"},
                    HelpCall{{"mounts", "A", "--help"}, "help-mounts.txt"},
                    HelpCall{{"mounts", "--format", "json", "--help"}, "help-mounts.txt"},
                    HelpCall{{"preinit", "--help"}, "help-preinit.txt"},
                    HelpCall{{"config", "--help"}, "help-config.txt"},
                    HelpCall{{"check", "--help"}, "help-check.txt"},
                    HelpCall{{"explain", "--help"}, "help-explain.txt"},
                    HelpCall{{"who", "--help"}, "help-who.txt"},
                    HelpCall{{"agents", "--help"}, "help-agents.txt"},
                    HelpCall{{"tree", "--help"}, "help-tree.txt"},
                    HelpCall{{"diff", "--help"}, "help-diff.txt"},
                    HelpCall{{"fmt", "--help"}, "help-fmt.txt"},
                    HelpCall{{"report", "--help"}, "help-report.txt"},
                    HelpCall{{"graph", "--help"}, "help-graph.txt"},
                    HelpCall{{"completion", "--help"}, "help-completion.txt"},
                    HelpCall{{"completion", "bash", "-h"}, "help-completion.txt"}));

TEST(Help, FitsANarrowTerminal) {
    std::vector<Words> calls{{"--help"}};
    for (auto const& command : support::helpCommands())
        calls.push_back({command, "--help"});
    for (auto const& words : calls) {
        std::istringstream lines(KeldaProgram().run(words).out);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 96U) << line;
    }
}

TEST(Version, IsTheProgramsNameAndNumber) {
    auto const outcome = KeldaProgram().run({"--version"});
    EXPECT_TRUE(std::regex_match(outcome.out, std::regex("kelda \\d+\\.\\d+\\.\\d+\n")))
        << outcome.out;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

} // namespace
