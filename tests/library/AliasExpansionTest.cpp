// Shorthands and aliases in paths: what is replaced by what, in which order, and what is traced.
#include <string>
#include <vector>

#include <KeldaBase/DynCell.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Aliases.h"
#include "support/Device.h"
#include "support/FaultTexts.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::expandedPath;
using support::LenientParser;
using support::lineOf;
using support::messages;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ShorthandReplacement, ReplacesEveryOccurrenceInAnyCase) {
    struct Row {
        char const* text;
        char const* from;
        char const* to;
        char const* result;
    };
    for (auto const& row : std::vector<Row>{
             {"one two", "two", "2", "one 2"},
             {"TWO two tWo", "two", "2", "2 2 2"},
             {"two", "TWO", "2", "2"},
             {"twotwo", "two", "three", "threethree"},
             {"two", "two", "two", "two"},
             {"tWo", "two", "two", "two"},
             {"xtwox", "two", "", "xx"},
             {"two", "two", "", ""},
             {"", "two", "2", ""},
             {"tw", "two", "2", "tw"},
             {"t-w-o", "two", "2", "t-w-o"},
             {"aaa", "aa", "b", "ba"},
             {"aaaa", "aa", "", ""},
             {"/[.]/", ".", "dot", "/[dot]/"},
         }) {
        LenientParser const parser;
        auto buffer = lineOf(row.text);
        parser.strcCaseReplace(buffer, row.from, row.to);
        EXPECT_STREQ(buffer.data(), row.result) << row.text << ": " << row.from << " " << row.to;
        EXPECT_THAT(messages(parser), IsEmpty());
    }
}

TEST(ShorthandReplacement, DoesNotReplaceWhatItInserted) {
    LenientParser const parser;
    auto buffer = lineOf("abA");
    parser.strcCaseReplace(buffer, "a", "aAa");
    EXPECT_STREQ(buffer.data(), "aAabaAa");
}

TEST(ShorthandReplacement, WhatItInsertedDoesNotCombineWithWhatFollows) {
    LenientParser const parser;
    auto buffer = lineOf("abb");
    parser.strcCaseReplace(buffer, "ab", "a");
    EXPECT_STREQ(buffer.data(), "ab");
}

TEST(CellPathShorthands, AreWrittenOutInAnyCaseAndAnywhere) {
    struct Row {
        char const* path;
        char const* result;
    };
    for (auto const& row : std::vector<Row>{
             {"%cellPath/x", "cell/%cellId/x"},
             {"%CELLPATH/x", "cell/%cellId/x"},
             {"%CellPath/%cellpath", "cell/%cellId/cell/%cellId"},
             {"a/%cellPath", "a/cell/%cellId"},
             {"%cellPathology", "cell/%cellIdology"},
             {"x%cellPathx", "xcell/%cellIdx"},
             {"%peerCellPath/x", "cell/%peerCellId/x"},
             {"%PEERCELLPATH/x", "cell/%peerCellId/x"},
             {"%peerCellPath%cellPath", "cell/%peerCellIdcell/%cellId"},
             {"%cellId/cellPath/%cell/Path", "%cellId/cellPath/%cell/Path"},
             {"", ""},
         }) {
        LenientParser const parser;
        auto buffer = lineOf(row.path);
        parser.convertPath(buffer);
        EXPECT_STREQ(buffer.data(), row.result) << row.path;
    }
}

TEST(CellPathShorthands, ThePeersIsNotTouchedByTheRuleForTheOwn) {
    LenientParser const parser;
    auto buffer = lineOf("%peerCellPath/x");
    parser.strcCaseReplace(buffer, "%cellPath", "cell/%cellId");
    EXPECT_STREQ(buffer.data(), "%peerCellPath/x");
}

class AliasExpansion : public testing::Test {
  protected:
    AliasExpansion() {
        parser_.perFileAliasesPushBack("%slot", "3");
        parser_.perFileAliasesPushBack("%name", "FanTray");
        parser_.perFileAliasesPushBack("%long_name_2", "x");
        parser_.perFileAliasesPushBack("%empty", "");
        parser_.perFileAliasesPushBack("%percent", "%slot");
        parser_.perFileAliasesPushBack("%path", "a/b");
    }

    LenientParser parser_;
};

TEST_F(AliasExpansion, ReplacesEveryAliasByItsValue) {
    struct Row {
        char const* path;
        char const* result;
    };
    for (auto const& row : std::vector<Row>{
             {"/a/%slot", "/a/3"},
             {"%slot", "3"},
             {"%SLOT/%Slot", "3/3"},
             {"/a/%slot/b", "/a/3/b"},
             {"/a/%name/b", "/a/FanTray/b"},
             {"%slot%slot", "33"},
             {"%name%slot%name", "FanTray3FanTray"},
             {"x%slot", "x3"},
             {"%long_name_2/y", "x/y"},
             {"/%empty/%empty", "//"},
             {"%empty", ""},
             {"%path/c", "a/b/c"},
             {"%sliceId/c", "FixedSystem/c"},
             {"/no/alias", "/no/alias"},
             {"", ""},
         }) {
        EXPECT_EQ(expandedPath(parser_, row.path), row.result) << row.path;
        EXPECT_THAT(messages(parser_), IsEmpty()) << row.path;
    }
}

TEST_F(AliasExpansion, ATokenEndsAtTheFirstCharacterThatIsNoLetterDigitOrUnderscore) {
    for (std::string const end : {"-", "/", ".", ",", "$", "*", ":", " ", "~", "\xc3\xa9"}) {
        EXPECT_EQ(expandedPath(parser_, "/a/%slot" + end + "x"), "/a/3" + end + "x") << end;
        EXPECT_THAT(messages(parser_), IsEmpty()) << end;
    }
}

TEST_F(AliasExpansion, ATokenIsTheLongestRunOfItsCharacters) {
    for (std::string const token : {"%slots", "%slot1", "%slot_", "%slot_a"}) {
        LenientParser parser;
        parser.perFileAliasesPushBack("%slot", "3");
        EXPECT_EQ(expandedPath(parser, "a/" + token + "/b"), "a//b");
        EXPECT_THAT(messages(parser), ElementsAre("No such alias defined: '" + token + "'"));
    }
}

TEST_F(AliasExpansion, ALonePercentSignIsATokenLikeAnyOther) {
    for (std::string const path : {"a/%", "%/a", "a/%-b", "a%%slot"}) {
        LenientParser parser;
        parser.perFileAliasesPushBack("%slot", "3");
        auto const expected = path == "a%%slot" ? "a3" : std::string(path).erase(path.find('%'), 1);
        EXPECT_EQ(expandedPath(parser, path), expected) << path;
        EXPECT_THAT(messages(parser), ElementsAre("No such alias defined: '%'")) << path;
    }
}

TEST_F(AliasExpansion, ALonePercentSignMayBeAnAlias) {
    parser_.perFileAliasesPushBack("%", "percent");
    EXPECT_EQ(expandedPath(parser_, "a/%/b%"), "a/percent/bpercent");
    EXPECT_THAT(messages(parser_), IsEmpty());
}

TEST_F(AliasExpansion, AnUndefinedAliasIsReportedAndReplacedByNothing) {
    EXPECT_EQ(expandedPath(parser_, "a/%no/%slot/%neither"), "a//3/");
    EXPECT_THAT(messages(parser_),
                ElementsAre("No such alias defined: '%no'", "No such alias defined: '%neither'"));
}

TEST_F(AliasExpansion, AValueIsNotExpandedAgain) {
    EXPECT_EQ(expandedPath(parser_, "/a/%percent/%slot"), "/a/%slot/3");
    EXPECT_THAT(messages(parser_), IsEmpty());
}

TEST_F(AliasExpansion, AValueThatEndsInAPercentSignDoesNotCombineWithWhatFollows) {
    parser_.perFileAliasesPushBack("%end", "50%");
    EXPECT_EQ(expandedPath(parser_, "%end-slot"), "50%-slot");
    EXPECT_THAT(messages(parser_), IsEmpty());
}

TEST_F(AliasExpansion, TracesEachTokenItsValueAndTheResult) {
    support::TraceRecorder const trace;
    expandedPath(parser_, "a/%slot/%name");
    EXPECT_TRUE(trace.has(8, "( path : a/%slot/%name )"));
    std::vector<std::string> ownMessages;
    for (auto const& text : trace.at(9))
        if (!text.starts_with(" Found "))
            ownMessages.push_back(text);
    EXPECT_THAT(ownMessages,
                ElementsAre("Found token %slot", "Found token '%slot'with value '3'",
                            "Found token %name", "Found token '%name'with value 'FanTray'",
                            "after replacement:a/3/FanTray"));
}

TEST_F(AliasExpansion, TracesTheResultOfAPathWithoutAliasesToo) {
    support::TraceRecorder const trace;
    expandedPath(parser_, "a/b");
    EXPECT_THAT(trace.at(9), ElementsAre("after replacement:a/b"));
}

TEST_F(AliasExpansion, AnUndefinedAliasIsTraced) {
    support::TraceRecorder const trace;
    expandedPath(parser_, "a/%no");
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser_.exceptions().at(0))));
    EXPECT_TRUE(trace.has(9, "Found token '%no'with value ''"));
}

TEST(AliasExpansionOfLines, AProfilePathHasItsShorthandsWrittenOutBeforeItsAliasesExpanded) {
    LenientParser parser;
    parser.declare({"cell/*/foo"});
    parser.loadProfile("alias:%cellId=3\n%CellPath/foo,T,r\n");
    EXPECT_THAT(messages(parser), IsEmpty());
    EXPECT_TRUE(parser.pathMountArgsMap().contains("cell/3/foo"));
}

TEST(AliasExpansionOfLines, AnAliasWhoseValueIsAShorthandIsNotWrittenOut) {
    LenientParser parser;
    parser.declare({"*/foo"});
    parser.perFileAliasesPushBack("%where", "%cellPath");
    parser.loadProfile("%where/foo,T,r\n");
    EXPECT_THAT(messages(parser), IsEmpty());
    EXPECT_TRUE(parser.pathMountArgsMap().contains("%cellPath/foo"));
}

TEST(AliasExpansionOfLines, BothCellsPathsAreExpandedWithTheirNumbers) {
    LenientParser parser;
    parser.declare({"cell/*/foo"});
    parser.loadProfile("%cellPath/foo,T,r\n%peerCellPath/foo,T,r\n", "Fan");
    auto const own = "cell/" + std::to_string(DynCell::cellId()) + "/foo";
    auto const peer = "cell/" + std::to_string(DynCell::peerCellId(0)) + "/foo";
    EXPECT_THAT(support::strings(parser.profileFilePathsMap().at("Fan")),
                testing::UnorderedElementsAre(own, peer));
}

TEST(AliasExpansionOfLines, ThePathOfAPreinitLineKeepsItsAliases) {
    LenientParser parser;
    parser.perFileAliasesPushBack("%cellId", "3");
    parser.loadPreinit("%cellPath/x,T\n");
    EXPECT_THAT(messages(parser), IsEmpty());
    EXPECT_TRUE(parser.pathAttrMap().contains("cell/%cellId/x"));
}

TEST(AliasExpansionOfLines, ASubAgentsNameHasItsAliasesExpandedButNoShorthands) {
    LenientParser parser;
    parser.initializedIs(true);
    parser.perFileAliasesPushBack("%slot", "3");
    parser.handleSubAgentLine(lineOf("subAgent:Fan-%slot"));
    parser.handleSubAgentLine(lineOf("subAgent:Fan-%cellPath"));
    EXPECT_THAT(support::strings(parser.subAgents()), ElementsAre("Fan-3", "Fan-"));
    EXPECT_THAT(messages(parser), ElementsAre("No such alias defined: '%cellPath'"));
}

TEST(AliasExpansionOfLines, AnUndefinedAliasInAPathEndsTheLoadOfAnAgent) {
    support::Device device;
    device.preinit("fan", "fan/%slot,T,createOnMount\n");
    device.profile("Fan", "agentName:Fan\nfan/%slot,T,r\n");
    auto const agent = device.agent("Fan");
    EXPECT_EQ(support::thrownText([&] { agent->doInit(); }),
              support::faultIn("Fan", 2, "No such alias defined: '%slot'"));
    EXPECT_THAT(agent->pathMountArgsMap(), IsEmpty());
}

} // namespace
