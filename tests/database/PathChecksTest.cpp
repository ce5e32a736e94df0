// Declarations and mounts that do not go together.
#include "CheckedDevice.h"

namespace {

using KeldaDatabase::pathsNeverWritten;
using KeldaDatabase::preinitsNeverMounted;
using KeldaDatabase::redefinedPreinitTypes;
using support::CheckedDevice;
using support::FileTexts;
using testing::ElementsAre;
using testing::IsEmpty;

std::string replaced(std::string const& path, std::string const& type, std::string const& former) {
    return fmt::format("path '{}' gets the type '{}' here, in the place of '{}': the last line "
                       "counts",
                       path, type, former);
}

TEST(RedefinedPreinitTypes, AreReplacedByALaterLine) {
    std::string const former = " declared with another type here]";
    support::expectFindings(
        redefinedPreinitTypes,
        {{"one path",
          {{"preinit/P", "a,T\nb,T\na/,U\n"}},
          {"preinit/P:3 " + replaced("a", "U", "T") + " [preinit/P:1" + former}},
         {"one path with different tokens, in two files",
          {{"preinit/P", "x/%a/%b,T,createOnMount\n"}, {"preinit/Q", "x/%c/%c,U,createOnMount\n"}},
          {"preinit/Q:1 " + replaced("x/*/*", "U", "T") + " [preinit/P:1" + former}},
         {"a short form",
          {{"preinit/P", "cell/%cellId/a,T\n%cellPath/a,U\n%PEERCELLPATH/a,U\n"}},
          {"preinit/P:2 " + replaced("cell/*/a", "U", "T") + " [preinit/P:1" + former}},
         {"back and forth",
          {{"preinit/P", "a,T\na,U\na,T\n"}},
          {"preinit/P:2 " + replaced("a", "U", "T") + " [preinit/P:1" + former,
           "preinit/P:3 " + replaced("a", "T", "U") + " [preinit/P:2" + former}},
         {"no type",
          {{"preinit/P", "a,T\na,\n"}},
          {"preinit/P:2 " + replaced("a", "", "T") + " [preinit/P:1" + former}},
         {"the same type again", {{"preinit/P", "a,T\na,T\n"}}, {}},
         {"a literal name and a token: two paths",
          {{"preinit/P", "s/1,T\ns/%slot,U,createOnMount\n"}},
          {}},
         {"a directory that only a path below it made one", {{"preinit/P", "a/b,T\na,U\n"}}, {}},
         {"a line that was refused", {{"preinit/P", "a,T\na,U,createOnMount\n"}}, {}}});
}

TEST(PreinitsNeverMounted, AreNamedByNoProfile) {
    support::expectFindings(
        preinitsNeverMounted,
        {{"a plain path",
          {{"preinit/P", "a,T\nb,T\n"}, {"profiles/A", "agentName:A\na,T,r\n"}},
          {"preinit/P:2 no profile mounts path 'b'"}},
         {"a path with tokens",
          {{"preinit/P", "x/%a,T,createOnMount\nx/%a/y,T,createOnMount\n"},
           {"profiles/A", "agentName:A-%s\nx/%s,T,r\n"}},
          {"preinit/P:2 no profile mounts path 'x/*/y'"}},
         {"the last of two lines for one path",
          {{"preinit/P", "a,T\nb,T\na,U\n"}, {"profiles/A", "agentName:A\nb,T,r\n"}},
          {"preinit/P:3 no profile mounts path 'a'"}},
         {"a path whose mount was refused",
          {{"preinit/P", "a,T\n"}, {"profiles/A", "agentName:A\na,T,?\n"}},
          {"preinit/P:1 no profile mounts path 'a'"}},
         {"a part of a name",
          {{"preinit/P", "fan-%a,T,createOnMount\nfan-%a-x,T,createOnMount\n"},
           {"profiles/A", "agentName:A\nalias:%n=7\nfan-%n,T,r\n"}},
          {"preinit/P:2 no profile mounts path 'fan-*-x'"}}});
}

TEST(PreinitsNeverMounted, AreNotThoseThatSomeMountIsAnInstanceOf) {
    support::expectFindings(
        preinitsNeverMounted,
        {{"tokens of agent names and values of aliases, mixed",
          {{"preinit/P", "x/%a/%b/c,T,createOnMount\n"},
           {"profiles/A", "agentName:A-%s\nalias:%n=1\nx/%s/%n/c,T,r\n"}},
          {}},
         {"the cells",
          {{"preinit/P", "%cellPath/x,T\n"}, {"profiles/A", "agentName:A\n%peerCellPath/x,T,r\n"}},
          {}},
         {"an alias that is empty",
          {{"preinit/P", "x/%a,T,createOnMount\nfan%a/b,T,createOnMount\n"},
           {"profiles/A", "agentName:A\nalias:%n=\nx/%n,T,r\nfan%n/b,T,r\n"}},
          {}},
         {"an alias with a slash in it",
          {{"preinit/P", "x/%a/y,T,createOnMount\n"},
           {"profiles/A", "agentName:A\nalias:%n=b/c/d\nx/%n/y,T,r\n"}},
          {}},
         {"an included file and a default group",
          {{"preinit/P", "a,T\nb,T\n"},
           {"profiles/A", "agentName:A\nInclude:s\n"},
           {"profiles/DefaultMountGroup", "b,T,r\n"},
           {"profiles/s", "a,T,r\n"}},
          {}},
         {"directories: of a line of their own, or above a path",
          {{"preinit/P", "a,Fen::Dir\nb,T\nb/c,T\n"}, {"profiles/A", "agentName:A\nb/c,T,r\n"}},
          {}},
         {"configuration that ConfigMountProfile brings",
          {{"preinit/P", "CONFIG:a,T\n"},
           {"profiles/A", "agentName:A\nInclude:ConfigMountProfile\n"}},
          {}},
         {"anything where there is no profile", {{"preinit/P", "a,T\n"}}, {}}});
}

std::string unwritten(std::string const& path) {
    return fmt::format("path '{}' is read here, and no agent writes it", path);
}

TEST(PathsNeverWritten, AreReadOnly) {
    support::expectFindings(
        pathsNeverWritten,
        {{"at the first reader",
          {{"preinit/P", "a,T\n"},
           {"profiles/A", "agentName:A\na,T,r\n"},
           {"profiles/B", "agentName:B\na,T,r\n"}},
          {"profiles/A:2 " + unwritten("a")}},
         {"once for a path with a token, whatever its value",
          {{"preinit/P", "x/%n,T,createOnMount\n"},
           {"profiles/A", "agentName:A\nalias:%l=1\nalias:%m=2\nx/%l,T,r\nx/%m,T,r\n"}},
          {"profiles/A:4 " + unwritten("x/1")}},
         {"in an included file: at its line",
          {{"preinit/P", "a,T\n"},
           {"profiles/A", "agentName:A\nInclude:s\n"},
           {"profiles/s", "\na,T,r\n"}},
          {"profiles/s:2 " + unwritten("a")}},
         {"with another path written that only looks alike",
          {{"preinit/P", "x/%n/a,T,createOnMount\nx/%n/b,T,createOnMount\n"},
           {"profiles/A", "agentName:A-%s\nx/%s/a,T,r\nx/%s/b,T,w\n"}},
          {"profiles/A:2 " + unwritten("x/*/a")}},
         {"where the writer's mount was refused",
          {{"preinit/P", "a,T\n"}, {"profiles/A", "agentName:A\na,T,r\na,T,w?\n"}},
          {"profiles/A:2 " + unwritten("a")}},
         {"a conditional mount that no line declares",
          {{"profiles/A", "agentName:A\nMountGroup:g\nCondition:x\na,T,r\n"}},
          {"profiles/A:4 " + unwritten("a")}},
         {"configuration that shows by nothing, and a plain path named like configuration",
          {{"preinit/P", "CONFIG:a/config,C\nx/%n/cfg,T,createOnMount\nb/config,T\n"},
           {"profiles/A", "agentName:A-%s\nx/%s/cfg,T,r\nb/config,T,r\n"}},
          {"profiles/A:2 " + unwritten("x/*/cfg"), "profiles/A:3 " + unwritten("b/config")}}});
}

TEST(PathsNeverWritten, AreNotThoseThatSomebodyMayWrite) {
    support::expectFindings(
        pathsNeverWritten,
        {{"the same agent, on another line",
          {{"preinit/P", "a,T\n"}, {"profiles/A", "agentName:A\na,T,r\na,T,w\n"}},
          {}},
         {"another agent, later",
          {{"preinit/P", "a,T\n"},
           {"profiles/A", "agentName:A\na,T,r\n"},
           {"profiles/B", "agentName:B\na,T,cw\n"}},
          {}},
         {"one value is read, any value is written",
          {{"preinit/P", "x/%n,T,createOnMount\n"},
           {"profiles/A", "agentName:A\nalias:%n=1\nx/%n,T,r\n"},
           {"profiles/B", "agentName:B-%s\nx/%s,T,w\n"}},
          {}},
         {"any value is read, one value is written",
          {{"preinit/P", "x/%n,T,createOnMount\n"},
           {"profiles/A", "agentName:A-%s\nx/%s,T,r\n"},
           {"profiles/B", "agentName:B\nalias:%n=1\nx/%n,T,w\n"}},
          {}},
         {"the other cell writes it",
          {{"preinit/P", "%cellPath/s,T\n"},
           {"profiles/A", "agentName:A\n%peerCellPath/s,T,r\n"},
           {"profiles/B", "agentName:B\n%cellPath/s,T,w\n"}},
          {}},
         {"configuration, declared as such",
          {{"preinit/P", "CONFIG:a,T\n"}, {"profiles/A", "agentName:A\na,T,r\n"}},
          {}},
         {"configuration below a token: the name of configuration elsewhere",
          {{"preinit/P", "CONFIG:a/config,T\nx/%n/config,U,createOnMount\n"},
           {"profiles/A", "agentName:A-%s\nx/%s/config,U,r\n"},
           {"profiles/B", "agentName:B\nalias:%n=1\nx/%n/config,U,r\n"}},
          {}},
         {"configuration below a token: the type of configuration elsewhere",
          {{"preinit/P", "CONFIG:a/config,T\nx/%n,T,createOnMount\n"},
           {"profiles/A", "agentName:A-%s\nx/%s,T,r\n"}},
          {}},
         {"a directory",
          {{"preinit/P", "d/a,T\n"}, {"profiles/A", "agentName:A\nd,Fen::Dir,r\n"}},
          {}},
         {"neither read nor written",
          {{"preinit/P", "a,T\nb,T\n"}, {"profiles/A", "agentName:A\na,T,\nb,T,f\n"}},
          {}}});
}

TEST(PathsNeverWritten, KnowTheAgentsAndTheInclude) {
    CheckedDevice device({{"preinit/P", "a,T\n"},
                          {"profiles/A", "agentName:A\nInclude:s\n"},
                          {"profiles/s", "a,T,r\n"}});
    auto const findings = pathsNeverWritten(device.loaded());
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_THAT(findings[0].agents, ElementsAre("A"));
    EXPECT_THAT(findings[0].includes, ElementsAre(0U));
}

TEST(PathChecks, FindNothingInAnEmptyDevice) {
    for (auto* const check : {redefinedPreinitTypes, preinitsNeverMounted, pathsNeverWritten})
        EXPECT_THAT(CheckedDevice(FileTexts()).found(check), IsEmpty());
}

} // namespace
