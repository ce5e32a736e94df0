#include "Agents.h"

#include <algorithm>
#include <map>

#include <KeldaBase/MountFileInfo.h>

namespace KeldaDatabase {
namespace {

constexpr std::string_view activeInfix = "-Active-";

// The agent profiles of a device by the names that they match: literal names by the whole name,
// names with tokens by what stands before the first token.
class ProfileIndex {
  public:
    explicit ProfileIndex(Device const& device) {
        for (ProfileId id = 0; id < device.profiles.size(); ++id) {
            auto const& profile = device.profiles[id];
            if (profile.isDefaultGroup())
                continue;
            (profile.hasTokens() ? byPrefix_ : byName_)[profile.agentKey].push_back(id);
        }
    }

    std::map<Rook::String, std::vector<ProfileId>> const& byName() const { return byName_; }
    std::map<Rook::String, std::vector<ProfileId>> const& byPrefix() const { return byPrefix_; }

    // Those that an agent string loads, in the order in which they were loaded.
    std::vector<ProfileId> matching(Rook::String const& agentString) const {
        std::vector<ProfileId> profiles;
        append(byName_, agentString, profiles);
        auto const text = agentString.view();
        // A name with tokens is only compared with a string that has a "-".
        if (text.find('-') != std::string_view::npos)
            append(byPrefix_, agentString, profiles);
        for (auto dash = text.find('-'); dash != std::string_view::npos;
             dash = text.find('-', dash + 1))
            append(byPrefix_, text.substr(0, dash), profiles);
        std::ranges::sort(profiles);
        return profiles;
    }

  private:
    static void append(std::map<Rook::String, std::vector<ProfileId>> const& index,
                       Rook::String const& name, std::vector<ProfileId>& profiles) {
        if (auto const found = index.find(name); found != index.end())
            profiles.insert(profiles.end(), found->second.begin(), found->second.end());
    }

    std::map<Rook::String, std::vector<ProfileId>> byName_;
    std::map<Rook::String, std::vector<ProfileId>> byPrefix_;
};

// The name with "*" for each of its tokens, also for a single one that has no name ("Fan-%").
Rook::String withAnyValues(Rook::String const& agentName) {
    auto const pieces = Kelda::MountFileInfo::tokenize(agentName, "-%");
    std::string text(pieces.front().view());
    for (std::size_t token = 1; token < std::max<std::size_t>(pieces.size(), 2); ++token)
        text += "-*";
    return text;
}

class AgentList {
  public:
    explicit AgentList(Device const& device) : device_(device), index_(device) {
        for (ProfileId id = 0; id < device.profiles.size(); ++id)
            if (device.profiles[id].isDefaultGroup())
                defaultGroups_.push_back(id);
        for (auto const& [name, profiles] : index_.byName())
            add(profiles, name);
        for (auto const& [prefix, profiles] : index_.byPrefix()) {
            // "X-Active-%slot" finds no agent string with a value, but "X-Active".
            auto const withValues = mostTokens(profiles);
            add(profiles, hasInfix(withValues) ? prefix : withValues);
        }
    }

    std::vector<Agent> take() {
        auto const byName = [](Agent const& a, Agent const& b) { return a.name < b.name; };
        std::ranges::stable_sort(agents_, byName);
        std::ranges::stable_sort(variants_, byName);
        agents_.insert(agents_.end(), variants_.begin(), variants_.end());
        return std::move(agents_);
    }

  private:
    static bool hasInfix(Rook::String const& agentString) {
        return agentString.find(activeInfix) != Rook::String::npos;
    }

    // The agent string of profiles with the same prefix has a value for every token.
    Rook::String mostTokens(std::vector<ProfileId> const& profiles) const {
        Rook::String longest;
        for (auto const id : profiles) {
            auto const text = withAnyValues(device_.profiles[id].agentName);
            if (text.size() > longest.size())
                longest = text;
        }
        return longest;
    }

    void add(std::vector<ProfileId> const& named, Rook::String const& agentString) {
        // Such a string is looked up without its infix, and never finds a name that has it.
        if (hasInfix(agentString))
            return;
        Agent agent{device_.profiles[named.front()].agentName, agentString, false,
                    index_.matching(agentString)};
        addActiveVariant(agent);
        addDefaultGroups(agent);
        agents_.push_back(std::move(agent));
    }

    // "X-1" answers to "X-Active-1", too.
    void addActiveVariant(Agent const& agent) {
        auto const dash = agent.agentString.find("-");
        Agent variant{agent.name, agent.agentString, true, {}};
        for (auto const id : agent.profiles)
            if (device_.profiles[id].saysMatchActiveName)
                variant.profiles.push_back(id);
        if (dash == Rook::String::npos || variant.profiles.empty())
            return;
        auto const text = agent.agentString.view();
        auto const prefix = device_.profiles[variant.profiles.back()].agentKey.size();
        auto const at = prefix < text.size() && text[prefix] == '-' ? prefix : dash;
        variant.agentString =
            std::string(text.substr(0, at)) + "-Active" + std::string(text.substr(at));
        addDefaultGroups(variant);
        variants_.push_back(std::move(variant));
    }

    void addDefaultGroups(Agent& agent) const {
        bool const refuses = std::ranges::any_of(agent.profiles, [this](ProfileId id) {
            return device_.profiles[id].saysNoDefaultMountGroup;
        });
        if (!refuses)
            agent.profiles.insert(agent.profiles.end(), defaultGroups_.begin(),
                                  defaultGroups_.end());
    }

    Device const& device_;
    ProfileIndex index_;
    std::vector<ProfileId> defaultGroups_;
    std::vector<Agent> agents_;
    std::vector<Agent> variants_;
};

} // namespace

std::vector<Agent> agentsOf(Device const& device) {
    return AgentList(device).take();
}

bool answersTo(Agent const& agent, Rook::String const& name) {
    return agent.name == name || agent.agentString == name ||
           Kelda::MountFileInfo::matchAgentName(agent.name, name).kind !=
               Kelda::AgentNameMatch::noMatch;
}

} // namespace KeldaDatabase
