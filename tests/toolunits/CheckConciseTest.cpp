// The findings of a check in one line each.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "CheckResults.h"
#include "check/CheckFormats.h"

namespace {

using namespace toolunits;
using KeldaTool::checkConcise;

std::string lineOf(SourcePlace place, std::string message) {
    return checkConcise(
        resultOf({finding(RuleId::flagUnknown, std::move(place), std::move(message))}));
}

TEST(CheckConcise, IsALineForEachFinding) {
    EXPECT_EQ(checkConcise(sampleResult()), expected("check-concise.txt"));
}

TEST(CheckConcise, OfNoFindingsIsEmpty) {
    EXPECT_EQ(checkConcise(resultOf({})), "");
}

TEST(CheckConcise, DoesNotTellWhichFilesWereLookedAt) {
    EXPECT_EQ(checkConcise(sampleResultWithFiles()), checkConcise(sampleResult()));
}

TEST(CheckConcise, NamesAPlaceAsFarAsItIsKnown) {
    EXPECT_EQ(lineOf({"f", 2, 3, 1, "abc"}, "m"), "f:2:3: error: m [flag-unknown]\n");
    EXPECT_EQ(lineOf({"f", 2, 0, 0, "abc"}, "m"), "f:2: error: m [flag-unknown]\n");
    EXPECT_EQ(lineOf({"f", 0, 3, 0, ""}, "m"), "f: error: m [flag-unknown]\n");
    EXPECT_EQ(lineOf({"", 2, 3, 0, ""}, "m"), "kelda: error: m [flag-unknown]\n");
}

TEST(CheckConcise, OfAFindingWithoutARuleNamesNone) {
    auto made = finding(RuleId::flagUnknown, {"f", 1, 0, 0, ""}, "m");
    made.rule = nullptr;
    EXPECT_EQ(checkConcise(resultOf({made})), "f:1: error: m\n");
}

TEST(CheckConcise, WritesEachMessageInOneLine) {
    for (auto const& [message, shown] : {
             std::pair<std::string, std::string>{"one\ntwo", "one / two"},
             {"\n\n one\r\n\n\ttwo \n", "one / two"},
             {"one", "one"},
             {"a\rb", "a\\x0db"},
             {"a\x1b[31m\xff", "a\\x1b[31m\\xff"},
             {"a\u2028b", "a\\u{2028}b"},
         })
        EXPECT_EQ(lineOf({"f", 1, 0, 0, ""}, message),
                  "f:1: error: " + shown + " [flag-unknown]\n");
}

TEST(CheckConcise, EscapesNamesOfFiles) {
    EXPECT_EQ(lineOf({"a\nb\x1b", 1, 0, 0, ""}, "m"), "a\\x0ab\\x1b:1: error: m [flag-unknown]\n");
}

RC_GTEST_PROP(CheckConciseProperty, IsALineForEachFindingWhateverTheFilesHold, ()) {
    auto const result = anyResult();
    auto const text = checkConcise(result);
    RC_ASSERT(isFitForATerminal(text));
    RC_ASSERT(linesOf(text).size() == result.findings.size());
}

} // namespace
