// Root flags of an agent: those of its profiles, those set by hand, and what they pass on.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <KeldaUtil/MountFlags.h>

#include "support/CleanEnvironment.h"
#include "support/OpenAgent.h"
#include "support/Thrown.h"
#include "support/TraceRecorder.h"

namespace {

using support::thrownText;

class AgentRootFlags : public testing::Test {
  protected:
    AgentRootFlags() {
        device.preinit("Base", "a/b,T\na/b/c,T\nd/e,Fen::Dir\nd/e/f,T\n");
        device.profile("Fan", "agentName: Fan\na/b,T,r\n");
    }

    void fanSays(std::string const& lines) { device.profile("Fan", "agentName: Fan\n" + lines); }
    static std::string flags(Kelda::MountFileInfo& parser, char const* path) {
        return std::string(KeldaUtil::mountTableFlagsToString(parser.mountInfo(path).flags).view());
    }

    support::CleanEnvironment environment;
    support::Device device;
};

using AgentRootFlagsDeathTest = AgentRootFlags;

// --- root flags of profiles ---

TEST_F(AgentRootFlags, APassiveAgentGetsTheDefaultsAndThePassiveFlag) {
    auto const parser = device.agent("Fan");
    support::TraceRecorder const trace;
    EXPECT_EQ(parser->rootFlags(), "rtp");
    EXPECT_TRUE(trace.has(2, "Fan is a passive mount agent."));
    EXPECT_TRUE(trace.has(2, "rootFlags_ is now rtp"));
}

TEST_F(AgentRootFlags, AnActiveAgentGetsTheDefaultsAlone) {
    fanSays("activeMount\n");
    auto const parser = device.agent("Fan");
    support::TraceRecorder const trace;
    EXPECT_EQ(parser->rootFlags(), "rt");
    EXPECT_TRUE(trace.has(2, "Fan is a active mount agent."));
    EXPECT_TRUE(trace.has(2, "rootFlags_ is now rt"));
}

TEST_F(AgentRootFlags, TheFlagsOfTheProfileAreCompleted) {
    struct Row {
        char const* line;
        char const* rootFlags;
    };
    for (auto const& row :
         {Row{"rootFlags:w\n", "wtp"}, Row{"rootFlags:rt\n", "rtp"}, Row{"rootFlags:rtp\n", "rtp"},
          Row{"rootFlags:\n", "rtp"}, Row{"rootFlags:w\nrootFlags:r\n", "rtp"}}) {
        fanSays(row.line);
        EXPECT_EQ(device.agent("Fan")->rootFlags(), row.rootFlags) << row.line;
    }
}

TEST_F(AgentRootFlags, ASecondAgentAddsNothingTwice) {
    device.profile("Psu", "agentName: Psu\n");
    auto const parser = device.agent("Fan");
    parser->addAgent("Psu", "");
    EXPECT_EQ(parser->rootFlags(), "rtp");
}

TEST_F(AgentRootFlags, AnAgentAddedAfterLoadingTurnsThemPassive) {
    auto const parser = device.emptyAgent();
    EXPECT_EQ(parser->rootFlags(), "");
    parser->addAgent("Fan", "");
    EXPECT_EQ(parser->rootFlags(), "rtp");
}

TEST_F(AgentRootFlags, AnAgentWithoutProfileLeavesThemAlone) {
    auto const parser = device.emptyAgent();
    parser->doInit();
    support::TraceRecorder const trace;
    parser->addAgent("Nobody", "");
    EXPECT_EQ(parser->rootFlags(), "");
    EXPECT_FALSE(trace.has(2, "Nobody is a active mount agent."));
}

// --- root flags set by hand ---

TEST_F(AgentRootFlags, AnAgentWithoutProfileMayBeGivenRootFlags) {
    for (auto const& [given, completed] :
         {std::pair{"", "rt"}, std::pair{"w", "wt"}, std::pair{"rt", "rt"}}) {
        auto const parser = device.agent("Nobody");
        support::TraceRecorder const trace;
        parser->setRootFlags(given);
        EXPECT_TRUE(parser->isInitialized());
        EXPECT_EQ(parser->rootFlags(), completed);
        EXPECT_EQ(trace.count(7, "( flags : " + std::string(given) + " )"), 1) << given;
    }
}

TEST_F(AgentRootFlags, WithoutLoadMountProfileTheyMayBeSetForAnyAgent) {
    Kelda::AgentMountFileInfo parser(false, device.preinitDir(), device.profileDir(), false, "D");
    parser.addAgent("Fan", "");
    parser.setRootFlags("w");
    EXPECT_EQ(parser.rootFlags(), "wt");
}

TEST_F(AgentRootFlags, UninitialisingForgetsThemSoThatTheyMayBeSetAgain) {
    auto const parser = device.agent("Nobody");
    parser->setRootFlags("w");
    parser->unDoInit();
    EXPECT_EQ(parser->rootFlags(), "");
    parser->setRootFlags("r");
    EXPECT_EQ(parser->rootFlags(), "rt");
}

TEST_F(AgentRootFlagsDeathTest, SettingRootFlagsOverThoseOfAProfileIsAProgrammingError) {
    auto const parser = device.agent("Fan");
    EXPECT_DEATH(parser->setRootFlags("w"), "rootFlags_ == \"\"");
}

TEST_F(AgentRootFlagsDeathTest, SettingRootFlagsTwiceIsAProgrammingError) {
    auto const parser = device.agent("Nobody");
    parser->setRootFlags("");
    EXPECT_DEATH(parser->setRootFlags(""), "rootFlags_ == \"\"");
}

TEST_F(AgentRootFlagsDeathTest, SettingRootFlagsOfAnAgentWithAProfileIsAProgrammingError) {
    support::OpenAgent parser(device);
    parser.addAgent("Fan", "");
    parser.doInit();
    parser.rootFlags_ = "";
    EXPECT_DEATH(parser.setRootFlags("w"), "!foundMountProfile_");
}

TEST_F(AgentRootFlagsDeathTest, SettingRootFlagsWithoutAnyActiveAgentIsAProgrammingError) {
    auto const parser = device.emptyAgent();
    EXPECT_DEATH(parser->setRootFlags("w"), "activeMountInternal\\(\\)");
}

// --- intermediate paths of an active agent ---

TEST_F(AgentRootFlags, IntermediatePathsInheritFromTheRootFlags) {
    fanSays("activeMount\na/b/c,T,w\n");
    auto const parser = device.agent("Fan");
    EXPECT_EQ(flags(*parser, "a"), "tny");
    EXPECT_EQ(flags(*parser, "a/b"), "tny");
    EXPECT_EQ(flags(*parser, "a/b/c"), "w");
    EXPECT_EQ(parser->mountInfo("a/b"),
              (Kelda::MountArgs{"Fen::Dir", Fen::MountTable::Flags(0x84010), false}));
}

TEST_F(AgentRootFlags, RootFlagsThatWriteLetIntermediatePathsWrite) {
    fanSays("activeMount\nrootFlags:w\na/b/c,T,w\n");
    auto const parser = device.agent("Fan");
    EXPECT_EQ(parser->rootFlags(), "wt");
    EXPECT_EQ(flags(*parser, "a"), "wtn");
}

TEST_F(AgentRootFlags, APassiveAgentHasNoIntermediatePaths) {
    fanSays("a/b/c,T,w\n");
    auto const parser = device.agent("Fan");
    EXPECT_FALSE(parser->infoExists("a/b"));
}

TEST_F(AgentRootFlags, WithDontMergeFlagsThereAreNoIntermediatePaths) {
    fanSays("activeMount\na/b/c,T,w\n");
    auto const parser = device.agent("Fan", "", true);
    EXPECT_FALSE(parser->infoExists("a/b"));
}

TEST_F(AgentRootFlags, AnIntermediateRecordAddsItsFlagsToAnExplicitDirectory) {
    fanSays("activeMount\nd/e,Fen::Dir,r\nd/e/f,T,w\n");
    auto const parser = device.agent("Fan");
    EXPECT_EQ(parser->mountInfo("d/e"),
              (Kelda::MountArgs{"Fen::Dir", Fen::MountTable::Flags(0x84003), true}));
    EXPECT_EQ(flags(*parser, "d/e"), "rwn");
}

TEST_F(AgentRootFlags, AnExplicitPathAboveAnotherMustBeADirectory) {
    fanSays("activeMount\na/b,T,r\na/b/c,T,w\n");
    auto const parser = device.agent("Fan");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }),
              "recordMountArgs: types don't match for path 'a/b': 'Fen::Dir'  'T'");
}

TEST_F(AgentRootFlags, ForAPassiveAgentAPathAboveAnotherMayHaveAnyType) {
    fanSays("a/b,T,r\na/b/c,T,w\n");
    EXPECT_EQ(device.agent("Fan")->mountInfo("a/b").type, "T");
}

} // namespace
