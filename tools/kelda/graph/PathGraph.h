// Agents and the paths between them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "database/Device.h"

namespace KeldaTool {

struct GraphQuestion {
    std::vector<std::string> agents; ///< names, agent strings, or texts with "*"; none for all
    std::vector<std::string> paths;  ///< paths or patterns, as PathPattern has them; none for all
    bool allPaths = false;           ///< also those that nobody writes, or nobody else reads
};

/// A graph of two kinds of nodes. Every edge is between an agent and a path.
struct PathGraph {
    /// One agent, or several that have edges of the same flags to the same paths.
    struct Agent {
        std::vector<std::string> names; ///< any bytes, sorted
        bool isAsked = false;           ///< one of GraphQuestion::agents
    };
    /// One path, or several that the same agents have with the same flags.
    struct Path {
        std::vector<std::string> paths; ///< any bytes, sorted
    };
    struct Edge {
        std::uint32_t agent = 0; ///< index to agents
        std::uint32_t path = 0;  ///< index to paths
        Fen::MountTable::Flags flags;
        bool reads = false;
        bool writes = false; ///< at least one of both holds
    };

    std::vector<Agent> agents; ///< by first name
    std::vector<Path> paths;   ///< by first path
    std::vector<Edge> edges;   ///< by path and agent
    std::size_t leftOut = 0;   ///< paths that only allPaths would show
};

/// The indexes of the agents that a name, an agent string or a text with "*" stands for. "-Active-"
/// variants are none of them: their mounts are those of their agents.
std::vector<std::uint32_t> agentsNamed(KeldaDatabase::Device const& device,
                                       std::string const& name);

/// The agents of a device with the paths that they read or write.
///
/// Paths with "*" meet others: an agent with "fan/*" is at the node of "fan/1", too, if somebody
/// mounts that, but one with "fan/1" is not at "fan/*", where it could seem to be connected with
/// what others have of "fan/2". Two paths of which neither stands for all that the other does
/// ("a/*/1", "a/2/*") are at each other's nodes.
///
/// Without allPaths, a path is there if one agent writes and another one reads it. If agents are
/// asked for, one of them must be at the path.
PathGraph pathGraph(KeldaDatabase::Device const& device, GraphQuestion const& question);

/// The graph with equal nodes put together where it has more than so many of a kind: paths with the
/// same edges first, then agents that are not asked for.
PathGraph grouped(PathGraph graph, std::size_t most);

/// "sys/clock", or "12 paths: sys/clock, ..."; printable.
std::string labelOf(PathGraph::Path const& path);
std::string labelOf(PathGraph::Agent const& agent);
/// All of them, a line each; printable.
std::string listOf(std::vector<std::string> const& names);
/// The flags of an edge, "rw".
std::string labelOf(PathGraph::Edge const& edge);
/// "A reads sys/clock", "2 agents: A, ... read and write sys/clock".
std::string sentenceOf(PathGraph const& graph, PathGraph::Edge const& edge);
/// "13 agents, 5 paths".
std::string countsOf(PathGraph const& graph);

} // namespace KeldaTool
