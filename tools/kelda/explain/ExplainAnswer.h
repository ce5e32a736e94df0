// Everything that explains one path.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "DeviceOptions.h"
#include "database/paths/AgentStory.h"
#include "database/paths/NearMounts.h"
#include "database/paths/PathStory.h"

namespace KeldaTool {

struct ExplainQuestion {
    std::string path;  ///< may hold tokens and "*"
    std::string agent; ///< an agent string; empty for all agents
};

struct ExplainAnswer {
    ExplainQuestion question;
    std::vector<KeldaDatabase::DeclaredPath> declarations;
    std::vector<KeldaDatabase::StoryAgent> agents; ///< with an agent string: one, if it mounts it
    std::vector<KeldaDatabase::NearLine> near;

    // With an agent string.
    bool foundMountProfile = true;
    std::vector<std::string> nearAgents; ///< where the agent has no profile
    /// What the agent meets while it loads; it ends at the first.
    std::vector<KeldaDatabase::StoryFault> faults;

    /// A word on faults in the files; see faultNote.
    std::string note;

    /// Why a folder cannot be read; the rest is empty then.
    std::string unreadable;

    bool isKnown() const { return !declarations.empty() || !agents.empty(); }
};

/// Loads the device and, with an agent string, what that agent loads.
ExplainAnswer askExplain(DeviceOptions const& device, ExplainQuestion const& question);

} // namespace KeldaTool
