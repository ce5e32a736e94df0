// The differences of two devices for programs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <nlohmann/json.hpp>

#include "DiffSamples.h"
#include "JsonSchema.h"
#include "diff/DiffFormats.h"

namespace {

using namespace toolunits;
using Json = nlohmann::ordered_json;
using KeldaTool::diffErrorJson;
using KeldaTool::diffInOneLine;
using KeldaTool::diffJson;
using support::JsonSchema;
using testing::IsEmpty;
using testing::Not;

constexpr char const* schemaFile = "tools/kelda/diff/diff.schema.json";

Json const& sampleDocument() {
    static Json const document = Json::parse(diffJson(sampleDiff()));
    return document;
}

TEST(DiffJson, TellsEverythingThatAChangeHas) {
    EXPECT_EQ(diffJson(diffOf({sharedChange()})), R"({
  "schemaVersion": 1,
  "old": {
    "preinit": "old/preinit",
    "profiles": "old/profiles"
  },
  "new": {
    "preinit": "new/preinit",
    "profiles": "new/profiles"
  },
  "agentsBefore": 19,
  "agentsAfter": 19,
  "worst": "risky",
  "counts": {
    "dangerous": 0,
    "risky": 1,
    "notable": 0,
    "harmless": 0
  },
  "leftOut": {
    "lesser": 0,
    "following": 0
  },
  "changes": [
    {
      "kind": "flags-widened",
      "class": "risky",
      "cause": "line",
      "follows": false,
      "before": "r",
      "after": "rw",
      "oldPlaces": [
        {
          "file": "old/profiles/shared.cell",
          "line": 2,
          "text": "%cellPath/health, Cell::Health, r",
          "includedFrom": [
            {
              "file": "old/profiles/Routing",
              "line": 22
            }
          ]
        }
      ],
      "newPlaces": [
        {
          "file": "new/profiles/shared.cell",
          "line": 12,
          "text": "%cellPath/health, Cell::Health, rw",
          "includedFrom": [
            {
              "file": "new/profiles/Routing",
              "line": 22
            },
            {
              "file": "new/profiles/Outer",
              "line": 1
            }
          ]
        }
      ],
      "paths": [
        {
          "path": "cell/1/health",
          "type": "Cell::Health",
          "agents": [
            "Routing-%table",
            "Routing-Active-*"
          ]
        }
      ],
      "mounts": []
    }
  ]
}
)");
}

TEST(DiffJson, HasNoWorstClassWithoutChanges) {
    auto const document = Json::parse(diffJson(diffOf({})));
    EXPECT_EQ(document["worst"], nullptr);
    EXPECT_EQ(document["changes"], Json::array());
}

TEST(DiffJson, CountsTheClassesAndWhatIsLeftOut) {
    EXPECT_EQ(sampleDocument()["counts"].dump(),
              R"({"dangerous":1,"risky":1,"notable":1,"harmless":1})");
    EXPECT_EQ(sampleDocument()["leftOut"].dump(), R"({"lesser":2,"following":1})");
    EXPECT_EQ(sampleDocument()["worst"], "dangerous");
}

TEST(DiffJson, TellsWhatANewAgentMounts) {
    EXPECT_EQ(sampleDocument()["changes"][2]["mounts"][0].dump(),
              R"({"agent":"Fan-%slot","path":"fan/%slot/speed","type":"Fan::Speed","flags":"rw"})");
}

TEST(DiffJson, BeginsWithTheDeviceOfMany) {
    auto result = sampleDiff();
    EXPECT_FALSE(sampleDocument().contains("device"));
    result.device = "rack\xff";
    EXPECT_TRUE(diffJson(result).starts_with("{\n  \"device\": \"rack\ufffd\",\n"));
}

TEST(DiffJson, HasNoNumberForALineThatThereIsNot) {
    auto made = change(ChangeKind::typeChanged, ChangeClass::risky, "A", "B");
    made.newPlaces = {{"", 0, {}, ""}};
    EXPECT_EQ(Json::parse(diffJson(diffOf({made})))["changes"][0]["newPlaces"][0]["line"], -1);
}

TEST(DiffJson, TellsWhyThereIsNoComparison) {
    EXPECT_EQ(diffErrorJson("", "m\xff"),
              "{\n  \"schemaVersion\": 1,\n  \"error\": {\n    \"message\": \"m\ufffd\"\n  }\n}\n");
    EXPECT_EQ(diffInOneLine(diffErrorJson("rack1", "m")),
              "{\"device\": \"rack1\",\"schemaVersion\": 1,\"error\": {\"message\": \"m\"}}\n");
}

TEST(DiffJson, IsTheSameDocumentInOneLine) {
    auto result = diffOf({change(ChangeKind::typeChanged, ChangeClass::risky, "  a\n  b", " ")});
    auto const line = diffInOneLine(diffJson(result));
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    EXPECT_EQ(Json::parse(line), Json::parse(diffJson(result)));
}

RC_GTEST_PROP(DiffJsonProperty, FitsTheSchemaWhateverThereIs, ()) {
    static JsonSchema const schema(schemaFile);
    auto const result = anyDiff();
    auto const text = diffJson(result);
    RC_ASSERT(schema.violations(text).empty());
    RC_ASSERT(Json::parse(diffInOneLine(text)) == Json::parse(text));
    RC_ASSERT(Json::parse(text)["changes"].size() == result.difference.changes.size());
}

Json batchDocument() {
    auto device = sampleDocument();
    device["device"] = "rack1";
    auto failed = Json::parse(diffErrorJson("rack2", "m"));
    Json document{{"schemaVersion", 1}};
    document["devices"] = Json::array({device, failed});
    return document;
}

TEST(DiffSchema, AcceptsEveryKindOfDocument) {
    JsonSchema const schema(schemaFile);
    EXPECT_THAT(schema.violations(sampleDocument().dump()), IsEmpty());
    EXPECT_THAT(schema.violations(diffErrorJson("", "m")), IsEmpty());
    EXPECT_THAT(schema.violations(batchDocument().dump()), IsEmpty());
}

// A change of a document; without a value the member is taken away.
struct Edit {
    std::string pointer, value;
};

std::string edited(Json document, Edit const& edit) {
    Json::json_pointer const pointer(edit.pointer);
    if (!edit.value.empty())
        document[pointer] = Json::parse(edit.value);
    else if (document.at(pointer.parent_pointer()).erase(pointer.back()) != 1)
        throw std::runtime_error("no " + edit.pointer);
    return document.dump();
}

TEST(DiffSchema, AcceptsMembersOfTheFuture) {
    JsonSchema const schema(schemaFile);
    for (auto const& edit : {Edit{"/more", "1"},
                             {"/changes/0/more", "1"},
                             {"/changes/0/kind", R"("a-new-kind")"},
                             {"/changes/0/cause", R"("new")"},
                             {"/changes/0/paths/0/more", "null"},
                             {"/worst", "null"},
                             {"/counts/more", "{}"},
                             {"/changes/0/oldPlaces/0/line", "-1"}})
        EXPECT_THAT(schema.violations(edited(sampleDocument(), edit)), IsEmpty()) << edit.pointer;
}

TEST(DiffSchema, FindsAMemberThatIsMissing) {
    JsonSchema const schema(schemaFile);
    for (std::string const pointer : {"/schemaVersion",
                                      "/old",
                                      "/old/preinit",
                                      "/new/profiles",
                                      "/agentsBefore",
                                      "/agentsAfter",
                                      "/worst",
                                      "/counts",
                                      "/counts/risky",
                                      "/leftOut",
                                      "/leftOut/lesser",
                                      "/leftOut/following",
                                      "/changes",
                                      "/changes/1/kind",
                                      "/changes/1/class",
                                      "/changes/1/cause",
                                      "/changes/1/follows",
                                      "/changes/1/before",
                                      "/changes/1/after",
                                      "/changes/1/oldPlaces",
                                      "/changes/1/newPlaces",
                                      "/changes/1/newPlaces/0/file",
                                      "/changes/1/newPlaces/0/line",
                                      "/changes/1/newPlaces/0/text",
                                      "/changes/1/newPlaces/0/includedFrom",
                                      "/changes/1/newPlaces/0/includedFrom/0/line",
                                      "/changes/1/paths",
                                      "/changes/1/paths/0/path",
                                      "/changes/1/paths/0/type",
                                      "/changes/1/paths/0/agents",
                                      "/changes/1/mounts",
                                      "/changes/2/mounts/0/agent",
                                      "/changes/2/mounts/0/flags"})
        EXPECT_THAT(schema.violations(edited(sampleDocument(), {pointer, ""})), Not(IsEmpty()))
            << pointer;
}

TEST(DiffSchema, FindsAMemberOfAnotherKind) {
    JsonSchema const schema(schemaFile);
    for (auto const& edit : {Edit{"/schemaVersion", "2"},
                             {"/agentsAfter", "-1"},
                             {"/worst", R"("bad")"},
                             {"/counts/risky", "1.5"},
                             {"/changes", "{}"},
                             {"/changes/0/kind", R"("No Name")"},
                             {"/changes/0/class", R"("fatal")"},
                             {"/changes/0/follows", "0"},
                             {"/changes/0/before", "null"},
                             {"/changes/0/oldPlaces/0/line", "0"},
                             {"/changes/0/paths", "[]"},
                             {"/changes/0/paths/0/agents/0", "7"},
                             {"/changes/2/mounts/0", R"("m")"},
                             {"/error", R"("m")"}})
        EXPECT_THAT(schema.violations(edited(sampleDocument(), edit)), Not(IsEmpty()))
            << edit.pointer;
}

TEST(DiffSchema, FindsWhatIsWrongWithOneOfManyDevices) {
    JsonSchema const schema(schemaFile);
    for (auto const& edit : {Edit{"/devices/0/device", ""},
                             {"/devices/1/device", ""},
                             {"/devices/0/changes", "7"},
                             {"/devices/1/error", ""},
                             {"/devices/1/error/message", "7"},
                             {"/schemaVersion", ""},
                             {"/devices", "7"}})
        EXPECT_THAT(schema.violations(edited(batchDocument(), edit)), Not(IsEmpty()))
            << edit.pointer;
}

} // namespace
