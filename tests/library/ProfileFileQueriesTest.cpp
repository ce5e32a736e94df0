// Which paths come from a profile file, and which an agent gets from all of its profiles.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <Fen/Exception.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::Strings;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class ProfileFileQueries : public testing::Test {
  protected:
    ProfileFileQueries() {
        device_.preinit("Base", "a,T\nb,T\nc,T\nd,T\ne,T\n");
        device_.profile("Fan", "agentName:Fan\nc,T,r\na,T,r\nInclude:common-*\n")
            .profile("Fan-extra", "agentName:Fan\nb,T,r\na,T,w\n")
            .profile("Pan", "agentName:Pan\nd,T,r\n")
            .profile("common-1", "e,T,r\na,T,r\n")
            .profile("common-2", "b,T,r\n");
        parser_ = device_.lenient();
    }
    Strings paths(char const* name, bool withIncludes = false) {
        return support::strings(parser_->profileFilePaths(name, withIncludes));
    }
    void expectNotFound(char const* name, std::string const& message) {
        for (bool const withIncludes : {false, true}) {
            SCOPED_TRACE(name);
            auto const parser = device_.lenient();
            parser->doInit();
            support::TraceRecorder const trace;
            EXPECT_THAT(parser->profileFilePaths(name, withIncludes), IsEmpty());
            EXPECT_EQ(support::messages(*parser), Strings{message + explanation()});
            EXPECT_EQ(trace.at(0), support::continuedTraces(*parser));
            EXPECT_THAT(trace.at(3), ElementsAre("Returning empty vector"));
        }
    }
    // What follows every message about a missing file.
    std::string explanation() const {
        return std::string(support::LenientParser().fmtNotFoundError("", true).view());
    }

    support::CleanEnvironment environment_;
    support::Device device_;
    std::unique_ptr<support::LenientParser> parser_;
};

// --- the paths of one file ---

TEST_F(ProfileFileQueries, TheOwnPathsOfAFileAreSorted) {
    EXPECT_THAT(paths("Fan"), ElementsAre("a", "c"));
    EXPECT_THAT(paths("Pan"), ElementsAre("d"));
}

TEST_F(ProfileFileQueries, WithIncludesThePathsOfTheIncludedFilesAreListedToo) {
    EXPECT_THAT(paths("Fan", true), ElementsAre("a", "a", "b", "c", "e"))
        << "\"a\" stands in the file and in one that it includes";
    EXPECT_THAT(paths("Pan", true), ElementsAre("d"));
}

TEST_F(ProfileFileQueries, AnIncludedFileIsAFileOfItsOwn) {
    EXPECT_THAT(paths("common-1"), ElementsAre("a", "e"));
    EXPECT_THAT(paths("common-2", true), ElementsAre("b"));
}

TEST_F(ProfileFileQueries, AnUnknownFileIsReported) {
    for (char const* const name : {"None", "fan", "Fan ", "", "Base", "F?n", "*Fan"})
        expectNotFound(name, std::string("profileFilePaths: no such file: ") + name);
}

TEST_F(ProfileFileQueries, TheStrictFlavourThrowsForAnUnknownFile) {
    auto const parser = device_.agent("Fan");
    EXPECT_THROW(parser->profileFilePaths("Pan", false), Fen::AgentException);
    EXPECT_THROW(parser->profileFilePaths("P*", false), Fen::AgentException);
    EXPECT_THAT(parser->profileFilePaths("Fan", false), ElementsAre("a", "c"));
}

TEST_F(ProfileFileQueries, TheMessageNamesTheAgentsThatWereLoaded) {
    auto const parser = device_.agent("Fan");
    try {
        parser->profileFilePaths("Pan", false);
        FAIL() << "nothing was thrown";
    } catch (Fen::AgentException const& fault) {
        auto const expected = parser->fmtNotFoundError("profileFilePaths: no such file: Pan", true);
        EXPECT_EQ(fault.what(), std::string(expected.view()));
        EXPECT_THAT(fault.what(), testing::HasSubstr("following agent names: Fan."));
    }
}

// --- the paths of several files ---

TEST_F(ProfileFileQueries, AStarAtTheEndStandsForAllFilesThatBeginSo) {
    EXPECT_THAT(paths("Fan*"), ElementsAre("a", "a", "b", "c")) << "duplicates are kept";
    EXPECT_THAT(paths("common-*"), ElementsAre("a", "b", "e"));
    EXPECT_THAT(paths("Pan*"), ElementsAre("d"));
}

TEST_F(ProfileFileQueries, AStarAloneStandsForAllFiles) {
    EXPECT_THAT(paths("*"), ElementsAre("a", "a", "a", "b", "b", "c", "d", "e"));
}

TEST_F(ProfileFileQueries, AStarWithIncludesListsTheIncludedFilesOfEachMatch) {
    EXPECT_THAT(paths("Fan*", true), ElementsAre("a", "a", "a", "b", "b", "c", "e"));
    EXPECT_THAT(paths("*", true),
                ElementsAre("a", "a", "a", "a", "b", "b", "b", "c", "d", "e", "e"));
}

TEST_F(ProfileFileQueries, OnlyTheLastStarIsSpecial) {
    device_.profile("Star*Fan", "agentName:Star\ne,T,r\n");
    parser_ = device_.lenient();
    EXPECT_THAT(paths("Star*F*"), ElementsAre("e"));
    expectNotFound("F**", "profileFilePaths: no such files: F**");
}

TEST_F(ProfileFileQueries, APatternThatMatchesNoFileIsReported) {
    for (char const* const name : {"None*", "fan*", "Fan?*", "[F]*"})
        expectNotFound(name, std::string("profileFilePaths: no such files: ") + name);
}

TEST_F(ProfileFileQueries, WithoutAnyProfileEvenAStarIsReported) {
    support::Device const empty;
    auto const parser = empty.lenient();
    EXPECT_THAT(parser->profileFilePaths("*", false), IsEmpty());
    EXPECT_EQ(support::messages(*parser),
              Strings{"profileFilePaths: no such files: *" + explanation()});
}

TEST_F(ProfileFileQueries, TheQueryIsTracedAndLoadsOnFirstUse) {
    support::TraceRecorder const trace;
    parser_->profileFilePaths("Fan", true);
    parser_->profileFilePaths("P*", false);
    EXPECT_THAT(trace.at(7), Contains("( profileFileName : Fan, withIncludes : true )"));
    EXPECT_THAT(trace.at(7), Contains("( profileFileName : P*, withIncludes : false )"));
    EXPECT_EQ(parser_->doInitCount(), 1);
    EXPECT_THAT(trace.at(0), IsEmpty());
}

TEST_F(ProfileFileQueries, AskingDoesNotChangeWhatIsFiled) {
    paths("Fan", true);
    paths("*", true);
    EXPECT_THAT(paths("Fan"), ElementsAre("a", "c"));
    EXPECT_THAT(support::faultList(*parser_), IsEmpty());
}

// --- the paths of one agent ---

using AgentPaths = ProfileFileQueries;

TEST_F(AgentPaths, AreThoseOfItsProfilesAndWhatTheyInclude) {
    auto const parser = device_.agent("Fan");
    EXPECT_THAT(parser->agentPaths("Fan"), UnorderedElementsAre("a", "b", "c", "e"));
}

TEST_F(AgentPaths, TellTwoAgentsApart) {
    auto const parser = device_.agent("Fan");
    parser->addAgent("Pan", "");
    EXPECT_THAT(parser->agentPaths("Pan"), UnorderedElementsAre("d"));
    EXPECT_THAT(parser->agentPaths("Fan"), UnorderedElementsAre("a", "b", "c", "e"));
}

TEST_F(AgentPaths, HoldTheDynamicPathsOfEveryAgent) {
    auto const parser = device_.agent("Pan");
    parser->doInit();
    parser->recordMountArgsExternal("run/time", {"T", {}, false}, true, false);
    parser->recordMountArgsExternal("above", {"T", {}, false}, false, false);
    EXPECT_THAT(parser->agentPaths("Pan"), UnorderedElementsAre("d", "run/time"));
    parser->mountGroupPathsMapIs("Other::recordMountArgs", "other");
    parser->mountGroupPathsMapIs("::recordMountArgs", "nobody");
    parser->mountGroupPathsMapIs("Other::recordMountArgsNot", "not");
    parser->mountGroupPathsMapIs("recordMountArgs", "neither");
    EXPECT_THAT(parser->agentPaths("Pan"),
                UnorderedElementsAre("d", "run/time", "other", "nobody"));
}

TEST_F(AgentPaths, OfAnAgentWithoutAProfileAreTheDynamicOnesAndLeaveAnEmptyEntry) {
    parser_->doInit();
    parser_->recordMountArgsExternal("run/time", {"T", {}, false}, true, false);
    EXPECT_THAT(parser_->agentPaths("Nobody"), UnorderedElementsAre("run/time"));
    ASSERT_TRUE(parser_->agentStringProfileFileMap().contains("Nobody"));
    EXPECT_THAT(parser_->agentStringProfileFileMap().at("Nobody"), IsEmpty());
    EXPECT_THAT(support::faultList(*parser_), IsEmpty());
}

TEST_F(AgentPaths, OfAProfileWithTokensAreFoundByAgentStringAndByName) {
    device_.preinit("Slots", "slot/%s,T,createOnMount\n")
        .profile("Tray", "agentName:Tray-%s\nslot/%s,T,r\n");
    auto const parser = device_.agent("Tray-4");
    EXPECT_THAT(parser->agentPaths("Tray-4"), UnorderedElementsAre("slot/4"));
    EXPECT_THAT(parser->agentPaths("Tray"), UnorderedElementsAre("slot/4"));
}

TEST_F(AgentPaths, OfAProfileThatOnlyIncludesAreThoseItIncludes) {
    device_.profile("Can", "agentName:Can\nInclude:common-1\n");
    auto const parser = device_.agent("Can");
    EXPECT_THAT(parser->agentPaths("Can"), UnorderedElementsAre("a", "e"));
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
}

TEST_F(AgentPaths, OfAProfileWithoutAnyPathAreNone) {
    device_.profile("Can", "agentName:Can\nactiveMount\n");
    auto const parser = device_.agent("Can");
    EXPECT_THAT(parser->agentPaths("Can"), IsEmpty());
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
}

TEST_F(AgentPaths, LoadOnFirstUse) {
    auto const parser = device_.agent("Pan");
    EXPECT_THAT(parser->agentPaths("Pan"), UnorderedElementsAre("d"));
    EXPECT_TRUE(parser->isInitialized());
    EXPECT_EQ(parser->doInitCount(), 1);
}

TEST_F(AgentPaths, AreTheSameAfterInitialisingAgain) {
    auto const parser = device_.agent("Fan");
    auto const before = parser->agentPaths("Fan");
    parser->unDoInit();
    EXPECT_THAT(parser->agentStringProfileFileMap(), IsEmpty());
    EXPECT_EQ(parser->agentPaths("Fan"), before);
}

} // namespace
