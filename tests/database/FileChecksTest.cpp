// Files that no agent reads, and includes that read no file.
#include "CheckedDevice.h"

namespace {

using KeldaDatabase::includesThatMatchNothing;
using KeldaDatabase::orphanFiles;
using support::CheckedDevice;
using support::FileTexts;
using testing::ElementsAre;
using testing::IsEmpty;

std::string nobodyReads(std::string const& file) {
    return fmt::format(
        "profiles/{}:1 no agent reads '{}': it names no agent, and no profile includes it", file,
        file);
}

TEST(OrphanFiles, AreThoseThatNoAgentReads) {
    support::expectFindings(orphanFiles,
                            {{"neither a profile nor included",
                              {{"profiles/A", "agentName:A\n"}, {"profiles/shared", "a,T,r\n"}},
                              {nobodyReads("shared")}},
                             {"an empty file", {{"profiles/empty", ""}}, {nobodyReads("empty")}},
                             {"a file of which a default group's name is the beginning",
                              {{"profiles/DefaultMountGroups", "a,T,r\n"}},
                              {nobodyReads("DefaultMountGroups")}},
                             {"a file in the place of the one that no file holds",
                              {{"profiles/A", "agentName:A\nInclude:ConfigMountProfile\n"},
                               {"profiles/ConfigMountProfile", "a,T,r\n"}},
                              {nobodyReads("ConfigMountProfile")}}});
}

TEST(OrphanFiles, AreNotThoseThatAreRead) {
    support::expectFindings(
        orphanFiles, {{"included by name",
                       {{"profiles/A", "agentName:A\nInclude:s\n"}, {"profiles/s", "a,T,r\n"}},
                       {}},
                      {"included by pattern",
                       {{"profiles/A", "agentName:A\nInclude:s*\n"}, {"profiles/s1", "a,T,r\n"}},
                       {}},
                      {"default groups, that of a standby, too",
                       {{"profiles/DefaultMountGroup", "a,T,r\n"},
                        {"profiles/DefaultMountGroupPerAgent", "a,T,r\n"},
                        {"profiles/DefaultMountGroupStandby", "a,T,r\n"}},
                       {}},
                      {"preinit files", {{"preinit/P", "a,T\n"}}, {}},
                      {"a folder", {{"profiles/folder/file", "a,T,r\n"}}, {}},
                      {"files that are passed over", {{"profiles/backup~", "a,T,r\n"}}, {}}});
}

TEST(OrphanFiles, TellWhereAnAgentNameStandsInVain) {
    CheckedDevice device(FileTexts{{"profiles/Fan", "  # indented\n\nAGENTNAME : Fan\na,T,r\n"}});
    auto const findings = orphanFiles(device.loaded());
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].hint,
              "above the agent name only empty lines and comments may stand, and such a comment "
              "begins at the very left");
    EXPECT_THAT(device.found(orphanFiles),
                ElementsAre(nobodyReads("Fan") + " [profiles/Fan:3 an agent is named here]"));
}

TEST(OrphanFiles, DoNotShowWhereOnlySomeProfilesAreLoaded) {
    CheckedDevice device({{"profiles/A", "agentName:A\n"}, {"profiles/shared", "a,T,r\n"}});
    device.parser().addProfile("A");
    EXPECT_THAT(device.found(orphanFiles), IsEmpty());
}

TEST(OrphanFiles, AreNotTheDefaultGroupsThatAreLeftOut) {
    CheckedDevice device(FileTexts{{"profiles/DefaultMountGroup", "a,T,r\n"}});
    device.parser().setForceNoDefaultMountGroup();
    EXPECT_THAT(device.found(orphanFiles), IsEmpty());
}

TEST(IncludesThatMatchNothing, HavePatternsThatNoFileMatches) {
    support::expectFindings(
        includesThatMatchNothing,
        {{"each kind of pattern",
          {{"profiles/A", "agentName:A\nInclude: x*\nInclude:x?\nInclude:[x]y\n"}},
          {"profiles/A:2 no file matches 'x*'", "profiles/A:3 no file matches 'x?'",
           "profiles/A:4 no file matches '[x]y'"}},
         {"files that are passed over do not count",
          {{"profiles/A", "agentName:A\nInclude:x*\n"}, {"profiles/x~", "a,T,r\n"}},
          {"profiles/A:2 no file matches 'x*'"}},
         {"a name that no file has is a fault already",
          {{"profiles/A", "agentName:A\nInclude:x\n"}},
          {}},
         {"a pattern with a match",
          {{"profiles/A", "agentName:A\nInclude:x*\n"}, {"profiles/x1", "# nothing\n"}},
          {}},
         {"an include that may not stand where it does is a fault already",
          {{"profiles/A", "agentName:A\nInclude:x*\n"}, {"profiles/x1", "Include:y*\n"}},
          {}}});
}

} // namespace
