// The loads that are measured: everything, and one agent, each by the library and by the plain
// loader. What is returned is ready for queries.
#pragma once

#include <memory>
#include <string>

#include <KeldaBase/AgentMountFileInfo.h>

#include "LenientLoad.h"
#include "PlainLoader.h"

namespace bench {

struct Directories {
    std::string preinit;
    std::string profiles;
};

std::unique_ptr<LenientLoad> loadByLibrary(Directories const& directories);
std::unique_ptr<PlainLoader> loadPlainly(Directories const& directories);

using AgentParser = Kelda::AgentMountFileInfo;
std::unique_ptr<AgentParser> startAgentByLibrary(Directories const& directories,
                                                 std::string const& agentString);
std::unique_ptr<PlainLoader> startAgentPlainly(Directories const& directories,
                                               std::string const& agentString);

} // namespace bench
