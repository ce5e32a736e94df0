#include "NearMounts.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include <KeldaBase/MountFileInfo.h>
#include <fmt/format.h>

#include "MountCollector.h"
#include "UnreadFiles.h"
#include "database/findings/Spelling.h"

namespace KeldaDatabase {
namespace {

using Reason = NearLine::Reason;

class Search {
  public:
    Search(Device const& device, NearQuestion const& question, DeviceLines& lines,
           PlaceReader& places)
        : device_(device), question_(question), lines_(lines), places_(places),
          agentsOfProfile_(device.profiles.size()) {
        for (auto const& agent : device.agents)
            for (auto const profile : agent.profiles)
                agentsOfProfile_[profile].push_back(&agent);
        for (auto const& fault : device.faults)
            faults_.emplace(std::pair(fault.place.file, fault.place.line), &fault);
    }

    std::vector<NearLine> take() {
        for (auto const& line : device_.preinits)
            look(line);
        lookAtUnreadFiles(FileFamily::preinit);
        for (std::size_t i = 0; i < device_.mounts.size(); ++i)
            look(i);
        if (question_.story != nullptr)
            addPassed();
        addRefusals();
        lookAtUnreadFiles(FileFamily::profile);
        keepNearestSpellings();
        return std::move(near_);
    }

  private:
    AskedPath const& asked() const { return question_.asked; }

    void keepNearestSpellings() {
        std::size_t fewest = 2;
        for (auto const& line : near_)
            if (line.reason == Reason::mistyped)
                fewest = std::min(fewest, line.typingErrors);
        std::erase_if(near_, [fewest](NearLine const& line) {
            return line.reason == Reason::mistyped && line.typingErrors > fewest;
        });
    }

    // Each line once, though several profiles may include it.
    void add(NearLine line) {
        auto const& place = line.place;
        if (known_.insert({place.file, place.line, static_cast<int>(line.reason)}).second)
            near_.push_back(std::move(line));
    }

    void look(PreinitDeclaration const& declaration) {
        auto const path = Kelda::MountFileInfo::wildcardPath(declaration.path);
        if (asked().matches(path.view()))
            return;
        auto const difference = asked().differenceTo(path.view());
        if (!difference)
            return;
        NearLine line;
        if (!explains(*difference, !question_.isDeclared, line))
            return;
        line.isPreinit = true;
        line.place = places_.told(declaration.place);
        line.path = path.view();
        add(std::move(line));
    }

    // Sets the reason; false when the paths are merely two.
    static bool explains(AskedPath::Difference const& difference, bool mayBeMistyped,
                         NearLine& line) {
        if (difference.hasOtherName) {
            line.reason = Reason::mistyped;
            line.detail = difference.other;
            line.typingErrors = typingErrors(difference.asked, difference.other);
            return mayBeMistyped && line.typingErrors != 0;
        }
        line.reason = difference.slashes ? Reason::otherSlashes : Reason::otherCase;
        return true;
    }

    void look(std::size_t index) {
        auto const& mount = device_.mounts[index];
        auto const path = Kelda::MountFileInfo::wildcardPath(mount.path);
        if (asked().matches(path.view())) {
            lookAtMatch(index, path);
            return;
        }
        auto const difference = asked().differenceTo(path.view());
        if (!difference)
            return;
        NearLine line;
        bool const isOther = explains(*difference, !question_.isDeclared || mount.isRefused, line);
        if (difference->hasOtherName && isOfOtherValue(index, line))
            line.reason = Reason::otherValue;
        else if (!isOther)
            return;
        finish(std::move(line), mount, path);
    }

    void finish(NearLine line, Mount const& mount, Rook::String const& path) {
        line.place = places_.told(mount.place);
        line.path = path.view();
        line.flags = flagText(mount.flags);
        line.agents = agentsOf(mount.profile);
        add(std::move(line));
    }

    // Whether the line would be for the path if an alias in it had another value. An agent's own
    // story knows of the agent's values.
    bool isOfOtherValue(std::size_t index, NearLine& line) {
        auto const& mount = device_.mounts[index];
        if (mount.isRefused || mount.profile == none || isLoadedByAgent(mount.profile) ||
            device_.profiles[mount.profile].aliases.size() == 0)
            return false;
        auto const& told = lines_.of(index);
        if (told.aliases.empty() || !asked().matches(wildcard(told.writtenPath)))
            return false;
        line.detail.clear();
        line.aliases = told.aliases;
        return true;
    }

    void lookAtMatch(std::size_t index, Rook::String const& path) {
        auto const& mount = device_.mounts[index];
        NearLine line;
        line.detail = faultOf(mount);
        if (mount.isRefused || !line.detail.empty()) {
            if (isLoadedByAgent(mount.profile))
                return; // its own story tells of it
            line.reason = Reason::refused;
        } else if (question_.agent == nullptr || mount.profile == none ||
                   isLoadedByAgent(mount.profile) ||
                   device_.profiles[mount.profile].isDefaultGroup()) {
            return;
        } else {
            line.reason = isPassedOver(device_.profiles[mount.profile]) ? Reason::notForVariants
                                                                        : Reason::otherAgent;
        }
        finish(std::move(line), mount, path);
    }

    // Why a line is refused; empty where it is not.
    std::string faultOf(Mount const& mount) const {
        auto const [first, last] = faults_.equal_range({mount.place.file, mount.place.line});
        for (auto at = first; at != last; ++at) {
            auto const& fault = *at->second;
            if (fault.place == mount.place && fault.profile == mount.profile &&
                (mount.isRefused ||
                 ruleOfMessage(fault.exception.msg.view()) == RuleId::typesDiffer))
                return std::string(fault.exception.msg.view());
        }
        return {};
    }

    // Whether the agent asked about has this profile.
    bool isLoadedByAgent(ProfileId id) const {
        if (question_.story == nullptr || id == none)
            return false;
        auto const& profile = device_.profiles[id];
        if (profile.isDefaultGroup())
            return question_.story->foundMountProfile && !question_.story->noDefaultMountGroup;
        return std::ranges::find(question_.story->profiles, device_.files[profile.file].path()) !=
               question_.story->profiles.end();
    }

    // Whether the profile would be the agent's if it said matchActiveName.
    bool isPassedOver(Profile const& profile) const {
        constexpr std::string_view infix = "-Active-";
        auto name = *question_.agent;
        auto const at = name.find(infix);
        if (at == std::string::npos)
            return false;
        name.replace(at, infix.size(), "-");
        return Kelda::MountFileInfo::matchAgentName(profile.agentName, Rook::String(name)).kind !=
               Kelda::AgentNameMatch::noMatch;
    }

    std::vector<std::string> agentsOf(ProfileId profile) const {
        std::vector<std::string> names;
        if (profile == none || device_.profiles[profile].isDefaultGroup())
            return names;
        for (auto const* const agent : agentsOfProfile_[profile])
            names.push_back(nameOf(*agent));
        return names;
    }

    // What the agent's own parser passed over.
    void addPassed() {
        for (auto const& passed : question_.story->passed) {
            NearLine line;
            line.reason = passed.fault.empty() ? Reason::otherValue : Reason::refused;
            line.place = passed.line.place;
            line.path = passed.line.path;
            line.flags = passed.line.flags;
            line.detail = passed.fault;
            line.aliases = passed.line.aliases;
            add(std::move(line));
        }
    }

    // Default mounts of the path, for agents that refuse them.
    void addRefusals() {
        auto const refusers = refusingAgents();
        if (refusers.empty())
            return;
        for (auto const& profile : device_.profiles)
            for (auto i = profile.mounts.begin; profile.isDefaultGroup() && i < profile.mounts.end;
                 ++i)
                if (auto const& mount = device_.mounts[i];
                    isMounted(mount) && asked().matches(mount.path.view()))
                    addRefusal(mount, refusers);
    }

    void addRefusal(Mount const& mount, std::vector<Agent const*> const& refusers) {
        NearLine line;
        line.reason = Reason::noDefaultGroup;
        line.place = places_.told(mount.place);
        line.path = mount.path.view();
        line.flags = flagText(mount.flags);
        for (auto const* const agent : refusers)
            line.agents.push_back(question_.agent != nullptr ? *question_.agent : nameOf(*agent));
        line.cause = keywordOf(*refusers.front());
        add(std::move(line));
    }

    std::vector<Agent const*> refusingAgents() const {
        std::vector<Agent const*> refusers;
        for (auto const& agent : device_.agents)
            if (question_.agent == nullptr
                    ? refuses(agent)
                    : refusers.empty() && question_.story->noDefaultMountGroup && refuses(agent) &&
                          std::ranges::any_of(agent.profiles,
                                              [&](ProfileId id) { return isLoadedByAgent(id); }))
                refusers.push_back(&agent);
        return refusers;
    }

    bool refuses(Agent const& agent) const {
        return std::ranges::any_of(agent.profiles, [&](ProfileId id) {
            return device_.profiles[id].saysNoDefaultMountGroup;
        });
    }

    StoryPlace keywordOf(Agent const& agent) {
        for (auto const id : agent.profiles) {
            auto const& range = device_.profiles[id].keywords;
            for (auto i = range.begin; i < range.end; ++i)
                if (device_.keywords[i].keyword == "noDefaultMountGroup")
                    return places_.told(device_.keywords[i].place);
        }
        return {};
    }

    void lookAtUnreadFiles(FileFamily family) {
        for (auto const& file : unreadFiles(device_, family))
            forEachPath(places_.textOf(file.path), family, [&](UnreadLine const& unread) {
                if (!asked().matches(wildcard(unread.fields.path)))
                    return;
                NearLine line;
                line.reason = Reason::notRead;
                line.isPreinit = family == FileFamily::preinit;
                line.place = {file.path, unread.line, {}, unread.text};
                line.path = wildcard(unread.fields.path);
                line.flags = line.isPreinit ? "" : unread.fields.flags;
                line.detail = file.reason;
                add(std::move(line));
            });
    }

    Device const& device_;
    NearQuestion const& question_;
    DeviceLines& lines_;
    PlaceReader& places_;
    std::vector<std::vector<Agent const*>> agentsOfProfile_;
    std::multimap<std::pair<FileId, std::int32_t>, Fault const*> faults_; // by line
    std::set<std::tuple<std::string, std::int32_t, int>> known_;
    std::vector<NearLine> near_;
};

// Where the part of an agent string ends that holds so many dashes.
std::size_t literalPart(std::string_view agentString, std::ptrdiff_t dashes) {
    auto end = agentString.find('-');
    for (; dashes > 0 && end != std::string_view::npos; --dashes)
        end = agentString.find('-', end + 1);
    return end;
}

} // namespace

std::string_view nameOf(NearLine::Reason reason) {
    switch (reason) {
    case Reason::refused:
        return "refused";
    case Reason::notRead:
        return "not-read";
    case Reason::otherSlashes:
        return "other-slashes";
    case Reason::otherCase:
        return "other-case";
    case Reason::mistyped:
        return "mistyped";
    case Reason::otherValue:
        return "other-value";
    case Reason::otherAgent:
        return "other-agent";
    case Reason::notForVariants:
        return "not-for-variants";
    case Reason::noDefaultGroup:
        return "no-default-group";
    }
    return {};
}

std::vector<NearLine> nearLines(Device const& device, NearQuestion const& question,
                                DeviceLines& lines, PlaceReader& places) {
    return Search(device, question, lines, places).take();
}

std::vector<std::string> nearAgents(Device const& device, std::string const& agentString) {
    std::vector<std::string> names;
    for (auto const& profile : device.profiles) {
        if (profile.isDefaultGroup())
            continue;
        auto const key = lowerCase(profile.agentKey.view());
        auto const end = literalPart(agentString, std::ranges::count(key, '-'));
        auto const asked = lowerCase(std::string_view(agentString).substr(0, end));
        if (asked != key && typingErrors(asked, key) == 0)
            continue;
        auto name = std::string(profile.agentName.view());
        if (std::ranges::find(names, name) == names.end())
            names.push_back(std::move(name));
    }
    return names;
}

} // namespace KeldaDatabase
