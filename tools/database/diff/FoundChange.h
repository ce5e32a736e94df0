// One change of one path of one agent, before equal ones are put together.
#pragma once

#include <string>
#include <vector>

#include "Causes.h"
#include "Difference.h"

namespace KeldaDatabase {

struct FoundChange {
    ChangeKind kind = ChangeKind::mountAdded;
    ChangeClass severity = ChangeClass::harmless;
    bool follows = false;
    Cause cause;
    std::string before;
    std::string after;
    std::string path;
    std::string agent; ///< of preinit paths there is none
    std::string type;
    std::vector<ChangedMount> mounts;
};

/// Puts together what has the same values and causes, and sorts it as Difference tells.
std::vector<Change> grouped(std::vector<FoundChange> found, DeviceSide& before, DeviceSide& after);

} // namespace KeldaDatabase
