#include "graph/GraphNames.h"

#include <algorithm>

#include <fmt/format.h>

#include "Text.h"
#include "database/findings/Spelling.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Device;

// What stands before the tokens of an agent's name.
std::string_view literalPart(std::string_view agentName) {
    return agentName.substr(0, agentName.find("-%"));
}

// The agent that is called nearly so, with its tokens or without.
std::string_view nearestAgent(Device const& device, std::string_view name) {
    std::vector<std::string_view> names;
    for (auto const& agent : device.agents)
        for (auto const candidate : {agent.name.view(), literalPart(agent.name.view())})
            names.push_back(candidate);
    auto const nearest =
        KeldaDatabase::nearestTo(name, names, std::max<std::size_t>(1, name.size() / 3));
    auto const found = std::find(names.begin(), names.end(), nearest);
    if (nearest.empty() || found == names.end())
        return {};
    return device.agents[static_cast<std::size_t>(found - names.begin()) / 2].name.view();
}

// The names that a shorter one begins are found with a "*" at its end.
bool beginsSome(Device const& device, std::string_view name) {
    return std::any_of(device.agents.begin(), device.agents.end(),
                       [name](auto const& agent) { return agent.name.view().starts_with(name); });
}

std::string hintFor(Device const& device, std::string const& name) {
    if (auto const nearest = nearestAgent(device, name); !nearest.empty())
        return fmt::format("; did you mean '{}'?", printable(nearest));
    return beginsSome(device, name) ? fmt::format("; did you mean '{}*'?", printable(name)) : "";
}

std::string unknownAgent(Device const& device, std::string const& name) {
    if (name.find('*') != std::string::npos)
        return fmt::format("kelda: no agent matches '{}'\n", printable(name));
    return fmt::format("kelda: there is no agent '{}'{}\n", printable(name), hintFor(device, name));
}

} // namespace

std::string unknownAgents(Device const& device, GraphQuestion const& question) {
    std::string text;
    for (auto const& name : question.agents)
        if (agentsNamed(device, name).empty())
            text += unknownAgent(device, name);
    return text;
}

std::string nothingBetween(GraphQuestion const& question, PathGraph const& graph) {
    auto const* const among = question.paths.empty() ? "" : " of those asked for";
    auto text = fmt::format("kelda: no path{} is written by one agent and read by another", among);
    if (question.allPaths)
        text = fmt::format("kelda: no path{} is read or written", among);
    if (!question.agents.empty())
        text += question.allPaths ? " by the agents asked for" : ", one of them asked for";
    if (graph.leftOut > 0)
        text += fmt::format("; with --all-paths there {} {}", graph.leftOut == 1 ? "is" : "are",
                            counted(graph.leftOut, "path"));
    return text + "\n";
}

} // namespace KeldaTool
