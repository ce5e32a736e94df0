// Help texts and the version.
#include <gtest/gtest.h>

#include <regex>

#include "support/KeldaProgram.h"

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
                    HelpCall{{"preinit", "--help"}, "help-preinit.txt"}));

TEST(Help, FitsANarrowTerminal) {
    for (Words const& words :
         {Words{"--help"}, Words{"mounts", "--help"}, Words{"preinit", "--help"}}) {
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
