#include "report/AgentFacts.h"

#include <algorithm>

namespace KeldaTool {
namespace {

using KeldaDatabase::Keyword;

constexpr std::string_view rootFlagsKeyword = "rootFlags:";
constexpr std::string_view connectionFlagsKeyword = "connectionFlags:";
constexpr std::string_view subAgentKeyword = "subAgent:";

// As an agent's parser completes them: every root is "t", that of an agent without active mounts
// "p".
std::string completed(std::string flags, bool hasActiveMounts) {
    if (flags.empty())
        flags = "r";
    if (flags.find('t') == std::string::npos)
        flags += 't';
    if (!hasActiveMounts && flags.find('p') == std::string::npos)
        flags += 'p';
    return flags;
}

void addOnce(std::vector<std::string>& names, std::string const& name) {
    if (std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(name);
}

} // namespace

AgentKeywords::AgentKeywords(KeldaDatabase::Device const& device) : device_(device) {
    for (auto const& fault : device.faults) {
        auto const message = fault.exception.msg.view();
        if (message.starts_with("Invalid root flags") ||
            message.starts_with("Invalid connection flags"))
            refused_.emplace(fault.profile, fault.place.line);
    }
}

bool AgentKeywords::isRefused(Keyword const& keyword) const {
    return refused_.contains({keyword.profile, keyword.place.line});
}

AgentFacts AgentKeywords::of(KeldaDatabase::Agent const& agent) const {
    AgentFacts facts;
    for (auto const id : agent.profiles) {
        auto const& profile = device_.profiles[id];
        facts.noDefaultMountGroup = facts.noDefaultMountGroup || profile.saysNoDefaultMountGroup;
        for (auto i = profile.keywords.begin; i < profile.keywords.end; ++i)
            add(device_.keywords[i], facts);
    }
    facts.rootFlags = completed(std::move(facts.rootFlags), facts.hasActiveMounts);
    return facts;
}

// Of several lines with flags the last one counts.
void AgentKeywords::add(Keyword const& keyword, AgentFacts& facts) const {
    if (keyword.keyword == "activeMount")
        facts.hasActiveMounts = true;
    else if (keyword.keyword == rootFlagsKeyword && !isRefused(keyword))
        facts.rootFlags = keyword.line.substr(rootFlagsKeyword.size());
    else if (keyword.keyword == connectionFlagsKeyword && !isRefused(keyword))
        facts.connectionFlags = keyword.line.substr(connectionFlagsKeyword.size());
    else if (keyword.keyword == subAgentKeyword)
        addOnce(facts.subAgents, keyword.line.substr(subAgentKeyword.size()));
}

} // namespace KeldaTool
