// Differences of two devices, made up for tests of what is printed of them.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <rapidcheck.h>

#include "CheckResults.h"
#include "diff/DiffResult.h"

namespace toolunits {

using KeldaDatabase::Change;
using KeldaDatabase::ChangeCause;
using KeldaDatabase::ChangeClass;
using KeldaDatabase::ChangeKind;
using KeldaDatabase::StoryPlace;
using KeldaTool::DiffResult;

// A change of one path for one agent, without lines.
inline Change change(ChangeKind kind, ChangeClass severity, std::string before, std::string after) {
    Change made;
    made.kind = kind;
    made.severity = severity;
    made.before = std::move(before);
    made.after = std::move(after);
    made.paths = {{"sys/log", {"Led"}, "Sys::Log"}};
    return made;
}

// The change of flags that a line of a shared file brings about.
inline Change sharedChange() {
    auto made = change(ChangeKind::flagsWidened, ChangeClass::risky, "r", "rw");
    made.paths = {{"cell/1/health", {"Routing-%table", "Routing-Active-*"}, "Cell::Health"}};
    made.oldPlaces = {{"old/profiles/shared.cell",
                       2,
                       {{"old/profiles/Routing", 22}},
                       "%cellPath/health, Cell::Health, r"}};
    made.newPlaces = {{"new/profiles/shared.cell",
                       12,
                       {{"new/profiles/Routing", 22}, {"new/profiles/Outer", 1}},
                       "%cellPath/health, Cell::Health, rw"}};
    return made;
}

inline DiffResult diffOf(std::vector<Change> changes) {
    DiffResult result;
    result.before = {"old/preinit", "old/profiles"};
    result.after = {"new/preinit", "new/profiles"};
    result.difference.changes = std::move(changes);
    result.difference.agentsBefore = 19;
    result.difference.agentsAfter = 19;
    return result;
}

// One change of each class, the worst first, and something left out.
inline DiffResult sampleDiff() {
    auto removed = change(ChangeKind::mountRemoved, ChangeClass::dangerous, "r", "");
    removed.oldPlaces = {{"old/profiles/Led", 3, {}, "sys/log, Sys::Log, r"}};
    auto added = change(ChangeKind::agentAdded, ChangeClass::notable, "", "");
    added.cause = ChangeCause::file;
    added.paths = {{"", {"Fan-%slot"}, ""}};
    added.newPlaces = {{"new/profiles/Fan", 1, {}, "agentName: Fan-%slot"}};
    added.mounts = {{"Fan-%slot", "fan/%slot/speed", "Fan::Speed", "rw"},
                    {"Fan-%slot", "sys/clock", "Sys::Clock", "r"}};
    auto declared = change(ChangeKind::preinitAdded, ChangeClass::harmless, "", "Sys::Spare");
    declared.paths = {{"sys/spare", {}, ""}};
    declared.newPlaces = {{"new/preinit/System", 9, {}, "sys/spare, Sys::Spare"}};
    auto result = diffOf({removed, sharedChange(), added, declared});
    result.following = 1;
    result.lesser = 2;
    return result;
}

inline StoryPlace anyStoryPlace() {
    return {*hostileText(), anyNumber(), {{*hostileText(), anyNumber()}}, *hostileText()};
}

inline Change anyChange() {
    auto made =
        change(static_cast<ChangeKind>(
                   *rc::gen::inRange(0, static_cast<int>(ChangeKind::preinitConfigChanged) + 1)),
               static_cast<ChangeClass>(*rc::gen::inRange(0, 4)), *hostileText(), *hostileText());
    made.cause =
        static_cast<ChangeCause>(*rc::gen::inRange(0, static_cast<int>(ChangeCause::preinit) + 1));
    made.follows = *rc::gen::arbitrary<bool>();
    made.paths.clear();
    for (int i = *rc::gen::inRange(1, 9); i > 0; --i)
        made.paths.push_back({*hostileText(),
                              *rc::gen::container<std::vector<std::string>>(hostileText()),
                              *hostileText()});
    for (int i = *rc::gen::inRange(0, 6); i > 0; --i) {
        made.oldPlaces.push_back(anyStoryPlace());
        made.newPlaces.push_back(anyStoryPlace());
        made.mounts.push_back({*hostileText(), *hostileText(), *hostileText(), *hostileText()});
    }
    return made;
}

// To be called in a property: anything in every field.
inline DiffResult anyDiff() {
    std::vector<Change> changes;
    for (int i = *rc::gen::inRange(0, 4); i > 0; --i)
        changes.push_back(anyChange());
    auto result = diffOf(std::move(changes));
    result.device = *hostileText();
    result.before = {*hostileText(), *hostileText()};
    return result;
}

} // namespace toolunits
