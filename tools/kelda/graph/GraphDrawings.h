// A graph as a text for other programs that draw. All are the same for the same graph, and safe for
// names of any bytes.
#pragma once

#include <string>

#include "graph/PathGraph.h"

namespace KeldaTool {

/// For Graphviz: agents are boxes, paths are plain; arrows show which way values go.
std::string dotOf(PathGraph const& graph);

/// A drawing in three columns: agents that write, paths, agents that only read. An agent may stand
/// in both columns, in the same colour. It needs no other file, holds no script, and is shown light
/// or dark as the reader prefers.
std::string svgOf(PathGraph const& graph);

} // namespace KeldaTool
