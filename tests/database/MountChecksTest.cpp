// Paths that a profile mounts twice.
#include "CheckedDevice.h"

namespace {

using KeldaDatabase::pathsMountedTwice;
using support::CheckedDevice;
using testing::ElementsAre;

std::string const preinit = "a,T\nb,T\nx/%n,T,createOnMount\nx/%n/%m,T,createOnMount\n"
                            "CONFIG:c,T\n";

std::string twice(std::string const& path, std::string const& flags) {
    return fmt::format("path '{}' is mounted twice, with {}", path, flags);
}

TEST(PathsMountedTwice, AreNamedTwiceInOneFile) {
    support::expectFindings(
        pathsMountedTwice,
        {{"with different flags",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\na,T,r\nb,T,r\na,T,w\n"}},
          {"profiles/A:4 " +
           twice("a", "the flags 'r' and with the flags 'w': it is one mount with the flags 'rw'") +
           " [profiles/A:2 first mounted here]"}},
         {"with the same flags, or none",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\na,T,\na/,T,\n"}},
          {"profiles/A:3 " +
           twice("a", "no flags and with no flags: it is one mount with no flags") +
           " [profiles/A:2 first mounted here]"}},
         {"three times: each line but the first",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\na,T,r\na,T,r\na,T,r\n"}},
          {"profiles/A:3 " +
               twice("a",
                     "the flags 'r' and with the flags 'r': it is one mount with the flags 'r'") +
               " [profiles/A:2 first mounted here]",
           "profiles/A:4 " +
               twice("a",
                     "the flags 'r' and with the flags 'r': it is one mount with the flags 'r'") +
               " [profiles/A:2 first mounted here]"}},
         {"where an alias makes them the same",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nalias:%l=1\nalias:%m=1\nx/%l,T,r\nx/%m,T,r\n"}},
          {"profiles/A:5 " +
           twice("x/1", "the flags 'r' and with the flags 'r': it is one mount "
                        "with the flags 'r'") +
           " [profiles/A:4 first mounted here]"}},
         {"with a token, in any case",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A-%n\nx/%n,T,r\nx/%N,T,w\n"}},
          {"profiles/A:3 " +
           twice("x/*", "the flags 'r' and with the flags 'w': it is one mount "
                        "with the flags 'rw'") +
           " [profiles/A:2 first mounted here]"}},
         {"in an included file, which two profiles include: once",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nInclude:s\n"},
           {"profiles/B", "agentName:B\nInclude:s\n"},
           {"profiles/s", "a,T,r\na,T,w\n"}},
          {"profiles/s:2 " +
           twice("a", "the flags 'r' and with the flags 'w': it is one mount with the flags 'rw'") +
           " [profiles/s:1 first mounted here]"}}});
}

TEST(PathsMountedTwice, AreNotThoseThatHaveReasonToStandTwice) {
    support::expectFindings(
        pathsMountedTwice,
        {{"in two profiles",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\na,T,r\n"},
           {"profiles/B", "agentName:A\na,T,r\n"}},
          {}},
         {"in a profile and an included file",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\na,T,r\nInclude:s\n"},
           {"profiles/s", "a,T,w\n"}},
          {}},
         {"in two groups: a path is in the group of each line",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nMountGroup:g\na,T,r\nMountGroup:h\na,T,r\n"}},
          {}},
         {"where one was refused",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A\na,T,r\na,T,?\nn,T,r\nn,T,r\n"}},
          {}},
         {"with two tokens, whose values may differ",
          {{"preinit/P", preinit}, {"profiles/A", "agentName:A-%f-%t\nx/%f,T,r\nx/%t,T,w\n"}},
          {}},
         {"with an alias that has another value",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A-%f-%t\nalias:%n=%f\nx/%n,T,r\nalias:%n=%t\nx/%n,T,r\n"}},
          {}},
         {"a config path that ConfigMountProfile brings as well",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nInclude:ConfigMountProfile\nc,T,r\n"}},
          {}}});
}

TEST(PathsMountedTwice, ShowAtTheGroupThatIsOpenedAgain) {
    CheckedDevice device(
        {{"preinit/P", preinit},
         {"profiles/A", "agentName:A\nMountGroup:g\na,T,r\nMountGroup:h\nb,T,r\nMountGroup:g\n"
                        "a,T,r\n"}});
    EXPECT_EQ(device.found(pathsMountedTwice).size(), 1U);
}

TEST(PathsMountedTwice, ShowOnceAtTheIncludeLineOfAFileThatIsIncludedTwice) {
    support::expectFindings(
        pathsMountedTwice,
        {{"by name and by pattern",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nInclude:s\nInclude: s*\n"},
           {"profiles/s", "a,T,r\nb,T,r\n"}},
          {"profiles/A:3 's*' takes in files that the profile has included already [profiles/A:2 "
           "first included here]"}},
         {"for another value of an alias",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A-%f-%t\nalias:%n=%f\nInclude:s\nalias:%n=%t\nInclude:s\n"},
           {"profiles/s", "x/%n,T,r\n"}},
          {}},
         {"for another group",
          {{"preinit/P", preinit},
           {"profiles/A", "agentName:A\nInclude:s\nMountGroup:g\nInclude:s\n"},
           {"profiles/s", "a,T,r\n"}},
          {}}});
}

TEST(PathsMountedTwice, AreFoundAmongManyTokens) {
    CheckedDevice device({{"preinit/P", preinit},
                          {"profiles/A", "agentName:A-%f-%t\nx/%f,T,r\nx/%t,T,r\nx/%t,T,w\n"}});
    EXPECT_THAT(device.found(pathsMountedTwice),
                ElementsAre("profiles/A:4 " +
                            twice("x/*", "the flags 'r' and with the flags 'w': it is one mount "
                                         "with the flags 'rw'") +
                            " [profiles/A:3 first mounted here]"));
}

TEST(PathsMountedTwice, KnowByWhichIncludesAndAgentsTheyAreMet) {
    CheckedDevice device(
        {{"preinit/P", preinit},
         {"profiles/A", "agentName:A-1\nactiveMount\nmatchActiveName\nInclude:s\n"},
         {"profiles/B", "agentName:B-1\nactiveMount\nmatchActiveName\nInclude:s\n"},
         {"profiles/C", "agentName:C\na,T,r\n"},
         {"profiles/s", "a,T,r\na,T,w\n"}});
    auto const findings = pathsMountedTwice(device.loaded());
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_THAT(findings[0].includes, ElementsAre(0U, 1U));
    EXPECT_THAT(findings[0].agents, ElementsAre("A-1", "B-1"));
}

} // namespace
