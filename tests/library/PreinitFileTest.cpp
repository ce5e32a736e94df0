// The lines of a preinit file: how one is split, and what it records.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>

#include "support/CleanEnvironment.h"
#include "support/FaultLists.h"
#include "support/LenientParser.h"
#include "support/PreinitMaps.h"
#include "support/TraceRecorder.h"

namespace {

using support::Attributes;
using support::Configs;
using support::LenientParser;
using support::Strings;
using support::Types;
using testing::ElementsAre;
using testing::IsEmpty;

class PreinitFile : public testing::Test {
  protected:
    PreinitFile() { parser_.initializedIs(true); }

    Types types() const { return support::declaredTypes(parser_); }
    Attributes attributes() const { return support::declaredAttributes(parser_); }
    Configs configs() { return support::declaredConfigs(parser_); }
    Strings faults() const { return support::faultList(parser_); }

    support::CleanEnvironment environment_;
    LenientParser parser_;
};

struct LineRow {
    std::string line;
    Types types;
};

// Reads each row's line with a parser of its own, expects its types and no fault.
void expectTypes(std::vector<LineRow> const& rows) {
    for (auto const& [line, types] : rows) {
        SCOPED_TRACE(line);
        LenientParser parser;
        parser.loadPreinit(line + "\n");
        EXPECT_EQ(support::declaredTypes(parser), types);
        EXPECT_THAT(support::faultList(parser), IsEmpty());
    }
}

struct FaultRow {
    std::string line;
    Strings faults;
};

// Reads each row's line with a parser of its own, expects these faults and no type.
void expectFaults(std::vector<FaultRow> const& rows) {
    for (auto const& [line, faults] : rows) {
        SCOPED_TRACE(line);
        LenientParser parser;
        support::TraceRecorder const trace("MountFileInfo", 1);
        parser.loadPreinit(line + "\n");
        EXPECT_EQ(support::messages(parser), faults);
        EXPECT_EQ(trace.at(0), support::continuedTraces(parser));
        EXPECT_THAT(support::declaredTypes(parser), IsEmpty());
    }
}

// --- the kinds of line ---

TEST_F(PreinitFile, APlainPathIsThereFromTheStart) {
    EXPECT_EQ(parser_.loadPreinit("hw/fan,Hw::Fan\n"), 1);
    EXPECT_EQ(types(), (Types{{"hw", "Fen::Dir"}, {"hw/fan", "Hw::Fan"}}));
    EXPECT_EQ(attributes(), (Attributes{{"hw/fan", "none"}}));
    EXPECT_THAT(configs(), IsEmpty());
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(PreinitFile, APathCreatedOnMountMayHoldAnyTokenAndGivesItsAncestorsNoType) {
    parser_.loadPreinit("hw/%slot/status,Hw::Status,createOnMount\n");
    EXPECT_EQ(types(), (Types{{"hw/*/status", "Hw::Status"}}));
    EXPECT_EQ(attributes(), (Attributes{{"hw/%slot/status", "createOnMount"}}));
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(PreinitFile, APathCreatedOnStandbyGivesItsAncestorsATypeToo) {
    parser_.loadPreinit("cell/%peerCellId/state,State::Dir,createOnStandby\n");
    EXPECT_EQ(
        types(),
        (Types{{"cell", "Fen::Dir"}, {"cell/*", "Fen::Dir"}, {"cell/*/state", "State::Dir"}}));
    EXPECT_EQ(attributes(), (Attributes{{"cell/%peerCellId/state", "createOnStandby"}}));
}

TEST_F(PreinitFile, AConfigPathIsDeclaredAsOne) {
    parser_.loadPreinit("CONFIG:sys/name,Config::Name\n");
    EXPECT_EQ(types(), (Types{{"sys", "Fen::Dir"}, {"sys/name", "Config::Name"}}));
    EXPECT_EQ(attributes(), (Attributes{{"sys/name", "none"}}));
    EXPECT_EQ(configs(), (Configs{{"sys/name", {true, true}}}));
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(PreinitFile, AConfigPathMayBeCreatedOnStandby) {
    parser_.loadPreinit("CONFIG:a,T,createOnStandby\n");
    EXPECT_EQ(configs(), (Configs{{"a", {true, true}}}));
    EXPECT_EQ(attributes(), (Attributes{{"a", "createOnStandby"}}));
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(PreinitFile, TheConfigPrefixIsTakenInAnyCaseAndOnlyAtTheStart) {
    for (char const* const line : {"CONFIG:a,T", "config:a,T", "CoNfIg: a , T", " C ONFIG : a,T"}) {
        LenientParser parser;
        parser.initializedIs(true);
        parser.loadPreinit(line);
        EXPECT_EQ(support::declaredConfigs(parser), (Configs{{"a", {true, true}}})) << line;
        EXPECT_EQ(support::declaredTypes(parser), (Types{{"a", "T"}})) << line;
    }
    parser_.loadPreinit("CONFIGa,T\nx/CONFIG:a,T\nCONFIG;b,T\n");
    EXPECT_THAT(configs(), IsEmpty());
    EXPECT_EQ(types(),
              (Types{{"CONFIGa", "T"}, {"x", "Fen::Dir"}, {"x/CONFIG:a", "T"}, {"CONFIG;b", "T"}}));
}

TEST_F(PreinitFile, TheAttributeIsTakenInAnyCase) {
    parser_.loadPreinit("a/b,T,createonmount\nc/d,T,CREATEONSTANDBY\n");
    EXPECT_EQ(attributes(), (Attributes{{"a/b", "createOnMount"}, {"c/d", "createOnStandby"}}));
    EXPECT_EQ(types(), (Types{{"a/b", "T"}, {"c", "Fen::Dir"}, {"c/d", "T"}}));
    EXPECT_THAT(faults(), IsEmpty());
}

// --- splitting a line ---

TEST_F(PreinitFile, OneSlashBeforeTheCommaIsDropped) {
    expectTypes({
        {"a/b/,T", {{"a", "Fen::Dir"}, {"a/b", "T"}}},
        {"a/,T", {{"a", "T"}}},
        {"a//,T", {{"a", "Fen::Dir"}, {"a/", "T"}}},
        {"/,T", {{"", "T"}}},
        {"/a/,T", {{"", "Fen::Dir"}, {"/a", "T"}}},
        {"CONFIG:a/,T", {{"a", "T"}}},
        {"a / ,T", {{"a", "T"}}},
    });
}

TEST_F(PreinitFile, AnEmptyPathOrTypeIsRecordedAsItIs) {
    expectTypes({
        {",T", {{"", "T"}}},
        {"CONFIG:,T", {{"", "T"}}},
        {"a,", {{"a", ""}}},
        {"a,,createOnMount", {{"a", ""}}},
        {",", {{"", ""}}},
    });
}

TEST_F(PreinitFile, ATypeIsTakenAsItIsWritten) {
    expectTypes({
        {"a,Type::Of<Thing>", {{"a", "Type::Of<Thing>"}}},
        {"a,T/", {{"a", "T/"}}},
        {"a,%cellPath", {{"a", "%cellPath"}}},
        {"a,CONFIG:T", {{"a", "CONFIG:T"}}},
        {"a,\xc3\xa9", {{"a", "\xc3\xa9"}}},
    });
}

TEST_F(PreinitFile, WhitespaceAnywhereIsIgnored) {
    expectTypes({
        {"CONFIG: a/b , T", {{"a", "Fen::Dir"}, {"a/b", "T"}}},
        {"a / b\t,\tT y p e", {{"a", "Fen::Dir"}, {"a/b", "Type"}}},
        {"a,T\r", {{"a", "T"}}},
        {"\v\f a,T \v\f", {{"a", "T"}}},
        {"a,T,create On Mount", {{"a", "T"}}},
    });
}

TEST_F(PreinitFile, ALineOfOnlyACommentOrBlanksRecordsNothing) {
    for (char const* const line : {"", " ", "\t \v\f\r", "#", "# a,T", "   # a,T", "#a,T,bad"}) {
        SCOPED_TRACE(line);
        LenientParser parser;
        EXPECT_EQ(parser.loadPreinit(std::string(line) + "\n"), 1);
        EXPECT_THAT(support::declaredTypes(parser), IsEmpty());
        EXPECT_THAT(support::declaredAttributes(parser), IsEmpty());
        EXPECT_THAT(support::faultList(parser), IsEmpty());
    }
}

TEST_F(PreinitFile, ACommentEndsALine) {
    expectTypes({
        {"a,T # note", {{"a", "T"}}},
        {"a,T,createOnMount#, bad", {{"a", "T"}}},
        {"a,#T", {{"a", ""}}},
    });
}

TEST_F(PreinitFile, AnEmptyFileCountsToo) {
    EXPECT_EQ(parser_.loadPreinit(""), 1);
    EXPECT_THAT(types(), IsEmpty());
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(PreinitFile, TheLastLineNeedsNoLineEnd) {
    parser_.loadPreinit("a,A\nb,B");
    EXPECT_EQ(types(), (Types{{"a", "A"}, {"b", "B"}}));
}

TEST_F(PreinitFile, ANulCharacterEndsItsLineAndNoOther) {
    parser_.loadPreinit(std::string_view("a,A\0,bad\nb,B\n", 13));
    EXPECT_EQ(types(), (Types{{"a", "A"}, {"b", "B"}}));
}

// --- tokens and shorthands ---

TEST_F(PreinitFile, EveryTokenOfATypedPathBecomesAStar) {
    expectTypes({
        {"%cellId,T", {{"*", "T"}}},
        {"a/%cellId/c,T", {{"a", "Fen::Dir"}, {"a/*", "Fen::Dir"}, {"a/*/c", "T"}}},
        {"%cellId%peerCellId,T", {{"**", "T"}}},
        {"x%cellId-y,T", {{"x*-y", "T"}}},
        {"%,T", {{"*", "T"}}},
        {"%%,T", {{"**", "T"}}},
        {"%a_1.%B2+%c,T,createOnMount", {{"*.*+*", "T"}}},
        {"*,T", {{"*", "T"}}},
    });
}

TEST_F(PreinitFile, TheTokensStayInTheAttributesPath) {
    parser_.loadPreinit("a/%cellId,T\n");
    EXPECT_EQ(attributes(), (Attributes{{"a/%cellId", "none"}}));
}

TEST_F(PreinitFile, TheCellShorthandsAreWrittenOut) {
    parser_.loadPreinit("a/%cellPath/x,T\n%PEERcellPATH/y,T\n");
    EXPECT_EQ(attributes(),
              (Attributes{{"a/cell/%cellId/x", "none"}, {"cell/%peerCellId/y", "none"}}));
    EXPECT_EQ(parser_.pathTypeMap("a/cell/*/x"), "T");
    EXPECT_EQ(parser_.pathTypeMap("cell/*/y"), "T");
    EXPECT_THAT(faults(), IsEmpty());
}

// --- ancestors ---

TEST_F(PreinitFile, AnAncestorWithATypeKeepsItAndShieldsThoseAboveIt) {
    parser_.loadPreinit("a/b,T,createOnMount\na/b/c/d,U\n");
    EXPECT_EQ(types(), (Types{{"a/b", "T"}, {"a/b/c", "Fen::Dir"}, {"a/b/c/d", "U"}}));
}

TEST_F(PreinitFile, AnAncestorMayBeTypedLater) {
    parser_.loadPreinit("a/b,T\na,U\n");
    EXPECT_EQ(types(), (Types{{"a", "U"}, {"a/b", "T"}}));
}

TEST_F(PreinitFile, ALaterLineForTheSameWildcardPathReplacesTheType) {
    parser_.loadPreinit("%cellId,First\n%peerCellId,Second\n*,Third\n");
    EXPECT_EQ(types(), (Types{{"*", "Third"}}));
    EXPECT_THAT(faults(), IsEmpty());
}

// --- faults ---

TEST_F(PreinitFile, ALineWithoutACommaIsASyntaxError) {
    expectFaults({
        {"foo", {"preinit syntax error: foo"}},
        {" a b\tc ", {"preinit syntax error: abc"}},
        {"CONFIG:a", {"preinit syntax error: CONFIG:a"}},
        {"a # ,T", {"preinit syntax error: a"}},
        {"a%s", {"preinit syntax error: a%s"}},
        {"{}", {"preinit syntax error: {}"}},
    });
}

TEST_F(PreinitFile, ABadAttributeKeepsTheTypeOut) {
    expectFaults({
        {"a,b,c,d", {"invalid attribute: c,d"}},
        {"a,T,", {"invalid attribute: "}},
        {"a,T,createOnMount,", {"invalid attribute: createOnMount,"}},
        {"a,T,createOnMounts", {"invalid attribute: createOnMounts"}},
        {"a,T,none", {"invalid attribute: none"}},
        {"a,,,", {"invalid attribute: ,"}},
    });
}

TEST_F(PreinitFile, ABadAttributeOfAConfigPathKeepsItFromBeingOne) {
    parser_.loadPreinit("CONFIG:a,T,bad\n");
    EXPECT_THAT(configs(), IsEmpty());
    EXPECT_EQ(attributes(), (Attributes{{"a", "invalid"}}));
}

TEST_F(PreinitFile, AForeignTokenNeedsCreateOnMount) {
    expectFaults({
        {"a/%slot,T", {"non-cell tokens in non-createOnMount path: a/%slot"}},
        {"%slot,T,createOnStandby", {"non-cell tokens in non-createOnMount path: %slot"}},
        {"CONFIG:%slot,T", {"non-cell tokens in non-createOnMount path: %slot"}},
    });
}

TEST_F(PreinitFile, ARedefinedAttributeKeepsTheNewTypeOut) {
    parser_.loadPreinit("a,First,createOnMount\na,Second,createOnStandby\n");
    EXPECT_THAT(faults(), ElementsAre("Preinit:2: Redefining attribute for a\nOld Attribute: "
                                      "createOnMount\nNew Attribute: createOnStandby"));
    EXPECT_EQ(types(), (Types{{"a", "First"}}));
    EXPECT_EQ(attributes(), (Attributes{{"a", "createOnMount"}}));
}

TEST_F(PreinitFile, AConfigPathWithATokenIsReportedAndRecorded) {
    parser_.loadPreinit("CONFIG:a/%cellId,T\n");
    EXPECT_THAT(faults(), ElementsAre("Preinit:1: alias found in preinit CONFIG path: a/%cellId"));
    EXPECT_EQ(configs(), (Configs{{"a/%cellId", {true, true}}}));
    EXPECT_EQ(types(), (Types{{"a", "Fen::Dir"}, {"a/*", "T"}}));
}

TEST_F(PreinitFile, AConfigPathMayNotBeCreatedOnMount) {
    parser_.loadPreinit("CONFIG:a/b,T,createOnMount\n");
    EXPECT_THAT(faults(),
                ElementsAre("Preinit:1: path a/b may not have both CONFIG and createOnMount. All "
                            "config paths must be present at startup"));
    EXPECT_EQ(attributes(), (Attributes{{"a/b", "createOnMount"}}));
    EXPECT_THAT(configs(), IsEmpty());
    EXPECT_THAT(types(), IsEmpty());
}

TEST_F(PreinitFile, LoadingGoesOnAfterAFault) {
    parser_.loadPreinit("bad\na,A\nworse\nb,B\n");
    EXPECT_THAT(faults(), ElementsAre("Preinit:1: preinit syntax error: bad",
                                      "Preinit:3: preinit syntax error: worse"));
    EXPECT_EQ(types(), (Types{{"a", "A"}, {"b", "B"}}));
}

// --- blanks make no difference ---

RC_GTEST_PROP(PreinitFileProperty, BlanksMakeNoDifference, ()) {
    auto const letters = rc::gen::container<std::string>(
        rc::gen::elementOf(std::string("abCONFIG:/,,%_createOnMount")));
    auto const blanks =
        rc::gen::container<std::string>(rc::gen::elementOf(std::string(" \t\v\f\r")));
    std::string const line = *letters;
    std::string spaced;
    for (char const letter : line) {
        spaced += *rc::gen::resize(3, blanks);
        spaced += letter;
    }
    LenientParser plain;
    LenientParser blank;
    plain.loadPreinit(line + "\n");
    blank.loadPreinit(spaced + "\n");
    RC_ASSERT(support::declaredTypes(plain) == support::declaredTypes(blank));
    RC_ASSERT(support::declaredAttributes(plain) == support::declaredAttributes(blank));
    RC_ASSERT(support::faultList(plain) == support::faultList(blank));
}

} // namespace
