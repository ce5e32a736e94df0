// Agent names that overlap.
#include "StaticChecks.h"

#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>

#include "database/findings/FindingList.h"

namespace KeldaDatabase {
namespace {

constexpr std::string_view activeInfix = "-Active-";
// So many names that a name falls under are told of, the nearest first: enough for people, and few
// enough where somebody nests names without an end.
constexpr int mostNames = 16;

class AgentNames {
  public:
    explicit AgentNames(Device const& device)
        : device_(device), findings_(device, RuleId::agentMatchedTwice) {
        std::unordered_set<Rook::String> known;
        for (ProfileId id = 0; id < device.profiles.size(); ++id) {
            auto const& profile = device.profiles[id];
            // A name with the infix is never found.
            if (profile.isDefaultGroup() ||
                profile.agentKey.find(activeInfix) != Rook::String::npos)
                continue;
            if (!known.insert(profile.agentName).second)
                continue;
            names_.push_back(id);
            if (profile.hasTokens())
                prefixes_.try_emplace(profile.agentKey.view(), id);
        }
    }

    std::vector<Finding> findings() {
        for (auto const id : names_)
            lookFor(id);
        return findings_.take();
    }

  private:
    // Finds the names with tokens whose agents, some or all, have this name, too.
    void lookFor(ProfileId id) {
        auto const& profile = device_.profiles[id];
        auto const key = profile.agentKey.view();
        int told = 0;
        // The whole key: of a name with tokens, another one with the same prefix. A name without a
        // "-" is not compared with names that have tokens.
        if (profile.hasTokens() || key.find('-') != std::string_view::npos)
            told += tellOf(id, key);
        for (auto dash = key.rfind('-'); dash != std::string_view::npos && told < mostNames;
             dash = dash == 0 ? std::string_view::npos : key.rfind('-', dash - 1))
            told += tellOf(id, key.substr(0, dash));
    }

    int tellOf(ProfileId id, std::string_view prefix) {
        auto const other = prefixes_.find(prefix);
        if (other == prefixes_.end() || other->second == id)
            return 0;
        auto const& narrow = device_.profiles[id];
        auto const agent = std::string(narrow.agentKey.view()) + (narrow.hasTokens() ? "-1" : "");
        auto const& later = device_.profiles[std::max(id, other->second)];
        auto const& earlier = device_.profiles[std::min(id, other->second)];
        auto* const finding =
            findings_.at(placeOf(later), std::max(id, other->second), earlier.agentName);
        if (finding == nullptr)
            return 0;
        finding->subject = {Subject::behindColon, std::string(later.agentName.view())};
        finding->message = fmt::format(
            "agent names '{}' and '{}' both match agent '{}', which loads the profiles of both",
            later.agentName, earlier.agentName, agent);
        finding->related.push_back({placeOf(earlier), "the other agent name stands here"});
        return 1;
    }

    static Place placeOf(Profile const& profile) {
        return {profile.file, profile.agentNameLine, none};
    }

    Device const& device_;
    FindingList findings_;
    std::vector<ProfileId> names_;                             // the first profile of each name
    std::unordered_map<std::string_view, ProfileId> prefixes_; // the first name of each prefix
};

} // namespace

std::vector<Finding> agentsMatchedTwice(Device const& device) {
    return AgentNames(device).findings();
}

} // namespace KeldaDatabase
