// The schemas by which documents are judged: they are what they are said to be, and they do find
// what is wrong. A validator that approves of everything would approve of every test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "JsonSchema.h"

namespace {

using Json = nlohmann::ordered_json;
using support::JsonSchema;
using support::sourceFile;
using testing::IsEmpty;
using testing::Not;

constexpr char const* sarifSchema = "tests/toolunits/data/sarif-schema-2.1.0.json";
constexpr char const* checkSchema = "tools/kelda/check/check.schema.json";

constexpr char const* finding = R"({
    "severity": "error", "rule": "flag-unknown", "file": "profiles/Fan", "line": 7, "column": 1,
    "message": "m", "endColumn": 4, "reportedLine": 9, "hint": "h",
    "includedFrom": [{"file": "profiles/Slot", "line": 2}],
    "related": [{"file": "preinit/Fan", "line": 3, "column": 1, "message": "declared here"}],
    "agents": ["Fan-%slot"]})";

Json findingsDocument() {
    auto document = Json::parse(R"({
        "schemaVersion": 1, "preinitFiles": 2, "profiles": 20, "findings": [], "suppressed": 1,
        "inBaseline": 0, "staleBaseline": ["s"], "counts": {"error": 1, "warning": 0, "note": 0},
        "filesRead": ["profiles/Fan"],
        "filesSkipped": [{"file": "profiles/Fan~", "reason": "backup"}]})");
    document["findings"].push_back(Json::parse(finding));
    return document;
}

Json errorDocument() {
    return Json::parse(R"({"schemaVersion": 1, "error": {"message": "m"}})");
}

Json sarifLog() {
    return Json::parse(R"({"version": "2.1.0", "runs": [{
        "tool": {"driver": {"name": "t", "rules": [{"id": "r"}]}},
        "results": [{"ruleId": "r", "ruleIndex": 0, "level": "error", "message": {"text": "m"},
                     "locations": [{"physicalLocation": {"artifactLocation": {"uri": "f"},
                                                         "region": {"startLine": 1}}}]}]}]})");
}

// A change of a document, and whether it may be made.
struct Change {
    std::string pointer;
    std::string value; // JSON; "" takes the member away
    friend std::ostream& operator<<(std::ostream& stream, Change const& change) {
        return stream << change.pointer << " = " << change.value;
    }
};

std::string changed(Json document, Change const& change) {
    Json::json_pointer const pointer(change.pointer);
    if (!change.value.empty())
        document[pointer] = Json::parse(change.value);
    else if (auto& parent = document.at(pointer.parent_pointer()); parent.is_array())
        parent.erase(std::stoul(pointer.back()));
    else if (parent.erase(pointer.back()) != 1)
        throw std::runtime_error("no " + change.pointer);
    return document.dump();
}

TEST(SarifSchema, IsThePublishedOne) {
    auto const schema = Json::parse(sourceFile(sarifSchema));
    EXPECT_EQ(schema["title"], "Static Analysis Results Format (SARIF) Version 2.1.0 JSON Schema");
    EXPECT_EQ(schema["required"], Json::parse(R"(["version", "runs"])"));
    EXPECT_EQ(schema["definitions"].size(), 52U);
    for (auto const* const definition : {"run", "result", "location", "region", "message"})
        EXPECT_EQ(schema["definitions"][definition]["additionalProperties"], false) << definition;
}

TEST(SarifSchema, AcceptsALog) {
    EXPECT_THAT(JsonSchema(sarifSchema).violations(sarifLog().dump()), IsEmpty());
}

class WrongSarif : public testing::TestWithParam<Change> {};

TEST_P(WrongSarif, IsFound) {
    static JsonSchema const schema(sarifSchema);
    EXPECT_THAT(schema.violations(changed(sarifLog(), GetParam())), Not(IsEmpty()));
}

INSTANTIATE_TEST_SUITE_P(
    Schema, WrongSarif,
    testing::Values(
        Change{"/version", ""}, Change{"/version", R"("2.0.0")"}, Change{"/runs", ""},
        Change{"/runs", "7"}, Change{"/more", "7"}, Change{"/runs/0/tool", ""},
        Change{"/runs/0/tool/driver/name", ""}, Change{"/runs/0/tool/driver/rules/0/id", ""},
        Change{"/runs/0/columnKind", R"("bytes")"}, Change{"/runs/0/results/0/message", ""},
        Change{"/runs/0/results/0/message/text", ""}, Change{"/runs/0/results/0/level", R"("x")"},
        Change{"/runs/0/results/0/ruleIndex", "-2"}, Change{"/runs/0/results/0/more", "true"},
        Change{"/runs/0/results/0/relatedLocations", R"([{"id": 1}, {"id": 1}])"},
        Change{"/runs/0/results/0/partialFingerprints", R"({"a": 7})"},
        Change{"/runs/0/results/0/locations/0/physicalLocation/artifactLocation", ""},
        Change{"/runs/0/results/0/locations/0/physicalLocation/region/startLine", "0"},
        Change{"/runs/0/results/0/locations/0/physicalLocation/region/startColumn", "0"}));

TEST(Schema, TellsWhereADocumentIsWrong) {
    auto const wrong = changed(sarifLog(), {"/runs/0/tool", ""});
    EXPECT_THAT(JsonSchema(sarifSchema).violations(wrong),
                testing::Contains("runs/0: 'tool' is a required property"));
}

TEST(Schema, TextThatIsNoJsonIsWrong) {
    JsonSchema const schema(checkSchema);
    for (std::string const text : {"", "{", "{} {}", "{\"schemaVersion\": 1", "\"\xff\""})
        EXPECT_THAT(schema.violations(text), Not(IsEmpty())) << text;
}

TEST(Schema, ADefinitionThatIsNotThereIsAnError) {
    EXPECT_THROW(JsonSchema(checkSchema, "nothing"), std::runtime_error);
}

TEST(CheckSchema, AcceptsBothKindsOfDocuments) {
    JsonSchema const schema(checkSchema);
    EXPECT_THAT(schema.violations(findingsDocument().dump()), IsEmpty());
    EXPECT_THAT(schema.violations(errorDocument().dump()), IsEmpty());
    EXPECT_THAT(JsonSchema(checkSchema, "finding").violations(finding), IsEmpty());
}

class RightDocument : public testing::TestWithParam<Change> {};

TEST_P(RightDocument, IsAccepted) {
    static JsonSchema const schema(checkSchema);
    EXPECT_THAT(schema.violations(changed(findingsDocument(), GetParam())), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    CheckSchema, RightDocument,
    testing::Values(Change{"/more", "7"}, Change{"/counts/fatal", "0"},
                    Change{"/findings/0/more", "null"}, Change{"/findings/0/related/0/more", "1"},
                    Change{"/findings/0/includedFrom/0/more", "1"},
                    Change{"/filesSkipped/0/more", "1"}, Change{"/findings/0/line", "-1"},
                    Change{"/findings/0/column", "-1"},
                    Change{"/findings/0/rule", R"("a-new-rule")"}, Change{"/findings/0", ""},
                    Change{"/findings/0/hint", ""}, Change{"/findings/0/reportedLine", ""},
                    Change{"/filesRead", ""}, Change{"/filesSkipped", ""}));

class WrongDocument : public testing::TestWithParam<Change> {};

TEST_P(WrongDocument, IsFound) {
    static JsonSchema const schema(checkSchema);
    EXPECT_THAT(schema.violations(changed(findingsDocument(), GetParam())), Not(IsEmpty()));
}

INSTANTIATE_TEST_SUITE_P(
    MemberMissing, WrongDocument,
    testing::Values(Change{"/schemaVersion", ""}, Change{"/preinitFiles", ""},
                    Change{"/profiles", ""}, Change{"/findings", ""}, Change{"/suppressed", ""},
                    Change{"/inBaseline", ""}, Change{"/staleBaseline", ""}, Change{"/counts", ""},
                    Change{"/counts/error", ""}, Change{"/counts/warning", ""},
                    Change{"/counts/note", ""}, Change{"/findings/0/severity", ""},
                    Change{"/findings/0/rule", ""}, Change{"/findings/0/file", ""},
                    Change{"/findings/0/line", ""}, Change{"/findings/0/column", ""},
                    Change{"/findings/0/message", ""}, Change{"/findings/0/endColumn", ""},
                    Change{"/findings/0/includedFrom", ""},
                    Change{"/findings/0/includedFrom/0/file", ""},
                    Change{"/findings/0/includedFrom/0/line", ""},
                    Change{"/findings/0/related", ""}, Change{"/findings/0/related/0/file", ""},
                    Change{"/findings/0/related/0/line", ""},
                    Change{"/findings/0/related/0/column", ""},
                    Change{"/findings/0/related/0/message", ""}, Change{"/findings/0/agents", ""},
                    Change{"/filesSkipped/0/file", ""}, Change{"/filesSkipped/0/reason", ""}));

INSTANTIATE_TEST_SUITE_P(
    MemberOfAnotherKind, WrongDocument,
    testing::Values(
        Change{"/schemaVersion", "2"}, Change{"/schemaVersion", R"("1")"},
        Change{"/preinitFiles", "-1"}, Change{"/profiles", "1.5"}, Change{"/findings", "{}"},
        Change{"/findings/0", "7"}, Change{"/suppressed", "null"}, Change{"/inBaseline", "true"},
        Change{"/staleBaseline/0", "7"}, Change{"/counts", "3"}, Change{"/counts/note", "-1"},
        Change{"/filesRead/0", "7"}, Change{"/filesSkipped/0/reason", "7"},
        Change{"/error", R"("m")"}, Change{"/findings/0/severity", R"("fatal")"},
        Change{"/findings/0/rule", R"("No Name")"}, Change{"/findings/0/file", "null"},
        Change{"/findings/0/line", "0"}, Change{"/findings/0/line", "-2"},
        Change{"/findings/0/line", R"("7")"}, Change{"/findings/0/column", "0"},
        Change{"/findings/0/endColumn", "0.5"}, Change{"/findings/0/message", "7"},
        Change{"/findings/0/reportedLine", "-1"}, Change{"/findings/0/hint", "null"},
        Change{"/findings/0/includedFrom/0/line", "null"},
        Change{"/findings/0/related/0/column", "0"}, Change{"/findings/0/agents/0", "7"}));

TEST(CheckSchema, AnErrorWithoutItsMessageIsFound) {
    JsonSchema const schema(checkSchema);
    for (auto const& change : {Change{"/error/message", ""}, Change{"/error/message", "7"},
                               Change{"/error", ""}, Change{"/schemaVersion", ""}})
        EXPECT_THAT(schema.violations(changed(errorDocument(), change)), Not(IsEmpty())) << change;
}

} // namespace
