// What the published entity traces: the name of each operation on entry, at level 5.
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/PublishedDevice.h"
#include "support/TraceRecorder.h"

namespace {

using Kelda::AgentMountFileInfoWrap;
using support::TraceLine;
using support::Wrap;
using testing::ElementsAre;
using testing::IsEmpty;

using Texts = std::vector<std::string>;

class WrapTraces : public testing::Test {
  protected:
    // The messages of the entity while it does something, each of which must be of level 5.
    template <class Action>
    static Texts tracesOf(Action const& action) {
        support::TraceRecorder const trace("MountFileInfoWrap");
        action();
        for (auto const& line : trace.lines())
            EXPECT_EQ(line.level, 5) << line;
        return trace.at(5);
    }

    support::CleanEnvironment environment;
    support::PublishedDevice device;
    Wrap const wrap = device.wrap();
};

struct Row {
    char const* name;
    std::function<void(AgentMountFileInfoWrap&)> operation;
    Texts traces;
};

TEST_F(WrapTraces, EachOperationTracesItsNameOnEntry) {
    for (auto const& row : std::vector<Row>{
             {"addAgent",
              [](auto& w) { w.addAgent("Up", "Other"); },
              {"addAgent ( \"Up\", \"Other\" ) "}},
             {"addAgent without override",
              [](auto& w) { w.addAgent("Up", ""); },
              {"addAgent ( \"Up\", \"\" ) "}},
             {"getMountPathInfo",
              [](auto& w) { w.getMountPathInfo("slot/3"); },
              {"getMountPathInfo ( \"slot/3\" )"}},
             {"getMountPathInfo with a slash",
              [](auto& w) { w.getMountPathInfo("slot/3/"); },
              {"getMountPathInfo ( \"slot/3/\" )"}},
             {"getMountPathInfoAll",
              [](auto& w) { w.getMountPathInfoAll("Nobody"); },
              {"getMountPathInfoAll"}},
             {"getConfigPathInfo", [](auto& w) { w.getConfigPathInfo(); }, {"getConfigPathInfo"}},
             {"getPreinitPathInfo",
              [](auto& w) { w.getPreinitPathInfo(); },
              {"getPreinitPathInfo"}},
             {"isLikelyTest",
              [](auto& w) { w.isLikelyTest(); },
              {"isLikelyTest", " true because !calledFromContainer() "}},
             {"disableUnDoInit", [](auto& w) { w.disableUnDoInit(); }, {"disableUnDoInit"}},
             {"handleDestruction", [](auto& w) { w.handleDestruction(); }, {"handleDestruction"}},
         }) {
        auto const entity = device.wrap();
        EXPECT_EQ(tracesOf([&] { row.operation(*entity); }), row.traces) << row.name;
    }
}

TEST_F(WrapTraces, OperationsThatGoPathByPathTraceEachPathAsWell) {
    EXPECT_THAT(tracesOf([&] { wrap->getMountPathInfoFile("Fan", false); }),
                ElementsAre("getMountPathInfoFile", "getMountPathInfo ( \"conf/x\" )",
                            "getMountPathInfo ( \"slot/3\" )"));
    EXPECT_THAT(tracesOf([&] { wrap->getMountPathInfoGroup("Fan::g"); }),
                ElementsAre("getMountPathInfoGroup", "getMountPathInfo ( \"conf/x\" )",
                            "getMountPathInfo ( \"slot/3\" )"));
    auto const all = tracesOf([&] { wrap->getMountPathInfoAll("Fan-3"); });
    EXPECT_EQ(all.size(), 8U) << "itself and seven paths";
    EXPECT_EQ(all.front(), "getMountPathInfoAll");
    EXPECT_THAT(all, testing::Contains("getMountPathInfo ( \"a/b\" )").Times(1));
}

TEST_F(WrapTraces, APathThatTwoFilesMountIsTracedForEach) {
    EXPECT_THAT(tracesOf([&] { wrap->getMountPathInfoFile("Fan*", true); }),
                testing::Contains("getMountPathInfo ( \"a/b\" )").Times(2));
}

TEST_F(WrapTraces, ACollectionThatIsFilledAlreadyIsAskedForAudibly) {
    wrap->getConfigPathInfo();
    wrap->getPreinitPathInfo();
    EXPECT_THAT(tracesOf([&] { wrap->getConfigPathInfo(); }), ElementsAre("getConfigPathInfo"));
    EXPECT_THAT(tracesOf([&] { wrap->getPreinitPathInfo(); }), ElementsAre("getPreinitPathInfo"));
}

TEST_F(WrapTraces, TheNameComesBeforeAnythingIsDone) {
    device.profile("Fan", "agentName: Fan-%slot\nnonsense\n");
    for (auto const& row : std::vector<Row>{
             {"", [](auto& w) { w.getMountPathInfo("a"); }, {"getMountPathInfo ( \"a\" )"}},
             {"", [](auto& w) { w.getMountPathInfoAll("Fan-3"); }, {"getMountPathInfoAll"}},
             {"", [](auto& w) { w.getMountPathInfoFile("a", true); }, {"getMountPathInfoFile"}},
             {"", [](auto& w) { w.getMountPathInfoGroup("a"); }, {"getMountPathInfoGroup"}},
             {"", [](auto& w) { w.getConfigPathInfo(); }, {"getConfigPathInfo"}},
             {"", [](auto& w) { w.getPreinitPathInfo(); }, {"getPreinitPathInfo"}},
         }) {
        auto const failing = [&] {
            EXPECT_THROW(row.operation(*wrap), Fen::AgentException) << row.traces.front();
        };
        EXPECT_EQ(tracesOf(failing), row.traces);
    }
}

TEST_F(WrapTraces, TheOtherOperationsAreSilent) {
    wrap->getMountPathInfo("slot/3");
    EXPECT_THAT(tracesOf([&] {
                    wrap->fileIsLoaded("Fan");
                    wrap->configPathColIs();
                    wrap->preinitPathColIs();
                    wrap->configPathColDel();
                    wrap->preinitPathColDel();
                    wrap->calledFromContainerIs(true);
                    wrap->mountFileInfoPtrIs(wrap->mountFileInfoPtr());
                }),
                IsEmpty());
}

// --- life cycle ---

TEST_F(WrapTraces, AnEntityIsInitialisedOnceAudibly) {
    EXPECT_THAT(tracesOf([&] { device.wrap()->doInit(); }),
                ElementsAre("doInit", "handleDestruction"));
}

TEST_F(WrapTraces, InitialisingWhatIsInitialisedIsSilent) {
    EXPECT_THAT(tracesOf([&] { wrap->doInit(); }), IsEmpty());
}

TEST_F(WrapTraces, InitialisingAnewIsTraced) {
    EXPECT_THAT(tracesOf([&] {
                    wrap->handleDestruction();
                    wrap->doInit();
                }),
                ElementsAre("handleDestruction", "doInit"));
}

TEST_F(WrapTraces, HandlingDestructionIsTracedEvenWithoutAParser) {
    EXPECT_THAT(
        tracesOf([&] {
            auto const entity = device.wrap();
            entity->handleDestruction();
            entity->handleDestruction();
        }),
        ElementsAre("doInit", "handleDestruction", "handleDestruction", "handleDestruction"));
}

// --- whether the process is a test ---

TEST_F(WrapTraces, AnAgentInItsContainerNamesItsAgentStrings) {
    wrap->addAgent("Up", "Other");
    wrap->calledFromContainerIs(true);
    EXPECT_THAT(tracesOf([&] { EXPECT_FALSE(wrap->isLikelyTest()); }),
                ElementsAre("isLikelyTest", " false w/ agentNames Fan-3 Up "));
}

TEST_F(WrapTraces, AnEmptyAgentStringIsFollowedByABlankToo) {
    auto const nameless = device.wrap("");
    nameless->calledFromContainerIs(true);
    EXPECT_THAT(tracesOf([&] { nameless->isLikelyTest(); }),
                ElementsAre("isLikelyTest", " false w/ agentNames  "));
}

TEST_F(WrapTraces, OnlyNamingTheAgentStringsLoadsThem) {
    tracesOf([&] { wrap->isLikelyTest(); });
    wrap->calledFromContainerIs(true);
    EXPECT_FALSE(wrap->isLikelyTest());
    EXPECT_FALSE(wrap->mountFileInfoPtr()->isInitialized());
    tracesOf([&] { wrap->isLikelyTest(); });
    EXPECT_TRUE(wrap->mountFileInfoPtr()->isInitialized());
}

// --- switching traces off ---

TEST_F(WrapTraces, NothingIsTracedWhileLevelFiveIsOff) {
    support::TraceRecorder const trace("MountFileInfoWrap", static_cast<std::uint16_t>(~0x20U));
    auto const entity = device.wrap();
    entity->addAgent("Up", "");
    entity->getMountPathInfoAll("Fan-3");
    entity->getPreinitPathInfo();
    entity->calledFromContainerIs(true);
    entity->isLikelyTest();
    entity->handleDestruction();
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(WrapTraces, OnlyLevelFiveIsNeeded) {
    support::TraceRecorder const trace("MountFileInfoWrap", 0x20);
    wrap->isLikelyTest();
    EXPECT_THAT(trace.lines(), ElementsAre(TraceLine{5, "isLikelyTest"},
                                           TraceLine{5, " true because !calledFromContainer() "}));
}

TEST_F(WrapTraces, TheParserTracesUnderItsOwnName) {
    support::TraceRecorder const trace("MountFileInfo");
    wrap->getMountPathInfo("slot/3/");
    EXPECT_EQ(trace.count(7, "( path : slot/3 )"), 1) << "the path without its slash";
    for (auto const& text : trace.at(5))
        EXPECT_THAT(text, testing::Not(testing::StartsWith("getMountPathInfo")));
}

} // namespace
