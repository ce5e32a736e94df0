#include "tree/TreeAnswer.h"

#include <algorithm>

#include <KeldaBase/MountFileInfo.h>

#include "NearestPath.h"
#include "database/paths/AgentMounts.h"

namespace KeldaTool {
namespace {

constexpr auto noNode = KeldaDatabase::none;
constexpr char const* directoryType = "Fen::Dir";
// The library takes no longer path, and cuts it where it makes a wildcard path of it.
constexpr std::size_t longestPath = std::tuple_size_v<Kelda::LineBuffer> - 1;

Rook::String keyOf(Rook::String const& path) {
    return Kelda::MountFileInfo::wildcardPath(path);
}

std::string_view withoutSlash(std::string_view path) {
    return path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
}

// The path above; none for one without a "/".
std::optional<std::string_view> above(std::string_view path) {
    auto const slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return std::nullopt;
    return path.substr(0, slash);
}

} // namespace

std::string_view PathTree::Node::name() const {
    auto const text = path.view();
    return text.substr(text.rfind('/') + 1);
}

PathTree::PathTree(KeldaDatabase::Device const& device) {
    for (auto const& line : device.preinits)
        declare(line);
    addMounts(device);
    sortChildren();
}

// As the library gives types: the last line counts, and a path that is there from start-up makes
// directories of those above it, up to the first one that has a type.
void PathTree::declare(KeldaDatabase::PreinitDeclaration const& line) {
    auto const key = keyOf(line.path);
    auto& node = nodes_[declaredNode(key, line.path)];
    if (!node.isDeclared) {
        node.path = line.path;
        node.attr = line.attr;
    }
    node.isDeclared = true;
    node.hasType = true;
    node.isConfig = node.isConfig || line.isConfig;
    node.type = line.type;
    if (line.attr != Kelda::PreinitAttr::createOnMount)
        makeDirectories(key.view());
}

void PathTree::makeDirectories(std::string_view key) {
    for (auto path = above(key); path; path = above(*path)) {
        auto& node = nodes_[ids_.at(*path)];
        if (node.hasType)
            return;
        node.hasType = true;
        node.type = directoryType;
    }
}

PathTree::NodeId PathTree::declaredNode(Rook::String const& key, Rook::String const& path) {
    if (auto const known = ids_.find(key); known != ids_.end())
        return known->second;
    auto const parentKey = above(key.view());
    auto const parent = parentKey ? declaredNode(*parentKey, *above(path.view())) : noNode;
    return add(key, path, parent);
}

PathTree::NodeId PathTree::mountedNode(Rook::String const& key) {
    if (auto const known = ids_.find(key); known != ids_.end())
        return known->second;
    auto const parentKey = above(key.view());
    if (!parentKey)
        return add(key, key, noNode);
    auto const parent = mountedNode(*parentKey);
    return add(key, nodes_[parent].path + key.view().substr(parentKey->size()), parent);
}

PathTree::NodeId PathTree::add(Rook::String const& key, Rook::String const& path, NodeId parent) {
    auto const id = static_cast<NodeId>(nodes_.size());
    nodes_.emplace_back().path = path;
    ids_.emplace(key, id);
    (parent == noNode ? roots_ : nodes_[parent].children).push_back(id);
    return id;
}

void PathTree::addMounts(KeldaDatabase::Device const& device) {
    KeldaDatabase::AgentMounts const mounts(device);
    for (std::uint32_t agent = 0; agent < device.agents.size(); ++agent)
        if (!device.agents[agent].isActiveVariant)
            mounts.visit(device.agents[agent], [&](KeldaDatabase::AgentMount const& mount) {
                auto& node = nodes_[mountedNode(mount.path)];
                if (!node.hasType && node.mounts.empty())
                    node.type = mount.type;
                node.mounts.push_back({agent, mount.flags});
            });
}

void PathTree::sortChildren() {
    auto const isBefore = [this](NodeId a, NodeId b) {
        return nodes_[a].name() < nodes_[b].name();
    };
    std::sort(roots_.begin(), roots_.end(), isBefore);
    for (auto& node : nodes_)
        std::sort(node.children.begin(), node.children.end(), isBefore);
}

std::optional<PathTree::NodeId> PathTree::find(std::string_view path) const {
    path = withoutSlash(path);
    if (path.size() > longestPath)
        return std::nullopt;
    auto const known = ids_.find(keyOf(path));
    return known == ids_.end() ? std::nullopt : std::optional(known->second);
}

std::optional<std::string> PathTree::nearest(std::string_view path) const {
    NearestPath nearest(keyOf(path).view());
    Node const* node = nullptr;
    for (auto const& [key, id] : ids_)
        if (nearest.consider(key.view()))
            node = &nodes_[id];
    if (node == nullptr)
        return std::nullopt;
    return std::string(node->path.view());
}

} // namespace KeldaTool
