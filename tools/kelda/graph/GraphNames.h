// What is said where a graph would be empty.
#pragma once

#include <string>

#include "graph/PathGraph.h"

namespace KeldaTool {

/// A line for each of the agents asked for that there is not, with the name that may have been
/// meant; empty when there are all.
std::string unknownAgents(KeldaDatabase::Device const& device, GraphQuestion const& question);

/// Why a graph has no paths.
std::string nothingBetween(GraphQuestion const& question, PathGraph const& graph);

} // namespace KeldaTool
