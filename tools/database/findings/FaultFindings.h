// From the faults of loading to findings: each once, at the line that has to be changed, with what
// it is in conflict with.
#pragma once

#include <vector>

#include "Finding.h"
#include "database/Device.h"

namespace KeldaDatabase {

/// The findings of a device's faults, in the order in which loading met them. Left out are faults
/// that follow from another one: of the same line, or of the preinit line that was to declare a
/// path.
std::vector<Finding> faultFindings(Device const& device);

} // namespace KeldaDatabase
