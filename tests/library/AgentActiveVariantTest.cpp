// Agent strings with the infix "-Active-": which profiles they take, and as whom.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/Thrown.h"
#include "support/TraceRecorder.h"

namespace {

using support::faultIn;
using support::thrownText;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class AgentActiveVariant : public testing::Test {
  protected:
    AgentActiveVariant() {
        device.preinit("Base", "a/b,T\na/%slot,T,createOnMount\nn/%agentString,T,createOnMount\n");
    }

    // A profile for X-Y that mounts a/b.
    void profileOfXY(std::string const& keywords) {
        device.profile("XY", "agentName: X-Y\n" + keywords + "a/b,T,r\n");
    }
    static std::string missingKeyword(std::string const& agent, std::string const& name) {
        return "-Active- agent '" + agent + "' matched profile '" + name +
               "' but profile is missing 'matchActiveName' keyword. Skipping.";
    }
    static std::string restTokenFault(std::string const& file) {
        return "Profile '" + file +
               "' contains 'matchActiveName' keyword but the agentName line contains '$' "
               "(consuming token). The 'matchActiveName' keyword is incompatible with consuming "
               "tokens in the agentName line.";
    }

    support::CleanEnvironment environment;
    support::Device device;
};

TEST_F(AgentActiveVariant, TakesTheProfileWrittenForItsNameWithoutTheInfix) {
    profileOfXY("activeMount\nmatchActiveName\n");
    auto const parser = device.agent("X-Active-Y");
    support::TraceRecorder const trace;
    EXPECT_TRUE(parser->infoExists("a/b"));
    EXPECT_TRUE(parser->foundMountProfile("X-Active-Y"));
    EXPECT_EQ(trace.count(5, "Agent 'X-Active-Y' is -Active- variant, matching with stripped: X-Y"),
              1);
    EXPECT_FALSE(trace.has(1, missingKeyword("X-Active-Y", "X-Y")));
}

TEST_F(AgentActiveVariant, PassesOverAProfileThatDoesNotSayMatchActiveName) {
    profileOfXY("activeMount\n");
    auto const parser = device.agent("X-Active-Y");
    support::TraceRecorder const trace;
    EXPECT_FALSE(parser->infoExists("a/b"));
    EXPECT_FALSE(parser->foundMountProfile("X-Active-Y"));
    EXPECT_THAT(trace.at(1), ElementsAre(missingKeyword("X-Active-Y", "X-Y")));
    EXPECT_TRUE(trace.has(2, "loaded 0 files"));
}

TEST_F(AgentActiveVariant, TheNoticeShowsTheAgentNameLineWithItsTokens) {
    device.profile("XY", "agentName : X-%slot - %sub $\n");
    auto const parser = device.agent("X-Active-Y");
    support::TraceRecorder const trace;
    parser->doInit();
    EXPECT_THAT(trace.at(1), ElementsAre(missingKeyword("X-Active-Y", "X-%slot-%sub$")));
}

TEST_F(AgentActiveVariant, AnOrdinaryAgentTakesTheProfileWithAndWithoutTheKeyword) {
    for (auto const* const keywords : {"", "activeMount\n", "activeMount\nmatchActiveName\n"}) {
        profileOfXY(keywords);
        EXPECT_TRUE(device.agent("X-Y")->infoExists("a/b")) << keywords;
    }
}

TEST_F(AgentActiveVariant, TheKeywordCountsInAnyCaseAndAfterLeadingBlanks) {
    for (std::string const keyword :
         {"matchActiveName", "MATCHACTIVENAME", "matchactivename", "  matchActiveName",
          "\tmatchActiveName", " \t MatchActiveName", "matchActiveName # for both"}) {
        profileOfXY("activeMount\n" + keyword + "\n");
        EXPECT_TRUE(device.agent("X-Active-Y")->infoExists("a/b")) << keyword;
    }
}

TEST_F(AgentActiveVariant, WhatIsNotTheKeywordDoesNotCount) {
    for (std::string const line : {"# matchActiveName", "  # matchActiveName", "matchActive",
                                   "match ActiveName", "activeMount # matchActiveName"}) {
        profileOfXY("activeMount\n" + line + "\n");
        EXPECT_FALSE(device.agent("X-Active-Y")->infoExists("a/b")) << line;
    }
}

TEST_F(AgentActiveVariant, TheKeywordIsFoundHoweverFarDownItStands) {
    std::string paths;
    for (int i = 0; i < 500; ++i)
        paths += "a/b,T,r # " + std::string(2 * static_cast<std::size_t>(i), 'x') + "\n";
    profileOfXY("activeMount\n" + paths + "matchActiveName\n");
    EXPECT_TRUE(device.agent("X-Active-Y")->infoExists("a/b"));
}

TEST_F(AgentActiveVariant, LookingForTheKeywordLeavesTheLineNumbersAlone) {
    profileOfXY("activeMount\n\nmatchActiveName\nfoo\n");
    auto const parser = device.agent("X-Active-Y");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }), faultIn("XY", 5, "syntax error: 'foo'"));
}

TEST_F(AgentActiveVariant, AWordThatOnlyBeginsLikeTheKeywordIsTakenAndThenReported) {
    profileOfXY("activeMount\nmatchActiveNames\n");
    auto const parser = device.agent("X-Active-Y");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }),
              faultIn("XY", 3, "syntax error: 'matchActiveNames'"));
}

// --- tokens and names ---

TEST_F(AgentActiveVariant, BindsTheTokensOfTheNameWithoutTheInfix) {
    device.profile("X", "agentName: X-%slot\nactiveMount\nmatchActiveName\na/%slot,T,r\n");
    auto const parser = device.agent("X-Active-Y");
    EXPECT_TRUE(parser->infoExists("a/Y"));
    EXPECT_FALSE(parser->infoExists("a/Active"));
}

TEST_F(AgentActiveVariant, TheAliasAgentStringKeepsTheInfix) {
    device.profile("XY", "agentName: X-Y\nactiveMount\nmatchActiveName\nn/%agentString,T,r\n");
    EXPECT_TRUE(device.agent("X-Active-Y")->infoExists("n/X-Active-Y"));
    EXPECT_TRUE(device.agent("X-Active-Y", "Other")->infoExists("n/Other"));
}

TEST_F(AgentActiveVariant, ItsPathsAreFiledUnderTheWholeStringAndTheMatchedName) {
    profileOfXY("activeMount\nmatchActiveName\n");
    auto const parser = device.agent("X-Active-Y");
    EXPECT_THAT(support::strings(parser->agentPaths("X-Active-Y")), ElementsAre("a/b"));
    EXPECT_THAT(support::strings(parser->agentPaths("X-Y")), ElementsAre("a/b"));
    EXPECT_THAT(support::strings(parser->mountGroups()), UnorderedElementsAre("X-Y::"));
}

TEST_F(AgentActiveVariant, OnlyTheFirstInfixCollapses) {
    device.profile("X", "agentName: X-Active-Y\nactiveMount\nmatchActiveName\na/b,T,r\n");
    auto const parser = device.agent("X-Active-Active-Y");
    support::TraceRecorder const trace;
    EXPECT_TRUE(parser->infoExists("a/b"));
    EXPECT_TRUE(trace.has(5, "Agent 'X-Active-Active-Y' is -Active- variant, matching with "
                             "stripped: X-Active-Y"));
}

TEST_F(AgentActiveVariant, DoesNotTakeAProfileWrittenForTheWholeString) {
    device.profile("X", "agentName: X-Active-Y\nactiveMount\nmatchActiveName\na/b,T,r\n");
    EXPECT_FALSE(device.agent("X-Active-Y")->infoExists("a/b"));
}

TEST_F(AgentActiveVariant, TheInfixNeedsBothItsHyphensAndItsCase) {
    for (std::string const agent :
         {"X-Active", "Active-Y", "XActive-Y", "X-ActiveY", "X-active-Y"}) {
        device.profile("XY", "agentName: " + agent + "\na/b,T,r\n");
        auto const parser = device.agent(agent);
        support::TraceRecorder const trace;
        EXPECT_TRUE(parser->infoExists("a/b")) << agent;
        EXPECT_THAT(trace.at(5), ElementsAre("processed 1 profiles")) << agent;
    }
}

TEST_F(AgentActiveVariant, TheAgentAfterItIsServedUnderItsOwnName) {
    device.profile("X", "agentName: X-%slot\nactiveMount\nmatchActiveName\na/%slot,T,r\n");
    auto const parser = device.agent("X-Active-1");
    parser->addAgent("X-2", "");
    EXPECT_TRUE(parser->infoExists("a/1"));
    EXPECT_TRUE(parser->infoExists("a/2"));
}

TEST_F(AgentActiveVariant, APassedOverProfileLeavesNoAliasesBehind) {
    device.profile("A", "agentName: X-%slot\n");
    device.profile("B", "agentName: X-Y\nactiveMount\nmatchActiveName\na/%slot,T,r\n");
    auto const parser = device.agent("X-Active-Y");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }),
              faultIn("B", 4, "No such alias defined: '%slot'"));
}

TEST_F(AgentActiveVariant, APassedOverProfileLeavesNoAliasesForTheDefaultGroup) {
    device.profile("A", "agentName: X-Y\nactiveMount\nmatchActiveName\n");
    device.profile("B", "agentName: X-%slot\n");
    device.profile("DefaultMountGroup", "a/%slot,T,r\n");
    auto const parser = device.agent("X-Active-Y");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }),
              faultIn("DefaultMountGroup", 1, "No such alias defined: '%slot'"));
}

// --- consuming tokens ---

TEST_F(AgentActiveVariant, TheKeywordWithAConsumingTokenThrowsEvenForAnOrdinaryAgent) {
    device.profile("Rest", "# rest\nagentName: X-%rest$\nactiveMount\nmatchActiveName\n");
    for (auto const* const agent : {"X-Y", "X-Y-Z", "X-Active-Y"}) {
        auto const parser = device.agent(agent);
        EXPECT_EQ(thrownText([&] { parser->doInit(); }), faultIn("Rest", 2, restTokenFault("Rest")))
            << agent;
    }
}

TEST_F(AgentActiveVariant, ADollarSignAnywhereInTheAgentNameLineCountsAsAConsumingToken) {
    for (std::string const name : {"X$-%slot", "X-%slot$", "X-%a$-%b"}) {
        device.profile("Rest", "agentName: " + name + "\nactiveMount\nmatchActiveName\n");
        auto const parser = device.agent(name.starts_with("X$") ? "X$-1" : "X-1");
        EXPECT_EQ(thrownText([&] { parser->doInit(); }), faultIn("Rest", 1, restTokenFault("Rest")))
            << name;
    }
}

TEST_F(AgentActiveVariant, AConsumingTokenWithoutTheKeywordIsFine) {
    device.profile("Rest", "agentName: X-%slot$\nactiveMount\na/%slot,T,r\n");
    EXPECT_TRUE(device.agent("X-1-2")->infoExists("a/1-2"));
}

TEST_F(AgentActiveVariant, TheConsumingTokenOfAProfileForAnotherAgentIsNoFault) {
    device.profile("Rest", "agentName: Z-%rest$\nactiveMount\nmatchActiveName\n");
    profileOfXY("");
    EXPECT_TRUE(device.agent("X-Y")->infoExists("a/b"));
}

TEST_F(AgentActiveVariant, WhereFaultsDoNotThrowTheProfileIsLoadedAllTheSame) {
    device.profile("Rest", "agentName: X-%slot$\nactiveMount\nmatchActiveName\na/%slot,T,r\n");
    support::LenientAgent parser(device.preinitDir(), device.profileDir());
    parser.addAgent("X-1-2", "");
    support::TraceRecorder const trace;
    EXPECT_TRUE(parser.infoExists("a/1-2"));
    EXPECT_EQ(trace.count(0, support::continued(faultIn("Rest", 1, restTokenFault("Rest")))), 1);
}

} // namespace
