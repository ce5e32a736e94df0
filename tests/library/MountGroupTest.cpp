// Mount groups: their names and priorities, which paths belong to them, and the query for them.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/EnvironmentVariable.h"
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
using testing::UnorderedElementsAre;

std::string outOfRange(int priority, std::string const& group) {
    return "Priority " + std::to_string(priority) + " specified for mount group " + group +
           " out of range [1, 99]";
}

std::string reserved(std::string const& group) {
    return "Cannot use reserved mount group name " + group;
}

void handleGroup(LenientParser& parser, std::string const& line) {
    auto buffer = lineOf(line);
    parser.handleMountGroupLine(buffer);
}

// Notes the groups that are recorded.
class GroupParser : public LenientParser {
  public:
    void recordMountGroup(char const* name, unsigned char priority) override {
        groups.push_back(std::string(name) + " at " + std::to_string(priority));
        LenientParser::recordMountGroup(name, priority);
    }

    std::vector<std::string> groups;
};

struct GroupRow {
    char const* line;
    char const* group;
    std::vector<std::string> faults;
};

void expectGroups(std::vector<GroupRow> const& rows) {
    for (auto const& row : rows) {
        GroupParser parser;
        handleGroup(parser, row.line);
        EXPECT_THAT(parser.groups, ElementsAre(row.group)) << row.line;
        EXPECT_EQ(messages(parser), row.faults) << row.line;
    }
}

TEST(MountGroupLine, HasAPriorityFrom1To99) {
    expectGroups({
        {"MountGroup:fast", "fast at 99", {}},
        {"MountGroup:fast,1", "fast at 1", {}},
        {"MountGroup:fast,5", "fast at 5", {}},
        {"MountGroup:fast,99", "fast at 99", {}},
        {"MountGroup:fast,0", "fast at 0", {outOfRange(0, "fast")}},
        {"MountGroup:fast,100", "fast at 100", {outOfRange(100, "fast")}},
        {"MountGroup:fast,255", "fast at 255", {outOfRange(255, "fast")}},
    });
}

TEST(MountGroupLine, HasItsPriorityCutToEightBitsBeforeTheCheck) {
    expectGroups({
        {"MountGroup:fast,300", "fast at 44", {}},
        {"MountGroup:fast,257", "fast at 1", {}},
        {"MountGroup:fast,256", "fast at 0", {outOfRange(0, "fast")}},
        {"MountGroup:fast,355", "fast at 99", {}},
        {"MountGroup:fast,356", "fast at 100", {outOfRange(100, "fast")}},
        {"MountGroup:fast,-1", "fast at 255", {outOfRange(255, "fast")}},
        {"MountGroup:fast,-200", "fast at 56", {}},
    });
}

TEST(MountGroupLine, HasADecimalPriorityThatEndsWhereItsDigitsDo) {
    expectGroups({
        {"MountGroup:fast,007", "fast at 7", {}},
        {"MountGroup:fast,+7", "fast at 7", {}},
        {"MountGroup:fast,7x", "fast at 7", {}},
        {"MountGroup:fast,5,6", "fast at 5", {}},
        {"MountGroup:fast,", "fast at 0", {outOfRange(0, "fast")}},
        {"MountGroup:fast,high", "fast at 0", {outOfRange(0, "fast")}},
        {"MountGroup:fast,0x10", "fast at 0", {outOfRange(0, "fast")}},
    });
}

TEST(MountGroupLine, MayNotUseAReservedNameButOpensTheGroupAllTheSame) {
    expectGroups({
        {"MountGroup:default", "default at 99", {reserved("default")}},
        {"MountGroup:Default,5", "Default at 5", {reserved("Default")}},
        {"MountGroup:all", "all at 99", {reserved("all")}},
        {"MountGroup:ALL,1", "ALL at 1", {reserved("ALL")}},
        {"MountGroup:DEFAULT,0", "DEFAULT at 0", {outOfRange(0, "DEFAULT"), reserved("DEFAULT")}},
    });
}

TEST(MountGroupLine, MayUseEveryOtherName) {
    expectGroups({
        {"MountGroup:defaults", "defaults at 99", {}},
        {"MountGroup:alls", "alls at 99", {}},
        {"MountGroup:al", "al at 99", {}},
        {"MountGroup:recordMountArgs", "recordMountArgs at 99", {}},
        {"MountGroup:a:b::c", "a:b::c at 99", {}},
        {"MountGroup:%slot", "%slot at 99", {}},
        {"MountGroup:", " at 99", {}},
        {"MountGroup:,5", " at 5", {}},
    });
}

TEST(MountGroupLine, MayBeWrittenInAnyCaseAndWithBlanks) {
    GroupParser parser;
    parser.loadProfile("  MOUNTGROUP : g , 7\nmountgroup:H\n");
    EXPECT_THAT(messages(parser), IsEmpty());
    EXPECT_THAT(parser.groups, ElementsAre("g at 7", "H at 99"));
}

TEST(MountGroupLine, AFaultIsReportedWithItsFileAndLineAndTraced) {
    LenientParser parser;
    support::TraceRecorder const trace("MountFileInfo", 1U << 0);
    parser.loadProfile("\nMountGroup:all,100\n", "Fan");
    ASSERT_EQ(parser.exceptions().size(), 2U);
    EXPECT_EQ(parser.exceptions()[0], (Kelda::MfiException{"Fan", outOfRange(100, "all"), 2}));
    EXPECT_EQ(parser.exceptions()[1], (Kelda::MfiException{"Fan", reserved("all"), 2}));
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser.exceptions()[0]),
                                         support::continuedTrace(parser.exceptions()[1])));
}

TEST(MountGroupLine, IsTracedWhenCheckedAndWhenRecorded) {
    LenientParser parser;
    support::TraceRecorder const trace;
    handleGroup(parser, "MountGroup:fast,44");
    EXPECT_EQ(trace.count(8, "( name : fast, priority : 44 )"), 2);
}

TEST(MountGroupLine, EndsTheLoadOfAnAgentByAnyFault) {
    for (auto const& [group, message] :
         {std::pair{"fast,0", outOfRange(0, "fast")}, {"All", reserved("All")}}) {
        support::Device device;
        device.profile("Fan", std::string("agentName:Fan\nMountGroup:") + group + "\n");
        auto const agent = device.agent("Fan");
        EXPECT_EQ(support::thrownText([&] { agent->doInit(); }),
                  support::faultIn("Fan", 2, message));
    }
}

class PriorityOfAnActiveAgent : public testing::Test {
  protected:
    PriorityOfAnActiveAgent() {
        parser_.agentKeyIs("Fan");
        parser_.agentStringIs("Fan");
        parser_.activeMountSeenIs(true);
    }

    LenientParser parser_;
    support::TraceRecorder trace_{"MountFileInfo", 1U << 1};
};

TEST_F(PriorityOfAnActiveAgent, IsIgnoredWithANotice) {
    handleGroup(parser_, "MountGroup:fast,5");
    EXPECT_THAT(messages(parser_), IsEmpty());
    EXPECT_THAT(trace_.at(1),
                ElementsAre("We have already seen the 'activeMount' keyword for agent Fan. "
                            "Priority 5 for mount group fast will be ignored, as it is not "
                            "supported for active mount agents. For more information, see REF482"));
}

TEST_F(PriorityOfAnActiveAgent, IsNoticedWhenItIsTheUsualOneToo) {
    handleGroup(parser_, "MountGroup:fast");
    EXPECT_EQ(trace_.at(1).size(), 1U);
}

TEST_F(PriorityOfAnActiveAgent, IsNotNoticedWhenItIsZero) {
    handleGroup(parser_, "MountGroup:fast,0");
    EXPECT_THAT(messages(parser_), ElementsAre(outOfRange(0, "fast")));
    EXPECT_THAT(trace_.lines(), IsEmpty());
}

TEST_F(PriorityOfAnActiveAgent, IsNotNoticedForAPassiveAgent) {
    parser_.activeMountSeenIs(false);
    handleGroup(parser_, "MountGroup:fast,5");
    EXPECT_THAT(trace_.lines(), IsEmpty());
}

TEST(ValidatingAMountGroup, RecordsNothing) {
    LenientParser parser;
    parser.validateMountGroup("default", 0);
    EXPECT_THAT(messages(parser), ElementsAre(outOfRange(0, "default"), reserved("default")));
    EXPECT_EQ(parser.currentMountGroup(), "");
}

TEST(RecordingAMountGroup, OpensItAndEndsAConditionalGroup) {
    LenientParser parser;
    parser.recordCondition(lineOf("Condition: on"), false);
    parser.recordMountGroup("fast", 5);
    EXPECT_EQ(parser.currentMountGroup(), "fast");
    EXPECT_FALSE(parser.inConditionalGroup());
    EXPECT_TRUE(parser.conditionSeen());
}

// A parser that reads profiles of the agent "Fan", with the paths p/1 to p/4.
class PathsOfMountGroups : public testing::Test {
  protected:
    PathsOfMountGroups() {
        parser_.declare({"p/1", "p/2", "p/3", "p/4"});
        parser_.agentKeyIs("Fan");
    }

    LenientParser parser_;
};

TEST_F(PathsOfMountGroups, AreThoseUpToTheNextGroup) {
    parser_.loadProfile("p/1,T,r\nMountGroup:a\np/2,T,r\np/3,T,r\nMountGroup:b,7\np/4,T,r\n");
    EXPECT_THAT(strings(parser_.mountGroupPaths("Fan::")), ElementsAre("p/1"));
    EXPECT_THAT(strings(parser_.mountGroupPaths("Fan::a")), ElementsAre("p/2", "p/3"));
    EXPECT_THAT(strings(parser_.mountGroupPaths("Fan::b")), ElementsAre("p/4"));
}

TEST_F(PathsOfMountGroups, EndWithTheProfile) {
    parser_.loadProfile("MountGroup:a\np/1,T,r\n", "First");
    EXPECT_EQ(parser_.currentMountGroup(), "");
    parser_.loadProfile("p/2,T,r\n", "Second");
    EXPECT_THAT(strings(parser_.mountGroupPaths("Fan::a")), ElementsAre("p/1"));
    EXPECT_THAT(strings(parser_.mountGroupPaths("Fan::")), ElementsAre("p/2"));
}

TEST_F(PathsOfMountGroups, MayComeFromSeveralStretches) {
    parser_.loadProfile("MountGroup:a\np/1,T,r\nMountGroup:b\nMountGroup:a\np/2,T,r\n");
    EXPECT_THAT(strings(parser_.mountGroupPaths("Fan::a")), ElementsAre("p/1", "p/2"));
    EXPECT_THAT(strings(parser_.mountGroups()), ElementsAre("Fan::a"));
}

TEST_F(PathsOfMountGroups, AreFiledUnderARefusedNameToo) {
    parser_.loadProfile("MountGroup:Default,5\np/1,T,r\n");
    EXPECT_THAT(messages(parser_), ElementsAre(reserved("Default")));
    EXPECT_THAT(strings(parser_.mountGroupPaths("Fan::Default")), ElementsAre("p/1"));
}

TEST_F(PathsOfMountGroups, AreFiledUnderTheNameAsWritten) {
    parser_.loadProfile("MountGroup:Fast\np/1,T,r\nMountGroup:fast\np/2,T,r\n");
    EXPECT_THAT(strings(parser_.mountGroups()), UnorderedElementsAre("Fan::Fast", "Fan::fast"));
}

TEST_F(PathsOfMountGroups, AreAppendedAndTraced) {
    support::TraceRecorder const trace;
    parser_.mountGroupPathsMapIs("Fan::a", "p/2");
    parser_.mountGroupPathsMapIs("Fan::a", "p/1");
    EXPECT_THAT(strings(parser_.mountGroupPathsMap().at("Fan::a")), ElementsAre("p/2", "p/1"));
    EXPECT_TRUE(trace.has(8, "( key: Fan::a, value: p/2 )"));
}

TEST_F(PathsOfMountGroups, AreForgottenWithTheProfileData) {
    parser_.mountGroupPathsMapIs("Fan::a", "p/1");
    parser_.clearProfileData();
    EXPECT_THAT(parser_.mountGroups(), IsEmpty());
}

class MountGroupQueries : public testing::Test {
  protected:
    support::EnvironmentVariable noPackage_{"Q9PKG", nullptr};
    LenientParser parser_;
};

TEST_F(MountGroupQueries, LoadNothing) {
    parser_.mountGroupPathsMapIs("Fan::a", "p/1");
    EXPECT_THAT(strings(parser_.mountGroups()), ElementsAre("Fan::a"));
    EXPECT_THAT(strings(parser_.mountGroupPaths("Fan::a")), ElementsAre("p/1"));
    EXPECT_FALSE(parser_.isInitialized());
}

TEST_F(MountGroupQueries, ReturnACopy) {
    parser_.mountGroupPathsMapIs("Fan::a", "p/1");
    parser_.mountGroupPaths("Fan::a").clear();
    EXPECT_THAT(strings(parser_.mountGroupPaths("Fan::a")), ElementsAre("p/1"));
}

TEST_F(MountGroupQueries, TakeTheWholeKeyInItsCase) {
    parser_.mountGroupPathsMapIs("Fan::a", "p/1");
    for (char const* const key : {"a", "Fan::A", "Fan::", "::a", ""})
        EXPECT_THAT(parser_.mountGroupPaths(key), IsEmpty()) << key;
    EXPECT_EQ(parser_.exceptions().size(), 5U);
    EXPECT_THAT(strings(parser_.mountGroups()), ElementsAre("Fan::a"));
}

TEST_F(MountGroupQueries, ReportAGroupThatDoesNotExist) {
    support::TraceRecorder const trace;
    EXPECT_THAT(parser_.mountGroupPaths("Fan::a"), IsEmpty());
    ASSERT_EQ(parser_.exceptions().size(), 1U);
    EXPECT_THAT(messages(parser_).front(),
                testing::StartsWith("mountGroupPaths: no such mount group: Fan::a\n\n"));
    EXPECT_EQ(parser_.exceptions()[0].msg,
              parser_.fmtNotFoundError("mountGroupPaths: no such mount group: Fan::a", true));
    EXPECT_TRUE(trace.has(7, "( mountGroupName : Fan::a )"));
    EXPECT_TRUE(trace.has(3, "Returning empty vector"));
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser_.exceptions()[0])));
}

TEST_F(MountGroupQueries, ThrowForAnAgentWithoutTheGroup) {
    support::Device const device;
    auto const agent = device.agent("Fan");
    EXPECT_THAT(support::thrownText([&] { agent->mountGroupPaths("Fan::a"); }),
                testing::StartsWith("mountGroupPaths: no such mount group: Fan::a"));
    EXPECT_EQ(agent->exceptions().size(), 1U);
}

} // namespace
