// What changed for each agent.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "AgentMeaning.h"
#include "Causes.h"
#include "FoundChange.h"

namespace KeldaDatabase {

/// Compares the agents of two devices one after another.
class AgentDifference {
  public:
    AgentDifference(DeviceSide& before, DeviceSide& after, Causes& causes,
                    std::vector<FoundChange>& found)
        : before_(before), after_(after), oldMeanings_(before), newMeanings_(after),
          causes_(causes), found_(found) {}

    void compareAll();

  private:
    using Index = std::optional<std::size_t>; // to Device::agents

    void compare(std::size_t old, std::size_t now);
    void compareMeanings();
    void addLone(std::size_t agent, bool isNew);
    bool addFaults(Index old, Index now);
    bool isSame(std::size_t old, std::size_t now);
    void dropWhatPlainHas(Agent const& variant, std::size_t begin);
    void stand(Agent const* old, Agent const* now);

    void compareSettings(AgentMeaning const& old, AgentMeaning const& now);
    ChangeClass classOfVariant(bool isNew) const;
    void compareRootFlags(AgentMeaning const& old, AgentMeaning const& now);
    void compareMounts(AgentMeaning const& old, AgentMeaning const& now);
    void compareMount(MountMeaning const* old, MountMeaning const* now);
    void compareFlags(MountMeaning const* old, MountMeaning const* now, bool follows);
    void compareGroups(MountMeaning const& old, MountMeaning const& now);
    void compareTokens(MountMeaning const& old, MountMeaning const& now);
    void compareConditions(MountMeaning const& old, MountMeaning const& now);
    void explainFollowing(std::size_t begin);
    Cause causeOfFollowing(std::map<std::string, Cause> const& changed, std::string path) const;

    std::string shown(Rook::String const& text) const;
    std::string groupName(GroupMembership const& group) const;
    FoundChange& add(ChangeKind kind, ChangeClass severity, std::string before, std::string after,
                     Cause cause);

    DeviceSide& before_;
    DeviceSide& after_;
    AgentMeanings oldMeanings_;
    AgentMeanings newMeanings_;
    Causes& causes_;
    std::vector<FoundChange>& found_;
    std::map<std::pair<ProfileId, ProfileId>, bool> same_; // what meanTheSame said

    // Of the agent being compared.
    AgentPair agents_;
    std::string agentName_;
    std::vector<std::string> tokenNames_;
    Cause activeCause_; // of what gives directories other flags: active mounts came or went,
    Cause rootCause_;   // or root flags that they inherit are others

    // The changes of plain agents, by the literal part of their names.
    std::map<std::pair<Rook::String, bool>, std::pair<std::size_t, std::size_t>> plain_;
};

} // namespace KeldaDatabase
