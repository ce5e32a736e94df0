// Mounts that are recorded from outside the profiles, and recorded again after every later load.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <KeldaUtil/MountFlags.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/OpenAgent.h"
#include "support/Thrown.h"
#include "support/TraceRecorder.h"

namespace {

using support::answersOf;
using support::firstDifference;
using support::strings;
using support::thrownText;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class AgentExternalMounts : public testing::Test {
  protected:
    AgentExternalMounts() {
        device.preinit("Base", "a/b,T\na/c,T\n");
        device.profile("Fan", "agentName: Fan\na/b,T,r\n");
    }

    static Kelda::MountArgs args(char const* type, char const* flags) {
        return {type, KeldaUtil::parseMountTableFlags(flags), true};
    }
    static void add(Kelda::AgentMountFileInfo& parser, char const* path, char const* flags = "rw") {
        parser.recordMountArgsExternal(path, args("T", flags), true, false);
    }
    static std::string flags(Kelda::MountFileInfo& parser, char const* path) {
        return std::string(KeldaUtil::mountTableFlagsToString(parser.mountInfo(path).flags).view());
    }

    support::CleanEnvironment environment;
    support::Device device;
};

TEST_F(AgentExternalMounts, AMountIsRecordedAtOnceAndLoadsNothing) {
    auto const parser = device.agent("Fan");
    add(*parser, "out/side");
    EXPECT_FALSE(parser->isInitialized());
    EXPECT_EQ(parser->pathMountArgsMap().at("out/side"), args("T", "rw"));
}

TEST_F(AgentExternalMounts, ACallIsTracedWithFlagsBeforeType) {
    auto const parser = device.agent("Fan");
    support::TraceRecorder const trace;
    parser->recordMountArgsExternal("out/side", args("My::Type", "rw"), true, false);
    EXPECT_TRUE(trace.has(7, "( path : out/side, args : MountArgs( rw, My::Type ), "
                             "targetPath : true, mergeType : false )"));
}

TEST_F(AgentExternalMounts, EveryCallIsRememberedInOrder) {
    support::OpenAgent parser(device);
    add(parser, "z");
    parser.recordMountArgsExternal("a", args("U", "c"), false, true);
    add(parser, "z");
    ASSERT_THAT(parser.savedRMAs_, SizeIs(3));
    EXPECT_EQ(parser.savedRMAs_[0].path, "z");
    EXPECT_EQ(parser.savedRMAs_[1].path, "a");
    EXPECT_EQ(parser.savedRMAs_[1].args, args("U", "c"));
    EXPECT_FALSE(parser.savedRMAs_[1].targetPath);
    EXPECT_TRUE(parser.savedRMAs_[1].mergeType);
    EXPECT_TRUE(parser.savedRMAs_[2].targetPath);
    EXPECT_FALSE(parser.savedRMAs_[2].mergeType);
}

TEST_F(AgentExternalMounts, AMountRecordedBeforeTheFirstLoadIsThereAfterItOnce) {
    auto const parser = device.agent("Fan");
    add(*parser, "out/side");
    EXPECT_EQ(flags(*parser, "out/side"), "rw");
    EXPECT_THAT(strings(parser->profileFilePaths("recordMountArgs", false)),
                ElementsAre("out/side"));
}

TEST_F(AgentExternalMounts, MountsArePresentAgainAfterUninitialisingAndAQuery) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    add(*parser, "out/side");
    add(*parser, "out/other", "r");
    parser->unDoInit();
    EXPECT_THAT(parser->pathMountArgsMap(), IsEmpty());
    EXPECT_EQ(flags(*parser, "out/side"), "rw");
    EXPECT_EQ(flags(*parser, "out/other"), "r");
    EXPECT_TRUE(parser->isExplicit("out/side"));
}

TEST_F(AgentExternalMounts, EveryLaterLoadGivesTheSameAnswers) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    add(*parser, "z/out");
    add(*parser, "a/b", "w");
    add(*parser, "z/out", "c");
    parser->recordMountArgsExternal("z", args("Fen::Dir", ""), false, false);
    auto const before = answersOf(*parser);
    for (int round = 0; round < 3; ++round) {
        parser->unDoInit();
        EXPECT_EQ(firstDifference(before, answersOf(*parser)), "") << round;
    }
}

TEST_F(AgentExternalMounts, AMountIsMergedWithWhatAProfileBrought) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    add(*parser, "a/b", "w");
    EXPECT_EQ(flags(*parser, "a/b"), "rw");
    parser->unDoInit();
    EXPECT_EQ(flags(*parser, "a/b"), "rw");
}

TEST_F(AgentExternalMounts, AProfileIsMergedWithAMountRecordedBeforeTheFirstLoad) {
    auto const parser = device.agent("Fan");
    add(*parser, "a/b", "w");
    EXPECT_EQ(flags(*parser, "a/b"), "rw");
}

TEST_F(AgentExternalMounts, ThePathsAreThoseOfEveryAgent) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    add(*parser, "out/side");
    for (int round = 0; round < 2; ++round) {
        EXPECT_THAT(strings(parser->agentPaths("Fan")),
                    testing::UnorderedElementsAre("a/b", "out/side"));
        EXPECT_THAT(strings(parser->agentPaths("Never-added")), ElementsAre("out/side"));
        EXPECT_THAT(strings(parser->mountGroupPaths("Fan::recordMountArgs")),
                    ElementsAre("out/side"));
        parser->unDoInit();
        parser->doInit();
    }
}

TEST_F(AgentExternalMounts, ARefusedMountIsNotRecordedAgain) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    EXPECT_EQ(thrownText([&] { add(*parser, "out/side", "cD"); }),
              "c and D flags cannot be used simultaneously on mount path");
    parser->unDoInit();
    EXPECT_EQ(thrownText([&] { parser->doInit(); }), support::nothingThrown);
    EXPECT_FALSE(parser->infoExists("out/side"));
}

TEST_F(AgentExternalMounts, AMountWithAnotherTypeIsRefusedUnlessTypesAreMerged) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    EXPECT_EQ(
        thrownText([&] { parser->recordMountArgsExternal("a/b", args("U", "w"), true, false); }),
        "recordMountArgs: types don't match for path 'a/b': 'U'  'T'");
    EXPECT_EQ(flags(*parser, "a/b"), "r");
    parser->recordMountArgsExternal("a/b", args("U", "w"), true, true);
    EXPECT_EQ(parser->mountInfo("a/b"), args("T", "rw"));
}

TEST_F(AgentExternalMounts, AMountThatNoLongerFitsTheProfileThrowsWhenRecordedAgain) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    add(*parser, "a/c");
    parser->unDoInit();
    device.preinit("Base", "a/b,T\na/c,U\n");
    device.profile("Fan", "agentName: Fan\na/c,U,r\n");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }),
              "recordMountArgs: types don't match for path 'a/c': 'T'  'U'");
}

TEST_F(AgentExternalMounts, AnIntermediateMountStaysOne) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    parser->recordMountArgsExternal("out", args("Fen::Dir", ""), false, false);
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(parser->infoExists("out"));
        EXPECT_FALSE(parser->isExplicit("out"));
        EXPECT_THAT(strings(parser->agentPaths("Fan")), ElementsAre("a/b"));
        parser->unDoInit();
        parser->doInit();
    }
}

TEST_F(AgentExternalMounts, ALaterLoadTakesTheFlagsOfTheCall) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    add(*parser, "out/side", "rw");
    parser->updateMountFlags("out/side", KeldaUtil::parseMountTableFlags("c"));
    EXPECT_EQ(flags(*parser, "out/side"), "c");
    parser->unDoInit();
    EXPECT_EQ(flags(*parser, "out/side"), "rw");
}

TEST_F(AgentExternalMounts, RecordingAllOfThemAgainChangesNoRecord) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    add(*parser, "out/side");
    auto const before = parser->pathMountArgsMap();
    parser->replaySavedRMAs();
    EXPECT_EQ(parser->pathMountArgsMap(), before);
}

TEST_F(AgentExternalMounts, TheFirstLoadRecordsNoneAgainAndTheSecondEach) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    add(*parser, "one");
    add(*parser, "two");
    parser->unDoInit();
    support::TraceRecorder const trace;
    parser->doInit();
    auto const again = [&](char const* path) {
        return trace.count(8, "( path : " + std::string(path) +
                                  ", args : MountArgs( rw, T ), targetPath : true, mergeType : "
                                  "false, dynamic : true )") +
               trace.count(8, "( path : " + std::string(path) +
                                  ", args : MountArgs( T, rw ), targetPath : true, mergeType : "
                                  "false, dynamic : true )");
    };
    EXPECT_EQ(again("one"), 1);
    EXPECT_EQ(again("two"), 1);
}

TEST_F(AgentExternalMounts, AfterDisableUnDoInitTheyStayAsTheyAre) {
    auto const parser = device.agent("Fan");
    parser->doInit();
    add(*parser, "out/side");
    parser->disableUnDoInit();
    parser->updateMountFlags("out/side", KeldaUtil::parseMountTableFlags("c"));
    parser->unDoInit();
    EXPECT_EQ(flags(*parser, "out/side"), "c");
}

} // namespace
