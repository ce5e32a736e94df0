// How one agent comes to a path.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExplainedDevice.h"

namespace {

using KeldaDatabase::StoryAlias;
using support::ExplainedDevice;
using support::shown;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(AgentStory, TellsTheValuesOfTokensAndAliases) {
    ExplainedDevice device;
    device.preinit("P", "%a/%b/%c/%d,T,createOnMount\n")
        .profile("A", "agentName:A-%s-%t\nalias:%u=%t?%t:x\n%s/%U/%cellId/%agentString,T,r\n");
    auto const story = device.story("3/x/1/A-3", "A-3");
    EXPECT_THAT(shown(story.agent.mounts), ElementsAre("3/x/1/A-3 T r"));
    auto const& aliases = story.agent.mounts[0].lines[0].aliases;
    ASSERT_THAT(aliases, SizeIs(4));
    EXPECT_EQ(aliases[0].name + "=" + aliases[0].value, "%s=3");
    EXPECT_EQ(aliases[0].origin, StoryAlias::Origin::token);
    EXPECT_EQ(aliases[1].name + "=" + aliases[1].value, "%U=x");
    EXPECT_EQ(aliases[1].expression, "%t?%t:x");
    EXPECT_EQ(device.shown(aliases[1].place), "profiles/A:2");
    EXPECT_EQ(aliases[2].origin, StoryAlias::Origin::everyProfile);
    EXPECT_EQ(aliases[3].origin, StoryAlias::Origin::agentString);
    EXPECT_EQ(aliases[3].value, "A-3");
}

TEST(AgentStory, TellsGroupsAndConditions) {
    ExplainedDevice device;
    device.preinit("P", "a,T\nb,T\nc,T\n")
        .profile("A", "agentName:A\na,T,r\nMountGroup:g,7\nb,T,r\nMountGroup:h\n"
                      "Condition: some  thing\nc,T,r\n");
    auto const line = [&](char const* path) {
        return device.story(path, "A").agent.mounts.at(0).lines.at(0);
    };
    EXPECT_EQ(line("a").group, "");
    EXPECT_EQ(line("a").groupPriority, 0U);
    EXPECT_EQ(line("b").group, "g");
    EXPECT_EQ(line("b").groupPriority, 7U);
    EXPECT_EQ(device.shown(line("b").groupPlace), "profiles/A:3");
    EXPECT_FALSE(line("b").isConditional);
    EXPECT_EQ(line("c").groupPriority, 99U);
    EXPECT_EQ(line("c").condition, "Condition: some  thing");
}

TEST(AgentStory, ANewFileForgetsGroupAndAliases) {
    ExplainedDevice device;
    device.preinit("P", "a,T\n%x,T,createOnMount\n")
        .profile("A", "agentName:A\nalias:%cellId=9\nMountGroup:g\n")
        .profile("B", "agentName:A\na,T,r\n%cellId,T,r\n");
    EXPECT_EQ(device.story("a", "A").agent.mounts.at(0).lines.at(0).group, "");
    auto const story = device.story("1", "A");
    EXPECT_EQ(story.agent.mounts.at(0).lines.at(0).aliases.at(0).origin,
              StoryAlias::Origin::everyProfile);
    EXPECT_THAT(story.profiles, SizeIs(2));
}

TEST(AgentStory, SubAgentsHaveDefaultMountsOfTheirOwn) {
    ExplainedDevice device;
    device.preinit("P", "a/%x,T,createOnMount\n")
        .profile("A", "agentName:A\nsubAgent:one\nsubAgent:two\n")
        .profile("DefaultMountGroupPerAgent", "a/%agentString,T,r\n");
    auto const story = device.story("a/two", "A");
    EXPECT_EQ(story.agent.mounts.at(0).lines.at(0).aliases.at(0).value, "two");
    EXPECT_EQ(story.agent.mounts.at(0).lines.at(0).group, "default");
    EXPECT_THAT(device.story("a/A", "A").agent.mounts, IsEmpty());
}

TEST(AgentStory, GoesOnBehindFaults) {
    ExplainedDevice device;
    device.preinit("P", "a,T\n").profile("A", "agentName:A\nno keyword\na,T,rz\na,T,w\n");
    auto const story = device.story("a", "A");
    EXPECT_THAT(shown(story.agent.mounts), ElementsAre("a T w"));
    ASSERT_FALSE(story.faults.empty());
    EXPECT_EQ(device.shown(story.faults[0].place), "profiles/A:2");
    EXPECT_EQ(story.faults[0].message, "syntax error: 'nokeyword'");
    ASSERT_THAT(story.passed, SizeIs(1));
    EXPECT_EQ(device.shown(story.passed[0].line.place), "profiles/A:3");
    EXPECT_EQ(story.passed[0].fault, "Encountered unknown mount flag z");
}

TEST(AgentStory, PassesLinesWithoutAType) {
    ExplainedDevice device;
    device.preinit("P", "x,T\n").profile("A", "agentName:A-%s\ncard/%s,T,r\ncard/3,T,r\n");
    auto const story = device.story("card/3", "A-3");
    ASSERT_THAT(story.passed, SizeIs(2));
    EXPECT_TRUE(story.passed[0].fault.starts_with("No type info for path 'card/%s'"));
    EXPECT_EQ(story.passed[0].line.path, "card/3");
    EXPECT_THAT(device.story("card/4", "A-3").passed, IsEmpty());
}

TEST(AgentStory, AnAgentWithoutAProfileMountsNothing) {
    ExplainedDevice device;
    device.preinit("P", "a,T\n").profile("A", "agentName:A\na,T,r\n");
    auto const story = device.story("a", "B");
    EXPECT_FALSE(story.foundMountProfile);
    EXPECT_THAT(story.agent.mounts, IsEmpty());
    EXPECT_TRUE(device.story("a", "A").foundMountProfile);
}

TEST(AgentStory, EveryConfigPathComesFromTheIncludeLine) {
    ExplainedDevice device;
    device.preinit("P", "CONFIG:c/d,T\n").profile("A", "agentName:A\nInclude:ConfigMountProfile\n");
    auto const line = device.story("c/d", "A").agent.mounts.at(0).lines.at(0);
    EXPECT_EQ(device.shown(line.place), "profiles/A:2");
    EXPECT_EQ(line.writtenPath, "");
    EXPECT_EQ(line.flags, "wi");
}

} // namespace
