// The flavour that reads everything: which files, in which order, what the operations that choose
// among them do, and that it still answers like any parser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Fen/Exception.h>

#include "database/DatabaseMountFileInfo.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/MountRecords.h"
#include "support/Thrown.h"

namespace {

using KeldaDatabase::DatabaseMountFileInfo;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class DatabaseParser : public testing::Test {
  protected:
    DatabaseParser() { device.preinit("P", "a,T\nb,T\ns/%x,T,createOnMount\n"); }

    DatabaseMountFileInfo parser() const { return {device.preinitDir(), device.profileDir()}; }

    // The profiles that were loaded, by the names of their files.
    static std::vector<std::string> profiles(DatabaseMountFileInfo& parser) {
        std::vector<std::string> names;
        for (auto const& profile : parser.device().profiles)
            names.push_back(profile.file == KeldaDatabase::none
                                ? "(no file)"
                                : parser.device().files[profile.file].name);
        return names;
    }
    static std::vector<std::string> findings(DatabaseMountFileInfo& parser) {
        std::vector<std::string> texts;
        for (auto const& finding : parser.findings())
            texts.push_back(parser.device().pathOf(finding.place) + ":" +
                            std::to_string(finding.place.line) + ": " + finding.message);
        return texts;
    }

    support::CleanEnvironment environment;
    support::Device device;
};

TEST_F(DatabaseParser, LoadsEveryProfileInNameOrderAndTheDefaultGroupsLast) {
    device.profile("Led", "agentName: Led\n").profile("Fan", "agentName: Fan-%x\n");
    device.profile("Shared", "a,T,r\n").profile("DefaultMountGroup", "a,T,r\n");
    auto mfi = parser();
    EXPECT_THAT(profiles(mfi), ElementsAre("Fan", "Led", "DefaultMountGroup", "(no file)"));
    EXPECT_EQ(mfi.device().preinitDirectory, device.preinitDir());
    EXPECT_EQ(mfi.device().profileDirectory, device.profileDir());
}

TEST_F(DatabaseParser, LeavesTheDefaultGroupsOutWhenTold) {
    device.profile("Fan", "agentName: Fan\n").profile("DefaultMountGroup", "a,T,r\n");
    auto mfi = parser();
    mfi.setForceNoDefaultMountGroup();
    EXPECT_THAT(profiles(mfi), ElementsAre("Fan"));
    EXPECT_FALSE(mfi.infoExists("a"));
}

TEST_F(DatabaseParser, ReadsTheDefaultGroupOfAgentsOnAStandbyWhenTold) {
    device.profile("DefaultMountGroupStandby", "a,T,r\n");
    auto mfi = parser();
    EXPECT_FALSE(mfi.infoExists("a"));
    auto standby = parser();
    standby.setWaitForActiveReady();
    EXPECT_THAT(profiles(standby), ElementsAre("(no file)", "(no file)", //
                                               "DefaultMountGroupStandby"));
    EXPECT_EQ(support::recordOf(standby, "a"), "T r explicit");
}

TEST_F(DatabaseParser, TakesTheDefaultGroupsByTheNameThatItIsGiven) {
    device.profile("Everybody", "a,T,r\n").profile("EverybodyPerAgent", "b,T,r\n");
    DatabaseMountFileInfo mfi(device.preinitDir(), device.profileDir(), "Everybody");
    EXPECT_THAT(profiles(mfi), ElementsAre("Everybody", "EverybodyPerAgent"));
}

TEST_F(DatabaseParser, ReadsNoFileWhoseNameTheExclusionMatches) {
    device.preinit("Secret", "foo\n").profile("Fan", "agentName: Fan\n");
    device.profile("FanSecret", "agentName: Fan\nfoo\n");
    auto mfi = parser();
    mfi.setExclusionRegex(std::regex("Sec.et"));
    EXPECT_THAT(profiles(mfi), ElementsAre("Fan", "(no file)", "(no file)"));
    EXPECT_THAT(findings(mfi), IsEmpty());
}

TEST_F(DatabaseParser, BindsTokensAndTheAgentStringToAnyValue) {
    device.profile("Fan", "agentName: Fan-%x-%rest$\ns/%x,T,r\ns/%REST,T,w\n");
    device.profile("DefaultMountGroupPerAgent", "s/%agentString,T,i\n");
    auto mfi = parser();
    EXPECT_EQ(support::recordOf((mfi.doInit(), mfi), "s/*"), "T rwi explicit");
    EXPECT_THAT(mfi.getTitleTemplates(), ElementsAre("%x", "%rest"));
}

TEST_F(DatabaseParser, GivesAnUndefinedAliasNoValueAndGoesOn) {
    device.profile("Fan", "agentName: Fan\ns/%y,T,r\nfoo\na,T,r\n");
    auto mfi = parser();
    EXPECT_THAT(findings(mfi),
                ElementsAre(device.profileDir() + "/Fan:2: No such alias defined: '%y'",
                            device.profileDir() + "/Fan:3: syntax error: 'foo'"));
    EXPECT_EQ(support::recordOf(mfi, "s/"), "T r explicit");
    EXPECT_EQ(support::recordOf(mfi, "a"), "T r explicit");
}

// --- choosing profiles ---

TEST_F(DatabaseParser, LoadsOfAllProfilesOnlyTheOneThatWasAdded) {
    device.profile("Fan", "agentName: Fan\n").profile("FanToo", "agentName: FanToo\nfoo\n");
    auto mfi = parser();
    mfi.addProfile("Fan");
    mfi.setForceNoDefaultMountGroup();
    EXPECT_THAT(profiles(mfi), ElementsAre("Fan"));
    EXPECT_THAT(findings(mfi), IsEmpty());
    EXPECT_EQ(mfi.agentName(), "Fan");
}

TEST_F(DatabaseParser, LoadsProfilesInTheOrderInWhichTheyWereAdded) {
    device.profile("Fan", "agentName: Fan\n").profile("Led", "agentName: Led\n");
    device.profile("Psu", "agentName: Psu\n");
    auto mfi = parser();
    mfi.addProfile("Psu");
    mfi.addProfile("Fan");
    mfi.setForceNoDefaultMountGroup();
    EXPECT_THAT(profiles(mfi), ElementsAre("Psu", "Fan"));
}

TEST_F(DatabaseParser, TakesTheNameOfAnAddedProfileAsItIs) {
    device.profile("F*", "agentName: Star\n").profile("F?", "agentName: Question\n");
    device.profile("F[an]", "agentName: Bracket\n").profile("Fa", "agentName: Fa\n");
    device.profile("Fan", "agentName: Fan\n").profile("F]", "agentName: Closing\n");
    for (auto const& [name, agent] : {std::pair("F*", "Star"), std::pair("F?", "Question"),
                                      std::pair("F[an]", "Bracket"), std::pair("F]", "Closing")}) {
        auto mfi = parser();
        mfi.addProfile(name);
        mfi.setForceNoDefaultMountGroup();
        EXPECT_THAT(profiles(mfi), ElementsAre(name));
        EXPECT_EQ(mfi.agentName(), agent);
    }
}

TEST_F(DatabaseParser, FindsNoProfileWhereAnAddedOneIsMissing) {
    device.profile("Fan", "agentName: Fan\n");
    for (auto const* const name : {"nosuch", "Fan\\", "F*", "fan", " Fan"}) {
        auto mfi = parser();
        mfi.addProfile(name);
        mfi.setForceNoDefaultMountGroup();
        EXPECT_THAT(profiles(mfi), IsEmpty()) << name;
        EXPECT_THAT(findings(mfi), IsEmpty()) << name;
    }
}

TEST_F(DatabaseParser, TakesProfilesToAddFromTheNextInitialisationOn) {
    device.profile("Fan", "agentName: Fan\n").profile("Led", "agentName: Led\n");
    auto mfi = parser();
    mfi.setForceNoDefaultMountGroup();
    mfi.doInit();
    mfi.addProfile("Led");
    EXPECT_THAT(profiles(mfi), ElementsAre("Fan", "Led"));
    mfi.unDoInit();
    EXPECT_THAT(profiles(mfi), ElementsAre("Led"));
}

TEST_F(DatabaseParser, TellsTheAgentNameOfASingleProfileOnly) {
    auto const thrown = [](DatabaseMountFileInfo& mfi) {
        return support::thrownText([&] { mfi.agentName(); });
    };
    auto none = parser();
    EXPECT_EQ(thrown(none), "agentName: 0 profiles are loaded, and not a single one");
    device.profile("Fan", "agentName: Fan-%x\n").profile("DefaultMountGroup", "a,T,r\n");
    auto one = parser();
    EXPECT_EQ(one.agentName(), "Fan-%x");
    device.profile("Led", "agentName: Led\n");
    auto two = parser();
    EXPECT_EQ(thrown(two), "agentName: 2 profiles are loaded, and not a single one");
}

// --- the life cycle ---

TEST_F(DatabaseParser, LoadsOnceAndWhenFirstAsked) {
    auto mfi = parser();
    EXPECT_FALSE(mfi.isInitialized());
    device.profile("Fan", "agentName: Fan\n");
    EXPECT_EQ(mfi.device().profiles.size(), 3U);
    device.profile("Led", "agentName: Led\n");
    mfi.doInit();
    EXPECT_EQ(mfi.device().profiles.size(), 3U);
    EXPECT_EQ(mfi.doInitCount(), 1);
}

TEST_F(DatabaseParser, GivesTheSameDeviceAndFindingsWhenItIsInitialisedAgain) {
    device.profile("Fan", "agentName: Fan\nCondition: a\nfoo\ns/%y,T,r\n");
    device.profile("FanToo", "agentName: Fan\nactiveMount\na,T,x\n").profile("Fan~", "");
    auto mfi = parser();
    auto const first = findings(mfi);
    auto const faults = mfi.exceptions();
    auto const sizes = [&] {
        auto const& d = mfi.device();
        return std::vector<std::size_t>{d.files.size(),    d.skipped.size(), d.preinits.size(),
                                        d.mounts.size(),   d.aliases.size(), d.profiles.size(),
                                        d.keywords.size(), d.faults.size(),  d.agents.size()};
    };
    auto const counted = sizes();
    auto const moment = mfi.device().faults.back().moment;
    EXPECT_EQ(first.size(), 4U);
    mfi.unDoInit();
    EXPECT_FALSE(mfi.isInitialized());
    EXPECT_EQ(findings(mfi), first);
    EXPECT_EQ(sizes(), counted);
    EXPECT_EQ(mfi.device().faults.back().moment, moment);
}

TEST_F(DatabaseParser, KeepsTheFaultsOfFormerInitialisationsAsEveryParserDoes) {
    device.profile("Fan", "agentName: Fan\nfoo\n");
    auto mfi = parser();
    mfi.doInit();
    EXPECT_EQ(mfi.exceptions().size(), 1U);
    mfi.unDoInit();
    mfi.doInit();
    EXPECT_EQ(mfi.exceptions().size(), 2U);
    EXPECT_EQ(mfi.device().faults.size(), 1U);
}

TEST_F(DatabaseParser, ForgetsTheDeviceWithTheProfileData) {
    device.profile("Fan", "agentName: Fan\nfoo\n");
    auto mfi = parser();
    mfi.doInit();
    mfi.clearProfileData();
    EXPECT_TRUE(mfi.isInitialized());
    EXPECT_TRUE(mfi.device().profiles.empty());
    EXPECT_THAT(mfi.findings(), IsEmpty());
    EXPECT_THAT(mfi.exceptions(), IsEmpty());
}

TEST_F(DatabaseParser, HasFurtherFindingsOnlyWhereStaticChecksAreOn) {
    device.profile("Fan", "agentName: Fan\nalias: %unused = 1\n");
    auto mfi = parser();
    EXPECT_THAT(findings(mfi), IsEmpty());
    mfi.staticCheckIs(true);
    EXPECT_THAT(mfi.findings(), testing::Not(IsEmpty()));
    mfi.staticCheckIs(false);
    EXPECT_THAT(findings(mfi), IsEmpty());
}

TEST_F(DatabaseParser, TellsOfItsProgressWithEachFile) {
    device.profile("Shared", "a,T,r\n").profile("Fan", "agentName: Fan\nInclude: Shared\n");
    std::vector<std::size_t> heard;
    auto mfi = parser();
    mfi.progressIs([&](std::size_t files) { heard.push_back(files); });
    mfi.doInit();
    EXPECT_THAT(heard, ElementsAre(1, 2, 3, 4)); // P, Fan, Shared for it, Shared
    mfi.unDoInit();
    mfi.doInit();
    EXPECT_THAT(heard, ElementsAre(1, 2, 3, 4, 1, 2, 3, 4));
}

TEST_F(DatabaseParser, RecordsAQuestionThatHasNoAnswerButNotAsAFaultOfTheDevice) {
    auto mfi = parser();
    mfi.doInit();
    EXPECT_THAT(mfi.mountGroupPaths("nosuch"), IsEmpty());
    EXPECT_EQ(mfi.exceptions().size(), 1U);
    EXPECT_TRUE(mfi.device().faults.empty());
}

// --- operations of the other side ---

TEST_F(DatabaseParser, RefusesWhatOnlyAnAgentsParserDoes) {
    auto mfi = parser();
    Kelda::MountFileInfo& base = mfi;
    auto const text = [](auto action) -> std::string {
        try {
            action();
        } catch (Fen::NoImplementationException const& exception) {
            return exception.what();
        }
        return "nothing thrown";
    };
    std::string const perAgent = "Not Implemented: Per-Agent loading is supported for Agent-side "
                                 "parsing but not for Kelda-side";
    EXPECT_EQ(text([&] { base.addAgent("Fan", ""); }), perAgent);
    EXPECT_EQ(text([&] { base.profileSearcher(nullptr); }), perAgent + ".");
    EXPECT_EQ(text([&] { base.foundMountProfile("Fan"); }),
              "Per-agent profile loading is only supported for Agent-side parsing.");
    EXPECT_THAT(text([&] { base.setRootFlags("r"); }),
                testing::StartsWith("Not Implemented: Manually setting root flags is only"));
    EXPECT_THAT(text([&] { base.disableUnDoInit(); }),
                testing::StartsWith("Not Implemented: Disabling unDoInit is a feature for"));
}

// --- further folders, and the queries of every parser ---

TEST_F(DatabaseParser, ReadsTheExtraFoldersOfTheEnvironmentToo) {
    device.directory().write("more/preinit/Q", "c,T\n");
    device.directory().write("more/profiles/Led", "agentName: Led\nc,T,r\n");
    device.directory().write("more/profiles/DefaultMountGroup", "b,T,r\n");
    device.profile("Fan", "agentName: Fan\n").profile("DefaultMountGroup", "a,T,r\n");
    auto const more = (device.directory() / "more").string();
    support::EnvironmentVariable const preinits("KELDA_EXTRA_PREINIT_PATH",
                                                (more + "/preinit").c_str());
    support::EnvironmentVariable const extra("KELDA_EXTRA_PROFILE_PATH",
                                             (more + "/profiles").c_str());
    auto mfi = parser();
    EXPECT_THAT(profiles(mfi), ElementsAre("Fan", "Led", "DefaultMountGroup", "(no file)"));
    EXPECT_THAT(findings(mfi), IsEmpty());
    EXPECT_EQ(support::recordOf(mfi, "c"), "T r explicit");
    EXPECT_EQ(support::recordOf(mfi, "b"), "T r explicit");
    EXPECT_EQ(support::recordOf(mfi, "a"), support::noRecord);
    auto const& group = mfi.device().profiles[2];
    EXPECT_EQ(mfi.device().files[group.file].path(), more + "/profiles/DefaultMountGroup");
}

TEST_F(DatabaseParser, ReadsAProfileThatWasAddedFromBothFolders) {
    device.directory().write("more/Fan", "agentName: Fan\nb,T,r\n");
    device.profile("Fan", "agentName: Fan\na,T,r\n").profile("Led", "agentName: Led\n");
    support::EnvironmentVariable const extra("KELDA_EXTRA_PROFILE_PATH",
                                             (device.directory() / "more").c_str());
    auto mfi = parser();
    mfi.addProfile("Fan");
    EXPECT_THAT(profiles(mfi), ElementsAre("Fan", "Fan", "(no file)", "(no file)"));
    EXPECT_EQ(mfi.device().agents.size(), 1U);
}

TEST_F(DatabaseParser, FindsThatAFolderIsMissing) {
    DatabaseMountFileInfo mfi(device.preinitDir(), "/nonexistent");
    EXPECT_THAT(findings(mfi), ElementsAre(":-1: Cannot open directory /nonexistent"));
}

TEST_F(DatabaseParser, AnswersTheQueriesOfEveryParser) {
    device.profile("Shared", "b,T,w\n");
    device.profile("Fan", "agentName: Fan-%x\nMountGroup: g\ns/%x,T,rw\nInclude: Shared\n");
    device.profile("DefaultMountGroup", "a,T,r\n");
    auto mfi = parser();
    EXPECT_EQ(mfi.mountInfo("s/*").type, "T");
    EXPECT_TRUE(mfi.isExplicit("b"));
    EXPECT_EQ(mfi.getType("s/*"), "T");
    EXPECT_EQ(mfi.getPreinitAttr("s/%x"), "createOnMount");
    EXPECT_THAT(mfi.agentPaths("Fan"), UnorderedElementsAre("s/*", "b"));
    EXPECT_THAT(mfi.mountGroups(), UnorderedElementsAre("Fan::g", "*::default"));
    EXPECT_THAT(mfi.mountGroupPaths("Fan::g"), ElementsAre("b", "s/*"));
    EXPECT_THAT(mfi.profileFilePaths("Fan", true), ElementsAre("b", "s/*"));
    EXPECT_TRUE(mfi.foundMountProfile());
    EXPECT_THAT(mfi.exceptions(), IsEmpty());
}

} // namespace
