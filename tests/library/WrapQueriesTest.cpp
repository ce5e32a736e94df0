// What the published entity answers about mounts: one path, the paths of an agent, a file or a
// group.
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/MountRecords.h"
#include "support/PublishedDevice.h"

namespace {

using Kelda::AgentMountFileInfoWrap;
using support::elementsOf;
using support::mountLines;
using support::strings;
using support::textOf;
using support::Wrap;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class WrapQueries : public testing::Test {
  protected:
    std::vector<std::string> all(Rook::String const& agent) const {
        return elementsOf(wrap->getMountPathInfoAll(agent));
    }
    std::vector<std::string> file(Rook::String const& name, bool withIncludes) const {
        return elementsOf(wrap->getMountPathInfoFile(name, withIncludes));
    }
    std::vector<std::string> group(Rook::String const& name) const {
        return elementsOf(wrap->getMountPathInfoGroup(name));
    }
    Kelda::MountFileInfo& parser() const { return *wrap->mountFileInfoPtr(); }

    support::CleanEnvironment environment;
    support::PublishedDevice device;
    Wrap const wrap = device.wrap();
};

// --- loading ---

TEST_F(WrapQueries, TheFirstQuestionLoadsEverything) {
    std::vector<std::pair<char const*, std::function<void(AgentMountFileInfoWrap&)>>> const queries{
        {"getMountPathInfo", [](auto& w) { w.getMountPathInfo("slot/3"); }},
        {"getMountPathInfoAll", [](auto& w) { w.getMountPathInfoAll("Fan-3"); }},
        {"getMountPathInfoFile", [](auto& w) { w.getMountPathInfoFile("Fan", true); }},
        {"getMountPathInfoGroup", [](auto& w) { w.getMountPathInfoGroup("Fan::g"); }},
        {"getConfigPathInfo", [](auto& w) { w.getConfigPathInfo(); }},
        {"getPreinitPathInfo", [](auto& w) { w.getPreinitPathInfo(); }},
        {"fileIsLoaded", [](auto& w) { w.fileIsLoaded("Fan"); }},
    };
    for (auto const& [name, query] : queries) {
        auto const fresh = device.wrap();
        query(*fresh);
        EXPECT_TRUE(fresh->mountFileInfoPtr()->isInitialized()) << name;
        EXPECT_EQ(fresh->mountFileInfoPtr()->doInitCount(), 1) << name;
        query(*fresh);
        EXPECT_EQ(fresh->mountFileInfoPtr()->doInitCount(), 1) << name;
    }
}

TEST_F(WrapQueries, WhatIsNoQuestionLoadsNothing) {
    wrap->addAgent("Up", "");
    wrap->isLikelyTest();
    wrap->calledFromContainerIs(true);
    wrap->isLikelyTest();
    wrap->configPathColIs();
    wrap->preinitPathColIs();
    wrap->disableUnDoInit();
    EXPECT_FALSE(parser().isInitialized());
}

// --- agents ---

TEST_F(WrapQueries, AFurtherAgentIsQueuedBeforeLoadingAndLoadedAtOnceAfterwards) {
    wrap->addAgent("Fan-4", "");
    EXPECT_THAT(all("Fan-4"), Contains("slot/4 Slot rw"));
    wrap->addAgent("Fan-5", "Other");
    EXPECT_EQ(support::recordOf(parser(), "slot/5"), "Slot rw explicit");
    EXPECT_THAT(all("Fan-5"), Contains("each/Other Each r"));
    EXPECT_THAT(strings(parser().getAgentStrings()), ElementsAre("Fan-3", "Fan-4", "Fan-5"));
}

TEST_F(WrapQueries, AnOverrideStandsForTheAgentStringInItsProfiles) {
    auto const overridden = device.wrap("Fan-3", "Other");
    EXPECT_EQ(textOf(overridden->getMountPathInfo("each/Other")), "each/Other Each r");
    EXPECT_EQ(textOf(overridden->getMountPathInfo("slot/3")), "slot/3 Slot rw");
    EXPECT_FALSE(overridden->mountFileInfoPtr()->infoExists("each/Fan-3"));
}

TEST_F(WrapQueries, WithoutProfilesEveryAgentIsOneWithoutAProfile) {
    auto const none = Kelda::agentMountFileInfoWrapFactory(false, "Fan-3", "", device.preinitDir(),
                                                           device.profileDir(), false);
    EXPECT_TRUE(none->getMountPathInfoAll("Fan-3")->empty());
    EXPECT_FALSE(none->fileIsLoaded("Fan"));
    EXPECT_FALSE(none->mountFileInfoPtr()->foundMountProfile("Fan-3"));
    EXPECT_EQ(none->getPreinitPathInfo()->size(), 10U) << "preinit files are read all the same";
}

TEST_F(WrapQueries, WithoutMergedFlagsNothingIsMountedAboveThePathsOfAnAgent) {
    for (bool const dontMerge : {false, true}) {
        auto const up = Kelda::agentMountFileInfoWrapFactory(
            dontMerge, "Up", "", device.preinitDir(), device.profileDir(), true);
        EXPECT_EQ(textOf(up->getMountPathInfo("d/e/f")), "d/e/f Leaf w");
        EXPECT_EQ(up->mountFileInfoPtr()->infoExists("d/e"), !dontMerge);
    }
    auto const up = device.wrap("Up");
    for (char const* const path : {"d", "d/e"})
        EXPECT_EQ(textOf(up->getMountPathInfo(path)),
                  support::mountLine(*device.agent("Up"), path));
}

TEST_F(WrapQueries, PinningKeepsWhatWasLoaded) {
    all("Fan-3");
    wrap->disableUnDoInit();
    parser().unDoInit();
    EXPECT_TRUE(parser().isInitialized());
    EXPECT_EQ(support::recordOf(parser(), "slot/3"), "Slot rw explicit");
}

TEST_F(WrapQueries, AfterUninitialisingTheParserTheNextQuestionLoadsAgain) {
    auto const before = all("Fan-3");
    parser().unDoInit();
    EXPECT_EQ(all("Fan-3"), before);
    EXPECT_EQ(parser().doInitCount(), 2);
}

// --- one path ---

TEST_F(WrapQueries, APathHasItsTypeAndItsFlags) {
    EXPECT_EQ(textOf(wrap->getMountPathInfo("slot/3")), "slot/3 Slot rw");
    EXPECT_EQ(textOf(wrap->getMountPathInfo("conf/x")), "conf/x Config::X wi");
    EXPECT_EQ(textOf(wrap->getMountPathInfo("a/b")), "a/b T rw") << "two files mount it";
}

TEST_F(WrapQueries, FlagsAreWrittenAsTheFrameworkWritesThem) {
    for (char const* const letters : {"r", "w", "rw", "wi", "tny", "rtp", "wcd", ""}) {
        parser().recordMountArgsExternal("a/new", support::mount("T", letters), true, false);
        EXPECT_EQ(wrap->getMountPathInfo("a/new")->flags(),
                  KeldaUtil::mountTableFlagsToString(parser().mountInfo("a/new").flags))
            << letters;
    }
    EXPECT_EQ(wrap->getMountPathInfo("a/new")->flags(), "rwcitdpn");
}

TEST_F(WrapQueries, OneSlashAtTheEndOfAPathIsDropped) {
    auto const info = wrap->getMountPathInfo("a/b/");
    EXPECT_EQ(info->path(), "a/b");
    EXPECT_TRUE(*info == *wrap->getMountPathInfo("a/b"));
}

TEST_F(WrapQueries, EveryAnswerAboutAPathIsANewObject) {
    auto const one = wrap->getMountPathInfo("a/b");
    auto const other = wrap->getMountPathInfo("a/b");
    EXPECT_FALSE(one == other);
    EXPECT_TRUE(one->isEq(*other));
    EXPECT_EQ(one->references(), 1U);
}

// --- the paths of an agent ---

std::vector<std::string> const fanMounts{
    "a/b T rw",          "a/c T r",        "conf/x Config::X wi",   "d/e/f Leaf r",
    "each/Fan-3 Each r", "slot/3 Slot rw", "sys/clock Sys::Clock r"};

TEST_F(WrapQueries, AnAgentHasThePathsOfItsProfilesTheirIncludesAndTheDefaultGroups) {
    EXPECT_EQ(all("Fan-3"), fanMounts);
    EXPECT_EQ(all("Fan-3"),
              mountLines(*device.agent("Fan-3"), device.agent("Fan-3")->agentPaths("Fan-3")));
}

TEST_F(WrapQueries, AnAgentIsKnownByTheNameOfItsProfileToo) {
    EXPECT_EQ(all("Fan"),
              mountLines(*device.agent("Fan-3"), device.agent("Fan-3")->agentPaths("Fan")));
    EXPECT_THAT(all("Fan"), Contains("slot/3 Slot rw"));
}

TEST_F(WrapQueries, AnAgentThatWasNeverAddedHasNoPaths) {
    for (char const* const agent : {"Fan-4", "Up", "fan-3", "Nobody", ""})
        EXPECT_THAT(all(agent), IsEmpty()) << agent;
}

TEST_F(WrapQueries, PathsRecordedAtRunTimeAreEveryAgents) {
    parser().recordMountArgsExternal("a/new", support::mount("T", "w"), true, false);
    parser().recordMountArgsExternal("a/above", support::mount("T", "w"), false, false);
    EXPECT_THAT(all("Nobody"), ElementsAre("a/new T w"));
    EXPECT_THAT(all("Fan-3"), Contains("a/new T w"));
}

TEST_F(WrapQueries, EveryAnswerAboutPathsIsANewCollection) {
    auto const one = wrap->getMountPathInfoAll("Fan-3");
    auto const other = wrap->getMountPathInfoAll("Fan-3");
    EXPECT_FALSE(one == other);
    EXPECT_EQ(one->references(), 1U);
    one->mountPathDataDelAll();
    EXPECT_EQ(elementsOf(other), fanMounts) << "whoever got one may change it";
    EXPECT_EQ(all("Fan-3"), fanMounts);
    EXPECT_FALSE(wrap->getMountPathInfoFile("Fan", true) ==
                 wrap->getMountPathInfoFile("Fan", true));
    EXPECT_FALSE(wrap->getMountPathInfoGroup("Fan::g") == wrap->getMountPathInfoGroup("Fan::g"));
}

// --- the paths of a file ---

TEST_F(WrapQueries, AFileHasItsOwnPaths) {
    EXPECT_THAT(file("Fan", false), ElementsAre("conf/x Config::X wi", "slot/3 Slot rw"));
    EXPECT_THAT(file("Shared", false), ElementsAre("a/b T rw", "a/c T r"));
    EXPECT_THAT(file("DefaultMountGroup", false), ElementsAre("sys/clock Sys::Clock r"));
    EXPECT_THAT(file("DefaultMountGroupPerAgent", true), ElementsAre("each/Fan-3 Each r"));
}

TEST_F(WrapQueries, WithIncludesAFileHasThoseOfItsIncludesToo) {
    EXPECT_THAT(file("Fan", true),
                ElementsAre("a/b T rw", "a/c T r", "conf/x Config::X wi", "slot/3 Slot rw"));
}

TEST_F(WrapQueries, APatternStandsForAllFilesThatBeginAlike) {
    EXPECT_THAT(file("Fan*", false),
                ElementsAre("a/b T rw", "conf/x Config::X wi", "d/e/f Leaf r", "slot/3 Slot rw"));
    EXPECT_THAT(file("Default*", false),
                ElementsAre("each/Fan-3 Each r", "sys/clock Sys::Clock r"));
    EXPECT_EQ(file("*", false), fanMounts);
}

TEST_F(WrapQueries, APathThatTwoFilesMountIsThereOnce) {
    EXPECT_THAT(file("Fan*", true), ElementsAre("a/b T rw", "a/c T r", "conf/x Config::X wi",
                                                "d/e/f Leaf r", "slot/3 Slot rw"));
    EXPECT_EQ(parser().profileFilePaths("Fan*", true).size(), 6U) << "which the parser has twice";
}

TEST_F(WrapQueries, PathsRecordedAtRunTimeHaveAFileAndAGroupOfTheirOwn) {
    parser().recordMountArgsExternal("a/new", support::mount("T", "w"), true, false);
    EXPECT_THAT(file("recordMountArgs", true), ElementsAre("a/new T w"));
    EXPECT_THAT(group("::recordMountArgs"), ElementsAre("a/new T w"));
}

TEST_F(WrapQueries, AFileIsLoadedWhenItBroughtAPath) {
    for (char const* const name : {"Fan", "FanBudget", "Shared", "DefaultMountGroup"})
        EXPECT_TRUE(wrap->fileIsLoaded(name)) << name;
    for (char const* const name : {"Up", "fan", "Fan*", "Base", "profiles/Fan", ""})
        EXPECT_FALSE(wrap->fileIsLoaded(name)) << name;
}

// --- the paths of a group ---

TEST_F(WrapQueries, AGroupHasItsPaths) {
    EXPECT_THAT(group("Fan::g"), ElementsAre("conf/x Config::X wi", "slot/3 Slot rw"));
    EXPECT_THAT(group("Fan::"), ElementsAre("a/b T rw", "a/c T r", "d/e/f Leaf r"));
    EXPECT_THAT(group("Fan::default"), ElementsAre("each/Fan-3 Each r", "sys/clock Sys::Clock r"));
}

TEST_F(WrapQueries, TheQuestionForAGroupLoadsAlthoughTheParsersOwnDoesNot) {
    EXPECT_THROW(device.agent("Fan-3")->mountGroupPaths("Fan::g"), Fen::AgentException);
    ASSERT_FALSE(parser().isInitialized());
    EXPECT_THAT(group("Fan::g"), ElementsAre("conf/x Config::X wi", "slot/3 Slot rw"));
    parser().unDoInit();
    EXPECT_EQ(group("Fan::g").size(), 2U);
}

// --- tests ---

TEST_F(WrapQueries, AProcessIsLikelyATestUntilItsContainerCallsIt) {
    EXPECT_TRUE(wrap->isLikelyTest());
    wrap->calledFromContainerIs(true);
    EXPECT_FALSE(wrap->isLikelyTest());
    wrap->calledFromContainerIs(false);
    EXPECT_TRUE(wrap->isLikelyTest());
}

} // namespace
