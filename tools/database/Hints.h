// What a writer may have meant.
#pragma once

#include <string>
#include <string_view>

#include "Device.h"
#include "Rules.h"

namespace KeldaDatabase {

/// What may be meant where a fault was found; empty when nothing comes to mind.
std::string hintFor(Device const& device, RuleId rule, Kelda::MfiException const& fault);

/// The keyword of the profile language that a line without blanks nearly begins with; empty when
/// none is near.
std::string_view nearestKeyword(std::string_view line);

} // namespace KeldaDatabase
