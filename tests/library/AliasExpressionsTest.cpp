// The expressions on the right of alias lines: lists, tests, choices and single operands.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/Aliases.h"
#include "support/Device.h"
#include "support/FaultTexts.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::aliasOf;
using support::defineAlias;
using support::LenientParser;
using support::messages;
using testing::ElementsAre;
using testing::IsEmpty;

char const missingColon[] = "missing ':' after '?' in ternary alias";

std::string noSuchAlias(std::string const& name) {
    return "No such alias defined: '" + name + "'";
}

// One expression and its value; %one is "1", %empty is "", %name is "rack-lab-7".
struct Row {
    char const* expression;
    char const* value;
};

void expectValues(std::vector<Row> const& rows) {
    for (auto const& row : rows) {
        LenientParser parser;
        parser.perFileAliasesPushBack("%one", "1");
        parser.perFileAliasesPushBack("%empty", "");
        parser.perFileAliasesPushBack("%name", "rack-lab-7");
        EXPECT_EQ(parser.evaluateAliasExpr(row.expression), row.value) << row.expression;
        EXPECT_THAT(messages(parser), IsEmpty()) << row.expression;
    }
}

TEST(AliasExpressions, ASingleOperandIsALiteralOrAnAlias) {
    expectValues({
        {"x", "x"},
        {"", ""},
        {"%one", "1"},
        {"%ONE", "1"},
        {"%empty", ""},
        {"%sliceId", "FixedSystem"},
        {"a:b", "a:b"},
        {"a=b", "a=b"},
        {"a/b-c.d", "a/b-c.d"},
        {"CaSe", "CaSe"},
    });
}

TEST(AliasExpressions, AListJoinsItsNonEmptyPiecesWithHyphens) {
    expectValues({
        {"x,y", "x-y"},
        {"x,y,z", "x-y-z"},
        {"x,,y", "x-y"},
        {",x", "x"},
        {"x,", "x"},
        {",,x,,", "x"},
        {",", ""},
        {",,", ""},
        {"%empty,x", "x"},
        {"x,%empty,y", "x-y"},
        {"%empty,%empty", ""},
        {"%sliceId,%one", "FixedSystem-1"},
        {"%one,%one", "1-1"},
        {"-,-", "---"},
    });
}

TEST(AliasExpressions, ATestGivesItsLeftValueWhenThatContainsTheRightOne) {
    expectValues({
        {"abc~b", "abc"},
        {"abc~abc", "abc"},
        {"abc~a", "abc"},
        {"abc~c", "abc"},
        {"abc~d", ""},
        {"abc~B", ""},
        {"abc~abcd", ""},
        {"abc~", "abc"},
        {"~", ""},
        {"~b", ""},
        {"%name~lab", "rack-lab-7"},
        {"%name~LAB", ""},
        {"%name~prod", ""},
        {"%name~%empty", "rack-lab-7"},
        {"%one~%one", "1"},
        {"x1~%one", "x1"},
        {"%empty~%one", ""},
        {"%empty~%empty", ""},
    });
}

TEST(AliasExpressions, ATestIsSplitAtItsFirstTilde) {
    expectValues({{"a~b~a", ""}, {"a~a~", ""}, {"a~~", ""}, {"~a~", ""}});
}

TEST(AliasExpressions, AChoiceIsMadeByWhetherItsConditionIsEmpty) {
    expectValues({
        {"x?y:z", "y"},
        {"?y:z", "z"},
        {"%one?y:z", "y"},
        {"%empty?y:z", "z"},
        {"%name?%one:%empty", "1"},
        {"%empty?%one:%name", "rack-lab-7"},
        {"x?:z", ""},
        {"?y:", ""},
        {"?:", ""},
        {"0?y:z", "y"},
    });
}

TEST(AliasExpressions, AChoiceIsCutAtItsFirstSigns) {
    expectValues({
        {"x?y:z:w", "y"},
        {"?y:z:w", "z:w"},
        {"x?y?a:z", "y?a"},
        {"?y?a:z", "z"},
    });
}

TEST(AliasExpressions, TheColonOfAChoiceMayStandBeforeTheQuestionSign) {
    expectValues({{"c:d?e", "e"}, {":d?e", "d"}, {"%empty:d?e", "d"}, {"%one:d?e", "e"}});
}

TEST(AliasExpressions, AListWinsOverATestAndATestOverAChoice) {
    expectValues({
        {"a,b?c:d", "a-b?c:d"},
        {"a?b:c,d", "a?b:c-d"},
        {"a,b~c", "a-b~c"},
        {"a~b,c", "a~b-c"},
        {"a?b:c~b", "a?b:c"},
        {"a~b?c:d", ""},
        {"ab?c~b?c", "ab?c"},
    });
}

TEST(AliasExpressions, OperandsAreNotTrimmed) {
    expectValues({
        {" x ", " x "},
        {" a , b ", " a - b "},
        {"a b~ ", "a b"},
        {"a~ ", ""},
        {" ? y : z ", " y "},
    });
}

TEST(AliasExpressions, AnOperandWithAPercentSignAnywhereIsAnAliasNameAsAWhole) {
    for (char const* const operand : {"%no", "x%one", "%one/x", "%", "%%one", "%one:x"}) {
        LenientParser parser;
        parser.perFileAliasesPushBack("%one", "1");
        EXPECT_EQ(parser.evaluateAliasExpr(operand), "") << operand;
        EXPECT_THAT(messages(parser), ElementsAre(noSuchAlias(operand))) << operand;
    }
}

TEST(AliasExpressions, AnUndefinedAliasIsReportedAndCountsAsEmpty) {
    LenientParser parser;
    parser.perFileAliasesPushBack("%cellId", "1");
    EXPECT_EQ(parser.evaluateAliasExpr("%nothing,%cellId"), "1");
    EXPECT_THAT(messages(parser), ElementsAre(noSuchAlias("%nothing")));
}

TEST(AliasExpressions, AnUndefinedConditionTakesTheOtherOperand) {
    LenientParser parser;
    EXPECT_EQ(parser.evaluateAliasExpr("%no?y:z"), "z");
    EXPECT_THAT(messages(parser), ElementsAre(noSuchAlias("%no")));
}

TEST(AliasExpressions, OperandsAreEvaluatedInOrderAndAllOfThem) {
    struct Order {
        char const* expression;
        std::vector<std::string> evaluated;
    };
    for (auto const& row : std::vector<Order>{
             {"%a,%b,%c", {"%a", "%b", "%c"}},
             {"%a~%b", {"%a", "%b"}},
             {"%a?%b:%c", {"%a", "%b", "%c"}},
             {"%a:%b?%c", {"%a", "%c", "%b"}},
             {"x?%b:%c", {"%b", "%c"}},
         }) {
        LenientParser parser;
        parser.evaluateAliasExpr(row.expression);
        std::vector<std::string> expected;
        for (auto const& name : row.evaluated)
            expected.push_back(noSuchAlias(name));
        EXPECT_EQ(messages(parser), expected) << row.expression;
    }
}

TEST(AliasExpressions, AChoiceWithoutAColonIsReportedAndStoresTheEmptyString) {
    LenientParser parser;
    defineAlias(parser, "alias:%a=x?y");
    EXPECT_THAT(messages(parser), ElementsAre(missingColon));
    EXPECT_EQ(aliasOf(parser, "%a"), "");
}

TEST(AliasExpressions, AChoiceWithoutAColonEvaluatesNothing) {
    LenientParser parser;
    EXPECT_EQ(parser.evaluateAliasExpr("%no?%neither"), "");
    EXPECT_EQ(parser.evaluateAliasExpr("?"), "");
    EXPECT_THAT(messages(parser), ElementsAre(missingColon, missingColon));
}

TEST(AliasExpressions, AChoiceWithoutAColonIsTraced) {
    LenientParser parser;
    support::TraceRecorder const trace;
    parser.evaluateAliasExpr("x?y");
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser.exceptions().at(0))));
    EXPECT_TRUE(trace.has(3, "Returning empty string"));
    EXPECT_TRUE(trace.has(8, "( rhs : x?y )"));
}

TEST(AliasExpressions, AnUndefinedAliasOnALineIsReportedWithFileAndLine) {
    LenientParser parser;
    parser.loadProfile("\nalias:%a=x,%no\n", "Fan");
    ASSERT_EQ(parser.exceptions().size(), 1U);
    EXPECT_EQ(parser.exceptions()[0], (Kelda::MfiException{"Fan", noSuchAlias("%no"), 2}));
}

TEST(AliasExpressions, ATestMayBecomeTheConditionOfALaterChoice) {
    for (auto const& [system, directory] : {std::pair{"rack-lab-7", "lab"}, {"rack-7", "prod"}}) {
        LenientParser parser;
        parser.predefinedAliasesIs("%sysname", system);
        defineAlias(parser, "alias:%isLab=%sysname~lab");
        defineAlias(parser, "alias:%dir=%isLab?lab:prod");
        EXPECT_EQ(aliasOf(parser, "%dir"), directory) << system;
    }
}

TEST(AliasExpressions, OfAnAliasLineGiveTheValueOfTheAlias) {
    struct Line {
        char const* line;
        char const* value;
    };
    for (auto const& row : std::vector<Line>{
             {"alias:%a=x,,y", "x-y"},
             {"alias:%a=,x", "x"},
             {"alias:%a=abc~b", "abc"},
             {"alias:%a=abc~d", ""},
             {"alias:%a=abc~", "abc"},
             {"alias:%a=c:d?e", "e"},
             {"alias:%a=a,b?c:d", "a-b?c:d"},
         }) {
        LenientParser parser;
        defineAlias(parser, row.line);
        EXPECT_EQ(aliasOf(parser, "%a"), row.value) << row.line;
        EXPECT_THAT(messages(parser), IsEmpty()) << row.line;
    }
}

class OperandsOfAnAgent : public testing::Test {
  protected:
    support::Device device_;
    std::unique_ptr<Kelda::AgentMountFileInfo> agent_ = device_.emptyAgent();
};

TEST_F(OperandsOfAnAgent, WithoutAPercentSignStandForThemselvesWithoutALookup) {
    agent_->perFileAliasesPushBack("plain", "alias");
    support::TraceRecorder const trace("MountFileInfo", 1U << 9);
    EXPECT_EQ(agent_->evaluateAliasValue("plain"), "plain");
    EXPECT_EQ(agent_->evaluateAliasValue(""), "");
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(OperandsOfAnAgent, WithAPercentSignAreLookedUp) {
    EXPECT_EQ(agent_->evaluateAliasValue("%sliceID"), "FixedSystem");
    EXPECT_THAT(messages(*agent_), IsEmpty());
}

TEST_F(OperandsOfAnAgent, ThatNameNoAliasAreThrown) {
    EXPECT_EQ(support::thrownText([this] { agent_->evaluateAliasValue("%undefined"); }),
              noSuchAlias("%undefined"));
    EXPECT_THAT(messages(*agent_), ElementsAre(noSuchAlias("%undefined")));
}

// Pieces of literals: nothing that an expression or an alias begins with.
rc::Gen<std::vector<std::string>> literalPieces() {
    return rc::gen::container<std::vector<std::string>>(
        rc::gen::container<std::string>(rc::gen::elementOf(std::string("abXY09_/-?:~ "))));
}

RC_GTEST_PROP(AliasExpressions, AListOfLiteralsIsItsNonEmptyPiecesJoinedByHyphens, ()) {
    auto const pieces = *literalPieces();
    RC_PRE(pieces.size() > 1);
    std::string expression = pieces.front();
    std::string expected = pieces.front();
    for (auto piece = pieces.begin() + 1; piece != pieces.end(); ++piece) {
        expression += "," + *piece;
        expected += (expected.empty() || piece->empty() ? "" : "-") + *piece;
    }
    LenientParser parser;
    RC_ASSERT(parser.evaluateAliasExpr(expression.c_str()) == expected);
    RC_ASSERT(parser.exceptions().empty());
}

} // namespace
