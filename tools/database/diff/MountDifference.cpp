// The part of AgentDifference that compares the mounts of an agent.
#include <algorithm>
#include <set>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "AgentDifference.h"
#include "AgentNamesShown.h"
#include "ChangeClasses.h"

namespace KeldaDatabase {
namespace {

using Groups = std::map<std::pair<Rook::String, std::string>, std::vector<GroupMembership>>;

Groups groupsOf(AgentMeanings const& meanings, Agent const& agent, MountMeaning const& mount) {
    Groups groups;
    for (auto const line : mount.lines) {
        auto group = meanings.groupOf(agent, line);
        groups[{group.agentKey, group.name}].push_back(std::move(group));
    }
    return groups;
}

std::vector<std::size_t> linesOf(std::vector<GroupMembership> const& memberships) {
    std::vector<std::size_t> lines;
    for (auto const& membership : memberships)
        lines.push_back(membership.line);
    return lines;
}

std::set<std::string> conditionsOf(DeviceSide& side, MountMeaning const& mount) {
    std::set<std::string> conditions;
    for (auto const line : mount.lines)
        conditions.insert(side.conditionOf(line).text);
    return conditions;
}

// Of several, one may be none.
std::string shownConditions(std::set<std::string> const& conditions) {
    std::string text;
    for (auto const& condition : conditions) {
        text += text.empty() ? "" : ", ";
        text += condition.empty() && conditions.size() > 1 ? "always" : condition;
    }
    return text;
}

bool hasConditions(Device const& device, MountMeaning const& mount) {
    return std::any_of(mount.lines.begin(), mount.lines.end(),
                       [&](std::size_t line) { return device.mounts[line].isConditional; });
}

bool takesRest(Device const& device, std::size_t line) {
    auto const& mount = device.mounts[line];
    auto const token = restToken(device.profiles[mount.profile]);
    return token > 0 && holdsToken(mount.path.view(), token, token);
}

// Whether tokens in the path take all that is left, of some of its lines or of each.
std::set<bool> takesRest(Device const& device, MountMeaning const& mount) {
    std::set<bool> answers;
    for (auto const line : mount.lines)
        answers.insert(takesRest(device, line));
    return answers;
}

std::string agentNames(Device const& device, MountMeaning const& mount) {
    std::set<std::string> names;
    for (auto const line : mount.lines)
        names.emplace(device.profiles[device.mounts[line].profile].agentName.view());
    return fmt::format("{}", fmt::join(names, ", "));
}

bool isFlagKind(FoundChange const& change) {
    return change.kind >= ChangeKind::mountAdded && change.kind <= ChangeKind::typeChanged;
}

} // namespace

void AgentDifference::compareMounts(AgentMeaning const& old, AgentMeaning const& now) {
    auto const begin = found_.size();
    MountBefore const isBefore;
    auto a = old.mounts.begin();
    auto b = now.mounts.begin();
    while (a != old.mounts.end() || b != now.mounts.end()) {
        if (b == now.mounts.end() || (a != old.mounts.end() && isBefore(*a, *b)))
            compareMount(&*a++, nullptr);
        else if (a == old.mounts.end() || isBefore(*b, *a))
            compareMount(nullptr, &*b++);
        else
            compareMount(&*a++, &*b++);
    }
    explainFollowing(begin);
}

void AgentDifference::compareMount(MountMeaning const* old, MountMeaning const* now) {
    bool const isOld = old != nullptr && old->isExplicit();
    bool const isNew = now != nullptr && now->isExplicit();
    if (!isOld && !isNew)
        compareFlags(old, now, true);
    else if (!isNew)
        compareFlags(old, nullptr, false);
    else if (!isOld)
        compareFlags(nullptr, now, false);
    else {
        if (old->type != now->type) {
            auto& change = add(ChangeKind::typeChanged, ChangeClass::dangerous,
                               std::string(old->type.view()), std::string(now->type.view()),
                               causes_.ofTypes(agents_, old->lines, now->lines));
            change.path = shown(now->path);
            change.type = now->type.view();
        }
        compareFlags(old, now, old->own == now->own);
        compareGroups(*old, *now);
        compareConditions(*old, *now);
        compareTokens(*old, *now);
    }
}

void AgentDifference::compareFlags(MountMeaning const* old, MountMeaning const* now, bool follows) {
    if (old != nullptr && now != nullptr && old->flags == now->flags)
        return;
    auto kind = ChangeKind::mountAdded;
    auto severity = ChangeClass::dangerous;
    if (old == nullptr) {
        severity = classOfAddedMount(now->flags);
    } else if (now == nullptr) {
        kind = ChangeKind::mountRemoved;
    } else {
        kind = kindOfFlags(old->flags, now->flags);
        severity = classOfFlags(old->flags, now->flags);
    }
    static std::vector<std::size_t> const noLines;
    Cause cause;
    if (follows)
        severity = ChangeClass::harmless;
    else
        cause = causes_.ofMounts(agents_, old == nullptr ? noLines : old->lines,
                                 now == nullptr ? noLines : now->lines);
    auto const& mount = now == nullptr ? *old : *now;
    auto& change = add(kind, severity, old == nullptr ? "" : flagText(old->flags),
                       now == nullptr ? "" : flagText(now->flags), std::move(cause));
    change.path = shown(mount.path);
    change.type = mount.type.view();
    change.follows = follows;
}

std::string AgentDifference::groupName(GroupMembership const& group) const {
    auto const& agent = agents_.after->profiles.empty() ? *agents_.before : *agents_.after;
    if (group.agentKey != literalPart(agent))
        return fmt::format("{}::{}", group.agentKey.view(), group.name);
    return group.name.empty() ? "::" : group.name;
}

void AgentDifference::compareGroups(MountMeaning const& old, MountMeaning const& now) {
    auto const before = groupsOf(oldMeanings_, *agents_.before, old);
    auto const after = groupsOf(newMeanings_, *agents_.after, now);
    std::set<std::pair<unsigned, unsigned>> priorities;
    for (auto const& [key, lines] : before)
        if (auto const same = after.find(key); same == after.end()) {
            auto& change =
                add(ChangeKind::groupRemoved, ChangeClass::notable, groupName(lines.front()), "",
                    causes_.ofGroup(agents_, linesOf(lines), {}));
            change.path = shown(now.path);
        } else if (auto const& a = lines.back(), &b = same->second.back();
                   a.priority != b.priority && priorities.emplace(a.priority, b.priority).second) {
            auto& change = add(ChangeKind::groupPriorityChanged, ChangeClass::notable,
                               fmt::format("{}", a.priority), fmt::format("{}", b.priority),
                               causes_.ofPriority(a.line, b.line));
            change.path = shown(now.path);
        }
    for (auto const& [key, lines] : after)
        if (!before.contains(key)) {
            auto& change =
                add(ChangeKind::groupAdded, ChangeClass::notable, "", groupName(lines.front()),
                    causes_.ofGroup(agents_, {}, linesOf(lines)));
            change.path = shown(now.path);
        }
}

void AgentDifference::compareConditions(MountMeaning const& old, MountMeaning const& now) {
    if (!hasConditions(before_.device(), old) && !hasConditions(after_.device(), now))
        return;
    auto const before = conditionsOf(before_, old);
    auto const after = conditionsOf(after_, now);
    if (before == after)
        return;
    auto& change = add(ChangeKind::conditionChanged, ChangeClass::risky, shownConditions(before),
                       shownConditions(after), causes_.ofConditions(agents_, old.lines, now.lines));
    change.path = shown(now.path);
}

// A path is the same whatever its tokens take; the paths that come of it are not.
void AgentDifference::compareTokens(MountMeaning const& old, MountMeaning const& now) {
    if (takesRest(before_.device(), old) == takesRest(after_.device(), now))
        return;
    auto& change =
        add(ChangeKind::tokensChanged, ChangeClass::risky, agentNames(before_.device(), old),
            agentNames(after_.device(), now), causes_.ofTokens(old.lines, now.lines));
    change.path = shown(now.path);
}

// Gives changes that follow the causes of those that they follow from.
void AgentDifference::explainFollowing(std::size_t begin) {
    auto const isFollowing = [](FoundChange const& change) { return change.follows; };
    auto const from = found_.begin() + static_cast<std::ptrdiff_t>(begin);
    if (std::none_of(from, found_.end(), isFollowing))
        return;
    std::map<std::string, Cause> changed;
    for (auto change = from; change != found_.end(); ++change)
        if (!change->follows && isFlagKind(*change))
            changed[change->path].add(change->cause);
    for (auto change = from; change != found_.end(); ++change)
        if (change->follows)
            if (auto cause = causeOfFollowing(changed, change->path); cause.isKnown())
                change->cause = std::move(cause);
}

// What changed below a path, or the nearest above it that changed or has something changed below.
Cause AgentDifference::causeOfFollowing(std::map<std::string, Cause> const& changed,
                                        std::string path) const {
    if (activeCause_.isKnown())
        return activeCause_;
    auto cause = rootCause_;
    for (;;) {
        if (auto const here = changed.find(path); here != changed.end())
            cause.add(here->second);
        auto const below = path + "/";
        for (auto each = changed.lower_bound(below);
             each != changed.end() && each->first.starts_with(below); ++each)
            cause.add(each->second);
        auto const slash = path.rfind('/');
        if (cause.isKnown() || slash == std::string::npos)
            return cause;
        path.resize(slash);
    }
}

} // namespace KeldaDatabase
