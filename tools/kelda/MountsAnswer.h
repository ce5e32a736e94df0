// What the agent-side parser knows about one agent.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <KeldaBase/AgentMountFileInfo.h>

namespace KeldaTool {

struct Mount {
    std::string path;
    std::string type;
    std::string flags;
    bool isExplicit = false;
};

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
    std::vector<Mount> mounts; ///< every record, in path order
    std::vector<std::string> agentPaths;
};

/// Asks a parser to which `agent` was added, loading it if need be. Faults leave as
/// Fen::AgentException.
MountsAnswer askMounts(Kelda::AgentMountFileInfo& parser, std::string const& agent);

} // namespace KeldaTool
