// The tree of all paths of a device, declared and mounted ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "database/Device.h"

namespace KeldaTool {

class PathTree {
  public:
    using NodeId = std::uint32_t;

    struct Mount {
        std::uint32_t agent; ///< index to Device::agents
        Fen::MountTable::Flags flags;
    };

    /// All paths of one wildcard form: "fan/%tray", "fan/%slot" and "fan/*".
    struct Node {
        /// As the first line that declares it has it, else as the first one that declares a path
        /// below it; "*" for tokens that only profiles have.
        Rook::String path;
        Rook::String type;                                  ///< empty for none
        Kelda::PreinitAttr attr = Kelda::PreinitAttr::none; ///< of the first line that declares it
        bool isConfig = false;
        bool isDeclared = false;
        bool hasType = false;         ///< declared, or a directory above a declared path
        std::vector<NodeId> children; ///< by name
        std::vector<Mount> mounts;    ///< by agent, "-Active-" variants left out

        std::string_view name() const;
    };

    explicit PathTree(KeldaDatabase::Device const& device);

    Node const& node(NodeId id) const { return nodes_[id]; }
    /// The nodes without a "/" in their path, by name.
    std::vector<NodeId> const& roots() const { return roots_; }

    /// The node of a path, with whatever tokens; none when there is none.
    std::optional<NodeId> find(std::string_view path) const;
    /// The path of the node that may have been meant by one that is not there.
    std::optional<std::string> nearest(std::string_view path) const;

  private:
    void declare(KeldaDatabase::PreinitDeclaration const& line);
    void addMounts(KeldaDatabase::Device const& device);
    void sortChildren();
    NodeId declaredNode(Rook::String const& key, Rook::String const& path);
    NodeId mountedNode(Rook::String const& key);
    NodeId add(Rook::String const& key, Rook::String const& path, NodeId parent);
    void makeDirectories(std::string_view key);

    std::vector<Node> nodes_;
    std::vector<NodeId> roots_;
    std::unordered_map<Rook::String, NodeId, Kelda::StringHash> ids_; // by wildcard path
};

} // namespace KeldaTool
