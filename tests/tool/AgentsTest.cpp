// kelda agents: the example device with everything that is printed, small devices, wrong calls.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/Corpus.h"
#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using Json = nlohmann::ordered_json;
using support::Device;
using support::expected;
using support::KeldaProgram;
using support::Words;

support::Outcome agents(std::filesystem::path const& device, Words const& more = {}) {
    return KeldaProgram().inFolder(device).run(
        Words{"agents", "--preinit", "preinit", "--profiles", "profiles"} + more);
}
support::Outcome agents(Device const& device, Words const& more = {}) {
    return agents(device.directory().path(), more);
}
// The document's agents.
Json listOf(Device const& device) {
    return agents(device, {"--format", "json"}).json()["agents"];
}

TEST(AgentsOfTheExampleDevice, AreTheKeptTable) {
    auto const outcome = agents(support::exampleDevice());
    EXPECT_EQ(outcome.out, expected("agents.txt"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST(AgentsOfTheExampleDevice, AreTheKeptDocument) {
    auto const outcome = agents(support::exampleDevice(), {"--format", "json"});
    EXPECT_EQ(outcome.out, expected("agents.json"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

struct SmallDevice : Device {
    SmallDevice() {
        preinit("P", "a,A\nb,B\nagent/%n/log,L,createOnMount\n")
            .profile("1", "agentName:Fan-%slot\nsubAgent:Fan-x\nsubAgent:Fan-y\nsubAgent:Fan-x\n"
                          "a,A,r\na,A,w\nMountGroup:empty\nMountGroup:g\nb,B,r\n")
            .profile("2", "agentName:Alone\nnoDefaultMountGroup\nInclude:shared\n")
            .profile("shared", "activeMount\na,A,rw\n")
            .profile("DefaultMountGroup", "b,B,r\n")
            .profile("DefaultMountGroupPerAgent", "agent/%agentString/log,L,w\n");
    }
};

TEST(Agents, AreATableWithTotals) {
    auto const outcome = agents(SmallDevice());
    EXPECT_EQ(outcome.out,
              "AGENT      PROFILES  PATHS  WRITTEN  GROUPS  MOUNTS   FAULTS  SUB-AGENTS\n"
              "Alone      1         1      1        1       active   0       -\n"
              "Fan-%slot  3         3      2        3       passive  0       Fan-x, Fan-y\n"
              "\n"
              "2 agents (1 active, 1 passive), 4 profiles, 3 paths (2 written), 0 faults\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Agents, AreADocument) {
    auto const outcome = agents(SmallDevice(), {"--format", "json"});
    EXPECT_EQ(outcome.out, R"({
  "agents": [
    {
      "name": "Alone",
      "profiles": [
        "profiles/2"
      ],
      "paths": 1,
      "written": 1,
      "groups": 1,
      "activeMount": true,
      "hasActiveVariant": false,
      "subAgents": [],
      "faults": 0
    },
    {
      "name": "Fan-%slot",
      "profiles": [
        "profiles/1",
        "profiles/DefaultMountGroup",
        "profiles/DefaultMountGroupPerAgent"
      ],
      "paths": 3,
      "written": 2,
      "groups": 3,
      "activeMount": false,
      "hasActiveVariant": false,
      "subAgents": [
        "Fan-x",
        "Fan-y"
      ],
      "faults": 0
    }
  ],
  "totals": {
    "agents": 2,
    "activeMount": 1,
    "profiles": 4,
    "paths": 3,
    "written": 2,
    "faults": 0
  }
}
)");
}

TEST(Agents, OfAnEmptyDeviceAreNone) {
    Device const device;
    EXPECT_EQ(agents(device).out,
              "AGENT  PROFILES  PATHS  WRITTEN  GROUPS  MOUNTS  FAULTS  SUB-AGENTS\n"
              "\n"
              "0 agents (0 active, 0 passive), 0 profiles, 0 paths (0 written), 0 faults\n");
    EXPECT_EQ(listOf(device), Json::array());
}

TEST(Agents, WithAnActiveVariantAreOneRow) {
    Device device;
    device.preinit("P", "a,A\n")
        .profile("1", "agentName:A-%x\nactiveMount\nmatchActiveName\na,A,r\n");
    auto const list = listOf(device);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]["name"], "A-%x");
    EXPECT_EQ(list[0]["hasActiveVariant"], true);
}

TEST(Agents, HaveTheFaultsOfAllFilesThatTheyLoad) {
    Device device;
    device.preinit("P", "a,A\nno comma\n")
        .profile("1", "agentName:A\nno keyword\na,A,?\n")
        .profile("2", "agentName:B\nInclude:shared\n")
        .profile("3", "agentName:C\nnoDefaultMountGroup\n")
        .profile("shared", "agentName:X\n")
        .profile("DefaultMountGroup", "nowhere,A,r\n");
    auto const outcome = agents(device);
    auto const list = listOf(device);
    EXPECT_EQ(list[0]["faults"], 4); // its own two, the preinit file's, the default group's
    EXPECT_EQ(list[1]["faults"], 3);
    EXPECT_EQ(list[2]["name"], "C");
    EXPECT_EQ(list[2]["faults"], 1);
    EXPECT_EQ(outcome.err, "kelda: note: 5 faults in the files; see 'kelda check'\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Agents, MeetFaultsOfTheirProfilesTogether) {
    Device device;
    device.preinit("P", "a,A\n")
        .profile("1", "agentName:A\nactiveMount\n")
        .profile("2", "agentName:A\nCondition:x\n")
        .profile("3", "agentName:B\nCondition:x\n");
    auto const list = listOf(device);
    EXPECT_EQ(list[0]["faults"], 1);
    EXPECT_EQ(list[1]["faults"], 0);
}

TEST(Agents, WithHostileNamesAreShownAsText) {
    Device device;
    device.preinit("P", "a,A\n").profile("\x1b", "agentName:A\x1b[1m\xff\nsubAgent:\xff\na,A,r\n");
    EXPECT_THAT(agents(device).out, testing::HasSubstr("\nA\\x1b[1m\\xff  1  "));
    auto const list = listOf(device);
    EXPECT_EQ(list[0]["name"], "A\x1b[1m\ufffd");
    EXPECT_EQ(list[0]["subAgents"], Json::array({"\ufffd"}));
    EXPECT_EQ(list[0]["profiles"], Json::array({"profiles/\x1b"}));
}

TEST(Agents, CannotBeToldWithoutAFolder) {
    Device const device;
    auto const call = Words{"agents", "--profiles", device.profileDir(), "--preinit", "gone"};
    auto const outcome = KeldaProgram().run(call);
    EXPECT_EQ(outcome.err, "kelda: Cannot open directory gone\n");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 2);
    auto const document = KeldaProgram().run(call + Words{"--format", "json"});
    EXPECT_EQ(document.json()["error"]["message"], "Cannot open directory gone");
    EXPECT_EQ(document.status, 2);
}

struct WrongCall {
    Words words;
    std::string message;
};

class EveryWrongAgents : public testing::TestWithParam<WrongCall> {};

TEST_P(EveryWrongAgents, SaysWhatIsWrong) {
    auto const outcome = KeldaProgram().run(Words{"agents"} + GetParam().words);
    EXPECT_EQ(outcome.err, GetParam().message + "\nTry 'kelda agents --help'.\n");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 2);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, EveryWrongAgents,
    testing::Values(WrongCall{{"A"}, "kelda agents: unexpected argument 'A'"},
                    WrongCall{{"--format", "yaml"},
                              "kelda agents: --format: must be table or json, not 'yaml'"},
                    WrongCall{{"--preinit", ""}, "kelda agents: --preinit: must not be empty"}));

// What kelda mounts says of an agent string, which reads the files as that agent does. Sub-agents
// and values that fall together give an agent other numbers of paths than its lines have.
TEST(AgentsOfTheCorpus, HaveTheCountsThatTheyHaveAlone) {
    SKIP_WITHOUT_CORPUS();
    auto const folders = support::foldersOf(support::corpusDir("openconfig"));
    auto const list =
        KeldaProgram().run(Words{"agents", "--format", "json"} + folders).json()["agents"];
    EXPECT_EQ(list.size(), 265U);
    int compared = 0;
    for (auto const& agent : list) {
        auto const name = agent["name"].get<std::string>();
        if (name.find('%') != std::string::npos)
            continue;
        auto const own =
            KeldaProgram().run(Words{"mounts", name, "--format", "json"} + folders).json();
        EXPECT_EQ(agent["activeMount"], own["activeMount"]) << name;
        EXPECT_EQ(agent["groups"], own["groups"].size()) << name;
        EXPECT_EQ(agent["subAgents"].size(), own["subAgents"].size()) << name;
        if (!own["subAgents"].empty())
            continue;
        auto const named =
            std::count_if(own["mounts"].begin(), own["mounts"].end(),
                          [](Json const& mount) { return mount["explicit"].get<bool>(); });
        EXPECT_EQ(agent["paths"], named) << name;
        ++compared;
    }
    EXPECT_GT(compared, 100);
}

} // namespace
