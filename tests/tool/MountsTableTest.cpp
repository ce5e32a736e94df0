// kelda mounts as a table for people: whole outputs.
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using support::Device;
using support::KeldaProgram;
using support::Words;

support::Outcome mounts(Device const& device, std::string const& agent, Words const& more = {}) {
    return KeldaProgram().run(Words{"mounts", agent} +
                              support::foldersOf(device.directory().path()) + more);
}

TEST(MountsTable, AlignsItsColumnsAndEndsInTotals) {
    Device device;
    device.preinit("P", "fan/%slot/status,Fan::Status,createOnMount\nclock,Clock\n")
        .profile("Fan", "agentName:Fan-%slot\nfan/%slot/status,Fan::Status,rw\n")
        .profile("DefaultMountGroup", "clock,Clock,r\n");
    auto const outcome = mounts(device, "Fan-3");
    EXPECT_EQ(outcome.out,
              "PATH          TYPE         FLAGS  KIND      GROUPS        FILES\n"
              "clock         Clock        r      explicit  Fan::default  DefaultMountGroup\n"
              "fan/3/status  Fan::Status  rw     explicit  Fan::         Fan\n"
              "\n"
              "Agent Fan-3: passive mounts, root flags rtp, no connection flags\n"
              "2 mounts (2 explicit, 0 intermediate) in 2 groups from 2 files\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST(MountsTable, IsTheFormatWhenNoneIsNamed) {
    Device const device;
    EXPECT_EQ(mounts(device, "A").out, mounts(device, "A", {"--format", "table"}).out);
}

TEST(MountsTable, OfAnAgentWithoutProfileIsEmptyAndNoted) {
    Device const device;
    auto const outcome = mounts(device, "Nobody");
    EXPECT_EQ(outcome.out, "PATH  TYPE  FLAGS  KIND  GROUPS  FILES\n"
                           "\n"
                           "Agent Nobody: active mounts, no root flags, no connection flags\n"
                           "0 mounts (0 explicit, 0 intermediate) in 0 groups from 0 files\n");
    EXPECT_EQ(outcome.err, "kelda: note: no mount profile is for agent 'Nobody'\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST(MountsTable, ShowsEveryKeywordOfTheAgent) {
    Device device;
    device.preinit("P", "a,T\n")
        .profile("A", "agentName:A\nrootFlags:rS\nconnectionFlags:NE\nnoDefaultMountGroup\n"
                      "subAgent:A-two\nsubAgent:A-one\na,T,r\n");
    EXPECT_EQ(mounts(device, "A").out,
              "PATH  TYPE  FLAGS  KIND      GROUPS  FILES\n"
              "a     T     r      explicit  A::     A\n"
              "\n"
              "Agent A: passive mounts, root flags rStp, connection flags NE, no default mount "
              "group, sub-agents A-two, A-one\n"
              "1 mount (1 explicit, 0 intermediate) in 1 group from 1 file\n");
}

TEST(MountsTable, NamesEveryGroupAndFileOfAPathOnce) {
    Device device;
    device.preinit("P", "a,T\n")
        .profile("A", "agentName:A\na,T,r\na,T,r\nMountGroup:g\na,T,r\n")
        .profile("B", "agentName:A\na,T,w\n");
    EXPECT_EQ(mounts(device, "A").out,
              "PATH  TYPE  FLAGS  KIND      GROUPS     FILES\n"
              "a     T     rw     explicit  A::, A::g  A, B\n"
              "\n"
              "Agent A: passive mounts, root flags rtp, no connection flags\n"
              "1 mount (1 explicit, 0 intermediate) in 2 groups from 2 files\n");
}

TEST(MountsTable, ShowsWhatIsMissingAsADash) {
    Device device;
    device.preinit("P", "a/b,T\n").profile("A", "agentName:A\nactiveMount\na/b,T,r\nc,,\n");
    auto const outcome = mounts(device, "A");
    EXPECT_EQ(outcome.status, 1); // c has no preinit line
    device.preinit("P", "a/b,T\nc,T\n");
    EXPECT_EQ(mounts(device, "A").out,
              "PATH  TYPE      FLAGS  KIND          GROUPS  FILES\n"
              "a     Fen::Dir  tny    intermediate  -       -\n"
              "a/b   T         r      explicit      A::     A\n"
              "c     T         -      explicit      A::     A\n"
              "\n"
              "Agent A: active mounts, root flags rt, no connection flags\n"
              "3 mounts (2 explicit, 1 intermediate) in 1 group from 1 file\n");
}

TEST(MountsTable, AlignsByTheColumnsThatCharactersTake) {
    Device device;
    device.preinit("P", "caf\u00e9,T\ncafe\u0301,T\n\u6e29\u5ea6,T\nplain,T\n")
        .profile("A", "agentName:A\ncaf\u00e9,T,r\ncafe\u0301,T,r\n\u6e29\u5ea6,T,r\nplain,T,r\n");
    EXPECT_EQ(mounts(device, "A").out,
              "PATH   TYPE  FLAGS  KIND      GROUPS  FILES\n"
              "cafe\u0301   T     r      explicit  A::     A\n"
              "caf\u00e9   T     r      explicit  A::     A\n"
              "plain  T     r      explicit  A::     A\n"
              "\u6e29\u5ea6   T     r      explicit  A::     A\n"
              "\n"
              "Agent A: passive mounts, root flags rtp, no connection flags\n"
              "4 mounts (4 explicit, 0 intermediate) in 1 group from 1 file\n");
}

TEST(MountsTable, IsNeverCutHoweverLongAPath) {
    Device device;
    std::string const path(900, 'p');
    device.preinit("P", path + ",T\n").profile("A", "agentName:A\n" + path + ",T,r\n");
    EXPECT_NE(mounts(device, "A").out.find(path + "  T     r "), std::string::npos);
    auto const onTerminal = KeldaProgram().runOnTerminal(
        Words{"mounts", "A"} + support::foldersOf(device.directory().path()));
    EXPECT_NE(onTerminal.out.find(path + "  T     r "), std::string::npos);
}

} // namespace
