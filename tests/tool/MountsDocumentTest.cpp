// kelda mounts --format json: the document, member by member.
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using Json = nlohmann::ordered_json;
using support::Device;
using support::KeldaProgram;
using support::Words;

support::Outcome mounts(Device const& device, std::string const& agent, Words const& more = {}) {
    return KeldaProgram().run(Words{"mounts", agent, "--format", "json"} +
                              support::foldersOf(device.directory().path()) + more);
}

std::vector<std::string> keysOf(Json const& object) {
    std::vector<std::string> keys;
    for (auto const& [key, value] : object.items())
        keys.push_back(key);
    return keys;
}

TEST(MountsDocument, IsPrintedToTheLetter) {
    Device device;
    device.preinit("Fans", "hardware/fan/%slot,Fan::Status,createOnMount\nsys/clock,Clock\n")
        .profile("Fan", "agentName:Fan-%slot\nhardware/fan/%slot,Fan::Status,rw\n")
        .profile("DefaultMountGroup", "sys/clock,Clock,r\n");
    EXPECT_EQ(mounts(device, "Fan-3").out, R"({
  "agent": "Fan-3",
  "foundMountProfile": true,
  "activeMount": false,
  "noDefaultMountGroup": false,
  "rootFlags": "rtp",
  "connectionFlags": "",
  "subAgents": [],
  "files": {
    "DefaultMountGroup": [
      "sys/clock"
    ],
    "Fan": [
      "hardware/fan/3"
    ]
  },
  "groups": {
    "Fan::": [
      "hardware/fan/3"
    ],
    "Fan::default": [
      "sys/clock"
    ]
  },
  "mounts": [
    {
      "path": "hardware/fan/3",
      "type": "Fan::Status",
      "flags": "rw",
      "explicit": true
    },
    {
      "path": "sys/clock",
      "type": "Clock",
      "flags": "r",
      "explicit": true
    }
  ],
  "agentPaths": [
    "hardware/fan/3",
    "sys/clock"
  ]
}
)");
}

TEST(MountsDocument, OfAnAgentWithoutProfileIsAnAnswerAndNoError) {
    Device const device;
    auto const outcome = mounts(device, "Nobody");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.json(), Json::parse(R"({
        "agent": "Nobody", "foundMountProfile": false, "activeMount": true,
        "noDefaultMountGroup": false, "rootFlags": "", "connectionFlags": "", "subAgents": [],
        "files": {}, "groups": {}, "mounts": [], "agentPaths": []})"));
}

TEST(MountsDocument, ShowsIntermediatePathsOfAnActiveMountAgent) {
    Device device;
    device.preinit("P", "a/b/c,T\n").profile("A", "agentName:A\nactiveMount\na/b/c,T,w\n");
    auto const document = mounts(device, "A").json();
    EXPECT_EQ(document["activeMount"], true);
    EXPECT_EQ(document["rootFlags"], "rt");
    EXPECT_EQ(document["mounts"], Json::parse(R"([
        {"path": "a", "type": "Fen::Dir", "flags": "tny", "explicit": false},
        {"path": "a/b", "type": "Fen::Dir", "flags": "tny", "explicit": false},
        {"path": "a/b/c", "type": "T", "flags": "w", "explicit": true}])"));
    EXPECT_EQ(document["agentPaths"], Json::parse(R"(["a/b/c"])"));
}

TEST(MountsDocument, HasTheAgentsFlagsAndKeywords) {
    Device device;
    device.preinit("P", "a,T\n")
        .profile("A", "agentName:A\nrootFlags:rS\nconnectionFlags:NE\nnoDefaultMountGroup\n"
                      "subAgent:A-two\nsubAgent:A-one\na,T,r\n")
        .profile("DefaultMountGroup", "a,T,w\n");
    auto const document = mounts(device, "A").json();
    EXPECT_EQ(document["rootFlags"], "rStp");
    EXPECT_EQ(document["connectionFlags"], "NE");
    EXPECT_EQ(document["noDefaultMountGroup"], true);
    EXPECT_EQ(document["subAgents"], Json::parse(R"(["A-two", "A-one"])"));
    EXPECT_EQ(document["files"], Json::parse(R"({"A": ["a"]})"));
}

TEST(MountsDocument, SortsTheKeysOfItsMaps) {
    Device device;
    device.preinit("P", "a,T\nb,T\nc,T\n")
        .profile("Z", "agentName:A\nMountGroup:z\na,T,r\nMountGroup:b\nb,T,r\n")
        .profile("B", "agentName:A\nMountGroup:m\nc,T,r\n");
    auto const document = mounts(device, "A").json();
    EXPECT_EQ(keysOf(document["files"]), (Words{"B", "Z"}));
    EXPECT_EQ(keysOf(document["groups"]), (Words{"A::b", "A::m", "A::z"}));
}

TEST(MountsDocument, SortsThePathsOfEachFile) {
    Device device;
    device.preinit("P", "CONFIG:z,T\nCONFIG:b,T\nCONFIG:m,T\nc,T\na,T\n")
        .profile("A", "agentName:A\nc,T,r\na,T,r\nInclude:ConfigMountProfile\n");
    auto const files = mounts(device, "A").json()["files"];
    EXPECT_EQ(files["A"], Json::parse(R"(["a", "c"])"));
    EXPECT_EQ(files["ConfigMountProfile"], Json::parse(R"(["b", "m", "z"])"));
}

TEST(MountsDocument, TheOverrideStandsForTheAgentString) {
    Device device;
    device.preinit("P", "agent/%a/x,T,createOnMount\n")
        .profile("A", "agentName:A\nagent/%agentString/x,T,r\n");
    EXPECT_EQ(mounts(device, "A").json()["agentPaths"], Json::parse(R"(["agent/A/x"])"));
    auto const document = mounts(device, "A", {"--override", "B"}).json();
    EXPECT_EQ(document["agentPaths"], Json::parse(R"(["agent/B/x"])"));
    EXPECT_EQ(document["agent"], "A");
}

TEST(MountsDocument, AgentStringsThatLookLikeCommandsAndOptionsAreServed) {
    Device device;
    device.preinit("P", "a,T\n");
    for (std::string const agent :
         {"mounts", "preinit", "[a,b]", "'quoted'", "a b", "%a", "{}", "AGENT=", "="})
        EXPECT_EQ(mounts(device, agent).json()["agent"], agent);
    auto const dashes =
        KeldaProgram().run(Words{"mounts", "--format", "json"} +
                           support::foldersOf(device.directory().path()) + Words{"--", "--help"});
    EXPECT_EQ(dashes.json()["agent"], "--help");
}

TEST(MountsDocument, ExtraFoldersOfTheEnvironmentAreRead) {
    Device device;
    Device extra;
    device.preinit("P", "a,T\n");
    extra.preinit("Q", "b,T\n").profile("A", "agentName:A\na,T,r\nb,T,r\n");
    auto const outcome = KeldaProgram()
                             .with("KELDA_EXTRA_PREINIT_PATH", extra.preinitDir())
                             .with("KELDA_EXTRA_PROFILE_PATH", extra.profileDir())
                             .run(Words{"mounts", "A", "--format", "json"} +
                                  support::foldersOf(device.directory().path()));
    EXPECT_EQ(outcome.json()["agentPaths"], Json::parse(R"(["a", "b"])"));
}

} // namespace
