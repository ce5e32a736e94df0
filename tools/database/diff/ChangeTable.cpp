// The kinds, classes and causes of changes, and what they are called.
#include <algorithm>
#include <array>
#include <iterator>
#include <ranges>
#include <set>

#include "Difference.h"

namespace KeldaDatabase {
namespace {

using enum ChangeClass;

struct KindRow {
    ChangeRow row;
    std::string_view name;
    ChangeKind mirror;
};

constexpr std::array kinds{
    KindRow{{ChangeKind::agentAdded, notable, risky,
             "An agent is there that was not. Risky if it writes something."},
            "agent-added",
            ChangeKind::agentRemoved},
    KindRow{
        {ChangeKind::agentRemoved, dangerous, dangerous, "No profile is for the agent any more."},
        "agent-removed",
        ChangeKind::agentAdded},
    KindRow{{ChangeKind::faultAdded, dangerous, dangerous,
             "The agent ends at a fault that it did not meet before."},
            "fault-added",
            ChangeKind::faultRemoved},
    KindRow{{ChangeKind::faultRemoved, harmless, harmless,
             "The agent does not meet the fault any more at which it ended."},
            "fault-removed",
            ChangeKind::faultAdded},
    KindRow{{ChangeKind::mountAdded, harmless, risky,
             "The agent mounts a further path. Risky if it writes there; harmless if it is a "
             "directory that follows from other mounts."},
            "mount-added",
            ChangeKind::mountRemoved},
    KindRow{{ChangeKind::mountRemoved, harmless, dangerous,
             "The agent does not mount the path any more. Harmless if it is a directory that "
             "followed from other mounts."},
            "mount-removed",
            ChangeKind::mountAdded},
    KindRow{{ChangeKind::flagsWidened, harmless, risky,
             "A mount has further flags. Risky if the agent now writes there; harmless if they "
             "follow from other mounts."},
            "flags-widened",
            ChangeKind::flagsNarrowed},
    KindRow{{ChangeKind::flagsNarrowed, harmless, dangerous,
             "A mount lacks flags that it had. Dangerous if the agent does not read or write there "
             "any more; harmless if they followed from other mounts."},
            "flags-narrowed",
            ChangeKind::flagsWidened},
    KindRow{{ChangeKind::flagsReplaced, harmless, dangerous,
             "A mount has flags that it had not, and lacks others. As bad as the worse of both."},
            "flags-replaced",
            ChangeKind::flagsReplaced},
    KindRow{{ChangeKind::typeChanged, dangerous, dangerous, "A mounted path has another type."},
            "type-changed",
            ChangeKind::typeChanged},
    KindRow{{ChangeKind::groupAdded, notable, notable,
             "A path that the agent mounted before is in a further mount group."},
            "group-added",
            ChangeKind::groupRemoved},
    KindRow{{ChangeKind::groupRemoved, notable, notable,
             "A path that the agent still mounts is no longer in a mount group."},
            "group-removed",
            ChangeKind::groupAdded},
    KindRow{{ChangeKind::groupPriorityChanged, notable, notable,
             "A mount group that holds the path has another priority."},
            "group-priority-changed",
            ChangeKind::groupPriorityChanged},
    KindRow{{ChangeKind::conditionChanged, risky, risky,
             "A path is mounted on another condition, or on one where there was none."},
            "condition-changed",
            ChangeKind::conditionChanged},
    KindRow{{ChangeKind::rootFlagsChanged, risky, risky, "The agent has other root flags."},
            "root-flags-changed",
            ChangeKind::rootFlagsChanged},
    KindRow{
        {ChangeKind::connectionFlagsChanged, risky, risky, "The agent has other connection flags."},
        "connection-flags-changed",
        ChangeKind::connectionFlagsChanged},
    KindRow{{ChangeKind::subAgentsChanged, risky, risky,
             "The agent has other sub-agents, or has them in another order."},
            "sub-agents-changed",
            ChangeKind::subAgentsChanged},
    KindRow{{ChangeKind::activeMountChanged, dangerous, dangerous,
             "The agent became one with active mounts, or one without."},
            "active-mount-changed",
            ChangeKind::activeMountChanged},
    KindRow{{ChangeKind::matchActiveNameChanged, notable, dangerous,
             "The -Active- variant of the agent came or went. Dangerous if it went; risky if it "
             "came and writes something."},
            "match-active-name-changed",
            ChangeKind::matchActiveNameChanged},
    KindRow{{ChangeKind::noDefaultMountGroupChanged, notable, notable,
             "The agent refuses the default mount groups, or takes them again."},
            "no-default-mount-group-changed",
            ChangeKind::noDefaultMountGroupChanged},
    KindRow{{ChangeKind::tokensChanged, risky, risky,
             "A token in a path takes all that is left of the agent string, where it took one part "
             "of it, or the other way round."},
            "tokens-changed",
            ChangeKind::tokensChanged},
    KindRow{{ChangeKind::preinitAdded, harmless, harmless, "A path is declared that was not."},
            "preinit-added",
            ChangeKind::preinitRemoved},
    KindRow{{ChangeKind::preinitRemoved, risky, risky, "A path is not declared any more."},
            "preinit-removed",
            ChangeKind::preinitAdded},
    KindRow{{ChangeKind::preinitTypeChanged, dangerous, dangerous,
             "A path is declared with another type."},
            "preinit-type-changed",
            ChangeKind::preinitTypeChanged},
    KindRow{{ChangeKind::preinitAttributeChanged, risky, risky,
             "A declared path has another attribute: it comes into being at another time."},
            "preinit-attribute-changed",
            ChangeKind::preinitAttributeChanged},
    KindRow{{ChangeKind::preinitConfigChanged, risky, risky,
             "A declared path became a config path, or is none any more."},
            "preinit-config-changed",
            ChangeKind::preinitConfigChanged},
};

constexpr bool isInEnumerationOrder() {
    for (std::size_t i = 0; i < kinds.size(); ++i)
        if (static_cast<std::size_t>(kinds[i].row.kind) != i)
            return false;
    return true;
}
static_assert(isInEnumerationOrder());

constexpr std::array<std::string_view, 4> classNames{"harmless", "notable", "risky", "dangerous"};
constexpr std::array<std::string_view, 7> causeNames{
    "line", "file", "include", "alias", "agent-name", "keyword", "preinit",
};

constexpr auto rows = [] {
    std::array<ChangeRow, kinds.size()> table{};
    for (std::size_t i = 0; i < kinds.size(); ++i)
        table[i] = kinds[i].row;
    return table;
}();

} // namespace

std::string_view nameOf(ChangeKind kind) {
    return kinds[static_cast<std::size_t>(kind)].name;
}

std::string_view nameOf(ChangeClass severity) {
    return classNames[static_cast<std::size_t>(severity)];
}

std::string_view nameOf(ChangeCause cause) {
    return causeNames[static_cast<std::size_t>(cause)];
}

std::optional<ChangeClass> changeClassNamed(std::string_view name) {
    auto const found = std::find(classNames.begin(), classNames.end(), name);
    if (found == classNames.end())
        return std::nullopt;
    return static_cast<ChangeClass>(std::distance(classNames.begin(), found));
}

ChangeKind mirrorOf(ChangeKind kind) {
    return kinds[static_cast<std::size_t>(kind)].mirror;
}

std::span<ChangeRow const> changeTable() {
    return rows;
}

std::size_t Change::agentCount() const {
    std::set<std::string_view> agents;
    for (auto const& path : paths)
        agents.insert(path.agents.begin(), path.agents.end());
    return agents.size();
}

std::optional<ChangeClass> Difference::worst() const {
    if (changes.empty())
        return std::nullopt;
    return std::max_element(
               changes.begin(), changes.end(),
               [](Change const& a, Change const& b) { return a.severity < b.severity; })
        ->severity;
}

} // namespace KeldaDatabase
