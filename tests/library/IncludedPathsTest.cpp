// What is remembered of includes: which files a profile included and which paths they brought; and
// includes of an agent, which end at the first fault.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/FaultTexts.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::LenientParser;
using support::messages;
using support::strings;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::vector<std::string> includePaths(LenientParser& parser, char const* file,
                                      Kelda::StringList paths = {}) {
    parser.appendIncludePaths(file, paths);
    return strings(paths);
}

TEST(IncludedFiles, AreFiledUnderTheProfileThatIncludesThem) {
    support::Device device;
    device.profile("a", "").profile("b", "");
    auto const parser = device.lenient();
    parser->loadProfile("Include:b\nInclude:a\n", "Main");
    parser->loadProfile("Include:a\n", "Other");
    EXPECT_THAT(strings(parser->profileFileIncludesMap().at("Main")), ElementsAre("b", "a"));
    EXPECT_THAT(strings(parser->profileFileIncludesMap().at("Other")), ElementsAre("a"));
}

TEST(IncludedFiles, AreOnlyThoseOfIncludeLines) {
    support::Device device;
    device.profile("Fan", "agentName:Fan\n");
    auto const parser = device.lenient();
    parser->doInit();
    EXPECT_THAT(parser->profileFileIncludesMap(), IsEmpty());
}

TEST(IncludedFiles, AreAppendedInTheOrderGivenDuplicatesKept) {
    LenientParser parser;
    support::TraceRecorder const trace;
    for (char const* const file : {"b", "a", "b"})
        parser.profileFileIncludesMapIs("Main", file);
    EXPECT_THAT(strings(parser.profileFileIncludesMap().at("Main")), ElementsAre("b", "a", "b"));
    EXPECT_EQ(trace.count(8, "( key: Main, value: b )"), 2);
    EXPECT_EQ(trace.count(8, "( key: Main, value: a )"), 1);
}

TEST(IncludedFiles, AreForgottenWithTheProfileData) {
    LenientParser parser;
    parser.profileFileIncludesMapIs("Main", "a");
    parser.clearProfileData();
    EXPECT_THAT(parser.profileFileIncludesMap(), IsEmpty());
}

// "Main" included b, then a, which has three paths, then a file that brought none.
class IncludedPaths : public testing::Test {
  protected:
    IncludedPaths() {
        for (char const* const file : {"b", "a", "none"})
            parser_.profileFileIncludesMapIs("Main", file);
        for (char const* const path : {"p/3", "p/1", "p/2"})
            parser_.profileFilePathsMapIs("a", path);
        parser_.profileFilePathsMapIs("b", "p/4");
        parser_.profileFilePathsMapIs("Main", "p/0");
    }

    LenientParser parser_;
};

TEST_F(IncludedPaths, AreAppendedFileByFileInTheirRecordedOrder) {
    EXPECT_THAT(includePaths(parser_, "Main", {"before"}),
                ElementsAre("before", "p/4", "p/3", "p/1", "p/2"));
}

TEST_F(IncludedPaths, OfAProfileWithoutIncludesAreNone) {
    EXPECT_THAT(includePaths(parser_, "a"), IsEmpty());
    EXPECT_THAT(includePaths(parser_, "unknown", {"before"}), ElementsAre("before"));
    EXPECT_FALSE(parser_.profileFileIncludesMap().contains("unknown"));
}

TEST_F(IncludedPaths, FollowOneLevelOnly) {
    parser_.profileFileIncludesMapIs("b", "a");
    parser_.profileFileIncludesMapIs("Outer", "b");
    EXPECT_THAT(includePaths(parser_, "Outer"), ElementsAre("p/4"));
}

TEST_F(IncludedPaths, ThatAreMissingLeaveNoTraceInTheMaps) {
    includePaths(parser_, "Main");
    EXPECT_FALSE(parser_.profileFilePathsMap().contains("none"));
    EXPECT_THAT(messages(parser_), IsEmpty());
}

TEST_F(IncludedPaths, AreTracedWithTheListSoFar) {
    support::TraceRecorder const trace;
    includePaths(parser_, "Main", {"x", "y"});
    includePaths(parser_, "unknown");
    EXPECT_TRUE(trace.has(8, "( profileFileName : Main, ret : {x, y} )"));
    EXPECT_TRUE(trace.has(8, "( profileFileName : unknown, ret : {} )"));
}

TEST(IncludedProfileFiles, KeepTheirPathsAndLendThemToTheIncludingProfile) {
    support::Device device;
    device.preinit("p", "p/1,T\np/2,T\n");
    device.profile("common", "p/1,T,r\n")
        .profile("Fan", "agentName:Fan\np/2,T,r\nInclude:common\n");
    auto const parser = device.lenient();
    parser->doInit();
    EXPECT_THAT(strings(parser->profileFilePaths("Fan", false)), ElementsAre("p/2"));
    EXPECT_THAT(strings(parser->profileFilePaths("common", false)), ElementsAre("p/1"));
    EXPECT_THAT(strings(parser->profileFilePaths("Fan", true)), ElementsAre("p/1", "p/2"));
}

TEST_F(IncludedPaths, NameEveryFileThatBroughtPaths) {
    parser_.initializedIs(true);
    support::TraceRecorder const trace;
    EXPECT_THAT(strings(parser_.includedProfileFiles()), UnorderedElementsAre("Main", "a", "b"));
    EXPECT_TRUE(trace.has(7, ""));
}

TEST(IncludedProfileFiles, IsAQueryThatLoadsFirst) {
    support::Device device;
    device.preinit("p", "p/1,T\np/2,T\n");
    device.profile("common", "p/1,T,r\n");
    device.profile("Fan", "agentName:Fan\nInclude:common\n");
    auto const agent = device.agent("Fan");
    EXPECT_THAT(strings(agent->includedProfileFiles()), ElementsAre("common"));
    EXPECT_TRUE(agent->isInitialized());
}

class IncludesOfAnAgent : public testing::Test {
  protected:
    IncludesOfAnAgent() {
        device_.preinit("p", "p/1,T\np/2,T\n");
        device_.profile("Fan", "agentName:Fan\nInclude:common\nMountGroup:g\np/2,T,r\n");
    }

    support::Device device_;
    std::unique_ptr<Kelda::AgentMountFileInfo> agent_ = device_.agent("Fan");
};

TEST_F(IncludesOfAnAgent, GiveItThePathsOfTheIncludedFile) {
    device_.profile("common", "p/1,T,r\n");
    EXPECT_THAT(strings(agent_->agentPaths("Fan")), UnorderedElementsAre("p/1", "p/2"));
    EXPECT_THAT(strings(agent_->mountGroupPaths("Fan::g")), ElementsAre("p/2"));
}

TEST_F(IncludesOfAnAgent, OfAMissingFileEndTheLoad) {
    EXPECT_EQ(support::thrownText([this] { agent_->doInit(); }),
              support::faultIn("Fan", 2, "Cannot find profile to include matching common"));
}

TEST_F(IncludesOfAnAgent, OfAPatternThatMatchesNothingDoNot) {
    device_.profile("Fan", "agentName:Fan\nInclude:common*\np/2,T,r\n");
    EXPECT_THAT(strings(agent_->agentPaths("Fan")), ElementsAre("p/2"));
}

TEST_F(IncludesOfAnAgent, OfAFileWithAnotherLineEndTheLoad) {
    device_.profile("common", "p/1,T,r\nMountGroup:h\n");
    auto const text = support::thrownText([this] { agent_->doInit(); });
    EXPECT_EQ(text,
              support::faultIn("common", 2,
                               "Syntax error in included file: 'MountGroup:h'. One may only "
                               "specify mount paths or the activeMount keyword in an included "
                               "file. For more information see REF482"));
}

TEST_F(IncludesOfAnAgent, ThatFailedDoNotRestrictTheNextLoad) {
    support::thrownText([this] { agent_->doInit(); });
    device_.profile("common", "MountGroup:h\n");
    support::thrownText([this] { agent_->doInit(); });
    device_.profile("common", "p/1,T,r\n");
    EXPECT_EQ(support::thrownText([this] { agent_->doInit(); }), "(nothing was thrown)");
    EXPECT_TRUE(agent_->infoExists("p/1"));
    EXPECT_TRUE(agent_->infoExists("p/2"));
}

} // namespace
