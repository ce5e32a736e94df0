// Initialising on demand, un-initialising, initialising again.
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

class AgentLifeCycle : public testing::Test {
  protected:
    AgentLifeCycle() {
        device.preinit("Base", "a/b,T\na/c,T,createOnStandby\nCONFIG:conf/x,T\nsys/clock,T\n"
                               "slot/%slot,T,createOnMount\neach/%agentString,T,createOnMount\n");
        device.profile("Fan", "agentName: Fan-%slot\n"
                              "rootFlags: w\nconnectionFlags: SN\nsubAgent: Hub-%slot\n"
                              "Include: Common\nInclude: ConfigMountProfile\n"
                              "MountGroup: g,5\nslot/%slot,T,rw\n"
                              "Condition: some text\nelse/where,My::Type,r\n");
        device.profile("Common", "a/b,T,r\na/c,T,r\n");
        device.profile("Up", "agentName: Up\nactiveMount\nmatchActiveName\na/b,T,w\n");
        device.profile("DefaultMountGroup", "sys/clock,T,r\n");
        device.profile("DefaultMountGroupPerAgent", "each/%agentString,T,r\n");
    }

    support::CleanEnvironment environment;
    support::Device device;
};

// --- initialising ---

TEST_F(AgentLifeCycle, EveryQueryLoadsOnDemand) {
    using Query = std::function<void(Kelda::AgentMountFileInfo&)>;
    std::vector<std::pair<char const*, Query>> const queries{
        {"mountInfo", [](auto& p) { p.mountInfo("a/b"); }},
        {"infoExists", [](auto& p) { p.infoExists("a/b"); }},
        {"isExplicit", [](auto& p) { p.isExplicit("a/b"); }},
        {"getType", [](auto& p) { p.getType("a/b"); }},
        {"preinitPaths", [](auto& p) { p.preinitPaths(); }},
        {"rawPreinitPaths", [](auto& p) { p.rawPreinitPaths(); }},
        {"getPreinitAttr", [](auto& p) { p.getPreinitAttr("a/b"); }},
        {"pathIsConfig", [](auto& p) { p.pathIsConfig("conf/x", false); }},
        {"pathConfigInfoMap", [](auto& p) { p.pathConfigInfoMap(); }},
        {"pathConfigInfoMapHas", [](auto& p) { p.pathConfigInfoMapHas("conf/x"); }},
        {"addConfigChildPath", [](auto& p) { p.addConfigChildPath("conf/x/y"); }},
        {"addNonConfigPath", [](auto& p) { p.addNonConfigPath("a/b"); }},
        {"rootFlags", [](auto& p) { p.rootFlags(); }},
        {"connectionFlags", [](auto& p) { p.connectionFlags(); }},
        {"getIntermediateFlags",
         [](auto& p) { p.getIntermediateFlags(Fen::MountTable::Flags(0x80000), "a"); }},
        {"getAgentStrings", [](auto& p) { p.getAgentStrings(); }},
        {"includedProfileFiles", [](auto& p) { p.includedProfileFiles(); }},
        {"profileFilePaths", [](auto& p) { p.profileFilePaths("Fan", true); }},
        {"agentPaths", [](auto& p) { p.agentPaths("Fan-3"); }},
        {"fileIsLoaded", [](auto& p) { p.fileIsLoaded("Fan"); }},
        {"noDefaultMountGroup", [](auto& p) { p.noDefaultMountGroup(); }},
        {"foundMountProfile", [](auto& p) { p.foundMountProfile(); }},
        {"foundMountProfile(agent)", [](auto& p) { p.foundMountProfile("Fan-3"); }},
        {"subAgents", [](auto& p) { p.subAgents(); }},
        {"activeMount", [](auto& p) { p.activeMount(); }},
    };
    for (auto const& [name, query] : queries) {
        auto const parser = device.agent("Fan-3");
        query(*parser);
        EXPECT_TRUE(parser->isInitialized()) << name;
        EXPECT_EQ(parser->doInitCount(), 1) << name;
    }
}

TEST_F(AgentLifeCycle, InitialisingTwiceLoadsOnce) {
    auto const parser = device.agent("Fan-3");
    support::TraceRecorder const trace;
    parser->doInit();
    parser->doInit();
    EXPECT_EQ(trace.count(2, "Initializing MFI and setting isInitialized_ to true"), 1);
    EXPECT_EQ(parser->doInitCount(), 1);
}

TEST_F(AgentLifeCycle, AllProfilesAreLoadedOnlyOnceTheLastAgentIs) {
    struct Watcher : support::OpenAgent {
        using OpenAgent::OpenAgent;
        ~Watcher() override = default;
        int profileSearcher(FILE* file) override {
            seen.push_back(allProfilesLoaded_);
            return OpenAgent::profileSearcher(file);
        }
        std::vector<bool> seen;
    } parser(device);
    parser.addAgent("Fan-3", "");
    parser.doInit();
    EXPECT_THAT(parser.seen, testing::AllOf(testing::Not(IsEmpty()), testing::Each(false)));
    EXPECT_TRUE(parser.allProfilesLoaded_);
}

TEST_F(AgentLifeCycle, AnInitialisationEndsInHandleDoInit) {
    struct Watcher : support::OpenAgent {
        using OpenAgent::OpenAgent;
        ~Watcher() override = default;
        void handleDoInit() override {
            EXPECT_TRUE(allProfilesLoaded_);
            EXPECT_FALSE(isInitialized());
            OpenAgent::handleDoInit();
        }
    } parser(device);
    parser.addAgent("Fan-3", "");
    parser.doInit();
    EXPECT_TRUE(parser.isInitialized());
}

TEST_F(AgentLifeCycle, TheGroupsOfAnAgentAreSortedSets) {
    device.profile("Fan", "agentName: Fan-%slot\nMountGroup: g\n"
                          "slot/%slot,T,r\na/c,T,r\na/b,T,r\nMountGroup: h\nsys/clock,T,r\n"
                          "MountGroup: g\na/c,T,w\na/b,T,w\n");
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    EXPECT_THAT(strings(parser->mountGroupPaths("Fan::g")), ElementsAre("a/b", "a/c", "slot/3"));
    EXPECT_THAT(strings(parser->mountGroupPaths("Fan::h")), ElementsAre("sys/clock"));
}

// --- un-initialising ---

TEST_F(AgentLifeCycle, UninitialisingWhatWasNeverInitialisedDoesNothing) {
    auto const parser = device.agent("Fan-3");
    support::TraceRecorder const trace;
    parser->unDoInit();
    EXPECT_THAT(trace.at(2), IsEmpty());
    EXPECT_TRUE(parser->infoExists("slot/3"));
}

TEST_F(AgentLifeCycle, UninitialisingEmptiesWhatWasLoaded) {
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    support::TraceRecorder const trace;
    parser->unDoInit();
    EXPECT_EQ(trace.count(2, "Cleaning up memory and setting isInitialized_ to false"), 1);
    EXPECT_FALSE(parser->isInitialized());
    EXPECT_THAT(parser->pathTypeMap(), IsEmpty());
    EXPECT_THAT(parser->pathAttrMap(), IsEmpty());
    EXPECT_THAT(parser->pathMountArgsMap(), IsEmpty());
    EXPECT_THAT(parser->mountGroupPathsMap(), IsEmpty());
    EXPECT_THAT(parser->profileFilePathsMap(), IsEmpty());
    EXPECT_THAT(parser->profileFileIncludesMap(), IsEmpty());
    EXPECT_THAT(parser->agentStringProfileFileMap(), IsEmpty());
}

TEST_F(AgentLifeCycle, UninitialisingResetsFlagsKeywordsAndGroups) {
    support::OpenAgent parser(device);
    parser.addAgent("Fan-3", "");
    parser.addAgent("Up", "");
    parser.addAgent("Nobody", "");
    parser.doInit();
    parser.unDoInit();
    EXPECT_EQ(parser.rootFlags_, "");
    EXPECT_EQ(parser.connectionFlags_, "");
    EXPECT_THAT(parser.subAgents_, IsEmpty());
    EXPECT_EQ(parser.currentMountGroup_, "");
    EXPECT_FALSE(parser.activeMountSeen());
    EXPECT_FALSE(parser.matchActiveNameSeen());
    EXPECT_FALSE(parser.noDefaultMountGroup_);
    EXPECT_FALSE(parser.foundMountProfile_);
    EXPECT_FALSE(parser.conditionSeen_);
    EXPECT_FALSE(parser.inConditionalGroup_);
    EXPECT_THAT(parser.pathConfigInfoMap_, IsEmpty());
    EXPECT_THAT(parser.intermediatePaths_, IsEmpty());
    EXPECT_THAT(parser.agentStringsWithoutProfile_, IsEmpty());
}

TEST_F(AgentLifeCycle, UninitialisingKeepsAgentsOverridesAndFaults) {
    support::OpenAgent parser(device);
    parser.addAgent("Fan-3", "Other");
    parser.doInit();
    EXPECT_THROW(parser.mountInfo("no/such"), Fen::AgentException);
    parser.unDoInit();
    EXPECT_THAT(parser.exceptions(), testing::SizeIs(1));
    EXPECT_THAT(strings(parser.getTitleTemplates()), ElementsAre("%slot"));
    EXPECT_THAT(strings(parser.overrideAgentStrings_), ElementsAre("Other"));
    EXPECT_THAT(strings(parser.getAgentStrings()), ElementsAre("Fan-3"));
    EXPECT_EQ(parser.evaluateAliasValue("%sliceId"), "FixedSystem");
}

TEST_F(AgentLifeCycle, AnAgentAddedToAnUninitialisedParserIsOnlyQueued) {
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    parser->unDoInit();
    parser->addAgent("Up", "");
    parser->addAgent("Fan-3", "Other");
    EXPECT_THAT(parser->pathMountArgsMap(), IsEmpty());
    EXPECT_EQ(parser->mountInfo("a/b").flags, Fen::MountTable::Flags(0x80003));
}

// --- initialising again ---

TEST_F(AgentLifeCycle, AQueryAfterUninitialisingGivesTheSameAnswersAsBefore) {
    for (std::vector<std::string> const& agents : std::vector<std::vector<std::string>>{
             {"Fan-3"}, {"Up"}, {"Nobody"}, {"Fan-3", "Up", "Nobody"}, {"Fan-1", "Fan-2"}, {}}) {
        auto const parser = device.emptyAgent();
        for (auto const& agent : agents)
            parser->addAgent(agent, "");
        auto const before = answersOf(*parser);
        for (int round = 0; round < 2; ++round) {
            parser->unDoInit();
            EXPECT_EQ(firstDifference(before, answersOf(*parser)), "")
                << testing::PrintToString(agents);
        }
    }
}

TEST_F(AgentLifeCycle, InitialisingAgainIsCountedAndTraced) {
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    parser->unDoInit();
    support::TraceRecorder const trace;
    parser->doInit();
    EXPECT_EQ(trace.count(2, "doInit called 2 times"), 1);
    EXPECT_EQ(parser->doInitCount(), 2);
}

TEST_F(AgentLifeCycle, AKeywordThatIsGoneFromTheProfileIsForgotten) {
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    parser->unDoInit();
    device.profile("Fan", "agentName: Fan-%slot\na/b,T,r\n");
    EXPECT_EQ(parser->rootFlags(), "rtp");
    EXPECT_EQ(parser->connectionFlags(), "");
    EXPECT_THAT(parser->subAgents(), IsEmpty());
    EXPECT_TRUE(parser->infoExists("each/Fan-3"));
    EXPECT_FALSE(parser->infoExists("slot/3"));
}

TEST_F(AgentLifeCycle, NoDefaultMountGroupIsForgottenWithItsKeyword) {
    device.profile("Fan", "agentName: Fan-%slot\nnoDefaultMountGroup\n");
    auto const parser = device.agent("Fan-3");
    EXPECT_FALSE(parser->infoExists("sys/clock"));
    parser->unDoInit();
    device.profile("Fan", "agentName: Fan-%slot\n");
    EXPECT_TRUE(parser->infoExists("sys/clock"));
    EXPECT_FALSE(parser->noDefaultMountGroup());
}

TEST_F(AgentLifeCycle, TheActiveMountOfTheFirstTimeIsNoConflictTheSecondTime) {
    auto const parser = device.agent("Up");
    EXPECT_TRUE(parser->activeMount());
    parser->unDoInit();
    device.profile("Up", "agentName: Up\nCondition: some text\na/b,T,w\n");
    EXPECT_FALSE(parser->activeMount());
    EXPECT_EQ(parser->rootFlags(), "rtp");
}

TEST_F(AgentLifeCycle, TheConditionOfTheFirstTimeIsNoConflictTheSecondTime) {
    auto const parser = device.agent("Fan-3");
    EXPECT_FALSE(parser->activeMount());
    parser->unDoInit();
    device.profile("Fan", "agentName: Fan-%slot\nactiveMount\n");
    EXPECT_TRUE(parser->activeMount());
}

TEST_F(AgentLifeCycle, AnAgentThatHadNoProfileMayHaveOneTheSecondTime) {
    auto const parser = device.agent("New");
    EXPECT_FALSE(parser->foundMountProfile("New"));
    parser->unDoInit();
    device.profile("New", "agentName: New\nCondition: some text\na/b,T,r\n");
    EXPECT_TRUE(parser->foundMountProfile("New"));
    EXPECT_FALSE(parser->activeMount());
}

TEST_F(AgentLifeCycle, MatchActiveNameOfTheFirstTimeNeedsNoActiveMountTheSecondTime) {
    auto const parser = device.agent("Up");
    parser->doInit();
    parser->unDoInit();
    device.profile("Up", "agentName: Up\na/b,T,w\n");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }), support::nothingThrown);
}

// --- pinned parsers ---

TEST_F(AgentLifeCycle, AfterDisableUnDoInitUninitialisingChangesNothing) {
    auto const parser = device.agent("Fan-3");
    auto const before = answersOf(*parser);
    parser->disableUnDoInit();
    support::TraceRecorder const trace;
    parser->unDoInit();
    EXPECT_THAT(trace.at(2), IsEmpty());
    EXPECT_TRUE(parser->isInitialized());
    EXPECT_EQ(firstDifference(before, answersOf(*parser)), "");
    EXPECT_EQ(parser->doInitCount(), 1);
}

TEST_F(AgentLifeCycle, DisableUnDoInitBeforeLoadingPinsWhatIsLoadedLater) {
    auto const parser = device.agent("Fan-3");
    parser->disableUnDoInit();
    parser->doInit();
    parser->unDoInit();
    EXPECT_TRUE(parser->isInitialized());
    EXPECT_EQ(parser->pathMountArgsMap().count("slot/3"), 1U);
}

// --- clearing what profiles brought ---

TEST_F(AgentLifeCycle, ClearingProfileDataForgetsWhichAgentsHadNoProfile) {
    auto const parser = device.agent("Nobody");
    EXPECT_FALSE(parser->foundMountProfile("Nobody"));
    parser->clearProfileData();
    EXPECT_TRUE(parser->foundMountProfile("Nobody"));
}

TEST_F(AgentLifeCycle, ClearingProfileDataKeepsWhatPreinitFilesBrought) {
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    parser->clearProfileData();
    EXPECT_THAT(parser->pathMountArgsMap(), IsEmpty());
    EXPECT_THAT(parser->agentStringProfileFileMap(), IsEmpty());
    EXPECT_THAT(parser->getTitleTemplates(), IsEmpty());
    EXPECT_EQ(parser->rootFlags(), "");
    EXPECT_EQ(parser->getType("slot/*"), "T");
    EXPECT_TRUE(parser->pathIsConfig("conf/x", false));
}

} // namespace
