// Names that differ in nothing but case.
#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "PathChecks.h"
#include "StaticChecks.h"
#include "database/findings/FindingList.h"

namespace KeldaDatabase {
namespace {

// How often a name stands in the files, and where first.
struct Spelling {
    Rook::String shown;  // in messages
    Rook::String folded; // the same for all that differ only in case
    Subject subject;
    Place place;
    ProfileId profile = none;
    std::size_t uses = 0;
};

// The place of the finding is that of the rarer one; of two that are as rare, that of the later.
void tell(FindingList& findings, std::string_view kind, Spelling const& first,
          Spelling const& later) {
    bool const firstIsRarer = first.uses < later.uses;
    auto const& rare = firstIsRarer ? first : later;
    auto const& other = firstIsRarer ? later : first;
    auto const about = fmt::format("{} {} {}", kind, rare.shown, other.shown);
    auto* const finding = findings.at(rare.place, rare.profile, about);
    if (finding == nullptr)
        return;
    finding->subject = rare.subject;
    finding->message =
        fmt::format("{} '{}' and '{}' differ only in case", kind, rare.shown, other.shown);
    finding->related.push_back({other.place, "spelled differently here"});
}

// Names of one kind.
class Spellings {
  public:
    // A name that the others of its kind can be told from by `key`.
    void add(Rook::String const& key, Spelling const& spelling) {
        auto const [entry, isNew] = known_.try_emplace(key, spellings_.size());
        if (isNew)
            spellings_.push_back(spelling);
        ++spellings_[entry->second].uses;
    }

    bool countAgain(Rook::String const& key) {
        auto const found = known_.find(key);
        if (found == known_.end())
            return false;
        ++spellings_[found->second].uses;
        return true;
    }

    void tellPairs(FindingList& findings, std::string_view kind) const {
        std::unordered_map<Rook::String, Spelling const*> first;
        for (auto const& spelling : spellings_)
            if (auto const [entry, isFirst] = first.try_emplace(spelling.folded, &spelling);
                !isFirst)
                tell(findings, kind, *entry->second, spelling);
    }

  private:
    std::unordered_map<Rook::String, std::size_t> known_;
    std::vector<Spelling> spellings_;
};

void compareFiles(Device const& device, FindingList& findings) {
    Spellings names;
    for (FileId id = 0; id < device.files.size(); ++id) {
        auto const& file = device.files[id];
        Rook::String const name(file.name);
        if (file.family == FileFamily::profile)
            names.add(name, {name, name.toLower(), {}, {id, 1, none}});
    }
    names.tellPairs(findings, "files");
}

// The tokens of an agent name are aliases, which are known in any case.
void compareAgents(Device const& device, FindingList& findings) {
    Spellings names;
    for (ProfileId id = 0; id < device.profiles.size(); ++id) {
        auto const& profile = device.profiles[id];
        if (profile.isDefaultGroup())
            continue;
        auto const key = profile.agentKey + (profile.hasTokens() ? "-%" : "");
        names.add(key, {profile.agentName,
                        key.toLower(),
                        {Subject::behindColon, std::string(profile.agentName.view())},
                        {profile.file, profile.agentNameLine, none},
                        id});
    }
    names.tellPairs(findings, "agent names");
}

// A group is asked for by the literal part of the agent name and its own name.
void compareGroups(Device const& device, FindingList& findings) {
    Spellings names;
    for (auto const& group : device.groups) {
        if (group.profile == none)
            continue;
        auto const prefix = device.profiles[group.profile].agentKey + "::";
        Rook::String const name(group.name);
        names.add(prefix + name, {name,
                                  prefix + name.toLower(),
                                  {Subject::behindColon, group.name},
                                  group.place,
                                  group.profile});
    }
    names.tellPairs(findings, "mount groups");
}

// The types of preinit files, and what conditional mounts say in their place.
void compareTypes(Device const& device, FindingList& findings) {
    Spellings names;
    auto const add = [&names](Rook::String const& type, Place const& place, ProfileId profile) {
        if (!names.countAgain(type))
            names.add(type, {type, type.toLower(), {1, std::string(type.view())}, place, profile});
    };
    for (auto const& declaration : device.preinits)
        add(declaration.type, declaration.place, none);
    for (auto const& mount : device.mounts)
        if (mount.isConditional && isMounted(mount))
            add(mount.type, mount.place, mount.profile);
    names.tellPairs(findings, "types");
}

// In how many lines each path of a tree stands or a path below it, and in which first.
class PathUses {
  public:
    PathUses(Device const& device, PathTree const& tree)
        : device_(device), tree_(tree), lines_(tree.size()), first_(tree.size(), none) {
        for (std::uint32_t i = 0; i < device.preinits.size(); ++i)
            add(tree.ofDeclaration(i), i);
        for (std::uint32_t i = 0; i < device.mounts.size(); ++i)
            if (isMounted(device.mounts[i]))
                add(tree.ofMount(i), static_cast<std::uint32_t>(device.preinits.size()) + i);
        for (auto node = static_cast<PathTree::NodeId>(tree.size()); node-- > 1;) {
            lines_[tree.parentOf(node)] += lines_[node];
            first_[tree.parentOf(node)] = std::min(first_[tree.parentOf(node)], first_[node]);
        }
    }

    Spelling spellingOf(PathTree::NodeId node) const {
        Rook::String const path(tree_.pathOf(node));
        auto const line = first_[node];
        auto const declarations = device_.preinits.size();
        Spelling spelling{path, {}, {0, std::string(path.view())}, {}, none, lines_[node]};
        if (line < declarations) {
            spelling.place = device_.preinits[line].place;
        } else {
            spelling.place = device_.mounts[line - declarations].place;
            spelling.profile = device_.mounts[line - declarations].profile;
        }
        return spelling;
    }

  private:
    void add(PathTree::NodeId node, std::uint32_t line) {
        ++lines_[node];
        first_[node] = std::min(first_[node], line);
    }

    Device const& device_;
    PathTree const& tree_;
    std::vector<std::uint32_t> lines_;
    std::vector<std::uint32_t> first_; // declarations first, then mounts
};

void comparePaths(Device const& device, PathTree const& tree, FindingList& findings) {
    if (tree.casePairs().empty())
        return;
    PathUses const uses(device, tree);
    for (auto const& pair : tree.casePairs())
        tell(findings, "paths", uses.spellingOf(pair.first), uses.spellingOf(pair.later));
}

} // namespace

std::vector<Finding> namesDifferingInCase(Device const& device, PathTree const& tree) {
    FindingList findings(device, RuleId::namesDifferInCase);
    compareFiles(device, findings);
    compareAgents(device, findings);
    compareGroups(device, findings);
    comparePaths(device, tree, findings);
    compareTypes(device, findings);
    return findings.take();
}

std::vector<Finding> namesDifferingInCase(Device const& device) {
    return namesDifferingInCase(device, PathTree(device));
}

} // namespace KeldaDatabase
