// All paths of a device, declared and mounted, as one tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "database/Device.h"

namespace KeldaDatabase {

/// A node is a path: "*" stands in it for each token of a preinit line and, in a mount, for what
/// only an agent string gives. Mounts that were refused have none. Everything takes time in
/// proportion to the lines.
class PathTree {
  public:
    using NodeId = std::uint32_t;

    explicit PathTree(Device const& device);

    /// How many nodes there are; the root is 0, and a node has a larger number than its parent.
    std::size_t size() const { return nodes_.size(); }
    NodeId ofDeclaration(std::size_t index) const { return declarations_[index]; }
    /// `none` where the mount was refused.
    NodeId ofMount(std::size_t index) const { return mounts_[index]; }
    NodeId parentOf(NodeId node) const { return nodes_[node].parent; }
    /// What the mounts that are instances of the path do with it, together.
    enum Access : std::uint8_t { reads = 1, writes = 2, mounts = 4 };
    static std::uint8_t accessOf(Mount const& mount);
    std::uint8_t accessOf(NodeId node) const { return accesses_[node]; }
    bool hasChildren(NodeId node) const { return nodes_[node].hasChildren; }
    std::string pathOf(NodeId node) const;

    /// The other nodes that the path is an instance of: those where "*" stands for some of its
    /// text, also for none, but not for a "/". A "*" of the path itself counts as text.
    std::span<NodeId const> patternsOf(NodeId node) const {
        return std::span(patterns_).subspan(patternsBegin_[node],
                                            patternsBegin_[node + 1] - patternsBegin_[node]);
    }
    /// The same for a mount. Where the value of an alias may hold a "/", so may the text that a "*"
    /// stands for.
    template <class Operation>
    void forEachPatternOfMount(std::size_t index, Operation operation) const {
        for (auto const node : patternsOf(mounts_[index]))
            operation(node);
        if (auto const found = widened_.find(index); found != widened_.end()) {
            operation(found->second);
            for (auto const node : patternsOf(found->second))
                operation(node);
        }
    }

    /// Names in one directory that differ in nothing but case: the one that came later, and the
    /// first of its kind.
    struct CasePair {
        NodeId first;
        NodeId later;
    };
    std::vector<CasePair> const& casePairs() const { return casePairs_; }

  private:
    struct Node {
        char const* name; // in a path of the device, or in names_
        std::uint16_t length;
        bool hasChildren = false;
        bool hasPartialChildren = false; // children with a "*" and other text in their names
        NodeId parent;
        NodeId anyChild = none; // the child "*"

        std::string_view text() const { return {name, length}; }
    };
    struct Slot {
        std::uint32_t hash;
        NodeId node = none;
    };
    // The names of a directory in which "*" stands beside other text, by what stands before it.
    struct PartialChildren {
        std::vector<std::size_t> prefixLengths;
        std::unordered_map<std::string_view, std::vector<NodeId>> byPrefix;
    };
    struct Level {
        std::size_t end; // in previous_, of the name of the node
        NodeId node;
    };

    class KnownPaths;

    void insertDeclarations(std::vector<PreinitDeclaration> const& lines, KnownPaths& known);
    void insertMounts(std::vector<Mount> const& lines, KnownPaths& known);
    NodeId insert(std::string_view path, bool hasTokens);
    NodeId childOf(NodeId parent, std::string_view name);
    NodeId find(NodeId parent, std::string_view name) const;
    NodeId add(NodeId parent, std::string_view name);
    std::string_view nameOfSegment(std::string_view segment, bool hasTokens);
    void addPartial(NodeId parent, NodeId node);
    void grow();
    void widenMounts(Device const& device);
    void findPatterns();
    void findPatternsIn(NodeId directory, NodeId node);
    void findAccesses(Device const& device);

    std::vector<Node> nodes_;
    std::vector<Slot> slots_; // of all nodes, by parent and name
    std::vector<NodeId> declarations_;
    std::vector<NodeId> mounts_;
    std::deque<std::string> names_; // that no path of the device holds
    std::unordered_map<NodeId, PartialChildren> partialChildren_;
    std::unordered_map<std::size_t, NodeId> widened_; // by mount
    std::vector<CasePair> casePairs_;
    std::vector<std::uint32_t> patternsBegin_; // of each node, in patterns_
    std::vector<NodeId> patterns_;
    std::vector<std::uint8_t> accesses_;
    std::string_view previous_;
    std::vector<Level> levels_; // of previous_
    std::string scratch_;
};

} // namespace KeldaDatabase
