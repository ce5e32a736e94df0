// Type columns that are not right, and groups without mounts.
#include "CheckedDevice.h"

namespace {

using KeldaDatabase::differingTypeColumns;
using KeldaDatabase::emptyGroups;
using support::CheckedDevice;
using testing::ElementsAre;

std::string const preinit = "a,T\nx/%n,Old,createOnMount\nx/%m,New,createOnMount\nCONFIG:c,T\n";

std::string differs(std::string const& written, std::string const& path, std::string const& type) {
    return fmt::format(
        "type '{}' is not the type of path '{}': the preinit files give it the type '{}'", written,
        path, type);
}

TEST(DifferingTypeColumns, NameAnotherTypeThanThePreinitFiles) {
    support::expectFindings(
        differingTypeColumns,
        {{"another type",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\na , T :: U , r # why\n"}},
          {"profiles/A:2 " + differs("T::U", "a", "T") + " [preinit/P:1 declared here]"}},
         {"another case",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\na,t,r\n"}},
          {"profiles/A:2 " + differs("t", "a", "T") + " [preinit/P:1 declared here]"}},
         {"the type of a line that another one replaced",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A-%s\nx/%s,Old,r\n"}},
          {"profiles/A:2 " + differs("Old", "x/%s", "New") + " [preinit/P:3 declared here]"}},
         {"in a continued line",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\na,\\\n  U,\\\n  r\n"}},
          {"profiles/A:2 " + differs("U", "a", "T") + " [preinit/P:1 declared here]"}},
         {"in a file that two profiles include: once",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nInclude:s\n"},
           {"profiles/B", "agentName:B\nInclude:s\n"},
           {"profiles/s", "a,U,r\n"}},
          {"profiles/s:1 " + differs("U", "a", "T") + " [preinit/P:1 declared here]"}},
         {"a directory that no line declares",
          {{"preinit/P", "d/a,T\n"}, {"profiles/A", "agentName:A\nd,U,r\n"}},
          {"profiles/A:2 " + differs("U", "d", "Fen::Dir")}},
         {"of a conditional mount that has a type",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nMountGroup:g\nCondition:x\na,U,r\n"}},
          {"profiles/A:4 " + differs("U", "a", "T") + " [preinit/P:1 declared here]"}}});
}

TEST(DifferingTypeColumns, AreNotThoseThatSayNothingWrong) {
    support::expectFindings(
        differingTypeColumns,
        {{"the same type, with blanks",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\na, T ,r\n"}},
          {}},
         {"no type", {{"preinit/P", preinit}, {"profiles/A", "agentName:A\na,,r\n"}}, {}},
         {"a mount that was refused",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\nb,U,r\na,U,?\n"}},
          {}},
         {"a conditional mount that takes the type written",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nMountGroup:g\nCondition:x\nb,U,r\n"}},
          {}},
         {"what ConfigMountProfile brings",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\nInclude:ConfigMountProfile\n"}},
          {}}});
}

TEST(DifferingTypeColumns, ShowTheColumn) {
    CheckedDevice device({{"preinit/P", preinit}, {"profiles/A", "agentName:A\na,U,r\n"}});
    auto const findings = differingTypeColumns(device.loaded());
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].subject.field, 1);
    EXPECT_EQ(findings[0].subject.text, "U");
}

TEST(EmptyGroups, HoldNoMounts) {
    support::expectFindings(
        emptyGroups,
        {{"at the end of the profile",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\na,T,r\nMountGroup: g ,5\n"}},
          {"profiles/A:3 mount group 'g' holds no mounts"}},
         {"before another one",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nMountGroup:g\nMountGroup:h\na,T,r\n"}},
          {"profiles/A:2 mount group 'g' holds no mounts"}},
         {"with an include in the next group only",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nInclude:s*\nMountGroup:g\nMountGroup:h\nInclude:s*\n"},
           {"profiles/s", "a,T,r\n"}},
          {"profiles/A:3 mount group 'g' holds no mounts"}},
         {"with an include in the next profile only",
          {{"profiles/A", "agentName:A\nMountGroup:g\n"},
           {"profiles/B", "agentName:B\n\nInclude:s*\n"}},
          {"profiles/A:2 mount group 'g' holds no mounts"}}});
}

TEST(EmptyGroups, AreNotThoseWithALineBelow) {
    support::expectFindings(
        emptyGroups,
        {{"a mount",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\nMountGroup:g\na,T,r\n"}},
          {}},
         {"a mount that was refused", {{"profiles/A", "agentName:A\nMountGroup:g\nb,T,r\n"}}, {}},
         {"an included mount",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nMountGroup:g\nInclude:s\n"},
           {"profiles/s", "a,T,r\n"}},
          {}},
         {"an include that brings nothing: others fill the group",
          {{"profiles/A", "agentName:A\nMountGroup:g\nInclude:s*\n"}},
          {}}});
}

} // namespace
