// Lines that nearly declare or mount a path.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExplainedDevice.h"

namespace {

using support::ExplainedDevice;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// A device on which agent A has one line.
struct DeviceWithLine : ExplainedDevice {
    explicit DeviceWithLine(std::string const& line, std::string const& preinit = "x/fan/speed,T") {
        this->preinit("P", preinit + "\n").profile("A", "agentName:A\n" + line + "\n");
    }
};

TEST(NearLines, OfRefusedLinesTellTheFault) {
    DeviceWithLine device("x/fan/speed,T,rcD");
    auto const lines = device.nearLines("x/fan/speed");
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_EQ(lines[0].detail, "c and D flags cannot be used simultaneously on mount path");
    EXPECT_THAT(device.near("x/fan/speed"), ElementsAre("refused profiles/A:2"));
    EXPECT_THAT(device.near("x/fan/speed", "A"), ElementsAre("refused profiles/A:2"));
}

TEST(NearLines, OfALiteralNameInThePlaceOfATokenTellTheFault) {
    DeviceWithLine device("card/3,T,r", "card/%slot,T,createOnMount");
    EXPECT_THAT(device.near("card/3"), ElementsAre("refused profiles/A:2"));
    EXPECT_THAT(device.near("card/4"), IsEmpty());
}

TEST(NearLines, DifferInSlashesOrCase) {
    struct Case {
        char const* line;
        char const* near;
    };
    for (auto const& [line, near] : {Case{"/x/fan/speed,T,r", "other-slashes profiles/A:2"},
                                     Case{"x//fan/speed,T,r", "other-slashes profiles/A:2"},
                                     Case{"x/Fan/speed,T,r", "other-case profiles/A:2"}})
        EXPECT_THAT(DeviceWithLine(line).near("x/fan/speed"), ElementsAre(near)) << line;
}

TEST(NearLines, HaveOneMistypedName) {
    for (char const* line :
         {"x/fin/speed,T,r", "x/fan/sped,T,r", "x/fan/speeeed,T,r", "x/fan/psedd,T,r"})
        EXPECT_THAT(DeviceWithLine(line).near("x/fan/speed"), ElementsAre("mistyped profiles/A:2"))
            << line;
    for (char const* line : {"y/fan/speed,T,r", "x/fin/sped,T,r", "x/fan/spezzzd,T,r",
                             "x/fan/speed/x,T,r", "x/fan,T,r"})
        EXPECT_THAT(DeviceWithLine(line, "z,T").near("x/fan/speed"), IsEmpty()) << line;
}

TEST(NearLines, AreNoOtherPathsThatAreDeclared) {
    DeviceWithLine device("x/fin/speed,T,r", "x/fan/speed,T\nx/fin/speed,T");
    EXPECT_THAT(device.near("x/fan/speed"), IsEmpty());
    EXPECT_THAT(
        device.near("x/fun/speed"),
        ElementsAre("mistyped preinit/P:1", "mistyped preinit/P:2", "mistyped profiles/A:2"));
}

TEST(NearLines, OfMistypedNamesThoseWithTheFewestErrors) {
    DeviceWithLine device("x/fan/speeed,T,r\nx/fan/spezz,T,r");
    EXPECT_THAT(device.near("x/fan/speed"), ElementsAre("mistyped profiles/A:2"));
}

TEST(NearLines, StandInFilesThatNobodyReads) {
    ExplainedDevice device;
    device.preinit("P", "x,T\n")
        .preinit("Q~", "y,T\n")
        .profile("Lost", " # comment above\nagentName:A\nx,T,\\\n r\n")
        .profile("shared", "x,T,r\n")
        .profile("Old~", "#\nx,T,r\n")
        .profile("User", "agentName:U\nInclude:shared\n");
    EXPECT_THAT(device.near("x"),
                ElementsAre("not-read profiles/Lost:3", "not-read profiles/Old~:2"));
    EXPECT_EQ(device.nearLines("x")[0].detail,
              "it has no agent-name line, and no Include: line names it");
    EXPECT_THAT(device.near("y"), ElementsAre("not-read preinit/Q~:1"));
}

TEST(NearLines, WouldBeForThePathIfAnAliasHadAnotherValue) {
    ExplainedDevice device;
    device.preinit("P", "x/%v,T,createOnMount\n")
        .profile("A", "agentName:A-%s\nalias:%v=one\nx/%v,T,r\nx/%s,T,w\n");
    EXPECT_THAT(device.near("x/two"), ElementsAre("other-value profiles/A:3"));
    EXPECT_THAT(device.near("x/two", "A-3"),
                ElementsAre("other-value profiles/A:3", "other-value profiles/A:4"));
    EXPECT_EQ(device.nearLines("x/two", "A-3")[1].aliases.at(0).value, "3");
}

TEST(NearLines, AreForOtherAgents) {
    ExplainedDevice device;
    device.preinit("P", "x,T\n")
        .profile("A", "agentName:A\n")
        .profile("B", "agentName:B-%s\nx,T,r\n");
    EXPECT_THAT(device.near("x"), IsEmpty());
    EXPECT_THAT(device.near("x", "A"), ElementsAre("other-agent profiles/B:2"));
    EXPECT_THAT(device.nearLines("x", "A")[0].agents, ElementsAre("B-%s"));
    EXPECT_THAT(device.near("x", "B-1"), IsEmpty());
}

TEST(NearLines, AreInProfilesThatActiveVariantsPassOver) {
    ExplainedDevice device;
    device.preinit("P", "x,T\n")
        .profile("A", "agentName:A-%s\nactiveMount\nx,T,r\n")
        .profile("B", "agentName:A-%s\nactiveMount\nmatchActiveName\n")
        .profile("C", "agentName:C\nx,T,r\n");
    EXPECT_THAT(device.near("x", "A-Active-1"),
                ElementsAre("not-for-variants profiles/A:3", "other-agent profiles/C:2"));
}

TEST(NearLines, AreDefaultMountsThatAgentsRefuse) {
    ExplainedDevice device;
    device.preinit("P", "x,T\n")
        .profile("A", "agentName:A\n\nnoDefaultMountGroup\n")
        .profile("B", "agentName:B\n")
        .profile("DefaultMountGroup", "x,T,r\n");
    EXPECT_THAT(device.near("x"), ElementsAre("no-default-group profiles/DefaultMountGroup:1"));
    auto const line = device.nearLines("x", "A").at(0);
    EXPECT_THAT(line.agents, ElementsAre("A"));
    EXPECT_EQ(device.shown(*line.cause), "profiles/A:3");
    EXPECT_THAT(device.near("x", "B"), IsEmpty());
}

TEST(NearLines, OfTwoConditionalTypesTheSecondIsRefused) {
    ExplainedDevice device;
    device.preinit("P", "y,T\n")
        .profile("A", "agentName:A\nMountGroup:g\nCondition:c\nx,One,r\nx,Two,w\n");
    EXPECT_THAT(device.near("x"), ElementsAre("refused profiles/A:5"));
    EXPECT_THAT(device.near("x", "A"), ElementsAre("refused profiles/A:5"));
    EXPECT_THAT(support::shown(device.agents("x").at(0).mounts), ElementsAre("x One r"));
}

TEST(NearAgents, AreCalledNearlySoOrHaveTokens) {
    ExplainedDevice device;
    device.profile("A", "agentName:FanTray-%s\n").profile("B", "agentName:Link-Agent-%s\n");
    auto const& read = device.device();
    for (char const* name : {"FanTrey-1", "fantray-1", "FanTray", "FanTra"})
        EXPECT_THAT(nearAgents(read, name), ElementsAre("FanTray-%s")) << name;
    EXPECT_THAT(nearAgents(read, "Link-Agnet-3"), ElementsAre("Link-Agent-%s"));
    EXPECT_THAT(nearAgents(read, "Thermal"), IsEmpty());
}

} // namespace
