// Mounts as the published entity tells them. Faults leave as Fen::AgentException.
#pragma once

#include <string>
#include <vector>

#include <KeldaBase/AgentMountFileInfoWrap.h>

#include "mounts/Mount.h"
#include "mounts/MountsSelection.h"

namespace KeldaTool {

/// The mounts that an agent gets from its profiles, in path order.
std::vector<Mount> mountsOfAgent(Kelda::AgentMountFileInfoWrap& entity, std::string const& agent);

/// The mounts that are asked for, in path order; a fault when there is nothing of that name. When
/// nothing is named, every record of the parser, the intermediate ones included.
std::vector<Mount> selectedMounts(Kelda::AgentMountFileInfoWrap& entity,
                                  MountsSelection const& selection);

} // namespace KeldaTool
