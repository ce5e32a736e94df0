// How far the trail of a line is followed into the other device: moved lines, aliases of aliases,
// conditions, variants, group keys, faults of several lines, and routes through Include lines.
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/ComparedDevices.h"

namespace {

using support::ComparedDevices;
using support::FileTexts;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char const* preinit = "a,T\nb,T\nc/d,T\nx/%v,T,createOnMount\n";

// The changes from one text of the profile "A" to another one, beside further files.
std::vector<std::string> changes(std::string const& before, std::string const& after,
                                 FileTexts files = {}) {
    files.try_emplace("preinit/P", preinit);
    auto old = files;
    old["profiles/A"] = before;
    files["profiles/A"] = after;
    return ComparedDevices(old, files).changes();
}

TEST(TraceOfALine, PassesOverLinesThatWereOnlyMoved) {
    // The line with "r" is in the included file now, and what else differs is named.
    EXPECT_THAT(changes("agentName:A\na,T,r\na,T,i\n", "agentName:A\nInclude:s\n",
                        {{"profiles/s", "a,T,r\na,T,w\n"}}),
                ElementsAre("flags-replaced risky by line: 'ri' -> 'rw', profiles/A:3 => "
                            "profiles/A:2: a [A]"));
}

TEST(TraceOfALine, NamesEveryLineThatDiffers) {
    EXPECT_THAT(changes("agentName:A\na,T,r\n", "agentName:A\na,T,r\na,T,i\na,T,w\n"),
                ElementsAre("flags-widened risky by line: 'r' -> 'rwi', - => profiles/A:3 "
                            "profiles/A:4: a [A]"));
}

TEST(TraceOfAnAlias, EndsAtTheAliasThatWasEdited) {
    EXPECT_THAT(changes("agentName:A\nalias:%in=1\nalias:%out=%in\nx/%out,T,r\n",
                        "agentName:A\nalias:%in=2\nalias:%out=%in\nx/%out,T,r\n"),
                ElementsAre("mount-removed dangerous by alias: 'r' -> '', profiles/A:2 => "
                            "profiles/A:2: x/1 [A]",
                            "mount-added notable by alias: '' -> 'r', profiles/A:2 => "
                            "profiles/A:2: x/2 [A]"));
}

TEST(TraceOfAnAlias, LooksAtTheDefinitionsAboveTheLine) {
    EXPECT_THAT(changes("agentName:A\nalias:%v=1\nx/%v,T,r\nalias:%v=3\n",
                        "agentName:A\nalias:%v=2\nx/%v,T,r\nalias:%v=3\n"),
                ElementsAre("mount-removed dangerous by alias: 'r' -> '', profiles/A:2 => "
                            "profiles/A:2: x/1 [A]",
                            "mount-added notable by alias: '' -> 'r', profiles/A:2 => "
                            "profiles/A:2: x/2 [A]"));
}

TEST(TraceOfAnAlias, LooksAtTheDefinitionsAboveTheIncludeLine) {
    auto const profile = [](char const* second) {
        return fmt::format("agentName:A\nalias:%v=1\nInclude:s\nalias:%v={}\nInclude:s\n", second);
    };
    EXPECT_THAT(changes(profile("2"), profile("3"), {{"profiles/s", "x/%v,T,r\n"}}),
                ElementsAre("mount-removed dangerous by alias: 'r' -> '', profiles/A:4 => "
                            "profiles/A:4: x/2 [A]",
                            "mount-added notable by alias: '' -> 'r', profiles/A:4 => "
                            "profiles/A:4: x/3 [A]"));
}

TEST(TraceOfAnAlias, EndsAtTheAgentNameWhereATokenIsMeant) {
    EXPECT_THAT(changes("agentName:A-%p-%q\nalias:%out=%q\nx/%out,T,r\n",
                        "agentName:A-%q-%p\nalias:%out=%q\nx/%out,T,r\n"),
                ElementsAre("mount-removed dangerous by agent-name: 'r' -> '', profiles/A:1 => "
                            "profiles/A:1: x/%p [A-%q-%p]",
                            "mount-added notable by agent-name: '' -> 'r', profiles/A:1 => "
                            "profiles/A:1: x/%q [A-%q-%p]"));
}

TEST(TraceOfASubAgent, EndsAtItsAlias) {
    EXPECT_THAT(changes("agentName:A\nalias:%s=1\nsubAgent:S-%s\nsubAgent:T\n",
                        "agentName:A\nalias:%s=2\nsubAgent:S-%s\nsubAgent:T\n"),
                ElementsAre("sub-agents-changed risky by alias: 'S-1, T' -> 'S-2, T', "
                            "profiles/A:2 => profiles/A:2: [A]"));
    EXPECT_THAT(
        changes("agentName:A\nsubAgent:S\nsubAgent:T\n", "agentName:A\nsubAgent:T\nsubAgent:S\n"),
        ElementsAre("sub-agents-changed risky by keyword: 'S, T' -> 'T, S', profiles/A:2 "
                    "profiles/A:3 => profiles/A:2 profiles/A:3: [A]"));
}

TEST(TraceOfACondition, NamesTheLineThatCameOrWent) {
    EXPECT_THAT(changes("agentName:A\nCondition: x\na,T,r\n",
                        "agentName:A\nCondition:  x \nConditionBlocker: y\na,T,r\n"),
                ElementsAre("condition-changed risky by keyword: 'Condition: x' -> 'Condition: x, "
                            "ConditionBlocker: y', - => profiles/A:3: a [A]"));
    EXPECT_THAT(changes("agentName:A\nCondition: x y\na,T,r\nMountGroup:g\nb,T,r\n",
                        "agentName:A\ncondition:\tx  y\na,T,r\nMountGroup:g\nb,T,r\n"),
                IsEmpty());
}

TEST(TraceOfACondition, KnowsOnlyThoseSinceTheGroupBegan) {
    constexpr char const* text = "agentName:A\nCondition: x\na,T,r\nMountGroup: g\n"
                                 "Condition: {}\nb,T,r\n";
    EXPECT_THAT(changes(fmt::format(fmt::runtime(text), "y"), fmt::format(fmt::runtime(text), "z")),
                ElementsAre("condition-changed risky by keyword: 'Condition: y' -> 'Condition: z', "
                            "profiles/A:5 => profiles/A:5: b [A]"));
    EXPECT_THAT(changes("agentName:A\na,T,r\nCondition: x\na,T,r\n",
                        "agentName:A\na,T,r\nCondition: y\na,T,r\n"),
                ElementsAre("condition-changed risky by keyword: 'always, Condition: x' -> "
                            "'always, Condition: y', profiles/A:3 => profiles/A:3: a [A]"));
}

TEST(TraceOfAType, EndsAtTheConditionThatExcusedIt) {
    EXPECT_THAT(changes("agentName:A\nCondition: x\nmore,T,r\n", "agentName:A\nmore,T,r\n"),
                ElementsAre("fault-added dangerous by keyword: '' -> 'No type info for path 'more' "
                            "found in preinit files while loading profile file because the path "
                            "was not loaded from any preinit...', profiles/A:2 => -: [A]"));
    EXPECT_THAT(
        changes("agentName:A\nCondition: x\nmore,T,r\n", "agentName:A\nCondition: x\nmore,U,r\n"),
        ElementsAre("type-changed dangerous by line: 'T' -> 'U', profiles/A:3 => "
                    "profiles/A:3: more [A]"));
}

TEST(TraceOfAFile, EndsAtTheIncludeLineThatFindsItNoLonger) {
    FileTexts const files = {{"profiles/s", "a,T,r\n"}, {"profiles/t", "b,T,r\n"}};
    EXPECT_THAT(changes("agentName:A\nInclude:[st]\n", "agentName:A\nInclude:[s]\n", files),
                ElementsAre("mount-removed dangerous by include: 'r' -> '', profiles/A:2 => "
                            "profiles/A:2: b [A]"));
}

TEST(TraceOfAFile, TellsApartTheIncludeLinesThatFindIt) {
    FileTexts const files = {{"profiles/s", "a,T,r\n"}};
    EXPECT_THAT(changes("agentName:A\nMountGroup:g\nInclude:s\nMountGroup:h\nInclude:s\n",
                        "agentName:A\nMountGroup:g\nInclude:s\nMountGroup:h\n", files),
                ElementsAre("group-removed notable by include: 'h' -> '', profiles/A:5 => -: a "
                            "[A]"));
}

TEST(TraceOfAFile, EndsAtTheProfileThatIsGone) {
    FileTexts const before = {{"preinit/P", preinit},
                              {"profiles/A", "agentName:A\na,T,r\n"},
                              {"profiles/B", "agentName:A\nb,T,r\n"}};
    auto after = before;
    after.erase("profiles/B");
    EXPECT_THAT(ComparedDevices(before, after).changes(),
                ElementsAre("mount-removed dangerous by file: 'r' -> '', profiles/B:2 => -: b "
                            "[A]"));
}

// Default groups are filed under the name of the profile that was loaded last.
TEST(TraceOfAGroup, EndsAtTheProfileThatGivesTheDefaultGroupItsKey) {
    FileTexts const before = {{"preinit/P", preinit},
                              {"profiles/A", "agentName:A-1\nb,T,r\n"},
                              {"profiles/DefaultMountGroup", "a,T,r\n"}};
    auto after = before;
    after["profiles/B"] = "agentName:A-%s\n";
    EXPECT_THAT(ComparedDevices(before, after).changes(),
                testing::Contains(testing::AllOf(testing::StartsWith("group-added notable"),
                                                 testing::HasSubstr("'' -> 'A::default'"),
                                                 testing::EndsWith(": a [A-1]"))));
}

TEST(TraceOfAGroup, TellsTheKeyOfAnotherAgentName) {
    FileTexts const files = {{"profiles/B", "agentName:A-%s\nMountGroup:g\na,T,r\n"}};
    EXPECT_THAT(
        changes("agentName:A-1\na,T,r\n", "agentName:A-1\na,T,r\nMountGroup:h\na,T,r\n", files),
        ElementsAre("group-added notable by line: '' -> 'h', - => profiles/A:4: a [A-1]"));
    EXPECT_THAT(changes("agentName:A-1\na,T,r\n", "agentName:A-1\nb,T,r\n", files),
                ElementsAre("mount-added notable by line: '' -> 'r', - => profiles/A:2: b [A-1]",
                            "group-removed notable by line: '::' -> '', profiles/A:2 => -: a "
                            "[A-1]"));
    auto const inB = [](char const* group) {
        return FileTexts{{"preinit/P", preinit},
                         {"profiles/A", "agentName:A-1\na,T,r\n"},
                         {"profiles/B", fmt::format("agentName:A-%s\n{}a,T,r\n", group)}};
    };
    EXPECT_THAT(ComparedDevices(inB(""), inB("MountGroup:g\n")).changes(),
                ElementsAre("group-added notable by keyword: '' -> 'A::g', - => profiles/B:2: a "
                            "[A-1]",
                            "group-added notable by keyword: '' -> 'g', - => profiles/B:2: a "
                            "[A-%s]",
                            "group-removed notable by keyword: '::' -> '', - => profiles/B:2: a "
                            "[A-%s]",
                            "group-removed notable by keyword: 'A::' -> '', - => profiles/B:2: a "
                            "[A-1]"));
}

TEST(AVariant, IsToldOfWhereItsChangeIsAnother) {
    FileTexts const files = {{"profiles/B", "agentName:A-%s\na,T,r\n"}};
    auto const profile = [](char const* lines) {
        return fmt::format("agentName:A-%s\nactiveMount\nmatchActiveName\n{}", lines);
    };
    // The plain agent has "r" of the other profile, too.
    EXPECT_THAT(changes(profile("a,T,w\n"), profile("a,T,i\n"), files),
                ElementsAre("flags-replaced dangerous by line: 'rw' -> 'ri', profiles/A:4 => "
                            "profiles/A:4: a [A-%s]",
                            "flags-replaced dangerous by line: 'w' -> 'i', profiles/A:4 => "
                            "profiles/A:4: a [A-Active-*]"));
    EXPECT_THAT(changes(profile("b,T,r\n"), profile("b,T,rw\n"), files),
                ElementsAre("flags-widened risky by line: 'r' -> 'rw', profiles/A:4 => "
                            "profiles/A:4: b [A-%s]"));
    EXPECT_THAT(changes("agentName:A-%s\nactiveMount\nb,T,r\n", profile("b,T,r\n")),
                ElementsAre("match-active-name-changed notable by keyword: 'no' -> 'yes', - => "
                            "profiles/A:3: [A-%s]"));
}

TEST(AVariant, IsMissedWhereItWent) {
    auto const profile = [](char const* keywords, char const* flags) {
        return fmt::format("agentName:A-%s\nactiveMount\n{}a,T,{}\n", keywords, flags);
    };
    EXPECT_THAT(changes(profile("matchActiveName\n", "r"), profile("", "r")),
                ElementsAre("match-active-name-changed dangerous by keyword: 'yes' -> 'no', "
                            "profiles/A:3 => -: [A-%s]"));
    EXPECT_THAT(changes(profile("", "w"), profile("matchActiveName\n", "w")),
                ElementsAre("match-active-name-changed risky by keyword: 'no' -> 'yes', - => "
                            "profiles/A:3: [A-%s]"));
    // What writes is in a profile that the variant passes over.
    EXPECT_THAT(changes(profile("", "r"), profile("matchActiveName\n", "r"),
                        {{"profiles/B", "agentName:A-%s\nb,T,w\n"}}),
                ElementsAre("match-active-name-changed notable by keyword: 'no' -> 'yes', - => "
                            "profiles/A:3: [A-%s]"));
}

TEST(AToken, TakesAnotherPartOfTheNameOnlyInPathsThatHoldIt) {
    EXPECT_THAT(changes("agentName:A-%s\nx/%s,T,r\na,T,r\n", "agentName:A-%s$\nx/%s,T,r\na,T,r\n"),
                ElementsAre("tokens-changed risky by agent-name: 'A-%s' -> 'A-%s$', profiles/A:1 "
                            "=> profiles/A:1: x/%s [A-%s$]"));
    // It is not the last one any more.
    EXPECT_THAT(changes("agentName:A-%s$\nx/%s,T,r\n", "agentName:A-%s-%t$\nx/%s,T,r\n"),
                ElementsAre("tokens-changed risky by agent-name: 'A-%s$' -> 'A-%s-%t$', "
                            "profiles/A:1 => profiles/A:1: x/%s [A-%s-%t$]"));
    EXPECT_THAT(changes("agentName:A-%s\na,T,r\n", "agentName:A-%s$\na,T,r\n"), IsEmpty());
    EXPECT_THAT(changes("agentName:A-%s-%t$\nx/%s,T,r\n", "agentName:A-%s-%t\nx/%s,T,r\n"),
                IsEmpty());
    EXPECT_THAT(changes("agentName:A-%s\nx/%s,T,r\n", "agentName:A-%s-%t\nx/%s,T,r\n"), IsEmpty());
    EXPECT_THAT(changes("agentName:A-%s$\nx/%s,T,r\n", "agentName:A-%other$\nx/%other,T,r\n"),
                IsEmpty());
}

TEST(TraceOfAFault, ReachesThePreinitLineOfAPathWithTokens) {
    std::string const profile = "agentName:A-%s\nx/%s,T,r\n";
    ComparedDevices devices({{"preinit/P", preinit}, {"profiles/A", profile}},
                            {{"preinit/P", "a,T\n"}, {"profiles/A", profile}});
    auto const found = devices.changes();
    ASSERT_FALSE(found.empty());
    EXPECT_THAT(found[0], testing::StartsWith("fault-added dangerous by preinit: "));
    EXPECT_THAT(found[0], testing::EndsWith("', preinit/P:4 => -: [A-%s]"));
}

TEST(TraceOfAFault, ReachesTheConditionThatMadeATypeNeedless) {
    auto const found =
        changes("agentName:A-%s\nCondition: c\nz/%s,T,r\n", "agentName:A-%s\nz/%s,T,r\n");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_THAT(found[0], testing::StartsWith("fault-added dangerous by keyword: "));
    EXPECT_THAT(found[0], testing::EndsWith("', profiles/A:2 => -: [A-%s]"));
}

TEST(ADeclaredPath, StandsWhereItsTypeDoes) {
    FileTexts const profile = {{"profiles/A", "agentName:A\n"}};
    auto with = profile, without = profile;
    with["preinit/P"] = "a,T\ns,Old\ns,New\n";
    without["preinit/P"] = "a,T\n";
    EXPECT_THAT(ComparedDevices(without, with).changes(),
                ElementsAre("preinit-added harmless by line: '' -> 'New', - => preinit/P:3: s []"));
    EXPECT_THAT(ComparedDevices(with, without).changes(),
                ElementsAre("preinit-removed risky by line: 'New' -> '', preinit/P:3 => -: s []"));
}

TEST(TraceOfAFaultOfSeveralLines, EndsAtThoseThatCame) {
    FileTexts const files = {{"profiles/B", "agentName:A\nactiveMount\n"}};
    auto const found = changes("agentName:A\na,T,r\n", "agentName:A\na,T,r\nCondition: x\n", files);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_THAT(found[0], testing::HasSubstr("fault-added dangerous by line: "));
    EXPECT_THAT(found[0], testing::EndsWith("', - => profiles/A:3: [A]"));
}

TEST(AnActiveMount, ThatCameBringsItsDirectories) {
    EXPECT_THAT(changes("agentName:A\nc/d,T,r\n", "agentName:A\nc/d,T,r\nactiveMount\n"),
                ElementsAre("active-mount-changed dangerous by keyword: 'passive' -> 'active', - "
                            "=> profiles/A:3: [A]",
                            "root-flags-changed risky by keyword: 'rtp' -> 'rt', - => "
                            "profiles/A:3: [A]",
                            "mount-added harmless follows by keyword: '' -> 'tny', - => "
                            "profiles/A:3: c [A]"));
}

TEST(AnActiveMount, ThatIsADirectoryTakesFlagsFromBelow) {
    EXPECT_THAT(changes("agentName:A\nactiveMount\nc,Fen::Dir,r\nc/d,T,r\n",
                        "agentName:A\nactiveMount\nc,Fen::Dir,r\nc/d,T,rw\n"),
                ElementsAre("flags-widened risky by line: 'r' -> 'rw', profiles/A:4 => "
                            "profiles/A:4: c/d [A]",
                            "flags-widened harmless follows by line: 'rn' -> 'rwn', profiles/A:4 "
                            "=> profiles/A:4: c [A]"));
}

TEST(AnActiveMount, FollowsWhatIsBelowItAndNothingElse) {
    FileTexts const files = {{"preinit/P", "c/d,T\nc/e,T\nc2/d,T\n"}};
    EXPECT_THAT(changes("agentName:A\nactiveMount\nrootFlags:rw\nc/e,T,r\n",
                        "agentName:A\nactiveMount\nrootFlags:rw\nc/d,T,w\nc2/d,T,w\n"
                        "MountGroup:g\nc/e,T,r\n",
                        files),
                testing::IsSupersetOf(
                    {"mount-added harmless follows by line: '' -> 'wtn', - => profiles/A:5: c2 "
                     "[A]",
                     "flags-widened harmless follows by line: 'tny' -> 'wtn', - => profiles/A:4: "
                     "c [A]"}));
}

TEST(APreinitPath, IsAnotherOneInAnotherCell) {
    FileTexts const before = {{"preinit/P", "cell/%cellId/x,T\n"}};
    FileTexts const after = {{"preinit/P", "cell/%peerCellId/x,T\n"}};
    EXPECT_THAT(ComparedDevices(before, after).changes(),
                ElementsAre("preinit-removed risky by line: 'T' -> '', preinit/P:1 => -: "
                            "cell/%cellId/x []",
                            "preinit-added harmless by line: '' -> 'T', - => preinit/P:1: "
                            "cell/%peerCellId/x []"));
}

TEST(AnAgent, ThatCameHasItsMounts) {
    FileTexts const before = {{"preinit/P", preinit}};
    auto after = before;
    after["profiles/A"] = "agentName:A-%s\nx/%s,T,w\na,T,r\n";
    ComparedDevices devices(before, after);
    auto const difference = devices.difference();
    EXPECT_THAT(devices.shown(difference),
                ElementsAre("agent-added risky by file: '' -> '', - => profiles/A:1: [A-%s]"));
    ASSERT_EQ(difference.changes.size(), 1U);
    std::vector<std::string> mounts;
    for (auto const& mount : difference.changes[0].mounts)
        mounts.push_back(
            fmt::format("{} {} {} {}", mount.agent, mount.path, mount.type, mount.flags));
    EXPECT_THAT(mounts, ElementsAre("A-%s a T r", "A-%s x/%s T w"));
}

TEST(APlace, StandsWithoutItsIncludeLineIfSeveralLedThere) {
    FileTexts files = {{"preinit/P", preinit},
                       {"profiles/A", "agentName:A\n\nInclude:s\n"},
                       {"profiles/s", "a,T,r\n"}};
    auto const firstPlace = [](FileTexts const& old) {
        auto now = old;
        now["profiles/s"] = "a,T,rw\n";
        return ComparedDevices(old, now).difference().changes.at(0).newPlaces.at(0);
    };
    auto const alone = firstPlace(files);
    ASSERT_EQ(alone.from.size(), 1U);
    EXPECT_EQ(alone.from[0].line, 3);
    EXPECT_EQ(alone.text, "a,T,rw");
    files["profiles/B"] = "agentName:B\nInclude:s\n";
    EXPECT_THAT(firstPlace(files).from, IsEmpty());
}

} // namespace
