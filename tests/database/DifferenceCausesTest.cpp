// Where the lines that say so are others than those that were edited, they are not what is named:
// shared files, Include lines, aliases, tokens, and what follows from other changes.
#include <string>
#include <vector>

#include "PlantedDevice.h"

namespace {

using support::edited;
using support::expectFound;
using support::FileTexts;
auto const& base = support::plantedDevice;

TEST(PlantedInSharedFile, IsFoundOnceForAllItsAgents) {
    FileTexts files = {{"preinit/P", "sys/log,Log\n"}, {"profiles/shared", "sys/log,Log,r\n"}};
    for (auto const* const name : {"A", "B", "C-%c", "D", "E"})
        files[fmt::format("profiles/{}", name)] =
            fmt::format("agentName: {}\nInclude: shared\n", name);
    expectFound(files, {{"one line of a file that five profiles include",
                         {{"profiles/shared", ",r", ",rw"}},
                         {"flags-widened risky by line: 'r' -> 'rw', profiles/shared:1 => "
                          "profiles/shared:1: sys/log [A B C-%c D E]"}},
                        {"the line is gone",
                         {{"profiles/shared", "sys/log,Log,r\n", "# nothing\n"}},
                         {"mount-removed dangerous by line: 'r' -> '', profiles/shared:1 => -: "
                          "sys/log [A B C-%c D E]"}}});
    expectFound(base, {{"a line of the default group reaches all but those that refuse it",
                        {{"profiles/DefaultMountGroup", ",r", ",ri"}},
                        {"flags-widened notable by line: 'r' -> 'ri', "
                         "profiles/DefaultMountGroup:1 => profiles/DefaultMountGroup:1: "
                         "sys/clock [Fan-%slot Led Table-%name]"}}});
}

TEST(PlantedIncludeLine, IsTheCauseOfWhatItBrings) {
    expectFound(base, {{"an include is gone",
                        {{"profiles/Led", "Include: shared\n", ""}},
                        {"mount-removed dangerous by include: 'w' -> '', profiles/Led:4 => -: "
                         "sys/log [Led]"}},
                       {"an include came",
                        {{"profiles/Quiet", "sys/log,Log,r\n", "sys/log,Log,r\nInclude: shared\n"}},
                        {"flags-widened risky by include: 'r' -> 'rw', - => profiles/Quiet:4: "
                         "sys/log [Quiet]"}}});
}

TEST(PlantedAlias, IsTheCauseWhereItsValueChanged) {
    expectFound(base,
                {{"the value of an alias",
                  {{"profiles/Led", "%root = left", "%root = right"}},
                  {"mount-removed dangerous by alias: 'r' -> '', profiles/Led:2 => profiles/Led:2: "
                   "port/left [Led]",
                   "mount-added notable by alias: '' -> 'r', profiles/Led:2 => profiles/Led:2: "
                   "port/right [Led]"}}});
}

TEST(PlantedTokens, AreAChangeWhereTheyAreSwapped) {
    FileTexts const files = {
        {"preinit/P", "x/%a/%b,T,createOnMount\nx/%a/a,T,createOnMount\n"},
        {"profiles/X", "agentName: X-%a-%b\nx/%a/%b,T,r\n"},
    };
    expectFound(files,
                {{"in the name only",
                  {{"profiles/X", "X-%a-%b", "X-%b-%a"}},
                  {"mount-removed dangerous by agent-name: 'r' -> '', profiles/X:1 => "
                   "profiles/X:1: x/%b/%a [X-%b-%a]",
                   "mount-added notable by agent-name: '' -> 'r', profiles/X:1 => "
                   "profiles/X:1: x/%a/%b [X-%b-%a]"}},
                 {"in the name and in the path",
                  {{"profiles/X", "X-%a-%b", "X-%b-%a"}, {"profiles/X", "x/%a/%b", "x/%b/%a"}},
                  {}}});
}

TEST(PlantedFile, IsTheCauseOfAllItsLines) {
    expectFound(base, {{"a second profile of an agent",
                        {{"profiles/More", "", "agentName: Quiet\nspare/one,One,r\n"}},
                        {"mount-added notable by file: '' -> 'r', - => profiles/More:2: "
                         "spare/one [Quiet]"}}});
    auto const files = edited(base, {{"profiles/Led", "Include: shared", "Include: shared*"}});
    expectFound(files, {{"a further file that a pattern finds",
                         {{"profiles/shared2", "", "# more\nspare/one,One,w\n"}},
                         {"mount-added risky by file: '' -> 'w', - => profiles/shared2:2: "
                          "spare/one [Led]"}}});
}

TEST(PlantedAgentName, IsTheCauseWhereOthersLoadTheProfile) {
    expectFound(base, {{"the profile is another agent's",
                        {{"profiles/Quiet", "agentName: Quiet", "agentName: Led"},
                         {"profiles/Quiet", "noDefaultMountGroup\n", "\n"}},
                        {"agent-removed dangerous by agent-name: '' -> '', profiles/Quiet:1 => "
                         "profiles/Quiet:1: [Quiet]",
                         "flags-widened notable by agent-name: 'w' -> 'rw', profiles/Quiet:1 => "
                         "profiles/Quiet:1: sys/log [Led]"}}});
}

// Its name is empty, but it is an agent.
TEST(PlantedMount, IsFoundForAnAgentWithoutAName) {
    FileTexts const files = {{"preinit/P", "a,A\n"}, {"profiles/X", "agentName:\na,A,r\n"}};
    support::ComparedDevices devices(files, edited(files, {{"profiles/X", ",r", ",rw"}}));
    auto const difference = devices.difference();
    ASSERT_EQ(difference.changes.size(), 1U);
    EXPECT_EQ(difference.changes.front().agentCount(), 1U);
    EXPECT_THAT(difference.changes.front().paths.front().agents, testing::ElementsAre(""));
}

TEST(PlantedAlias, IsTheCauseInIncludedFilesToo) {
    FileTexts const files = {{"preinit/P", "x/%a,T,createOnMount\nx/%a/y,T,createOnMount\n"},
                             {"profiles/A", "agentName: A\nalias: %who = me\nInclude: shared\n"},
                             {"profiles/B", "agentName: B\nalias: %who = me\nInclude: shared\n"},
                             {"profiles/shared", "x/%who,T,r\nx/%who/y,T,r\n"}};
    expectFound(files, {{"of one of the profiles that include it",
                         {{"profiles/A", "= me", "= you"}},
                         {"mount-removed dangerous by alias: 'r' -> '', profiles/A:2 => "
                          "profiles/A:2: x/me [A], x/me/y [A]",
                          "mount-added notable by alias: '' -> 'r', profiles/A:2 => "
                          "profiles/A:2: x/you [A], x/you/y [A]"}}});
}

TEST(PlantedPreinitLine, IsTheCauseOfAnotherTypeThoughAFormerLineStays) {
    expectFound(base, {{"a later line for the same path",
                        {{"preinit/Zz", "", "sys/clock,Time\n"}},
                        {"type-changed dangerous by preinit: 'Clock' -> 'Time', "
                         "preinit/Paths:1 => preinit/Zz:1: sys/clock [Fan-%slot Led Table-%name]",
                         "preinit-type-changed dangerous by file: 'Clock' -> 'Time', "
                         "preinit/Paths:1 => preinit/Zz:1: sys/clock []"}}});
}

// The agents with active mounts have the directories, too.
TEST(PlantedMount, BringsTheDirectoriesOfActiveMounts) {
    expectFound(
        base,
        {{"a path in a new directory",
          {{"profiles/Table", "State,rw\n", "State,rw\nspare/one,One,w\n"}},
          {"mount-added risky by line: '' -> 'w', - => profiles/Table:5: spare/one [Table-%name]",
           "mount-added harmless follows by line: '' -> 'wtn', - => profiles/Table:5: "
           "spare [Table-%name]"}},
         {"a path in a directory that only reads so far",
          {{"profiles/Table", "State,rw\n", "State,rw\nsys/log,Log,w\n"}},
          {"mount-added risky by line: '' -> 'w', - => profiles/Table:5: sys/log [Table-%name]",
           "flags-widened harmless follows by line: 'tny' -> 'wtn', - => profiles/Table:5: "
           "sys [Table-%name]"}}});
}

TEST(PlantedKeyword, ReachesTheDirectoriesOfActiveMounts) {
    expectFound(base,
                {{"the root flags let directories be written",
                  {{"profiles/Table", "rootFlags: rw\n", ""}},
                  {"root-flags-changed risky by keyword: 'rwt' -> 'rt', profiles/Table:3 => -: "
                   "[Table-%name]",
                   "flags-narrowed harmless follows by keyword: 'wtn' -> 'tny', profiles/Table:3 "
                   "=> -: fan [Table-%name], fan/%name [Table-%name]"}},
                 {"-Active- variants",
                  {{"profiles/Table", "activeMount\n", "activeMount\nmatchActiveName\n"}},
                  {"match-active-name-changed risky by keyword: 'no' -> 'yes', - => "
                   "profiles/Table:3: [Table-%name]"}}});
}

// What changes for a variant as for its plain agent is not told again.
TEST(PlantedInProfileOfVariant, IsToldOfTheVariantWhereItIsOtherwise) {
    FileTexts const files = {
        {"preinit/P", "a,A\nb,B\n"},
        {"profiles/X", "agentName: X-%s\nactiveMount\nmatchActiveName\na,A,r\n"},
        {"profiles/Y", "agentName: X-%t\nb,B,r\n"}};
    expectFound(files, {{"the variant loads the profile, too",
                         {{"profiles/X", "a,A,r", "a,A,rw"}},
                         {"flags-widened risky by line: 'r' -> 'rw', profiles/X:4 => "
                          "profiles/X:4: a [X-%s]"}},
                        {"only the plain agent loads it",
                         {{"profiles/Y", "b,B,r", "b,B,rw"}},
                         {"flags-widened risky by line: 'r' -> 'rw', profiles/Y:2 => "
                          "profiles/Y:2: b [X-%s]"}},
                        {"the variant loads it from now on",
                         {{"profiles/Y", "b,B", "activeMount\nmatchActiveName\nb,B"}},
                         {"mount-added notable by keyword: '' -> 'r', - => profiles/Y:3: "
                          "b [X-Active-*]"}}});
}

TEST(PlantedFault, IsAllThatIsToldOfTheAgentsThatMeetIt) {
    expectFound(base,
                {{"beside other edits of the same file",
                  {{"profiles/Led", "Include: shared\n", "foo\nspare/one,One,rw\n"}},
                  {"fault-added dangerous by line: '' -> 'syntax error: 'foo'', profiles/Led:4 => "
                   "profiles/Led:4: "
                   "[Led]"}}});
    auto const faulty = edited(base, {{"profiles/Led", "alias", "foo\nalias"}});
    expectFound(
        faulty,
        {{"the fault is gone",
          {{"profiles/Led", "foo\n", ""}},
          {"fault-removed harmless by line: 'syntax error: 'foo'' -> '', profiles/Led:2 => -: "
           "[Led]"}},
         {"another one",
          {{"profiles/Led", "foo\n", "bar\n"}},
          {"fault-added dangerous by line: '' -> 'syntax error: 'bar'', profiles/Led:2 => "
           "profiles/Led:2: [Led]",
           "fault-removed harmless by line: 'syntax error: 'foo'' -> '', profiles/Led:2 => "
           "profiles/Led:2: [Led]"}},
         {"the same fault at another line", {{"profiles/Led", "foo\n", "\nfoo\n"}}, {}}});
}

} // namespace
