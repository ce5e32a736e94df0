// Where an observer is told that things stand: files and lines, also in files that others include,
// behind lines that are continued or taken in pieces, and in further folders.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/Diary.h"
#include "support/Thrown.h"

namespace {

using testing::ElementsAre;

class LoadObserverPlaces : public testing::Test {
  protected:
    LoadObserverPlaces() { device.preinit("P", "a,T\nb,T\n"); }

    std::vector<std::string> told(std::vector<std::string> const& events) {
        auto const parser = device.lenient();
        parser->loadObserverIs(&diary);
        parser->doInit();
        return diary.about(events);
    }
    std::string path(std::string const& name) const { return (device.directory() / name).string(); }

    support::CleanEnvironment environment;
    support::Device device;
    support::Diary diary{device.directory().string()};
};

TEST_F(LoadObserverPlaces, OfAnIncludedFileNameTheLineThatLedThere) {
    device.profile("Shared", "\na,T,r\nactiveMount\n");
    device.profile("Fan", "agentName: Fan\n\nInclude: Shared\nb,T,r\n");
    EXPECT_THAT(
        told({"opened", "closed", "mount", "record", "keyword"}),
        ElementsAre("P:0: opened in 'preinit'", "P:2: closed", //
                    "Fan:0: opened in 'profiles'", "Fan:3: keyword Include: in 'Include:Shared'",
                    "Fan:3>Shared:0: opened in 'profiles'", "Fan:3>Shared:2: mount a,T,r = a,T",
                    "Fan:3>Shared:2: record a: (none) -> T r explicit",
                    "Fan:3>Shared:3: keyword activeMount in 'activeMount'",
                    "Fan:3>Shared:3: closed", //
                    "Fan:4: mount b,T,r = b,T",
                    "Fan:4: record b: (none) -> T r explicit", //
                    "Fan:4: closed",                           //
                    "Shared:0: opened in 'profiles'", "Shared:2: closed"));
}

TEST_F(LoadObserverPlaces, OfFilesIncludedByPatternNameEachFile) {
    device.profile("s.1", "a,T,r\n").profile("s.2", "\nb,T,r\n").profile("s.3~", "a,T,r\n");
    device.profile("Fan", "agentName: Fan\nInclude: s.*\n");
    EXPECT_THAT(told({"mount", "included"}),
                ElementsAre("Fan:2>s.1:1: mount a,T,r = a,T", "Fan:2>s.2:2: mount b,T,r = b,T",
                            "Fan:2: included s.* 2"));
}

TEST_F(LoadObserverPlaces, OfAnIncludeInADefaultGroupNameTheDefaultGroup) {
    device.profile("Shared", "a,T,r\n");
    device.profile("DefaultMountGroup", "\nInclude: Shared\n");
    EXPECT_THAT(told({"mount"}), ElementsAre("DefaultMountGroup:2>Shared:1: mount a,T,r = a,T"));
}

TEST_F(LoadObserverPlaces, OfAContinuedLineIsItsFirstPiece) {
    device.profile("Fan", "agentName: Fan\na,\\\nT,\\\nr\nb,T,r\nMount\\\nGroup: g\n");
    EXPECT_THAT(
        told({"mount", "group"}),
        ElementsAre("Fan:2: mount a,T,r = a,T", "Fan:5: mount b,T,r = b,T", "Fan:6: group g 99"));
}

TEST_F(LoadObserverPlaces, CountEachPieceOfALineThatIsTooLong) {
    device.profile("Fan", "agentName: Fan\n# " + std::string(3000, '#') + "\na,T,r\n");
    EXPECT_THAT(told({"mount"}), ElementsAre("Fan:5: mount a,T,r = a,T"));
}

TEST_F(LoadObserverPlaces, OfPreinitLinesAreCountedLikewise) {
    device.preinit("Q", "# " + std::string(1500, '#') + "\nc,\\\nT\n\nd,T");
    EXPECT_THAT(told({"preinit"}), ElementsAre("P:1: preinit a T none", "P:2: preinit b T none",
                                               "Q:3: preinit c T none", "Q:6: preinit d T none"));
}

TEST_F(LoadObserverPlaces, AreTheSameWithTheLineEndsOfAnotherSystem) {
    device.profile("Fan", "agentName: Fan\r\n\r\na,T,r\r\n");
    EXPECT_THAT(told({"mount", "closed"}),
                ElementsAre("P:2: closed", "Fan:3: mount a,T,r = a,T", "Fan:3: closed"));
}

TEST_F(LoadObserverPlaces, OfAnExtraPreinitFileAreItsPathAndNoDirectory) {
    device.directory().write("more/Q", "c,T\n");
    device.directory().write("folder/R", "d,T\n");
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH",
                                             (path("more/Q") + ":" + path("folder") + "/").c_str());
    EXPECT_THAT(told({"opened", "preinit"}),
                ElementsAre("P:0: opened in 'preinit'", "P:1: preinit a T none",
                            "P:2: preinit b T none", "more/Q:0: opened in ''",
                            "more/Q:1: preinit c T none", "R:0: opened in 'folder'",
                            "R:1: preinit d T none"));
}

TEST_F(LoadObserverPlaces, OfTheExtraProfileFolderNameThatDirectory) {
    device.directory().write("more/Shared", "b,T,r\n");
    device.directory().write("more/Led", "agentName: Led\na,T,r\n");
    device.profile("Shared", "a,T,r\n");
    device.profile("Fan", "agentName: Fan\nInclude: Shared\n");
    support::EnvironmentVariable const extra("KELDA_EXTRA_PROFILE_PATH", path("more").c_str());
    EXPECT_THAT(told({"opened", "mount", "included"}),
                ElementsAre("P:0: opened in 'preinit'", "Fan:0: opened in 'profiles'",
                            "Fan:2>Shared:0: opened in 'profiles'",
                            "Fan:2>Shared:1: mount a,T,r = a,T", "Fan:2>Shared:0: opened in 'more'",
                            "Fan:2>Shared:1: mount b,T,r = b,T", "Fan:2: included Shared 2",
                            "Shared:0: opened in 'profiles'", "Led:0: opened in 'more'",
                            "Led:2: mount a,T,r = a,T", "Shared:0: opened in 'more'"));
}

TEST_F(LoadObserverPlaces, AreTheSameOnTheStrictSide) {
    device.profile("Shared", "a,T,r\n");
    device.profile("Fan", "agentName: Fan-%x\n\nInclude: Shared\n");
    auto const agent = device.agent("Fan-3");
    agent->loadObserverIs(&diary);
    agent->doInit();
    EXPECT_THAT(diary.about({"token", "mount", "included"}),
                ElementsAre("Fan:1: token %x = 3", "Fan:3>Shared:1: mount a,T,r = a,T",
                            "Fan:3: included Shared 1"));
}

TEST_F(LoadObserverPlaces, OfAFaultAreToldUpToIt) {
    device.profile("Fan", "agentName: Fan\na,T,r\nfoo\nb,T,r\n");
    auto const agent = device.agent("Fan");
    agent->loadObserverIs(&diary);
    EXPECT_EQ(support::thrownText([&] { agent->doInit(); }),
              support::faultIn("Fan", 3, "syntax error: 'foo'"));
    EXPECT_THAT(diary.about({"mount"}), ElementsAre("Fan:2: mount a,T,r = a,T"));
}

} // namespace
