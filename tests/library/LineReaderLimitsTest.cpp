// Lines that no editor would write: too long, with odd bytes, cut short by the file's end or by a
// medium that fails.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <Fen/Exception.h>
#include <KeldaUtil/MountFlags.h>

#include "support/FailingStream.h"
#include "support/FaultLists.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using namespace std::string_literals;
using support::faultList;
using support::LenientParser;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

std::string const additionalCharacters = "syntax error: additional characters after \\: ";

std::string syntaxError(int line, std::string const& text) {
    return "Profile:" + std::to_string(line) + ": syntax error: '" + text + "'";
}

// The flags of a path's record as text, or that it has none.
std::string flagsOf(LenientParser const& parser, std::string const& path) {
    auto const& records = parser.pathMountArgsMap();
    auto const record = records.find(path);
    if (record == records.end())
        return "(no record)";
    return std::string(KeldaUtil::mountTableFlagsToString(record->second.flags).view());
}

class LineReaderLimits : public testing::Test {
  protected:
    LineReaderLimits() { parser.declare({"a", "b"}); }

    std::vector<std::string> faultsOf(std::string const& text) {
        parser.loadProfile(text);
        return faultList(parser);
    }
    // Declares the path of a line ",T,r" and of `size` characters, and returns the line.
    std::string pathLine(std::size_t size) {
        std::string const path(size - 4, 'p');
        parser.declare({path});
        return path + ",T,r";
    }

    LenientParser parser;
};

// --- long lines ---

TEST_F(LineReaderLimits, ALineOf1022CharactersFillsTheBufferWithItsEnd) {
    EXPECT_THAT(faultsOf(pathLine(1022) + "\nfoo\n"), ElementsAre(syntaxError(2, "foo")));
    EXPECT_EQ(flagsOf(parser, std::string(1018, 'p')), "r");
}

TEST_F(LineReaderLimits, TheEndOfALineOf1023CharactersIsALineOfItsOwn) {
    EXPECT_THAT(faultsOf(pathLine(1023) + "\nfoo\n"), ElementsAre(syntaxError(3, "foo")));
    EXPECT_EQ(flagsOf(parser, std::string(1019, 'p')), "r");
}

TEST_F(LineReaderLimits, TheLastOf1024CharactersIsALineOfItsOwn) {
    EXPECT_THAT(faultsOf(pathLine(1024) + "\nfoo\n"),
                ElementsAre(syntaxError(2, "r"), syntaxError(3, "foo")));
    EXPECT_EQ(flagsOf(parser, std::string(1020, 'p')), "");
}

TEST_F(LineReaderLimits, ALineOf1025CharactersIsNoPathLineAnyMore) {
    auto const line = pathLine(1025);
    EXPECT_THAT(faultsOf(line + "\nfoo\n"),
                ElementsAre(syntaxError(1, line.substr(0, 1023)), syntaxError(2, ",r"),
                            syntaxError(3, "foo")));
    EXPECT_THAT(parser.pathMountArgsMap(), IsEmpty());
}

TEST_F(LineReaderLimits, EveryPieceOfALongLineIsHandledAndNumberedAsALineOfItsOwn) {
    for (std::size_t const size : {1022U, 1023U, 1024U, 1025U, 2045U, 2046U, 2047U, 10000U}) {
        std::vector<std::string> expected;
        int line = 0;
        for (std::size_t left = size + 1; left > 0; left -= std::min<std::size_t>(left, 1023)) {
            auto const characters = left > 1023 ? 1023 : left - 1; // the line's end not counted
            ++line;
            if (characters > 0)
                expected.push_back(syntaxError(line, std::string(characters, 'x')));
        }
        expected.push_back(syntaxError(line + 1, "foo"));
        LenientParser fresh;
        fresh.loadProfile(std::string(size, 'x') + "\nfoo\n");
        EXPECT_EQ(faultList(fresh), expected) << size;
    }
}

TEST_F(LineReaderLimits, ALongLineWithoutAnEndIsReadToItsLastCharacter) {
    EXPECT_THAT(faultsOf(std::string(1023, 'x')),
                ElementsAre(syntaxError(1, std::string(1023, 'x'))));
}

TEST_F(LineReaderLimits, ACommentReachesToTheEndOfItsPieceOnly) {
    EXPECT_THAT(faultsOf("#" + std::string(1022, '-') + "foo\n"),
                ElementsAre(syntaxError(2, "foo")));
}

TEST_F(LineReaderLimits, AContinuationMayFillTheBufferExactly) {
    std::string const start(1021, 'x');
    EXPECT_THAT(faultsOf(start + "\\\ny\nfoo\n"),
                ElementsAre(syntaxError(1, start + "y"), syntaxError(3, "foo")));
}

TEST_F(LineReaderLimits, WhatAContinuationHasNoRoomForIsALineOfItsOwn) {
    std::string const start(1021, 'x');
    EXPECT_THAT(
        faultsOf(start + "\\\nyzfoo\nbar\n"),
        ElementsAre(syntaxError(1, start + "yz"), syntaxError(3, "foo"), syntaxError(4, "bar")));
}

TEST_F(LineReaderLimits, ALineMayBeContinuedAgainAtTheBuffersEnd) {
    std::string const start(1021, 'x');
    EXPECT_THAT(faultsOf(start + "\\\n\\\n\\\ny\nfoo\n"),
                ElementsAre(syntaxError(1, start + "y"), syntaxError(5, "foo")));
}

TEST_F(LineReaderLimits, ABackslashThatIsCutOffFromItsLinesEndIsReported) {
    std::string const piece = std::string(1022, 'x') + "\\";
    EXPECT_THAT(faultsOf(piece + "\nfoo\n"),
                ElementsAre("Profile:1: " + additionalCharacters + piece, syntaxError(1, piece),
                            syntaxError(3, "foo")));
}

// --- odd bytes ---

TEST_F(LineReaderLimits, ANulInALineIsReportedAndCostsNoOtherLine) {
    for (auto const& line : {"a\0b,T,r\n"s, "\0\n"s, "\0a,T,r\n"s, "a,T,r\0\n"s, "a,T,\0r\n"s,
                             "a,T,r\0\0\0\n"s, "a,T\0,r\n"s, "  \0\n"s}) {
        LenientParser fresh;
        fresh.declare({"a", "ab", "b"});
        fresh.loadProfile(line + "foo\nb,T,r\n");
        auto const faults = faultList(fresh);
        SCOPED_TRACE(testing::PrintToString(line));
        ASSERT_GE(faults.size(), 2U);
        EXPECT_THAT(faults.front(), StartsWith("Profile:1: "));
        EXPECT_EQ(faults.back(), syntaxError(2, "foo"));
        EXPECT_EQ(flagsOf(fresh, "b"), "r");
    }
}

TEST_F(LineReaderLimits, ANulInAContinuationIsReportedWithTheLineItContinues) {
    auto const faults = faultsOf("a,T,r\\\n\0w\nfoo\n"s);
    ASSERT_GE(faults.size(), 2U);
    EXPECT_THAT(faults.front(), StartsWith("Profile:1: "));
    EXPECT_EQ(faults.back(), syntaxError(3, "foo"));
}

TEST_F(LineReaderLimits, ANulAsTheLastByteOfAFileIsReported) {
    auto const faults = faultsOf("b,T,r\n\0"s);
    ASSERT_FALSE(faults.empty());
    EXPECT_THAT(faults.front(), StartsWith("Profile:2: "));
}

TEST_F(LineReaderLimits, ANulInAPreinitFileIsReportedAndCostsNoOtherLine) {
    parser.loadPreinit("x,X\ny\0,Y\nz,Z\n"s);
    auto const faults = faultList(parser);
    ASSERT_FALSE(faults.empty());
    EXPECT_THAT(faults.front(), StartsWith("Preinit:2: "));
    EXPECT_EQ(parser.pathTypeMap().count("x"), 1U);
    EXPECT_EQ(parser.pathTypeMap().count("z"), 1U);
}

TEST_F(LineReaderLimits, CarriageReturnsAreBlanks) {
    EXPECT_THAT(faultsOf("a,T,r\r\n# note\r\n\r\nactiveMount\r\nfoo\r\n"),
                ElementsAre(syntaxError(5, "foo")));
    EXPECT_EQ(flagsOf(parser, "a"), "r");
    EXPECT_TRUE(parser.activeMountSeen());
}

TEST_F(LineReaderLimits, ACarriageReturnAfterABackslashIsAnAdditionalCharacter) {
    EXPECT_THAT(
        faultsOf("foo\\\r\nb,T,r\r\n"),
        ElementsAre("Profile:1: " + additionalCharacters + "foo\\\r\n", syntaxError(1, "foo\\")));
    EXPECT_EQ(flagsOf(parser, "b"), "r");
}

TEST_F(LineReaderLimits, BytesAbove0x7fAreCharactersLikeAnyOther) {
    std::string path;
    for (int byte = 0x80; byte <= 0xff; ++byte)
        path += static_cast<char>(byte);
    parser.declare({path});
    EXPECT_THAT(faultsOf(path + ",T,r\n" + path + "\n"), ElementsAre(syntaxError(2, path)));
    EXPECT_EQ(flagsOf(parser, path), "r");
}

TEST_F(LineReaderLimits, AFlagAbove0x7fIsNamedAsTheByteItIs) {
    EXPECT_THAT(faultsOf("a,T,\xff\n"),
                ElementsAre("Profile:1: Encountered unknown mount flag \xff",
                            "Profile:1: Invalid flags \xff in path a"));
}

// --- the end of the file ---

TEST_F(LineReaderLimits, TheLastLineNeedsNoEnd) {
    EXPECT_THAT(faultsOf("foo\na,T,r"), ElementsAre(syntaxError(1, "foo")));
    EXPECT_EQ(flagsOf(parser, "a"), "r");
    EXPECT_THAT(faultsOf("bar"), ElementsAre(syntaxError(1, "foo"), syntaxError(1, "bar")));
}

TEST_F(LineReaderLimits, ABackslashAsTheLastByteIsReportedAndItsLineStillHandled) {
    EXPECT_THAT(faultsOf("foo\\"), ElementsAre("Profile:1: " + additionalCharacters + "foo\\",
                                               syntaxError(1, "foo\\")));
}

TEST_F(LineReaderLimits, ABackslashBeforeTheLastLineEndStaysInTheLine) {
    EXPECT_THAT(faultsOf("foo\\\n"), ElementsAre(syntaxError(1, "foo\\")));
}

TEST_F(LineReaderLimits, AnEmptyFileHasNoFaults) {
    EXPECT_THAT(faultsOf(""), IsEmpty());
    EXPECT_EQ(parser.loadPreinit(""), 1);
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

// --- a medium that fails ---

// Loads what can be read of a text as the file "Broken".
int loadBroken(LenientParser& parser, Kelda::MountFileInfo::FileLoader loader,
               std::string_view text) {
    auto const file = support::failingStream(text);
    parser.openFile("Broken");
    int const count = (parser.*loader)(file.get());
    parser.closeFile();
    return count;
}

TEST_F(LineReaderLimits, AReadErrorIsReportedAndWhatWasReadBeforeStays) {
    support::TraceRecorder const trace;
    EXPECT_EQ(loadBroken(parser, &Kelda::MountFileInfo::profileLoader, "a,T,r\nb,T,w\n"), 1);
    auto const faults = faultList(parser);
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_THAT(faults.front(), StartsWith("Broken:"));
    EXPECT_EQ(trace.at(0), support::continuedTraces(parser));
    EXPECT_EQ(flagsOf(parser, "a"), "r");
    EXPECT_EQ(flagsOf(parser, "b"), "w");
}

TEST_F(LineReaderLimits, AReadErrorIsReportedWhereverItHappens) {
    std::string manyLines;
    for (int i = 0; i < 2000; ++i)
        manyLines += "a,T,r\n";
    for (auto const& text : {""s, "a"s, "a,T,r\nb,T"s, "a,T,r\\\n"s, "# note"s, manyLines}) {
        LenientParser fresh;
        fresh.declare({"a", "b"});
        loadBroken(fresh, &Kelda::MountFileInfo::profileLoader, text);
        ASSERT_FALSE(fresh.exceptions().empty()) << text;
        EXPECT_EQ(fresh.exceptions().back().file, "Broken") << text;
    }
}

TEST_F(LineReaderLimits, AReadErrorInAPreinitFileIsReportedToo) {
    EXPECT_EQ(loadBroken(parser, &Kelda::MountFileInfo::preinitLoader, "x,X\n"), 1);
    EXPECT_THAT(faultList(parser), ElementsAre(StartsWith("Broken:")));
    EXPECT_EQ(parser.pathTypeMap().count("x"), 1U);
}

// An agent-side parser, so one that throws, with a file open.
class StrictParser : public Kelda::AgentMountFileInfo {
  public:
    StrictParser()
        : AgentMountFileInfo(false, "/nonexistent/preinit", "/nonexistent/profiles", true,
                             "DefaultMountGroup") {
        currentFiles_.push_back({"Broken", 0});
    }
    ~StrictParser() override = default;
};

TEST_F(LineReaderLimits, AReadErrorThrowsOnTheAgentSide) {
    StrictParser strict;
    auto const file = support::failingStream("# note\n");
    EXPECT_THROW(strict.profileLoader(file.get()), Fen::AgentException);
    EXPECT_EQ(strict.exceptions().size(), 1U);
}

TEST_F(LineReaderLimits, ANulThrowsOnTheAgentSide) {
    StrictParser strict;
    auto const file = support::streamOf("active\0Mount\n"s);
    EXPECT_THROW(strict.profileLoader(file.get()), Fen::AgentException);
    EXPECT_EQ(strict.exceptions().front().line, 1);
}

} // namespace
