// How the agents of a device come to a path.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExplainedDevice.h"
#include "support/Corpus.h"

namespace {

using KeldaDatabase::StoryAlias;
using support::ExplainedDevice;
using support::shown;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(DeviceStory, LinesOfAnAgentAreMergedInTheirOrder) {
    ExplainedDevice device;
    device.preinit("P", "a,T\n")
        .profile("A", "agentName:A\n\nInclude:i.*\na,T,w\n")
        .profile("DefaultMountGroup", "a,T,S\n")
        .profile("i.x", "# x\na,T,r\n");
    auto const agents = device.agents("a");
    ASSERT_THAT(agents, SizeIs(1));
    EXPECT_THAT(shown(agents[0].mounts), ElementsAre("a T rwS"));
    auto const& lines = agents[0].mounts[0].lines;
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_EQ(device.shown(lines[0].place), "profiles/i.x:2");
    EXPECT_EQ(lines[0].place.from.at(0).line, 3);
    EXPECT_EQ(lines[0].flagsAfter, "r");
    EXPECT_EQ(lines[1].flagsAfter, "rw");
    EXPECT_EQ(lines[2].flagsAfter, "rwS");
    EXPECT_EQ(lines[2].group, "default");
}

TEST(DeviceStory, TokensStandForAnyValue) {
    ExplainedDevice device;
    device.preinit("P", "f/%a/%b,T,createOnMount\n")
        .profile("A", "agentName:A-%s\nalias:%fix=1\nf/%s/%fix,T,r\n");
    EXPECT_THAT(device.agents("f/3/2"), IsEmpty());
    auto const agents = device.agents("f/3/1");
    ASSERT_THAT(agents, SizeIs(1));
    EXPECT_THAT(agents[0].names, ElementsAre("A-%s"));
    EXPECT_THAT(shown(agents[0].mounts), ElementsAre("f/*/1 T r"));
    auto const& aliases = agents[0].mounts[0].lines[0].aliases;
    ASSERT_THAT(aliases, SizeIs(2));
    EXPECT_EQ(aliases[0].origin, StoryAlias::Origin::token);
    EXPECT_EQ(device.shown(aliases[0].place), "profiles/A:1");
    EXPECT_EQ(aliases[1].origin, StoryAlias::Origin::aliasLine);
    EXPECT_EQ(device.shown(aliases[1].place), "profiles/A:2");
}

TEST(DeviceStory, AnAliasIsTheLastOneDefinedAboveTheLine) {
    ExplainedDevice device;
    device.preinit("P", "%x,T,createOnMount\n")
        .profile("A", "agentName:A\nalias:%v=1\nalias:%V=2\nInclude:i\nalias:%v=3\n")
        .profile("i", "#\n#\n#\n#\n#\n#\n%v,T,r\n");
    auto const agents = device.agents("2");
    ASSERT_THAT(agents, SizeIs(1));
    auto const& alias = agents[0].mounts[0].lines[0].aliases.at(0);
    EXPECT_EQ(alias.value, "2");
    EXPECT_EQ(device.shown(alias.place), "profiles/A:3");
}

TEST(DeviceStory, AgentsThatComeToThePathInTheSameWayStandTogether) {
    ExplainedDevice device;
    device.preinit("P", "a,T\n")
        .profile("A", "agentName:A\n")
        .profile("B", "agentName:B\na,T,w\n")
        .profile("C", "agentName:C\n")
        .profile("D", "agentName:D\nnoDefaultMountGroup\n")
        .profile("DefaultMountGroup", "a,T,r\n");
    auto const agents = device.agents("a");
    ASSERT_THAT(agents, SizeIs(2));
    EXPECT_THAT(agents[0].names, ElementsAre("A", "C"));
    EXPECT_THAT(agents[1].names, ElementsAre("B"));
}

TEST(DeviceStory, ADirectoryInheritsFromTheRootFlags) {
    ExplainedDevice device;
    device.preinit("P", "d/e/a,T\nd/e/b,T\n")
        .profile("A", "agentName:A\nactiveMount\nd/e/a,T,rw\nd/e/b,T,i\n")
        .profile("B", "agentName:B\nactiveMount\nrootFlags:rw\nd/e/a,T,rw\nd/e/b,T,r\n")
        .profile("Passive", "agentName:C\nd/e/a,T,rw\n");
    auto const agents = device.agents("d");
    ASSERT_THAT(agents, SizeIs(2));
    EXPECT_THAT(shown(agents[0].mounts), ElementsAre("d Fen::Dir tny"));
    EXPECT_EQ(agents[0].mounts[0].inherited->parent, "");
    EXPECT_EQ(agents[0].mounts[0].inherited->parentFlags, "rt");
    EXPECT_THAT(agents[0].mounts[0].directory->below, SizeIs(1));
    EXPECT_THAT(shown(agents[1].mounts), ElementsAre("d Fen::Dir wtn"));
    EXPECT_EQ(agents[1].mounts[0].inherited->parentFlags, "rwt");
    EXPECT_THAT(agents[1].mounts[0].directory->below, SizeIs(2));
}

TEST(DeviceStory, ADirectoryInheritsFromItsParent) {
    ExplainedDevice device;
    device.preinit("P", "d/e/f,T\n")
        .profile("A", "agentName:A\nactiveMount\nd,Fen::Dir,r\n"
                      "d/e/f,T,w\n");
    auto const mount = device.agents("d/e").at(0).mounts.at(0);
    EXPECT_EQ(mount.inherited->parent, "d");
    EXPECT_EQ(mount.inherited->parentFlags, "rwn");
    EXPECT_EQ(mount.inherited->before, "wn");
    EXPECT_EQ(mount.flags, "wn");
    EXPECT_EQ(device.agents("d").at(0).mounts.at(0).directory->before, "r");
    EXPECT_FALSE(device.agents("d").at(0).mounts.at(0).inherited);
}

// The story of all agents and that of one of them, by its own parser, are the same.
TEST(DeviceStory, AgreesWithTheParserOfEachAgent) {
    SKIP_WITHOUT_CORPUS();
    support::CleanEnvironment const environment;
    auto const directory = support::corpusDir("openconfig");
    auto const preinit = (directory / "preinit").string();
    auto const profiles = (directory / "profiles").string();
    KeldaDatabase::DatabaseMountFileInfo parser(preinit, profiles);
    auto const& device = parser.device();
    KeldaDatabase::PlaceReader places(device);
    KeldaDatabase::DeviceLines lines(device, parser.predefinedAliases(), places);
    std::size_t compared = 0;
    for (std::size_t i = 0; i < device.agents.size(); i += 9) {
        auto const agentString = std::string(device.agents[i].agentString.view());
        auto const& mounts = device.profiles[device.agents[i].profiles.front()].mounts;
        if (mounts.size() == 0)
            continue;
        auto const path = std::string(device.mounts[mounts.begin].path.view());
        for (auto const& asked : {path, path.substr(0, path.find('/'))}) {
            KeldaDatabase::AskedPath const pattern(asked);
            auto const own = agentStory(preinit, profiles, agentString, pattern, places);
            for (auto const& agent : agentsThatMount(device, pattern, lines))
                for (auto const& name : agent.names)
                    if (name == nameOf(device.agents[i])) {
                        EXPECT_EQ(shown(agent.mounts), shown(own.agent.mounts)) << asked;
                        ++compared;
                    }
        }
    }
    EXPECT_GT(compared, 20U);
}

} // namespace
