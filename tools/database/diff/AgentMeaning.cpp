#include "AgentMeaning.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <KeldaUtil/MountFlags.h>

#include "AgentNamesShown.h"

namespace KeldaDatabase {
namespace {

constexpr std::string_view tokenMark = "-%";

void noteFirst(std::optional<std::size_t>& first, std::size_t index) {
    if (!first)
        first = index;
}

void addKeywords(Device const& device, Profile const& profile, AgentMeaning& meaning) {
    for (auto i = profile.keywords.begin; i < profile.keywords.end; ++i) {
        auto const keyword = device.keywords[i].keyword;
        if (keyword == "activeMount")
            noteFirst(meaning.activeLine, i);
        else if (keyword == "matchActiveName")
            noteFirst(meaning.matchActiveLine, i);
        else if (keyword == "noDefaultMountGroup")
            noteFirst(meaning.refusalLine, i);
    }
}

bool isEqual(DeviceSide& before, std::size_t old, DeviceSide& after, std::size_t now) {
    auto const& a = before.device().mounts[old];
    auto const& b = after.device().mounts[now];
    auto const groupOf = [](Device const& device, Mount const& mount) {
        return mount.group == none
                   ? std::pair<std::string_view, unsigned>("", 0)
                   : std::pair<std::string_view, unsigned>(device.groups[mount.group].name,
                                                           device.groups[mount.group].priority);
    };
    return a.path == b.path && a.type == b.type && a.flags == b.flags &&
           a.isRefused == b.isRefused && a.isConditional == b.isConditional &&
           (a.group == none) == (b.group == none) &&
           groupOf(before.device(), a) == groupOf(after.device(), b) &&
           (!a.isConditional || before.conditionOf(old).text == after.conditionOf(now).text);
}

// Keyword lines whose meaning is all in the line, or in the mounts below them.
bool isEqual(Keyword const& a, Keyword const& b) {
    if (a.keyword != b.keyword)
        return false;
    bool const isInMounts =
        a.keyword == "Include:" || a.keyword == "MountGroup:" || a.keyword.starts_with("Condition");
    return isInMounts || a.line == b.line;
}

} // namespace

AgentMeanings::AgentMeanings(DeviceSide& side) : device_(side.device()), replay_(side.device()) {
    findFirstFaults();
}

AgentMeaning AgentMeanings::of(Agent const& agent) {
    AgentMeaning meaning;
    for (auto const id : agent.profiles) {
        auto const& profile = device_.profiles[id];
        meaning.matchesActiveName = meaning.matchesActiveName || profile.saysMatchActiveName;
        meaning.refusesDefault = meaning.refusesDefault || profile.saysNoDefaultMountGroup;
        addKeywords(device_, profile, meaning);
    }
    meaning.isActive = meaning.activeLine.has_value();
    meaning.settings = replay_.settingsOf(agent, meaning.isActive);
    addMounts(agent, meaning);
    if (meaning.isActive)
        addRecords(agent, meaning);
    return meaning;
}

void AgentMeanings::addMounts(Agent const& agent, AgentMeaning& meaning) {
    std::vector<std::size_t> lines;
    for (auto const id : agent.profiles)
        for (auto i = device_.profiles[id].mounts.begin; i < device_.profiles[id].mounts.end; ++i)
            if (isMounted(device_.mounts[i]))
                lines.push_back(i);
    std::stable_sort(lines.begin(), lines.end(), [this](std::size_t a, std::size_t b) {
        return MountBefore()(device_.mounts[a].path, device_.mounts[b].path);
    });
    for (auto const line : lines) {
        auto const& mount = device_.mounts[line];
        if (meaning.mounts.empty() || meaning.mounts.back().path != mount.path)
            meaning.mounts.push_back({mount.path, mount.type, {}, {}, {}});
        auto& meant = meaning.mounts.back();
        if (meant.type != mount.type)
            continue; // a fault of this agent
        meant.own = KeldaUtil::safelyMergeFlags(meant.own, mount.flags);
        meant.flags = meant.own;
        meant.lines.push_back(line);
    }
}

void AgentMeanings::addRecords(Agent const& agent, AgentMeaning& meaning) {
    std::vector<std::size_t> lines;
    for (auto const id : agent.profiles)
        for (auto i = device_.profiles[id].mounts.begin; i < device_.profiles[id].mounts.end; ++i)
            if (isMounted(device_.mounts[i]))
                lines.push_back(i);
    auto const named = static_cast<std::ptrdiff_t>(meaning.mounts.size());
    for (auto const& [path, args] : replay_.recordsOf(lines, meaning.settings.rootFlags)) {
        MountMeaning record{path, args.type, args.flags, {}, {}};
        auto const end = meaning.mounts.begin() + named;
        auto const found = std::lower_bound(meaning.mounts.begin(), end, record, MountBefore());
        if (found != end && found->path == path)
            found->flags = args.flags;
        else
            meaning.mounts.push_back(std::move(record));
    }
    std::sort(meaning.mounts.begin(), meaning.mounts.end(), MountBefore());
}

// As faultsOf has them, for all agents at once.
void AgentMeanings::findFirstFaults() {
    auto const& faults = device_.faults;
    auto const better = [&](std::optional<std::size_t> a, std::optional<std::size_t> b) {
        if (!a || !b)
            return a ? a : b;
        return std::pair(faults[*b].moment, *b) < std::pair(faults[*a].moment, *a) ? b : a;
    };
    faults_.assign(device_.agents.size(), std::nullopt);
    std::vector<std::optional<std::size_t>> ofProfile(device_.profiles.size());
    std::optional<std::size_t> ofAll;
    for (std::size_t i = 0; i < faults.size(); ++i)
        if (faults[i].isTogether)
            for (auto const agent : faults[i].agents)
                faults_[agent] = better(faults_[agent], i);
        else if (faults[i].profile == none)
            ofAll = better(ofAll, i);
        else
            ofProfile[faults[i].profile] = better(ofProfile[faults[i].profile], i);
    for (std::size_t agent = 0; agent < device_.agents.size(); ++agent) {
        faults_[agent] = better(faults_[agent], ofAll);
        for (auto const profile : device_.agents[agent].profiles)
            faults_[agent] = better(faults_[agent], ofProfile[profile]);
    }
}

// The default groups are filed under the name of the profile that the agent loaded last.
GroupMembership AgentMeanings::groupOf(Agent const& agent, std::size_t line) const {
    auto const& mount = device_.mounts[line];
    auto const& profile = device_.profiles[mount.profile];
    GroupMembership membership{profile.agentKey, "", 0, line};
    if (profile.isDefaultGroup()) {
        membership.name = "default";
        for (auto const id : agent.profiles)
            if (!device_.profiles[id].isDefaultGroup())
                membership.agentKey = device_.profiles[id].agentKey;
    }
    if (mount.group != none) {
        membership.name = device_.groups[mount.group].name;
        membership.priority = device_.groups[mount.group].priority;
    }
    return membership;
}

bool meanTheSame(DeviceSide& before, ProfileId old, DeviceSide& after, ProfileId now) {
    auto const& a = before.device().profiles[old];
    auto const& b = after.device().profiles[now];
    if (a.kind != b.kind || a.agentKey != b.agentKey || a.hasTokens() != b.hasTokens() ||
        a.saysMatchActiveName != b.saysMatchActiveName || a.mounts.size() != b.mounts.size() ||
        a.keywords.size() != b.keywords.size() || restToken(a) != restToken(b))
        return false;
    for (std::size_t i = 0; i < a.keywords.size(); ++i) {
        auto const& keyword = before.device().keywords[a.keywords.begin + i];
        if (!isEqual(keyword, after.device().keywords[b.keywords.begin + i]))
            return false;
        // What stands in it hangs on aliases.
        if (keyword.keyword == "subAgent:" && keyword.line.find('%') != std::string::npos)
            return false;
    }
    for (std::size_t i = 0; i < a.mounts.size(); ++i)
        if (!isEqual(before, a.mounts.begin + i, after, b.mounts.begin + i))
            return false;
    return true;
}

bool hasTokens(Agent const& agent) {
    return agent.name.find(tokenMark) != Rook::String::npos;
}

Rook::String literalPart(Agent const& agent) {
    return agent.name.substr(0, agent.name.find(tokenMark));
}

} // namespace KeldaDatabase
