// Which agents there are, and which profiles each of them loads.
#pragma once

#include <vector>

#include "Device.h"

namespace KeldaDatabase {

/// The agents that the agent-name lines of a device tell of; default groups belong to each that
/// does not refuse them. See Device::agents.
std::vector<Agent> agentsOf(Device const& device);

/// Whether an agent is among those of this name or agent string, "FanTray-%slot" or "FanTray-2".
bool answersTo(Agent const& agent, Rook::String const& name);

} // namespace KeldaDatabase
