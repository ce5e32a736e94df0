// The findings of a check as a JUnit report.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "CheckResults.h"
#include "XmlReader.h"
#include "check/CheckFormats.h"

namespace {

using namespace toolunits;
using KeldaTool::checkJunit;

XmlElement suiteOf(CheckResult const& result) {
    return XmlReader::read(checkJunit(result)).children.at(0);
}

CheckedFinding findingIn(std::string const& file, RuleId rule, std::string message) {
    return finding(rule, {file, 1, 0, 0, ""}, std::move(message));
}

// The test cases with what has become of them.
std::vector<std::string> outcomesOf(CheckResult const& result) {
    std::vector<std::string> outcomes;
    for (auto const& testCase : suiteOf(result).children) {
        std::string outcome = testCase.attributes.at("name") + ":";
        for (auto const& child : testCase.children)
            outcome += " " + child.name;
        outcomes.push_back(outcome);
    }
    return outcomes;
}

TEST(CheckJunit, HasATestCaseForEachFile) {
    EXPECT_EQ(checkJunit(sampleResultWithFiles()), expected("check-junit.xml"));
}

TEST(CheckJunit, OfNothingIsAnEmptySuite) {
    EXPECT_EQ(checkJunit({}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<testsuites name=\"kelda check\" tests=\"0\" failures=\"0\" errors=\"0\">\n"
              "  <testsuite name=\"kelda check\" tests=\"0\" failures=\"0\" errors=\"0\" "
              "skipped=\"0\">\n"
              "  </testsuite>\n"
              "</testsuites>\n");
}

TEST(CheckJunit, FailsFilesWithErrorsOrWarnings) {
    auto result = resultOf(
        {findingIn("Warned", RuleId::orphanFile, "m"), findingIn("Noted", RuleId::aliasUnused, "m"),
         findingIn("Both", RuleId::aliasUnused, "m"), findingIn("Both", RuleId::flagUnknown, "m"),
         findingIn("", RuleId::directoryUnreadable, "m")});
    result.filesRead = {"Both", "Clean", "Noted"};
    result.filesSkipped = {{"Copy~", "r"}, {"Both", "r"}};
    EXPECT_EQ(outcomesOf(result),
              (std::vector<std::string>{"Both: failure system-out", "Clean:", "Noted: system-out",
                                        "Warned: failure", "no file: failure", "Copy~: skipped"}));
    auto const counts = suiteOf(result).attributes;
    EXPECT_EQ(counts.at("tests"), "6");
    EXPECT_EQ(counts.at("failures"), "3");
    EXPECT_EQ(counts.at("errors"), "0");
    EXPECT_EQ(counts.at("skipped"), "1");
}

TEST(CheckJunit, HasOneFailureForAFileWithTheGravestInFront) {
    auto const testCase = suiteOf(resultOf({findingIn("f", RuleId::orphanFile, "first"),
                                            findingIn("f", RuleId::flagUnknown, "second\nline"),
                                            findingIn("f", RuleId::typesDiffer, "third")}))
                              .children.at(0);
    ASSERT_EQ(testCase.children.size(), 1U);
    auto const& failure = testCase.children[0];
    EXPECT_EQ(failure.attributes.at("type"), "flag-unknown");
    EXPECT_EQ(failure.attributes.at("message"), "second / line (and 2 more findings)");
    EXPECT_EQ(failure.text, "f:1: warning: first [orphan-file]\n"
                            "f:1: error: second [flag-unknown]\n    line\n"
                            "f:1: error: third [types-differ]\n");
}

TEST(CheckJunit, CountsOneMoreFinding) {
    auto const suite = suiteOf(resultOf(
        {findingIn("f", RuleId::orphanFile, "a"), findingIn("f", RuleId::orphanFile, "b")}));
    EXPECT_EQ(suite.children.at(0).children.at(0).attributes.at("message"),
              "a (and 1 more finding)");
}

TEST(CheckJunit, EscapesWhatHasAMeaningInXmlOrMayNotStandInIt) {
    for (auto const& [text, shown] : {
             std::pair<std::string, std::string>{"<a b=\"c\">&amp;'", "<a b=\"c\">&amp;'"},
             {"]]><!-- -->", "]]><!-- -->"},
             {"a\x01\x1b", "a\\x01\\x1b"},
             {"a\xff", "a\\xff"},
             {"a\xef\xbf\xbe\xef\xbf\xbf", "a\\u{fffe}\\u{ffff}"},
             {"a\xef\xbf\xbd", "a\xef\xbf\xbd"},
         }) {
        auto const testCase =
            suiteOf(resultOf({findingIn(text, RuleId::flagUnknown, text)})).children.at(0);
        EXPECT_EQ(testCase.attributes.at("name"), shown);
        EXPECT_EQ(testCase.children.at(0).attributes.at("message"), shown);
        EXPECT_EQ(testCase.children.at(0).text,
                  shown + ":1: error: " + shown + " [flag-unknown]\n");
    }
}

RC_GTEST_PROP(CheckJunitProperty, IsWellFormedWhateverTheFilesHold, ()) {
    auto const result = anyResult();
    auto const text = checkJunit(result);
    RC_ASSERT(isFitForATerminal(text));
    auto const root = XmlReader::read(text);
    auto const suite = root.children.at(0);
    std::size_t failed = 0;
    for (auto const& testCase : suite.children) {
        RC_ASSERT(testCase.named("failure").size() <= 1U);
        failed += testCase.named("failure").size();
    }
    RC_ASSERT(suite.attributes.at("failures") == std::to_string(failed));
    RC_ASSERT(suite.attributes.at("tests") == std::to_string(suite.children.size()));
}

} // namespace
