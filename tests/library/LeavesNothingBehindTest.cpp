// After a load, a fault at any stage, un-initialising and destruction: no descriptor stays open and
// no memory in use.
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <KeldaUtil/MountFlags.h>
#include <MemSlab/Slab.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/Descriptors.h"
#include "support/Device.h"
#include "support/Thrown.h"

namespace {

using support::descriptorsInUse;
using support::thrownText;

std::size_t bytesInUse() {
    return MemSlab::slab("mountFileInfo").bytesInUse();
}

void fill(support::Device& device) {
    device.preinit("Base", "a/b,T\na/c,T,createOnStandby\nCONFIG:conf/x,T\nd/e,Fen::Dir\nd/e/f,T\n"
                           "slot/%slot,T,createOnMount\neach/%agentString,T,createOnMount\n");
    device.profile("Fan", "agentName: Fan-%slot\nrootFlags:w\nsubAgent:Hub\nalias:%x=%slot\n"
                          "Include: Shared\nInclude: ConfigMountProfile\n"
                          "MountGroup: g\nslot/%x,T,rw\n");
    device.profile("Shared", "a/b,T,r\na/c,T,r\n");
    device.profile("Up", "agentName: Up\nactiveMount\nd/e/f,T,w\n");
    device.profile("DefaultMountGroup", "d/e,Fen::Dir,r\n");
    device.profile("DefaultMountGroupPerAgent", "each/%agentString,T,r\n");
}

class LeavesNothingBehind : public testing::Test {
  protected:
    LeavesNothingBehind() { fill(device); }

    support::CleanEnvironment environment;
    support::Device device;
};

// --- success ---

TEST_F(LeavesNothingBehind, ALoadClosesEveryFile) {
    auto const before = descriptorsInUse();
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    EXPECT_EQ(descriptorsInUse(), before);
    support::answersOf(*parser);
    EXPECT_EQ(descriptorsInUse(), before);
}

TEST_F(LeavesNothingBehind, ADestroyedParserHasGivenEverythingBack) {
    auto const memory = bytesInUse();
    auto const descriptors = descriptorsInUse();
    for (auto const* const agent : {"Fan-3", "Up", "Nobody"}) {
        auto parser = device.agent(agent);
        support::answersOf(*parser);
        EXPECT_GT(bytesInUse(), memory) << agent;
        parser.reset();
        EXPECT_EQ(bytesInUse(), memory) << agent;
        EXPECT_EQ(descriptorsInUse(), descriptors) << agent;
    }
}

TEST_F(LeavesNothingBehind, ADestroyedPinnedParserHasGivenEverythingBackToo) {
    auto const memory = bytesInUse();
    auto parser = device.agent("Fan-3");
    parser->disableUnDoInit();
    parser->doInit();
    parser->recordMountArgsExternal("out", {"T", Fen::MountTable::Flags(0x80001), true}, true,
                                    false);
    parser.reset();
    EXPECT_EQ(bytesInUse(), memory);
}

TEST_F(LeavesNothingBehind, UninitialisingGivesBackAllButWhatTheConstructorTook) {
    for (auto const* const agent : {"Fan-3", "Up", "Nobody"}) {
        auto const parser = device.emptyAgent();
        auto const constructed = bytesInUse();
        parser->addAgent(agent, "");
        for (int round = 0; round < 3; ++round) {
            support::answersOf(*parser);
            EXPECT_GT(bytesInUse(), constructed) << agent;
            parser->unDoInit();
            EXPECT_EQ(bytesInUse(), constructed) << agent << ", round " << round;
        }
    }
}

TEST_F(LeavesNothingBehind, UninitialisingGivesBackWhatMountsFromOutsideTook) {
    auto const parser = device.emptyAgent();
    auto const constructed = bytesInUse();
    parser->addAgent("Fan-3", "");
    parser->doInit();
    parser->recordMountArgsExternal("out", {"T", Fen::MountTable::Flags(0x80001), true}, true,
                                    false);
    parser->unDoInit();
    EXPECT_EQ(bytesInUse(), constructed);
}

TEST_F(LeavesNothingBehind, LoadingAgainAndAgainTakesNoMoreThanOnce) {
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    parser->unDoInit();
    parser->doInit();
    auto const loaded = bytesInUse();
    for (int round = 0; round < 20; ++round) {
        parser->unDoInit();
        parser->doInit();
    }
    EXPECT_EQ(bytesInUse(), loaded);
}

TEST_F(LeavesNothingBehind, TheLargeDeviceLeavesNothingBehindEither) {
    SKIP_WITHOUT_CORPUS();
    auto const memory = bytesInUse();
    auto const descriptors = descriptorsInUse();
    auto const root = support::corpusDir("openconfig");
    auto parser = std::make_unique<Kelda::AgentMountFileInfo>(false, (root / "preinit").string(),
                                                              (root / "profiles").string(), true,
                                                              "DefaultMountGroup");
    auto const constructed = bytesInUse();
    parser->addAgent("BfdVrf-blue", "");
    parser->doInit();
    parser->unDoInit();
    EXPECT_EQ(bytesInUse(), constructed);
    parser->doInit();
    parser.reset();
    EXPECT_EQ(bytesInUse(), memory);
    EXPECT_EQ(descriptorsInUse(), descriptors);
}

TEST_F(LeavesNothingBehind, WithoutDefaultFilesNoAliasStaysBehind) {
    std::filesystem::remove(device.profileDir() + "/DefaultMountGroup");
    std::filesystem::remove(device.profileDir() + "/DefaultMountGroupPerAgent");
    auto const parser = device.emptyAgent();
    auto const constructed = bytesInUse();
    parser->addAgent("Fan-3", "");
    parser->doInit();
    parser->unDoInit();
    EXPECT_EQ(bytesInUse(), constructed);
}

// --- faults ---

struct Stage {
    char const* name;
    std::function<void(support::Device&)> spoil;
    std::function<void(Kelda::AgentMountFileInfo&)> act;
};

void load(Kelda::AgentMountFileInfo& parser) {
    parser.doInit();
}

std::function<void(support::Device&)> preinit(char const* name, char const* text) {
    return [=](support::Device& device) { device.preinit(name, text); };
}
std::function<void(support::Device&)> profile(char const* name, char const* text) {
    return [=](support::Device& device) { device.profile(name, text); };
}
void nothing(support::Device& /*device*/) {}

std::vector<Stage> const loadStages{
    {"no preinit directory", [](auto& d) { std::filesystem::remove_all(d.preinitDir()); }, load},
    {"a preinit file that cannot be opened",
     [](auto& d) { std::filesystem::create_symlink("no/such", d.preinitDir() + "/Gone"); }, load},
    {"a preinit line", preinit("More", "x/y,T\nfoo\n"), load},
    {"an attribute", preinit("More", "x/y,T,foo\n"), load},
    {"a config path", preinit("More", "CONFIG:x/%cellId,T\n"), load},
    {"a preinit continuation", preinit("More", "x\\y,T\n"), load},
    {"no profile directory", [](auto& d) { std::filesystem::remove_all(d.profileDir()); }, load},
    {"a profile that cannot be opened",
     [](auto& d) { std::filesystem::create_symlink("no/such", d.profileDir() + "/Gone"); }, load},
    {"a consuming token", profile("Z", "agentName:Fan-%slot$\nactiveMount\nmatchActiveName\n"),
     load},
    {"a profile line", profile("Z", "agentName:Fan-3\na/b,T,r\nfoo\n"), load},
    {"a profile continuation", profile("Z", "agentName:Fan-3\na/b\\,T,r\n"), load},
    {"a missing type", profile("Z", "agentName:Fan-3\nx/y,T,r\n"), load},
    {"flags", profile("Z", "agentName:Fan-3\na/b,T,x\n"), load},
    {"an alias", profile("Z", "agentName:Fan-3\nalias:%x=%nosuch\n"), load},
    {"an alias in a path", profile("Z", "agentName:Fan-3\nslot/%nosuch,T,r\n"), load},
    {"a mount group", profile("Z", "agentName:Fan-3\nMountGroup:all\n"), load},
    {"a sub-agent", profile("Z", "agentName:Fan-3\nsubAgent:%nosuch\n"), load},
    {"root flags", profile("Z", "agentName:Fan-3\nrootFlags:x\n"), load},
    {"a condition", profile("Z", "agentName:Fan-3\nactiveMount\nCondition:x\n"), load},
    {"a lonely keyword", profile("Z", "agentName:Fan-3\nmatchActiveName\n"), load},
    {"an include of nothing", profile("Z", "agentName:Fan-3\nInclude:nosuch\n"), load},
    {"an included file", profile("Shared", "a/b,T,r\nalias:%x=1\n"), load},
    {"the default group", profile("DefaultMountGroup", "foo\n"), load},
    {"the default group per agent", profile("DefaultMountGroupPerAgent", "foo\n"), load},
    {"an intermediate path",
     [](auto& d) {
         d.preinit("More", "a/b/c,T\n");
         d.profile("Z", "agentName:Fan-3\nactiveMount\na/b/c,T,r\n");
     },
     load},
    {"a second agent", profile("Psu", "agentName:Psu\nfoo\n"),
     [](auto& parser) {
         parser.addAgent("Psu", "");
         parser.doInit();
     }},
};

std::vector<Stage> const laterStages{
    {"a late agent", profile("Psu", "agentName:Psu\nInclude:Shared\nfoo\n"),
     [](auto& parser) { parser.addAgent("Psu", ""); }},
    {"a late agent's include", profile("Psu", "agentName:Psu\nInclude:Up\n"),
     [](auto& parser) { parser.addAgent("Psu", ""); }},
    {"another override", nothing, [](auto& parser) { parser.addAgent("Fan-3", "Other"); }},
    {"a mount from outside", nothing,
     [](auto& parser) {
         parser.recordMountArgsExternal("out", {"T", KeldaUtil::parseMountTableFlags("x"), true},
                                        true, false);
     }},
    {"a replayed mount", nothing,
     [](auto& parser) {
         parser.recordMountArgsExternal("out", {"T", KeldaUtil::parseMountTableFlags("r"), true},
                                        true, false);
         parser.recordMountArgsExternal("out", {"U", KeldaUtil::parseMountTableFlags("r"), true},
                                        true, false);
     }},
    {"an unknown path", nothing, [](auto& parser) { parser.mountInfo("no/such"); }},
    {"an unknown type", nothing, [](auto& parser) { parser.getType("no/such"); }},
    {"an unknown attribute", nothing, [](auto& parser) { parser.getPreinitAttr("no/such"); }},
    {"an unknown file", nothing, [](auto& parser) { parser.profileFilePaths("nosuch", true); }},
    {"an unknown group", nothing, [](auto& parser) { parser.mountGroupPaths("nosuch"); }},
    {"a config conflict", nothing, [](auto& parser) { parser.addConfigChildPath("conf/x"); }},
};

void expectNothingLeft(Stage const& stage, bool loadFirst) {
    support::Device device;
    fill(device);
    auto const memory = bytesInUse();
    auto const descriptors = descriptorsInUse();
    stage.spoil(device);
    auto parser = device.agent("Fan-3");
    if (loadFirst)
        parser->doInit();
    EXPECT_NE(thrownText([&] { stage.act(*parser); }), support::nothingThrown) << stage.name;
    EXPECT_EQ(descriptorsInUse(), descriptors) << stage.name;
    parser.reset();
    EXPECT_EQ(bytesInUse(), memory) << stage.name;
    EXPECT_EQ(descriptorsInUse(), descriptors) << stage.name;
}

TEST_F(LeavesNothingBehind, AFaultAtAnyStageOfALoadClosesEveryFileAndGivesMemoryBack) {
    for (auto const& stage : loadStages)
        expectNothingLeft(stage, false);
}

TEST_F(LeavesNothingBehind, AFaultAfterALoadClosesEveryFileAndGivesMemoryBack) {
    for (auto const& stage : laterStages)
        expectNothingLeft(stage, true);
}

TEST_F(LeavesNothingBehind, AFaultInTheExtraPreinitListClosesEveryFile) {
    auto const file = device.directory().write("Extra", "x/y,T\n");
    for (auto const& list : {file + ":no/such", device.preinitDir() + ":no/such:" + file}) {
        support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", list.c_str());
        auto const descriptors = descriptorsInUse();
        auto const parser = device.agent("Fan-3");
        EXPECT_THROW(parser->doInit(), Fen::AgentException);
        EXPECT_EQ(descriptorsInUse(), descriptors);
    }
}

TEST_F(LeavesNothingBehind, AFaultInTheExtraProfileDirectoryClosesEveryFile) {
    support::TemporaryDirectory extra;
    extra.write("Fan", "agentName: Fan-3\na/b,T,r\nfoo\n");
    support::EnvironmentVariable const path("KELDA_EXTRA_PROFILE_PATH", extra.string().c_str());
    auto const descriptors = descriptorsInUse();
    auto const parser = device.agent("Fan-3");
    EXPECT_THROW(parser->doInit(), Fen::AgentException);
    EXPECT_EQ(descriptorsInUse(), descriptors);
}

TEST_F(LeavesNothingBehind, AThousandFailedLoadsOpenNothing) {
    device.profile("Shared", "foo\n");
    auto const descriptors = descriptorsInUse();
    auto const parser = device.agent("Fan-3");
    for (int i = 0; i < 1000; ++i)
        EXPECT_THROW(parser->doInit(), Fen::AgentException);
    EXPECT_EQ(descriptorsInUse(), descriptors);
}

TEST_F(LeavesNothingBehind, TheLenientAgentLeavesNothingAfterAnyFault) {
    for (auto const& stage : loadStages) {
        support::Device broken;
        fill(broken);
        stage.spoil(broken);
        auto const memory = bytesInUse();
        auto const descriptors = descriptorsInUse();
        {
            support::LenientAgent parser(broken.preinitDir(), broken.profileDir());
            parser.addAgent("Fan-3", "");
            stage.act(parser);
            EXPECT_FALSE(parser.exceptions().empty()) << stage.name;
            EXPECT_EQ(descriptorsInUse(), descriptors) << stage.name;
        }
        EXPECT_EQ(bytesInUse(), memory) << stage.name;
    }
}

} // namespace
