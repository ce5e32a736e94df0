// From faults to findings: each fault once, at the line that has to be changed, with the agents
// that meet it, the include lines that led there and the lines it is in conflict with.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "database/DatabaseMountFileInfo.h"
#include "database/findings/SourceText.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"

namespace {

using KeldaDatabase::DatabaseMountFileInfo;
using KeldaDatabase::Finding;
using testing::ElementsAre;
using testing::IsEmpty;

class FaultFindings : public testing::Test {
  protected:
    FaultFindings() {
        device.preinit("P", "a,T\nb,T\nm/1,T\nm/%x,U,createOnMount\n"
                            "m/1/b,T\nd,Fen::Dir\n");
    }

    // Loads the device.
    std::vector<Finding> const& findings() {
        mfi.emplace(device.preinitDir(), device.profileDir());
        return mfi->findings();
    }
    // "FILE:LINE: RULE", lines counted as an editor does.
    std::vector<std::string> found() {
        std::vector<std::string> texts;
        for (auto const& finding : findings())
            texts.push_back(at(finding.place) + ": " + std::string(ruleOf(finding.rule).name));
        return texts;
    }
    std::string at(KeldaDatabase::Place const& place) {
        if (!place.isKnown())
            return "nowhere";
        auto const& file = mfi->device().files[place.file];
        return file.name + ":" +
               std::to_string(
                   KeldaDatabase::SourceText::ofFile(file.path()).editorLine(place.line));
    }
    std::vector<std::string> related(Finding const& finding) {
        std::vector<std::string> texts;
        for (auto const& [place, text] : finding.related)
            texts.push_back(at(place) + ": " + text);
        return texts;
    }
    std::vector<std::string> includes(Finding const& finding) {
        std::vector<std::string> texts;
        for (auto const include : finding.includes)
            texts.push_back(at(mfi->device().includes[include].place));
        return texts;
    }
    // What of the line the finding is about.
    std::string subject(Finding const& finding) {
        auto const text = KeldaDatabase::SourceText::ofFile(mfi->device().pathOf(finding.place));
        auto const spot = text.spotOf(finding.place.line, finding.subject);
        return std::string(text.line(spot.line))
            .substr(static_cast<std::size_t>(spot.column - 1),
                    static_cast<std::size_t>(spot.width));
    }

    support::CleanEnvironment environment;
    support::Device device;
    std::optional<DatabaseMountFileInfo> mfi;
};

// --- each fault once ---

TEST_F(FaultFindings, AFaultOfAnIncludedFileIsOneFindingHoweverManyProfilesIncludeIt) {
    device.profile("Shared", "a,T,r\na,T,x\n");
    device.profile("Fan", "agentName: Fan-%x\nInclude: Shared\n");
    device.profile("Led", "agentName: Led\n\nInclude: Sh*\n");
    device.profile("LedToo", "agentName: Led\nInclude: Shared\n");
    EXPECT_THAT(found(), ElementsAre("Shared:2: flag-unknown"));
    auto const& finding = findings().front();
    EXPECT_THAT(includes(finding), ElementsAre("Fan:2", "Led:3", "LedToo:2"));
    EXPECT_THAT(finding.agents, ElementsAre("Fan-%x", "Led"));
    EXPECT_EQ(finding.place.include, finding.includes.front());
}

TEST_F(FaultFindings, AFaultThatADefaultGroupMeetsTooConcernsAllAgents) {
    device.profile("Shared", "a,T,x\n").profile("Fan", "agentName: Fan\nInclude: Shared\n");
    device.profile("Led", "agentName: Led\n").profile("DefaultMountGroup", "Include: Shared\n");
    EXPECT_THAT(found(), ElementsAre("Shared:1: flag-unknown"));
    EXPECT_THAT(findings().front().agents, IsEmpty());
    EXPECT_THAT(includes(findings().front()), ElementsAre("Fan:2", "DefaultMountGroup:1"));
}

TEST_F(FaultFindings, ALineThatIsTooLongIsOneFindingWithAllThatIncludeIt) {
    device.profile("Shared", "a,T,r" + std::string(1100, ' ') + "foo\nb,T,x\n");
    device.profile("Fan", "agentName: Fan\nInclude: Shared\n");
    device.profile("Led", "agentName: Led\nInclude: Shared\n");
    EXPECT_THAT(found(), ElementsAre("Shared:1: line-too-long", "Shared:2: flag-unknown"));
    EXPECT_THAT(includes(findings()[0]), ElementsAre("Fan:2", "Led:2"));
    EXPECT_THAT(findings()[0].agents, ElementsAre("Fan", "Led"));
    EXPECT_THAT(includes(findings()[1]), ElementsAre("Fan:2", "Led:2"));
}

TEST_F(FaultFindings, ALineThatIsTooLongIsOneFindingAlsoWhereItsPiecesAreAlike) {
    device.profile("Fan", "agentName: Fan\n" + std::string(2046, 'x') + "\n");
    EXPECT_THAT(found(), ElementsAre("Fan:2: line-too-long"));
}

TEST_F(FaultFindings, AFaultConcernsEveryAgentThatLoadsTheProfile) {
    device.profile("Fan", "agentName: Fan-%x\nfoo\n");
    device.profile("Fan3", "agentName: Fan-3\n").profile("Led", "agentName: Led\n");
    EXPECT_THAT(found(), ElementsAre("Fan:2: unknown-keyword"));
    EXPECT_THAT(findings().front().agents, ElementsAre("Fan-%x", "Fan-3"));
}

TEST_F(FaultFindings, AFaultOfAPreinitFileConcernsAllAgents) {
    device.preinit("Q", "c,T,foo\n").profile("Fan", "agentName: Fan\n");
    EXPECT_THAT(found(), ElementsAre("Q:1: attribute-unknown"));
    EXPECT_THAT(findings().front().agents, IsEmpty());
    EXPECT_EQ(subject(findings().front()), "foo");
}

TEST_F(FaultFindings, TwoThingsWrongWithOneLineAreTwoFindings) {
    device.profile("Fan", "agentName: Fan\na,T,xz\nMountGroup: all, 0\n");
    EXPECT_THAT(found(), ElementsAre("Fan:2: flag-unknown", "Fan:2: flag-unknown",
                                     "Fan:3: group-priority-range", "Fan:3: group-name-reserved"));
    EXPECT_EQ(subject(findings()[0]), "x");
    EXPECT_EQ(subject(findings()[1]), "z");
    EXPECT_EQ(subject(findings()[2]), "0");
    EXPECT_EQ(subject(findings()[3]), "all, 0");
}

// --- what follows from another fault ---

TEST_F(FaultFindings, ThatFlagsAreInvalidFollowsFromWhatIsWrongWithThem) {
    device.profile("Fan", "agentName: Fan\na,T,cD\nrootFlags: x\nconnectionFlags: r\n");
    EXPECT_THAT(found(), ElementsAre("Fan:2: flags-c-and-d", "Fan:3: flag-unknown",
                                     "Fan:4: connection-flag-unknown"));
}

TEST_F(FaultFindings, APathWhosePreinitLineIsRefusedIsSaidAtThatLineOnly) {
    device.preinit("Q", "c/%x,T\n%cellPath/c , T, foo\nCONFIG: e/%x/, T\n");
    device.profile("Fan", "agentName: Fan-%x\nc/%x,T,r\ncell/%cellId/c,T,r\ne/%x,T,r\nf,T,r\n");
    EXPECT_THAT(found(),
                ElementsAre("Q:1: token-needs-create-on-mount", "Q:2: attribute-unknown",
                            "Q:3: token-needs-create-on-mount", "Fan:5: path-without-type"));
    EXPECT_THAT(related(findings()[0]), ElementsAre("Fan:2: mounted here"));
    EXPECT_THAT(related(findings()[1]), ElementsAre("Fan:3: mounted here"));
    EXPECT_THAT(related(findings()[2]), ElementsAre("Fan:4: mounted here"));
}

TEST_F(FaultFindings, OfTheMountsOfARefusedPreinitLineTheFirstFewAreNamed) {
    device.preinit("Q", "c,T,foo\n");
    std::string lines;
    for (int i = 0; i < 20; ++i)
        lines += "c,T,r\n";
    device.profile("Fan", "agentName: Fan\n" + lines);
    EXPECT_THAT(found(), ElementsAre("Q:1: attribute-unknown"));
    EXPECT_EQ(findings().front().related.size(), 5U);
}

TEST_F(FaultFindings, ACommentThatIsContinuedHidesNoPathWithoutType) {
    device.preinit("Q", "# c,T \\\n").profile("Fan", "agentName: Fan\n,T,r\n");
    EXPECT_THAT(found(), ElementsAre("Q:1: comment-continued", "Fan:2: path-without-type"));
}

TEST_F(FaultFindings, NothingMoreIsSaidOfALineThatCannotBeUnderstood) {
    device.profile("Fan", "agentName: Fan\nfoo \\ \nfoo" + std::string(1, '\0') + "\nfoo" +
                              std::string(1100, '-') + "foo\n");
    EXPECT_THAT(found(), ElementsAre("Fan:2: text-after-backslash", "Fan:3: nul-character",
                                     "Fan:4: line-too-long"));
}

// --- the line that has to be changed ---

TEST_F(FaultFindings, StandsAtTheKeywordThatLacksAnother) {
    device.profile("Shared", "a,T,r\n");
    device.profile("Fan", "agentName: Fan\na,T,r\nmatchActiveName\nInclude: Shared\nb,T,r\n");
    EXPECT_THAT(found(), ElementsAre("Fan:3: match-active-name-alone"));
    EXPECT_THAT(related(findings().front()), ElementsAre("Shared:1: noticed here"));
    EXPECT_EQ(subject(findings().front()), "matchActiveName");
}

TEST_F(FaultFindings, StandsAtTheKeywordThatATokenForTheRestForbids) {
    device.profile("Fan", "agentName: Fan-%x$\nactiveMount\nmatchActiveName\n");
    EXPECT_THAT(found(), ElementsAre("Fan:3: match-active-name-with-rest"));
    EXPECT_THAT(related(findings().front()), ElementsAre("Fan:1: noticed here"));
}

TEST_F(FaultFindings, StandsAtTheSecondOfTwoDeclarationsAndNamesTheFirst) {
    device.preinit("Q", "\nb,T,createOnStandby\n");
    EXPECT_THAT(found(), ElementsAre("Q:2: attribute-redefined"));
    EXPECT_THAT(related(findings().front()), ElementsAre("P:2: first declared here"));
    EXPECT_EQ(subject(findings().front()), "b");
}

TEST_F(FaultFindings, OfAKeywordThatLacksAnotherCountWhatTheAgentMetBefore) {
    device.profile("Fan1", "agentName: Fan\nmatchActiveName\n");
    device.profile("Fan2", "agentName: Fan\nactiveMount\n");
    device.profile("Led1", "agentName: Led\nactiveMount\n");
    device.profile("Led2", "agentName: Led\nmatchActiveName\n");
    EXPECT_THAT(found(), ElementsAre("Fan1:2: match-active-name-alone"));
    EXPECT_THAT(findings().front().agents, ElementsAre("Fan"));
}

TEST_F(FaultFindings, NameTheKeywordOfTheSameAgent) {
    device.profile("Fan", "agentName: Fan\nCondition: a\nactiveMount\n");
    device.profile("Led", "agentName: Led\n\nCondition: a\nactiveMount\n");
    EXPECT_THAT(found(), ElementsAre("Fan:3: condition-with-active-mount",
                                     "Led:4: condition-with-active-mount"));
    EXPECT_THAT(related(findings()[0]), ElementsAre("Fan:2: in conflict with this line"));
    EXPECT_THAT(related(findings()[1]), ElementsAre("Led:3: in conflict with this line"));
}

TEST_F(FaultFindings, AreOneForALineThatIsReadAsAProfileAndAsADefaultGroup) {
    device.profile("A", "agentName: Led\nactiveMount\n");
    device.profile("Fan", "agentName: Fan\nactiveMount\n");
    device.profile("DefaultMountGroup", "agentName: Led\nCondition: a\n");
    EXPECT_THAT(found(), ElementsAre("DefaultMountGroup:1: unknown-keyword",
                                     "DefaultMountGroup:2: condition-with-active-mount"));
    EXPECT_THAT(findings()[1].agents, ElementsAre("Led", "Fan"));
}

TEST_F(FaultFindings, StandsAtTheSecondOfTwoKeywordsInConflictAndNamesTheFirst) {
    device.profile("Fan1", "agentName: Fan-%x\nCondition: a\n");
    device.profile("Fan2", "agentName: Fan-%x\n\nactiveMount\n");
    EXPECT_THAT(found(), ElementsAre("Fan2:3: condition-with-active-mount"));
    EXPECT_THAT(related(findings().front()), ElementsAre("Fan1:2: in conflict with this line"));
    EXPECT_THAT(findings().front().agents, ElementsAre("Fan-%x"));
}

TEST_F(FaultFindings, IsOneForAllAgentsThatMeetAConflictInADefaultGroup) {
    device.profile("Fan", "agentName: Fan\nactiveMount\n");
    device.profile("Led", "agentName: Led\nactiveMount\n");
    device.profile("Psu", "agentName: Psu\n");
    device.profile("DefaultMountGroup", "\nCondition: a\n");
    EXPECT_THAT(found(), ElementsAre("DefaultMountGroup:2: condition-with-active-mount"));
    EXPECT_THAT(findings().front().agents, ElementsAre("Fan", "Led"));
}

TEST_F(FaultFindings, IsNoneWhereKeywordsInConflictMeetInNoAgent) {
    device.profile("Fan", "agentName: Fan\nactiveMount\nm/1,T,r\n");
    device.profile("Led", "agentName: Led\nCondition: a\nm/%cellId,U,r\n");
    EXPECT_THAT(found(), IsEmpty());
}

TEST_F(FaultFindings, StandsAtTheSecondOfTwoLinesOfDifferentTypesAndNamesTheFirst) {
    device.profile("Fan", "agentName: Fan\nm/1,T,r\nb,T,r\nm/%cellId,U,w\n");
    EXPECT_THAT(found(), ElementsAre("Fan:4: types-differ"));
    EXPECT_THAT(related(findings().front()), ElementsAre("Fan:2: in conflict with this line"));
    EXPECT_THAT(findings().front().agents, ElementsAre("Fan"));
    EXPECT_EQ(subject(findings().front()), "m/%cellId");
}

TEST_F(FaultFindings, StandsAtThePathThatAnActiveMountMakesADirectoryAndNamesThatMount) {
    device.profile("Fan", "agentName: Fan\nactiveMount\nm/1,T,r\nm/1/b,T,w\n");
    device.profile("Led", "agentName: Led\nm/1,T,r\nm/1/b,T,w\n");
    EXPECT_THAT(found(), ElementsAre("Fan:3: types-differ"));
    EXPECT_THAT(related(findings().front()), ElementsAre("Fan:4: in conflict with this line"));
    EXPECT_THAT(findings().front().agents, ElementsAre("Fan"));
}

TEST_F(FaultFindings, OfAFileThatSeveralActiveAgentsIncludeNamesThemAll) {
    device.profile("Shared", "m/1,T,r\nm/1/b,T,w\n");
    device.profile("Fan", "agentName: Fan\nactiveMount\nInclude: Shared\n");
    device.profile("Led", "agentName: Led\nactiveMount\nInclude: Shared\n");
    EXPECT_THAT(found(), ElementsAre("Shared:1: types-differ"));
    EXPECT_THAT(findings().front().agents, ElementsAre("Fan", "Led"));
    EXPECT_THAT(includes(findings().front()), ElementsAre("Fan:3", "Led:3"));
}

TEST_F(FaultFindings, FindsTypesInConflictThatAnotherAgentsFirstTypeHides) {
    device.preinit("Q", "n/%x,Fen::Dir,createOnMount\nn/1,T\nn/1/b,T\n");
    device.profile("Boss", "agentName: Boss\nn/%cellId,Fen::Dir,r\n");
    device.profile("Fan", "agentName: Fan\nactiveMount\nn/1,T,r\nn/1/b,T,w\n");
    EXPECT_THAT(found(), ElementsAre("Fan:3: types-differ"));
}

TEST_F(FaultFindings, StandsInTheLineAsAnEditorCountsIt) {
    device.profile("s.1", "# " + std::string(2500, '#') + "\na,\\\nT,\\\nx\n");
    device.profile("s.2", "\r\na,T,x\r\n");
    device.profile("Fan", "agentName: Fan\n# " + std::string(1500, '#') + "\nInclude: s.*\nfoo\n");
    EXPECT_THAT(found(), ElementsAre("s.1:2: flag-unknown", "s.2:2: flag-unknown",
                                     "Fan:4: unknown-keyword"));
    EXPECT_THAT(includes(findings()[0]), ElementsAre("Fan:3"));
    EXPECT_EQ(subject(findings()[0]), "x");
}

TEST_F(FaultFindings, StandsNowhereWhereNoFileIsOpen) {
    support::EnvironmentVariable const extra("KELDA_EXTRA_PROFILE_PATH", "/nonexistent");
    EXPECT_THAT(found(), ElementsAre("nowhere: directory-unreadable"));
}

TEST_F(FaultFindings, HoldsTheWholeMessageWithoutLineEnds) {
    device.profile("Fan", "agentName: Fan\nfoo \\ \n");
    EXPECT_EQ(findings().front().message, "syntax error: additional characters after \\: foo \\ ");
}

// --- what of the line it is about ---

struct SubjectCase {
    char const* line;
    char const* subject;
};

TEST_F(FaultFindings, ToldWhatOfTheLineTheyAreAbout) {
    for (auto const& [line, expected] : {SubjectCase{"a , T , r x # why", "x"},
                                         {"  a,T,cD", "cD"},
                                         {"a,T,d", "d"},
                                         {" nosuch , T , r", "nosuch"},
                                         {"m/%nosuch/x,T,r", "m/%nosuch/x"},
                                         {"m/%nosuch,T,r", "%nosuch"},
                                         {"alias: %x = %nosuch", "%nosuch"},
                                         {"alias: x = 1", "x"},
                                         {"alias: %x = 1 ? 2", "?"},
                                         {"rootFlags: r x", "x"},
                                         {"connectionFlags: S r", "r"},
                                         {"Include: nosuch # why", "nosuch"},
                                         {"MountGroup: g , 0", "0"},
                                         {"MountGroup: Default", "Default"},
                                         {"subAgent: S-%nosuch", "%nosuch"},
                                         {" foo bar ", "foo bar"}}) {
        device.profile("Fan", "agentName: Fan\n" + std::string(line) + "\n");
        ASSERT_EQ(findings().size(), 1U) << line;
        EXPECT_EQ(subject(findings().front()), expected) << line;
    }
}

} // namespace
