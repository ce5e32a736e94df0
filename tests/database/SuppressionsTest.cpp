// Comments that allow findings.
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "database/DatabaseMountFileInfo.h"
#include "database/findings/SourceText.h"
#include "database/findings/Suppressions.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"

namespace {

using namespace std::string_literals;
using KeldaDatabase::RuleId;
using testing::ElementsAre;
using testing::IsEmpty;

std::string const unknownFlag = "flag-unknown: Encountered unknown mount flag q";

class SuppressionsTest : public testing::Test {
  protected:
    SuppressionsTest() { device.preinit("Preinit", "a,T\nb,T\nc,T\n"); }

    // "FILE:LINE: RULE: MESSAGE" of each finding that is left, with the hint where it is about a
    // comment.
    std::vector<std::string> left() {
        KeldaDatabase::DatabaseMountFileInfo parser(device.preinitDir(), device.profileDir());
        auto const result = KeldaDatabase::suppress(parser.device(), parser.findings(), isChecked);
        suppressed = result.suppressed;
        std::vector<std::string> told;
        for (auto const& finding : result.findings)
            told.push_back(textOf(parser.device(), finding));
        return told;
    }
    // The same of a device with one profile, the first line of which names an agent.
    std::vector<std::string> left(std::string const& lines) {
        device.profile("P", "agentName: A\n" + lines);
        return left();
    }

    static std::string textOf(KeldaDatabase::Device const& device,
                              KeldaDatabase::Finding const& finding) {
        auto const source = KeldaDatabase::SourceText::ofFile(device.pathOf(finding.place));
        return device.files[finding.place.file].name + ":" +
               std::to_string(source.editorLine(finding.place.line)) + ": " +
               std::string(ruleOf(finding.rule).name) + ": " + finding.message +
               (finding.rule == RuleId::suppressionMalformed && !finding.hint.empty()
                    ? " (" + finding.hint + ")"
                    : "");
    }

    support::CleanEnvironment environment;
    support::Device device;
    KeldaDatabase::RuleSelection isChecked = [](RuleId) { return true; };
    std::size_t suppressed = 0;
};

std::string unused(std::string const& where, std::string const& name) {
    return where + ": suppression-unused: suppression of '" + name + "' covers nothing";
}

std::string malformed(std::string const& where, std::string const& text) {
    return where + ": suppression-malformed: " + text;
}

std::string const howToWrite = " (write '# kelda: allow RULE: reason')";

// --- what is covered ---

TEST_F(SuppressionsTest, WithoutACommentEverythingIsTold) {
    EXPECT_THAT(left("a,T,q\n"), ElementsAre("P:2: " + unknownFlag));
    EXPECT_EQ(suppressed, 0U);
}

TEST_F(SuppressionsTest, ACommentCoversItsLine) {
    EXPECT_THAT(left("a,T,q # kelda: allow flag-unknown: soon to come\nb,T,q\n"),
                ElementsAre("P:3: " + unknownFlag));
    EXPECT_EQ(suppressed, 1U);
}

TEST_F(SuppressionsTest, BlanksAndWhatStandsBeforeItInTheCommentAreFree) {
    for (auto const* const comment :
         {"#kelda:allow flag-unknown:x", "#\tkelda:  allow\tflag-unknown  :  x\r",
          "# first # kelda: allow flag-unknown: x", "## kelda: allow flag-unknown: x : y",
          "# kelda: allow , flag-unknown ,: x", "# kelda: allow-file flag-unknown: x"}) {
        EXPECT_THAT(left("a,T,q"s + comment + "\n"), IsEmpty()) << comment;
        EXPECT_EQ(suppressed, 1U) << comment;
    }
}

TEST_F(SuppressionsTest, OtherCommentsAllowNothing) {
    for (auto const* const comment :
         {"# Kelda: allow flag-unknown: x", "# kelda allow flag-unknown: x",
          "# see kelda: allow flag-unknown: x", "# kelda : allow flag-unknown: x"})
        EXPECT_THAT(left("a,T,q"s + comment + "\n"), ElementsAre("P:2: " + unknownFlag)) << comment;
}

TEST_F(SuppressionsTest, OtherCommentsDoNotHideTheOnesBelow) {
    EXPECT_THAT(left("a,T,r # see kelda: and so on\nb,T,q # kelda: allow flag-unknown: x\n"),
                IsEmpty());
    EXPECT_EQ(suppressed, 1U);
}

TEST_F(SuppressionsTest, ACommentCoversOneRuleOfItsLine) {
    EXPECT_THAT(left("x,T,q # kelda: allow flag-unknown: x\n"),
                ElementsAre(testing::StartsWith("P:2: path-without-type: "),
                            unused("P:2", "flag-unknown")));
    EXPECT_THAT(left("a,T,cDq # kelda: allow flag-unknown, flags-c-and-d: x\n"), IsEmpty());
    EXPECT_EQ(suppressed, 2U);
}

TEST_F(SuppressionsTest, SeveralCommentsMayStandInALine) {
    EXPECT_THAT(left("a,T,cDq # kelda: allow flag-unknown: x # kelda: allow flags-c-and-d: y\n"),
                IsEmpty());
    EXPECT_THAT(left("a,T,q # kelda: allow flag-unknown: x # kelda: allow flag-unknown: y\n"),
                IsEmpty());
}

TEST_F(SuppressionsTest, AContinuedLineIsCoveredWhole) {
    EXPECT_THAT(left("a,\\\n T,\\\n q # kelda: allow flag-unknown: x\nb,T,q\n"),
                ElementsAre("P:5: " + unknownFlag));
    EXPECT_THAT(left("a,T,\\\nq\\\n# kelda: allow flag-unknown: x\nb,T,q\n"),
                ElementsAre("P:5: " + unknownFlag));
}

TEST_F(SuppressionsTest, TheReasonMayGoOnInTheNextLine) {
    EXPECT_THAT(left("a,T,q # kelda: allow flag-unknown:\\\n because\nb,T,q\n"),
                ElementsAre("P:4: " + unknownFlag));
    EXPECT_THAT(left("a,T,q # kelda: allow flag-\\\nunknown: because\n"), IsEmpty());
    EXPECT_THAT(left("a,T,q # kelda: allow flag-unknown:\\\n# kelda: allow flag-unknown: x\n"),
                ElementsAre(malformed("P:2", "suppression of 'flag-unknown' gives no reason" +
                                                 howToWrite)));
}

TEST_F(SuppressionsTest, ALineThatTheParserCutsIsCoveredWhole) {
    auto const longLine = std::string(1100, 'x');
    EXPECT_THAT(left(longLine + " # kelda: allow line-too-long: x\n"), IsEmpty());
    EXPECT_THAT(left("# kelda: allow line-too-long: x\n" + longLine + "\n"), IsEmpty());
    EXPECT_THAT(left("# kelda: allow line-too-long: x\n" + std::string(1020, 'x') +
                     "\\\nfits and does not fit\n"),
                IsEmpty());
    EXPECT_THAT(left("# kelda: allow line-too-long: x\n#" + longLine + "\n"), IsEmpty());
    EXPECT_THAT(left(std::string(1018, '\t') + "a,T,q # kelda: allow flag-unknown: x\n"),
                IsEmpty());
}

TEST_F(SuppressionsTest, OnALineOfItsOwnItCoversTheNextThatSaysSomething) {
    EXPECT_THAT(left("# kelda: allow flag-unknown: x\na,T,q\nb,T,q\n"),
                ElementsAre("P:4: " + unknownFlag));
    EXPECT_THAT(left("  # kelda: allow flag-unknown: x\n\n \t\r\n# note\n \\\n # note\n\n"
                     "a,\\\nT,q\nb,T,q\n"),
                ElementsAre("P:11: " + unknownFlag));
}

TEST_F(SuppressionsTest, SeveralLinesOfCommentsCoverTheSameLine) {
    EXPECT_THAT(left("# kelda: allow flag-unknown: x\n# kelda: allow flags-c-and-d: y\na,T,cDq\n"
                     "# kelda: allow flag-unknown: x\nb,T,q\n"),
                IsEmpty());
    EXPECT_EQ(suppressed, 3U);
}

TEST_F(SuppressionsTest, ACommentForTheFileCoversItWhereverItStands) {
    EXPECT_THAT(left("a,T,q\nb,T,q\n# kelda: allow-file flag-unknown: x\n"), IsEmpty());
    EXPECT_EQ(suppressed, 2U);
    EXPECT_THAT(left("a,T,q # kelda: allow flag-unknown: x\n# kelda: allow-file flag-unknown: x\n"),
                IsEmpty());
    device.profile("Q", "agentName: B\na,T,q\n");
    EXPECT_THAT(left(), ElementsAre("Q:2: " + unknownFlag));
}

TEST_F(SuppressionsTest, AboveTheAgentNameACommentCoversItsLine) {
    device.profile("P", "# kelda: allow match-active-name-with-rest: x\nagentName: A-%b$\n"
                        "activeMount\nmatchActiveName\n");
    auto const told = left();
    ASSERT_EQ(told.size(), 2U); // the fault is told where the keyword stands
    EXPECT_EQ(told.back(), unused("P:1", "match-active-name-with-rest"));
}

TEST_F(SuppressionsTest, AFindingOfAFileThatManyIncludeIsCoveredOnce) {
    device.profile("P", "agentName: A\nInclude: shared\n")
        .profile("Q", "agentName: B\nInclude: shared\n")
        .profile("shared", "a,T,q # kelda: allow flag-unknown: x\n");
    EXPECT_THAT(left(), IsEmpty());
    EXPECT_EQ(suppressed, 1U);
}

TEST_F(SuppressionsTest, PreinitFilesHaveThemToo) {
    device.preinit("More", "d,T,never # kelda: allow attribute-unknown: x\ne\n");
    EXPECT_THAT(left(), ElementsAre("More:2: preinit-syntax: preinit syntax error: e"));
}

// --- what is wrong with comments ---

TEST_F(SuppressionsTest, WhatCoversNothingIsTold) {
    EXPECT_THAT(left("a,T,r # kelda: allow flag-unknown: x\n"
                     "# kelda: allow-file flags-c-and-d: x\n"
                     "b,T,q # kelda: allow flag-unknown, flag-d-without-c: x\n"
                     "# kelda: allow flag-unknown: nothing below\n\n# note\n"),
                ElementsAre(unused("P:2", "flag-unknown"), unused("P:3", "flags-c-and-d"),
                            unused("P:4", "flag-d-without-c"), unused("P:5", "flag-unknown")));
}

TEST_F(SuppressionsTest, WhatWasNotCheckedIsNotToldToCoverNothing) {
    isChecked = [](RuleId rule) { return rule != RuleId::flagUnknown; };
    EXPECT_THAT(left("a,T,r # kelda: allow flag-unknown, flags-c-and-d: x\n"),
                ElementsAre(unused("P:2", "flags-c-and-d")));
    isChecked = [](RuleId rule) { return rule == RuleId::flagUnknown; };
    EXPECT_THAT(left("a,T,r # kelda: allow flag-unknown: x\nb,T,r # kelda: allow\n"), IsEmpty());
}

TEST_F(SuppressionsTest, WithoutAReasonNothingIsCovered) {
    for (auto const* const comment : {"# kelda: allow flag-unknown", "# kelda: allow flag-unknown:",
                                      "#kelda:allow flag-unknown : \t\r"})
        EXPECT_THAT(left("a,T,q "s + comment + "\n"),
                    ElementsAre("P:2: " + unknownFlag,
                                malformed("P:2", "suppression of 'flag-unknown' gives no reason" +
                                                     howToWrite)))
            << comment;
    EXPECT_THAT(left("a,T,r # kelda: allow-file alias-unused, flag-unknown\n"),
                ElementsAre(malformed("P:2", "suppression of 'alias-unused, flag-unknown' gives no "
                                             "reason" +
                                                 howToWrite)));
}

TEST_F(SuppressionsTest, WhatNamesNoRuleIsMalformed) {
    for (auto const* const comment :
         {"# kelda: allow", "# kelda: allow : x", "# kelda: allow-file ,: x"})
        EXPECT_THAT(left("a,T,r "s + comment + "\n"),
                    ElementsAre(malformed("P:2", "suppression names no rule" + howToWrite)))
            << comment;
}

TEST_F(SuppressionsTest, WhatIsNoSuppressionIsMalformed) {
    for (auto const* const comment : {"# kelda:", "# kelda: Allow a: x", "# kelda: allowed a: x",
                                      "# kelda: disallow a: x", "# kelda: allow-files a: x"})
        EXPECT_THAT(
            left("a,T,r "s + comment + "\n"),
            ElementsAre(malformed(
                "P:2", "'kelda:' is followed by neither 'allow' nor 'allow-file'" + howToWrite)))
            << comment;
}

TEST_F(SuppressionsTest, AnUnknownRuleIsToldWithTheNearestOne) {
    auto const noSuchRule = [](std::string const& name, std::string const& hint) {
        return malformed("P:2", "suppression of '" + name + "': there is no such rule" + hint);
    };
    EXPECT_THAT(left("a,T,q # kelda: allow flag-unknow, Alias-Unused, zzzzzzzz, flag-unknown: x\n"),
                ElementsAre(noSuchRule("flag-unknow", " (did you mean 'flag-unknown'?)"),
                            noSuchRule("Alias-Unused", " (did you mean 'alias-unused'?)"),
                            noSuchRule("zzzzzzzz", "")));
    auto const endless = std::string(900, 'a');
    EXPECT_THAT(left("a,T,r # kelda: allow " + endless + ": x\n"),
                ElementsAre(noSuchRule(endless, "")));
}

TEST_F(SuppressionsTest, FindingsAboutCommentsCannotBeSuppressed) {
    EXPECT_THAT(left("# kelda: allow-file suppression-unused, suppression-malformed: x\n"
                     "a,T,r # kelda: allow flag-unknown: x\n"),
                ElementsAre(malformed("P:2", "'suppression-unused' cannot be suppressed (mend or "
                                             "remove the comment)"),
                            malformed("P:2", "'suppression-malformed' cannot be suppressed (mend "
                                             "or remove the comment)"),
                            unused("P:3", "flag-unknown")));
}

TEST_F(SuppressionsTest, TheAgentNameLineTakesNoComment) {
    device.profile("P", "agentName: A # kelda: allow agent-matched-twice: x\na,T,r\n");
    EXPECT_THAT(left(), ElementsAre(malformed("P:1", "no comment may follow in the agentName line "
                                                     "(write it in a line of its own above)")));
}

TEST_F(SuppressionsTest, ACommentIsFoundWhereItStands) {
    device.profile("P", "agentName: A\n" + std::string(1100, ' ') +
                            "a, \\\n T,r \\\n # kelda: allow flag-unknown: x\n");
    KeldaDatabase::DatabaseMountFileInfo parser(device.preinitDir(), device.profileDir());
    auto const findings = KeldaDatabase::suppress(parser.device(), {}).findings;
    ASSERT_EQ(findings.size(), 1U);
    auto const source =
        KeldaDatabase::SourceText::ofFile(parser.device().pathOf(findings[0].place));
    EXPECT_EQ(source.spotOf(findings[0].place.line, findings[0].subject),
              (KeldaDatabase::Spot{4, 17, 12}));
}

TEST_F(SuppressionsTest, TheSubjectIsTheNameWithoutBlanks) {
    device.profile("P", "agentName: A\na,T,r # kelda: allow no\tsuch rule: x\n");
    KeldaDatabase::DatabaseMountFileInfo parser(device.preinitDir(), device.profileDir());
    auto const findings = KeldaDatabase::suppress(parser.device(), {}).findings;
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].subject.text, "nosuchrule");
}

TEST_F(SuppressionsTest, AFileThatIsGoneOrIsAFolderHasNone) {
    KeldaDatabase::Device gone;
    gone.files.push_back({device.profileDir(), "none"});
    gone.files.push_back({"", device.profileDir()});
    KeldaDatabase::Finding finding;
    finding.place = {0, 1};
    auto const result = KeldaDatabase::suppress(gone, {finding, KeldaDatabase::Finding()});
    EXPECT_EQ(result.findings.size(), 2U);
    EXPECT_EQ(result.suppressed, 0U);
}

} // namespace
