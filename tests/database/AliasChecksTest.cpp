// Aliases that nobody uses, and names that are given twice.
#include "CheckedDevice.h"

namespace {

using KeldaDatabase::redefinedAliases;
using KeldaDatabase::unusedAliases;
using support::CheckedDevice;
using support::FileTexts;

std::string const preinit = "a/%x,T,createOnMount\n%x/%y,T,createOnMount\n";

TEST(UnusedAliases, AreThoseThatNoLineNames) {
    support::expectFindings(
        unusedAliases,
        {{"never used",
          {{"profiles/A", "agentName:A\nalias: %one = 1\n"}},
          {"profiles/A:2 alias '%one' is never used"}},
         {"used only above",
          {{"preinit/P", "a/%x,T,createOnMount\n"},
           {"profiles/A", "agentName:A-%x\na/%x,T,r\nalias:%y=1\n"}},
          {"profiles/A:3 alias '%y' is never used"}},
         {"used by an alias that is not used",
          {{"profiles/A", "agentName:A\nalias:%a=1\nalias:%b=%a\n"}},
          {"profiles/A:3 alias '%b' is never used"}},
         {"not used before it is defined again",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nalias:%a=1\nalias:%A=2\na/%a,T,r\n"}},
          {"profiles/A:2 alias '%a' is not used before it is defined again [profiles/A:3 defined "
           "again here]"}},
         {"used in another profile only",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nalias:%a=1\n"},
           {"profiles/B", "agentName:B\nalias:%a=1\na/%a,T,r\n"}},
          {"profiles/A:2 alias '%a' is never used"}},
         {"named as the beginning of another name",
          {{"profiles/A", "agentName:A\nalias:%a=1\nb/%ab,T,r\n"}},
          {"profiles/A:2 alias '%a' is never used"}}});
}

TEST(UnusedAliases, AreNotThoseThatSomeLineNames) {
    support::expectFindings(
        unusedAliases,
        {{"in a path, in any case",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\nalias:%a=1\na/%A,T,r\n"}},
          {}},
         {"in the name of a sub-agent",
          {{"profiles/A", "agentName:A\nalias:%a=1\nsubAgent:B-%a\n"}},
          {}},
         {"in an included file",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nalias:%a=1\nInclude:s\n"},
           {"profiles/s", "a/%a,T,r\n"}},
          {}},
         {"before it is defined again",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nalias:%a=1\na/%a,T,r\nalias:%a=2\na/%a,T,r\n"}},
          {}},
         {"in a line that was refused, whose aliases were not looked up",
          {{"profiles/A", "agentName:A\nalias:%a=1\nb/x%A/c,T,r\n"}},
          {}},
         {"a token: it is needed to match", {{"profiles/A", "agentName:A-%x-%y\n"}}, {}},
         {"a name that is a fault already", {{"profiles/A", "agentName:A\nalias:%1=1\n"}}, {}}});
}

TEST(RedefinedAliases, HaveTheNameOfAnAliasAboveOrOfOneThatEveryProfileHas) {
    std::string const again = "' is defined again: the lines that follow have this value ";
    support::expectFindings(
        redefinedAliases,
        {{"an alias line, in any case",
          {{"profiles/A", "agentName:A\nalias:%fan=1\nalias:%FAN=2\n"}},
          {"profiles/A:3 alias '%FAN" + again + "[profiles/A:2 first defined here]"}},
         {"each further line",
          {{"profiles/A", "agentName:A\nalias:%a=1\nalias:%a=1\nalias:%a=3\n"}},
          {"profiles/A:3 alias '%a" + again + "[profiles/A:2 first defined here]",
           "profiles/A:4 alias '%a" + again + "[profiles/A:2 first defined here]"}},
         {"a token of the agent name",
          {{"profiles/A", "# x\nagentName:A-%slot$\nalias:%Slot=%slot?%slot:1\n"}},
          {"profiles/A:3 alias '%Slot' replaces a token of the agent name for the lines that "
           "follow [profiles/A:2 the agent name stands here]"}},
         {"a token twice",
          {{"profiles/A", "agentName:A-%x-%X\n"}},
          {"profiles/A:1 token '%X' stands in the agent name twice: the last one counts"}},
         {"what every profile has",
          {{"profiles/A", "agentName:A\nalias:%cellId=1\nalias:%PEERCELLID=1\nalias:%sysname=1\n"
                          "alias:%sliceId=1\nalias:%agentString=1\n"}},
          {"profiles/A:2 alias '%cellId' hides the alias of this name that every profile has",
           "profiles/A:3 alias '%PEERCELLID' hides the alias of this name that every profile has",
           "profiles/A:4 alias '%sysname' hides the alias of this name that every profile has",
           "profiles/A:5 alias '%sliceId' hides the alias of this name that every profile has",
           "profiles/A:6 alias '%agentString' hides the alias of this name that every profile "
           "has"}},
         {"a token with such a name",
          {{"profiles/A", "agentName:A-%sysname\n"}},
          {"profiles/A:1 token '%sysname' hides the alias of this name that every profile has"}},
         {"different names, and one name in two profiles",
          {{"profiles/A", "agentName:A-%x\nalias:%a=1\nalias:%b=2\n"},
           {"profiles/B", "agentName:A-%x\nalias:%a=2\n"}},
          {}},
         {"a name that is a fault already",
          {{"profiles/A", "agentName:A\nalias:%1=1\nalias:%1=2\n"}},
          {}}});
}

TEST(RedefinedAliases, AreShownByTheirNames) {
    CheckedDevice device(FileTexts{{"profiles/A", "agentName:A\nalias:%sliceId=%sliceId\n"}});
    auto const findings = redefinedAliases(device.loaded());
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].subject.field, KeldaDatabase::Subject::behindColon);
    EXPECT_EQ(findings[0].subject.text, "%sliceId");
    EXPECT_THAT(findings[0].agents, testing::ElementsAre("A"));
}

} // namespace
