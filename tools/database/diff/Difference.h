// What a change of files means to the agents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "database/DatabaseMountFileInfo.h"
#include "database/paths/PathStory.h"

namespace KeldaDatabase {

/// How much a change can do to a running system, the least first.
enum class ChangeClass : std::uint8_t {
    harmless,  ///< no agent loses anything or does anything that it did not do before
    notable,   ///< agents get more than they had, and only read it
    risky,     ///< agents may act otherwise, or write what they did not write
    dangerous, ///< agents may not start, or lack what they had
};

enum class ChangeKind : std::uint8_t {
    agentAdded,
    agentRemoved,
    faultAdded, ///< the agent ends at a fault that it did not meet before
    faultRemoved,
    mountAdded,
    mountRemoved,
    flagsWidened,
    flagsNarrowed,
    flagsReplaced, ///< some flags came, others went
    typeChanged,
    groupAdded, ///< a path is in a further mount group
    groupRemoved,
    groupPriorityChanged,
    conditionChanged,
    rootFlagsChanged,
    connectionFlagsChanged,
    subAgentsChanged,
    activeMountChanged,
    matchActiveNameChanged,
    noDefaultMountGroupChanged,
    tokensChanged, ///< a token in a path takes one part of the agent string, or all that is left
    preinitAdded,
    preinitRemoved,
    preinitTypeChanged,
    preinitAttributeChanged,
    preinitConfigChanged,
};

/// What stands in JSON documents and in the manual for a kind or a class: "mount-added", "risky".
std::string_view nameOf(ChangeKind kind);
std::string_view nameOf(ChangeClass severity);
std::optional<ChangeClass> changeClassNamed(std::string_view name);

/// The kind that the same change has when it is undone.
ChangeKind mirrorOf(ChangeKind kind);

struct ChangeRow {
    ChangeKind kind;
    ChangeClass least; ///< the classes that such a change can have
    ChangeClass most;
    std::string_view meaning; ///< a sentence for the manual
};
/// Every kind, in the order of the enumeration.
std::span<ChangeRow const> changeTable();

/// What was changed in the files so that a change came about.
enum class ChangeCause : std::uint8_t {
    line,      ///< the line that says so itself
    file,      ///< the file of the line came or went as a whole
    include,   ///< an Include line, or the files that it finds
    alias,     ///< an alias line
    agentName, ///< an agent-name line: other agents load the profile
    keyword,   ///< a group, condition or other keyword line above the path
    preinit,   ///< a preinit line: the path got, lost or changed its type
};
std::string_view nameOf(ChangeCause cause);

/// One path (empty where the agent as a whole is meant) and the agents for which it changed. Agents
/// and tokens have the names of the new device; those of the old one where the agent is gone.
struct ChangedPath {
    std::string path;                ///< the tokens of agent names by their names
    std::vector<std::string> agents; ///< names, "FanTray-%slot"; sorted. Empty for preinit paths
    std::string type; ///< of the mount, in the new device if it is there; empty where none is meant
};

/// A mount of an agent that came or went as a whole.
struct ChangedMount {
    std::string agent;
    std::string path;
    std::string type;
    std::string flags;
};

/// Everything of one kind, with the same values before and after, that the same lines brought
/// about.
///
/// The values: flags of a mount as the agent has them, active mounts included; for groups the name,
/// "::" for the one without a name, and "KEY::NAME" where the profile is that of another agent name
/// than the agent's own; for priorities the number, 0 without a "MountGroup:" line; for conditions
/// the line, "Condition: a text", several joined by ", "; sub-agents joined by ", "; "passive" and
/// "active" for active mounts; for tokens the agent names that they stand in, joined by ", "; "no"
/// and "yes" for matchActiveName, noDefaultMountGroup and config paths; the type of a preinit path
/// that came or went. An agent that came or went has none, see `mounts`.
///
/// A place stands without the Include line that led there if several did.
struct Change {
    ChangeKind kind = ChangeKind::mountAdded;
    ChangeClass severity = ChangeClass::harmless;
    ChangeCause cause = ChangeCause::line;
    std::string before; ///< flags, a type, a fault's message ...; empty where there is none
    std::string after;
    std::vector<StoryPlace> oldPlaces; ///< the causing lines in the old device; may be empty
    std::vector<StoryPlace> newPlaces;
    std::vector<ChangedPath> paths; ///< never empty; by path
    /// What agents that came or went have, for agentAdded and agentRemoved; by agent and path.
    std::vector<ChangedMount> mounts;
    /// A record that only exists, or only has these flags, because of mounts below or above it
    /// which are changes of their own. Counts as harmless.
    bool follows = false;

    std::size_t agentCount() const; ///< distinct agents of all paths
};

struct Difference {
    std::vector<Change> changes;  ///< the most dangerous first; then by kind, path and place
    std::size_t agentsBefore = 0; ///< without "-Active-" variants
    std::size_t agentsAfter = 0;
    /// The class of the worst change; nothing if there is no change.
    std::optional<ChangeClass> worst() const;
};

/// Compares two devices. Both parsers must have been told numberedTokensIs(true); they load if need
/// be. What changes only in layout, order, comments or place is no difference.
///
/// An agent is the same one in both if its name has the same literal part, and tokens in both or
/// none in both; how the tokens are called does not matter.
///
/// Only the first fault of an agent counts, by its message. Where an agent ends at a fault in one
/// device and not, or at another one, in the other, nothing else is told of it: it does not get to
/// mount anything.
///
/// "-Active-" variants are agents of their own, but only what changes for them otherwise than for
/// their plain agent is told. That a variant came or went shows as matchActiveNameChanged.
///
/// The difference of the devices the other way round has the mirrored changes, with their values
/// and places swapped, but for names of tokens that differ between the devices.
Difference differenceOf(DatabaseMountFileInfo& before, DatabaseMountFileInfo& after);

} // namespace KeldaDatabase
