#include "tree/TreeText.h"

#include <algorithm>

#include <KeldaUtil/MountFlags.h>
#include <fmt/format.h>

#include "JsonWriter.h"
#include "Table.h"
#include "Text.h"
#include "database/paths/AgentMounts.h"

namespace KeldaTool {
namespace {

using Node = PathTree::Node;

std::vector<PathTree::NodeId> topNodes(PathTree const& tree, TreeExtract const& extract) {
    return extract.node ? std::vector{*extract.node} : tree.roots();
}

// How many levels may be shown below the top ones.
std::size_t levelsBelow(TreeExtract const& extract) {
    if (extract.depth == 0)
        return std::string::npos;
    return extract.node ? extract.depth : extract.depth - 1;
}

char const* textOf(Kelda::PreinitAttr attr) {
    switch (attr) {
    case Kelda::PreinitAttr::createOnMount:
        return "createOnMount";
    case Kelda::PreinitAttr::createOnStandby:
        return "createOnStandby";
    default:
        return "";
    }
}

std::size_t nodesBelow(PathTree const& tree, Node const& node) {
    auto count = node.children.size();
    for (auto const child : node.children)
        count += nodesBelow(tree, tree.node(child));
    return count;
}

std::string nameOf(Node const& node) {
    return node.name().empty() ? "\"\"" : std::string(node.name());
}

class TreeTable {
  public:
    explicit TreeTable(PathTree const& tree) : tree_(tree) {}

    std::string of(TreeExtract const& extract, bool colour) {
        for (auto const top : topNodes(tree_, extract)) {
            auto const& node = tree_.node(top);
            auto const label = extract.node ? std::string(node.path.view()) : nameOf(node);
            add(node, label, "", levelsBelow(extract));
        }
        return table_.text(colour) + "\n" + totals();
    }

  private:
    // `lines`: what stands before the lines below this one.
    void add(Node const& node, std::string const& label, std::string const& lines,
             std::size_t levels) {
        bool const isCut = levels == 0 && !node.children.empty();
        addRow(node, label + (isCut ? "/..." : ""));
        if (isCut)
            hidden_ += nodesBelow(tree_, node);
        if (levels == 0)
            return;
        for (auto const child : node.children) {
            bool const isLast = child == node.children.back();
            auto const& below = tree_.node(child);
            add(below, lines + (isLast ? "`-- " : "|-- ") + nameOf(below),
                lines + (isLast ? "    " : "|   "), levels - 1);
        }
    }

    void addRow(Node const& node, std::string const& label) {
        auto const with = [&](bool (*has)(Fen::MountTable::Flags)) {
            return cell(std::count_if(node.mounts.begin(), node.mounts.end(),
                                      [&](auto const& mount) { return has(mount.flags); }));
        };
        std::string attribute = node.isConfig ? "config" : "";
        if (auto const* const attr = textOf(node.attr); *attr != '\0')
            attribute += (attribute.empty() ? "" : ", ") + std::string(attr);
        bool const isNamed = node.isDeclared || !node.mounts.empty();
        table_.addRow({label, std::string(node.type.view()), attribute,
                       cell(static_cast<std::ptrdiff_t>(node.mounts.size())),
                       with(KeldaDatabase::reads), with(KeldaDatabase::writes)},
                      isNamed ? Table::Emphasis::normal : Table::Emphasis::faint);
        ++nodes_;
        declared_ += node.isDeclared ? 1 : 0;
        mounted_ += node.mounts.empty() ? 0 : 1;
    }

    static std::string cell(std::ptrdiff_t count) {
        return count == 0 ? "" : std::to_string(count);
    }

    std::string totals() const {
        return fmt::format("{} ({} declared, {} mounted){}\n", counted(nodes_, "path"), declared_,
                           mounted_, hidden_ == 0 ? "" : fmt::format(", {} more below", hidden_));
    }

    PathTree const& tree_;
    Table table_{{"PATH", "TYPE", "ATTRIBUTE", "AGENTS", "READ", "WRITE"}};
    std::size_t nodes_ = 0;
    std::size_t declared_ = 0;
    std::size_t mounted_ = 0;
    std::size_t hidden_ = 0;
};

class TreeDocument {
  public:
    TreeDocument(KeldaDatabase::Device const& device, PathTree const& tree)
        : device_(device), tree_(tree) {}

    std::string of(TreeExtract const& extract) {
        json_.beginObject();
        json_.member("prefix", jsonText(extract.prefix));
        json_.key("tree");
        write(topNodes(tree_, extract), levelsBelow(extract));
        json_.endObject();
        return json_.take();
    }

  private:
    void write(std::vector<PathTree::NodeId> const& nodes, std::size_t levels) {
        json_.beginArray();
        for (auto const id : nodes)
            write(tree_.node(id), levels);
        json_.endArray();
    }

    void write(Node const& node, std::size_t levels) {
        json_.beginObject();
        json_.member("name", jsonText(node.name()));
        json_.member("path", jsonText(node.path.view()));
        json_.member("type", jsonText(node.type.view()));
        json_.member("attr", textOf(node.attr));
        json_.member("config", node.isConfig);
        json_.member("declared", node.isDeclared);
        writeMounts(node);
        json_.member("hidden", levels == 0 ? nodesBelow(tree_, node) : 0);
        json_.key("children");
        write(levels == 0 ? std::vector<PathTree::NodeId>() : node.children, levels - 1);
        json_.endObject();
    }

    void writeMounts(Node const& node) {
        json_.key("mounts");
        json_.beginArray();
        for (auto const& mount : node.mounts) {
            json_.beginObject();
            json_.member("agent", jsonText(device_.agents[mount.agent].name.view()));
            json_.member("flags", jsonText(KeldaUtil::mountTableFlagsToString(mount.flags).view()));
            json_.endObject();
        }
        json_.endArray();
    }

    KeldaDatabase::Device const& device_;
    PathTree const& tree_;
    JsonWriter json_;
};

} // namespace

std::string treeTable(PathTree const& tree, TreeExtract const& extract, bool colour) {
    return TreeTable(tree).of(extract, colour);
}

std::string treeDocument(KeldaDatabase::Device const& device, PathTree const& tree,
                         TreeExtract const& extract) {
    return TreeDocument(device, tree).of(extract);
}

} // namespace KeldaTool
