// Continued, long and broken lines of a preinit file, and how its lines are numbered and traced.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <Fen/Exception.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/LenientParser.h"
#include "support/PreinitMaps.h"
#include "support/TraceRecorder.h"

namespace {

using support::Strings;
using support::Types;
using testing::ElementsAre;
using testing::IsEmpty;

class PreinitLines : public testing::Test {
  protected:
    Types types() const { return support::declaredTypes(parser_); }
    Strings faults() const { return support::faultList(parser_); }

    support::CleanEnvironment environment_;
    support::LenientParser parser_;
};

TEST_F(PreinitLines, ALineThatEndsInABackslashGoesOnInTheNext) {
    parser_.loadPreinit("a/b,\\\nTy\\\npe\n");
    EXPECT_EQ(types(), (Types{{"a", "Fen::Dir"}, {"a/b", "Type"}}));
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(PreinitLines, AFaultNamesTheFirstPhysicalLineOfItsLine) {
    parser_.loadPreinit("a,\\\nT\n\nbad\\\nline\nworse\n");
    EXPECT_THAT(faults(), ElementsAre("Preinit:4: preinit syntax error: badline",
                                      "Preinit:6: preinit syntax error: worse"));
}

TEST_F(PreinitLines, CommentsAndBlankLinesAreCounted) {
    parser_.loadPreinit("# one\n\n  \n# four\nbad\n");
    EXPECT_THAT(faults(), ElementsAre("Preinit:5: preinit syntax error: bad"));
}

TEST_F(PreinitLines, ACommentLineMayNotBeContinued) {
    parser_.loadPreinit("# note \\\na,T\n");
    EXPECT_THAT(faults(), ElementsAre("Preinit:1: syntax error: multi-line comment: # note \\\n",
                                      "Preinit:1: preinit syntax error: #note\\"));
    EXPECT_EQ(types(), (Types{{"a", "T"}}));
}

TEST_F(PreinitLines, NothingMayFollowABackslash) {
    parser_.loadPreinit("a\\ b,T\nc,T\n");
    EXPECT_THAT(faults(),
                ElementsAre("Preinit:1: syntax error: additional characters after \\: a\\ b,T\n"));
    EXPECT_EQ(types(), (Types{{"a\\b", "T"}, {"c", "T"}}));
}

TEST_F(PreinitLines, ALineLongerThanTheBufferIsReadInPieces) {
    std::string const start = "a,";
    parser_.loadPreinit(start + std::string(1030, 'x') + "\nbad\n");
    EXPECT_EQ(types(), (Types{{"a", std::string(1023 - start.size(), 'x')}}));
    EXPECT_THAT(faults(), ElementsAre("Preinit:2: preinit syntax error: xxxxxxxxx",
                                      "Preinit:3: preinit syntax error: bad"));
}

TEST_F(PreinitLines, ALineThatJustFitsTheBufferIsOneLine) {
    std::string const type(1020, 'x');
    parser_.loadPreinit("a," + type + "\nb,T\n");
    EXPECT_EQ(types(), (Types{{"a", type}, {"b", "T"}}));
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(PreinitLines, AShorthandThatDoesNotFitIsReportedAndCut) {
    std::string const rest(1000, 'x');
    parser_.loadPreinit("%cellPath/%cellPath/" + rest + ",T\n");
    EXPECT_THAT(faults(),
                ElementsAre("Preinit:1: cannot expand pathcell/%cellId/%cellPath/" + rest));
    auto const written = ("cell/%cellId/cell/%cellId/" + rest).substr(0, 1023);
    EXPECT_EQ(support::declaredAttributes(parser_), (support::Attributes{{written, "none"}}));
}

TEST_F(PreinitLines, AShorthandThatJustFitsIsNoFault) {
    parser_.loadPreinit("%cellPath/" + std::string(1010, 'x') + ",T\n");
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_EQ(parser_.pathAttrMap().begin()->first.size(), 1023U);
}

TEST_F(PreinitLines, AFileAndEachLineOfItAreTraced) {
    support::TraceRecorder const trace;
    parser_.loadPreinit("CONFIG: a , T # note\n\nb\n", "File");
    EXPECT_TRUE(trace.has(8, "( file : File )"));
    EXPECT_EQ(trace.count(8, "( buffer : \"CONFIG:a,T\" )"), 1);
    EXPECT_EQ(trace.count(8, "( buffer : \"b\" )"), 1);
    EXPECT_EQ(trace.count(8, "( buffer : \"\" )"), 0);
}

TEST_F(PreinitLines, AFaultIsTracedWithItsPlace) {
    support::TraceRecorder const trace("MountFileInfo", 1);
    parser_.loadPreinit("\nbad\n", "File");
    EXPECT_THAT(trace.at(0),
                ElementsAre("Encountered exception \n\t\t\tError in mount profile: File\n\t\t\t"
                            "line: 2\n\t\t\tmsg: preinit syntax error: bad during kelda-side "
                            "parsing. Continuing..."));
}

TEST_F(PreinitLines, OneLineCanBeHandledAlone) {
    auto line = support::lineOf("CONFIG:a/,T");
    parser_.handlePreinitPathLine(line);
    EXPECT_EQ(types(), (Types{{"a", "T"}}));
    auto bad = support::lineOf("bad");
    parser_.handlePreinitPathLine(bad);
    EXPECT_THAT(faults(), ElementsAre(":-1: preinit syntax error: bad"));
}

TEST_F(PreinitLines, TheStrictFlavourEndsAtTheFirstFault) {
    support::Device device;
    device.preinit("Base", "a,A\nbad\nb,B\n");
    auto const parser = device.agent("Fan");
    try {
        parser->doInit();
        FAIL() << "nothing was thrown";
    } catch (Fen::AgentException const& fault) {
        EXPECT_STREQ(fault.what(), "\n\t\t\tError in mount profile: Base\n\t\t\tline: 2\n\t\t\t"
                                   "msg: preinit syntax error: bad");
    }
    EXPECT_EQ(support::declaredTypes(*parser), (Types{{"a", "A"}}));
}

TEST_F(PreinitLines, AFileThatNobodyOpenedIsAProgrammingError) {
    auto const file = support::streamOf("a,T\n");
    EXPECT_DEATH(parser_.preinitLoader(file.get()), "!currentFiles_.empty\\(\\)");
}

} // namespace
