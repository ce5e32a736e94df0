// The findings as JSON: one document, a document on each line, and the document of an error.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <sstream>

#include "CheckSamples.h"
#include "JsonDocument.h"
#include "JsonSchema.h"
#include "Text.h"
#include "check/CheckFormats.h"

namespace {

using KeldaTool::checkErrorJson;
using KeldaTool::checkJson;
using KeldaTool::checkJsonLines;
using KeldaTool::Json;
using support::anyResult;
using support::CheckResult;
using support::findingOf;
using support::JsonSchema;
using support::resultWith;
using support::RuleId;
using support::sampleResult;
using support::sourceFile;
using testing::IsEmpty;

constexpr char const* schemaFile = "tools/kelda/check/check.schema.json";

std::string expected(std::string const& name) {
    return sourceFile("tests/toolunits/expected/" + name);
}

std::vector<std::string> violations(std::string const& document) {
    static JsonSchema const schema(schemaFile);
    return schema.violations(document);
}

std::vector<std::string> violationsOfLine(std::string const& line) {
    static JsonSchema const schema(schemaFile, "finding");
    return schema.violations(line);
}

std::vector<std::string> linesOf(std::string const& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::vector<std::string> keysOf(Json const& object) {
    std::vector<std::string> keys;
    for (auto const& [key, value] : object.items())
        keys.push_back(key);
    return keys;
}

// The document of the only finding of a result.
Json findingOf(CheckResult const& result) {
    return Json::parse(checkJson(result)).at("findings").at(0);
}

Json findingAt(KeldaTool::SourcePlace const& place) {
    return findingOf(resultWith(findingOf(RuleId::otherFault, place, "m")));
}

TEST(CheckJson, IsPrintedToTheLetter) {
    EXPECT_EQ(checkJson(sampleResult()), expected("check.json"));
}

TEST(CheckJson, OfNoFindingsHasAllTotals) {
    EXPECT_EQ(checkJson({}), expected("check-nothing.json"));
}

TEST(CheckJson, OfAnErrorHasItsMessage) {
    EXPECT_EQ(checkErrorJson("cannot read 'a\xff'"), R"({
  "schemaVersion": 1,
  "error": {
    "message": "cannot read 'a)"
                                                     "\ufffd"
                                                     R"('"
  }
}
)");
}

TEST(CheckJson, FitsItsSchema) {
    EXPECT_THAT(violations(checkJson({})), IsEmpty());
    EXPECT_THAT(violations(checkJson(sampleResult())), IsEmpty());
    EXPECT_THAT(violations(checkErrorJson("no such folder")), IsEmpty());
}

TEST(CheckJson, TheMembersThatWereThereFirstComeFirst) {
    auto const document = Json::parse(checkJson(sampleResult()));
    auto top = keysOf(document);
    top.resize(4);
    EXPECT_THAT(top, testing::ElementsAre("schemaVersion", "preinitFiles", "profiles", "findings"));
    for (auto const& finding : document["findings"]) {
        auto keys = keysOf(finding);
        keys.resize(6);
        EXPECT_THAT(keys,
                    testing::ElementsAre("severity", "rule", "file", "line", "column", "message"));
    }
}

TEST(CheckJson, KeepsTheOrderInWhichFindingsWereFound) {
    CheckResult result;
    for (auto const* const message : {"z", "a", "m"})
        result.findings.push_back(findingOf(RuleId::otherFault, {"F", 9, 1, 1, ""}, message));
    auto const document = Json::parse(checkJson(result));
    EXPECT_EQ(document["findings"][0]["message"], "z");
    EXPECT_EQ(document["findings"][1]["message"], "a");
    EXPECT_EQ(document["findings"][2]["message"], "m");
}

TEST(CheckJson, HasTheSeverityOfTheFindingRatherThanOfItsRule) {
    auto finding = findingOf(RuleId::flagUnknown, {"F", 1, 1, 1, ""}, "m");
    finding.severity = support::Severity::note;
    auto const document = Json::parse(checkJson(resultWith(finding)));
    EXPECT_EQ(document["findings"][0]["severity"], "note");
    EXPECT_EQ(document["counts"], Json::parse(R"({"error": 0, "warning": 0, "note": 1})"));
}

struct Place {
    KeldaTool::SourcePlace place;
    std::int64_t line, column, endColumn;
};

TEST(CheckJson, WhatAPlaceDoesNotHaveIsMinusOne) {
    for (auto const& [place, line, column, endColumn] :
         {Place{{"F", 7, 3, 2, ""}, 7, 3, 5}, Place{{"F", 7, 3, 0, ""}, 7, 3, 3},
          Place{{"F", 7, 0, 2, ""}, 7, -1, -1}, Place{{"F", 0, 3, 2, ""}, -1, -1, -1},
          Place{{"", 7, 3, 2, ""}, -1, -1, -1},
          Place{{"F", 1, 2147483647, 2147483647, ""}, 1, 2147483647, 4294967294}}) {
        auto const finding = findingAt(place);
        EXPECT_EQ(finding["file"], place.file);
        EXPECT_EQ(finding["line"], line);
        EXPECT_EQ(finding["column"], column);
        EXPECT_EQ(finding["endColumn"], endColumn);
    }
}

TEST(CheckJson, TheLibrarysLineIsThereOnlyWhereItIsAnotherOne) {
    auto finding = findingOf(RuleId::otherFault, {"F", 7, 1, 1, ""}, "m");
    EXPECT_FALSE(findingOf(resultWith(finding)).contains("reportedLine"));
    finding.reportedLine = 9;
    EXPECT_EQ(findingOf(resultWith(finding))["reportedLine"], 9);
    for (std::int32_t const noLine : {0, -1}) {
        finding.reportedLine = noLine;
        EXPECT_FALSE(findingOf(resultWith(finding)).contains("reportedLine"));
    }
}

TEST(CheckJson, AFindingWithoutALineHasNoReportedOne) {
    auto finding = findingOf(RuleId::otherFault, {"", 0, 0, 0, ""}, "m");
    finding.reportedLine = 9;
    EXPECT_FALSE(findingOf(resultWith(finding)).contains("reportedLine"));
}

TEST(CheckJson, KeepsNewlinesAndControlCharactersOfMessages) {
    auto const finding = findingOf(RuleId::otherFault, {"F", 1, 1, 1, ""}, "a\n\x1b[31m\"\\\n");
    EXPECT_EQ(findingOf(resultWith(finding))["message"], "a\n\x1b[31m\"\\\n");
}

TEST(CheckJsonLines, ArePrintedToTheLetter) {
    EXPECT_EQ(checkJsonLines(sampleResult()), expected("check-lines.jsonl"));
}

TEST(CheckJsonLines, OfNoFindingsAreTheSummary) {
    EXPECT_EQ(checkJsonLines({}),
              R"({"type":"summary","schemaVersion":1,"preinitFiles":0,"profiles":0,)"
              R"("suppressed":0,"inBaseline":0,"staleBaseline":[],)"
              R"("counts":{"error":0,"warning":0,"note":0}})"
              "\n");
}

// Together the lines hold what the document holds.
void expectLinesToSayTheSame(CheckResult const& result) {
    auto document = Json::parse(checkJson(result));
    auto const lines = linesOf(checkJsonLines(result));
    ASSERT_EQ(lines.size(), result.findings.size() + 1);
    for (std::size_t i = 0; i < result.findings.size(); ++i) {
        auto line = Json::parse(lines[i]);
        EXPECT_EQ(line["type"], "finding");
        line.erase("type");
        EXPECT_EQ(line, document["findings"][i]);
    }
    auto summary = Json::parse(lines.back());
    EXPECT_EQ(summary["type"], "summary");
    summary.erase("type");
    document.erase("findings");
    EXPECT_EQ(summary, document);
}

TEST(CheckJsonLines, SayWhatTheDocumentSays) {
    expectLinesToSayTheSame(sampleResult());
}

RC_GTEST_PROP(CheckJsonProperty, WhateverTheBytesTheDocumentFitsItsSchema, ()) {
    auto const text = checkJson(anyResult());
    RC_ASSERT(violations(text) == std::vector<std::string>{});
    RC_ASSERT(KeldaTool::replaceNonUtf8(text) == text);
}

RC_GTEST_PROP(CheckJsonProperty, WhateverTheBytesEachLineIsADocument, ()) {
    auto const result = anyResult();
    expectLinesToSayTheSame(result);
    auto lines = linesOf(checkJsonLines(result));
    lines.pop_back();
    for (auto const& line : lines)
        RC_ASSERT(violationsOfLine(line) == std::vector<std::string>{});
}

RC_GTEST_PROP(CheckJsonProperty, EveryTextIsThereWithItsBytesReplaced, ()) {
    auto const finding = support::anyFinding();
    auto const document = findingOf(resultWith(finding));
    RC_ASSERT(document["file"] == KeldaTool::jsonText(finding.place.file));
    RC_ASSERT(document["message"] == KeldaTool::jsonText(finding.message));
    RC_ASSERT(document["agents"] == KeldaTool::jsonTexts(finding.agents));
    RC_ASSERT(document["related"].size() == finding.related.size());
    RC_ASSERT(document["includedFrom"].size() == finding.includedFrom.size());
    RC_ASSERT(document.value("hint", Json("")) == KeldaTool::jsonText(finding.hint));
}

RC_GTEST_PROP(CheckJsonProperty, AnyErrorFitsTheSchema, ()) {
    auto const message = support::anyBytes();
    auto const text = checkErrorJson(message);
    RC_ASSERT(violations(text) == std::vector<std::string>{});
    RC_ASSERT(Json::parse(text)["error"]["message"] == KeldaTool::jsonText(message));
}

} // namespace
