// What an observer is told of each kind of line and record, and in which order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/Diary.h"
#include "support/Thrown.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LoadObserver : public testing::Test {
  protected:
    // What a lenient parser tells of these events, or of all of them.
    std::vector<std::string> told(std::vector<std::string> const& events = {}) {
        auto const parser = device.lenient();
        return toldBy(*parser, events);
    }
    std::vector<std::string> toldBy(Kelda::MountFileInfo& parser,
                                    std::vector<std::string> const& events) {
        diary.clear();
        parser.loadObserverIs(&diary);
        parser.doInit();
        return events.empty() ? diary.lines() : diary.about(events);
    }

    support::CleanEnvironment environment;
    support::Device device;
    support::Diary diary{device.directory().string()};
};

TEST_F(LoadObserver, IsToldOfEverythingInTheOrderInWhichItIsMet) {
    device.preinit("P", "a/%x,T,createOnMount\n");
    device.profile("Fan", "agentName: Fan-%x\nMountGroup: g\n\na/%x,T,r\n");
    EXPECT_THAT(told(), ElementsAre("P:0: opened in 'preinit'",          //
                                    "P:1: preinit a/%x T createOnMount", //
                                    "P:1: closed",                       //
                                    "Fan:0: opened in 'profiles'",       //
                                    "Fan:1: token %x = *",               //
                                    "Fan:2: keyword MountGroup: in 'MountGroup:g'",
                                    "Fan:2: group g 99",                         //
                                    "Fan:4: used %x = *",                        //
                                    "Fan:4: mount a/%x,T,r = a/*,T",             //
                                    "Fan:4: record a/*: (none) -> T r explicit", //
                                    "Fan:4: closed"));
}

TEST_F(LoadObserver, IsToldOfAPreinitLineAsItIsRecorded) {
    device.preinit("P", "CONFIG: a/b/, T\n%cellPath/c,T,CREATEONSTANDBY\nd,T,\n# e,T\na/%x,T\n");
    EXPECT_THAT(told({"preinit"}), ElementsAre("P:1: preinit a/b T none CONFIG",
                                               "P:2: preinit cell/%cellId/c T createOnStandby"));
}

TEST_F(LoadObserver, IsToldOfAPathLineAsWrittenAndAsRecorded) {
    device.preinit("P", "a/b,T\ncell/%cellId/c,T\n");
    device.profile("Fan", "agentName: Fan\na/b/ , X , r w\n%cellPath/c,T,\n");
    EXPECT_THAT(told({"mount"}), ElementsAre("Fan:2: mount a/b,X,rw = a/b,T",
                                             "Fan:3: mount cell/%cellId/c,T, = cell/1/c,T"));
}

TEST_F(LoadObserver, IsToldOfAPathLineThatIsRefusedAsWritten) {
    device.profile("Fan", "agentName: Fan\nalias: %x = 1\na/%x, T, rw\n");
    EXPECT_THAT(told({"mount", "used", "record"}),
                ElementsAre("Fan:3: mount a/%x,T,rw = a/%x, refused"));
}

TEST_F(LoadObserver, IsToldThatAPathLineIsConditional) {
    device.preinit("P", "a,T\n");
    device.profile("Fan", "agentName: Fan\nCondition: x y\na,T,r\nb,U,r\nMountGroup: g\na,T,r\n");
    auto const agent = device.agent("Fan");
    EXPECT_THAT(toldBy(*agent, {"mount"}),
                ElementsAre("Fan:3: mount a,T,r = a,T conditional",
                            "Fan:4: mount b,U,r = b,U conditional", "Fan:6: mount a,T,r = a,T"));
}

TEST_F(LoadObserver, IsToldOfALineBeforeItsInvalidFlagsAreReported) {
    device.preinit("P", "a,T\n");
    device.profile("Fan", "agentName: Fan\na,T,x\n");
    EXPECT_THAT(told({"mount", "record"}), ElementsAre("Fan:2: mount a,T,x = a,T"));
}

TEST_F(LoadObserver, IsToldOfARecordBeforeAndAfterAMerge) {
    device.preinit("P", "a,T\n");
    device.profile("Fan", "agentName: Fan\na,T,r\n");
    device.profile("Led", "agentName: Led\na,T,wc\n");
    EXPECT_THAT(told({"record"}), ElementsAre("Fan:2: record a: (none) -> T r explicit",
                                              "Led:2: record a: T r explicit -> T rwc explicit"));
}

TEST_F(LoadObserver, IsNotToldOfARecordThatATypeInConflictLeavesAsItIs) {
    device.preinit("P", "a/1,T\na/%cellId,U\n");
    device.profile("Fan", "agentName: Fan\na/1,T,r\na/%cellId,U,w\n");
    EXPECT_THAT(told({"record"}), ElementsAre("Fan:2: record a/1: (none) -> T r explicit"));
    EXPECT_THAT(diary.about({"mount"}), testing::Contains("Fan:3: mount a/%cellId,U,w = a/1,U"));
}

TEST_F(LoadObserver, IsToldOfIntermediatePathsAndWhatTheyInherit) {
    device.preinit("P", "a/b/c,T\n");
    device.profile("Fan", "agentName: Fan\nactiveMount\nrootFlags: rw\na/b/c,T,w\n");
    auto const agent = device.agent("Fan");
    EXPECT_THAT(toldBy(*agent, {"record", "inherited"}),
                ElementsAre("Fan:4: record a/b/c: (none) -> T w explicit",
                            ": record a/b: (none) -> Fen::Dir wn intermediate",
                            ": record a: (none) -> Fen::Dir wn intermediate",
                            ": inherited a from '': wn -> wtn",
                            ": inherited a/b from 'a': wn -> wtn"));
}

TEST_F(LoadObserver, IsToldOfAnIntermediatePathThatIsLeftAsItIs) {
    device.preinit("P", "d,Fen::Dir\nd/a/b,T\n");
    device.profile("Fan", "agentName: Fan\nactiveMount\nd,Fen::Dir,r\nd/a/b,T,r\n");
    auto const agent = device.agent("Fan");
    EXPECT_THAT(toldBy(*agent, {"inherited"}), ElementsAre(": inherited d/a from 'd': ny -> ny"));
}

TEST_F(LoadObserver, IsToldOfMountsThatAreRecordedAtRunTime) {
    device.profile("Fan", "agentName: Fan\n");
    auto const agent = device.agent("Fan");
    toldBy(*agent, {});
    diary.clear();
    agent->recordMountArgsExternal("x/y", support::mount("T", "r"), true, false);
    agent->recordMountArgsExternal("x/y", support::mount("T", "w"), false, false);
    EXPECT_THAT(diary.lines(), ElementsAre(": record x/y: (none) -> T r explicit",
                                           ": record x/y: T r explicit -> T rw explicit"));
}

TEST_F(LoadObserver, IsToldOfTheTokensOfAnAgentsName) {
    device.profile("Port", "agentName: Port-%card-%name$\n");
    auto const agent = device.agent("Port-3-Ethernet-1");
    EXPECT_THAT(toldBy(*agent, {"token"}),
                ElementsAre("Port:1: token %card = 3", "Port:1: token %name = Ethernet-1"));
}

TEST_F(LoadObserver, IsToldOfAnAliasWithItsExpressionAndItsValue) {
    device.profile("Fan", "agentName: Fan-%x\n"
                          "alias: %List = %x , b\n"
                          "ALIAS: %list = %List ? yes : no\n"
                          "alias: %none = %nosuch\n");
    EXPECT_THAT(told({"alias", "used"}), ElementsAre("Fan:2: used %x = *",              //
                                                     "Fan:2: alias %List = %x,b = *-b", //
                                                     "Fan:3: used %list = *-b",         //
                                                     "Fan:3: alias %list = %List?yes:no = yes",
                                                     "Fan:4: alias %none = %nosuch = "));
}

TEST_F(LoadObserver, IsToldOfTheUseOfAliasesOfTheFileOnly) {
    device.preinit("P", "a/%x,T,createOnMount\n");
    device.profile("Fan", "agentName: Fan\nalias: %One = 1\n"
                          "a/%ONE,T,r\na/%cellId,T,r\na/%sysname,T,r\na/%nosuch,T,r\n"
                          "subAgent: S-%one\n");
    EXPECT_THAT(told({"used"}), ElementsAre("Fan:3: used %one = 1", "Fan:7: used %one = 1"));
}

TEST_F(LoadObserver, HearsThatTheAgentStringIsAnAliasOfTheFile) {
    device.preinit("P", "a/%x,T,createOnMount\n");
    device.profile("DefaultMountGroup", "a/%agentString,T,r\n");
    EXPECT_THAT(told({"used", "mount"}),
                ElementsAre("DefaultMountGroup:1: used %agentstring = *",
                            "DefaultMountGroup:1: mount a/%agentString,T,r = a/*,T"));
}

TEST_F(LoadObserver, IsToldOfEachKeywordAsTheLanguageSpellsIt) {
    device.profile("Fan", "agentName: Fan\nACTIVEmount\nmatch Active Name\nnodefaultmountgroup\n"
                          "SubAgent: S\nrootflags: r w\nConnectionFlags:S\nactiveMountToo\n");
    EXPECT_THAT(told({"keyword"}),
                ElementsAre("Fan:2: keyword activeMount in 'ACTIVEmount'",
                            "Fan:3: keyword matchActiveName in 'matchActiveName'",
                            "Fan:4: keyword noDefaultMountGroup in 'nodefaultmountgroup'",
                            "Fan:5: keyword subAgent: in 'SubAgent:S'",
                            "Fan:6: keyword rootFlags: in 'rootflags:rw'",
                            "Fan:7: keyword connectionFlags: in 'ConnectionFlags:S'"));
}

TEST_F(LoadObserver, IsToldOfConditionsWithoutTheirBlanks) {
    device.profile("Fan", "agentName: Fan\nCondition: a b\nConditionBlocker: c d\n");
    EXPECT_THAT(told({"keyword"}),
                ElementsAre("Fan:2: keyword Condition: in 'Condition:ab'",
                            "Fan:3: keyword ConditionBlocker: in 'ConditionBlocker:cd'"));
}

TEST_F(LoadObserver, IsToldOfAGroupBeforeItsFaults) {
    device.profile("Fan",
                   "agentName: Fan\nMountGroup: g, 5\nMountGroup: all, 300\nMountGroup:,0\n");
    EXPECT_THAT(told({"group"}),
                ElementsAre("Fan:2: group g 5", "Fan:3: group all 44", "Fan:4: group  0"));
}

TEST_F(LoadObserver, IsToldOfAnIncludeAroundWhatItBrings) {
    device.preinit("P", "a,T\n");
    device.profile("Shared", "a,T,r\n");
    device.profile("Fan", "agentName: Fan\nInclude: Shared\n");
    EXPECT_THAT(told({"keyword", "included", "mount"}),
                ElementsAre("Fan:2: keyword Include: in 'Include:Shared'",
                            "Fan:2>Shared:1: mount a,T,r = a,T", //
                            "Fan:2: included Shared 1"));
}

TEST_F(LoadObserver, IsToldOfAnIncludeThatFindsNothing) {
    device.profile("Fan", "agentName: Fan\nInclude: nosuch\nInclude: nosuch*\n");
    EXPECT_THAT(told({"included"}),
                ElementsAre("Fan:2: included nosuch 0", "Fan:3: included nosuch* 0"));
}

TEST_F(LoadObserver, IsToldOfThePathsOfTheProfileThatNoFileHolds) {
    device.preinit("P", "CONFIG:conf/x,T\n");
    device.profile("Fan", "agentName: Fan\nCondition: a\nInclude: ConfigMountProfile\n");
    EXPECT_THAT(told({"opened", "mount", "record", "included"}),
                ElementsAre("P:0: opened in 'preinit'", "Fan:0: opened in 'profiles'",
                            "Fan:3: mount conf/x,T,wi = conf/x,T conditional",
                            "Fan:3: record conf/x: (none) -> T wi explicit",
                            "Fan:3: included ConfigMountProfile 1"));
}

TEST_F(LoadObserver, IsToldNothingOfLinesThatAreNoneOfTheLanguage) {
    device.preinit("P", "a\nb,T,foo\n# c,T\n");
    device.profile("Fan", "agentName: Fan\nfoo\n# a,T,r\nagentName: Fan\n");
    EXPECT_THAT(told(), ElementsAre("P:0: opened in 'preinit'", "P:3: closed",
                                    "Fan:0: opened in 'profiles'", "Fan:4: closed"));
}

TEST_F(LoadObserver, IsToldOfEveryFileThatAnAgentLooksInto) {
    device.profile("Fan", "# a comment\n\nagentName: Fan\n");
    device.profile("Led", "agentName: Led\nrootFlags: r\n");
    device.profile("None", "");
    auto const agent = device.agent("Led");
    EXPECT_THAT(toldBy(*agent, {}),
                ElementsAre("Fan:0: opened in 'profiles'", "Fan:3: closed",
                            "Led:0: opened in 'profiles'",
                            "Led:2: keyword rootFlags: in 'rootFlags:r'", "Led:2: closed",
                            "None:0: opened in 'profiles'", "None:0: closed"));
}

TEST_F(LoadObserver, IsToldWhyAFileIsPassedOver) {
    support::EnvironmentVariable const chroot("Q9_CHROOT", "/somewhere");
    device.profile("Fan~", "").profile("Fan;1", "").profile("Fan;1~", "").profile("Secret", "");
    device.preinit("Old~", "");
    auto const parser = device.lenient();
    parser->exclusionRegexIs("^Sec");
    EXPECT_THAT(
        toldBy(*parser, {"skipped"}),
        ElementsAre(": skipped preinit/Old~ for backup", ": skipped profiles/Fan;1 for semicolon",
                    ": skipped profiles/Fan;1~ for semicolon", ": skipped profiles/Fan~ for backup",
                    ": skipped profiles/Secret for exclusion"));
}

TEST_F(LoadObserver, IsToldOfAFilePassedOverWheneverItIsLookedFor) {
    device.profile("Fan", "agentName: Fan\nInclude: Shared*\nInclude: Shared~\n");
    device.profile("Shared~", "");
    EXPECT_THAT(told({"skipped"}), testing::Each(": skipped profiles/Shared~ for backup"));
    EXPECT_EQ(diary.about({"skipped"}).size(), 3U);
}

TEST_F(LoadObserver, IsNotToldOfASemicolonThatMakesNoDifference) {
    device.profile("Fan;1", "");
    EXPECT_THAT(told({"skipped", "opened"}), ElementsAre("Fan;1:0: opened in 'profiles'"));
}

} // namespace
