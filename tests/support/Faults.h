// The fixed texts around a fault's message: its trace, and the explanations of missing data.
#pragma once

#include <string>
#include <string_view>

#include "FaultLists.h"

namespace support {

// The trace of a fault after which the parser went on, the fault given as text or by its parts.
inline std::string continued(std::string_view fault) {
    return "Encountered exception " + std::string(fault) +
           " during kelda-side parsing. Continuing...";
}
inline std::string continued(std::string_view file, int line, std::string_view message) {
    return continued("\n\t\t\tError in mount profile: " + std::string(file) + "\n\t\t\tline: " +
                     std::to_string(line) + "\n\t\t\tmsg: " + std::string(message));
}

// What a message about missing profile data ends with while Q9PKG is not set. `agents` is the list
// as it is shown: " Fan-1, Led".
inline std::string loadedAgents(std::string_view agents) {
    return "\n\nThis particular error is related to data missing from mount profiles. "
           "MountFileInfo is only loading mount profiles with the following agent names:" +
           std::string(agents) +
           ". If the agent under test is not in the list, especially if 'no title' is present "
           "instead, it is likely that the agent name for your process is not properly set. This "
           "usually happens when you start an agent outside of its AgentContainer. The best way "
           "to fix this is to either use 'Fen.setproctitle' to set the agent name in the test, or "
           "to pass the agent name to the Python EntityManager 'agentName' argument, if "
           "applicable. A less desireable alternative is to directly call "
           "'AgentMountFileInfoWrap::addAgent' through the C++ EntityManager.";
}

// What every message about missing data ends with while Q9PKG is set to `package`.
inline std::string restrictedTo(std::string const& package) {
    return "\n\nThe Q9PKG environment variable is currently set to '" + package +
           "'. This means that MountFileInfo is only loading preinits and mount profiles from this "
           "package and its dependencies. If this error seems bizarre (e.g. missing preinit entry "
           "despite you having added the entry), this is likely because you are assuming " +
           package +
           " has a package dependency it does not. See REF10 for more info on package "
           "dependencies and influencing PkgDeps.";
}

} // namespace support
