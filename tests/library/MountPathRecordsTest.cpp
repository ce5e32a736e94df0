// From a profile's path line to the record of its path: the pieces of the line, the type, the
// expansion, and where the path is filed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "support/EnvironmentVariable.h"
#include "support/FaultLists.h"
#include "support/Faults.h"
#include "support/LenientParser.h"
#include "support/MountRecords.h"
#include "support/TraceRecorder.h"

namespace {

using support::EnvironmentVariable;
using support::lineOf;
using support::recordOf;
using support::TraceRecorder;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string const notFound = "No type info for path 'a/%slot' found in preinit files while loading "
                             "profile file";
std::string const neverLoaded = " because the path was not loaded from any preinit";

class MountPathRecords : public testing::Test {
  protected:
    MountPathRecords() { parser.openFile("Fan", 4); }

    void handle(std::string_view line) {
        auto buffer = lineOf(line);
        parser.handleProfilePathLine(buffer);
    }

    EnvironmentVariable const package{"Q9PKG", nullptr};
    support::LenientParser parser;
};

// --- the pieces of a line ---

TEST_F(MountPathRecords, ALineIsPathTypeAndFlags) {
    struct {
        char const *line, *path, *record;
    } const rows[] = {
        {"a/b,T,rw", "a/b", "T rw explicit"}, {"/a/b/,T,r", "/a/b", "T r explicit"},
        {"a,T,", "a", "T  explicit"},         {"a,,r", "a", "T r explicit"},
        {"a//,T,r", "a/", "T r explicit"},    {"a/b/c,T,wr", "a/b/c", "T rw explicit"},
        {",T,r", "", "T r explicit"},         {"/,T,r", "", "T r explicit"},
    };
    for (auto const& row : rows) {
        support::LenientParser fresh;
        fresh.openFile("Fan", 1);
        fresh.declare({row.path});
        auto buffer = lineOf(row.line);
        fresh.handleProfilePathLine(buffer);
        EXPECT_EQ(recordOf(fresh, row.path), row.record) << row.line;
        EXPECT_EQ(fresh.pathMountArgsMap().size(), 1U) << row.line;
        EXPECT_THAT(support::messages(fresh), IsEmpty()) << row.line;
    }
}

TEST_F(MountPathRecords, WhatFollowsTheSecondCommaAreFlagsCommasIncluded) {
    parser.declare({"a"});
    handle("a,T,r,w");
    EXPECT_THAT(support::messages(parser),
                ElementsAre("Encountered unknown mount flag ,", "Invalid flags r,w in path a"));
    EXPECT_EQ(recordOf(parser, "a"), support::noRecord);
}

TEST_F(MountPathRecords, ThePathMayFillTheBuffer) {
    std::string const path(1023 - 2, 'p');
    parser.declare({path});
    handle(path + ",,");
    EXPECT_EQ(recordOf(parser, path), "T  explicit");
}

TEST_F(MountPathRecords, TheTypeIsThePreinitFilesNotTheLines) {
    parser.declare({"a/b"}, "Preinit::Type");
    handle("a/b,Line::Type,r");
    EXPECT_EQ(recordOf(parser, "a/b"), "Preinit::Type r explicit");
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

TEST_F(MountPathRecords, AliasesAreExpandedOnlyAfterTheTypeIsFound) {
    parser.declare({"a/*/b"}, "Wildcard");
    parser.declare({"a/3/b"}, "Literal");
    parser.perFileAliasesPushBack("%slot", "3");
    handle("a/%slot/b,T,r");
    EXPECT_EQ(recordOf(parser, "a/3/b"), "Wildcard r explicit");
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

TEST_F(MountPathRecords, ShorthandsAreWrittenOutBeforeTheTypeIsFound) {
    parser.declare({"cell/*/x"});
    parser.predefinedAliasesIs("%cellId", "1");
    parser.predefinedAliasesIs("%peerCellId", "2");
    handle("%CELLPATH/x,T,r");
    handle("%peercellpath/x,T,w");
    EXPECT_EQ(recordOf(parser, "cell/1/x"), "T r explicit");
    EXPECT_EQ(recordOf(parser, "cell/2/x"), "T w explicit");
}

TEST_F(MountPathRecords, AnAliasThatIsNotDefinedIsReportedAndLeftOut) {
    parser.declare({"a/*/b"});
    handle("a/%slot/b,T,r");
    EXPECT_THAT(support::messages(parser), ElementsAre("No such alias defined: '%slot'"));
    EXPECT_EQ(recordOf(parser, "a//b"), "T r explicit");
}

TEST_F(MountPathRecords, AnIncludedPathLineIsHandledAlike) {
    parser.declare({"a"});
    parser.inIncludeIs(true);
    parser.loadProfile("a/,T,r\n");
    EXPECT_EQ(recordOf(parser, "a"), "T r explicit");
}

using MountPathRecordsDeathTest = MountPathRecords;

TEST_F(MountPathRecordsDeathTest, ALineThatIsNoPathLineIsAProgrammingError) {
    auto const firstComma =
        HasSubstr("firstComma != nullptr && strchr( buffer.data(), '=' ) == nullptr");
    EXPECT_DEATH(handle("a"), firstComma);
    EXPECT_DEATH(handle(""), firstComma);
    EXPECT_DEATH(handle("a,T,r=w"), firstComma);
    EXPECT_DEATH(handle("a,T"), HasSubstr("secondComma != nullptr"));
}

// --- the type ---

TEST_F(MountPathRecords, ADeclaredPathHasItsPreinitType) {
    parser.declare({"a/*"}, "Fan::Status");
    EXPECT_EQ(parser.validateType(lineOf("a/%slot"), "T").value_or("none"), "Fan::Status");
    EXPECT_EQ(parser.validateType(lineOf("a/*"), "").value_or("none"), "Fan::Status");
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

TEST_F(MountPathRecords, APathThatNoPreinitFileDeclaresIsReported) {
    TraceRecorder const trace;
    EXPECT_EQ(parser.validateType(lineOf("a/%slot"), "T"), std::nullopt);
    auto const message = notFound + neverLoaded + "...";
    EXPECT_THAT(support::faultList(parser), ElementsAre("Fan:4: " + message));
    EXPECT_THAT(trace.at(0), ElementsAre(support::continued("Fan", 4, message)));
    EXPECT_THAT(trace.at(8), Contains("( path : a/%slot, type : T )"));
}

TEST_F(MountPathRecords, APathThatIsDeclaredWithoutATypeIsReported) {
    parser.declare({"a/*"}, "");
    EXPECT_EQ(parser.validateType(lineOf("a/%slot"), "T"), std::nullopt);
    EXPECT_THAT(support::messages(parser), ElementsAre(notFound + "..."));
}

TEST_F(MountPathRecords, AMissingTypeIsExplainedByThePackageButNotByTheAgents) {
    EnvironmentVariable const fanPackage("Q9PKG", "fan");
    parser.agentStringsAre({"Fan-1"});
    parser.validateType(lineOf("a/%slot"), "T");
    EXPECT_THAT(support::messages(parser),
                ElementsAre(notFound + neverLoaded + "..." + support::restrictedTo("fan")));
}

TEST_F(MountPathRecords, APathWithoutATypeIsNotRecordedAtAll) {
    handle("a/%slot,T,r");
    EXPECT_THAT(support::messages(parser), ElementsAre(notFound + neverLoaded + "..."));
    EXPECT_THAT(parser.pathMountArgsMap(), IsEmpty());
    EXPECT_THAT(parser.mountGroupPathsMap(), IsEmpty());
    EXPECT_THAT(parser.profileFilePathsMap(), IsEmpty());
}

// Excuses every path, by its own line's type.
class ExcusingParser : public support::LenientParser {
  public:
    std::optional<Rook::String> excuseMissingType(std::ostringstream& message,
                                                  char const* type) const override {
        message << " Excused.";
        return Rook::String(type);
    }
};

TEST_F(MountPathRecords, AFlavourMayExcuseAMissingType) {
    ExcusingParser excusing;
    excusing.openFile("Fan", 4);
    TraceRecorder const trace;
    EXPECT_EQ(excusing.validateType(lineOf("a/%slot"), "Line::Type").value_or("none"),
              "Line::Type");
    EXPECT_THAT(trace.at(1), ElementsAre(notFound + neverLoaded + "... Excused."));
    EXPECT_THAT(support::messages(excusing), IsEmpty());
}

TEST_F(MountPathRecords, AnExcusedPathIsRecordedWithTheTypeOfItsLine) {
    ExcusingParser excusing;
    excusing.loadProfile("a/b,Line::Type,r\n");
    EXPECT_EQ(recordOf(excusing, "a/b"), "Line::Type r explicit");
}

// --- where a path is filed ---

TEST_F(MountPathRecords, APathIsFiledUnderItsMountGroupAndItsFile) {
    parser.agentKeyIs("Fan");
    parser.recordMountPath("a", "T", "r");
    parser.recordMountGroup("fast", 1);
    parser.recordMountPath("b", "T", "w");
    EXPECT_THAT(parser.mountGroupPathsMap().at("Fan::"), ElementsAre("a"));
    EXPECT_THAT(parser.mountGroupPathsMap().at("Fan::fast"), ElementsAre("b"));
    EXPECT_THAT(parser.profileFilePathsMap().at("Fan"), ElementsAre("a", "b"));
    EXPECT_EQ(recordOf(parser, "b"), "T w explicit");
}

TEST_F(MountPathRecords, APathThatTwoFilesNameIsFiledUnderBoth) {
    parser.recordMountPath("a", "T", "r");
    parser.closeFile();
    parser.openFile("Led", 1);
    parser.recordMountPath("a", "T", "w");
    EXPECT_THAT(parser.profileFilePathsMap().at("Fan"), ElementsAre("a"));
    EXPECT_THAT(parser.profileFilePathsMap().at("Led"), ElementsAre("a"));
    EXPECT_EQ(recordOf(parser, "a"), "T rw explicit");
}

TEST_F(MountPathRecords, APathWhoseFlagsAreRefusedIsFiledAllTheSame) {
    parser.recordMountPath("a", "T", "x");
    EXPECT_EQ(recordOf(parser, "a"), support::noRecord);
    EXPECT_THAT(parser.mountGroupPathsMap().at("::"), ElementsAre("a"));
    EXPECT_THAT(parser.profileFilePathsMap().at("Fan"), ElementsAre("a"));
}

// --- traces ---

TEST_F(MountPathRecords, EveryStepTracesItsArguments) {
    parser.declare({"a"}, "P");
    TraceRecorder const trace;
    handle("a/,T,rw");
    EXPECT_EQ(trace.at(8).front(), "( buffer : \"a/,T,rw\" )");
    EXPECT_EQ(trace.count(8, "( path : a, type : T )"), 1);
    EXPECT_EQ(trace.count(8, "( path : a, typeStr : P, flagsStr : rw )"), 1);
}

} // namespace
