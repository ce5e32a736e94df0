// The agents of a device, with what each of them has.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "database/Device.h"

namespace KeldaTool {

struct AgentRow {
    std::string name;                  ///< as its first profile has it
    std::vector<std::string> profiles; ///< the files that it loads, as they open, without includes
    std::size_t paths = 0;             ///< that it mounts
    std::size_t written = 0;           ///< of these, with the flag w
    std::size_t groups = 0;
    bool activeMount = false;
    bool hasActiveVariant = false;      ///< its "-Active-" agent strings have a profile, too
    std::vector<std::string> subAgents; ///< as written
    std::size_t faults = 0;             ///< in its files, and in preinit files
};

struct AgentsAnswer {
    std::vector<AgentRow> agents; ///< by name
    // Each once, however many agents have it.
    std::size_t profiles = 0;
    std::size_t paths = 0;
    std::size_t written = 0;
    std::size_t faults = 0;
};

AgentsAnswer askAgents(KeldaDatabase::Device const& device);

/// The answer as a table for people, and as a document.
std::string agentsTable(AgentsAnswer const& answer, bool colour);
std::string agentsDocument(AgentsAnswer const& answer);

} // namespace KeldaTool
