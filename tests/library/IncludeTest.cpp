// Include lines: which files they load, what those may hold, and what the including profile shares
// with them.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Aliases.h"
#include "support/Device.h"
#include "support/EnvironmentVariable.h"
#include "support/FaultTexts.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::lineOf;
using support::messages;
using support::strings;
using testing::ElementsAre;
using testing::IsEmpty;

std::string notFound(std::string const& pattern) {
    return "Cannot find profile to include matching " + pattern;
}

std::string notAllowed(std::string const& line) {
    return "Syntax error in included file: '" + line +
           "'. One may only specify mount paths or the activeMount keyword in an included file. "
           "For more information see REF482";
}

// A lenient parser over a device, which knows the paths p/1, p/2, p/a, p/b and, with tokens,
// p/* and p/*/*.
class Include : public testing::Test {
  protected:
    support::LenientParser& parser() {
        if (!parser_) {
            parser_ = device_.lenient();
            parser_->declare({"p/1", "p/2", "p/a", "p/b", "p/*", "p/*/*"});
        }
        return *parser_;
    }
    std::vector<std::string> pathsOfFile(char const* name) {
        auto const& files = parser().profileFilePathsMap();
        auto const file = files.find(name);
        return file == files.end() ? std::vector<std::string>{} : strings(file->second);
    }
    std::vector<std::string> filesIncludedBy(char const* name) {
        auto const& files = parser().profileFileIncludesMap();
        auto const file = files.find(name);
        return file == files.end() ? std::vector<std::string>{} : strings(file->second);
    }
    // Handles one include line while the profile "Main" is open.
    std::uint32_t include(std::string const& line) {
        parser().openFile("Main");
        auto const count = parser().handleIncludeLine(lineOf(line));
        parser().closeFile();
        return count;
    }

    support::Device device_;
    std::unique_ptr<support::LenientParser> parser_;
};

TEST_F(Include, LoadsTheNamedFile) {
    device_.profile("common", "p/1,T,r\n").profile("common2", "p/2,T,r\n");
    EXPECT_EQ(include("Include:common"), 1U);
    EXPECT_THAT(pathsOfFile("common"), ElementsAre("p/1"));
    EXPECT_THAT(pathsOfFile("common2"), IsEmpty());
    EXPECT_THAT(messages(parser()), IsEmpty());
}

TEST_F(Include, LoadsEveryFileThatAPatternMatchesInTheirOrder) {
    device_.profile("common-b", "p/b,T,r\n").profile("common-a", "p/a,T,r\n");
    device_.profile("uncommon", "p/u,T,r\n").profile("common-c~", "p/c,T,r\n");
    EXPECT_EQ(include("Include:common*"), 2U);
    EXPECT_THAT(filesIncludedBy("Main"), ElementsAre("common-a", "common-b"));
    EXPECT_THAT(pathsOfFile("common-b"), ElementsAre("p/b"));
    EXPECT_THAT(messages(parser()), IsEmpty());
}

TEST_F(Include, TakesTheWildcardsOfFileNames) {
    for (char const* const line : {"Include:c?mmon", "Include:[abc]ommon", "Include:*on"}) {
        device_.profile("common", "p/1,T,r\n");
        parser_ = nullptr;
        EXPECT_EQ(include(line), 1U) << line;
        EXPECT_THAT(pathsOfFile("common"), ElementsAre("p/1")) << line;
    }
}

TEST_F(Include, MayBeWrittenInAnyCaseAndWithBlanks) {
    device_.profile("common", "p/1,T,r\n");
    parser().loadProfile("include:common\n INCLUDE : common\n", "Main");
    EXPECT_THAT(filesIncludedBy("Main"), ElementsAre("common", "common"));
    EXPECT_THAT(messages(parser()), IsEmpty());
}

TEST_F(Include, CountsItsFilesAsProfilesOfTheOneThatIncludesThem) {
    device_.profile("common-a", "p/a,T,r\n").profile("common-b", "");
    support::TraceRecorder const trace("MountFileInfo", 1U << 5);
    EXPECT_EQ(parser().loadProfile("Include:common*\nInclude:common-a\n"), 4);
    EXPECT_EQ(trace.at(5).back(), "processed 4 profiles");
}

TEST_F(Include, OfAPlainNameThatMatchesNoFileIsAnError) {
    parser().loadProfile("\nInclude:common\n", "Main");
    ASSERT_EQ(parser().exceptions().size(), 1U);
    EXPECT_EQ(parser().exceptions()[0], (Kelda::MfiException{"Main", notFound("common"), 2}));
    EXPECT_FALSE(parser().inInclude());
}

TEST_F(Include, OfAPlainNameThatMatchesNoFileYieldsNoFilesAndATrace) {
    support::TraceRecorder const trace;
    EXPECT_EQ(include("Include:common"), 0U);
    ASSERT_EQ(parser().exceptions().size(), 1U);
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser().exceptions()[0])));
    EXPECT_TRUE(trace.has(8, "( buffer : \"Include:common\" )"));
    EXPECT_TRUE(trace.has(9, "including 'common'"));
    EXPECT_TRUE(trace.has(8, "( pattern : common )"));
    EXPECT_EQ(trace.count(1, notFound("common")), 0);
}

TEST_F(Include, OfAWildcardPatternThatMatchesNoFileIsOnlyTraced) {
    for (std::string const pattern : {"common*", "c?mmon", "[c]ommon", "*", "com[mon"}) {
        support::TraceRecorder const trace;
        EXPECT_EQ(include("Include:" + pattern), 0U) << pattern;
        EXPECT_THAT(messages(parser()), IsEmpty()) << pattern;
        EXPECT_TRUE(trace.has(1, notFound(pattern))) << pattern;
        EXPECT_THAT(trace.at(0), IsEmpty()) << pattern;
    }
}

TEST_F(Include, OtherSignsMakeNoWildcardPattern) {
    for (std::string const pattern : {"com.mon", "common]", "com^mon", "%common", "{a}"}) {
        support::LenientParser parser;
        parser.reconcileFailedInclude(pattern.c_str());
        EXPECT_THAT(messages(parser), ElementsAre(notFound(pattern)));
    }
}

TEST_F(Include, OfAFileWithoutPathsIsNoError) {
    device_.profile("common", "# nothing yet\n");
    EXPECT_EQ(include("Include:common"), 1U);
    EXPECT_THAT(messages(parser()), IsEmpty());
}

TEST_F(Include, DoesNotExpandAliasesInItsPattern) {
    device_.profile("common", "p/1,T,r\n");
    parser().loadProfile("alias:%a=common\nInclude:%a\n");
    EXPECT_THAT(messages(parser()), ElementsAre(notFound("%a")));
}

// A lenient parser with an extra profile directory.
class IncludeFromTwoDirectories : public Include {
  protected:
    IncludeFromTwoDirectories() { parser().doLoadPreinits(); }

    support::TemporaryDirectory extra_;
    support::EnvironmentVariable extraPath_{"KELDA_EXTRA_PROFILE_PATH", extra_.string().c_str()};
    support::EnvironmentVariable noPreinits_{"MFI_NO_DEFAULT_PREINIT", nullptr};
    support::EnvironmentVariable noExtraPreinits_{"KELDA_EXTRA_PREINIT_PATH", nullptr};
};

TEST_F(IncludeFromTwoDirectories, LoadsAFileFoundInBothFromBothAndCountsBoth) {
    device_.profile("common", "p/1,T,r\n");
    extra_.write("common", "p/2,T,r\n");
    EXPECT_EQ(include("Include:common"), 2U);
    EXPECT_THAT(pathsOfFile("common"), ElementsAre("p/1", "p/2"));
    EXPECT_THAT(filesIncludedBy("Main"), ElementsAre("common", "common"));
}

TEST_F(IncludeFromTwoDirectories, IsServedByEitherAlone) {
    device_.profile("plain", "p/1,T,r\n");
    extra_.write("special", "p/2,T,r\n");
    EXPECT_EQ(include("Include:plain"), 1U);
    EXPECT_EQ(include("Include:special"), 1U);
    EXPECT_THAT(messages(parser()), IsEmpty());
}

TEST_F(IncludeFromTwoDirectories, FailsOnceWhenNeitherHoldsTheFile) {
    EXPECT_EQ(include("Include:common"), 0U);
    EXPECT_EQ(include("Include:common*"), 0U);
    EXPECT_THAT(messages(parser()), ElementsAre(notFound("common")));
}

TEST_F(Include, OfAFileAcceptsPathsAndTheActiveMountKeyword) {
    device_.profile("common", "# shared\np/1,T,r\n ActiveMount \np/2,T,w # last\n");
    parser().loadProfile("Include:common\n");
    EXPECT_THAT(messages(parser()), IsEmpty());
    EXPECT_THAT(pathsOfFile("common"), ElementsAre("p/1", "p/2"));
    EXPECT_TRUE(parser().activeMountSeen());
}

TEST_F(Include, OfAFileRefusesEveryOtherLineAndIgnoresIt) {
    for (std::string const line :
         {"alias:%a=x", "MountGroup:g", "MountGroup:g,5", "noDefaultMountGroup", "matchActiveName",
          "subAgent:Psu", "Condition:on", "ConditionBlocker:on", "rootFlags:w", "connectionFlags:S",
          "Include:other", "agentName:Fan", "foo", "p/1,T", "p/1,T,x=y"}) {
        device_.profile("common", line + "\n").profile("other", "p/2,T,r\n");
        parser_ = nullptr;
        parser().initializedIs(true);
        parser().loadProfile("Include:common\n", "Main");
        ASSERT_THAT(messages(parser()), ElementsAre(notAllowed(line)));
        EXPECT_EQ(parser().exceptions()[0].file, "common");
        EXPECT_FALSE(parser().noDefaultMountGroup() || parser().matchActiveNameSeen() ||
                     parser().conditionSeen());
        EXPECT_THAT(parser().subAgents(), IsEmpty());
        EXPECT_EQ(parser().rootFlags() + parser().connectionFlags(), "");
        EXPECT_THAT(parser().pathMountArgsMap(), IsEmpty());
    }
}

TEST_F(Include, OfAFileRefusesAnAliasThatPathsThenMiss) {
    device_.profile("common", "alias:%a=x\np/%a,T,r\nactiveMount\n");
    parser().loadProfile("Include:common\n", "Main");
    EXPECT_THAT(messages(parser()),
                ElementsAre(notAllowed("alias:%a=x"), "No such alias defined: '%a'"));
    EXPECT_TRUE(parser().activeMountSeen());
}

TEST_F(Include, ARefusedLineIsReportedWithItsFileAndLineAndTraced) {
    device_.profile("common", "p/1,\\\nT,r\n mount group : g # no\n");
    support::TraceRecorder const trace("MountFileInfo", 1U << 0);
    parser().loadProfile("\n\n\nInclude:common\n", "Main");
    ASSERT_EQ(parser().exceptions().size(), 1U);
    EXPECT_EQ(parser().exceptions()[0],
              (Kelda::MfiException{"common", notAllowed("mountgroup:g"), 3}));
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser().exceptions()[0])));
}

TEST_F(Include, AMalformedLineWithTwoCommasIsAPathLineInAnIncludedFileToo) {
    device_.profile("common", "MountGroup:p,T,r\n");
    parser().declare({"MountGroup:p"});
    parser().loadProfile("Include:common\n");
    EXPECT_THAT(messages(parser()), IsEmpty());
    EXPECT_THAT(pathsOfFile("common"), ElementsAre("MountGroup:p"));
}

TEST_F(Include, TheLinesAfterItAreParsedNormally) {
    device_.profile("common", "p/1,T,r\n");
    parser().loadProfile("Include:common\nalias:%a=x\nMountGroup:g\np/%a,T,r\n", "Main");
    EXPECT_THAT(messages(parser()), IsEmpty());
    EXPECT_FALSE(parser().inInclude());
    EXPECT_THAT(pathsOfFile("Main"), ElementsAre("p/x"));
}

TEST_F(Include, KeepsAliasesAndMountGroupForTheLinesAfterIt) {
    device_.profile("common", "p/1,T,r\n");
    parser().agentKeyIs("Fan");
    parser().loadProfile("alias:%a=x\nMountGroup:g\nInclude:common\np/%a,T,r\n", "Main");
    EXPECT_THAT(messages(parser()), IsEmpty());
    EXPECT_THAT(strings(parser().mountGroupPaths("Fan::g")), ElementsAre("p/1", "p/x"));
}

TEST_F(Include, AnIncludedPathUsesTheAliasesOfTheIncludingProfile) {
    device_.profile("common", "p/%slot/%agentString,T,r\n");
    parser().perFileAliasesPushBack("%agentString", "Fan-3");
    parser().loadProfile("alias:%slot=3\nInclude:common\n", "Main");
    EXPECT_THAT(messages(parser()), IsEmpty());
    EXPECT_THAT(pathsOfFile("common"), ElementsAre("p/3/Fan-3"));
}

TEST_F(Include, AnIncludedFileSeesAnAliasAsItStandsAtTheLine) {
    device_.profile("common", "p/%slot,T,r\n");
    parser().loadProfile("alias:%slot=3\nInclude:common\nalias:%slot=4\nInclude:common\n");
    EXPECT_THAT(pathsOfFile("common"), ElementsAre("p/3", "p/4"));
}

TEST_F(Include, DoesNotEndAConditionalGroup) {
    device_.profile("common", "p/1,T,r\n");
    parser().openFile("Main");
    parser().handleConditionLine(lineOf("Condition: on"));
    parser().handleIncludeLine(lineOf("Include:common"));
    EXPECT_TRUE(parser().inConditionalGroup());
}

TEST_F(Include, AnActiveMountInAnIncludedFileCountsForMatchActiveName) {
    device_.profile("common", "activeMount\n");
    parser().loadProfile("matchActiveName\nInclude:common\n", "Main");
    EXPECT_THAT(messages(parser()), IsEmpty());
}

TEST_F(Include, IncludedErrorIsReportedForAnyLine) {
    parser().includedError(lineOf("anything"));
    EXPECT_THAT(messages(parser()), ElementsAre(notAllowed("anything")));
}

} // namespace
