// The findings as a SARIF log: it fits the published schema, and says what the findings say.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <set>
#include <sstream>

#include "CheckSamples.h"
#include "JsonDocument.h"
#include "JsonSchema.h"
#include "Text.h"
#include "check/CheckFormats.h"

namespace {

using KeldaTool::checkSarif;
using KeldaTool::Json;
using support::CheckedFinding;
using support::CheckResult;
using support::findingOf;
using support::JsonSchema;
using support::resultWith;
using support::RuleId;
using support::sampleResult;
using testing::IsEmpty;

std::vector<std::string> violations(std::string const& log) {
    static JsonSchema const schema("tests/toolunits/data/sarif-schema-2.1.0.json");
    return schema.violations(log);
}

Json runOf(CheckResult const& result) {
    return Json::parse(checkSarif(result)).at("runs").at(0);
}

Json resultOf(CheckedFinding const& finding) {
    return runOf(resultWith(finding)).at("results").at(0);
}

Json resultAt(KeldaTool::SourcePlace const& place) {
    return resultOf(findingOf(RuleId::otherFault, place, "m"));
}

std::string uriOf(std::string const& file) {
    return resultAt(
        {file, 1, 1, 1, ""})["locations"][0]["physicalLocation"]["artifactLocation"]["uri"];
}

std::string textOf(std::string const& message, std::string const& hint = "") {
    auto finding = findingOf(RuleId::otherFault, {"F", 1, 1, 1, ""}, message);
    finding.hint = hint;
    return resultOf(finding)["message"]["text"];
}

TEST(CheckSarif, IsPrintedToTheLetter) {
    auto log = Json::parse(checkSarif(sampleResult()));
    // These change with other things than the form.
    auto& driver = log["runs"][0]["tool"]["driver"];
    driver["semanticVersion"] = "VERSION";
    driver["rules"].clear();
    for (auto& result : log["runs"][0]["results"])
        result["ruleIndex"] = 0;
    EXPECT_EQ(KeldaTool::documentText(log),
              support::sourceFile("tests/toolunits/expected/check-sarif.json"));
}

TEST(CheckSarif, FitsThePublishedSchema) {
    EXPECT_THAT(violations(checkSarif({})), IsEmpty());
    EXPECT_THAT(violations(checkSarif(sampleResult())), IsEmpty());
}

TEST(CheckSarif, OfManyFindingsFitsThePublishedSchema) {
    auto result = sampleResult();
    for (int i = 1; i <= 500; ++i)
        result.findings.push_back(findingOf(RuleId::typesDiffer, {"F", i, 1, 1, ""}, "m"));
    EXPECT_THAT(violations(checkSarif(result)), IsEmpty());
}

TEST(CheckSarif, NamesTheProgramAndItsVersion) {
    auto const driver = runOf({})["tool"]["driver"];
    EXPECT_EQ(driver["name"], "kelda");
    EXPECT_THAT(driver["semanticVersion"].get<std::string>(),
                testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+"));
}

TEST(CheckSarif, OfNoFindingsIsASuccessfulRunWithAnEmptyArray) {
    auto const run = runOf({});
    EXPECT_EQ(run["results"], Json::array());
    EXPECT_EQ(run["invocations"], Json::parse(R"([{"executionSuccessful": true}])"));
}

TEST(CheckSarif, HasEveryRuleInTheOrderOfTheTable) {
    auto const rules = runOf({})["tool"]["driver"]["rules"];
    auto const table = KeldaDatabase::allRules();
    ASSERT_EQ(rules.size(), table.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
        EXPECT_EQ(rules[i]["id"], table[i].name);
        EXPECT_EQ(rules[i]["shortDescription"]["text"], table[i].summary);
        EXPECT_EQ(rules[i]["defaultConfiguration"]["level"], nameOf(table[i].severity));
        EXPECT_TRUE(rules[i]["help"]["text"].get<std::string>().starts_with(
            rules[i]["fullDescription"]["text"].get<std::string>()));
    }
}

// As code in Markdown and with its braces doubled.
std::string exampleOf(std::string_view device) {
    std::string example;
    std::istringstream lines{std::string(device)};
    for (std::string line; std::getline(lines, line);)
        example += "    " + line + "\n";
    for (auto at = example.find_first_of("{}"); at != std::string::npos;
         at = example.find_first_of("{}", at + 2))
        example.insert(at, 1, example[at]);
    return example;
}

TEST(CheckSarif, TheHelpOfARuleShowsItsExamples) {
    auto const rules = runOf({})["tool"]["driver"]["rules"];
    auto const table = KeldaDatabase::allRules();
    for (std::size_t i = 0; i < table.size(); ++i) {
        auto const help = rules.at(i)["help"]["markdown"].get<std::string>() + "\n";
        EXPECT_EQ(table[i].failing.empty(), help.find("\n\nWrong:\n\n") == std::string::npos);
        EXPECT_EQ(table[i].passing.empty(), help.find("\n\nRight:\n\n") == std::string::npos);
        EXPECT_NE(help.find(exampleOf(table[i].failing)), std::string::npos) << help;
        EXPECT_TRUE(help.ends_with(exampleOf(table[i].passing))) << help;
    }
}

TEST(CheckSarif, TheHelpOfARuleHasNoMarksThatNobodyMeant) {
    std::size_t marks = 0;
    auto const rules = runOf({})["tool"]["driver"]["rules"];
    for (auto const& rule : rules) {
        auto const markdown = rule["help"]["markdown"].get<std::string>();
        auto const help = markdown.substr(0, markdown.find("\n\nWrong:"));
        for (auto at = help.find_first_of("*_<>`~#"); at != std::string::npos;
             at = help.find_first_of("*_<>`~#", at + 1), ++marks)
            EXPECT_TRUE(at > 0 && help[at - 1] == '\\') << help;
    }
    EXPECT_GT(marks, 0U);
}

TEST(CheckSarif, AResultPointsToItsRule) {
    auto const rules = runOf({})["tool"]["driver"]["rules"];
    for (auto const& rule : KeldaDatabase::allRules()) {
        auto const result = resultOf(findingOf(rule.id, {"F", 1, 1, 1, ""}, "m"));
        EXPECT_EQ(result["ruleId"], rule.name);
        EXPECT_EQ(rules.at(result["ruleIndex"].get<std::size_t>())["id"], rule.name);
    }
}

TEST(CheckSarif, HasTheSeverityOfTheFindingRatherThanOfItsRule) {
    auto finding = findingOf(RuleId::flagUnknown, {"F", 1, 1, 1, ""}, "m");
    for (auto const severity :
         {support::Severity::note, support::Severity::warning, support::Severity::error}) {
        finding.severity = severity;
        EXPECT_EQ(resultOf(finding)["level"], nameOf(severity));
    }
}

struct Uri {
    std::string file, uri;
};

TEST(CheckSarif, FilesAreUris) {
    for (auto const& [file, uri] :
         {Uri{"profiles/Fan", "profiles/Fan"}, Uri{"/etc/p/Fan", "file:///etc/p/Fan"},
          Uri{"../p/./Fan~", "../p/./Fan~"}, Uri{"a b", "a%20b"}, Uri{"50%", "50%25"},
          Uri{"c:d", "c%3Ad"}, Uri{"a?b#c", "a%3Fb%23c"}, Uri{"a\\b", "a%5Cb"},
          Uri{"t\xc3\xbcr", "t%C3%BCr"}, Uri{"x\xff\n", "x%FF%0A"}, Uri{"[a]", "%5Ba%5D"}})
        EXPECT_EQ(uriOf(file), uri);
}

struct Region {
    KeldaTool::SourcePlace place;
    std::string region;
};

TEST(CheckSarif, ARegionHasWhatThePlaceHas) {
    for (auto const& [place, region] :
         {Region{{"F", 7, 3, 2, ""}, R"({"startLine": 7, "startColumn": 3, "endColumn": 5})"},
          Region{{"F", 7, 3, -1, ""}, R"({"startLine": 7, "startColumn": 3, "endColumn": 3})"},
          Region{{"F", 7, 0, 2, ""}, R"({"startLine": 7})"}})
        EXPECT_EQ(resultAt(place)["locations"][0]["physicalLocation"]["region"],
                  Json::parse(region));
    auto const wholeFile = resultAt({"F", 0, 3, 2, ""})["locations"][0]["physicalLocation"];
    EXPECT_EQ(wholeFile, Json::parse(R"({"artifactLocation": {"uri": "F"}})"));
}

TEST(CheckSarif, AFindingWithoutAFileHasNoLocation) {
    EXPECT_FALSE(resultAt({"", 0, 0, 0, ""}).contains("locations"));
}

TEST(CheckSarif, RelatedPlacesAndIncludeLinesAreRelatedLocations) {
    auto finding = findingOf(RuleId::otherFault, {"F", 1, 1, 1, ""}, "m");
    EXPECT_FALSE(resultOf(finding).contains("relatedLocations"));
    finding.related = {{{"G", 2, 3, 4, ""}, "declared here"}, {{"", 0, 0, 0, ""}, "nowhere"}};
    finding.includedFrom = {{"H", 5}};
    EXPECT_EQ(resultOf(finding)["relatedLocations"], Json::parse(R"([
        {"id": 0, "physicalLocation": {"artifactLocation": {"uri": "G"}, "region":
            {"startLine": 2, "startColumn": 3, "endColumn": 7}},
         "message": {"text": "declared here"}},
        {"id": 1, "message": {"text": "nowhere"}},
        {"id": 2, "physicalLocation": {"artifactLocation": {"uri": "H"}, "region":
            {"startLine": 5}}, "message": {"text": "included from here"}}])"));
}

TEST(CheckSarif, AgentsAreAProperty) {
    auto finding = findingOf(RuleId::otherFault, {"F", 1, 1, 1, ""}, "m");
    EXPECT_FALSE(resultOf(finding).contains("properties"));
    finding.agents = {"Fan-%slot", "B\xff"};
    EXPECT_EQ(resultOf(finding)["properties"],
              Json::parse(R"({"agents": ["Fan-%slot", "B\ufffd"]})"));
}

TEST(CheckSarif, AHintFollowsTheMessage) {
    EXPECT_EQ(textOf("wrong flag\n", "did you mean 'r'?"), "wrong flag\nhint: did you mean 'r'?");
    EXPECT_EQ(textOf("line 1\nline 2\n\n"), "line 1\nline 2");
    EXPECT_EQ(textOf(""), "");
}

TEST(CheckSarif, TextOfFilesIsNeitherAPlaceholderNorALink) {
    EXPECT_EQ(textOf("type '{0}'"), "type '{{0}}'");
    EXPECT_EQ(textOf("[all is well](https://x)"), "[all is well] (https://x)");
    EXPECT_EQ(textOf("[a\\](1)](2)"), "[a\\] (1)] (2)");
    EXPECT_EQ(textOf("m", "use [a](1) {b}"), "m\nhint: use [a] (1) {{b}}");
    EXPECT_EQ(textOf("fan/[1:2] (x)"), "fan/[1:2] (x)");
    auto finding = findingOf(RuleId::otherFault, {"F", 1, 1, 1, ""}, "m");
    finding.related = {{{"G", 1, 1, 1, ""}, "[a](1){"}};
    EXPECT_EQ(resultOf(finding)["relatedLocations"][0]["message"]["text"], "[a] (1){{");
}

std::string fingerprintOf(CheckedFinding const& finding) {
    return resultOf(finding)["partialFingerprints"]["keldaFinding/v1"];
}

TEST(CheckSarif, AFingerprintDoesNotDependOnLinesColumnsOrHints) {
    auto const finding = findingOf(RuleId::flagUnknown, {"F", 7, 3, 2, "a,T,q"}, "m");
    auto moved = findingOf(RuleId::flagUnknown, {"F", 9, 5, 4, " a,T,q"}, "m");
    moved.hint = "h";
    moved.agents = {"A"};
    EXPECT_EQ(fingerprintOf(finding), fingerprintOf(moved));
}

TEST(CheckSarif, AFingerprintIsTheSameInEveryVersion) {
    EXPECT_EQ(fingerprintOf(findingOf(RuleId::flagUnknown, {"F", 1, 1, 1, ""}, "m")),
              "91acc0904805ac25:1");
}

TEST(CheckSarif, AFingerprintDependsOnRuleFileAndMessage) {
    std::set<std::string> const fingerprints = {
        fingerprintOf(findingOf(RuleId::flagUnknown, {"F", 1, 1, 1, ""}, "m")),
        fingerprintOf(findingOf(RuleId::typesDiffer, {"F", 1, 1, 1, ""}, "m")),
        fingerprintOf(findingOf(RuleId::flagUnknown, {"Fm", 1, 1, 1, ""}, "")),
        fingerprintOf(findingOf(RuleId::flagUnknown, {"", 1, 1, 1, ""}, "Fm")),
        fingerprintOf(findingOf(RuleId::flagUnknown, {"F", 1, 1, 1, ""}, "n"))};
    EXPECT_EQ(fingerprints.size(), 5U);
}

TEST(CheckSarif, FindingsThatSayTheSameAreToldFromEachOther) {
    CheckResult result;
    for (auto const* const file : {"F", "G", "F"})
        result.findings.push_back(findingOf(RuleId::flagUnknown, {file, 1, 1, 1, ""}, "m"));
    auto const results = runOf(result)["results"];
    auto const fingerprint = [&results](std::size_t i) {
        return results[i]["partialFingerprints"]["keldaFinding/v1"].get<std::string>();
    };
    auto const same = fingerprint(0).substr(0, 16);
    EXPECT_EQ(fingerprint(0), same + ":1");
    EXPECT_EQ(fingerprint(2), same + ":2");
    EXPECT_THAT(fingerprint(1), testing::EndsWith(":1"));
    EXPECT_NE(fingerprint(1), fingerprint(0));
}

// The bytes that a URI stands for; nothing but a URI has them.
std::string bytesOf(std::string const& uri) {
    static std::string const plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                     "0123456789-._~/";
    std::string bytes;
    for (std::size_t i = uri.starts_with("file://") ? 7 : 0; i < uri.size(); ++i) {
        RC_ASSERT(uri[i] == '%' || plain.find(uri[i]) != std::string::npos);
        if (uri[i] != '%') {
            bytes += uri[i];
            continue;
        }
        bytes += static_cast<char>(std::stoi(uri.substr(i + 1, 2), nullptr, 16));
        i += 2;
    }
    return bytes;
}

RC_GTEST_PROP(CheckSarifProperty, WhateverTheBytesTheLogFitsThePublishedSchema, ()) {
    auto const log = checkSarif(support::anyResult());
    RC_ASSERT(violations(log) == std::vector<std::string>{});
    RC_ASSERT(KeldaTool::replaceNonUtf8(log) == log);
}

RC_GTEST_PROP(CheckSarifProperty, AUriStandsForTheBytesOfTheName, ()) {
    auto const file = support::anyBytes();
    RC_PRE(!file.empty());
    auto const uri = uriOf(file);
    RC_ASSERT(bytesOf(uri) == file);
    RC_ASSERT(uri.starts_with("file:///") == file.starts_with('/'));
}

RC_GTEST_PROP(CheckSarifProperty, NoMessageHasAPlaceholderOrALink, ()) {
    auto const text = textOf(support::anyBytes(), support::anyBytes());
    RC_ASSERT(text.find("](") == std::string::npos);
    for (char const brace : {'{', '}'})
        for (auto at = text.find(brace); at != std::string::npos; at = text.find(brace, at + 2))
            RC_ASSERT(text.substr(at, 2) == std::string(2, brace));
}

RC_GTEST_PROP(CheckSarifProperty, IdsOfRelatedLocationsAreUnique, ()) {
    auto const finding = support::anyFinding();
    auto const result = resultOf(finding);
    std::set<int> ids;
    for (auto const& location : result.value("relatedLocations", Json::array()))
        ids.insert(location["id"].get<int>());
    RC_ASSERT(ids.size() == finding.related.size() + finding.includedFrom.size());
}

} // namespace
