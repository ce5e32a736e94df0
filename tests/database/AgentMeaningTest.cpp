// What the files mean to an agent is what the agent's own parser makes of them.
#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "database/diff/AgentMeaning.h"
#include "database/diff/AgentNamesShown.h"
#include "database/paths/MountCollector.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"

namespace {

using KeldaDatabase::AgentMeaning;
using testing::ElementsAre;
using testing::IsEmpty;

class MeantDevice : public support::Device {
  public:
    AgentMeaning of(std::string const& name) {
        parser_ =
            std::make_unique<KeldaDatabase::DatabaseMountFileInfo>(preinitDir(), profileDir());
        parser_->numberedTokensIs(true);
        side_ = std::make_unique<KeldaDatabase::DeviceSide>(*parser_);
        for (auto const& agent : side_->device().agents)
            if (agent.name == name)
                return KeldaDatabase::AgentMeanings(*side_).of(agent);
        throw std::invalid_argument(name);
    }

  private:
    support::CleanEnvironment environment_;
    std::unique_ptr<KeldaDatabase::DatabaseMountFileInfo> parser_;
    std::unique_ptr<KeldaDatabase::DeviceSide> side_;
};

std::map<std::string, std::string> mountsOf(AgentMeaning const& meaning) {
    std::map<std::string, std::string> mounts;
    for (auto const& mount : meaning.mounts)
        mounts[std::string(mount.path.view())] =
            fmt::format("{} {} {}", mount.type.view(), KeldaDatabase::flagText(mount.flags),
                        mount.isExplicit() ? "explicit" : "intermediate");
    return mounts;
}

std::map<std::string, std::string> mountsOf(Kelda::AgentMountFileInfo& parser) {
    std::map<std::string, std::string> mounts;
    for (auto const& [path, args] : parser.pathMountArgsMap())
        mounts[std::string(path.view())] =
            fmt::format("{} {} {}", args.type.view(), KeldaDatabase::flagText(args.flags),
                        args.isExplicit ? "explicit" : "intermediate");
    return mounts;
}

constexpr char const* preinit = "a/b/c,T\na/b/d,T\na/e,T\nf,T\ng/%x,T,createOnMount\n";

TEST(AgentMeaning, IsWhatTheAgentsOwnParserHas) {
    char const* const profiles[] = {
        "a/b/c,T,r\n",
        "rootFlags: w\na/b/c,T,r\na/b/c,T,S\n",
        "rootFlags: w\nrootFlags:\na/e,T,r\n",
        "rootFlags: tp\nconnectionFlags: S\nconnectionFlags: AN\n",
        "activeMount\na/b/c,T,rw\na/b/d,T,r\nf,T,i\n",
        "activeMount\nrootFlags: rw\na/b/c,T,rw\na/b,Fen::Dir,r\na/e,T,r\n",
        "activeMount\nrootFlags: rp\na/b/c,T,w\na,Fen::Dir,S\n",
        "alias:%s=one\nsubAgent: Sub-%s\nsubAgent:Two\nalias:%s=2\nsubAgent:%s-%agentString\n",
        "noDefaultMountGroup\nmatchActiveName\nactiveMount\nf,T,r\n",
    };
    for (auto const* const text : profiles) {
        MeantDevice device;
        device.preinit("P", preinit)
            .profile("A", fmt::format("agentName:A\n{}", text))
            .profile("DefaultMountGroup", "f,T,w\n");
        auto const meaning = device.of("A");
        auto const parser = device.agent("A");
        parser->doInit();
        EXPECT_EQ(mountsOf(meaning), mountsOf(*parser)) << text;
        EXPECT_EQ(meaning.settings.rootFlags.view(), parser->rootFlags().view()) << text;
        EXPECT_EQ(meaning.settings.connectionFlags.view(), parser->connectionFlags().view())
            << text;
        EXPECT_EQ(meaning.isActive, parser->activeMount()) << text;
        EXPECT_EQ(meaning.refusesDefault, parser->noDefaultMountGroup()) << text;
        EXPECT_EQ(meaning.matchesActiveName, parser->matchActiveNameSeen()) << text;
        EXPECT_EQ(meaning.settings.subAgents.size(), parser->subAgents().size()) << text;
    }
}

TEST(AgentMeaning, HasSubAgentsInTheirOrder) {
    MeantDevice device;
    device.preinit("P", preinit)
        .profile("A", "agentName:A-%t\nalias:%s=one\nsubAgent: Sub-%s\nsubAgent:%T-x\n"
                      "alias:%s=2\nsubAgent:%s%cellId\n");
    EXPECT_THAT(device.of("A-%t").settings.subAgents, ElementsAre("Sub-one", "%1-x", "21"));
}

TEST(AgentMeaning, HasTheRootFlagsOfADefaultGroupWithoutMore) {
    struct Case {
        char const* profile;
        char const* defaultGroup;
        char const* rootFlags;
    };
    for (auto const& [profile, defaultGroup, rootFlags] :
         {Case{"rootFlags:rw\nactiveMount\n", "rootFlags:S\n", "S"},
          Case{"rootFlags:rw\n", "rootFlags:S\n", "Sp"}, Case{"f,T,r\n", "rootFlags:\n", ""}}) {
        MeantDevice device;
        device.preinit("P", preinit)
            .profile("A", fmt::format("agentName:A\n{}", profile))
            .profile("DefaultMountGroup", defaultGroup);
        EXPECT_EQ(device.agent("A")->rootFlags().view(), rootFlags) << profile;
        EXPECT_EQ(device.of("A").settings.rootFlags.view(), rootFlags) << profile;
    }
}

TEST(AgentMeaning, EndsAtTheFirstFault) {
    MeantDevice device;
    device.preinit("P", preinit)
        .profile("A", "agentName:A\nf,T,r\nwrong\nother,T,r\n")
        .profile("B", "agentName:B\nf,T,r\n");
    KeldaDatabase::DatabaseMountFileInfo parser(device.preinitDir(), device.profileDir());
    KeldaDatabase::DeviceSide side(parser);
    KeldaDatabase::AgentMeanings const meanings(side);
    ASSERT_EQ(side.device().agents.size(), 2U);
    auto const fault = meanings.firstFault(0);
    ASSERT_TRUE(fault.has_value());
    EXPECT_EQ(side.device().faults[*fault].exception.msg.view(), "syntax error: 'wrong'");
    EXPECT_EQ(meanings.firstFault(1), std::nullopt);
}

TEST(TokenNames, StandForTheirNumbers) {
    std::vector<std::string> const names = {"%slot", "%card"};
    EXPECT_EQ(KeldaDatabase::withTokenNames("a/%2/%1-%3/%", names), "a/%card/%slot-%3/%");
    EXPECT_EQ(KeldaDatabase::withTokenNames("a/%12", names), "a/%slot2");
    EXPECT_EQ(KeldaDatabase::withTokenNames("a/%10", names), "a/%slot0");
    EXPECT_EQ(KeldaDatabase::withTokenNames("%1", {}), "%1");
    EXPECT_EQ(KeldaDatabase::withTokenNumbers("x '%SLOT/%slots' %card", names), "x '%1/%slots' %2");
}

TEST(TokenNames, AreThoseOfTheAgentsNameAndThenOfItsOtherProfiles) {
    MeantDevice device;
    device.profile("A", "agentName:A-%x$\n").profile("B", "agentName:A-%y-%z\n");
    KeldaDatabase::DatabaseMountFileInfo parser(device.preinitDir(), device.profileDir());
    auto const& agents = parser.device().agents;
    ASSERT_EQ(agents.size(), 1U);
    EXPECT_THAT(KeldaDatabase::tokenNames(parser.device(), agents[0]), ElementsAre("%x", "%z"));
}

} // namespace
