// The findings of several devices in one output: its pieces, and that they fit together.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "CheckSamples.h"
#include "JsonDocument.h"
#include "JsonSchema.h"
#include "Text.h"
#include "XmlReader.h"
#include "check/CheckBatch.h"

namespace {

using KeldaTool::BatchTotals;
using KeldaTool::CheckBatch;
using KeldaTool::Json;
using support::CheckResult;
using support::JsonSchema;
using support::RuleId;
using support::sampleResult;
using testing::IsEmpty;
using toolunits::XmlReader;

// A device that could be checked, or why not.
struct Checked {
    std::string device;
    CheckResult result;
    std::string failure;
};

// What askEachCounted makes of the pieces.
std::string outputOf(std::string const& format, std::vector<Checked> const& devices) {
    CheckBatch batch(format, {});
    auto const around = batch.around();
    BatchTotals totals{devices.size(), 0, std::vector<std::uint64_t>(4)};
    auto text = around.begin;
    bool hasResults = false;
    auto const add = [&](std::string const& results) {
        if (!results.empty())
            text += (std::exchange(hasResults, true) ? around.between : "") + results;
    };
    for (auto const& [device, result, failure] : devices) {
        if (!failure.empty()) {
            ++totals.failed;
            add(around.failure(device, failure));
            continue;
        }
        auto const answer = batch.answerOf(device, result);
        for (std::size_t i = 0; i < totals.counts.size(); ++i)
            totals.counts[i] += answer.counts.at(i);
        add(answer.report.results);
    }
    return text + batch.end(totals).results + around.end;
}

std::vector<Checked> const severalDevices() {
    return {{"a", sampleResult(), ""}, {"lost", {}, "no folder"}, {"b\x1b\xff", {}, ""}};
}

std::vector<std::string> violations(std::string const& document) {
    static JsonSchema const schema("tools/kelda/check/check.schema.json");
    return schema.violations(document);
}

std::vector<std::string> violationsOfLog(std::string const& document) {
    static JsonSchema const schema("tests/toolunits/data/sarif-schema-2.1.0.json");
    return schema.violations(document);
}

TEST(DeviceChecks, AsJsonAreADocumentWithOneForEachDevice) {
    auto const text = outputOf("json", severalDevices());
    EXPECT_THAT(violations(text), IsEmpty());
    auto const devices = Json::parse(text).at("devices");
    ASSERT_EQ(devices.size(), 3U);
    auto expected = Json::parse(KeldaTool::checkJson(sampleResult()));
    expected["device"] = "a";
    EXPECT_EQ(nlohmann::json(devices[0]), nlohmann::json(expected));
    EXPECT_EQ(devices[1], Json::parse(R"({"device": "lost", "schemaVersion": 1,
                                          "error": {"message": "no folder"}})"));
    EXPECT_EQ(devices[2]["device"], "b\x1b\ufffd");
}

TEST(DeviceChecks, AsJsonLinesAreTheSameDocuments) {
    auto const devices = Json::parse(outputOf("json", severalDevices())).at("devices");
    std::istringstream lines(outputOf("jsonl", severalDevices()));
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_EQ(Json::parse(line), devices[count]);
        EXPECT_TRUE(line.starts_with("{\"device\":\"")) << line;
        EXPECT_THAT(violations(line), IsEmpty());
    }
    EXPECT_EQ(count, 3U);
}

TEST(DeviceChecks, AsSarifAreOneRunThatTellsOfFailures) {
    auto const text = outputOf("sarif", severalDevices());
    EXPECT_THAT(violationsOfLog(text), IsEmpty());
    auto const run = Json::parse(text).at("runs").at(0);
    auto const alone = Json::parse(KeldaTool::checkSarif(sampleResult())).at("runs").at(0);
    EXPECT_EQ(run["results"], alone["results"]);
    EXPECT_EQ(run["tool"], alone["tool"]);
    EXPECT_EQ(run["columnKind"], alone["columnKind"]);
    EXPECT_EQ(run["invocations"], Json::parse(R"([{"executionSuccessful": false,
        "toolExecutionNotifications": [{"level": "error",
                                        "message": {"text": "lost: no folder"}}]}])"));
}

TEST(DeviceChecks, AsSarifSucceedWhereAllDevicesWereChecked) {
    auto const text = outputOf("sarif", {{"a", {}, ""}, {"b", sampleResult(), ""}});
    EXPECT_THAT(violationsOfLog(text), IsEmpty());
    EXPECT_EQ(Json::parse(text)["runs"][0]["invocations"],
              Json::parse(R"([{"executionSuccessful": true}])"));
    EXPECT_THAT(violationsOfLog(outputOf("sarif", {{"a", {}, ""}})), IsEmpty());
}

TEST(DeviceChecks, AsJunitAreSuites) {
    auto const suites = XmlReader::read(outputOf("junit", severalDevices())).children;
    ASSERT_EQ(suites.size(), 3U);
    auto alone = XmlReader::read(KeldaTool::checkJunit(sampleResult())).children.at(0);
    EXPECT_EQ(suites[0].attributes.at("name"), "a");
    EXPECT_EQ(suites[0].attributes.at("tests"), alone.attributes.at("tests"));
    EXPECT_EQ(suites[0].children.size(), alone.children.size());
    EXPECT_EQ(suites[1].attributes.at("errors"), "1");
    EXPECT_EQ(suites[1].children.at(0).children.at(0).attributes.at("message"), "no folder");
    EXPECT_EQ(suites[2].attributes.at("name"), "b\\x1b\\xff");
}

TEST(DeviceChecks, ForPeopleHaveAHeadingForEachDeviceAndALineOfTotals) {
    CheckResult warned = support::resultWith(
        support::findingOf(RuleId::orphanFile, {"b/profiles/F", 1, 1, 1, ""}, "m"));
    EXPECT_EQ(outputOf("text", {{"a\x1b", {}, ""}, {"lost", {}, "no folder"}, {"b", warned, ""}}),
              "Device a\\x1b\n"
              "no findings in 0 profiles and 0 preinit files\n"
              "\n"
              "Device b\n"
              "b/profiles/F:1:1: warning: m [orphan-file]\n"
              "\n"
              "1 warning in 0 profiles and 0 preinit files\n"
              "\n"
              "3 devices, 0 with errors, 1 not checked: 1 warning\n");
    EXPECT_EQ(outputOf("text", {{"lost", {}, "no folder"}}), "");
}

TEST(DeviceChecks, CountDevicesWithErrorsRatherThanErrors) {
    auto two = support::resultWith(support::findingOf(RuleId::flagUnknown, {}, "m"));
    two.findings.push_back(two.findings.front());
    auto const text = outputOf("text", {{"a", two, ""}, {"b", {}, ""}, {"c", two, ""}});
    EXPECT_TRUE(text.ends_with("\n\n3 devices, 2 with errors: 4 errors\n")) << text;
}

TEST(DeviceChecks, AsLinesAreThoseOfEachDevice) {
    for (auto const* const format : {"concise", "github"}) {
        auto const one = outputOf(format, {{"a", sampleResult(), ""}});
        EXPECT_EQ(outputOf(format, {{"a", sampleResult(), ""},
                                    {"lost", {}, "no folder"},
                                    {"b", {}, ""},
                                    {"c", sampleResult(), ""}}),
                  one + one);
        EXPECT_FALSE(one.empty());
    }
}

TEST(DeviceChecks, WithErrorsAreAFailure) {
    CheckBatch const batch("concise", {});
    using KeldaTool::ExitStatus;
    EXPECT_EQ(batch.answerOf("a", sampleResult()).report.status, ExitStatus::failure);
    EXPECT_EQ(batch.answerOf("a", {}).report.status, ExitStatus::success);
}

struct WrongDevices {
    char const* what;
    std::string document;
};

TEST(DeviceCheckSchema, FindsWhatIsWrongWithADeviceOfSeveral) {
    auto const device = KeldaTool::checkJsonOfDevice("a", {});
    auto const devices = [](std::string const& items) {
        return R"({"schemaVersion": 1, "devices": [)" + items + "]}";
    };
    EXPECT_THAT(violations(devices(device)), IsEmpty());
    for (auto const& [what, document] : std::vector<WrongDevices>{
             {"no device", devices("")},
             {"a device without its name", devices(KeldaTool::checkJson({}))},
             {"devices of a device",
              devices(R"({"device": "a", "schemaVersion": 1, "devices": [)" + device + "]}")},
             {"a device without findings", devices(R"({"device": "a", "schemaVersion": 1})")},
             {"a name that is none", devices(R"({"device": 7, "schemaVersion": 1,
                                                 "error": {"message": "m"}})")},
             {"no version", R"({"devices": [)" + device + "]}"},
             {"another kind", R"({"schemaVersion": 1, "devices": {}})"}})
        EXPECT_THAT(violations(document), testing::Not(IsEmpty())) << what;
}

RC_GTEST_PROP(DeviceChecksProperty, WhateverTheBytesTheOutputFitsItsSchema, ()) {
    std::vector<Checked> devices;
    auto const count = *rc::gen::inRange(1, 4);
    for (int i = 0; i < count; ++i)
        devices.push_back({support::anyBytes(), support::anyResult(),
                           *rc::gen::arbitrary<bool>() ? support::anyBytes() : ""});
    RC_ASSERT(violations(outputOf("json", devices)) == std::vector<std::string>{});
    RC_ASSERT(violationsOfLog(outputOf("sarif", devices)) == std::vector<std::string>{});
    RC_ASSERT(XmlReader::read(outputOf("junit", devices)).children.size() == devices.size());
    auto const text = outputOf("text", devices);
    RC_ASSERT(KeldaTool::replaceNonUtf8(text) == text);
}

} // namespace
