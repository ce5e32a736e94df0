// The checks beyond what loading reports. Each looks at what was read and knows nothing of the
// others.
#pragma once

#include <vector>

#include "Device.h"
#include "Finding.h"

namespace KeldaDatabase {

/// What all checks find, check by check.
std::vector<Finding> staticFindings(Device const& device);

// The checks, for those who want a single one.
std::vector<Finding> agentsMatchedTwice(Device const& device);
std::vector<Finding> orphanFiles(Device const& device);
std::vector<Finding> includesThatMatchNothing(Device const& device);
std::vector<Finding> unusedAliases(Device const& device);
std::vector<Finding> redefinedAliases(Device const& device);
std::vector<Finding> pathsMountedTwice(Device const& device);
std::vector<Finding> differingTypeColumns(Device const& device);
std::vector<Finding> emptyGroups(Device const& device);
std::vector<Finding> redefinedPreinitTypes(Device const& device);
std::vector<Finding> preinitsNeverMounted(Device const& device);
std::vector<Finding> pathsNeverWritten(Device const& device);
std::vector<Finding> namesDifferingInCase(Device const& device);

} // namespace KeldaDatabase
