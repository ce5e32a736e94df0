// Which agents a device has, and which profiles each of them loads: what an agent's own parser
// says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <set>

#include "database/Agents.h"
#include "database/DatabaseMountFileInfo.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"

namespace {

using KeldaDatabase::Agent;
using KeldaDatabase::DatabaseMountFileInfo;
using KeldaDatabase::Profile;
using Files = std::vector<std::string>;
using testing::ElementsAre;

class Agents : public testing::Test {
  protected:
    Agents() { device.preinit("P", "a,T\n"); }

    DatabaseMountFileInfo& parser() {
        if (!parser_)
            parser_.emplace(device.preinitDir(), device.profileDir());
        return *parser_;
    }
    std::vector<Agent> const& agents() { return parser().device().agents; }

    Files filesOf(Agent const& agent) {
        Files files;
        for (auto const id : agent.profiles)
            if (auto const& profile = parser().device().profiles[id];
                profile.file != KeldaDatabase::none)
                files.push_back(parser().device().files[profile.file].name);
        return files;
    }
    Files names() {
        Files names;
        for (auto const& agent : agents())
            names.push_back((agent.isActiveVariant ? "variant of " : "") +
                            std::string(agent.name.view()));
        return names;
    }

    support::CleanEnvironment environment;
    support::Device device;

  private:
    std::optional<DatabaseMountFileInfo> parser_;
};

TEST_F(Agents, AreThereOnceForEachNameOrPrefix) {
    device.profile("1", "agentName:Fan\na,T,r\n")
        .profile("2", "agentName:Fan-%slot\na,T,r\n")
        .profile("3", "agentName:Fan-%x-%y\na,T,r\n")
        .profile("4", "agentName:Fan\na,T,w\n")
        .profile("5", "a,T,r\n");
    EXPECT_THAT(names(), ElementsAre("Fan", "Fan-%slot"));
    EXPECT_EQ(filesOf(agents()[0]), (Files{"1", "4"}));
    EXPECT_EQ(filesOf(agents()[1]), (Files{"2", "3"}));
    EXPECT_EQ(agents()[1].agentString, "Fan-*-*");
}

TEST_F(Agents, LoadWhatAShorterPrefixServesAsWell) {
    device.profile("1", "agentName:Fan-%slot\na,T,r\n")
        .profile("2", "agentName:Fan-Tray-%slot\na,T,r\n")
        .profile("3", "agentName:Fan-Tray-1\na,T,r\n");
    EXPECT_THAT(names(), ElementsAre("Fan-%slot", "Fan-Tray-%slot", "Fan-Tray-1"));
    EXPECT_EQ(filesOf(agents()[0]), Files{"1"});
    EXPECT_EQ(filesOf(agents()[1]), (Files{"1", "2"}));
    EXPECT_EQ(filesOf(agents()[2]), (Files{"1", "2", "3"}));
}

TEST_F(Agents, LoadTheDefaultGroupsUnlessAProfileRefuses) {
    device.profile("DefaultMountGroup", "a,T,r\n")
        .profile("1", "agentName:A\na,T,r\n")
        .profile("2", "agentName:B\nnoDefaultMountGroup\na,T,r\n");
    EXPECT_EQ(filesOf(agents()[0]), (Files{"1", "DefaultMountGroup"}));
    EXPECT_EQ(filesOf(agents()[1]), Files{"2"});
}

TEST_F(Agents, HaveAnActiveVariantWithTheProfilesThatSaySo) {
    device.profile("1", "agentName:A-%x\nactiveMount\nmatchActiveName\na,T,r\n")
        .profile("2", "agentName:A-%x\nactiveMount\na,T,r\n")
        .profile("3", "agentName:B-%x\nactiveMount\na,T,r\n");
    EXPECT_THAT(names(), ElementsAre("A-%x", "B-%x", "variant of A-%x"));
    EXPECT_EQ(agents()[2].agentString, "A-Active-*");
    EXPECT_EQ(filesOf(agents()[2]), Files{"1"});
}

TEST_F(Agents, AnswerToTheirNameAndToTheirAgentStrings) {
    device.profile("1", "agentName:Fan-%slot\na,T,r\n");
    for (auto const* const name : {"Fan-%slot", "Fan-*", "Fan-2", "Fan-2-x", "Fan-"})
        EXPECT_TRUE(answersTo(agents()[0], name)) << name;
    for (auto const* const name : {"Fan", "Fantastic-2", "fan-2", ""})
        EXPECT_FALSE(answersTo(agents()[0], name)) << name;
}

// Random names, and the agent strings that they and others match.

std::string randomWords() {
    auto const count = *rc::gen::inRange(1, 4);
    std::string text;
    for (int i = 0; i < count; ++i)
        text += (i == 0 ? "" : "-") + *rc::gen::element<std::string>("Fan", "Fa", "Active", "1");
    return text;
}

struct RandomProfile {
    std::string name = randomWords() + *rc::gen::element<std::string>("", "", "-%a", "-%a-%b",
                                                                      "-%a-x", "-%a$", "-%");
    bool saysMatchActiveName = name.find('$') == std::string::npos && *rc::gen::arbitrary<bool>();
    bool refusesDefaultGroup = *rc::gen::inRange(0, 5) == 0;

    std::string text() const {
        return "agentName:" + name + "\nactiveMount\n" +
               (saysMatchActiveName ? "matchActiveName\n" : "") +
               (refusesDefaultGroup ? "noDefaultMountGroup\n" : "") + "a,T,r\n";
    }
};

struct RandomDevice : support::Device {
    RandomDevice() {
        preinit("P", "a,T\n").profile("DefaultMountGroup", "a,T,r\n");
        auto const count = *rc::gen::inRange(1, 7);
        for (int i = 0; i < count; ++i) {
            auto const name = std::to_string(i);
            profile(name, RandomProfile().text());
            files.push_back(name);
        }
        files.push_back("DefaultMountGroup");
    }

    // What the agent's own parser loads.
    std::set<std::string> filesOf(Rook::String const& agentString) const {
        auto const parser = agent(agentString.view());
        parser->doInit();
        std::set<std::string> loaded;
        for (auto const& file : files)
            if (parser->fileIsLoaded(file))
                loaded.insert(file);
        return loaded;
    }

    std::vector<std::string> files;
};

std::set<std::string> filesOf(KeldaDatabase::Device const& device, Agent const& agent) {
    std::set<std::string> files;
    for (auto const id : agent.profiles)
        if (auto const file = device.profiles[id].file; file != KeldaDatabase::none)
            files.insert(device.files[file].name);
    return files;
}

RC_GTEST_PROP(RandomAgents, LoadWhatTheirOwnParsersLoad, ()) {
    support::CleanEnvironment const environment;
    RandomDevice const random;
    DatabaseMountFileInfo parser(random.preinitDir(), random.profileDir());
    auto const& device = parser.device();
    for (auto const& agent : device.agents)
        RC_ASSERT(filesOf(device, agent) == random.filesOf(agent.agentString));
    for (auto const& agent : device.agents)
        RC_ASSERT((agent.agentString.find("-Active-") != Rook::String::npos) ==
                  agent.isActiveVariant);
}

// Every agent string that finds a profile is one of some agent in the list. Left out are strings
// with two infixes.
RC_GTEST_PROP(RandomAgents, AreAllThatFindAProfile, ()) {
    support::CleanEnvironment const environment;
    RandomDevice const random;
    DatabaseMountFileInfo parser(random.preinitDir(), random.profileDir());
    auto const& device = parser.device();
    for (int i = 0; i < 10; ++i) {
        auto const agentString = randomWords() + *rc::gen::element<std::string>("", "-", "-1");
        bool const hasTwo = agentString.find("Active-Active") != std::string::npos;
        auto const expected = random.filesOf(agentString);
        bool const isListed =
            std::any_of(device.agents.begin(), device.agents.end(),
                        [&](Agent const& agent) { return filesOf(device, agent) == expected; });
        if (!hasTwo && !isListed && !expected.empty())
            RC_FAIL("no agent for " + agentString);
    }
}

// The profiles of each agent are those whose names match, in the order in which they were loaded.
RC_GTEST_PROP(RandomAgents, LoadTheProfilesWhoseNamesMatch, ()) {
    support::CleanEnvironment const environment;
    RandomDevice const random;
    DatabaseMountFileInfo parser(random.preinitDir(), random.profileDir());
    auto const& device = parser.device();
    for (auto const& agent : device.agents) {
        std::string text(agent.agentString.view());
        if (auto const at = text.find("-Active-"); at != std::string::npos)
            text.erase(at, std::string_view("-Active").size());
        std::vector<KeldaDatabase::ProfileId> expected;
        for (KeldaDatabase::ProfileId id = 0; id < device.profiles.size(); ++id) {
            auto const& profile = device.profiles[id];
            bool const matches =
                Kelda::MountFileInfo::matchAgentName(profile.agentName, text).kind !=
                Kelda::AgentNameMatch::noMatch;
            if (!profile.isDefaultGroup() && matches &&
                (!agent.isActiveVariant || profile.saysMatchActiveName))
                expected.push_back(id);
        }
        auto actual = agent.profiles;
        std::erase_if(actual, [&](auto id) { return device.profiles[id].isDefaultGroup(); });
        RC_ASSERT(actual == expected);
    }
}

} // namespace
