// The document of a report: a small device to the letter, and what it says of an agent beside what
// the agent's own parser and kelda explain say.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "database/Agents.h"
#include "database/paths/DeviceStory.h"
#include "report/AgentFacts.h"
#include "report/MountLines.h"
#include "report/ReportData.h"
#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/Device.h"
#include "support/ExampleDevice.h"
#include "support/FileContent.h"

namespace {

using KeldaDatabase::DatabaseMountFileInfo;
using KeldaTool::reportData;
using Json = nlohmann::ordered_json;

class ReportDocument : public testing::Test {
  protected:
    // As the command makes it; the device's folder is called D.
    std::string document() const {
        DatabaseMountFileInfo parser(device.preinitDir(), device.profileDir());
        parser.staticCheckIs(true);
        auto text = reportData(parser).document;
        auto const folder = device.directory().string();
        for (auto at = text.find(folder); at != std::string::npos; at = text.find(folder, at))
            text.replace(at, folder.size(), "D");
        return text;
    }
    Json json() const { return Json::parse(document()); }

    support::CleanEnvironment environment;
    support::Device device;
};

TEST_F(ReportDocument, TellsASmallDeviceToTheLetter) {
    device
        .preinit("P", "sys/clock, Sys::Clock\n"
                      "card/%slot/port/%port, Card::Port, createOnMount\n"
                      "CONFIG: config/banner, Config::Banner\n")
        .profile("Card", "agentName: Card-%slot\n"
                         "rootFlags: rw\n"
                         "alias: %first = 1\n"
                         "sys/clock, Sys::Clock, r\n"
                         "MountGroup: ports, 10\n"
                         "card/%slot/port/%first, \\\n"
                         "  Card::Port, rw # why\n"
                         "Include: shared\n")
        .profile("Clock", "agentName: Clock\n"
                          "activeMount\n"
                          "connectionFlags: SN\n"
                          "subAgent: Clock-a\n"
                          "noDefaultMountGroup\n"
                          "Include: shared\n"
                          "sys/clock, Sys::Clock, \\\n"
                          "  z\n")
        .profile("shared", "sys/clock, Sys::Clock, r\n")
        .profile("DefaultMountGroup", "MountGroup: g\n"
                                      "Condition: a banner\n"
                                      "config/banner, Config::Banner, w\n");
    EXPECT_EQ(
        document(),
        R"({"schemaVersion":1,"program":"kelda )" KELDA_VERSION R"(",)"
        R"("device":{"preinitDir":"D/preinit","profileDir":"D/profiles"},)"
        R"("files":["D/preinit/P","D/profiles/Card","D/profiles/shared","D/profiles/Clock",)"
        R"("D/profiles/DefaultMountGroup"],)"
        R"("agents":[{"name":"Card-%slot","active":false,"noDefaultMountGroup":false,)"
        R"("rootFlags":"rwtp","connectionFlags":"","subAgents":[],"profiles":[1,4],)"
        R"("faults":[],"faultCount":0},)"
        R"({"name":"Clock","active":true,"noDefaultMountGroup":true,)"
        R"("rootFlags":"rt","connectionFlags":"SN","subAgents":["Clock-a"],"profiles":[3],)"
        R"("faults":[{"message":"Encountered unknown mount flag z","file":3,"line":7}],)"
        R"("faultCount":1}],)"
        R"("lines":[{"f":1,"l":4,"t":"sys/clock, Sys::Clock, r","p":"sys/clock"},)"
        R"({"f":1,"l":6,"t":"card/%slot/port/%first, Card::Port, rw",)"
        R"("p":"card/%slot/port/%first","x":[{"n":"%slot","v":"*","o":"token","f":1,"l":1},)"
        R"({"n":"%first","v":"1","o":"aliasLine","e":"1","f":1,"l":3}],"g":"ports"},)"
        R"({"f":2,"l":1,"i":[1,8],"s":0,"g":"ports"},)"
        R"({"f":2,"l":1,"i":[3,6],"s":0},)"
        R"({"f":4,"l":3,"t":"config/banner, Config::Banner, w","p":"config/banner","g":"g",)"
        R"("c":"Condition: a banner"}],)"
        R"("paths":[{"p":"card/*/port/*","t":"Card::Port","d":[[0,2]],"a":"createOnMount"},)"
        R"({"p":"card/*/port/1","t":"Card::Port","d":[[0,2]],"a":"createOnMount"},)"
        R"({"p":"config/banner","t":"Config::Banner","d":[[0,3]],"c":true},)"
        R"({"p":"sys/clock","t":"Sys::Clock","d":[[0,1]]}],)"
        R"("flags":["rw","w","r"],)"
        R"("mounts":[[0,1,0,[1]],[0,2,1,[4]],[0,3,2,[0,2]],[1,3,2,[3]]],)"
        R"("rules":{"flag-unknown":"A letter among the flags is no flag",)"
        R"("read-never-written":"A path is read by agents, and none writes it"},)"
        R"("findings":[{"severity":"error","rule":"flag-unknown","file":3,"line":8,"column":3,)"
        R"("message":"Encountered unknown mount flag z",)"
        R"("hint":"flags are letters of rwcifSDdOAKL and SNAE"},)"
        R"({"severity":"note","rule":"read-never-written","file":1,"line":4,"column":1,)"
        R"("message":"path 'sys/clock' is read here, and no agent writes it"}],)"
        R"("suppressed":0})");
}

TEST_F(ReportDocument, IsThereForADeviceWithoutFiles) {
    EXPECT_EQ(document(), R"({"schemaVersion":1,"program":"kelda )" KELDA_VERSION R"(",)"
                          R"("device":{"preinitDir":"D/preinit","profileDir":"D/profiles"},)"
                          R"("files":[],"agents":[],"lines":[],"paths":[],"flags":[],"mounts":[],)"
                          R"("rules":{},"findings":[],"suppressed":0})");
}

TEST_F(ReportDocument, ToldVariantsAreNoAgentsOfTheirOwn) {
    device.preinit("P", "a,T\n")
        .profile("B", "agentName:B-%x\nactiveMount\nmatchActiveName\na,T,r\n")
        .profile("C", "agentName:C\na,T,r\n");
    auto const data = json();
    EXPECT_EQ(data["agents"][0]["name"], "B-%x");
    EXPECT_EQ(data["agents"][0]["hasActiveVariant"], true);
    EXPECT_EQ(data["agents"][1]["name"], "C");
    EXPECT_FALSE(data["agents"][1].contains("hasActiveVariant"));
    EXPECT_EQ(data["agents"].size(), 2U);
    EXPECT_EQ(data["mounts"].dump(), "[[0,0,0,[0]],[1,0,0,[1]]]");
}

TEST_F(ReportDocument, RefersToLinesThatSayTheSame) {
    device.preinit("P", "a/%x,T,createOnMount\n")
        .profile("A", "agentName:A-%x\na/%x,T,r\na/%x, T,r\na/%x,T,r\nalias:%x=1\na/%x,T,r\n");
    auto const lines = json()["lines"];
    EXPECT_EQ(lines[1].dump(), R"({"f":1,"l":3,"t":"a/%x, T,r","p":"a/%x","y":0})");
    EXPECT_EQ(lines[2].dump(), R"({"f":1,"l":4,"s":0,"y":0})");
    EXPECT_EQ(
        lines[3].dump(),
        R"({"f":1,"l":6,"s":0,"x":[{"n":"%x","v":"1","o":"aliasLine","e":"1","f":1,"l":5}]})");
}

TEST_F(ReportDocument, TellsWhatEveryProfileKnowsAndWhatNobodyDefines) {
    device.preinit("P", "a/%x/%y/%z,T,createOnMount\n")
        .profile("A", "agentName:A\na/%cellId/%AgentString/%none,T,r\n");
    EXPECT_EQ(json()["lines"][0]["x"].dump(), R"([{"n":"%cellId","v":"1","o":"everyProfile"},)"
                                              R"({"n":"%AgentString","v":"*","o":"agentString"},)"
                                              R"({"n":"%none","v":"","o":"undefined"}])");
}

TEST_F(ReportDocument, KnowsAnAliasInItsOwnProfileOnly) {
    device.preinit("P", "a/%x,T,createOnMount\n")
        .profile("A", "agentName:A\nalias:%n=1\na/%n,T,r\n")
        .profile("B", "agentName:B\na/%n,T,r\n");
    EXPECT_EQ(json()["lines"][1]["x"].dump(), R"([{"n":"%n","v":"","o":"undefined"}])");
}

TEST_F(ReportDocument, HasNoWrittenPathWhereALineNamesNone) {
    device.preinit("P", "CONFIG:a,T\nCONFIG:b,T\n")
        .profile("A", "agentName:A\nInclude: ConfigMountProfile\n");
    auto const data = json();
    EXPECT_EQ(data["lines"].dump(), R"([{"f":1,"l":2,"t":"Include: ConfigMountProfile"},)"
                                    R"({"f":1,"l":2,"s":0}])");
    EXPECT_EQ(data["paths"][1].dump(), R"({"p":"b","t":"T","d":[[0,2]],"c":true})");
}

TEST_F(ReportDocument, TellsAPathByAllItsPreinitLines) {
    device.preinit("P", "a/%x,T,createOnMount\na/%y,U,createOnMount\nb,T,createOnStandby\n");
    EXPECT_EQ(json()["paths"].dump(),
              R"([{"p":"a/*","t":"U","d":[[0,1],[0,2]],"a":"createOnMount"},)"
              R"({"p":"b","t":"T","d":[[0,3]],"a":"createOnStandby"}])");
}

TEST_F(ReportDocument, TellsTheTypeOfAMountWhereThePathHasAnother) {
    device.preinit("P", "a/%x,T,createOnMount\na/1,U\n")
        .profile("A", "agentName:A\nalias:%n=1\na/%n,T,r\n")
        .profile("B", "agentName:B\na/1,U,r\n");
    auto const data = json();
    EXPECT_EQ(data["paths"][1].dump(), R"({"p":"a/1","t":"T","d":[[0,2]]})");
    EXPECT_EQ(data["mounts"].dump(), R"([[0,1,0,[0]],[1,1,0,[1],"U"]])");
}

TEST_F(ReportDocument, HasAPathWithoutPreinitLinesWhereAConditionExcusesIt) {
    device.profile("A", "agentName:A\nMountGroup:g\nCondition:c\na,T,r\n");
    EXPECT_EQ(json()["paths"].dump(), R"([{"p":"a","t":"T","d":[]}])");
}

TEST_F(ReportDocument, LeavesOutWhatCommentsAllow) {
    device.preinit("P", "a,T # kelda: allow preinit-never-mounted: later\n")
        .profile("A", "agentName:A\n");
    EXPECT_EQ(json()["findings"].dump(), "[]");
    EXPECT_EQ(json()["rules"].dump(), "{}");
    EXPECT_EQ(json()["suppressed"], 1);
}

TEST_F(ReportDocument, TellsTheFirstFaultsOfAnAgentAndHowManyThereAre) {
    std::string text = "agentName:A\n";
    for (int i = 0; i < 25; ++i)
        text += "a,T,q\n";
    device.preinit("P", "a,T\n").profile("A", text);
    auto const agent = json()["agents"][0];
    EXPECT_EQ(agent["faults"].size(), 20U);
    EXPECT_EQ(agent["faults"][0]["line"], 2);
    EXPECT_EQ(agent["faults"][19]["line"], 21);
    EXPECT_EQ(agent["faultCount"], 25);
}

TEST_F(ReportDocument, TellsFaultsWithoutWhatFollowsFromThemAndWithoutLineEnds) {
    device.preinit("P", "a,T\n").profile("A", "agentName:A\nrootFlags:q\n# no \\\n");
    EXPECT_EQ(json()["agents"][0]["faults"].dump(),
              R"([{"message":"Encountered unknown mount flag q","file":1,"line":2},)"
              R"({"message":"syntax error: multi-line comment: # no \\","file":1,"line":3},)"
              R"({"message":"syntax error: '#no\\'","file":1,"line":3}])");
}

TEST_F(ReportDocument, KnowsNoPlaceForAFaultWithoutAFile) {
    support::EnvironmentVariable const extra{"KELDA_EXTRA_PREINIT_PATH", "/nonexistent/P"};
    device.profile("A", "agentName:A\n");
    auto const data = json();
    EXPECT_EQ(data["agents"][0]["faults"].dump(),
              R"([{"message":"Unable to fopen preinit profile: /nonexistent/P",)"
              R"("file":-1,"line":-1}])");
    EXPECT_EQ(data["findings"][0]["file"], -1);
    EXPECT_EQ(data["findings"][0]["line"], -1);
    EXPECT_EQ(data["findings"][0]["column"], -1);
}

// Root flags as the keyword lines in them make them.
struct Flags {
    std::string lines;
    std::string root;
    std::string connection;
};

class EveryFlagLine : public ReportDocument, public testing::WithParamInterface<Flags> {};

TEST_P(EveryFlagLine, IsTakenAsTheAgentTakesIt) {
    device.preinit("P", "a,T\n").profile("A", "agentName:A\n" + GetParam().lines);
    auto const agent = json()["agents"][0];
    EXPECT_EQ(agent["rootFlags"], GetParam().root);
    EXPECT_EQ(agent["connectionFlags"], GetParam().connection);
}

INSTANTIATE_TEST_SUITE_P(
    ReportDocument, EveryFlagLine,
    testing::Values(Flags{"", "rtp", ""}, Flags{"activeMount\n", "rt", ""},
                    Flags{"rootFlags:w\n", "wtp", ""},
                    Flags{"rootFlags:w\nrootFlags:rS\nactiveMount\n", "rSt", ""},
                    Flags{"rootFlags:w\nrootFlags:\n", "rtp", ""},
                    Flags{"rootFlags:w\nrootFlags:rq\n", "wtp", ""},
                    Flags{"ROOTFLAGS : r w\n", "rwtp", ""},
                    Flags{"connectionFlags:S\nconnectionFlags:AE\n", "rtp", "AE"},
                    Flags{"connectionFlags:S\nconnectionFlags:w\n", "rtp", "S"},
                    Flags{"connectionFlags:S\nconnectionFlags:\n", "rtp", ""}));

// The agents of a device beside their own parsers.
void expectFactsOf(std::filesystem::path const& folder, std::vector<std::string> const& agents) {
    auto const preinitDir = (folder / "preinit").string();
    auto const profileDir = (folder / "profiles").string();
    DatabaseMountFileInfo parser(preinitDir, profileDir);
    auto const& device = parser.device();
    KeldaTool::AgentKeywords const keywords(device);
    for (auto const& agentString : agents) {
        Kelda::AgentMountFileInfo own(false, preinitDir, profileDir, true, "DefaultMountGroup");
        own.addAgent(Rook::String(agentString), "");
        own.doInit();
        auto const found = std::ranges::find_if(device.agents, [&](auto const& agent) {
            return answersTo(agent, Rook::String(agentString));
        });
        ASSERT_NE(found, device.agents.end()) << agentString;
        auto const facts = keywords.of(*found);
        EXPECT_EQ(facts.rootFlags, own.rootFlags().view()) << agentString;
        EXPECT_EQ(facts.connectionFlags, own.connectionFlags().view()) << agentString;
        EXPECT_EQ(facts.noDefaultMountGroup, own.noDefaultMountGroup()) << agentString;
        EXPECT_EQ(facts.hasActiveMounts, own.activeMount()) << agentString;
    }
}

TEST(AgentFacts, AreThoseOfTheAgentsOfTheExampleDevice) {
    support::CleanEnvironment const environment;
    expectFactsOf(support::exampleDevice(),
                  {"CellKeeper", "ConfigKeeper", "FanTray-1", "FirmwareUpgrade", "LedBlinker",
                   "Port-Ethernet-3-1", "PowerSupply-1-B", "RouteLeak-red-blue", "Routing-red",
                   "Thermal", "TimeSync", "Watchdog", "LinkReporter"});
}

TEST(AgentFacts, AreThoseOfTheAgentsOfACorpus) {
    SKIP_WITHOUT_CORPUS();
    support::CleanEnvironment const environment;
    auto const all = support::openConfigAgents();
    std::vector<std::string> some; // each of them reads all preinit files anew
    for (std::size_t i = 0; i < all.size(); i += 20)
        some.push_back(all[i]);
    expectFactsOf(support::corpusDir("openconfig"), some);
}

std::string described(KeldaTool::Expansion const& alias) {
    return fmt::format("{}={} {} {}", alias.name, alias.value, static_cast<int>(alias.origin),
                       alias.definition == nullptr ? -1 : alias.definition->place.line);
}

// What kelda explain tells of each line of a device.
void expectLinesOf(std::filesystem::path const& folder) {
    DatabaseMountFileInfo parser((folder / "preinit").string(), (folder / "profiles").string());
    auto const& device = parser.device();
    KeldaDatabase::PlaceReader places(device);
    KeldaDatabase::DeviceLines stories(device, parser.predefinedAliases(), places);
    KeldaTool::SourceLines source(device);
    KeldaTool::MountLines lines(device, parser.predefinedAliases(), source);
    for (std::size_t i = 0; i < device.mounts.size(); ++i) {
        auto const& story = stories.of(i);
        auto const line = lines.of(i);
        std::vector<std::string> told, expected;
        for (auto const& alias : line.expansions)
            told.push_back(described(alias));
        for (auto const& alias : story.aliases)
            expected.push_back(fmt::format("{}={} {} {}", alias.name, alias.value,
                                           static_cast<int>(alias.origin),
                                           alias.place.isKnown() ? alias.place.line : -1));
        EXPECT_EQ(told, expected) << story.place.text;
        EXPECT_EQ(line.text, story.place.text);
        EXPECT_EQ(line.writtenPath, story.writtenPath) << story.place.text;
        EXPECT_EQ(line.group, story.group) << story.place.text;
        EXPECT_EQ(line.condition, story.condition) << story.place.text;
        EXPECT_EQ(source.numberOf(device.mounts[i].place), story.place.line);
    }
}

TEST(MountLines, AreToldAsKeldaExplainTellsThem) {
    support::CleanEnvironment const environment;
    expectLinesOf(support::exampleDevice());
}

TEST(MountLines, OfACorpusAreToldAsKeldaExplainTellsThem) {
    SKIP_WITHOUT_CORPUS();
    support::CleanEnvironment const environment;
    expectLinesOf(support::corpusDir("openconfig"));
}

} // namespace
