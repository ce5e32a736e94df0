// From physical to logical lines, the classification of lines, and the stack of open files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "support/Faults.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::LenientParser;
using support::lineOf;
using support::TraceRecorder;
using testing::ElementsAre;
using testing::IsEmpty;

std::string const multiLineComment = "syntax error: multi-line comment: ";
std::string const additionalCharacters = "syntax error: additional characters after \\: ";

// What is left of a stream.
std::string restOf(FILE* file) {
    std::string rest;
    for (int c = std::getc(file); c != EOF; c = std::getc(file))
        rest += static_cast<char>(c);
    return rest;
}

// What became of one physical line that the caller had read before the rest of the file.
struct Prepared {
    std::string line;
    int count;
    std::vector<std::string> messages;
    std::string rest;
};

Prepared prepare(std::string const& firstLine, std::string const& fileAfterIt) {
    LenientParser parser;
    parser.openFile("Profile", 1);
    auto buffer = lineOf(firstLine);
    auto const file = support::streamOf(fileAfterIt);
    int const count = parser.prepareLine(buffer, file.get());
    return {buffer.data(), count, support::messages(parser), restOf(file.get())};
}

// --- continuation ---

TEST(LineReader, ALineThatEndsInABackslashIsJoinedWithTheNext) {
    auto const prepared = prepare("a,b,c\\\n", "d\ne\n");
    EXPECT_EQ(prepared.line, "a,b,cd\n");
    EXPECT_EQ(prepared.count, 2);
    EXPECT_EQ(prepared.rest, "e\n");
    EXPECT_THAT(prepared.messages, IsEmpty());
}

TEST(LineReader, LogicalLines) {
    struct {
        char const *first, *after, *line;
        int count;
    } const rows[] = {
        {"a,b,c\n", "d\n", "a,b,c\n", 1},
        {"\n", "d\n", "\n", 1},
        {"", "d\n", "", 1},
        {"a", "", "a", 1},
        {"a\\\n",
         "b\\\n"
         "c\n",
         "abc\n", 3},
        {"a\\\n", "\nb\n", "a\n", 2},
        {"a\\\n", "  b\n", "a  b\n", 2},
        {"a\\\n", "b", "ab", 2},
        {"\\\n",
         "\\\n"
         "\\\n"
         "b\n",
         "b\n", 4},
        {" a \\\n", "\tb\n", " a \tb\n", 2},
    };
    for (auto const& row : rows) {
        auto const prepared = prepare(row.first, row.after);
        EXPECT_EQ(prepared.line, row.line) << row.first << row.after;
        EXPECT_EQ(prepared.count, row.count) << row.first << row.after;
        EXPECT_THAT(prepared.messages, IsEmpty()) << row.first << row.after;
    }
}

TEST(LineReader, ABackslashAtTheEndOfTheLastLineStays) {
    auto const prepared = prepare("a,b,c\\\n", "");
    EXPECT_EQ(prepared.line, "a,b,c\\\n");
    EXPECT_EQ(prepared.count, 1);
    EXPECT_THAT(prepared.messages, IsEmpty());
}

TEST(LineReader, ABackslashAtTheEndOfTheLastOfSeveralLinesStays) {
    auto const prepared = prepare("a\\\n", "b\\\n");
    EXPECT_EQ(prepared.line, "ab\\\n");
    EXPECT_EQ(prepared.count, 2);
    EXPECT_THAT(prepared.messages, IsEmpty());
}

TEST(LineReader, ABackslashAsTheVeryLastCharacterOfAFileIsReported) {
    auto const prepared = prepare("a,b,c\\", "");
    EXPECT_THAT(prepared.messages, ElementsAre(additionalCharacters + "a,b,c\\"));
    EXPECT_EQ(prepared.line, "a,b,c\\");
    EXPECT_EQ(prepared.count, 1);
}

TEST(LineReader, CharactersAfterABackslashAreReportedAndTheLineStays) {
    struct {
        char const *first, *after, *reported;
        int count;
    } const rows[] = {
        {"a\\b", "c\n", "a\\b", 1},           {"a\\b\n", "c\n", "a\\b\n", 1},
        {"a\\ \n", "c\n", "a\\ \n", 1},       {"a\\\r\n", "c\n", "a\\\r\n", 1},
        {"a\\\\\n", "c\n", "a\\\\\n", 1},     {"\\a\\\n", "c\n", "\\a\\\n", 1},
        {" # a\\b\n", "c\n", " # a\\b\n", 1}, {"a\\\n", "b\\c\n", "ab\\c\n", 2},
    };
    for (auto const& row : rows) {
        auto const prepared = prepare(row.first, row.after);
        EXPECT_THAT(prepared.messages, ElementsAre(additionalCharacters + row.reported));
        EXPECT_EQ(prepared.line, row.reported);
        EXPECT_EQ(prepared.count, row.count) << row.reported;
    }
}

RC_GTEST_PROP(LineReader, ATextBrokenAnywhereIsJoinedToTheSameText, ()) {
    auto const count = *rc::gen::inRange<std::size_t>(1, 8);
    auto const pieces = *rc::gen::container<std::vector<std::string>>(
        count, rc::gen::container<std::string>(rc::gen::inRange('a', 'e')));
    std::string whole;
    std::string broken;
    for (auto const& piece : pieces) {
        whole += piece;
        broken += (&piece == &pieces.front() ? "" : "\\\n") + piece;
    }
    auto const endOfFirst = broken.find('\n');
    auto const first =
        endOfFirst == std::string::npos ? broken + "\n" : broken.substr(0, endOfFirst + 1);
    auto const after = endOfFirst == std::string::npos ? "" : broken.substr(endOfFirst + 1) + "\n";
    auto const prepared = prepare(first, after);
    RC_ASSERT(prepared.line == whole + "\n");
    RC_ASSERT(prepared.count == static_cast<int>(pieces.size()));
    RC_ASSERT(prepared.messages.empty());
}

// --- comments ---

TEST(LineReader, ALineIsCutAtItsFirstHash) {
    struct {
        char const *first, *line;
    } const rows[] = {
        {"a,b,c # note\n", "a,b,c "}, {"a#b#c\n", "a"}, {"# note\n", ""}, {"#", ""},
        {"  # note\n", "  "},         {"#\n", ""},
    };
    for (auto const& row : rows) {
        auto const prepared = prepare(row.first, "next\n");
        EXPECT_EQ(prepared.line, row.line) << row.first;
        EXPECT_EQ(prepared.count, 1) << row.first;
        EXPECT_EQ(prepared.rest, "next\n") << row.first;
    }
}

TEST(LineReader, ACommentLineMayNotBeContinued) {
    auto const prepared = prepare("# note \\\n", "a,b,c\n");
    EXPECT_THAT(prepared.messages, ElementsAre(multiLineComment + "# note \\\n"));
    EXPECT_EQ(prepared.count, 1);
    EXPECT_EQ(prepared.rest, "a,b,c\n");
}

TEST(LineReader, ACommentLineMayNotHoldABackslashAnywhere) {
    for (std::string const line : {"#\\\n", "# a\\b\n", "#\\", "# a \\ # b\n", "# a\\\r\n"}) {
        auto const prepared = prepare(line, "a\n");
        EXPECT_THAT(prepared.messages, ElementsAre(multiLineComment + line));
        EXPECT_EQ(prepared.count, 1) << line;
    }
}

TEST(LineReader, AHashAfterBlanksDoesNotBeginACommentLine) {
    auto const prepared = prepare("  # note \\\n", "a,b,c\n");
    EXPECT_THAT(prepared.messages, IsEmpty());
    EXPECT_EQ(prepared.line, "  ");
    EXPECT_EQ(prepared.count, 2);
}

TEST(LineReader, AContinuedCommentAtTheEndOfALineSwallowsTheNextLine) {
    auto const prepared = prepare("a,b,c #note \\\n", "d,e,f\ng\n");
    EXPECT_EQ(prepared.line, "a,b,c ");
    EXPECT_EQ(prepared.count, 2);
    EXPECT_EQ(prepared.rest, "g\n");
    EXPECT_THAT(prepared.messages, IsEmpty());
}

TEST(LineReader, ACommentMayFollowAContinuation) {
    EXPECT_EQ(prepare("a,b\\\n", ",c # note\n").line, "a,b,c ");
    EXPECT_EQ(prepare("a\\\n", "# note\n").line, "a");
    EXPECT_EQ(prepare("\\\n", "# note\n").line, "");
}

TEST(LineReader, ALineThatBecomesACommentByContinuationMayNotBeContinuedFurther) {
    auto const prepared = prepare("\\\n", "# note\\\nd\n");
    EXPECT_THAT(prepared.messages, ElementsAre(multiLineComment + "# note\\\n"));
    EXPECT_EQ(prepared.count, 2);
    EXPECT_EQ(prepared.rest, "d\n");
}

// --- traces ---

TEST(LineReader, PreparingALineTracesTheFileAndTheLine) {
    LenientParser parser;
    parser.openFile("Profile", 1);
    auto buffer = lineOf("a \\\n");
    auto const file = support::streamOf("b # note\n");
    TraceRecorder const trace;
    parser.prepareLine(buffer, file.get());
    EXPECT_THAT(trace.lines(),
                ElementsAre(support::TraceLine{8, "( file : Profile, buffer : \"a \\\n\" )"}));
}

TEST(LineReader, EverySyntaxErrorIsTracedAsAFaultThatWasPassedOver) {
    for (auto const& [line, message] : {std::pair{"# \\\n", multiLineComment + "# \\\n"},
                                        std::pair{"a\\b\n", additionalCharacters + "a\\b\n"}}) {
        LenientParser parser;
        parser.openFile("Profile", 7);
        auto buffer = lineOf(line);
        TraceRecorder const trace;
        parser.prepareLine(buffer, support::streamOf("").get());
        EXPECT_THAT(support::faultList(parser), ElementsAre("Profile:7: " + message));
        EXPECT_THAT(trace.at(0), ElementsAre(support::continued("Profile", 7, message)));
    }
}

TEST(LineReader, WithLevelZeroOffASyntaxErrorIsRecordedWithoutATrace) {
    LenientParser parser;
    parser.openFile("Profile", 7);
    auto buffer = lineOf("a\\b\n");
    TraceRecorder const trace("MountFileInfo", 0xfffe);
    parser.prepareLine(buffer, support::streamOf("").get());
    EXPECT_EQ(parser.exceptions().size(), 1U);
    EXPECT_THAT(trace.at(0), IsEmpty());
}

// --- shorthands and classification ---

TEST(LineReader, PathShorthandsAreWrittenOutInAnyCase) {
    struct {
        char const *path, *converted;
    } const rows[] = {
        {"%cellPath/x", "cell/%cellId/x"},
        {"%CELLPATH/x", "cell/%cellId/x"},
        {"a/%cellpath", "a/cell/%cellId"},
        {"%peerCellPath/x", "cell/%peerCellId/x"},
        {"%PeerCellPath", "cell/%peerCellId"},
        {"%cellPath/%peerCellPath/%cellPath", "cell/%cellId/cell/%peerCellId/cell/%cellId"},
        {"%cellPaths", "cell/%cellIds"},
        {"cellPath/%cellId", "cellPath/%cellId"},
        {"%cell", "%cell"},
        {"", ""},
    };
    LenientParser const parser;
    for (auto const& row : rows) {
        auto buffer = lineOf(row.path);
        parser.convertPath(buffer);
        EXPECT_STREQ(buffer.data(), row.converted);
    }
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

TEST(LineReader, AShorthandMayFillTheBufferExactly) {
    LenientParser const parser;
    std::string const rest(1020 - std::string("%cellPath").size(), 'x');
    auto buffer = lineOf("%cellPath" + rest);
    parser.convertPath(buffer);
    EXPECT_EQ(buffer.data(), "cell/%cellId" + rest);
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

TEST(LineReader, AShorthandThatDoesNotFitIsReportedAndCut) {
    LenientParser const parser;
    std::string const path = "%peerCellPath" + std::string(1008, 'x');
    auto buffer = lineOf(path);
    parser.convertPath(buffer);
    EXPECT_THAT(support::messages(parser), ElementsAre("cannot expand path" + path));
    EXPECT_EQ(buffer.data(), ("cell/%peerCellId" + std::string(1008, 'x')).substr(0, 1023));
}

TEST(LineReader, APathLineHasTwoCommasAndNoEqualsSign) {
    struct {
        char const* line;
        bool isPathLine;
    } const rows[] = {
        {"x,y,z", true},
        {",,", true},
        {"x,y,", true},
        {"x,y,z,w", true},
        {"x,y", false},
        {"x", false},
        {"", false},
        {"x,y,z=1", false},
        {"=x,y,z", false},
        {"x=,y,z", false},
        {"include:a,b,c", true},
        {"alias:%a=x,y,z", false},
    };
    for (auto const& row : rows)
        EXPECT_EQ(Kelda::MountFileInfo::matchProfilePathLine(lineOf(row.line)), row.isPathLine)
            << row.line;
}

TEST(LineReader, AnAliasLineBeginsWithTheKeywordAndHasAnEqualsSign) {
    struct {
        char const* line;
        bool isAliasLine;
    } const rows[] = {
        {"alias:%a=b", true}, {"ALIAS:%a=b", true}, {"aLiAs:=", true},      {"alias:a==b", true},
        {"alias:%a", false},  {"alias%a=b", false}, {" alias:%a=b", false}, {"xalias:%a=b", false},
        {"alias", false},     {"", false},          {"=alias:", false},
    };
    for (auto const& row : rows)
        EXPECT_EQ(Kelda::MountFileInfo::matchAliasLine(lineOf(row.line)), row.isAliasLine)
            << row.line;
}

// --- the stack of open files ---

TEST(FileContext, TheLastOpenedFileIsTheCurrentOne) {
    LenientParser parser;
    parser.openFile("Outer", 3);
    parser.openFile("Inner");
    EXPECT_EQ(parser.currentFileName(), "Inner");
    EXPECT_EQ(parser.currentLine(), 0);
    parser.closeFile();
    EXPECT_EQ(parser.currentFileName(), "Outer");
    EXPECT_EQ(parser.currentLine(), 3);
}

TEST(FileContext, NextLineAdvancesTheCurrentFileOnly) {
    LenientParser parser;
    parser.openFile("Outer", 3);
    parser.openFile("Inner");
    parser.nextLine(1);
    parser.nextLine(4);
    EXPECT_EQ(parser.currentLine(), 5);
    parser.closeFile();
    EXPECT_EQ(parser.currentLine(), 3);
}

TEST(FileContextDeathTest, WithoutAnOpenFileThereIsNoCurrentLine) {
    LenientParser parser;
    auto const condition = testing::HasSubstr("!currentFiles_.empty()");
    EXPECT_DEATH(parser.currentFileName(), condition);
    EXPECT_DEATH(parser.currentLine(), condition);
    EXPECT_DEATH(parser.nextLine(1), condition);
}

} // namespace
