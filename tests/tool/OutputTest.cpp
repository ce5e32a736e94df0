// Results that cannot be written are never lost in silence.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using support::Device;
using support::KeldaProgram;
using support::Words;

class EveryResult : public testing::TestWithParam<Words> {
  protected:
    EveryResult() {
        device_.preinit("P", "a/b,T\n").profile("A", "agentName:A\na/b,T,r\n");
        device_.directory().makeDirectory("broken");
        device_.directory().write("broken/Q", "nonsense\n");
    }
    // Runs in the device's folder, so that calls can name its folders.
    KeldaProgram kelda() const { return KeldaProgram().inFolder(device_.directory().path()); }

    Device device_;
};

std::string cannotWrite(std::string const& reason) {
    return "kelda: cannot write to standard output: " + reason + "\n";
}

TEST_P(EveryResult, OnAClosedStandardOutputIsAFailure) {
    auto const outcome = kelda().closing({1}).run(GetParam());
    EXPECT_EQ(outcome.err, cannotWrite("Bad file descriptor"));
    EXPECT_EQ(outcome.status, 1);
}

TEST_P(EveryResult, WithAllStandardStreamsClosedIsAFailure) {
    EXPECT_EQ(kelda().closing({0, 1, 2}).run(GetParam()).status, 1);
}

TEST_P(EveryResult, OnAFullDeviceIsAFailure) {
    auto const outcome = kelda().writingTo("/dev/full").run(GetParam());
    EXPECT_EQ(outcome.err, cannotWrite("No space left on device"));
    EXPECT_EQ(outcome.status, 1);
}

TEST_P(EveryResult, ThatNobodyReadsIsAFailure) {
    auto const outcome = kelda().runWithoutReader(GetParam());
    EXPECT_EQ(outcome.err, cannotWrite("Broken pipe"));
    EXPECT_EQ(outcome.status, 1);
}

TEST_P(EveryResult, DoesNotNeedStandardInput) {
    auto const outcome = kelda().closing({0}).run(GetParam());
    EXPECT_EQ(outcome.out, kelda().run(GetParam()).out);
    EXPECT_EQ(outcome.err, "");
}

TEST_P(EveryResult, DoesNotNeedStandardError) {
    auto const outcome = kelda().closing({2}).run(GetParam());
    EXPECT_EQ(outcome.out, kelda().run(GetParam()).out);
    EXPECT_EQ(outcome.err, "");
}

INSTANTIATE_TEST_SUITE_P(
    Output, EveryResult,
    testing::Values(
        Words{"--help"}, Words{"mounts", "--help"}, Words{"--version"},
        Words{"mounts", "A", "--preinit", "preinit", "--profiles", "profiles"},
        Words{"mounts", "A", "--preinit", "preinit", "--profiles", "profiles", "--format", "json"},
        Words{"mounts", "A", "--preinit", "preinit", "--profiles", "profiles", "--path", "a/b"},
        Words{"config", "--preinit", "preinit"}, Words{"completion", "bash"},
        Words{"completion", "zsh"}, Words{"preinit", "--preinit", "preinit"},
        Words{"preinit", "--preinit", "broken", "--format", "json"}));

TEST(Output, AnErrorForPeopleDoesNotNeedStandardOutput) {
    auto const outcome = KeldaProgram().closing({1}).run({"mounts"});
    EXPECT_EQ(outcome.err, "kelda mounts: AGENT is required\nTry 'kelda mounts --help'.\n");
    EXPECT_EQ(outcome.status, 2);
}

TEST(Output, AMessageThatCannotBeWrittenDoesNotChangeTheStatus) {
    EXPECT_EQ(KeldaProgram().closing({2}).run({"mounts"}).status, 2);
}

TEST(Output, OfManyMountsIsWhole) {
    Device device;
    std::string preinit;
    std::string profile = "agentName:A\n";
    for (int i = 10000; i < 15000; ++i) {
        preinit += "directory/with/a/long/name/" + std::to_string(i) + ",Some::Type\n";
        profile += "directory/with/a/long/name/" + std::to_string(i) + ",Some::Type,rw\n";
    }
    device.preinit("P", preinit).profile("A", profile);
    auto const call = Words{"mounts", "A"} + support::foldersOf(device.directory().path());
    auto const table = KeldaProgram().run(call).out;
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 5004);
    EXPECT_TRUE(
        table.ends_with("5000 mounts (5000 explicit, 0 intermediate) in 1 group from 1 file\n"));
    auto const document = KeldaProgram().run(call + Words{"--format", "json"}).json();
    EXPECT_EQ(document["mounts"].size(), 5000U);
}

} // namespace
