// In which order the nodes of a graph stand when it is drawn in columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "graph/PathGraph.h"

namespace KeldaTool {

/// The indexes of nodes, from the top to the bottom. The edges of what an agent writes begin in the
/// first column; those of what it only reads end in the last one.
struct GraphColumns {
    std::vector<std::uint32_t> writers; ///< of agents
    std::vector<std::uint32_t> paths;
    std::vector<std::uint32_t> readers; ///< of agents
};

/// The columns with all nodes in the order of the graph.
GraphColumns columnsOf(PathGraph const& graph);

/// The columns in an order in which few edges cross: every node near the middle of those that it
/// has edges to. Never more edges cross than in the order that is given.
GraphColumns untangled(PathGraph const& graph, GraphColumns columns);

/// How many pairs of edges cross.
std::size_t crossings(PathGraph const& graph, GraphColumns const& columns);

} // namespace KeldaTool
