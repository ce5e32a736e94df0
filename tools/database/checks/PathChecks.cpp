// Declarations and mounts that do not go together.
#include "PathChecks.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>

#include "StaticChecks.h"
#include "database/findings/FindingList.h"
#include "database/paths/WrittenLine.h"

namespace KeldaDatabase {
namespace {

constexpr std::string_view directoryType = "Fen::Dir";

// By node, the declaration that gives the type: the last one; `none` where there is no line.
std::vector<std::uint32_t> lastDeclarations(Device const& device, PathTree const& tree) {
    std::vector<std::uint32_t> last(tree.size(), none);
    for (std::uint32_t i = 0; i < device.preinits.size(); ++i)
        last[tree.ofDeclaration(i)] = i;
    return last;
}

// Paths that are read by some agent and written by none.
class UnwrittenPaths {
  public:
    UnwrittenPaths(Device const& device, PathTree const& tree)
        : device_(device), tree_(tree), isConfig_(tree.size()), isTold_(tree.size()),
          findings_(device, RuleId::readNeverWritten) {
        for (std::size_t i = 0; i < device.preinits.size(); ++i)
            if (device.preinits[i].isConfig) {
                isConfig_[tree.ofDeclaration(i)] = true;
                configTypes_.insert(device.preinits[i].type.view());
                configNames_.insert(lastName(device.preinits[i].path));
            }
    }

    std::vector<Finding> find() {
        for (std::size_t i = 0; i < device_.mounts.size(); ++i) {
            auto const& mount = device_.mounts[i];
            if (!isMounted(mount) || (PathTree::accessOf(mount) & PathTree::reads) == 0 ||
                isSettled(i))
                continue;
            // A directory is written where something below it is.
            if (mount.type.view() != directoryType && !mayBeConfig(i))
                tell(i);
        }
        return findings_.take();
    }

  private:
    // Configuration is written by others than agents.
    bool isSettled(std::size_t mount) const {
        auto const isSettledAt = [this](PathTree::NodeId node) {
            return (tree_.accessOf(node) & PathTree::writes) != 0 || isConfig_[node] ||
                   isTold_[node];
        };
        bool isSettled = isSettledAt(tree_.ofMount(mount));
        tree_.forEachPatternOfMount(
            mount, [&](PathTree::NodeId node) { isSettled = isSettled || isSettledAt(node); });
        return isSettled;
    }

    // Configuration below a token cannot be declared as such. It shows by its type or its last
    // name, which are those of configuration elsewhere.
    bool mayBeConfig(std::size_t index) const {
        auto const& mount = device_.mounts[index];
        if (!configTypes_.contains(mount.type.view()) &&
            !configNames_.contains(lastName(mount.path)))
            return false;
        bool hasToken = mount.path.find("*") != Rook::String::npos;
        tree_.forEachPatternOfMount(index, [&](PathTree::NodeId) { hasToken = true; });
        return hasToken;
    }

    static std::string_view lastName(Rook::String const& path) {
        return path.view().substr(path.view().rfind('/') + 1);
    }

    // A path that is declared with a token is told of once, whatever stands for the token.
    void tell(std::size_t index) {
        isTold_[tree_.ofMount(index)] = true;
        tree_.forEachPatternOfMount(index, [&](PathTree::NodeId node) { isTold_[node] = true; });
        auto const& mount = device_.mounts[index];
        auto* const finding = findings_.at(mount.place, mount.profile);
        if (finding == nullptr)
            return;
        finding->subject = {0, ""};
        finding->message =
            fmt::format("path '{}' is read here, and no agent writes it", mount.path);
    }

    Device const& device_;
    PathTree const& tree_;
    std::vector<bool> isConfig_;
    std::vector<bool> isTold_;
    std::unordered_set<std::string_view> configTypes_;
    std::unordered_set<std::string_view> configNames_;
    FindingList findings_;
};

} // namespace

std::vector<Finding> redefinedPreinitTypes(Device const& device, PathTree const& tree) {
    FindingList findings(device, RuleId::preinitTypeRedefined);
    std::vector<std::uint32_t> last(tree.size(), none);
    for (std::uint32_t i = 0; i < device.preinits.size(); ++i) {
        auto const& declaration = device.preinits[i];
        auto const former = std::exchange(last[tree.ofDeclaration(i)], i);
        if (former == none || device.preinits[former].type == declaration.type)
            continue;
        auto* const finding = findings.at(declaration.place);
        if (finding == nullptr)
            continue;
        finding->subject = {1, std::string(declaration.type.view())};
        finding->message = fmt::format(
            "path '{}' gets the type '{}' here, in the place of '{}': the last line counts",
            wildcard(declaration.path.view()), declaration.type, device.preinits[former].type);
        finding->related.push_back(
            {device.preinits[former].place, "declared with another type here"});
    }
    return findings.take();
}

std::vector<Finding> preinitsNeverMounted(Device const& device, PathTree const& tree) {
    FindingList findings(device, RuleId::preinitNeverMounted);
    // Without any agent there is nothing to compare with.
    if (std::all_of(device.profiles.begin(), device.profiles.end(),
                    [](Profile const& profile) { return profile.isDefaultGroup(); }))
        return {};
    auto const last = lastDeclarations(device, tree);
    for (std::uint32_t i = 0; i < device.preinits.size(); ++i) {
        auto const node = tree.ofDeclaration(i);
        auto const& declaration = device.preinits[i];
        // Directories are there for what is below them.
        if (last[node] != i || tree.accessOf(node) != 0 || tree.hasChildren(node) ||
            declaration.type.view() == directoryType)
            continue;
        auto* const finding = findings.at(declaration.place);
        if (finding == nullptr)
            continue;
        finding->subject = {0, std::string(declaration.path.view())};
        finding->message =
            fmt::format("no profile mounts path '{}'", wildcard(declaration.path.view()));
    }
    return findings.take();
}

std::vector<Finding> pathsNeverWritten(Device const& device, PathTree const& tree) {
    return UnwrittenPaths(device, tree).find();
}

std::vector<Finding> redefinedPreinitTypes(Device const& device) {
    return redefinedPreinitTypes(device, PathTree(device));
}

std::vector<Finding> preinitsNeverMounted(Device const& device) {
    return preinitsNeverMounted(device, PathTree(device));
}

std::vector<Finding> pathsNeverWritten(Device const& device) {
    return pathsNeverWritten(device, PathTree(device));
}

} // namespace KeldaDatabase
