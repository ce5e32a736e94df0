// The checks that look at all paths of a device; see StaticChecks.h. The tree is the device's.
#pragma once

#include <vector>

#include "PathTree.h"
#include "database/Device.h"
#include "database/findings/Finding.h"

namespace KeldaDatabase {

std::vector<Finding> redefinedPreinitTypes(Device const& device, PathTree const& tree);
std::vector<Finding> preinitsNeverMounted(Device const& device, PathTree const& tree);
std::vector<Finding> pathsNeverWritten(Device const& device, PathTree const& tree);
std::vector<Finding> namesDifferingInCase(Device const& device, PathTree const& tree);

} // namespace KeldaDatabase
