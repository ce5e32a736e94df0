// What kelda diff has to print, whatever the format.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "database/diff/Difference.h"
#include "devices/DeviceTree.h"

namespace KeldaTool {

/// How many changes there are of each class, by ChangeClass.
using ClassCounts = std::array<std::size_t, 4>;

struct DiffResult {
    std::string device; ///< its name, where several are compared; any bytes
    DeviceFolders before;
    DeviceFolders after;
    KeldaDatabase::Difference difference; ///< the changes that are told
    std::size_t following = 0;            ///< changes left out, as they follow from others
    std::size_t lesser = 0;               ///< changes left out, as they are of a lesser class

    ClassCounts counts() const;
    /// Distinct agents of all changes.
    std::size_t agentCount() const;
};

/// The worst class first.
inline constexpr std::array changeClasses{
    KeldaDatabase::ChangeClass::dangerous, KeldaDatabase::ChangeClass::risky,
    KeldaDatabase::ChangeClass::notable, KeldaDatabase::ChangeClass::harmless};

/// The distinct agents of all paths, sorted.
std::vector<std::string> agentsOf(KeldaDatabase::Change const& change);

/// "1 dangerous, 2 risky"; classes of which there is none are not named.
std::string classesText(ClassCounts const& counts);

/// "3 changes (1 dangerous, 2 risky) for 2 of 19 agents"; without changes what there is instead.
std::string totalsText(DiffResult const& result);

/// What is left out of the changes, each a text of its own; none for nothing.
std::vector<std::string> leftOutTexts(DiffResult const& result);

/// Leaves out, and counts, changes of a lesser class and, unless they are wanted, those that follow
/// from others. What is both counts as lesser.
void leaveOut(DiffResult& result, KeldaDatabase::ChangeClass least, bool withFollowing);

} // namespace KeldaTool
