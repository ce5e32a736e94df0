// The part of AgentDifference that compares what profiles say of an agent as a whole.
#include <algorithm>
#include <set>
#include <string_view>

#include <fmt/format.h>

#include "AgentDifference.h"
#include "database/paths/AgentMounts.h"

namespace KeldaDatabase {
namespace {

constexpr char passiveLetter = 'p';
// What directories may take over from the root.
constexpr std::string_view inheritedLetters = "twp";

// The letters, in which neither order nor number counts.
std::set<char> lettersOf(Rook::String const& flags) {
    auto const text = flags.view();
    return {text.begin(), text.end()};
}

std::string answer(bool yes) {
    return yes ? "yes" : "no";
}

} // namespace

void AgentDifference::compareSettings(AgentMeaning const& old, AgentMeaning const& now) {
    if (old.isActive != now.isActive) {
        auto const text = [](bool isActive) { return isActive ? "active" : "passive"; };
        activeCause_ = causes_.ofSetting(agents_, old.activeLine, now.activeLine);
        add(ChangeKind::activeMountChanged, ChangeClass::dangerous, text(old.isActive),
            text(now.isActive), activeCause_);
    }
    compareRootFlags(old, now);
    auto const& before = old.settings;
    auto const& after = now.settings;
    if (lettersOf(before.connectionFlags) != lettersOf(after.connectionFlags))
        add(ChangeKind::connectionFlagsChanged, ChangeClass::risky,
            std::string(before.connectionFlags.view()), std::string(after.connectionFlags.view()),
            causes_.ofSetting(agents_, before.connectionLine, after.connectionLine));
    if (before.subAgents != after.subAgents) {
        auto const text = [&](std::vector<Rook::String> const& names) {
            std::string joined;
            for (auto const& name : names)
                joined += fmt::format("{}{}", joined.empty() ? "" : ", ", shown(name));
            return joined;
        };
        add(ChangeKind::subAgentsChanged, ChangeClass::risky, text(before.subAgents),
            text(after.subAgents),
            causes_.ofSubAgents(agents_, before.subAgentLines, after.subAgentLines));
    }
    if (old.matchesActiveName != now.matchesActiveName)
        add(ChangeKind::matchActiveNameChanged, classOfVariant(now.matchesActiveName),
            answer(old.matchesActiveName), answer(now.matchesActiveName),
            causes_.ofSetting(agents_, old.matchActiveLine, now.matchActiveLine));
    if (old.refusesDefault != now.refusesDefault)
        add(ChangeKind::noDefaultMountGroupChanged, ChangeClass::notable,
            answer(old.refusesDefault), answer(now.refusesDefault),
            causes_.ofSetting(agents_, old.refusalLine, now.refusalLine));
}

// Of the variant that came, or went, with all that it mounts.
ChangeClass AgentDifference::classOfVariant(bool isNew) const {
    if (!isNew)
        return ChangeClass::dangerous;
    auto const& device = after_.device();
    for (auto const id : agents_.after->profiles) {
        auto const& profile = device.profiles[id];
        if (!profile.saysMatchActiveName && !profile.isDefaultGroup())
            continue;
        for (auto i = profile.mounts.begin; i < profile.mounts.end; ++i)
            if (isMounted(device.mounts[i]) && writes(device.mounts[i].flags))
                return ChangeClass::risky;
    }
    return ChangeClass::notable;
}

void AgentDifference::compareRootFlags(AgentMeaning const& old, AgentMeaning const& now) {
    auto before = lettersOf(old.settings.rootFlags);
    auto after = lettersOf(now.settings.rootFlags);
    if (before == after)
        return;
    auto cause = causes_.ofSetting(agents_, old.settings.rootLine, now.settings.rootLine);
    for (char const letter : inheritedLetters)
        if (before.contains(letter) != after.contains(letter))
            rootCause_ = cause;
    // Agents without active mounts have a letter of their own.
    before.erase(passiveLetter);
    after.erase(passiveLetter);
    bool const isPassiveOnly = before == after && activeCause_.isKnown();
    add(ChangeKind::rootFlagsChanged, ChangeClass::risky,
        std::string(old.settings.rootFlags.view()), std::string(now.settings.rootFlags.view()),
        isPassiveOnly ? activeCause_ : cause);
}

} // namespace KeldaDatabase
