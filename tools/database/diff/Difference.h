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

/// One path (empty where the agent as a whole is meant) and the agents for which it changed.
struct ChangedPath {
    std::string path;                ///< the tokens of agent names by their names
    std::vector<std::string> agents; ///< names, "FanTray-%slot"; sorted. Empty for preinit paths
};

/// Everything of one kind, with the same values before and after, that the same lines brought
/// about.
struct Change {
    ChangeKind kind = ChangeKind::mountAdded;
    ChangeClass severity = ChangeClass::harmless;
    ChangeCause cause = ChangeCause::line;
    std::string before; ///< flags, a type, a fault's message ...; empty where there is none
    std::string after;
    std::vector<StoryPlace> oldPlaces; ///< the causing lines in the old device; may be empty
    std::vector<StoryPlace> newPlaces;
    std::vector<ChangedPath> paths; ///< never empty; by path
    /// A record that only exists, or only has these flags, because of mounts below or above it
    /// which are changes of their own. Counts as harmless.
    bool follows = false;

    std::size_t agentCount() const; ///< distinct agents of all paths
};

struct Difference {
    std::vector<Change> changes; ///< the most dangerous first; then by kind, path and place
    std::size_t agentsBefore = 0;
    std::size_t agentsAfter = 0;
    /// The class of the worst change; nothing if there is no change.
    std::optional<ChangeClass> worst() const;
};

/// Compares two devices. Both parsers must have been told numberedTokensIs(true); they load if need
/// be. What changes only in layout, order, comments or place is no difference.
Difference differenceOf(DatabaseMountFileInfo& before, DatabaseMountFileInfo& after);

} // namespace KeldaDatabase
