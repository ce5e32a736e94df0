// The checks beyond what loading reports. Each looks at what was read and knows nothing of the
// others. A finding stands where the line stands, however many profiles include it.
#pragma once

#include <vector>

#include "database/Device.h"
#include "database/findings/Finding.h"

namespace KeldaDatabase {

/// What all checks find, check by check.
std::vector<Finding> staticFindings(Device const& device);

// The checks, for those who want a single one.

/// Agent names that match one agent although they are written differently.
std::vector<Finding> agentsMatchedTwice(Device const& device);
/// Files of the profile folders that no agent reads. Files that were not opened, because only some
/// profiles were loaded, are not among them.
std::vector<Finding> orphanFiles(Device const& device);
/// Includes with a pattern that no file matches.
std::vector<Finding> includesThatMatchNothing(Device const& device);
/// Alias lines that no line names. Tokens of agent names are needed to match.
std::vector<Finding> unusedAliases(Device const& device);
/// Alias lines that define an alias anew, a token or what every profile has included.
std::vector<Finding> redefinedAliases(Device const& device);
/// Paths that one file mounts twice for one profile and group, and files that a profile includes
/// twice.
std::vector<Finding> pathsMountedTwice(Device const& device);
/// Type columns that name another type than the one that counts. Reads the files again.
std::vector<Finding> differingTypeColumns(Device const& device);
/// Groups with neither a path line nor an include in them.
std::vector<Finding> emptyGroups(Device const& device);
/// Preinit lines that give a path another type than a line before them.
std::vector<Finding> redefinedPreinitTypes(Device const& device);
/// Declared paths that no mount is an instance of. Directories do not count, nor does a device
/// without agents. Says little where only some profiles were loaded.
std::vector<Finding> preinitsNeverMounted(Device const& device);
/// Paths that agents read and none writes, but for directories and configuration; each at its first
/// reader. Says little where only some profiles were loaded.
std::vector<Finding> pathsNeverWritten(Device const& device);
/// Profile files, agent names, groups of one agent, paths and types whose names differ only in
/// case; a directory once, whatever is below it.
std::vector<Finding> namesDifferingInCase(Device const& device);

} // namespace KeldaDatabase
