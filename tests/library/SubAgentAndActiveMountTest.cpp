// Sub-agents, the keywords "activeMount", "matchActiveName" and "noDefaultMountGroup", the queries
// for them, and the root flag of passive agents.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Aliases.h"
#include "support/Device.h"
#include "support/FaultTexts.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::LenientParser;
using support::lineOf;
using support::messages;
using support::strings;
using testing::ElementsAre;
using testing::IsEmpty;

// A lenient parser that counts as loaded, so that queries load nothing.
class KeywordLines : public testing::Test {
  protected:
    KeywordLines() { parser_.initializedIs(true); }

    LenientParser parser_;
};

using SubAgentLines = KeywordLines;

TEST_F(SubAgentLines, NameFurtherAgentsInTheirOrder) {
    parser_.loadProfile("subAgent:Psu\nsubAgent:Fan-3\n", "First");
    parser_.loadProfile("subAgent:Psu\n", "Second");
    EXPECT_THAT(messages(parser_), IsEmpty());
    EXPECT_THAT(strings(parser_.subAgents()), ElementsAre("Psu", "Fan-3", "Psu"));
}

TEST_F(SubAgentLines, MayBeWrittenInAnyCaseAndWithBlanks) {
    parser_.loadProfile("SUBAGENT : Psu\n  subagent:F a n # note\n");
    EXPECT_THAT(strings(parser_.subAgents()), ElementsAre("Psu", "Fan"));
}

TEST_F(SubAgentLines, HaveTheirAliasesExpanded) {
    parser_.perFileAliasesPushBack("%agentString", "Fan-3");
    parser_.loadProfile("alias:%sub=led\nsubAgent:%agentString-%SUB/%sliceId\n");
    EXPECT_THAT(messages(parser_), IsEmpty());
    EXPECT_THAT(strings(parser_.subAgents()), ElementsAre("Fan-3-led/FixedSystem"));
}

TEST_F(SubAgentLines, WithAnUndefinedAliasAreReportedAndKept) {
    parser_.loadProfile("subAgent:Fan-%no\n", "Fan");
    ASSERT_EQ(parser_.exceptions().size(), 1U);
    EXPECT_EQ(parser_.exceptions()[0],
              (Kelda::MfiException{"Fan", "No such alias defined: '%no'", 1}));
    EXPECT_THAT(strings(parser_.subAgents()), ElementsAre("Fan-"));
}

TEST_F(SubAgentLines, MayHoldAnEmptyName) {
    parser_.handleSubAgentLine(lineOf("subAgent:"));
    EXPECT_THAT(strings(parser_.subAgents()), ElementsAre(""));
}

TEST_F(SubAgentLines, MayHoldANameAsLongAsALine) {
    std::string const name(1014, 'x');
    parser_.handleSubAgentLine(lineOf("subAgent:" + name));
    EXPECT_THAT(strings(parser_.subAgents()), ElementsAre(name));
}

TEST_F(SubAgentLines, ThatOutgrowTheLineAreCutAndReported) {
    std::string const name = "%a/" + std::string(1011, 'x');
    parser_.perFileAliasesPushBack("%a", std::string(20, 'y'));
    parser_.handleSubAgentLine(lineOf("subAgent:" + name));
    EXPECT_THAT(messages(parser_),
                ElementsAre("Path buffer too small to expand alias from '%a'to '" +
                            std::string(20, 'y') + "' in " + name));
    EXPECT_THAT(strings(parser_.subAgents()),
                ElementsAre(std::string(20, 'y') + "/" + std::string(1002, 'x')));
}

TEST_F(SubAgentLines, AreAnsweredAsACopy) {
    parser_.handleSubAgentLine(lineOf("subAgent:Psu"));
    parser_.subAgents().clear();
    EXPECT_THAT(strings(parser_.subAgents()), ElementsAre("Psu"));
}

TEST(SubAgentsOfAnAgent, AreForgottenByUnInitialisingAndReadAgain) {
    support::Device device;
    device.profile("Fan", "agentName:Fan\nsubAgent:%agentString-led\n");
    auto const agent = device.agent("Fan");
    for (int round = 0; round < 2; ++round) {
        EXPECT_THAT(strings(agent->subAgents()), ElementsAre("Fan-led"));
        agent->unDoInit();
    }
}

using Keywords = KeywordLines;

TEST_F(Keywords, AreOffAtFirst) {
    EXPECT_FALSE(parser_.noDefaultMountGroup());
    EXPECT_FALSE(parser_.activeMountSeen());
    EXPECT_FALSE(parser_.matchActiveNameSeen());
    EXPECT_FALSE(parser_.foundMountProfile());
    EXPECT_THAT(parser_.subAgents(), IsEmpty());
}

TEST_F(Keywords, AreWholeLinesInAnyCase) {
    parser_.loadProfile(" noDefault MOUNTGROUP \nACTIVEMOUNT # yes\nMatchActiveName\n");
    EXPECT_THAT(messages(parser_), IsEmpty());
    EXPECT_TRUE(parser_.noDefaultMountGroup());
    EXPECT_TRUE(parser_.activeMountSeen());
    EXPECT_TRUE(parser_.matchActiveNameSeen());
    EXPECT_TRUE(parser_.foundMountProfile());
}

TEST_F(Keywords, WithMoreOnTheirLineAreSyntaxErrors) {
    for (std::string const line : {"noDefaultMountGroups", "activeMount:", "activeMounts",
                                   "matchActiveName:1", "xactiveMount", "noDefaultMountGroup,1"}) {
        LenientParser parser;
        parser.initializedIs(true);
        parser.loadProfile(line + "\n");
        EXPECT_THAT(messages(parser), ElementsAre("syntax error: '" + line + "'"));
        EXPECT_FALSE(parser.noDefaultMountGroup() || parser.activeMountSeen() ||
                     parser.matchActiveNameSeen());
    }
}

TEST_F(Keywords, OutliveTheProfileThatHoldsThem) {
    parser_.loadProfile("noDefaultMountGroup\nactiveMount\nmatchActiveName\n", "First");
    parser_.loadProfile("# empty\n", "Second");
    EXPECT_TRUE(parser_.noDefaultMountGroup());
    EXPECT_TRUE(parser_.activeMountSeen());
    EXPECT_TRUE(parser_.matchActiveNameSeen());
}

TEST_F(Keywords, AreTraced) {
    support::TraceRecorder const trace;
    parser_.handleNoDefaultMountGroupLine();
    parser_.handleMatchActiveNameLine();
    EXPECT_TRUE(trace.has(8, "handleNoDefaultMountGroupLine"));
    EXPECT_TRUE(trace.has(8, "matchActiveName keyword found"));
    EXPECT_TRUE(parser_.noDefaultMountGroup());
    EXPECT_TRUE(parser_.matchActiveNameSeen());
}

TEST_F(Keywords, MatchActiveNameNeedsActiveMountSomewhereInTheProfile) {
    parser_.loadProfile("matchActiveName\n\n", "Fan");
    ASSERT_EQ(parser_.exceptions().size(), 1U);
    EXPECT_EQ(parser_.exceptions()[0],
              (Kelda::MfiException{"Fan",
                                   "'matchActiveName' keyword requires 'activeMount' keyword", 2}));
}

TEST_F(Keywords, ActiveMountIsSetByItsHandler) {
    parser_.handleActiveMountLine();
    EXPECT_TRUE(parser_.activeMountSeen());
    EXPECT_THAT(messages(parser_), IsEmpty());
}

// Each query by name: asks it, whatever it answers.
struct Query {
    char const* name;
    void (*ask)(Kelda::MountFileInfo&);
};

std::vector<Query> const queries{
    {"noDefaultMountGroup", [](Kelda::MountFileInfo& parser) { parser.noDefaultMountGroup(); }},
    {"foundMountProfile", [](Kelda::MountFileInfo& parser) { parser.foundMountProfile(); }},
    {"subAgents", [](Kelda::MountFileInfo& parser) { parser.subAgents(); }},
    {"activeMount", [](Kelda::MountFileInfo& parser) { parser.activeMount(); }},
};

TEST(KeywordQueries, LoadEverythingFirst) {
    for (auto const& query : queries) {
        support::Device const device;
        auto const agent = device.agent("Fan");
        query.ask(*agent);
        EXPECT_TRUE(agent->isInitialized()) << query.name;
        query.ask(*agent);
        EXPECT_EQ(agent->doInitCount(), 1) << query.name;
    }
}

TEST(KeywordQueries, AreTracedAsPublicOperations) {
    for (auto const& query : queries) {
        LenientParser parser;
        parser.initializedIs(true);
        parser.allProfilesLoadedIs(true);
        support::TraceRecorder const trace;
        query.ask(parser);
        EXPECT_THAT(trace.at(7), testing::SizeIs(1)) << query.name;
    }
}

TEST(KeywordQueries, AnswerWhatTheAgentsProfilesSay) {
    support::Device device;
    device.profile("Fan", "agentName:Fan\nactiveMount\nnoDefaultMountGroup\nsubAgent:Led\n");
    auto const agent = device.agent("Fan");
    EXPECT_TRUE(agent->noDefaultMountGroup());
    EXPECT_TRUE(agent->foundMountProfile());
    EXPECT_TRUE(agent->activeMount());
    EXPECT_THAT(strings(agent->subAgents()), ElementsAre("Led"));
}

TEST(KeywordQueries, AnswerForAPassiveAgent) {
    support::Device device;
    device.profile("Fan", "agentName:Fan\n");
    auto const agent = device.agent("Fan");
    EXPECT_FALSE(agent->noDefaultMountGroup());
    EXPECT_TRUE(agent->foundMountProfile());
    EXPECT_FALSE(agent->activeMount());
    EXPECT_THAT(agent->subAgents(), IsEmpty());
}

TEST(KeywordQueries, ForgetTheKeywordsWithUnInitialising) {
    support::Device device;
    device.profile("Fan", "agentName:Fan\nactiveMount\nnoDefaultMountGroup\nmatchActiveName\n");
    auto const agent = device.agent("Fan");
    agent->doInit();
    agent->unDoInit();
    EXPECT_FALSE(agent->activeMountSeen() || agent->matchActiveNameSeen());
    device.profile("Fan", "agentName:Fan\n");
    EXPECT_FALSE(agent->noDefaultMountGroup());
    EXPECT_FALSE(agent->activeMount());
}

// A parser whose profiles are all loaded.
class LoadedParser : public testing::Test {
  protected:
    LoadedParser() {
        parser_.allProfilesLoadedIs(true);
        parser_.initializedIs(true);
        parser_.agentStringIs("Fan-3");
    }

    LenientParser parser_;
};

using ActiveMount = LoadedParser;

TEST_F(ActiveMount, IsAnsweredAndTraced) {
    for (bool const active : {true, false}) {
        parser_.activeMountSeenIs(active);
        support::TraceRecorder const trace("MountFileInfo", 1U << 3);
        EXPECT_EQ(parser_.activeMountInternal(), active);
        EXPECT_EQ(parser_.activeMount(), active);
        EXPECT_EQ(trace.count(3, active ? "Returning true" : "Returning false"), 2);
    }
}

TEST_F(ActiveMount, ItsFlagsAreReadWithATrace) {
    support::TraceRecorder const trace;
    parser_.activeMountSeen();
    parser_.matchActiveNameSeen();
    EXPECT_EQ(trace.at(8).size(), 2U);
}

TEST_F(ActiveMount, IsNoQuestionBeforeAllProfilesAreLoaded) {
    parser_.allProfilesLoadedIs(false);
    EXPECT_DEATH(parser_.activeMountInternal(), "allProfilesLoaded_");
    EXPECT_DEATH(parser_.activeMount(), "allProfilesLoaded_");
}

using PassiveRootFlag = LoadedParser;

TEST_F(PassiveRootFlag, IsAddedForAPassiveAgentThatHasNone) {
    struct Row {
        char const* rootFlags;
        bool active;
        char const* result;
    };
    for (auto const& row : std::vector<Row>{
             {"rt", false, "rtp"},
             {"", false, "p"},
             {"rtp", false, "rtp"},
             {"prt", false, "prt"},
             {"p", false, "p"},
             {"rt", true, "rt"},
             {"", true, ""},
             {"rtp", true, "rtp"},
         }) {
        parser_.rootFlagsAre(row.rootFlags);
        parser_.activeMountSeenIs(row.active);
        parser_.maybeAddPassiveRootFlag();
        EXPECT_EQ(parser_.rootFlags(), row.result) << row.rootFlags << " " << row.active;
    }
}

TEST_F(PassiveRootFlag, OfAPassiveAgentIsTraced) {
    parser_.rootFlagsAre("rt");
    support::TraceRecorder const trace("MountFileInfo", 1U << 2);
    parser_.maybeAddPassiveRootFlag();
    EXPECT_THAT(trace.at(2),
                ElementsAre("Fan-3 is a passive mount agent.", "rootFlags_ is now rtp"));
}

TEST_F(PassiveRootFlag, OfAnActiveAgentIsTracedToo) {
    parser_.rootFlagsAre("rt");
    parser_.activeMountSeenIs(true);
    support::TraceRecorder const trace("MountFileInfo", 1U << 2);
    parser_.maybeAddPassiveRootFlag();
    EXPECT_THAT(trace.at(2), ElementsAre("Fan-3 is a active mount agent.", "rootFlags_ is now rt"));
}

TEST_F(PassiveRootFlag, IsNotAddedBeforeAllProfilesAreLoaded) {
    parser_.allProfilesLoadedIs(false);
    EXPECT_DEATH(parser_.maybeAddPassiveRootFlag(), "allProfilesLoaded_");
}

TEST(RootFlagsOfAnAgent, HoldThePassiveFlagOnce) {
    struct Row {
        char const* lines;
        char const* rootFlags;
    };
    for (auto const& row : std::vector<Row>{
             {"", "rtp"},
             {"rootFlags:w\n", "wtp"},
             {"rootFlags:rpt\n", "rpt"},
             {"activeMount\n", "rt"},
         }) {
        support::Device device;
        device.profile("Fan", std::string("agentName:Fan\n") + row.lines);
        EXPECT_EQ(device.agent("Fan")->rootFlags(), row.rootFlags) << row.lines;
    }
}

} // namespace
