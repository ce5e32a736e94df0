#include "diff/AskedAgents.h"

#include <algorithm>

#include "database/Agents.h"
#include "database/paths/DeviceStory.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Agent;
using KeldaDatabase::ChangedMount;
using KeldaDatabase::ChangedPath;

constexpr std::string_view activeInfix = "-Active-";

bool isPrefix(std::string const& asked) {
    return asked.ends_with('*');
}

bool isCalled(Agent const& agent, std::string const& asked) {
    return nameOf(agent) == asked || agent.agentString.view() == asked;
}

// An "-Active-" string is one of the variant's only, which answers to the rest of it.
bool answers(Agent const& agent, std::string asked) {
    auto const infix = asked.find(activeInfix);
    if (agent.isActiveVariant != (infix != std::string::npos))
        return false;
    if (infix != std::string::npos)
        asked.erase(infix, activeInfix.size() - 1);
    return answersTo(agent, asked);
}

// The agents that are called so; where none is, those that answer to it.
std::vector<std::string> namesFor(KeldaDatabase::Device const& device, std::string const& asked) {
    std::vector<std::string> called;
    std::vector<std::string> answering;
    auto const prefix = asked.substr(0, asked.size() - 1);
    for (auto const& agent : device.agents)
        if (isPrefix(asked) ? nameOf(agent).starts_with(prefix) : isCalled(agent, asked))
            called.push_back(nameOf(agent));
        else if (!isPrefix(asked) && answers(agent, asked))
            answering.push_back(nameOf(agent));
    return called.empty() ? answering : called;
}

} // namespace

void AskedAgents::lookIn(KeldaDatabase::Device const& device) {
    for (auto const& asked : asked_)
        for (auto& name : namesFor(device, asked)) {
            known_.insert(asked);
            names_.insert(std::move(name));
        }
}

std::vector<std::string> AskedAgents::unknown() const {
    std::vector<std::string> unknown;
    for (auto const& asked : asked_)
        if (!isPrefix(asked) && !known_.contains(asked))
            unknown.push_back(asked);
    return unknown;
}

void AskedAgents::keepIn(KeldaDatabase::Difference& difference) const {
    if (asked_.empty())
        return;
    for (auto& change : difference.changes) {
        for (auto& path : change.paths)
            std::erase_if(path.agents, [this](auto const& agent) { return !isMeant(agent); });
        std::erase_if(change.paths, [](ChangedPath const& path) { return path.agents.empty(); });
        std::erase_if(change.mounts,
                      [this](ChangedMount const& mount) { return !isMeant(mount.agent); });
    }
    std::erase_if(difference.changes,
                  [](KeldaDatabase::Change const& change) { return change.paths.empty(); });
}

} // namespace KeldaTool
