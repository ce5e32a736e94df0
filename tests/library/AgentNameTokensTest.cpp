// The tokens of a profile's name: how they are bound to the parts of an agent string, and what is
// kept of them.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/Aliases.h"
#include "support/Device.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::aliasOf;
using support::LenientParser;
using support::messages;
using support::strings;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(Tokenizing, SplitsAtEveryDelimiter) {
    struct Row {
        char const* value;
        char const* delimiter;
        std::vector<std::string> pieces;
    };
    for (auto const& row : std::vector<Row>{
             {"a-b", "-", {"a", "b"}},
             {"a--b", "-", {"a", "", "b"}},
             {"a-", "-", {"a"}},
             {"a--", "-", {"a", ""}},
             {"-a", "-", {"", "a"}},
             {"-", "-", {""}},
             {"--", "-", {"", ""}},
             {"a", "-", {"a"}},
             {"", "-", {}},
             {"Fan-%slot-%sub", "-%", {"Fan", "slot", "sub"}},
             {"Fan-Tray-%slot", "-%", {"Fan-Tray", "slot"}},
             {"Fan-%", "-%", {"Fan"}},
             {"-%", "-%", {""}},
             {"a-b%c", "-%", {"a-b%c"}},
             {"aaa", "aa", {"", "a"}},
             {"a,b", "-", {"a,b"}},
         })
        EXPECT_EQ(strings(LenientParser::tokenize(row.value, row.delimiter)), row.pieces)
            << row.value << " by " << row.delimiter;
}

TEST(Tokenizing, TracesItsArgumentsAndEveryPiece) {
    support::TraceRecorder const trace;
    LenientParser::tokenize("a--b-", "-");
    EXPECT_THAT(trace.at(8), ElementsAre("( value: a--b-, delimiterSeq : - )"));
    EXPECT_THAT(trace.at(3),
                ElementsAre("returned token: a", "returned token: ", "returned token: b"));
}

TEST(Tokenizing, TracesNoPieceOfAnEmptyValue) {
    support::TraceRecorder const trace;
    LenientParser::tokenize("", "-");
    EXPECT_THAT(trace.at(3), IsEmpty());
}

RC_GTEST_PROP(Tokenizing, JoinedAgainThePiecesGiveTheValueBackUpToATrailingDelimiter, ()) {
    auto const value = *rc::gen::container<std::string>(rc::gen::elementOf(std::string("ab--%%")));
    auto const delimiter = *rc::gen::element<std::string>("-", "-%", "--", "-a-", "%");
    std::string joined;
    auto const pieces = strings(LenientParser::tokenize(value, delimiter));
    for (auto const& piece : pieces) {
        RC_ASSERT(piece.find(delimiter) == std::string::npos);
        joined += (&piece == pieces.data() ? "" : delimiter) + piece;
    }
    bool const endsInDelimiter = !pieces.empty() && joined + delimiter == value;
    RC_ASSERT(joined == value || endsInDelimiter);
    RC_ASSERT(pieces.empty() == value.empty());
}

// Notes which tokens are bound to what.
class BindingParser : public LenientParser {
  public:
    // Binds the tokens of a profile's name to an agent string.
    void bind(char const* profile, char const* agent) {
        agentStringIs(agent);
        tokenizeAgentString();
        tokenizeAgentName(profile);
    }

    void recordAgentNameTokenAlias(Rook::String token, Rook::String value,
                                   bool isConsuming) override {
        bindings.push_back(std::string(token.view()) + " = '" + std::string(value.view()) + "'" +
                           (isConsuming ? " consuming" : ""));
        LenientParser::recordAgentNameTokenAlias(token, value, isConsuming);
    }

    std::vector<std::string> bindings;
};

struct BindingRow {
    char const* profile;
    char const* agent;
    std::vector<std::string> bindings;
    std::vector<std::string> labels;
};

void expectBindings(std::vector<BindingRow> const& rows) {
    for (auto const& row : rows) {
        BindingParser parser;
        support::TraceRecorder const trace("MountFileInfo", 1U << 9);
        parser.bind(row.profile, row.agent);
        EXPECT_EQ(parser.bindings, row.bindings) << row.profile << " for " << row.agent;
        EXPECT_EQ(trace.at(9), row.labels) << row.profile << " for " << row.agent;
        EXPECT_THAT(messages(parser), IsEmpty());
    }
}

TEST(TokenBinding, BindsTheExamplesAsDescribed) {
    expectBindings({
        {"Fan-%slot-%sub", "Fan-3-1", {"%slot = '3'", "%sub = '1'"}, {"Defining.1", "Defining.1"}},
        {"Fan-%slot-%sub", "Fan-3", {"%slot = '3'", "%sub = ''"}, {"Defining.1", "Defining.1"}},
        {"Fan-%slot-%sub",
         "Fan-3-1-7",
         {"%slot = '3'", "%sub = '1'"},
         {"Defining.2", "Defining.3"}},
        {"Fan-%rest$", "Fan-a-b-c", {"%rest = 'a-b-c' consuming"}, {"Defining.3"}},
        {"Fan-Tray-%slot", "Fan-Tray-4", {"%slot = '4'"}, {"Defining.1"}},
        {"A-%x", "A-", {"%x = ''"}, {"Defining.1"}},
    });
}

TEST(TokenBinding, WithoutASurplusBindsPartByPart) {
    expectBindings({
        {"Fan-%a", "Fan-1", {"%a = '1'"}, {"Defining.1"}},
        {"Fan-%a$", "Fan-1", {"%a = '1' consuming"}, {"Defining.1"}},
        {"Fan-%a$", "Fan-", {"%a = '' consuming"}, {"Defining.1"}},
        {"Fan-%a-%b$", "Fan-1", {"%a = '1'", "%b = '' consuming"}, {"Defining.1", "Defining.1"}},
        {"Fan-%a-%b$", "Fan-1-2", {"%a = '1'", "%b = '2' consuming"}, {"Defining.1", "Defining.1"}},
        {"Fan-%a-%b", "Fan--2", {"%a = ''", "%b = '2'"}, {"Defining.1", "Defining.1"}},
        {"Fan-Tray-%a-%b", "Fan-Tray", {"%a = ''", "%b = ''"}, {"Defining.1", "Defining.1"}},
        {"-%a", "-1", {"%a = '1'"}, {"Defining.1"}},
        {"Fan", "Fan", {}, {}},
    });
}

TEST(TokenBinding, WithASurplusTheLastTokenTakesOnePartOrAllThatAreLeft) {
    expectBindings({
        {"Fan-%a", "Fan-1-2", {"%a = '1'"}, {"Defining.3"}},
        {"Fan-%a$", "Fan-1-2", {"%a = '1-2' consuming"}, {"Defining.3"}},
        {"Fan-%a$", "Fan-1--3", {"%a = '1--3' consuming"}, {"Defining.3"}},
        {"Fan-%a-%b$",
         "Fan-1-2-3-4",
         {"%a = '1'", "%b = '2-3-4' consuming"},
         {"Defining.2", "Defining.3"}},
        {"Fan-%a-%b-%c",
         "Fan-1-2-3-4-5",
         {"%a = '1'", "%b = '2'", "%c = '3'"},
         {"Defining.2", "Defining.2", "Defining.3"}},
        {"Fan-Tray-%a", "Fan-Tray-4-5", {"%a = '4'"}, {"Defining.3"}},
        {"Fan-Tray-%a-%b$",
         "Fan-Tray-4-5-6",
         {"%a = '4'", "%b = '5-6' consuming"},
         {"Defining.2", "Defining.3"}},
    });
}

TEST(TokenBinding, ADollarSignElsewhereIsPartOfATokensName) {
    expectBindings({
        {"Fan-%a$-%b", "Fan-1-2-3", {"%a$ = '1'", "%b = '2'"}, {"Defining.2", "Defining.3"}},
        {"Fan-%a$b", "Fan-1-2", {"%a$b = '1'"}, {"Defining.3"}},
        {"Fan-%a$$", "Fan-1-2", {"%a$ = '1-2' consuming"}, {"Defining.3"}},
        {"Fan$-%a", "Fan$-1", {"%a = '1'"}, {"Defining.1"}},
    });
}

TEST(TokenBinding, ALaterPartOfTheNameThatIsNoTokenBelongsToTheTokenBeforeIt) {
    expectBindings({{"Fan-%a-tail-%b",
                     "Fan-1-2",
                     {"%a-tail = '1'", "%b = '2'"},
                     {"Defining.1", "Defining.1"}}});
}

TEST(TokenBinding, MakesEveryTokenAnAliasOfTheFile) {
    LenientParser parser;
    parser.agentStringIs("Fan-3-1");
    parser.tokenizeAgentString();
    parser.tokenizeAgentName("Fan-%Slot-%sub");
    EXPECT_EQ(parser.perFileAliases().at("%slot"), "3");
    EXPECT_EQ(aliasOf(parser, "%SUB"), "1");
    EXPECT_EQ(parser.perFileAliases().size(), 2U);
}

TEST(TokenBinding, TracesTheNameAndEveryToken) {
    LenientParser parser;
    parser.agentStringIs("Fan-3");
    parser.tokenizeAgentString();
    support::TraceRecorder const trace;
    parser.tokenizeAgentName("Fan-%slot");
    EXPECT_TRUE(trace.has(8, "( agentName : Fan-%slot )"));
    EXPECT_TRUE(trace.has(8, "( token : %slot, value : 3 )"));
    EXPECT_TRUE(trace.has(8, "( key: %slot )"));
    EXPECT_TRUE(trace.has(8, "( key: %slot, value: 3 )"));
}

TEST(AgentStringTokens, AreTheAgentStringSplitAtHyphens) {
    LenientParser parser;
    parser.agentStringIs("Fan-Tray-3-");
    support::TraceRecorder const trace;
    parser.tokenizeAgentString();
    EXPECT_THAT(strings(parser.agentStringTokens()), ElementsAre("Fan", "Tray", "3"));
    EXPECT_TRUE(trace.has(8, ""));
}

TEST(AgentStringTokens, AreReplacedWholeByTheNextAgentString) {
    LenientParser parser;
    parser.agentStringIs("Fan-Tray-3");
    parser.tokenizeAgentString();
    parser.agentStringIs("Psu");
    parser.tokenizeAgentString();
    EXPECT_THAT(strings(parser.agentStringTokens()), ElementsAre("Psu"));
}

TEST(TitleTemplates, AreTheTokensInTheOrderBound) {
    LenientParser parser;
    parser.agentStringIs("Fan-3-1");
    parser.tokenizeAgentString();
    parser.tokenizeAgentName("Fan-%Slot-%sub");
    parser.tokenizeAgentName("Fan-%rest$");
    parser.tokenizeAgentName("Fan-%Slot");
    EXPECT_THAT(strings(parser.getTitleTemplates()),
                ElementsAre("%Slot", "%sub", "%rest", "%Slot"));
}

TEST(TitleTemplates, MayBeAddedOneByOne) {
    LenientParser parser;
    support::TraceRecorder const trace;
    parser.titleTemplatesPushBack("%a");
    EXPECT_THAT(trace.lines(), ElementsAre(support::TraceLine{8, "( key: %a )"}));
    EXPECT_THAT(strings(parser.getTitleTemplates()), ElementsAre("%a"));
}

TEST(TitleTemplates, AreAQueryTracedWithoutAText) {
    LenientParser const parser;
    support::TraceRecorder const trace;
    EXPECT_THAT(parser.getTitleTemplates(), IsEmpty());
    EXPECT_THAT(trace.lines(), ElementsAre(support::TraceLine{7, ""}));
}

TEST(TitleTemplates, StayWhenTheFilesAliasesAreForgotten) {
    LenientParser parser;
    parser.recordAgentNameTokenAlias("%slot", "3", false);
    parser.resetFileContext();
    EXPECT_EQ(aliasOf(parser, "%slot"), support::noAlias);
    EXPECT_THAT(strings(parser.getTitleTemplates()), ElementsAre("%slot"));
}

TEST(AgentStrings, AreAQueryThatLoadsFirst) {
    support::Device const device;
    auto const agent = device.agent("Fan-3");
    agent->addAgent("Psu", "");
    EXPECT_FALSE(agent->isInitialized());
    EXPECT_THAT(strings(agent->getAgentStrings()), ElementsAre("Fan-3", "Psu"));
    EXPECT_TRUE(agent->isInitialized());
}

TEST(AgentStrings, AreReturnedAsACopyAndTraced) {
    LenientParser parser;
    parser.initializedIs(true);
    parser.agentStringsAre({"Fan"});
    support::TraceRecorder const trace;
    auto strings = parser.getAgentStrings();
    strings.clear();
    EXPECT_TRUE(trace.has(7, ""));
    EXPECT_THAT(parser.getAgentStrings(), ElementsAre("Fan"));
}

} // namespace
