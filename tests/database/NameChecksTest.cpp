// Names that differ in nothing but case.
#include "CheckedDevice.h"

namespace {

using KeldaDatabase::namesDifferingInCase;
using support::CheckedDevice;

std::string pair(std::string const& kind, std::string const& name, std::string const& other) {
    return fmt::format("{} '{}' and '{}' differ only in case", kind, name, other);
}
std::string at(std::string const& place) {
    return " [" + place + " spelled differently here]";
}

TEST(NamesDifferingInCase, AreFoundAmongFilesAgentsAndGroups) {
    support::expectFindings(
        namesDifferingInCase,
        {{"files of the profile folder",
          {{"profiles/Fan", "agentName:A\n"}, {"profiles/fan", "agentName:B\n"}},
          {"profiles/fan:1 " + pair("files", "fan", "Fan") + at("profiles/Fan:1")}},
         {"agent names",
          {{"profiles/1", "agentName:Fan\n"}, {"profiles/2", "# c\nagentName: FAN\n"}},
          {"profiles/2:2 " + pair("agent names", "FAN", "Fan") + at("profiles/1:1")}},
         {"agent names with tokens",
          {{"profiles/1", "agentName:Fan-%a\n"}, {"profiles/2", "agentName:fan-%a\n"}},
          {"profiles/2:1 " + pair("agent names", "fan-%a", "Fan-%a") + at("profiles/1:1")}},
         {"the rarer name is the slip",
          {{"profiles/1", "agentName:fan\n"},
           {"profiles/2", "agentName:Fan\n"},
           {"profiles/3", "agentName:Fan\n"}},
          {"profiles/1:1 " + pair("agent names", "fan", "Fan") + at("profiles/2:1")}},
         {"groups of one agent, in two profiles",
          {{"preinit/P", "a,T\n"},
           {"profiles/1", "agentName:A\nMountGroup:fans\na,T,r\n"},
           {"profiles/2", "agentName:A\n\nMountGroup:Fans\na,T,r\n"}},
          {"profiles/2:3 " + pair("mount groups", "Fans", "fans") + at("profiles/1:2")}}});
}

TEST(NamesDifferingInCase, AreFoundAmongPathsAndTypes) {
    support::expectFindings(
        namesDifferingInCase,
        {{"a directory: once, whatever is below it",
          {{"preinit/P", "hw/fan/a,T\nhw/Fan/b,T\nhw/Fan/c,T\nhw/fan/d,T\nhw/fan/e,T\n"}},
          {"preinit/P:2 " + pair("paths", "hw/Fan", "hw/fan") + at("preinit/P:1")}},
         {"a directory with less below it: the slip, though it stands first",
          {{"preinit/P", "hw/Fan/a,T\nhw/fan/b,T\nhw/fan/c,T\n"}},
          {"preinit/P:1 " + pair("paths", "hw/Fan", "hw/fan") + at("preinit/P:2")}},
         {"paths with tokens",
          {{"preinit/P", "x/%a/s,T,createOnMount\nx/%A/S,T,createOnMount\n"}},
          {"preinit/P:2 " + pair("paths", "x/*/S", "x/*/s") + at("preinit/P:1")}},
         {"values of aliases",
          {{"preinit/P", "x/%a,T,createOnMount\n"},
           {"profiles/A",
            "agentName:A\nalias:%l=left\nalias:%m=Left\nx/%l,T,rw\nx/%m,T,rw\nx/%l,T,\n"}},
          {"profiles/A:5 " + pair("paths", "x/Left", "x/left") + at("profiles/A:4")}},
         {"each further spelling",
          {{"preinit/P", "fan,T\nFan,T\nFAN,T\n"}},
          {"preinit/P:2 " + pair("paths", "Fan", "fan") + at("preinit/P:1"),
           "preinit/P:3 " + pair("paths", "FAN", "fan") + at("preinit/P:1")}},
         {"types",
          {{"preinit/P", "a,Sys::Log\nb,Sys::log\nc,Sys::log\n"}},
          {"preinit/P:1 " + pair("types", "Sys::Log", "Sys::log") + at("preinit/P:2")}},
         {"types of conditional mounts that no line declares",
          {{"preinit/P", "a,T\n"},
           {"profiles/A", "agentName:A\na,T,r\nMountGroup:g\nCondition:x\nb,t,r\n"}},
          {"profiles/A:5 " + pair("types", "t", "T") + at("preinit/P:1")}}});
}

TEST(NamesDifferingInCase, AreNotNamesThatHaveNothingToDoWithEachOther) {
    support::expectFindings(
        namesDifferingInCase,
        {{"preinit files", {{"preinit/P", "a,T\n"}, {"preinit/p", "b,T\n"}}, {}},
         {"groups of two agents",
          {{"preinit/P", "a,T\n"},
           {"profiles/1", "agentName:A\nMountGroup:g\na,T,r\n"},
           {"profiles/2", "agentName:B\nMountGroup:G\na,T,r\n"}},
          {}},
         {"tokens and aliases, known in any case",
          {{"preinit/P", "x/%a,T,createOnMount\n"},
           {"profiles/1", "agentName:A-%slot\nx/%Slot,T,rw\n"},
           {"profiles/2", "agentName:A-%SLOT\nx/%slot,T,rw\n"}},
          {}},
         {"a name with tokens and one without",
          {{"profiles/1", "agentName:Fan-%a\n"}, {"profiles/2", "agentName:fan\n"}},
          {}},
         {"names in two directories", {{"preinit/P", "a/fan,T\nb/Fan,T\n"}}, {}},
         {"type columns that do not count",
          {{"preinit/P", "a,T\n"}, {"profiles/1", "agentName:A\na,t,r\n"}},
          {}},
         {"a path that was refused",
          {{"preinit/P", "a,T\n"}, {"profiles/1", "agentName:A\nA,T,r\n"}},
          {}},
         {"letters beyond ASCII", {{"preinit/P", "\xc3\xa4,T\n\xc3\x84,T\n"}}, {}}});
}

TEST(NamesDifferingInCase, ShowTheNameItself) {
    CheckedDevice device({{"preinit/P", "hw/fan/a,T\nhw/Fan/b,T\n"},
                          {"profiles/A", "agentName:A\nMountGroup:g\nMountGroup:G\n"}});
    auto const findings = namesDifferingInCase(device.loaded());
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].subject.text, "G");
    EXPECT_EQ(findings[1].subject.field, 0);
    EXPECT_EQ(findings[1].subject.text, "hw/Fan");
}

} // namespace
