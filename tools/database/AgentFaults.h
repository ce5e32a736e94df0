// The faults that come about where an agent loads several profiles, and the faults of one agent.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "Device.h"

namespace KeldaDatabase {

/// Whether a message that was recorded while all profiles were read by one parser is one of those
/// that hang on what was read before: only the profiles of one agent, read together, tell whether
/// there is such a fault.
bool hangsOnFormerLines(std::string_view message);

/// What the agents of a device meet of such faults. The decisive lines of each agent are handled
/// again, in their order, by a parser that sees nothing else. `records`: those that reading all
/// profiles left.
std::vector<Fault> faultsTogether(Device const& device, Kelda::MountArgsMap const& records);

/// The faults that loading an agent meets, in that order: indexes to Device::faults. An agent's own
/// parser throws the first one.
std::vector<std::size_t> faultsOf(Device const& device, std::size_t agent);

} // namespace KeldaDatabase
