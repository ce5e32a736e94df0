// The default mount group and the one per agent, which are loaded after an agent's own profiles.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/Thrown.h"
#include "support/TraceRecorder.h"

namespace {

using support::faultIn;
using support::strings;
using support::thrownText;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class AgentDefaultGroups : public testing::Test {
  protected:
    AgentDefaultGroups() {
        device.preinit("Base", "own/path,T\nsys/clock,T\nsys/log,T\n"
                               "own/%x,T,createOnMount\n"
                               "common/%agentString,T,createOnMount\n"
                               "each/%agentString,T,createOnMount\n");
        device.profile("Fan", "agentName: Fan-%slot\nown/path,T,rw\n");
        device.profile("DefaultMountGroup", "sys/clock,T,r\ncommon/%agentString,T,r\n");
        device.profile("DefaultMountGroupPerAgent", "each/%agentString,T,r\n");
    }

    void fanSays(std::string const& keywords) {
        device.profile("Fan", "agentName: Fan-%slot\n" + keywords + "own/path,T,rw\n");
    }
    static std::vector<std::string> paths(Kelda::MountFileInfo& parser) {
        parser.doInit();
        std::vector<std::string> found;
        for (auto const& record : parser.pathMountArgsMap())
            found.emplace_back(record.first.view());
        return found;
    }

    support::CleanEnvironment environment;
    support::Device device;
};

TEST_F(AgentDefaultGroups, AnAgentWithAProfileGetsBothDefaultFiles) {
    auto const parser = device.agent("Fan-3");
    EXPECT_THAT(paths(*parser), ElementsAre("common/Fan-3", "each/Fan-3", "own/path", "sys/clock"));
    EXPECT_THAT(strings(parser->mountGroups()), UnorderedElementsAre("Fan::", "Fan::default"));
    EXPECT_THAT(strings(parser->mountGroupPaths("Fan::default")),
                ElementsAre("common/Fan-3", "each/Fan-3", "sys/clock"));
}

TEST_F(AgentDefaultGroups, TheirPathsBelongToTheAgent) {
    auto const parser = device.agent("Fan-3");
    EXPECT_THAT(strings(parser->agentPaths("Fan-3")),
                UnorderedElementsAre("common/Fan-3", "each/Fan-3", "own/path", "sys/clock"));
    EXPECT_THAT(strings(parser->profileFilePaths("DefaultMountGroup", false)),
                ElementsAre("common/Fan-3", "sys/clock"));
}

TEST_F(AgentDefaultGroups, AnAgentWithoutProfileGetsNeither) {
    EXPECT_THAT(paths(*device.agent("Nobody")), IsEmpty());
}

TEST_F(AgentDefaultGroups, TheKeywordNoDefaultMountGroupTurnsBothOff) {
    fanSays("noDefaultMountGroup\n");
    auto const parser = device.agent("Fan-3");
    EXPECT_THAT(paths(*parser), ElementsAre("own/path"));
    EXPECT_TRUE(parser->noDefaultMountGroup());
}

TEST_F(AgentDefaultGroups, WithoutTheFilesNothingIsMissed) {
    std::filesystem::remove(device.profileDir() + "/DefaultMountGroup");
    std::filesystem::remove(device.profileDir() + "/DefaultMountGroupPerAgent");
    EXPECT_THAT(paths(*device.agent("Fan-3")), ElementsAre("own/path"));
}

TEST_F(AgentDefaultGroups, OnlyTheFilesOfTheVeryNamesAreLoaded) {
    device.profile("DefaultMountGroup2", "sys/log,T,r\n");
    device.profile("DefaultMountGroupPerAgent2", "sys/log,T,r\n");
    device.profile("defaultMountGroup", "sys/log,T,r\n");
    EXPECT_FALSE(device.agent("Fan-3")->infoExists("sys/log"));
}

TEST_F(AgentDefaultGroups, TheParserIsToldTheNameOfTheFiles) {
    device.profile("Common", "sys/log,T,r\n");
    device.profile("CommonPerAgent", "own/%agentString,T,r\n");
    Kelda::AgentMountFileInfo parser(false, device.preinitDir(), device.profileDir(), true,
                                     "Common");
    parser.addAgent("Fan-3", "");
    EXPECT_THAT(paths(parser), ElementsAre("own/Fan-3", "own/path", "sys/log"));
}

TEST_F(AgentDefaultGroups, TheirPathsAreInTheGroupDefaultUntilTheyOpenAnother) {
    device.profile("DefaultMountGroup", "sys/clock,T,r\nMountGroup: logs\nsys/log,T,r\n");
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    EXPECT_THAT(strings(parser->mountGroupPaths("Fan::logs")), ElementsAre("sys/log"));
    EXPECT_THAT(strings(parser->mountGroupPaths("Fan::default")),
                ElementsAre("each/Fan-3", "sys/clock"));
}

TEST_F(AgentDefaultGroups, TheAliasAgentStringIsTheOverrideIfThereIsOne) {
    EXPECT_THAT(paths(*device.agent("Fan-3", "Other")),
                ElementsAre("common/Other", "each/Other", "own/path", "sys/clock"));
}

TEST_F(AgentDefaultGroups, TheAliasesOfTheProfileAreForgotten) {
    fanSays("alias:%mine=3\n");
    device.profile("DefaultMountGroup", "own/%mine,T,r\n");
    auto const parser = device.agent("Fan-3");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }),
              faultIn("DefaultMountGroup", 1, "No such alias defined: '%mine'"));
}

TEST_F(AgentDefaultGroups, TheTokensOfTheProfileAreForgotten) {
    device.profile("DefaultMountGroupPerAgent", "\nown/%slot,T,r\n");
    auto const parser = device.agent("Fan-3");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }),
              faultIn("DefaultMountGroupPerAgent", 2, "No such alias defined: '%slot'"));
}

TEST_F(AgentDefaultGroups, AnAgentNameLineHasNoPlaceInThem) {
    device.profile("DefaultMountGroup", "agentName: Fan-3\n");
    auto const parser = device.agent("Fan-3");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }),
              faultIn("DefaultMountGroup", 1, "syntax error: 'agentName:Fan-3'"));
}

TEST_F(AgentDefaultGroups, EveryAgentGetsThemUnderItsOwnName) {
    device.profile("Psu", "agentName: Psu\nown/path,T,rw\n");
    auto const parser = device.agent("Fan-3");
    parser->addAgent("Psu", "");
    parser->doInit();
    EXPECT_THAT(strings(parser->mountGroupPaths("Fan::default")),
                ElementsAre("common/Fan-3", "each/Fan-3", "sys/clock"));
    EXPECT_THAT(strings(parser->mountGroupPaths("Psu::default")),
                ElementsAre("common/Psu", "each/Psu", "sys/clock"));
}

// --- sub-agents ---

TEST_F(AgentDefaultGroups, ThePerAgentFileIsLoadedForEachSubAgentInsteadOfTheAgent) {
    fanSays("subAgent: Blade-%slot\nsubAgent: Hub\n");
    EXPECT_THAT(paths(*device.agent("Fan-3")),
                ElementsAre("common/Fan-3", "each/Blade-3", "each/Hub", "own/path", "sys/clock"));
}

TEST_F(AgentDefaultGroups, TheOverrideDoesNotRenameSubAgents) {
    fanSays("subAgent: Hub\n");
    EXPECT_THAT(paths(*device.agent("Fan-3", "Other")),
                ElementsAre("common/Other", "each/Hub", "own/path", "sys/clock"));
}

TEST_F(AgentDefaultGroups, SubAgentsNamedByThePerAgentFileDoNotJoinTheRound) {
    fanSays("subAgent: Hub\nsubAgent: Rim\n");
    device.profile("DefaultMountGroupPerAgent", "subAgent: Late\neach/%agentString,T,r\n");
    auto const parser = device.agent("Fan-3");
    EXPECT_THAT(paths(*parser),
                ElementsAre("common/Fan-3", "each/Hub", "each/Rim", "own/path", "sys/clock"));
    EXPECT_THAT(strings(parser->subAgents()), ElementsAre("Hub", "Rim", "Late", "Late"));
}

TEST_F(AgentDefaultGroups, APerAgentFileThatNamesTheFirstSubAgentIsLoadedForTheAgentOnce) {
    device.profile("DefaultMountGroupPerAgent", "subAgent: Late\neach/%agentString,T,r\n");
    auto const parser = device.agent("Fan-3");
    EXPECT_THAT(paths(*parser), ElementsAre("common/Fan-3", "each/Fan-3", "own/path", "sys/clock"));
    EXPECT_THAT(strings(parser->subAgents()), ElementsAre("Late"));
}

TEST_F(AgentDefaultGroups, ASubAgentNamedByTheDefaultFileJoinsTheRound) {
    device.profile("DefaultMountGroup", "subAgent: Hub\n");
    EXPECT_THAT(paths(*device.agent("Fan-3")), ElementsAre("each/Hub", "own/path"));
}

TEST_F(AgentDefaultGroups, AnAliasOfThePerAgentFileEndsWithEachSubAgent) {
    fanSays("subAgent: Hub\nsubAgent: Rim\n");
    device.profile("DefaultMountGroupPerAgent",
                   "alias:%isHub=%agentString~Hub\nalias:%x=%isHub?%agentString:none\n"
                   "own/%x,T,r\n");
    EXPECT_THAT(paths(*device.agent("Fan-3")),
                ElementsAre("common/Fan-3", "own/Hub", "own/none", "own/path", "sys/clock"));
}

// --- the extra profile directory ---

class AgentDefaultGroupsExtra : public AgentDefaultGroups {
  protected:
    support::TemporaryDirectory extra;
    support::EnvironmentVariable path{"KELDA_EXTRA_PROFILE_PATH", extra.string().c_str()};
};

TEST_F(AgentDefaultGroupsExtra, AFileOfTheExtraDirectoryTakesThePlaceOfTheOther) {
    extra.write("DefaultMountGroup", "sys/log,T,r\n");
    EXPECT_THAT(paths(*device.agent("Fan-3")), ElementsAre("each/Fan-3", "own/path", "sys/log"));
}

TEST_F(AgentDefaultGroupsExtra, APerAgentFileOfTheExtraDirectoryTakesThePlaceOfTheOther) {
    extra.write("DefaultMountGroupPerAgent", "own/%agentString,T,r\n");
    fanSays("subAgent: Hub\n");
    EXPECT_THAT(paths(*device.agent("Fan-3")),
                ElementsAre("common/Fan-3", "own/Hub", "own/path", "sys/clock"));
}

TEST_F(AgentDefaultGroupsExtra, WithoutItsOwnFilesThoseOfTheProfileDirectoryAreLoaded) {
    EXPECT_THAT(paths(*device.agent("Fan-3")),
                ElementsAre("common/Fan-3", "each/Fan-3", "own/path", "sys/clock"));
}

TEST_F(AgentDefaultGroupsExtra, AnEmptyFileOfTheExtraDirectoryCountsAsLoaded) {
    extra.write("DefaultMountGroup", "");
    EXPECT_THAT(paths(*device.agent("Fan-3")), ElementsAre("each/Fan-3", "own/path"));
}

TEST_F(AgentDefaultGroupsExtra, AProfileOnlyTheExtraDirectoryHoldsIsFound) {
    extra.write("Psu", "agentName: Psu\nsys/log,T,w\n");
    auto const parser = device.agent("Psu");
    EXPECT_TRUE(parser->infoExists("sys/log"));
    EXPECT_TRUE(parser->infoExists("sys/clock"));
    EXPECT_EQ(parser->extraProfileDir(), extra.string());
}

TEST_F(AgentDefaultGroupsExtra, AProfileOfEachDirectoryIsLoaded) {
    extra.write("Fan", "agentName: Fan-3\nsys/log,T,w\n");
    auto const parser = device.agent("Fan-3");
    EXPECT_TRUE(parser->infoExists("sys/log"));
    EXPECT_TRUE(parser->infoExists("own/path"));
}

TEST_F(AgentDefaultGroupsExtra, AnExtraDirectoryThatIsMissingThrows) {
    std::filesystem::remove_all(extra.path());
    auto const parser = device.agent("Fan-3");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }), "Cannot open directory " + extra.string());
}

} // namespace
