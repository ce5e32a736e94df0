// Conditions: what their lines leave behind, how long it lasts, and their conflict with the keyword
// "activeMount".
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/FaultTexts.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::LenientParser;
using support::lineOf;
using support::messages;
using testing::ElementsAre;
using testing::IsEmpty;

// The fixed sentences; each is followed by a pointer to documentation.
std::string conditionConflict(std::string const& keyword) {
    return "Found the '" + keyword +
           "' keyword, but we've already parsed the 'activeMount' keyword for agent Fan, meaning "
           "this condition will be ignored under active mounts.";
}

char const activeMountConflict[] =
    "Found the 'activeMount' keyword, but we've already parsed a passive mount-only keyword (one "
    "of 'Condition' or 'ConditionBlocker') which are ignored for active mount agents.";

MATCHER_P(IsSentenceAndPointer, sentence, "") {
    std::string const text = arg;
    return text.starts_with(sentence) && text.size() > std::string(sentence).size() + 1;
}

MATCHER_P(HoldsSentenceAndPointer, sentence, "") {
    std::string const text = arg;
    auto const at = text.find(sentence);
    return at != std::string::npos && text.size() > at + std::string(sentence).size() + 1;
}

// Notes the conditions that are recorded.
class ConditionParser : public LenientParser {
  public:
    ConditionParser() {
        agentKeyIs("Fan");
        agentStringIs("Fan");
    }
    void recordCondition(Kelda::LineBuffer const& bufferWithSpaces, bool blocking) override {
        conditions.push_back(std::string(bufferWithSpaces.data()) + (blocking ? "|blocks" : "|"));
        LenientParser::recordCondition(bufferWithSpaces, blocking);
    }

    std::vector<std::string> conditions;
};

TEST(ConditionLine, OpensAConditionalGroup) {
    LenientParser parser;
    EXPECT_FALSE(parser.conditionSeen() || parser.inConditionalGroup());
    parser.handleConditionLine(lineOf("Condition: fan is on"));
    EXPECT_TRUE(parser.conditionSeen());
    EXPECT_TRUE(parser.inConditionalGroup());
    EXPECT_THAT(messages(parser), IsEmpty());
}

TEST(ConditionLine, ABlockerOpensAConditionalGroupToo) {
    LenientParser parser;
    parser.handleConditionBlockerLine(lineOf("ConditionBlocker: fan is off"));
    EXPECT_TRUE(parser.conditionSeen());
    EXPECT_TRUE(parser.inConditionalGroup());
    EXPECT_THAT(messages(parser), IsEmpty());
}

TEST(ConditionLine, IsHandedOnWithItsBlanksAndWhetherItBlocks) {
    ConditionParser parser;
    parser.loadProfile("Condition: a  b # note\n\tCONDITION : c\nconditionBlocker:d e\n");
    EXPECT_THAT(messages(parser), IsEmpty());
    EXPECT_THAT(parser.conditions, ElementsAre("Condition: a  b |", "\tCONDITION : c\n|",
                                               "conditionBlocker:d e\n|blocks"));
}

TEST(ConditionLine, MayBeContinued) {
    ConditionParser parser;
    parser.loadProfile("Condition: a \\\n b\n");
    EXPECT_THAT(parser.conditions, ElementsAre("Condition: a  b\n|"));
}

TEST(ConditionLine, MayBeEmpty) {
    ConditionParser parser;
    parser.loadProfile("Condition:\nConditionBlocker:");
    EXPECT_THAT(messages(parser), IsEmpty());
    EXPECT_THAT(parser.conditions, ElementsAre("Condition:\n|", "ConditionBlocker:|blocks"));
}

TEST(ConditionLine, IsTracedWithItsBlanks) {
    LenientParser parser;
    support::TraceRecorder const trace;
    parser.handleConditionLine(lineOf("Condition: a  b"));
    EXPECT_TRUE(trace.has(8, "( bufferWithSpaces : Condition: a  b )"));
    EXPECT_TRUE(trace.has(8, "( bufferWithSpaces : Condition: a  b, blocking : false )"));
}

TEST(ConditionLine, ABlockerIsTracedAsBlocking) {
    LenientParser parser;
    support::TraceRecorder const trace;
    parser.handleConditionBlockerLine(lineOf("ConditionBlocker: a"));
    EXPECT_TRUE(trace.has(8, "( bufferWithSpaces : ConditionBlocker: a )"));
    EXPECT_TRUE(trace.has(8, "( bufferWithSpaces : ConditionBlocker: a, blocking : true )"));
}

TEST(ConditionalGroup, EndsWithTheNextMountGroup) {
    LenientParser parser;
    parser.handleConditionLine(lineOf("Condition: on"));
    auto group = lineOf("MountGroup:x");
    parser.handleMountGroupLine(group);
    EXPECT_FALSE(parser.inConditionalGroup());
    EXPECT_TRUE(parser.conditionSeen());
}

TEST(ConditionalGroup, IsOpenedAgainByALaterCondition) {
    LenientParser parser;
    parser.handleConditionLine(lineOf("Condition: on"));
    parser.recordMountGroup("x", 99);
    parser.handleConditionBlockerLine(lineOf("ConditionBlocker: off"));
    EXPECT_TRUE(parser.inConditionalGroup());
    EXPECT_EQ(parser.currentMountGroup(), "x");
}

TEST(ConditionalGroup, EndsWithTheProfileWhileTheConditionStaysSeen) {
    LenientParser parser;
    parser.loadProfile("Condition: on\n");
    EXPECT_FALSE(parser.inConditionalGroup());
    EXPECT_TRUE(parser.conditionSeen());
}

TEST(ConditionalGroup, ExcusesPathsWithoutAPreinitTypeForAnAgent) {
    support::Device device;
    device.profile("Fan", "agentName:Fan\nCondition: on\nfan/1,Fan::Status,r\n");
    auto const agent = device.agent("Fan");
    EXPECT_EQ(agent->mountInfo("fan/1").type, "Fan::Status");
    EXPECT_THAT(messages(*agent), IsEmpty());
}

TEST(ConditionalGroup, ExcusesNoPathsOfTheNextMountGroup) {
    support::Device device;
    device.profile("Fan", "agentName:Fan\nCondition: on\nMountGroup:x\nfan/1,Fan::Status,r\n");
    auto const agent = device.agent("Fan");
    EXPECT_THAT(support::thrownText([&] { agent->doInit(); }),
                testing::HasSubstr("No type info for path 'fan/1'"));
}

TEST(ConditionConflict, AConditionAfterActiveMountIsReported) {
    ConditionParser parser;
    parser.loadProfile("activeMount\nCondition: on\n", "Profile");
    EXPECT_THAT(messages(parser),
                ElementsAre(IsSentenceAndPointer(conditionConflict("Condition"))));
    EXPECT_EQ(parser.exceptions()[0].line, 2);
}

TEST(ConditionConflict, ABlockerAfterActiveMountIsReported) {
    ConditionParser parser;
    parser.loadProfile("activeMount\nConditionBlocker: on\n");
    EXPECT_THAT(messages(parser),
                ElementsAre(IsSentenceAndPointer(conditionConflict("ConditionBlocker"))));
}

TEST(ConditionConflict, ActiveMountAfterAConditionIsReported) {
    for (char const* const line : {"Condition: on", "ConditionBlocker: on"}) {
        ConditionParser parser;
        parser.loadProfile(std::string(line) + "\n\nactiveMount\n");
        ASSERT_THAT(messages(parser), ElementsAre(IsSentenceAndPointer(activeMountConflict)))
            << line;
        EXPECT_EQ(parser.exceptions()[0].line, 3);
    }
}

TEST(ConditionConflict, UndoesNeitherKeyword) {
    for (char const* const profile :
         {"activeMount\nCondition: on\n", "Condition: on\nactiveMount\n"}) {
        ConditionParser parser;
        parser.loadProfile(profile);
        EXPECT_EQ(parser.exceptions().size(), 1U) << profile;
        EXPECT_TRUE(parser.activeMountSeen()) << profile;
        EXPECT_TRUE(parser.conditionSeen()) << profile;
        EXPECT_THAT(parser.conditions, ElementsAre("Condition: on\n|")) << profile;
    }
}

TEST(ConditionConflict, IsReportedForEveryLineThatComesTooLate) {
    ConditionParser parser;
    parser.loadProfile("Condition: a\nactiveMount\nCondition: b\nactiveMount\n");
    EXPECT_THAT(messages(parser), ElementsAre(IsSentenceAndPointer(activeMountConflict),
                                              IsSentenceAndPointer(conditionConflict("Condition")),
                                              IsSentenceAndPointer(activeMountConflict)));
}

TEST(ConditionConflict, IsTraced) {
    ConditionParser parser;
    support::TraceRecorder const trace("MountFileInfo", 1U << 0);
    parser.loadProfile("Condition: a\nactiveMount\nConditionBlocker: b\n");
    ASSERT_EQ(parser.exceptions().size(), 2U);
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser.exceptions()[0]),
                                         support::continuedTrace(parser.exceptions()[1])));
}

TEST(ConditionConflict, ReachesFromOneProfileToTheNext) {
    ConditionParser parser;
    parser.loadProfile("Condition: on\n", "First");
    parser.loadProfile("activeMount\n", "Second");
    EXPECT_THAT(messages(parser), ElementsAre(IsSentenceAndPointer(activeMountConflict)));
}

TEST(ConditionConflict, DoesNotExistWithoutBothKeywords) {
    for (char const* const profile :
         {"Condition: a\nConditionBlocker: b\n", "activeMount\nactiveMount\n",
          "MountGroup:x\nactiveMount\n"}) {
        ConditionParser parser;
        parser.loadProfile(profile);
        EXPECT_THAT(messages(parser), IsEmpty()) << profile;
    }
}

TEST(ConditionConflict, IsLookedForWithOneAgentStringAndNotWithSeveral) {
    struct Row {
        std::vector<Rook::String> agents;
        std::size_t faults;
    };
    for (auto const& row :
         std::vector<Row>{{{}, 2}, {{"Fan"}, 2}, {{"Fan", "Psu"}, 0}, {{"Fan", "Psu", "Led"}, 0}}) {
        ConditionParser parser;
        parser.agentStringsAre(row.agents);
        parser.loadProfile("Condition: a\nactiveMount\nConditionBlocker: b\n");
        EXPECT_EQ(parser.exceptions().size(), row.faults) << row.agents.size() << " agents";
        EXPECT_TRUE(parser.activeMountSeen());
        EXPECT_EQ(parser.conditions.size(), 2U);
    }
}

TEST(ConditionConflict, TheCheckMayBeAskedForAnyKeyword) {
    ConditionParser parser;
    parser.verifyNoActiveMountKeywordConflict("Condition");
    EXPECT_THAT(messages(parser), IsEmpty());
    parser.activeMountSeenIs(true);
    parser.verifyNoActiveMountKeywordConflict("Anything");
    EXPECT_THAT(messages(parser), ElementsAre(IsSentenceAndPointer(conditionConflict("Anything"))));
}

class ConditionsOfAnAgent : public testing::Test {
  protected:
    void write(std::string const& lines) { device_.profile("Fan", "agentName:Fan\n" + lines); }
    std::string load() {
        return support::thrownText([this] { agent_->doInit(); });
    }

    support::Device device_;
    std::unique_ptr<Kelda::AgentMountFileInfo> agent_ = device_.agent("Fan");
};

TEST_F(ConditionsOfAnAgent, EndTheLoadAfterActiveMount) {
    write("activeMount\nCondition: on\n");
    EXPECT_THAT(load(), HoldsSentenceAndPointer(
                            support::faultIn("Fan", 3, conditionConflict("Condition"))));
}

TEST_F(ConditionsOfAnAgent, EndTheLoadAtALaterActiveMount) {
    write("ConditionBlocker: on\nactiveMount\n");
    EXPECT_THAT(load(), HoldsSentenceAndPointer(support::faultIn("Fan", 3, activeMountConflict)));
}

TEST_F(ConditionsOfAnAgent, AreForgottenByUnInitialising) {
    write("Condition: on\n");
    EXPECT_EQ(load(), "(nothing was thrown)");
    agent_->unDoInit();
    write("activeMount\n");
    EXPECT_EQ(load(), "(nothing was thrown)");
    EXPECT_TRUE(agent_->activeMount());
}

TEST_F(ConditionsOfAnAgent, MeetNoActiveMountFromBeforeUnInitialising) {
    write("activeMount\n");
    EXPECT_EQ(load(), "(nothing was thrown)");
    agent_->unDoInit();
    write("Condition: on\n");
    EXPECT_EQ(load(), "(nothing was thrown)");
    EXPECT_FALSE(agent_->activeMount());
}

TEST_F(ConditionsOfAnAgent, LoadAsOftenAsWanted) {
    write("Condition: on\nConditionBlocker: off\n");
    for (int round = 0; round < 3; ++round) {
        EXPECT_FALSE(agent_->activeMount());
        agent_->unDoInit();
    }
    EXPECT_THAT(messages(*agent_), IsEmpty());
}

TEST_F(ConditionsOfAnAgent, DoNotMindActiveMountOnceThereAreTwoAgents) {
    write("activeMount\nCondition: on\n");
    agent_->addAgent("Psu", "");
    EXPECT_EQ(load(), "(nothing was thrown)");
}

} // namespace
