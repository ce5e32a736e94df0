// Which changes are told: those for some agents, and those that are grave enough.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "DiffSamples.h"
#include "database/DatabaseMountFileInfo.h"
#include "diff/AskedAgents.h"
#include "support/CleanEnvironment.h"
#include "support/Device.h"

namespace {

using namespace toolunits;
using KeldaTool::AskedAgents;
using KeldaTool::leaveOut;
using testing::ElementsAre;
using Names = std::vector<std::string>;

std::vector<std::string> const allAgents = {"Fan", "Fan-%a-%b",      "FanTray-%t",      "FanTray-1",
                                            "Led", "Routing-%table", "Routing-Active-*"};

class AskedAgentsOfADevice : public testing::Test {
  protected:
    AskedAgentsOfADevice() {
        for (auto const* const name : {"Fan-%a-%b", "FanTray-%t", "FanTray-1", "Fan", "Led"})
            device_.profile(name, "agentName: " + std::string(name) + "\n");
        device_.profile("Routing", "agentName: Routing-%table\nmatchActiveName\n");
        parser_.emplace(device_.preinitDir(), device_.profileDir());
    }

    // Of a change for all agents, those that it is still for.
    Names left(Names const& asked) {
        auto made = change(ChangeKind::typeChanged, ChangeClass::risky, "A", "B");
        made.paths = {{"p", allAgents, "B"}};
        KeldaDatabase::Difference difference;
        difference.changes = {made};
        AskedAgents agents(asked);
        agents.lookIn(parser_->device());
        agents.keepIn(difference);
        return difference.changes.empty() ? Names{} : difference.changes[0].paths[0].agents;
    }

    support::CleanEnvironment environment_;
    support::Device device_;
    std::optional<KeldaDatabase::DatabaseMountFileInfo> parser_;
};

TEST_F(AskedAgentsOfADevice, AreAllUnlessSomeAreNamed) {
    EXPECT_EQ(left({}), allAgents);
}

TEST_F(AskedAgentsOfADevice, HaveANameAnAgentStringOrAPrefix) {
    struct Asked {
        Names asked, left;
    };
    for (auto const& [asked, expected] : {
             Asked{{"Led"}, {"Led"}},
             {{"FanTray-%t"}, {"FanTray-%t"}},
             {{"FanTray-2"}, {"FanTray-%t"}},
             {{"FanTray-1"}, {"FanTray-1"}},
             {{"Fan-1-2"}, {"Fan-%a-%b"}},
             {{"Fan"}, {"Fan"}},
             {{"Fan*"}, {"Fan", "Fan-%a-%b", "FanTray-%t", "FanTray-1"}},
             {{"FanT*", "Led"}, {"FanTray-%t", "FanTray-1", "Led"}},
             {{"*"}, allAgents},
             {{"Routing-red"}, {"Routing-%table"}},
             {{"Routing-%table"}, {"Routing-%table"}},
             {{"Routing-Active-red"}, {"Routing-Active-*"}},
             {{"Routing-Active-*"}, {"Routing-Active-*"}},
             {{"Nobody"}, {}},
             {{"No*"}, {}},
             {{"led"}, {}},
         })
        EXPECT_EQ(left(asked), expected) << asked[0];
}

TEST_F(AskedAgentsOfADevice, AreUnknownWhereNobodyAnswersToANameThatIsNoPrefix) {
    AskedAgents agents({"Led", "Nobody", "No*", "Fan-1-2", "led"});
    EXPECT_THAT(agents.unknown(), ElementsAre("Led", "Nobody", "Fan-1-2", "led"));
    agents.lookIn(parser_->device());
    EXPECT_THAT(agents.unknown(), ElementsAre("Nobody", "led"));
}

TEST_F(AskedAgentsOfADevice, KeepNeitherPathsNorMountsOfOthers) {
    auto made = change(ChangeKind::agentAdded, ChangeClass::risky, "", "");
    made.paths = {{"a", {"Fan", "Led"}, ""}, {"b", {"Fan"}, ""}};
    made.mounts = {{"Fan", "x", "T", "r"}, {"Led", "y", "T", "r"}};
    auto ofPreinit = change(ChangeKind::preinitAdded, ChangeClass::harmless, "", "T");
    ofPreinit.paths = {{"a", {}, ""}};
    KeldaDatabase::Difference difference;
    difference.changes = {made, ofPreinit};
    AskedAgents agents({"Led"});
    agents.lookIn(parser_->device());
    agents.keepIn(difference);
    ASSERT_EQ(difference.changes.size(), 1U);
    ASSERT_EQ(difference.changes[0].paths.size(), 1U);
    EXPECT_EQ(difference.changes[0].paths[0].path, "a");
    EXPECT_THAT(difference.changes[0].paths[0].agents, ElementsAre("Led"));
    ASSERT_EQ(difference.changes[0].mounts.size(), 1U);
    EXPECT_EQ(difference.changes[0].mounts[0].path, "y");
}

struct Least {
    ChangeClass least;
    bool withFollowing;
    std::size_t told, lesser, following;
};

TEST(LeaveOut, CountsWhatIsLesserAndWhatFollows) {
    using enum ChangeClass;
    for (auto const& [least, withFollowing, told, lesser, following] :
         {Least{harmless, true, 5, 0, 0},
          {harmless, false, 4, 0, 1},
          {notable, true, 3, 2, 0},
          {notable, false, 3, 2, 0},
          {risky, false, 2, 3, 0},
          {dangerous, false, 1, 4, 0}}) {
        auto follows = change(ChangeKind::mountAdded, harmless, "", "tn");
        follows.follows = true;
        auto result = diffOf({follows});
        for (auto const severity : {dangerous, risky, notable, harmless})
            result.difference.changes.push_back(
                change(ChangeKind::typeChanged, severity, "A", "B"));
        leaveOut(result, least, withFollowing);
        EXPECT_EQ(result.difference.changes.size(), told) << nameOf(least);
        EXPECT_EQ(result.lesser, lesser) << nameOf(least);
        EXPECT_EQ(result.following, following) << nameOf(least);
    }
}

} // namespace
