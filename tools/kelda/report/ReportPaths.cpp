#include "report/ReportPaths.h"

#include "database/paths/WrittenLine.h"

namespace KeldaTool {
namespace {

// The types of the paths, each from the first agent that mounts it.
std::vector<std::string_view> typesOf(ReportMounts const& mounts) {
    std::vector<std::string_view> types(mounts.paths().size());
    for (auto const& mount : mounts.mounts())
        if (types[mount.path].data() == nullptr)
            types[mount.path] = mounts.types()[mount.type].view();
    return types;
}

} // namespace

// Both lists are sorted, and are merged.
ReportPaths::ReportPaths(KeldaDatabase::Device const& device, ReportMounts const& mounts,
                         std::vector<std::string> const& wildcardPaths)
    : device_(device) {
    for (std::size_t i = 0; i < device.preinits.size(); ++i)
        declarations_[KeldaDatabase::wildcard(device.preinits[i].path.view())].push_back(i);
    auto const types = typesOf(mounts);
    auto declared = declarations_.cbegin();
    for (std::size_t i = 0; i < types.size(); ++i) {
        auto const path = mounts.paths()[i].view();
        while (declared != declarations_.cend() && declared->first < path)
            addDeclared(declared++);
        bool const isDeclared = declared != declarations_.cend() && declared->first == path;
        indexes_.push_back(static_cast<std::uint32_t>(paths_.size()));
        paths_.push_back({path, types[i], declarationsOf(isDeclared ? path : wildcardPaths[i])});
        if (isDeclared)
            ++declared;
    }
    while (declared != declarations_.cend())
        addDeclared(declared++);
}

void ReportPaths::addDeclared(Declarations::const_iterator declared) {
    paths_.push_back(
        {declared->first, device_.preinits[declared->second.back()].type.view(), declared->second});
}

std::span<std::size_t const> ReportPaths::declarationsOf(std::string_view wildcardPath) const {
    auto const found = declarations_.find(wildcardPath);
    return found == declarations_.end() ? std::span<std::size_t const>() : found->second;
}

} // namespace KeldaTool
