#include "FindingList.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace KeldaDatabase {

std::size_t FindingList::KeyHash::operator()(Key const& key) const {
    auto const line = static_cast<std::uint32_t>(key.line);
    auto const place = std::uint64_t{key.file} << 32U | line;
    return std::hash<std::uint64_t>()(place * 0x9e3779b97f4a7c15U) ^
           std::hash<std::string>()(key.about);
}

Finding* FindingList::at(Place const& place, ProfileId profile, std::string_view about) {
    auto const [entry, isNew] =
        known_.try_emplace({place.file, place.line, std::string(about)}, findings_.size());
    auto const index = entry->second;
    if (isNew) {
        findings_.emplace_back();
        agents_.emplace_back();
        findings_.back().rule = rule_;
        findings_.back().severity = ruleOf(rule_).severity;
        findings_.back().place = place;
    }
    // Lines come profile by profile, so that one Include line is met in a row.
    auto& includes = findings_[index].includes;
    if (place.include != none && (includes.empty() || includes.back() != place.include))
        includes.push_back(place.include);
    noteAgents(index, profile);
    return isNew ? &findings_[index] : nullptr;
}

void FindingList::noteAgents(std::size_t finding, ProfileId profile) {
    if (profile == none || device_.profiles[profile].isDefaultGroup())
        return;
    if (agentsOfProfiles_.empty())
        fillAgentsOfProfiles();
    auto const& more = agentsOfProfiles_[profile];
    agents_[finding].insert(agents_[finding].end(), more.begin(), more.end());
}

void FindingList::fillAgentsOfProfiles() {
    agentsOfProfiles_.resize(device_.profiles.size());
    for (std::uint32_t agent = 0; agent < device_.agents.size(); ++agent)
        if (!device_.agents[agent].isActiveVariant)
            for (auto const profile : device_.agents[agent].profiles)
                agentsOfProfiles_[profile].push_back(agent);
}

std::vector<Finding> FindingList::take() {
    for (std::size_t i = 0; i < findings_.size(); ++i) {
        auto& agents = agents_[i];
        std::sort(agents.begin(), agents.end());
        agents.erase(std::unique(agents.begin(), agents.end()), agents.end());
        for (auto const agent : agents) {
            std::string name(device_.agents[agent].name.view());
            auto& names = findings_[i].agents;
            if (names.empty() || names.back() != name)
                names.push_back(std::move(name));
        }
    }
    known_.clear();
    agents_.clear();
    return std::exchange(findings_, {});
}

} // namespace KeldaDatabase
