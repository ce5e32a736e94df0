// What the preinit files declare.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <KeldaBase/AgentMountFileInfoWrap.h>

#include "JsonDocument.h"

namespace KeldaTool {

struct PreinitPath {
    std::string path; ///< with its tokens
    std::string type;
    std::string attribute; ///< empty for none
    bool isConfig = false;
};

struct PreinitAnswer {
    std::vector<PreinitPath> paths;           ///< in byte order
    std::map<std::string, std::string> types; ///< of every wildcard path
};

/// Asks an entity, which loads if need be. Faults leave as Fen::AgentException.
PreinitAnswer askPreinit(Kelda::AgentMountFileInfoWrap& entity);

Json preinitDocument(PreinitAnswer const& answer);

/// The paths, one per line, and a line of totals.
std::string preinitTable(PreinitAnswer const& answer, bool colour);

} // namespace KeldaTool
