#include "AgentFaults.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <tuple>

#include <KeldaBase/MountFileInfo.h>

#include "database/findings/Rules.h"

namespace KeldaDatabase {
namespace {

constexpr std::string_view activeMountKeyword = "activeMount";
constexpr std::string_view directoryType = "Fen::Dir";

bool isCondition(Keyword const& keyword) {
    return keyword.keyword == "Condition:" || keyword.keyword == "ConditionBlocker:";
}

using Paths = std::set<Rook::String>;

// The paths that were met with more than one type. The parser has told so of each.
Paths pathsOfSeveralTypes(Device const& device) {
    Paths paths;
    for (auto const& fault : device.faults)
        if (ruleOfMessage(fault.exception.msg.view()) == RuleId::typesDiffer && fault.moment > 0) {
            // The line that it was met at came just before it.
            auto const mount =
                std::ranges::lower_bound(device.mounts, fault.moment, {}, &Mount::moment);
            if (mount != device.mounts.begin())
                paths.insert(std::prev(mount)->path);
        }
    return paths;
}

bool isBelow(std::string_view path, std::string_view ancestor) {
    return path.size() > ancestor.size() && path.starts_with(ancestor) &&
           path[ancestor.size()] == '/';
}

// The paths of another type than a directory's that have instantiating mounts below them, and those
// mounts: the agents with active mounts make a directory of every such ancestor. The record of a
// path of several types holds the first type only, and the flags of its lines: such a path may be
// either of the two.
Paths pathsThatBecomeDirectories(Kelda::MountArgsMap const& records, Paths const& ofSeveralTypes) {
    Paths paths;
    std::vector<Rook::String const*> candidates; // each begins with the one before it
    for (auto const& [path, args] : records) {
        while (!candidates.empty() && !path.startsWith(*candidates.back()))
            candidates.pop_back();
        bool const isAnything = !ofSeveralTypes.empty() && ofSeveralTypes.contains(path);
        if (isAnything || args.flags.instantiatingMount())
            for (auto const* const candidate : candidates)
                if (isBelow(path.view(), candidate->view())) {
                    paths.insert(*candidate);
                    paths.insert(path);
                }
        if (isAnything || args.type.view() != directoryType)
            candidates.push_back(&path);
    }
    return paths;
}

// The path lines and keyword lines whose meaning hangs on what an agent met before them.
struct DecisiveLines {
    std::vector<std::size_t> mounts; // indexes, in order
    bool anyActiveMount = false;

    DecisiveLines(Device const& device, Kelda::MountArgsMap const& records) {
        anyActiveMount = std::ranges::any_of(device.keywords, [](Keyword const& keyword) {
            return keyword.keyword == activeMountKeyword;
        });
        auto paths = pathsOfSeveralTypes(device);
        if (anyActiveMount)
            paths.merge(pathsThatBecomeDirectories(records, paths));
        if (paths.empty())
            return;
        for (std::size_t i = 0; i < device.mounts.size(); ++i)
            if (isMounted(device.mounts[i]) && paths.contains(device.mounts[i].path))
                mounts.push_back(i);
    }

    std::span<std::size_t const> of(Profile const& profile) const {
        auto const begin = std::ranges::lower_bound(mounts, profile.mounts.begin);
        return {begin, std::ranges::lower_bound(mounts, profile.mounts.end)};
    }
};

// A parser that handles the decisive lines of one agent after another.
class Replay : public Kelda::MountFileInfo {
  public:
    explicit Replay(Device const& device)
        : MountFileInfo(false, "/nonexistent", "/nonexistent", ""), device_(device) {}

    // Only what the library asks for; nothing is read here.
    void doInit() override { isInitialized_ = true; }
    Rook::String evaluateAliasValue(Rook::String const& token) override { return token; }

    void maybeThrow(Rook::String const& message) const override {
        MountFileInfo::maybeThrow(message);
        Fault fault{exceptions_.back(), place_, profile_, moment_, {agent_}, true, {}};
        if (cause_)
            fault.causes.push_back(*cause_);
        faults_.push_back(std::move(fault));
    }

    void handle(std::uint32_t agent, DecisiveLines const& lines) {
        clearProfileData();
        firstMounts_.clear();
        activePlace_.reset();
        conditionPlace_.reset();
        agent_ = agent;
        for (auto const id : device_.agents[agent].profiles)
            handle(id, lines.of(device_.profiles[id]));
        makeDirectories();
    }

    std::vector<Fault> takeFaults() { return std::move(faults_); }

  private:
    void handle(ProfileId id, std::span<std::size_t const> mounts) {
        auto const& profile = device_.profiles[id];
        profile_ = id;
        if (!profile.isDefaultGroup())
            agentKey_ = profile.agentKey;
        auto keyword = profile.keywords.begin;
        for (auto const mount : mounts) {
            for (; keyword < profile.keywords.end &&
                   device_.keywords[keyword].moment < device_.mounts[mount].moment;
                 ++keyword)
                handle(device_.keywords[keyword]);
            handle(device_.mounts[mount]);
        }
        for (; keyword < profile.keywords.end; ++keyword)
            handle(device_.keywords[keyword]);
    }

    void handle(Keyword const& keyword) {
        bool const isActiveMount = keyword.keyword == activeMountKeyword;
        if (!isActiveMount && !isCondition(keyword))
            return;
        standAt(keyword.place, keyword.moment);
        cause_ = isActiveMount ? conditionPlace_ : activePlace_;
        auto& first = isActiveMount ? activePlace_ : conditionPlace_;
        if (!first)
            first = keyword.place;
        Kelda::LineBuffer const line{};
        if (isActiveMount)
            handleActiveMountLine();
        else if (keyword.keyword == "Condition:")
            handleConditionLine(line);
        else
            handleConditionBlockerLine(line);
        leave();
    }

    void handle(Mount const& mount) {
        standAt(mount.place, mount.moment);
        auto const [first, added] = firstMounts_.try_emplace(mount.path, mount.place);
        if (!added)
            cause_ = first->second;
        recordMountArgsInternal(mount.path, {mount.type, mount.flags}, true);
        leave();
    }

    // What happens once all files of an agent with active mounts are read.
    void makeDirectories() {
        if (!activeMountSeen_ || pathMountArgsMap_.empty())
            return;
        allProfilesLoaded_ = true;
        place_ = Place();
        moment_ = none;
        auto const known = static_cast<std::ptrdiff_t>(faults_.size());
        recordIntermediatePaths();
        std::set<Rook::String> told; // each is met once for each mount below the path
        faults_.erase(std::remove_if(faults_.begin() + known, faults_.end(),
                                     [&](Fault const& fault) {
                                         return !told.insert(fault.exception.msg).second;
                                     }),
                      faults_.end());
        for (auto fault = faults_.begin() + known; fault != faults_.end(); ++fault)
            fault->causes = linesAt(pathOf(fault->exception.msg.view()));
    }

    // Of "... types don't match for path 'PATH': 'TYPE'  'TYPE'".
    static Rook::String pathOf(std::string_view message) {
        auto const begin = message.find('\'') + 1; // of "don't"
        auto const path = message.substr(message.find('\'', begin) + 1);
        return path.substr(0, path.find("': '"));
    }

    // The line that mounts a path, and one that makes a directory of it.
    std::vector<Place> linesAt(Rook::String const& path) const {
        std::vector<Place> places;
        if (auto const mount = firstMounts_.find(path); mount != firstMounts_.end())
            places.push_back(mount->second);
        auto const below = path + "/";
        for (auto mount = firstMounts_.lower_bound(below);
             mount != firstMounts_.end() && mount->first.startsWith(below); ++mount)
            if (pathMountArgsMap_.at(mount->first).flags.instantiatingMount()) {
                places.push_back(mount->second);
                break;
            }
        return places;
    }

    void standAt(Place const& place, Moment moment) {
        place_ = place;
        moment_ = moment;
        currentFiles_.push_back({device_.files[place.file].name, place.line});
    }
    void leave() {
        currentFiles_.clear();
        cause_.reset();
    }

    Device const& device_;
    std::uint32_t agent_ = 0;
    ProfileId profile_ = none;
    Place place_;
    Moment moment_ = 0;
    std::optional<Place> cause_;
    std::optional<Place> activePlace_;
    std::optional<Place> conditionPlace_;
    std::map<Rook::String, Place> firstMounts_;
    mutable std::vector<Fault> faults_;
};

// Whether an agent has a line that could be in conflict with another one of it.
bool needsReplay(Device const& device, Agent const& agent, DecisiveLines const& lines) {
    bool active = false;
    bool condition = false;
    for (auto const id : agent.profiles) {
        auto const& profile = device.profiles[id];
        if (!lines.of(profile).empty())
            return true;
        for (auto i = profile.keywords.begin; i < profile.keywords.end; ++i) {
            active = active || device.keywords[i].keyword == activeMountKeyword;
            condition = condition || isCondition(device.keywords[i]);
        }
    }
    return active && condition;
}

// One fault for each time that a line was read, and kind, with all agents that meet it. Faults
// without a line stay apart: each agent meets them in an order of its own.
std::vector<Fault> onceForEachLine(std::vector<Fault> faults) {
    std::map<std::tuple<Moment, std::uint32_t, std::string>, std::size_t> known;
    std::vector<Fault> distinct;
    for (auto& fault : faults) {
        auto const rule = ruleOfMessage(fault.exception.msg.view());
        // Keyword conflicts name the agent that meets them.
        auto const what = rule == RuleId::conditionWithActiveMount
                              ? std::string()
                              : std::string(fault.exception.msg.view());
        auto const agent = fault.place.isKnown() ? none : fault.agents.front();
        auto const [entry, added] = known.try_emplace({fault.moment, agent, what}, distinct.size());
        if (added)
            distinct.push_back(std::move(fault));
        else if (auto& agents = distinct[entry->second].agents;
                 agents.back() != fault.agents.front())
            agents.push_back(fault.agents.front());
    }
    return distinct;
}

// Whether one of the profiles that an agent loads before this one, or the one itself, says
// "activeMount" before a moment.
bool isActiveBefore(Device const& device, Agent const& agent, Moment moment) {
    return std::ranges::any_of(agent.profiles, [&](ProfileId id) {
        auto const& range = device.profiles[id].keywords;
        for (auto i = range.begin; i < range.end; ++i)
            if (device.keywords[i].keyword == activeMountKeyword &&
                device.keywords[i].moment < moment)
                return true;
        return false;
    });
}

bool loads(Agent const& agent, ProfileId profile) {
    return std::ranges::find(agent.profiles, profile) != agent.profiles.end();
}

// A "matchActiveName" without "activeMount", of those agents to whom no other profile has said it.
std::optional<Fault> withoutActiveMount(Device const& device, Fault const& fault) {
    auto together = fault;
    together.isTogether = true;
    for (std::uint32_t agent = 0; agent < device.agents.size(); ++agent)
        if (loads(device.agents[agent], fault.profile) &&
            !isActiveBefore(device, device.agents[agent], fault.moment))
            together.agents.push_back(agent);
    if (together.agents.empty())
        return std::nullopt;
    return together;
}

} // namespace

bool hangsOnFormerLines(std::string_view message) {
    switch (ruleOfMessage(message)) {
    case RuleId::typesDiffer:
    case RuleId::conditionWithActiveMount:
    case RuleId::matchActiveNameAlone:
        return true;
    default:
        return false;
    }
}

std::vector<Fault> faultsTogether(Device const& device, Kelda::MountArgsMap const& records) {
    DecisiveLines const lines(device, records);
    Replay replay(device);
    for (std::uint32_t agent = 0; agent < device.agents.size(); ++agent)
        if (needsReplay(device, device.agents[agent], lines))
            replay.handle(agent, lines);
    auto faults = onceForEachLine(replay.takeFaults());
    for (auto const& fault : device.faults)
        if (ruleOfMessage(fault.exception.msg.view()) == RuleId::matchActiveNameAlone)
            if (auto together = withoutActiveMount(device, fault))
                faults.push_back(std::move(*together));
    std::ranges::stable_sort(faults, {}, &Fault::moment);
    return faults;
}

std::vector<std::size_t> faultsOf(Device const& device, std::size_t agent) {
    std::vector<std::size_t> faults;
    for (std::size_t i = 0; i < device.faults.size(); ++i) {
        auto const& fault = device.faults[i];
        bool const concerns =
            fault.isTogether ? std::ranges::find(fault.agents, agent) != fault.agents.end()
                             : fault.profile == none || loads(device.agents[agent], fault.profile);
        if (concerns)
            faults.push_back(i);
    }
    std::ranges::stable_sort(faults, {}, [&](std::size_t i) { return device.faults[i].moment; });
    return faults;
}

} // namespace KeldaDatabase
