// The pages of the rules, as people read them.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "Text.h"
#include "explain/RulePage.h"

namespace {

using KeldaDatabase::allRules;
using KeldaDatabase::Rule;
using KeldaDatabase::RuleId;
using KeldaDatabase::Severity;
using KeldaTool::ruleList;
using KeldaTool::rulePage;

TEST(RulePage, ShowsEverythingThatTheTableHolds) {
    Rule const rule{RuleId::flagUnknown,
                    "lamp-broken",
                    Severity::warning,
                    "A lamp is broken",
                    "It gives no light.\n\nReplace it.",
                    "== preinit/Lamps\nlamp, Broken\n\n== profiles/Lamp\nagentName: Lamp\n",
                    "== preinit/Lamps\nlamp, Whole\n"};
    EXPECT_EQ(rulePage(rule), "lamp-broken (warning)\n"
                              "A lamp is broken\n"
                              "\n"
                              "It gives no light.\n"
                              "\n"
                              "Replace it.\n"
                              "\n"
                              "Wrong:\n"
                              "\n"
                              "    == preinit/Lamps\n"
                              "    lamp, Broken\n"
                              "\n"
                              "    == profiles/Lamp\n"
                              "    agentName: Lamp\n"
                              "\n"
                              "Right:\n"
                              "\n"
                              "    == preinit/Lamps\n"
                              "    lamp, Whole\n");
}

TEST(RulePage, HasNoExamplesWhereThereAreNone) {
    Rule const rule{
        RuleId::otherFault, "lamp-dark", Severity::error, "A lamp is dark", "It is night.", "", ""};
    EXPECT_EQ(rulePage(rule), "lamp-dark (error)\nA lamp is dark\n\nIt is night.\n");
}

TEST(RulePage, FitsATerminalAndHoldsNothingThatItCannotShow) {
    for (auto const& rule : allRules()) {
        std::istringstream lines(rulePage(rule));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), 90U) << rule.name << ": " << line;
            EXPECT_EQ(KeldaTool::printable(line), line) << rule.name;
        }
    }
}

TEST(RuleList, HasALineForEachRuleInTheOrderOfTheTable) {
    std::istringstream lines(ruleList());
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "RULE                         SEVERITY  SUMMARY");
    for (auto const& rule : allRules()) {
        ASSERT_TRUE(std::getline(lines, line)) << rule.name;
        EXPECT_TRUE(line.starts_with(std::string(rule.name) + " ")) << line;
        EXPECT_TRUE(line.ends_with("  " + std::string(rule.summary))) << line;
        EXPECT_EQ(line.substr(29, line.find(' ', 29) - 29), nameOf(rule.severity)) << line;
    }
    EXPECT_FALSE(std::getline(lines, line));
}

} // namespace
