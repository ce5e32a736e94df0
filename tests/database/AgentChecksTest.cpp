// Agent names that match one agent although they are written differently.
#include <KeldaBase/MountFileInfo.h>

#include "CheckedDevice.h"

namespace {

using KeldaDatabase::agentsMatchedTwice;
using support::CheckCase;
using support::CheckedDevice;
using support::FileTexts;

std::string both(std::string const& later, std::string const& earlier, std::string const& agent) {
    return fmt::format(
        "agent names '{}' and '{}' both match agent '{}', which loads the profiles of both", later,
        earlier, agent);
}

std::string const atA = " [profiles/A:1 the other agent name stands here]";

TEST(AgentsMatchedTwice, FindsNamesThatOverlap) {
    support::expectFindings(
        agentsMatchedTwice,
        {{"a name without tokens among those of a name with tokens",
          {{"profiles/A", "agentName:Fan-%slot\n"}, {"profiles/B", "# one\nagentName: Fan-1\n"}},
          {"profiles/B:2 " + both("Fan-1", "Fan-%slot", "Fan-1") + atA}},
         {"the other way round",
          {{"profiles/A", "agentName:Fan-1\n"}, {"profiles/B", "agentName:Fan-%slot\n"}},
          {"profiles/B:1 " + both("Fan-%slot", "Fan-1", "Fan-1") + atA}},
         {"a longer prefix",
          {{"profiles/A", "agentName:Fan-%a\n"}, {"profiles/B", "agentName:Fan-Tray-%b\n"}},
          {"profiles/B:1 " + both("Fan-Tray-%b", "Fan-%a", "Fan-Tray-1") + atA}},
         {"the same prefix with other tokens",
          {{"profiles/A", "agentName:Fan-%a\n"}, {"profiles/B", "agentName:Fan-%b\n"}},
          {"profiles/B:1 " + both("Fan-%b", "Fan-%a", "Fan-1") + atA}},
         {"a literal name that is the prefix and holds a dash",
          {{"profiles/A", "agentName:Fan-Tray-%a\n"}, {"profiles/B", "agentName:Fan-Tray\n"}},
          {"profiles/B:1 " + both("Fan-Tray", "Fan-Tray-%a", "Fan-Tray") + atA}},
         {"every pair of names, each once",
          {{"profiles/A", "agentName:Fan-%a\n"},
           {"profiles/B", "agentName:Fan-Tray-%a\n"},
           {"profiles/C", "agentName:Fan-Tray-1\n"},
           {"profiles/D", "agentName:Fan-Tray-1\n"}},
          {"profiles/B:1 " + both("Fan-Tray-%a", "Fan-%a", "Fan-Tray-1") + atA,
           "profiles/C:1 " + both("Fan-Tray-1", "Fan-Tray-%a", "Fan-Tray-1") +
               " [profiles/B:1 the other agent name stands here]",
           "profiles/C:1 " + both("Fan-Tray-1", "Fan-%a", "Fan-Tray-1") + atA}}});
}

TEST(AgentsMatchedTwice, AcceptsNamesThatDoNotOverlap) {
    support::expectFindings(
        agentsMatchedTwice,
        {{"the very same name",
          {{"profiles/A", "agentName:Fan-%slot\n"}, {"profiles/B", "agentName:Fan-%slot\n"}},
          {}},
         {"a literal name without a dash",
          {{"profiles/A", "agentName:Fan-%slot\n"}, {"profiles/B", "agentName:Fan\n"}},
          {}},
         {"a prefix that ends within a word",
          {{"profiles/A", "agentName:Fan-%slot\n"}, {"profiles/B", "agentName:Fantastic-1\n"}},
          {}},
         {"another case",
          {{"profiles/A", "agentName:Fan-%slot\n"}, {"profiles/B", "agentName:fan-1\n"}},
          {}},
         {"literal names only",
          {{"profiles/A", "agentName:Fan-1\n"}, {"profiles/B", "agentName:Fan-1-2\n"}},
          {}},
         {"a name with -Active-, which is never looked up",
          {{"profiles/A", "agentName:Fan-%slot\n"}, {"profiles/B", "agentName:Fan-Active-1\n"}},
          {}},
         {"no agent but default groups", {{"profiles/DefaultMountGroup", "# nothing\n"}}, {}}});
}

TEST(AgentsMatchedTwice, NamesAnAgentThatBothNamesMatch) {
    char const* const pairs[][3] = {{"Fan-1", "Fan-%slot", "Fan-1"},
                                    {"Fan-Tray-%b", "Fan-%a", "Fan-Tray-1"},
                                    {"Fan-Tray", "Fan-Tray-%a", "Fan-Tray"}};
    for (auto const& [name, other, agent] : pairs)
        for (auto const* const matching : {name, other})
            EXPECT_NE(Kelda::MountFileInfo::matchAgentName(matching, agent).kind,
                      Kelda::AgentNameMatch::noMatch)
                << matching << " " << agent;
}

TEST(AgentsMatchedTwice, ConcernsTheAgentsOfTheLaterProfile) {
    CheckedDevice device({{"profiles/A", "agentName:Fan-%slot\n"},
                          {"profiles/B", "agentName:Fan-1\n"},
                          {"profiles/C", "agentName:Other\n"}});
    auto const findings = agentsMatchedTwice(device.loaded());
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_THAT(findings[0].agents, testing::ElementsAre("Fan-1"));
    EXPECT_EQ(findings[0].subject.text, "Fan-1");
}

TEST(AgentsMatchedTwice, NestedNamesGiveSoManyFindingsAtMost) {
    FileTexts files;
    std::string name = "A";
    for (int i = 0; i < 100; ++i, name += "-A")
        files[fmt::format("profiles/P{:03}", i)] = "agentName:" + name + "-%t\n";
    EXPECT_LE(CheckedDevice(files).found(agentsMatchedTwice).size(), 1600U);
}

} // namespace
