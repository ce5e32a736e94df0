// The lines "alias:KEY=EXPRESSION": which lines those are, which keys are good ones, and what is
// left after a bad one.
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Aliases.h"
#include "support/Device.h"
#include "support/FaultTexts.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::aliasOf;
using support::defineAlias;
using support::LenientParser;
using support::lineOf;
using support::messages;
using testing::ElementsAre;
using testing::IsEmpty;

std::string badKey(std::string const& key) {
    return "syntax error: '" + key +
           "': lhs must specify key name matched by '%[a-zA-Z0-9_].*' with no leading '_' or "
           "digit after the %.";
}

TEST(AliasLines, AreRecognisedByTheirKeywordAndAnEqualSign) {
    struct Row {
        char const* line;
        bool isAliasLine;
    };
    for (auto const& row : std::vector<Row>{
             {"alias:%a=x", true},
             {"ALIAS:%a=x", true},
             {"AlIaS:%a=x", true},
             {"alias:=", true},
             {"alias:a=", true},
             {"alias:%a", false},
             {"alias:", false},
             {"alias%a=x", false},
             {"alias=x:", false},
             {"xalias:%a=x", false},
             {" alias:%a=x", false},
             {"alia", false},
             {"=", false},
             {"", false},
         })
        EXPECT_EQ(LenientParser::matchAliasLine(lineOf(row.line)), row.isAliasLine) << row.line;
}

TEST(AliasLines, TheKeywordMayBeWrittenInAnyCase) {
    LenientParser parser;
    parser.declare({"p/*"});
    parser.loadProfile("ALIAS:%a=x\np/%a,T,r\n");
    EXPECT_THAT(messages(parser), IsEmpty());
    EXPECT_TRUE(parser.pathMountArgsMap().contains("p/x"));
}

TEST(AliasLines, WithoutAnEqualSignALineIsNoAliasLineAtAll) {
    LenientParser parser;
    parser.loadProfile("alias:%a\n");
    EXPECT_THAT(messages(parser), ElementsAre("syntax error: 'alias:%a'"));
}

TEST(AliasLines, BlanksAroundKeyAndValueDoNotCount) {
    LenientParser parser;
    parser.declare({"p/*"});
    parser.loadProfile("  alias : % a\t= x y \np/%a,T,r\n");
    EXPECT_THAT(messages(parser), IsEmpty());
    EXPECT_TRUE(parser.pathMountArgsMap().contains("p/xy"));
}

TEST(AliasLines, AGoodKeyIsAPercentSignALetterAndLettersDigitsOrUnderscores) {
    for (char const* const key :
         {"%a", "%Z", "%slot", "%cellId", "%a1", "%a_", "%a_b", "%a__9", "%A0z_"}) {
        LenientParser parser;
        defineAlias(parser, "alias:" + std::string(key) + "=x");
        EXPECT_THAT(messages(parser), IsEmpty()) << key;
        EXPECT_EQ(aliasOf(parser, key), "x") << key;
    }
}

TEST(AliasLines, ABadKeyIsReportedAndTheAliasRecordedAsWritten) {
    for (char const* const key : {"%_a", "%1a", "%", "a", "%a-b", "", "%_", "%9", "a%b", "%a%b",
                                  "%%a", "%a.b", "%a/b", "_a", "1", "%a:", "%caf\xc3\xa9"}) {
        LenientParser parser;
        defineAlias(parser, "alias:" + std::string(key) + "=x");
        EXPECT_THAT(messages(parser), ElementsAre(badKey(key))) << key;
        EXPECT_EQ(aliasOf(parser, key), "x") << key;
    }
}

TEST(AliasLines, AFaultyKeyIsReportedWithItsFileAndLineAndTraced) {
    LenientParser parser;
    support::TraceRecorder const trace("MountFileInfo", 1U << 0);
    parser.loadProfile("# aliases\nalias:a=x\n", "Fan");
    ASSERT_EQ(parser.exceptions().size(), 1U);
    EXPECT_EQ(parser.exceptions()[0], (Kelda::MfiException{"Fan", badKey("a"), 2}));
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser.exceptions()[0])));
}

TEST(AliasLines, ABadKeyIsReportedBeforeItsExpressionIsEvaluated) {
    LenientParser parser;
    defineAlias(parser, "alias:a=%no");
    EXPECT_THAT(messages(parser), ElementsAre(badKey("a"), "No such alias defined: '%no'"));
    EXPECT_EQ(aliasOf(parser, "a"), "");
}

TEST(AliasLines, TheFirstEqualSignEndsTheKey) {
    LenientParser parser;
    defineAlias(parser, "alias:%a=x=y=");
    EXPECT_EQ(aliasOf(parser, "%a"), "x=y=");
    EXPECT_THAT(messages(parser), IsEmpty());
}

TEST(AliasLines, ALineMayDefineAnEmptyValue) {
    LenientParser parser;
    defineAlias(parser, "alias:%a=");
    EXPECT_EQ(aliasOf(parser, "%a"), "");
    EXPECT_THAT(messages(parser), IsEmpty());
}

TEST(AliasLines, ALineWithoutAnEqualSignGivenToTheHandlerIsAProgrammingError) {
    LenientParser parser;
    EXPECT_DEATH(defineAlias(parser, "alias:%a"), "eq != nullptr");
}

TEST(AliasLines, TheHandlerTracesItsLine) {
    LenientParser parser;
    support::TraceRecorder const trace;
    defineAlias(parser, "alias:%a=x");
    EXPECT_TRUE(trace.has(8, "( buffer : \"alias:%a=x\" )"));
    EXPECT_TRUE(trace.has(8, "( rhs : x )"));
    EXPECT_TRUE(trace.has(8, "( key: %a, value: x )"));
}

TEST(AliasLines, AValueIsRecordedThroughTheOperationThatFlavoursOverride) {
    struct Flavour : LenientParser {
        void recordAlias(char const* key, char* rhs) override {
            keys.emplace_back(std::string(key) + " <- " + rhs);
            LenientParser::recordAlias(key, rhs);
        }
        std::vector<std::string> keys;
    } parser;
    defineAlias(parser, "alias:%Good=a,b");
    defineAlias(parser, "alias:bad=c");
    EXPECT_THAT(parser.keys, ElementsAre("%Good <- a,b", "bad <- c"));
    EXPECT_EQ(aliasOf(parser, "%good"), "a-b");
}

TEST(AliasLines, RecordingAnAliasEvaluatesItsExpression) {
    LenientParser parser;
    std::string expression = "x,y";
    parser.recordAlias("%a", expression.data());
    EXPECT_EQ(aliasOf(parser, "%a"), "x-y");
}

TEST(AliasLines, AnAliasCountsOnlyForTheLinesAfterIt) {
    LenientParser parser;
    parser.declare({"p/*"});
    parser.loadProfile("p/%a,T,r\nalias:%a=x\np/%a,T,r\n");
    ASSERT_EQ(parser.exceptions().size(), 1U);
    EXPECT_EQ(parser.exceptions()[0].msg, "No such alias defined: '%a'");
    EXPECT_EQ(parser.exceptions()[0].line, 1);
    EXPECT_TRUE(parser.pathMountArgsMap().contains("p/"));
    EXPECT_TRUE(parser.pathMountArgsMap().contains("p/x"));
}

TEST(AliasLines, AValueIsComputedOnceWhenItsLineIsRead) {
    LenientParser parser;
    defineAlias(parser, "alias:%a=x");
    defineAlias(parser, "alias:%b=%a");
    defineAlias(parser, "alias:%a=y");
    EXPECT_EQ(aliasOf(parser, "%b"), "x");
    EXPECT_EQ(aliasOf(parser, "%a"), "y");
}

TEST(AliasLines, AnAliasMayBeDefinedFromItsFormerValue) {
    LenientParser parser;
    defineAlias(parser, "alias:%a=x");
    defineAlias(parser, "alias:%a=%a,y");
    EXPECT_EQ(aliasOf(parser, "%a"), "x-y");
}

class AliasLinesOfAnAgent : public testing::Test {
  protected:
    // What loading a profile with this line throws.
    std::string thrownBy(std::string const& line) {
        device_.profile("Fan", "agentName:Fan\n" + line + "\n");
        agent_ = device_.agent("Fan");
        return support::thrownText([this] { agent_->doInit(); });
    }

    support::Device device_;
    std::unique_ptr<Kelda::AgentMountFileInfo> agent_;
};

TEST_F(AliasLinesOfAnAgent, ABadKeyEndsTheLoadBeforeTheAliasIsRecorded) {
    EXPECT_EQ(thrownBy("alias:_x=1"), support::faultIn("Fan", 2, badKey("_x")));
    EXPECT_EQ(aliasOf(*agent_, "_x"), support::noAlias);
}

TEST_F(AliasLinesOfAnAgent, AChoiceWithoutAColonEndsTheLoad) {
    EXPECT_EQ(thrownBy("alias:%a=x?y"),
              support::faultIn("Fan", 2, "missing ':' after '?' in ternary alias"));
}

TEST_F(AliasLinesOfAnAgent, AnUndefinedAliasEndsTheLoad) {
    EXPECT_EQ(thrownBy("alias:%a=%no"), support::faultIn("Fan", 2, "No such alias defined: '%no'"));
    EXPECT_EQ(messages(*agent_), std::vector<std::string>{"No such alias defined: '%no'"});
}

} // namespace
