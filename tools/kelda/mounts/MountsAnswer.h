// What the published entity and its agent-side parser know about one agent.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <KeldaBase/AgentMountFileInfoWrap.h>

#include "mounts/Mount.h"
#include "mounts/MountsSelection.h"

namespace KeldaTool {

struct MountsAnswer {
    using Lists = std::map<std::string, std::vector<std::string>>;

    std::string agent;
    bool foundMountProfile = false;
    bool activeMount = false;
    bool noDefaultMountGroup = false;
    std::string rootFlags;
    std::string connectionFlags;
    std::vector<std::string> subAgents;
    Lists files;               ///< profile files with their paths, sorted
    Lists groups;              ///< keys of mount groups with their paths, sorted
    std::string selected;      ///< the name of the selection; of a path, as the mount has it
    std::vector<Mount> mounts; ///< every record, or those asked for, in path order
    std::vector<std::string> agentPaths;
};

/// Asks the entity of `agent`, which loads if need be. Faults leave as Fen::AgentException.
MountsAnswer askMounts(Kelda::AgentMountFileInfoWrap& entity, std::string const& agent,
                       MountsSelection const& selection);

} // namespace KeldaTool
