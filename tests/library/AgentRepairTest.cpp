// After a load that failed: repairing the file and asking again is as good as a fresh parser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/OpenAgent.h"
#include "support/Thrown.h"

namespace {

using support::answersOf;
using support::faultIn;
using support::firstDifference;
using support::nothingThrown;
using support::thrownText;

class AgentRepair : public testing::Test {
  protected:
    AgentRepair() { writeGoodFiles(device); }

    static void writeGoodFiles(support::Device& target) {
        target.preinit("Base", goodPreinit);
        target.profile("Fan", goodProfile);
        target.profile("Shared", goodShared);
        target.profile("DefaultMountGroup", goodDefault);
        target.profile("DefaultMountGroupPerAgent", goodPerAgent);
        target.profile("Late", "agentName: Late\na/c,T,r\n");
    }
    // Gives a file of `target` the text that it has in the good device, or none.
    void repair(support::Device& target, char const* file) const {
        std::filesystem::remove(target.directory() / file);
        if (std::filesystem::exists(device.directory() / file))
            std::filesystem::copy_file(device.directory() / file, target.directory() / file);
    }

    static constexpr char goodPreinit[] = "a/b,T\na/c,T\nCONFIG:conf/x,T\nd/e,Fen::Dir\nd/e/f,T\n"
                                          "slot/%slot,T,createOnMount\n";
    static constexpr char goodProfile[] =
        "agentName: Fan-%slot\nInclude: Shared\nMountGroup: g\nslot/%slot,T,rw\n";
    static constexpr char goodShared[] = "a/b,T,r\nd/e/f,T,w\n";
    static constexpr char goodDefault[] = "conf/x,T,r\n";
    static constexpr char goodPerAgent[] = "a/c,T,r\n";

    support::CleanEnvironment environment;
    support::Device device;
};

struct Spoiling {
    char const* name;
    char const* file; // below the device's directory
    std::string text;
};

std::vector<Spoiling> const spoilings{
    {"a preinit line", "preinit/Base", "x/y,T\nx/y,T,createOnStandby\n"},
    {"a second preinit file", "preinit/More", "a/b\n"},
    {"a path line", "profiles/Fan", "agentName: Fan-%slot\nslot/%slot,T,rw\nx/y,T,r\n"},
    {"an alias", "profiles/Fan", "agentName: Fan-%slot\nalias:%x=1\nalias:%y=%z\n"},
    {"a condition", "profiles/Fan", "agentName: Fan-%slot\nCondition: x\nx/y,T,r\nactiveMount\n"},
    {"active mounts", "profiles/Fan", "agentName: Fan-%slot\nactiveMount\nCondition: x\n"},
    {"a lonely keyword", "profiles/Fan", "agentName: Fan-%slot\nmatchActiveName\n"},
    {"other keywords", "profiles/Fan",
     "agentName: Fan-%slot\nnoDefaultMountGroup\nsubAgent:X\nrootFlags:w\nconnectionFlags:S\n"
     "MountGroup:all\n"},
    {"an intermediate path", "profiles/Fan",
     "agentName: Fan-%slot\nactiveMount\nslot/%slot,T,r\nslot/%slot/x,T,r\n"},
    {"an included file", "profiles/Shared", "a/c,T,r\nalias:%x=1\n"},
    {"the default group", "profiles/DefaultMountGroup", "a/b,T,w\nfoo\n"},
    {"the default group per agent", "profiles/DefaultMountGroupPerAgent", "a/b,T,w\nInclude:no\n"},
    {"another profile", "profiles/Another", "agentName: Fan-3\na/c,T,wD\n\nfoo\n"},
};

TEST_F(AgentRepair, ARepairedFileGivesTheAnswersOfAFreshParser) {
    auto const expected = answersOf(*device.agent("Fan-3"));
    for (auto const& spoiling : spoilings) {
        support::Device broken;
        writeGoodFiles(broken);
        broken.directory().write(spoiling.file, spoiling.text);
        auto const parser = broken.agent("Fan-3");
        EXPECT_NE(thrownText([&] { parser->doInit(); }), nothingThrown) << spoiling.name;
        EXPECT_NE(thrownText([&] { parser->rootFlags(); }), nothingThrown) << spoiling.name;
        repair(broken, spoiling.file);
        EXPECT_EQ(firstDifference(expected, answersOf(*parser)), "") << spoiling.name;
    }
}

TEST_F(AgentRepair, EveryFurtherQueryStartsTheLoadAfreshAndFindsTheSameFault) {
    device.profile("Fan", "agentName: Fan-%slot\nInclude: Shared\nslot/%slot,T,r\nfoo\n");
    auto const parser = device.agent("Fan-3");
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(thrownText([&] { parser->infoExists("a/b"); }),
                  faultIn("Fan", 4, "syntax error: 'foo'"));
    EXPECT_THAT(parser->exceptions(), testing::SizeIs(3));
    EXPECT_EQ(parser->doInitCount(), 0);
}

TEST_F(AgentRepair, UninitialisingAfterAFailedLoadDoesNoHarm) {
    device.profile("Fan", "agentName: Fan-%slot\nfoo\n");
    auto const parser = device.agent("Fan-3");
    EXPECT_THROW(parser->doInit(), Fen::AgentException);
    parser->unDoInit();
    device.profile("Fan", goodProfile);
    EXPECT_EQ(firstDifference(answersOf(*device.agent("Fan-3")), answersOf(*parser)), "");
}

TEST_F(AgentRepair, AMountFromOutsideOutlivesAFailedLoad) {
    device.profile("Fan", "agentName: Fan-%slot\nfoo\n");
    auto const parser = device.agent("Fan-3");
    parser->recordMountArgsExternal("out/side", {"T", Fen::MountTable::Flags(0x80001), true}, true,
                                    false);
    EXPECT_THROW(parser->doInit(), Fen::AgentException);
    device.profile("Fan", goodProfile);
    EXPECT_TRUE(parser->infoExists("out/side"));
    EXPECT_TRUE(parser->infoExists("slot/3"));
}

// --- agents that are added to a parser that has loaded ---

class LateAgentRepair : public AgentRepair {
  protected:
    LateAgentRepair() { parser->doInit(); }
    void addLate(std::string const& lines) {
        device.profile("Late", "agentName: Late\n" + lines);
        EXPECT_NE(thrownText([&] { parser->addAgent("Late", ""); }), nothingThrown);
    }

    std::unique_ptr<Kelda::AgentMountFileInfo> parser = device.agent("Fan-3");
};

TEST_F(LateAgentRepair, AFailedAgentIsLoadedByTheNextInitialisation) {
    addLate("a/c,T,r\nfoo\n");
    device.profile("Late", "agentName: Late\na/c,T,r\n");
    parser->unDoInit();
    auto const fresh = device.agent("Fan-3");
    fresh->addAgent("Late", "");
    EXPECT_EQ(firstDifference(answersOf(*fresh), answersOf(*parser)), "");
}

TEST_F(LateAgentRepair, AFaultAfterItNamesNoFile) {
    addLate("foo\n");
    EXPECT_EQ(thrownText([&] { parser->getType("no/such"); }),
              "getType: no type info for path no/such");
}

TEST_F(LateAgentRepair, AFaultInAnIncludedFileDoesNotMakeTheNextProfileAnIncludedOne) {
    device.profile("Bad", "foo\n");
    addLate("Include: Bad\n");
    device.profile("Next", "agentName: Next\nMountGroup: n\na/b,T,r\n");
    EXPECT_EQ(thrownText([&] { parser->addAgent("Next", ""); }), nothingThrown);
    EXPECT_THAT(support::strings(parser->mountGroupPaths("Next::n")), testing::ElementsAre("a/b"));
}

TEST_F(LateAgentRepair, TheAliasesOfAFailedProfileAreNotVisibleInTheNext) {
    addLate("alias:%mine=3\nfoo\n");
    device.profile("Next", "agentName: Next\nslot/%mine,T,r\n");
    EXPECT_EQ(thrownText([&] { parser->addAgent("Next", ""); }),
              faultIn("Next", 2, "No such alias defined: '%mine'"));
}

TEST_F(LateAgentRepair, TheConditionOfAFailedProfileDoesNotExcuseTheNext) {
    addLate("Condition: x\nfoo\n");
    device.profile("Next", "agentName: Next\nx/y,T,r\n");
    EXPECT_EQ(thrownText([&] { parser->addAgent("Next", ""); }).substr(0, 40),
              faultIn("Next", 2, "No type info for path").substr(0, 40));
}

} // namespace
