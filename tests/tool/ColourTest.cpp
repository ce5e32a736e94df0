// Colour: on a terminal only, and never against the user's will.
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using support::Device;
using support::KeldaProgram;
using support::Words;

class Colour : public testing::Test {
  protected:
    Colour() {
        device_.preinit("P", "a/b,T\n").profile("A", "agentName:A\nactiveMount\na/b,T,r\n");
    }
    Words mounts() const {
        return Words{"mounts", "A"} + support::foldersOf(device_.directory().path());
    }
    std::string plain() const { return KeldaProgram().run(mounts()).out; }

    Device device_;
};

TEST_F(Colour, MarksTheHeadingsAndTheIntermediatePathsOnATerminal) {
    EXPECT_EQ(KeldaProgram().runOnTerminal(mounts()).out,
              "\x1b[1mPATH  TYPE      FLAGS  KIND          GROUPS  FILES\x1b[0m\n"
              "\x1b[2ma     Fen::Dir  tny    intermediate  -       -\x1b[0m\n"
              "a/b   T         r      explicit      A::     A\n"
              "\n"
              "Agent A: active mounts, root flags rt, no connection flags\n"
              "2 mounts (1 explicit, 1 intermediate) in 1 group from 1 file\n");
}

TEST_F(Colour, IsNotUsedInAFile) {
    EXPECT_EQ(plain().find('\x1b'), std::string::npos);
}

TEST_F(Colour, IsNotUsedWhenNoColorIsSet) {
    for (std::string const value : {"1", "0", "no", " "})
        EXPECT_EQ(KeldaProgram().with("NO_COLOR", value).runOnTerminal(mounts()).out, plain())
            << value;
}

TEST_F(Colour, IsUsedWhenNoColorIsEmpty) {
    EXPECT_EQ(KeldaProgram().with("NO_COLOR", "").runOnTerminal(mounts()).out,
              KeldaProgram().runOnTerminal(mounts()).out);
}

TEST_F(Colour, IsNotUsedOnATerminalThatHasNone) {
    EXPECT_EQ(KeldaProgram().with("TERM", "dumb").runOnTerminal(mounts()).out, plain());
}

TEST_F(Colour, IsNotUsedInDocuments) {
    auto const call = mounts() + Words{"--format", "json"};
    EXPECT_EQ(KeldaProgram().runOnTerminal(call).out, KeldaProgram().run(call).out);
}

TEST_F(Colour, MarksTheHeadingsOfPreinitPaths) {
    Words const call{"preinit", "--preinit", device_.preinitDir()};
    auto const out = KeldaProgram().runOnTerminal(call).out;
    EXPECT_TRUE(out.starts_with("\x1b[1mPATH  TYPE  ATTRIBUTE  CONFIG\x1b[0m\na/b   T     -"))
        << out;
}

TEST_F(Colour, MarksSelectedMountsAsAllMounts) {
    EXPECT_EQ(KeldaProgram().runOnTerminal(mounts() + Words{"--path", "a"}).out,
              "\x1b[1mPATH  TYPE      FLAGS  KIND          GROUPS  FILES\x1b[0m\n"
              "\x1b[2ma     Fen::Dir  tny    intermediate  -       -\x1b[0m\n"
              "\n"
              "Agent A: 1 mount (0 explicit, 1 intermediate) at path a\n");
}

TEST_F(Colour, MarksTheHeadingsOfConfigPaths) {
    device_.preinit("Q", "CONFIG:c,T\n");
    EXPECT_EQ(KeldaProgram().runOnTerminal({"config", "--preinit", device_.preinitDir()}).out,
              "\x1b[1mPATH  TYPE\x1b[0m\nc     T\n\n1 config path\n");
}

TEST_F(Colour, IsNotUsedInScripts) {
    Words const call{"completion", "bash"};
    EXPECT_EQ(KeldaProgram().runOnTerminal(call).out, KeldaProgram().run(call).out);
}

TEST_F(Colour, OfStandardErrorDoesNotDependOnTheTerminal) {
    auto const outcome = KeldaProgram().runOnTerminal(
        Words{"mounts", "Nobody"} + support::foldersOf(device_.directory().path()));
    EXPECT_EQ(outcome.err, "kelda: note: no mount profile is for agent 'Nobody'\n");
}

} // namespace
