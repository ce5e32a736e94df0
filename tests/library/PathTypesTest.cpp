// The type of a path: which declaration wins, what ancestors get, and the queries.
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

using support::Types;
using testing::ElementsAre;
using testing::IsEmpty;

class PathTypes : public testing::Test {
  protected:
    PathTypes() { parser_.initializedIs(true); }

    Types types() const { return support::declaredTypes(parser_); }

    support::CleanEnvironment environment_;
    support::LenientParser parser_;
};

TEST_F(PathTypes, ALaterTypeReplacesAnEarlierOneSilently) {
    parser_.pathTypeMapIs("a/*", "First");
    parser_.pathTypeMapIs("a/*", "Second");
    EXPECT_EQ(types(), (Types{{"a/*", "Second"}}));
    EXPECT_THAT(support::faultList(parser_), IsEmpty());
}

TEST_F(PathTypes, OfTwoLinesForOneWildcardPathTheLaterWins) {
    parser_.loadPreinit("a/%cellId,First\na/%peerCellId,Second\n");
    EXPECT_EQ(parser_.getType("a/*"), "Second");
    EXPECT_THAT(support::faultList(parser_), IsEmpty());
}

TEST_F(PathTypes, ASettingIsTraced) {
    support::TraceRecorder const trace;
    parser_.pathTypeMapIs("a/*", "T");
    EXPECT_THAT(trace.at(8), ElementsAre("( key: a/*, value: T )"));
}

// --- ancestors ---

struct AncestorRow {
    char const* path;
    Types types;
};

TEST_F(PathTypes, EveryAncestorWithoutATypeBecomesADirectory) {
    for (auto const& [path, types] : std::vector<AncestorRow>{
             {"a/b/c", {{"a", "Fen::Dir"}, {"a/b", "Fen::Dir"}}},
             {"a", {}},
             {"", {}},
             {"/a", {{"", "Fen::Dir"}}},
             {"/", {{"", "Fen::Dir"}}},
             {"a/", {{"a", "Fen::Dir"}}},
             {"a//b", {{"a", "Fen::Dir"}, {"a/", "Fen::Dir"}}},
             {"a/*/b", {{"a", "Fen::Dir"}, {"a/*", "Fen::Dir"}}},
         }) {
        support::LenientParser parser;
        auto buffer = support::lineOf(path);
        parser.addParentPathTypes(buffer.data());
        EXPECT_EQ(support::declaredTypes(parser), types) << path;
    }
}

TEST_F(PathTypes, AnAncestorWithATypeShieldsThoseAboveIt) {
    parser_.pathTypeMapIs("a/b", "T");
    auto path = support::lineOf("a/b/c/d");
    parser_.addParentPathTypes(path.data());
    EXPECT_EQ(types(), (Types{{"a/b", "T"}, {"a/b/c", "Fen::Dir"}}));
}

TEST_F(PathTypes, AnAncestorWithAnEmptyTypeHasOne) {
    parser_.pathTypeMapIs("a/b", "");
    auto path = support::lineOf("a/b/c");
    parser_.addParentPathTypes(path.data());
    EXPECT_EQ(types(), (Types{{"a/b", ""}}));
}

TEST_F(PathTypes, ADeclaredPathKeepsItsTypeWhenOneBelowItIsDeclared) {
    parser_.loadPreinit("a/b,T\n");
    parser_.pathTypeMapIs("a", "Untouched");
    parser_.loadPreinit("a/b/c/d,U\n");
    EXPECT_EQ(types(),
              (Types{{"a", "Untouched"}, {"a/b", "T"}, {"a/b/c", "Fen::Dir"}, {"a/b/c/d", "U"}}));
}

TEST_F(PathTypes, TheSearchForAncestorsIsTraced) {
    support::TraceRecorder const trace;
    auto path = support::lineOf("a/b");
    parser_.addParentPathTypes(path.data());
    EXPECT_THAT(trace.at(8), ElementsAre("( path : a/b )", "( key: a, value: Fen::Dir )"));
}

// --- looking a type up ---

TEST_F(PathTypes, OnlyTheWildcardFormOfAPathIsFound) {
    parser_.loadPreinit("a/%cellId/b,T\n");
    EXPECT_EQ(parser_.getType("a/*/b"), "T");
    EXPECT_EQ(parser_.getType("a/*"), "Fen::Dir");
    for (char const* const path : {"a/%cellId/b", "a/1/b", "A/*/b", "a/*/b/"})
        EXPECT_EQ(parser_.getType(path), "") << path;
}

TEST_F(PathTypes, AMissingTypeIsReported) {
    for (char const* const path : {"none", "a/%cellId", "", "%s{}"}) {
        support::LenientParser parser;
        parser.initializedIs(true);
        support::TraceRecorder const trace;
        EXPECT_EQ(parser.getType(path), "") << path;
        EXPECT_THAT(support::faultList(parser),
                    ElementsAre(std::string(":-1: getType: no type info for path ") + path));
        EXPECT_EQ(trace.at(0), support::continuedTraces(parser)) << path;
        EXPECT_THAT(trace.at(3), ElementsAre("Returning empty string")) << path;
    }
}

TEST_F(PathTypes, AMissingTypeIsReportedByTheLookupWithoutLoadingToo) {
    parser_.initializedIs(false);
    EXPECT_EQ(parser_.pathTypeMap("none"), "");
    EXPECT_THAT(support::messages(parser_), ElementsAre("getType: no type info for path none"));
    EXPECT_FALSE(parser_.isInitialized());
}

TEST_F(PathTypes, AMissingTypeIsExplainedByThePackageThatIsSet) {
    support::EnvironmentVariable const package("Q9PKG", "fans");
    parser_.getType("none");
    auto const& expected = parser_.fmtNotFoundError("getType: no type info for path none", false);
    EXPECT_THAT(support::messages(parser_), ElementsAre(expected.view()));
    EXPECT_THAT(support::messages(parser_).front(), testing::HasSubstr("Q9PKG"));
}

TEST_F(PathTypes, AnEmptyTypeIsNoFault) {
    parser_.pathTypeMapIs("a", "");
    EXPECT_EQ(parser_.getType("a"), "");
    EXPECT_THAT(support::faultList(parser_), IsEmpty());
}

TEST_F(PathTypes, TheQueryAndTheLookupAreTraced) {
    parser_.pathTypeMapIs("a", "T");
    support::TraceRecorder const trace;
    EXPECT_EQ(parser_.getType("a"), "T");
    EXPECT_THAT(trace.at(7), ElementsAre("( path : a )"));
    EXPECT_THAT(trace.at(8), ElementsAre("( path : a )"));
}

TEST_F(PathTypes, TheQueryLoadsOnFirstUse) {
    support::Device device;
    device.preinit("Base", "a,T\n");
    auto const parser = device.lenient();
    EXPECT_EQ(parser->getType("a"), "T");
    EXPECT_EQ(parser->getType("a"), "T");
    EXPECT_EQ(parser->doInitCount(), 1);
    parser->unDoInit();
    EXPECT_THAT(parser->pathTypeMap(), IsEmpty());
}

TEST_F(PathTypes, TheStrictFlavourThrowsForAMissingType) {
    support::Device device;
    auto const parser = device.agent("Fan");
    try {
        parser->getType("none");
        FAIL() << "nothing was thrown";
    } catch (Fen::AgentException const& fault) {
        EXPECT_STREQ(fault.what(), "getType: no type info for path none");
    }
}

} // namespace
