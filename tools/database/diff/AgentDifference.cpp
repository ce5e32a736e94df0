#include "AgentDifference.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "AgentNamesShown.h"
#include "ChangeClasses.h"
#include "database/paths/DeviceStory.h"

namespace KeldaDatabase {
namespace {

using AgentKey = std::tuple<Rook::String, bool, bool>;

AgentKey keyOf(Agent const& agent) {
    return {literalPart(agent), hasTokens(agent), agent.isActiveVariant};
}

std::map<AgentKey, std::size_t> agentsByKey(Device const& device) {
    std::map<AgentKey, std::size_t> agents;
    for (std::size_t i = 0; i < device.agents.size(); ++i)
        agents.try_emplace(keyOf(device.agents[i]), i);
    return agents;
}

auto sameAsOf(FoundChange const& change) {
    return std::tie(change.kind, change.follows, change.before, change.after, change.path,
                    change.type);
}

bool isSameChange(FoundChange const& a, FoundChange const& b) {
    return sameAsOf(a) == sameAsOf(b) && a.cause.cause == b.cause.cause &&
           a.cause.before == b.cause.before && a.cause.after == b.cause.after;
}

// A message about a file that cannot be opened names the device's folder, which is another one in
// each device.
std::string withoutFolders(std::string message, Device const& device) {
    for (auto const& folder : {device.profileDirectory, device.preinitDirectory})
        for (auto at = message.find(folder); !folder.empty() && at != std::string::npos;
             at = message.find(folder, at))
            message.erase(at, folder.size());
    return message;
}

} // namespace

void AgentDifference::compareAll() {
    auto const old = agentsByKey(before_.device());
    auto const now = agentsByKey(after_.device());
    // Plain agents stand before the variants, which are compared with them.
    for (std::size_t i = 0; i < before_.device().agents.size(); ++i) {
        auto const found = now.find(keyOf(before_.device().agents[i]));
        if (found != now.end())
            compare(i, found->second);
        else
            addLone(i, false);
    }
    for (std::size_t i = 0; i < after_.device().agents.size(); ++i)
        if (!old.contains(keyOf(after_.device().agents[i])))
            addLone(i, true);
}

void AgentDifference::stand(Agent const* old, Agent const* now) {
    static Agent const nobody;
    agents_ = {old == nullptr ? &nobody : old, now == nullptr ? &nobody : now};
    auto const& named = now == nullptr ? *old : *now;
    agentName_ = nameOf(named);
    tokenNames_ = tokenNames(now == nullptr ? before_.device() : after_.device(), named);
    activeCause_ = rootCause_ = Cause();
}

void AgentDifference::compare(std::size_t old, std::size_t now) {
    auto const begin = found_.size();
    if (!isSame(old, now)) {
        stand(&before_.device().agents[old], &after_.device().agents[now]);
        if (!addFaults(old, now))
            compareMeanings();
    }
    auto const& agent = after_.device().agents[now];
    if (agent.isActiveVariant)
        dropWhatPlainHas(agent, begin);
    else
        plain_[{literalPart(agent), hasTokens(agent)}] = {begin, found_.size()};
}

bool AgentDifference::isSame(std::size_t old, std::size_t now) {
    auto const& a = before_.device().agents[old].profiles;
    auto const& b = after_.device().agents[now].profiles;
    if (a.size() != b.size() || oldMeanings_.firstFault(old) || newMeanings_.firstFault(now))
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        auto const [entry, added] = same_.try_emplace({a[i], b[i]}, false);
        if (added)
            entry->second = meanTheSame(before_, a[i], after_, b[i]);
        if (!entry->second)
            return false;
    }
    return true;
}

void AgentDifference::dropWhatPlainHas(Agent const& variant, std::size_t begin) {
    auto const plain = plain_.find({literalPart(variant), hasTokens(variant)});
    if (begin == found_.size() || plain == plain_.end())
        return;
    auto const isBefore = [this](std::size_t a, std::size_t b) {
        return sameAsOf(found_[a]) < sameAsOf(found_[b]);
    };
    std::vector<std::size_t> known;
    for (auto i = plain->second.first; i < plain->second.second; ++i)
        known.push_back(i);
    std::sort(known.begin(), known.end(), isBefore);
    auto kept = begin;
    for (auto i = begin; i < found_.size(); ++i) {
        auto const [from, to] = std::equal_range(known.begin(), known.end(), i, isBefore);
        bool const isTold = std::any_of(
            from, to, [&](std::size_t each) { return isSameChange(found_[each], found_[i]); });
        if (isTold)
            continue;
        if (kept != i)
            found_[kept] = std::move(found_[i]);
        ++kept;
    }
    found_.resize(kept);
}

FoundChange& AgentDifference::add(ChangeKind kind, ChangeClass severity, std::string before,
                                  std::string after, Cause cause) {
    FoundChange change;
    change.kind = kind;
    change.severity = severity;
    change.before = std::move(before);
    change.after = std::move(after);
    change.agent = agentName_;
    change.cause = std::move(cause);
    if (!change.cause.isKnown()) {
        // Whatever it is, it is in the profiles of the agent.
        change.cause = causes_.ofAgentBefore(*agents_.before);
        change.cause.add(causes_.ofAgentAfter(*agents_.after));
    }
    found_.push_back(std::move(change));
    return found_.back();
}

// An agent that is in one device only. Variants come and go with what their agents say.
void AgentDifference::addLone(std::size_t index, bool isNew) {
    auto const& agent = (isNew ? after_ : before_).device().agents[index];
    if (agent.isActiveVariant)
        return;
    stand(isNew ? nullptr : &agent, isNew ? &agent : nullptr);
    auto const meaning = (isNew ? newMeanings_ : oldMeanings_).of(agent);
    bool writesAny = false;
    std::vector<ChangedMount> mounts;
    for (auto const& mount : meaning.mounts) {
        if (!mount.isExplicit())
            continue;
        writesAny = writesAny || writes(mount.flags);
        mounts.push_back(
            {agentName_, shown(mount.path), std::string(mount.type.view()), flagText(mount.flags)});
    }
    auto& change =
        isNew ? add(ChangeKind::agentAdded, writesAny ? ChangeClass::risky : ChangeClass::notable,
                    "", "", causes_.ofAgentAfter(agent))
              : add(ChangeKind::agentRemoved, ChangeClass::dangerous, "", "",
                    causes_.ofAgentBefore(agent));
    change.mounts = std::move(mounts);
    addFaults(isNew ? Index() : Index(index), isNew ? Index(index) : Index());
}

// Whether the agent ends at a fault on one side only, or at different ones.
bool AgentDifference::addFaults(Index old, Index now) {
    auto const fault = [](AgentMeanings const& meanings, Index agent) {
        return agent ? meanings.firstFault(*agent) : Index();
    };
    auto const before = fault(oldMeanings_, old);
    auto const after = fault(newMeanings_, now);
    auto const message = [](DeviceSide& side, Index index, Agent const& agent) {
        return index ? withTokenNumbers(side.device().faults[*index].exception.msg.view(),
                                        tokenNames(side.device(), agent))
                     : std::string();
    };
    auto const oldMessage = message(before_, before, *agents_.before);
    auto const newMessage = message(after_, after, *agents_.after);
    if (before.has_value() == after.has_value() &&
        withoutFolders(oldMessage, before_.device()) == withoutFolders(newMessage, after_.device()))
        return false;
    if (before)
        add(ChangeKind::faultRemoved, ChangeClass::harmless, shown(oldMessage), "",
            causes_.ofFaultBefore(agents_, *before));
    if (after)
        add(ChangeKind::faultAdded, ChangeClass::dangerous, "", shown(newMessage),
            causes_.ofFaultAfter(agents_, *after));
    return true;
}

void AgentDifference::compareMeanings() {
    auto const old = oldMeanings_.of(*agents_.before);
    auto const now = newMeanings_.of(*agents_.after);
    compareSettings(old, now);
    compareMounts(old, now);
}

std::string AgentDifference::shown(Rook::String const& text) const {
    return withTokenNames(text.view(), tokenNames_);
}

} // namespace KeldaDatabase
