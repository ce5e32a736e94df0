// The tree of paths, written out.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "tree/TreeAnswer.h"

namespace KeldaTool {

/// What of the tree to show.
struct TreeExtract {
    std::string prefix;                   ///< as it was given; empty for the whole tree
    std::optional<PathTree::NodeId> node; ///< of the prefix; none for the whole tree
    std::size_t depth = 0;                ///< how many levels below it; 0 for all
};

/// The nodes as a table for people, drawn as a tree.
std::string treeTable(PathTree const& tree, TreeExtract const& extract, bool colour);

/// The nodes as a document, each with those below it.
std::string treeDocument(KeldaDatabase::Device const& device, PathTree const& tree,
                         TreeExtract const& extract);

} // namespace KeldaTool
