// Lines that say something else than what holds: type columns and groups.
#include "StaticChecks.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <unordered_set>

#include <KeldaBase/MountFileInfo.h>
#include <fmt/format.h>

#include "database/findings/FindingList.h"
#include "database/paths/WrittenLine.h"

namespace KeldaDatabase {
namespace {

// Type columns that are not right, and the lines that give the types.
class TypeColumns {
  public:
    explicit TypeColumns(Device const& device)
        : device_(device), findings_(device, RuleId::typeColumnDiffers) {}

    std::vector<Finding> find() {
        for (auto const& mount : device_.mounts)
            if (mount.typeDiffers && isMounted(mount))
                look(mount);
        auto findings = findings_.take();
        relateDeclarations(findings);
        return findings;
    }

  private:
    void look(Mount const& mount) {
        if (isHarmless(mount.place))
            return;
        auto* const finding = findings_.at(mount.place, mount.profile);
        if (finding == nullptr)
            return;
        auto const fields = fieldsOf(mount.place);
        finding->subject = {1, fields.type};
        finding->message = fmt::format(
            "type '{}' is not the type of path '{}': the preinit files give it the type '{}'",
            fields.type, fields.path, mount.type);
        keys_.push_back(Kelda::MountFileInfo::wildcardPath(Rook::String(fields.path)));
        types_.insert(mount.type);
    }

    // An empty column says nothing that is not so.
    bool isHarmless(Place const& place) {
        auto const line = std::uint64_t{place.file} << 32U | static_cast<std::uint32_t>(place.line);
        auto const [known, isNew] = isEmpty_.try_emplace(line, false);
        if (isNew)
            known->second = fieldsOf(place).type.empty();
        return known->second;
    }

    PathFields fieldsOf(Place const& place) {
        auto const& text = texts_.of(device_.pathOf(place));
        auto const fields = pathFields(logicalLine(text, text.editorLine(place.line)).text);
        return fields.value_or(PathFields());
    }

    // Of several lines for one path the last one gives the type.
    void relateDeclarations(std::vector<Finding>& findings) const {
        if (findings.empty())
            return;
        std::unordered_map<Rook::String, PreinitDeclaration const*> declarations;
        for (auto const& key : keys_)
            declarations.emplace(key, nullptr);
        for (auto const& declaration : device_.preinits) {
            if (!types_.contains(declaration.type))
                continue;
            auto const found =
                declarations.find(Kelda::MountFileInfo::wildcardPath(declaration.path));
            if (found != declarations.end())
                found->second = &declaration;
        }
        for (std::size_t i = 0; i < findings.size(); ++i)
            if (auto const* const declaration = declarations.at(keys_[i]))
                findings[i].related.push_back({declaration->place, "declared here"});
    }

    Device const& device_;
    FindingList findings_;
    SourceTexts texts_;
    std::unordered_map<std::uint64_t, bool> isEmpty_; // by file and line
    std::vector<Rook::String> keys_;                  // in the type map, of each finding
    std::unordered_set<Rook::String> types_;
};

// Whether an Include line stands in the group, which ends where the next one of the profile begins.
bool hasInclude(Device const& device, Profile const& profile, GroupId group) {
    auto const next = group + std::size_t{1};
    auto const begin = device.groups[group].place.line;
    auto const end = next < profile.groups.end ? device.groups[next].place.line
                                               : std::numeric_limits<std::int32_t>::max();
    auto const at = [&device](std::size_t i) {
        return device.includes.begin() + static_cast<std::ptrdiff_t>(i);
    };
    auto const last = at(profile.includes.end);
    auto const found =
        std::lower_bound(at(profile.includes.begin), last, begin,
                         [](Include const& a, std::int32_t line) { return a.place.line < line; });
    return found != last && found->place.line < end;
}

} // namespace

std::vector<Finding> differingTypeColumns(Device const& device) {
    return TypeColumns(device).find();
}

std::vector<Finding> emptyGroups(Device const& device) {
    FindingList findings(device, RuleId::groupEmpty);
    for (GroupId id = 0; id < device.groups.size(); ++id) {
        auto const& group = device.groups[id];
        if (group.mounts != 0 || group.profile == none ||
            hasInclude(device, device.profiles[group.profile], id))
            continue;
        auto* const finding = findings.at(group.place, group.profile);
        if (finding == nullptr)
            continue;
        finding->subject = {Subject::behindColon, group.name};
        finding->message = fmt::format("mount group '{}' holds no mounts", group.name);
    }
    return findings.take();
}

} // namespace KeldaDatabase
