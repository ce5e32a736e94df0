// Under which names an agent-side parser files what a profile brought.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <KeldaUtil/MountFlags.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/Thrown.h"

namespace {

using support::strings;
using support::thrownText;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class AgentFiling : public testing::Test {
  protected:
    AgentFiling() {
        device.preinit("Base", "hardware/fan/%slot/%sub,Fan::Status,createOnMount\n"
                               "sys/clock,Sys::Clock\nsys/log,Sys::Log\n");
        device.profile("FanProfile", "agentName: Fan-%slot-%sub\n"
                                     "hardware/fan/%slot/%sub,Fan::Status,rw\n");
    }

    support::CleanEnvironment environment;
    support::Device device;
};

TEST_F(AgentFiling, TheStringServedAndTheMatchedNameBothFindTheProfile) {
    auto const parser = device.agent("Fan-3");
    EXPECT_THAT(strings(parser->agentPaths("Fan-3")), ElementsAre("hardware/fan/3/"));
    EXPECT_THAT(strings(parser->agentPaths("Fan")), ElementsAre("hardware/fan/3/"));
    EXPECT_THAT(parser->agentPaths("Fan-4"), IsEmpty());
}

TEST_F(AgentFiling, AProfileForOneAgentIsFiledOnce) {
    device.profile("Clock", "agentName: Clock\nsys/clock,Sys::Clock,r\n");
    auto const parser = device.agent("Clock");
    parser->doInit();
    ASSERT_EQ(parser->agentStringProfileFileMap().size(), 1U);
    EXPECT_THAT(strings(parser->agentStringProfileFileMap().at("Clock")), ElementsAre("Clock"));
}

TEST_F(AgentFiling, GroupsAreFiledUnderTheMatchedName) {
    device.profile("DefaultMountGroup", "sys/clock,Sys::Clock,r\n");
    auto const parser = device.agent("Fan-3-1");
    parser->doInit();
    EXPECT_THAT(strings(parser->mountGroups()), UnorderedElementsAre("Fan::", "Fan::default"));
    EXPECT_THAT(strings(parser->mountGroupPaths("Fan::")), ElementsAre("hardware/fan/3/1"));
    EXPECT_THAT(strings(parser->mountGroupPaths("Fan::default")), ElementsAre("sys/clock"));
    EXPECT_THAT(strings(parser->agentPaths("Fan-3-1")),
                UnorderedElementsAre("hardware/fan/3/1", "sys/clock"));
}

TEST_F(AgentFiling, PathsAreFiledUnderTheBaseNameOfTheirFile) {
    auto const parser = device.agent("Fan-3-1");
    EXPECT_TRUE(parser->fileIsLoaded("FanProfile"));
    EXPECT_THAT(strings(parser->includedProfileFiles()), ElementsAre("FanProfile"));
    EXPECT_EQ(parser->mountInfo("hardware/fan/3/1").type, "Fan::Status");
}

TEST_F(AgentFiling, AProfileOfOnlyIncludesIsNoUnknownFile) {
    device.profile("Only", "agentName: Only\nInclude: Shared\n");
    device.profile("Shared", "sys/clock,Sys::Clock,r\nsys/log,Sys::Log,r\n");
    auto const parser = device.agent("Only");
    EXPECT_THAT(strings(parser->agentPaths("Only")), UnorderedElementsAre("sys/clock", "sys/log"));
    EXPECT_THAT(parser->exceptions(), IsEmpty());
}

TEST_F(AgentFiling, AProfileWithoutAnyPathIsNoUnknownFile) {
    device.profile("Bare", "agentName: Bare\nactiveMount\n");
    auto const parser = device.agent("Bare");
    EXPECT_THAT(parser->agentPaths("Bare"), IsEmpty());
    EXPECT_THAT(parser->exceptions(), IsEmpty());
}

TEST_F(AgentFiling, DefaultFilesWithoutAnyPathAreNoUnknownFiles) {
    device.profile("DefaultMountGroup", "# nothing yet\n");
    device.profile("DefaultMountGroupPerAgent", "");
    auto const parser = device.agent("Fan-3-1");
    EXPECT_THAT(strings(parser->agentPaths("Fan-3-1")), ElementsAre("hardware/fan/3/1"));
}

TEST_F(AgentFiling, AnAgentWithoutProfileHasNoPaths) {
    auto const parser = device.agent("Nobody");
    EXPECT_THAT(parser->agentPaths("Nobody"), IsEmpty());
    EXPECT_THAT(parser->agentPaths("Never-added"), IsEmpty());
    EXPECT_THAT(parser->exceptions(), IsEmpty());
}

TEST_F(AgentFiling, AskingForAFileThatWasNeverReadIsStillAFault) {
    auto const parser = device.agent("Fan-3-1");
    EXPECT_THAT(thrownText([&] { parser->profileFilePaths("NoSuchFile", true); }),
                testing::StartsWith("profileFilePaths: no such file: NoSuchFile"));
}

} // namespace
