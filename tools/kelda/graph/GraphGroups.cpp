// Nodes of a graph put together, and what they are called.
#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include <KeldaUtil/MountFlags.h>
#include <fmt/format.h>

#include "Text.h"
#include "graph/PathGraph.h"

namespace KeldaTool {
namespace {

// The edges of a node: the nodes at their other ends, and their flags.
using Edges = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

// Which node each one becomes part of: the first with the same edges.
std::vector<std::uint32_t> representatives(std::vector<Edges> const& nodes,
                                           std::vector<bool> const& staysAlone) {
    std::map<Edges, std::uint32_t> first;
    std::vector<std::uint32_t> result;
    for (std::uint32_t node = 0; node < nodes.size(); ++node)
        result.push_back(staysAlone[node] ? node
                                          : first.try_emplace(nodes[node], node).first->second);
    return result;
}

// Moves the texts of each node to its representative and drops the nodes that are left without any.
// What is returned are the new indexes.
template <class Node>
std::vector<std::uint32_t> unite(std::vector<Node>& nodes, std::vector<std::string> Node::*texts,
                                 std::vector<std::uint32_t> const& representative) {
    std::vector<std::uint32_t> ids(nodes.size());
    std::vector<Node> united;
    for (std::uint32_t node = 0; node < nodes.size(); ++node) {
        auto const first = representative[node];
        if (first == node) {
            ids[node] = static_cast<std::uint32_t>(united.size());
            united.push_back(std::move(nodes[node]));
        } else {
            ids[node] = ids[first];
            auto& all = united[ids[first]].*texts;
            auto& own = nodes[node].*texts;
            all.insert(all.end(), own.begin(), own.end());
        }
    }
    nodes = std::move(united);
    return ids;
}

void sortAndDropTwins(std::vector<PathGraph::Edge>& edges) {
    auto const key = [](PathGraph::Edge const& edge) { return std::tie(edge.path, edge.agent); };
    std::sort(edges.begin(), edges.end(),
              [&key](auto const& a, auto const& b) { return key(a) < key(b); });
    auto const end = std::unique(edges.begin(), edges.end(),
                                 [&key](auto const& a, auto const& b) { return key(a) == key(b); });
    edges.erase(end, edges.end());
}

void groupPaths(PathGraph& graph) {
    std::vector<Edges> edges(graph.paths.size());
    for (auto const& edge : graph.edges)
        edges[edge.path].emplace_back(edge.agent, edge.flags.bits());
    auto const ids = unite(graph.paths, &PathGraph::Path::paths,
                           representatives(edges, std::vector<bool>(edges.size())));
    for (auto& edge : graph.edges)
        edge.path = ids[edge.path];
    sortAndDropTwins(graph.edges);
}

void groupAgents(PathGraph& graph) {
    std::vector<Edges> edges(graph.agents.size());
    for (auto const& edge : graph.edges)
        edges[edge.agent].emplace_back(edge.path, edge.flags.bits());
    std::vector<bool> isAsked;
    for (auto const& agent : graph.agents)
        isAsked.push_back(agent.isAsked);
    auto const ids = unite(graph.agents, &PathGraph::Agent::names, representatives(edges, isAsked));
    for (auto& edge : graph.edges)
        edge.agent = ids[edge.agent];
    sortAndDropTwins(graph.edges);
}

std::string labelOf(std::vector<std::string> const& names, std::string_view noun) {
    auto const first = printable(names.front());
    return names.size() == 1 ? first
                             : fmt::format("{}: {}, ...", counted(names.size(), noun), first);
}

} // namespace

PathGraph grouped(PathGraph graph, std::size_t most) {
    if (graph.paths.size() > most)
        groupPaths(graph);
    if (graph.agents.size() > most)
        groupAgents(graph);
    return graph;
}

std::string labelOf(PathGraph::Path const& path) {
    return labelOf(path.paths, "path");
}

std::string labelOf(PathGraph::Agent const& agent) {
    return labelOf(agent.names, "agent");
}

std::string listOf(std::vector<std::string> const& names) {
    std::string text;
    for (auto const& name : names) {
        if (!text.empty())
            text += '\n';
        text += printable(name);
    }
    return text;
}

std::string labelOf(PathGraph::Edge const& edge) {
    return textOf(KeldaUtil::mountTableFlagsToString(edge.flags));
}

std::string sentenceOf(PathGraph const& graph, PathGraph::Edge const& edge) {
    auto const& agent = graph.agents[edge.agent];
    auto const* const ending = agent.names.size() == 1 ? "s" : "";
    auto const verb = edge.writes && edge.reads
                          ? fmt::format("read{0} and write{0}", ending)
                          : fmt::format("{}{}", edge.writes ? "write" : "read", ending);
    return fmt::format("{} {} {}", labelOf(agent), verb, labelOf(graph.paths[edge.path]));
}

std::string countsOf(PathGraph const& graph) {
    std::size_t agents = 0;
    for (auto const& agent : graph.agents)
        agents += agent.names.size();
    std::size_t paths = 0;
    for (auto const& path : graph.paths)
        paths += path.paths.size();
    return fmt::format("{}, {}", counted(agents, "agent"), counted(paths, "path"));
}

} // namespace KeldaTool
