// The agent-side parser: agents that are added, profiles that are found, tokens of agent strings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/OpenAgent.h"
#include "support/Thrown.h"
#include "support/TraceRecorder.h"

namespace {

using support::strings;
using support::thrownText;
using testing::ElementsAre;
using testing::IsEmpty;

class AgentParser : public testing::Test {
  protected:
    AgentParser() {
        device.preinit("Base", "hardware/fan/%slot,Fan::Status,createOnMount\n"
                               "agents/%agentString,Agent::Dir,createOnMount\n"
                               "hardware/psu,Psu::Status\n");
        device.profile("Fan", "agentName: Fan-%slot\n"
                              "hardware/fan/%slot,Fan::Status,rw\n");
        device.profile("Psu", "agentName: Psu\n"
                              "hardware/psu,Psu::Status,r\n");
        device.profile("Named", "agentName: Named\n"
                                "agents/%agentString,Agent::Dir,r\n");
    }

    support::CleanEnvironment environment;
    support::Device device;
};

// --- construction ---

TEST_F(AgentParser, ConstructionTracesWhetherProfilesAreLoaded) {
    for (bool const load : {true, false}) {
        support::TraceRecorder const trace;
        Kelda::AgentMountFileInfo const parser(false, "p", "m", load, "DefaultMountGroup");
        EXPECT_EQ(
            trace.count(7, load ? "( loadMountProfile : true )" : "( loadMountProfile : false )"),
            1);
    }
}

TEST_F(AgentParser, ConstructionHandsItsArgumentsToTheBase) {
    Kelda::AgentMountFileInfo const parser(true, "preinits", "profiles", true, "Common");
    EXPECT_TRUE(parser.dontMergeFlags());
    EXPECT_EQ(parser.preinitDir(), "preinits");
    EXPECT_EQ(parser.keldaMountProfileDir(), "profiles");
    EXPECT_EQ(parser.defaultGroupName(), "Common");
    EXPECT_FALSE(parser.isInitialized());
}

// --- adding agents ---

TEST_F(AgentParser, AddingAnAgentBeforeLoadingOnlyQueuesIt) {
    support::TraceRecorder const trace;
    Kelda::AgentMountFileInfo parser(false, "/nonexistent", "/nonexistent", true, "Default");
    parser.addAgent("Fan-3", "Other");
    EXPECT_EQ(trace.count(7, "( agentString : Fan-3, overrideAgentString : Other )"), 1);
    EXPECT_THAT(trace.at(2), ElementsAre("added new agentString: Fan-3"));
    EXPECT_EQ(trace.count(8, "( agentString : Fan-3, overrideAgentString : Other )"), 0);
    EXPECT_FALSE(parser.isInitialized());
}

TEST_F(AgentParser, AddingTheSamePairTwiceBeforeLoadingOnlyTracesIt) {
    auto const parser = device.agent("Fan-3", "Other");
    support::TraceRecorder const trace;
    parser->addAgent("Fan-3", "Other");
    EXPECT_THAT(trace.at(2), ElementsAre("duplicate agentString and override "));
    EXPECT_THAT(strings(parser->getAgentStrings()), ElementsAre("Fan-3"));
}

TEST_F(AgentParser, AddingTheSamePairTwiceAfterLoadingOnlyTracesIt) {
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    support::TraceRecorder const trace;
    parser->addAgent("Fan-3", "");
    EXPECT_THAT(trace.at(2), ElementsAre("duplicate agentString and override "));
    EXPECT_THAT(trace.at(8), IsEmpty());
    EXPECT_THAT(strings(parser->getAgentStrings()), ElementsAre("Fan-3"));
}

TEST_F(AgentParser, ANewOverrideBeforeLoadingReplacesTheOldOne) {
    auto const parser = device.agent("Named", "One");
    support::TraceRecorder const trace;
    parser->addAgent("Named", "Two");
    EXPECT_THAT(trace.at(2), ElementsAre("duplicate agentString replaced override "));
    EXPECT_FALSE(parser->isInitialized());
    EXPECT_TRUE(parser->infoExists("agents/Two"));
    EXPECT_FALSE(parser->infoExists("agents/One"));
}

TEST_F(AgentParser, ANewOverrideAfterLoadingThrows) {
    auto const parser = device.agent("Named", "One");
    parser->doInit();
    auto const text = "reloaded agent Named with override Two rather than One after doInit()";
    EXPECT_EQ(thrownText([&] { parser->addAgent("Named", "Two"); }), text);
    EXPECT_THAT(parser->exceptions(), ElementsAre(Kelda::MfiException{"", text, -1}));
}

TEST_F(AgentParser, ARefusedOverrideLeavesTheStoredOneInForce) {
    auto const parser = device.agent("Named", "One");
    parser->doInit();
    EXPECT_THROW(parser->addAgent("Named", "Two"), Fen::AgentException);
    parser->unDoInit();
    EXPECT_TRUE(parser->infoExists("agents/One"));
    EXPECT_FALSE(parser->infoExists("agents/Two"));
}

TEST_F(AgentParser, ARefusedOverrideIsTracedWhereFaultsDoNotThrow) {
    support::LenientAgent parser(device.preinitDir(), device.profileDir());
    parser.addAgent("Named", "One");
    parser.doInit();
    support::TraceRecorder const trace;
    parser.addAgent("Named", "");
    EXPECT_EQ(trace.count(0, support::continued("reloaded agent Named with override  rather "
                                                "than One after doInit()")),
              1);
    EXPECT_THAT(strings(parser.getAgentStrings()), ElementsAre("Named"));
}

TEST_F(AgentParser, AnAgentAddedAfterLoadingIsLoadedAtOnce) {
    auto const parser = device.agent("Fan-3");
    parser->doInit();
    support::TraceRecorder const trace;
    parser->addAgent("Psu", "Other");
    EXPECT_TRUE(trace.has(2, "added new agentString: Psu"));
    EXPECT_EQ(trace.count(8, "( agentString : Psu, overrideAgentString : Other )"), 1);
    EXPECT_EQ(parser->pathMountArgsMap().count("hardware/psu"), 1U);
    EXPECT_EQ(parser->doInitCount(), 1);
}

TEST_F(AgentParser, EveryQueuedAgentIsLoadedInTheOrderAdded) {
    auto const parser = device.agent("Psu");
    parser->addAgent("Fan-3", "");
    support::TraceRecorder const trace;
    parser->doInit();
    auto lines = trace.at(8);
    std::erase_if(lines, [](auto const& line) { return !line.starts_with("( agentString : "); });
    EXPECT_THAT(lines, ElementsAre("( agentString : Psu, overrideAgentString :  )",
                                   "( agentString : Fan-3, overrideAgentString :  )"));
    EXPECT_EQ(parser->agentString(), "Fan-3");
    EXPECT_TRUE(parser->infoExists("hardware/psu"));
    EXPECT_TRUE(parser->infoExists("hardware/fan/3"));
}

// --- profiles that are found or not ---

TEST_F(AgentParser, FoundMountProfileIsTrueForAnAgentWithAProfile) {
    auto const parser = device.agent("Fan-3");
    EXPECT_TRUE(parser->foundMountProfile("Fan-3"));
    EXPECT_TRUE(parser->isInitialized());
    EXPECT_TRUE(parser->foundMountProfile());
    EXPECT_FALSE(parser->activeMount());
}

TEST_F(AgentParser, AnAgentWithoutProfileIsAnActiveMountAgentAndNoFault) {
    auto const parser = device.agent("Nobody");
    support::TraceRecorder const trace;
    EXPECT_FALSE(parser->foundMountProfile("Nobody"));
    EXPECT_FALSE(parser->foundMountProfile());
    EXPECT_TRUE(parser->activeMount());
    EXPECT_EQ(parser->rootFlags(), "");
    EXPECT_THAT(parser->exceptions(), IsEmpty());
    EXPECT_EQ(trace.count(2, "no mount profiles loaded. Setting activeMount to true."), 1);
}

TEST_F(AgentParser, FoundMountProfileIsTrueForAStringThatWasNeverAdded) {
    auto const parser = device.agent("Nobody");
    EXPECT_TRUE(parser->foundMountProfile("Never-added"));
    EXPECT_FALSE(parser->foundMountProfile("Nobody"));
}

TEST_F(AgentParser, FoundMountProfileTellsTheAgentsApart) {
    auto const parser = device.agent("Fan-3");
    parser->addAgent("Nobody", "");
    EXPECT_TRUE(parser->foundMountProfile("Fan-3"));
    EXPECT_FALSE(parser->foundMountProfile("Nobody"));
}

TEST_F(AgentParser, WithoutLoadMountProfileEveryAgentCountsAsOneWithoutProfile) {
    Kelda::AgentMountFileInfo parser(false, device.preinitDir(), "/nonexistent", false, "Default");
    parser.addAgent("Fan-3", "");
    parser.addAgent("Psu", "");
    EXPECT_FALSE(parser.foundMountProfile("Fan-3"));
    EXPECT_FALSE(parser.foundMountProfile("Psu"));
    EXPECT_TRUE(parser.activeMount());
    EXPECT_FALSE(parser.foundMountProfile());
    EXPECT_THAT(parser.pathMountArgsMap(), IsEmpty());
    EXPECT_EQ(parser.getType("hardware/psu"), "Psu::Status");
}

TEST_F(AgentParser, WithoutLoadMountProfileTheSetOfAgentsWithoutProfileHoldsEachOnce) {
    struct Unprofiled : Kelda::AgentMountFileInfo {
        using AgentMountFileInfo::AgentMountFileInfo;
        using AgentMountFileInfo::agentStringsWithoutProfile_;
        ~Unprofiled() override = default;
    };
    Unprofiled parser(false, device.preinitDir(), "/nonexistent", false, "Default");
    parser.addAgent("Psu", "");
    parser.addAgent("Fan-3", "");
    parser.doInit();
    parser.doAddAgent("Psu", "");
    EXPECT_THAT(strings(parser.agentStringsWithoutProfile_),
                testing::UnorderedElementsAre("Fan-3", "Psu"));
}

// --- what a load traces ---

TEST_F(AgentParser, ALoadTracesItsStepsInOrder) {
    support::TemporaryDirectory extra;
    extra.write("More", "agentName: Psu\nhardware/psu,Psu::Status,w\n");
    support::EnvironmentVariable const path("KELDA_EXTRA_PROFILE_PATH", extra.string().c_str());
    auto const parser = device.agent("Psu");
    support::TraceRecorder const trace("MountFileInfo", 1U << 2);
    parser->doInit();
    EXPECT_THAT(trace.at(2),
                ElementsAre("Initializing MFI and setting isInitialized_ to true", "( file : Psu )",
                            "loaded 1 files", "loading extra profiles from " + extra.string(),
                            "( file : More )", "now loaded total of 2 files",
                            "Psu is a passive mount agent.", "rootFlags_ is now rtp"));
}

TEST_F(AgentParser, EveryFileOfTheProfileDirectoryIsAskedForItsAgent) {
    auto const parser = device.agent("Psu");
    support::TraceRecorder const trace;
    parser->doInit();
    for (auto const* const file : {"Fan", "Named", "Psu"})
        EXPECT_GE(trace.count(8, "( file : " + std::string(file) + " ) "), 1) << file;
}

TEST_F(AgentParser, AFileWithoutAgentNameLineIsPassedOver) {
    device.profile("Anonymous", "no such keyword\n");
    device.profile("Empty", "");
    device.profile("Comments", "# agentName: Psu\n\n");
    auto const parser = device.agent("Psu");
    support::TraceRecorder const trace;
    parser->doInit();
    EXPECT_TRUE(trace.has(2, "loaded 1 files"));
}

TEST_F(AgentParser, SeveralProfilesMayServeOneAgent) {
    device.profile("Psu2", "agentName: Psu\nhardware/fan/1,Fan::Status,r\n");
    device.preinit("More", "hardware/fan/1,Fan::Status\n");
    auto const parser = device.agent("Psu");
    EXPECT_TRUE(parser->infoExists("hardware/psu"));
    EXPECT_TRUE(parser->infoExists("hardware/fan/1"));
}

// --- tokens of an agent string ---

TEST_F(AgentParser, AnAgentStringThatEndsInAHyphenKeepsItInItsLastToken) {
    struct Row {
        char const* agent;
        std::vector<std::string> tokens;
    };
    for (auto const& row : std::vector<Row>{{"Fan", {"Fan"}},
                                            {"Fan-3", {"Fan", "3"}},
                                            {"Fan-3-", {"Fan", "3-"}},
                                            {"Fan-", {"Fan-"}},
                                            {"Fan--3", {"Fan", "", "3"}},
                                            {"Fan--", {"Fan", "-"}},
                                            {"-", {"-"}},
                                            {"", {}}}) {
        auto const parser = device.agent(row.agent);
        parser->doInit();
        EXPECT_EQ(strings(parser->agentStringTokens()), row.tokens) << row.agent;
    }
}

TEST_F(AgentParser, ATokenTakesThePartWithItsHyphen) {
    auto const parser = device.agent("Fan-3-");
    EXPECT_TRUE(parser->infoExists("hardware/fan/3-"));
}

TEST_F(AgentParser, TheAliasAgentStringIsTheOverrideIfThereIsOne) {
    EXPECT_TRUE(device.agent("Named")->infoExists("agents/Named"));
    auto const parser = device.agent("Named", "Other");
    EXPECT_TRUE(parser->infoExists("agents/Other"));
    EXPECT_FALSE(parser->infoExists("agents/Named"));
}

} // namespace
