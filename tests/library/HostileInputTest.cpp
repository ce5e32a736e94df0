// Bytes that nobody meant to write: no crash, no hang, and no fault that goes unreported.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/Thrown.h"
#include "support/TraceRecorder.h"

namespace {

using namespace std::string_literals;
using support::faultIn;
using support::nothingThrown;
using support::thrownText;
using testing::ElementsAre;
using testing::IsEmpty;

class HostileInput : public testing::Test {
  protected:
    HostileInput() { device.preinit("Base", "a/b,T\na/c,T\n"); }

    // The faults of a profile for Fan whose agent-name line is the first.
    std::vector<std::string> faultsOf(std::string const& lines) {
        device.profile("Fan", "agentName: Fan\n" + lines);
        return faults();
    }
    // The faults of the device for Fan; the strict side throws the first of them.
    std::vector<std::string> faults() {
        support::LenientAgent lenient(device.preinitDir(), device.profileDir());
        lenient.addAgent("Fan", "");
        lenient.doInit();
        std::vector<std::string> texts;
        for (auto const& exception : lenient.exceptions())
            texts.emplace_back(Kelda::MountFileInfo::mfiExceptionToString(exception).view());
        auto const strict = device.agent("Fan");
        EXPECT_EQ(thrownText([&] { strict->doInit(); }),
                  texts.empty() ? nothingThrown : texts.front());
        return texts;
    }
    static std::string fault(int line, std::string const& message) {
        return faultIn("Fan", line, message);
    }

    support::CleanEnvironment environment;
    support::Device device;
};

// --- line ends ---

TEST_F(HostileInput, FilesWithCarriageReturnsReadLikeThoseWithout) {
    device.preinit("Base", "a/b,T\r\n# comment\r\n\r\nCONFIG:a/c,T,createOnStandby\r\n");
    EXPECT_THAT(faultsOf("\r\nMountGroup: g\r\na/b,T,rw\r\nrootFlags: w\r\n"), IsEmpty());
    auto const parser = device.agent("Fan");
    EXPECT_EQ(parser->mountInfo("a/b").type, "T");
    EXPECT_EQ(parser->rootFlags(), "wtp");
    EXPECT_EQ(parser->getPreinitAttr("a/c"), "createOnStandby");
    EXPECT_THAT(support::strings(parser->mountGroups()), ElementsAre("Fan::g"));
}

TEST_F(HostileInput, AnAgentNameLineMayEndInACarriageReturn) {
    device.profile("Fan", "\r\nagentName: Fan\r\na/b,T,r\r\n");
    EXPECT_TRUE(device.agent("Fan")->infoExists("a/b"));
}

TEST_F(HostileInput, ABackslashBeforeACarriageReturnContinuesNothing) {
    EXPECT_THAT(faultsOf("a/b,\\\r\n"),
                testing::Contains(fault(2, "syntax error: additional characters after \\: "
                                           "a/b,\\\r\n")));
}

TEST_F(HostileInput, OldLineEndsAloneMakeOneLineOfAll) {
    EXPECT_THAT(faultsOf("foo\rbar\r"), ElementsAre(fault(2, "syntax error: 'foobar'")));
}

TEST_F(HostileInput, TheLastLineNeedsNoLineEnd) {
    device.preinit("Base", "a/b,T\na/c,T");
    EXPECT_THAT(faultsOf("a/b,T,r\na/c,T,r"), IsEmpty());
    EXPECT_TRUE(device.agent("Fan")->infoExists("a/c"));
    EXPECT_THAT(faultsOf("a/b,T,r\nfoo"), ElementsAre(fault(3, "syntax error: 'foo'")));
    device.profile("Fan", "agentName: Fan");
    EXPECT_TRUE(device.agent("Fan")->foundMountProfile("Fan"));
}

TEST_F(HostileInput, ABackslashAsTheLastByteIsReported) {
    EXPECT_THAT(
        faultsOf("a/b,T,r\\"),
        testing::Contains(fault(2, "syntax error: additional characters after \\: a/b,T,r\\")));
}

TEST_F(HostileInput, ABackslashBeforeTheLastLineEndStaysInTheLine) {
    EXPECT_THAT(faultsOf("a/b,T,r\\\n"), ElementsAre(fault(2, "Encountered unknown mount flag \\"),
                                                     fault(2, "Invalid flags r\\ in path a/b")));
    device.profile("Fan", "agentName: Fan\nfoo\\\n");
    EXPECT_THAT(faults(), ElementsAre(fault(2, "syntax error: 'foo\\'")));
}

TEST_F(HostileInput, AFileOfBackslashesIsOneReportPerLine) {
    EXPECT_THAT(faultsOf("\\\\\n\\\\\n"), testing::SizeIs(testing::Ge(2U)));
}

TEST_F(HostileInput, ManyContinuedLinesThatPassTheBufferLoseNothingInSilence) {
    std::string lines;
    for (int i = 0; i < 1000; ++i)
        lines += "xxxxxxxx\\\n";
    EXPECT_THAT(faultsOf(lines + "\n"), testing::Not(IsEmpty()));
}

// --- bytes that are no text ---

TEST_F(HostileInput, ANulByteDoesNotShiftTheLineNumbers) {
    auto const faults = faultsOf("a/b,T,r\0rest\n\0\n\0\0\0foo\nbar\n"s);
    ASSERT_THAT(faults, testing::Not(IsEmpty()));
    EXPECT_EQ(faults.back(), fault(5, "syntax error: 'bar'"));
}

TEST_F(HostileInput, WhatANulByteHidesIsReportedAtItsLine) {
    EXPECT_THAT(faultsOf("a/b,T,r\n\0foo\n"s),
                ElementsAre(testing::StartsWith(fault(3, "syntax error: "))));
    EXPECT_THAT(faultsOf("\n\na/b,T,r\0w\n"s),
                ElementsAre(testing::StartsWith(fault(4, "syntax error: "))));
    device.preinit("Nul", "a/d,T\n\0a/e,T\n"s);
    EXPECT_THAT(faultsOf(""), ElementsAre(testing::StartsWith(faultIn("Nul", 2, ""))));
}

TEST_F(HostileInput, TheLinesAfterANulByteAreReadAsEver) {
    device.preinit("Base", "\0\0\0\na/b,T\n\0x/y,T\na/c,T\n"s);
    faultsOf("\0agentName: X\na/b,T,r\n\0\na/c,T,r\n"s);
    support::LenientAgent parser(device.preinitDir(), device.profileDir());
    parser.addAgent("Fan", "");
    EXPECT_TRUE(parser.infoExists("a/b"));
    EXPECT_TRUE(parser.infoExists("a/c"));
    EXPECT_FALSE(parser.getType("a/c").empty());
}

TEST_F(HostileInput, AFileOfNulBytesAloneHoldsNothing) {
    device.preinit("Zeros", std::string(5000, '\0'));
    device.profile("Zeros", std::string(5000, '\0'));
    faultsOf("a/b,T,r\n");
    support::LenientAgent parser(device.preinitDir(), device.profileDir());
    parser.addAgent("Fan", "");
    EXPECT_TRUE(parser.infoExists("a/b"));
    EXPECT_EQ(parser.preinitPaths().size(), 3U); // a, a/b, a/c
}

TEST_F(HostileInput, HighBytesAreOrdinaryCharactersOfPathsAndTypes) {
    device.preinit("Base", "caf\xc3\xa9/\xff\xfe,T\xc3\xa9\n");
    EXPECT_THAT(faultsOf("caf\xc3\xa9/\xff\xfe,x,r\n"), IsEmpty());
    EXPECT_EQ(device.agent("Fan")->mountInfo("caf\xc3\xa9/\xff\xfe").type, "T\xc3\xa9");
}

TEST_F(HostileInput, AHighByteEndsAToken) {
    device.preinit("Base", "a/%cellId\xc3\xa9,T\n");
    EXPECT_THAT(faultsOf("a/%cellId\xc3\xa9,T,r\n"), IsEmpty());
    auto const parser = device.agent("Fan");
    auto const cell = std::string(parser->evaluateAliasValue("%cellId").view());
    EXPECT_TRUE(parser->infoExists("a/" + cell + "\xc3\xa9"));
}

TEST_F(HostileInput, HighBytesAmongFlagsAreReported) {
    EXPECT_THAT(faultsOf("a/b,T,r\xff\n"),
                ElementsAre(fault(2, "Encountered unknown mount flag \xff"),
                            fault(2, "Invalid flags r\xff in path a/b")));
}

TEST_F(HostileInput, AByteOrderMarkMakesTheFirstLineNoAgentNameLine) {
    device.profile("Fan", "\xef\xbb\xbf"
                          "agentName: Fan\na/b,T,r\n");
    EXPECT_FALSE(device.agent("Fan")->foundMountProfile("Fan"));
}

TEST_F(HostileInput, PlaceholdersOfFormatsAreTextLikeAnyOther) {
    support::TraceRecorder const trace; // all levels on: every text is formatted
    for (std::string const word : {"%s%n%d", "{}", "{:999999}", "{0}{1}{2}", "%", "%%", "}{"})
        EXPECT_THAT(faultsOf(word + "\n"), ElementsAre(fault(2, "syntax error: '" + word + "'")));
    EXPECT_EQ(faultsOf("a/b,T,{}\n").back(), fault(2, "Invalid flags {} in path a/b"));
    EXPECT_THAT(faultsOf("alias:{}%n=1\n"),
                ElementsAre(fault(2, "syntax error: '{}%n': lhs must specify key name matched by "
                                     "'%[a-zA-Z0-9_].*' with no leading '_' or digit after the "
                                     "%.")));
}

// --- shapes of lines ---

TEST_F(HostileInput, LinesOfPunctuationAreReportedOrHarmless) {
    struct Row {
        char const* line;
        std::size_t faults;
    };
    for (auto const& row :
         {Row{",", 1}, Row{",,", 1}, Row{",,,", 1}, Row{"=", 1}, Row{":", 1}, Row{"/,,", 1},
          Row{"alias:=", 1}, Row{"alias:%=", 1}, Row{"Include:", 2}, Row{"agentName:", 1},
          Row{"MountGroup:", 0}, Row{"MountGroup:,", 1}, Row{"subAgent:", 0}, Row{"#", 0},
          Row{"rootFlags:", 0}, Row{"connectionFlags:", 0}, Row{"Condition:", 0}, Row{"\v\f", 0}})
        EXPECT_THAT(faultsOf(row.line + "\n"s), testing::SizeIs(row.faults)) << row.line;
}

TEST_F(HostileInput, AnOverlongPathLineIsReportedPieceByPiece) {
    auto const longPath = std::string(1500, 'x');
    EXPECT_THAT(faultsOf(longPath + ",T,r\nfoo\n"),
                ElementsAre(fault(2, "syntax error: '" + longPath.substr(0, 1023) + "'"),
                            fault(3, "No type info for path '" + longPath.substr(1023) +
                                         "' found in preinit files while loading profile file "
                                         "because the path was not loaded from any preinit..."),
                            fault(4, "syntax error: 'foo'")));
}

TEST_F(HostileInput, AnOverlongPreinitLineIsReportedPieceByPiece) {
    device.preinit("Long", std::string(2046, 'y') + "\nfoo\n");
    auto const piece = "preinit syntax error: " + std::string(1023, 'y');
    EXPECT_THAT(faultsOf(""), ElementsAre(faultIn("Long", 1, piece), faultIn("Long", 2, piece),
                                          faultIn("Long", 4, "preinit syntax error: foo")));
}

TEST_F(HostileInput, AnOverlongCommentMayHoldAFault) {
    EXPECT_THAT(faultsOf("#" + std::string(1022, 'x') + "foo\n"),
                ElementsAre(fault(3, "syntax error: 'foo'")));
}

TEST_F(HostileInput, APathOfFiveHundredLevelsHasAllItsIntermediatePaths) {
    std::string path = "d";
    for (int i = 1; i < 500; ++i)
        path += "/d";
    device.preinit("Deep", path + ",T\n");
    EXPECT_THAT(faultsOf("activeMount\n" + path + ",T,w\n"), IsEmpty());
    auto const parser = device.agent("Fan");
    EXPECT_TRUE(parser->isExplicit(path));
    EXPECT_EQ(parser->pathMountArgsMap().size(), 500U);
}

TEST_F(HostileInput, APathOfSlashesAloneIsAPathLikeAnyOther) {
    for (std::size_t const n : {1U, 2U, 3U, 100U, 1000U}) {
        device.preinit("Slashes", std::string(n, '/') + ",Fen::Dir\n");
        EXPECT_THAT(faultsOf("activeMount\n" + std::string(n, '/') + ",T,w\n"), IsEmpty()) << n;
    }
}

// --- expansions that do not fit ---

TEST_F(HostileInput, ShorthandsThatDoNotFitAreReported) {
    std::string path = "%cellPath";
    for (int i = 1; i < 100; ++i)
        path += "/%cellPath";
    EXPECT_THAT(faultsOf(path + ",T,r\n").front(),
                testing::StartsWith(fault(2, "cannot expand pathcell/%cellId/cell/%cellId/")));
    device.preinit("Shorthands", path + ",T\n");
    auto const recorded = faults();
    ASSERT_THAT(recorded, testing::Not(IsEmpty()));
    EXPECT_THAT(recorded.front(),
                testing::StartsWith(faultIn("Shorthands", 1, "cannot expand path")));
}

TEST_F(HostileInput, AliasesThatDoNotFitAreReported) {
    device.preinit("Long", "long/%a/%a,T,createOnMount\n");
    auto const value = std::string(900, 'v');
    EXPECT_THAT(faultsOf("alias:%a=" + value + "\nlong/%a/%a,T,r\n").front(),
                fault(3, "Path buffer too small to expand alias from '%a'to '" + value +
                             "' in long/" + value + "/%a"));
    EXPECT_THAT(
        faultsOf("alias:%a=" + value + "\nsubAgent:%a%a%a\n").front(),
        testing::StartsWith(fault(3, "Path buffer too small to expand alias from '%a'to '")));
}

TEST_F(HostileInput, AliasesThatGrowWithEveryLineEndInAReportedFault) {
    device.preinit("Long", "long/%a,T,createOnMount\n");
    std::string lines = "alias:%a=0123456789\n";
    for (int i = 0; i < 12; ++i)
        lines += "alias:%a=%a,%a\n";
    EXPECT_THAT(faultsOf(lines + "long/%a,T,r\n"), testing::Not(IsEmpty()));
}

} // namespace
