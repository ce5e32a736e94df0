// What is written down while a device is loaded: files, profiles, declarations, mounts, aliases,
// groups, includes and keywords, each with its place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <KeldaUtil/MountFlags.h>

#include "database/DatabaseMountFileInfo.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/PreinitMaps.h"

namespace {

using KeldaDatabase::DatabaseMountFileInfo;
using KeldaDatabase::Device;
using KeldaDatabase::none;
using testing::ElementsAre;
using testing::IsEmpty;

class LoadRecorder : public testing::Test {
  protected:
    LoadRecorder() { device.preinit("P", "a,T\nb,T\ns/%x,T,createOnMount\n"); }

    Device const& loaded() {
        mfi.emplace(device.preinitDir(), device.profileDir());
        return mfi->device();
    }
    // "FILE:LINE", and behind ">" for an included file the place of the Include line.
    std::string at(KeldaDatabase::Place const& place) {
        auto const& d = mfi->device();
        auto const text = d.files.at(place.file).name + ":" + std::to_string(place.line);
        return place.include == none ? text : text + " < " + at(d.includes.at(place.include).place);
    }
    std::string profile(KeldaDatabase::ProfileId id) {
        return id == none ? "none" : mfi->device().files.at(mfi->device().profiles[id].file).name;
    }
    // One text for each element of a list.
    template <class List, class Text>
    static std::vector<std::string> texts(List const& list, Text text) {
        std::vector<std::string> all;
        for (auto const& element : list)
            all.push_back(text(element));
        return all;
    }
    static std::string text(Rook::String const& value) { return std::string(value.view()); }

    std::vector<std::string> mounts() {
        return texts(loaded().mounts, [&](KeldaDatabase::Mount const& mount) {
            return at(mount.place) + ": " + text(mount.path) + "," + text(mount.type) + "," +
                   text(KeldaUtil::mountTableFlagsToString(mount.flags)) + " of " +
                   profile(mount.profile) +
                   (mount.group == none ? "" : " in " + mfi->device().groups[mount.group].name) +
                   (mount.isRefused ? " refused" : "") +
                   (mount.isConditional ? " conditional" : "") +
                   (mount.typeDiffers ? " (other type)" : "");
        });
    }

    support::CleanEnvironment environment;
    support::Device device;
    std::optional<DatabaseMountFileInfo> mfi;
};

TEST_F(LoadRecorder, WritesDownEachFileOnceAndWhatItIs) {
    device.profile("Shared", "a,T,r\n").profile("Orphan", "a,T,r\n");
    device.profile("Fan", "agentName: Fan\nInclude: Shared\nInclude: Sh*\n");
    device.profile("DefaultMountGroup", "Include: Shared\n");
    auto const names = texts(loaded().files, [](KeldaDatabase::File const& file) {
        return file.name + (file.family == KeldaDatabase::FileFamily::preinit ? " preinit" : "") +
               " " + std::to_string(file.includes) + (file.hasAgentName ? " agent" : "") +
               (file.isDefaultGroup ? " default" : "");
    });
    EXPECT_THAT(names, ElementsAre("P preinit 0", "DefaultMountGroup 0 default", "Fan 0 agent",
                                   "Shared 3", "Orphan 0"));
}

TEST_F(LoadRecorder, KeepsFilesOfTheSameNameInDifferentFoldersApart) {
    device.directory().write("more/Fan", "agentName: Fan\nb,T,r\n");
    device.directory().write("extra/P", "c,T\n");
    device.profile("Fan", "agentName: Fan\na,T,r\n");
    auto const extraFile = (device.directory() / "extra/P").string();
    support::EnvironmentVariable const profiles("KELDA_EXTRA_PROFILE_PATH",
                                                (device.directory() / "more").c_str());
    support::EnvironmentVariable const preinits("KELDA_EXTRA_PREINIT_PATH", extraFile.c_str());
    auto const paths = texts(loaded().files, [](auto const& file) { return file.path(); });
    EXPECT_THAT(paths,
                ElementsAre(device.preinitDir() + "/P", extraFile, device.profileDir() + "/Fan",
                            (device.directory() / "more/Fan").string()));
    EXPECT_EQ(loaded().files[1].directory, "");
}

TEST_F(LoadRecorder, WritesDownAFileThatIsPassedOverOnce) {
    device.profile("Shared~", "").profile("Fan", "agentName: Fan\nInclude: Sh*\nInclude: Sh*\n");
    auto const skipped = texts(loaded().skipped, [](KeldaDatabase::SkippedFile const& file) {
        return file.directory + "/" + file.name;
    });
    EXPECT_THAT(skipped, ElementsAre(device.profileDir() + "/Shared~"));
    EXPECT_EQ(loaded().skipped.front().reason, Kelda::SkipReason::backup);
}

TEST_F(LoadRecorder, WritesDownEachProfileWithItsAgentName) {
    device.profile("Fan", "# why\n\nagentName: Fan-%x-%y$\nnoDefaultMountGroup\n");
    device.profile("Led", "agentName: Led\nactiveMount\nmatchActiveName\n");
    device.profile("DefaultMountGroup", "a,T,r\n");
    auto const profiles = texts(loaded().profiles, [](KeldaDatabase::Profile const& profile) {
        return text(profile.agentName) + "/" + text(profile.agentKey) + ":" +
               std::to_string(profile.agentNameLine) + (profile.hasTokens() ? " tokens" : "") +
               (profile.isDefaultGroup() ? " default" : "") +
               (profile.saysMatchActiveName ? " match" : "") +
               (profile.saysNoDefaultMountGroup ? " alone" : "") +
               (profile.file == none ? " (no file)" : "");
    });
    EXPECT_THAT(profiles, ElementsAre("Fan-%x-%y$/Fan:3 tokens alone", "Led/Led:1 match",
                                      "/:-1 default", "/:-1 default (no file)"));
}

TEST_F(LoadRecorder, KnowsTheKeywordMatchActiveNameAsAnAgentLooksForIt) {
    device.profile("1", "agentName: A\nactiveMount\nmatch ActiveName\n");
    device.profile("2", "agentName: A\nactiveMount\n  MATCHACTIVENAME # why\n");
    device.profile("3", "agentName: A\nactiveMount\nmatchActiveNameToo\n");
    device.profile("4", "agentName: A\nactiveMount\n# matchActiveName\n");
    device.profile("5", "agentName: A\nactiveMount\nmatchActive\\\nName\n");
    auto const says = texts(loaded().profiles, [](KeldaDatabase::Profile const& profile) {
        return std::string(profile.saysMatchActiveName ? "yes" : "no");
    });
    EXPECT_THAT(says, ElementsAre("no", "yes", "yes", "no", "no", "no", "no"));
}

TEST_F(LoadRecorder, WritesDownPreinitLines) {
    device.preinit("Q", "\nCONFIG: c/d/, T\n%cellPath/e,U,createOnStandby\nf\n");
    auto const lines = texts(loaded().preinits, [&](KeldaDatabase::PreinitDeclaration const& line) {
        return at(line.place) + ": " + text(line.path) + "," + text(line.type) + "," +
               support::nameOf(line.attr) + (line.isConfig ? " CONFIG" : "");
    });
    EXPECT_THAT(lines,
                ElementsAre("P:1: a,T,none", "P:2: b,T,none", "P:3: s/%x,T,createOnMount",
                            "Q:2: c/d,T,none CONFIG", "Q:3: cell/%cellId/e,U,createOnStandby"));
}

TEST_F(LoadRecorder, WritesDownMountsWithTheirGroupsAndProfiles) {
    device.profile("Fan", "agentName: Fan-%x\ns/%x,T,rw\nMountGroup: g\na,U,r\nnosuch,T,r\n"
                          "b,T,cD\n");
    device.profile("Led", "agentName: Led\nCondition: x\nnosuch,V,r\nMountGroup: h\na,T,\n");
    EXPECT_THAT(mounts(),
                ElementsAre("Fan:2: s/*,T,rw of Fan", "Fan:4: a,T,r of Fan in g (other type)",
                            "Fan:5: nosuch,,r of Fan in g refused",
                            "Fan:6: b,T,cD of Fan in g refused",
                            "Led:3: nosuch,V,r of Led conditional", "Led:5: a,T, of Led in h"));
}

TEST_F(LoadRecorder, WritesDownWhereIncludedLinesComeFrom) {
    device.profile("s.1", "a,T,r\n").profile("s.2", "activeMount\nb,T,r\n");
    device.profile("Fan", "agentName: Fan\nMountGroup: g\nInclude: s.*\na,T,w\n");
    device.profile("DefaultMountGroup", "Include: s.1\n");
    EXPECT_THAT(mounts(), ElementsAre("s.1:1 < Fan:3: a,T,r of Fan in g",
                                      "s.2:2 < Fan:3: b,T,r of Fan in g", //
                                      "Fan:4: a,T,w of Fan in g",
                                      "s.1:1 < DefaultMountGroup:1: a,T,r of DefaultMountGroup"));
    EXPECT_EQ(loaded().groups.front().mounts, 3U);
    EXPECT_EQ(at(loaded().keywords.at(2).place), "s.2:1 < Fan:3");
}

TEST_F(LoadRecorder, WritesDownIncludesAndTheFilesThatTheyFound) {
    device.profile("s.1", "a,T,r\n").profile("s.2", "");
    device.profile("Fan", "agentName: Fan\nInclude: s.*\nInclude: nosuch*\nInclude: s.2\n"
                          "Include: ConfigMountProfile\n");
    auto const includes = texts(loaded().includes, [&](KeldaDatabase::Include const& include) {
        auto line =
            at(include.place) + ": " + include.pattern + " " + std::to_string(include.loaded);
        for (auto const file : include.files)
            line += " " + mfi->device().files.at(file).name;
        return line;
    });
    EXPECT_THAT(includes, ElementsAre("Fan:2: s.* 2 s.1 s.2", "Fan:3: nosuch* 0",
                                      "Fan:4: s.2 1 s.2", "Fan:5: ConfigMountProfile 1"));
}

TEST_F(LoadRecorder, WritesDownThePathsOfConfigMountProfileAtTheIncludeLine) {
    device.preinit("Q", "CONFIG:conf/x,T\n");
    device.profile("Fan", "agentName: Fan\n\nInclude: ConfigMountProfile\n");
    EXPECT_THAT(mounts(), ElementsAre("Fan:3: conf/x,T,wi of Fan"));
}

TEST_F(LoadRecorder, CountsTheUsesOfEachDefinitionOfAnAlias) {
    device.profile("Fan", "agentName: Fan-%x\nalias: %A = %x , 1\ns/%a,T,r\ns/%A,T,r\n"
                          "alias: %a = 2\nalias: %b = %a\nalias: %c = 3\ns/%nosuch,T,r\n");
    device.profile("Led", "agentName: Led\nalias: %a = 4\n");
    auto const aliases = texts(loaded().aliases, [&](KeldaDatabase::Alias const& alias) {
        return at(alias.place) + ": " + text(alias.name) + " = " + alias.expression + " = " +
               text(alias.value) + ", used " + std::to_string(alias.uses) +
               (alias.isToken ? " (token)" : "");
    });
    EXPECT_THAT(aliases,
                ElementsAre("Fan:1: %x =  = *, used 1 (token)", "Fan:2: %A = %x,1 = *-1, used 2",
                            "Fan:5: %a = 2 = 2, used 1", "Fan:6: %b = %a = 2, used 0",
                            "Fan:7: %c = 3 = 3, used 0", "Led:2: %a = 4 = 4, used 0"));
}

TEST_F(LoadRecorder, CountsNoUseInAnotherProfile) {
    device.profile("Fan", "agentName: Fan\nalias: %agentString = x\n");
    device.profile("Led", "agentName: Led\ns/%agentString,T,r\n");
    ASSERT_EQ(loaded().aliases.size(), 1U);
    EXPECT_EQ(mfi->device().aliases.front().uses, 0U);
}

TEST_F(LoadRecorder, WritesDownGroupsAndTheirMounts) {
    device.profile("Fan", "agentName: Fan\nMountGroup: g, 5\na,T,r\nnosuch,T,r\nMountGroup: g\n");
    auto const groups = texts(loaded().groups, [&](KeldaDatabase::Group const& group) {
        return at(group.place) + ": " + group.name + " " + std::to_string(group.priority) + " " +
               std::to_string(group.mounts);
    });
    EXPECT_THAT(groups, ElementsAre("Fan:2: g 5 2", "Fan:5: g 99 0"));
}

TEST_F(LoadRecorder, GivesEachProfileTheRangesOfWhatItBrought) {
    device.profile("Shared", "a,T,r\n");
    device.profile("Fan", "agentName: Fan-%x\nalias: %y = 1\nMountGroup: g\nInclude: Shared\n");
    device.profile("Led", "agentName: Led\nb,T,r\nactiveMount\n");
    device.profile("DefaultMountGroup", "a,T,r\n");
    auto const ranges = texts(loaded().profiles, [](KeldaDatabase::Profile const& p) {
        std::string line;
        for (auto const& range : {p.mounts, p.aliases, p.groups, p.includes, p.keywords})
            line += std::to_string(range.begin) + "-" + std::to_string(range.end) + " ";
        return line;
    });
    EXPECT_THAT(ranges, ElementsAre("0-1 0-2 0-1 0-1 0-2 ", "1-2 2-2 1-1 1-1 2-3 ",
                                    "2-3 2-2 1-1 1-1 3-3 ", "3-3 2-2 1-1 1-1 3-3 "));
}

TEST_F(LoadRecorder, GivesEverythingAMomentInTheOrderInWhichItIsMet) {
    device.profile("Fan", "agentName: Fan\nactiveMount\na,T,r\nfoo\nb,T,r\nrootFlags: r\n");
    auto const& d = loaded();
    EXPECT_LT(d.keywords[0].moment, d.mounts[0].moment);
    EXPECT_LT(d.mounts[0].moment, d.faults[0].moment);
    EXPECT_LT(d.faults[0].moment, d.mounts[1].moment);
    EXPECT_LT(d.mounts[1].moment, d.keywords[1].moment);
}

TEST_F(LoadRecorder, WritesDownFaultsWithTheirProfiles) {
    device.preinit("Q", "foo\n").profile("Shared", "bar\n");
    device.profile("Fan", "agentName: Fan\nInclude: Shared\nfoo\n");
    auto const faults = texts(loaded().faults, [&](KeldaDatabase::Fault const& fault) {
        return at(fault.place) + ": " + text(fault.exception.msg).substr(0, 20) + " of " +
               profile(fault.profile);
    });
    EXPECT_THAT(faults, ElementsAre("Q:1: preinit syntax error of none",
                                    "Shared:1 < Fan:2: Syntax error in incl of Fan",
                                    "Fan:3: syntax error: 'foo' of Fan"));
}

TEST_F(LoadRecorder, KnowsNothingOfWhatIsRecordedAfterLoading) {
    device.profile("Fan", "agentName: Fan\na,T,r\n");
    loaded();
    mfi->recordMountArgsExternal("x", {"T", KeldaUtil::parseMountTableFlags("r")}, true, false);
    EXPECT_EQ(mfi->device().mounts.size(), 1U);
    EXPECT_THAT(mfi->device().faults, IsEmpty());
}

} // namespace
