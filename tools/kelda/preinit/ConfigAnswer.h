// Which config paths the preinit files declare.
#pragma once

#include <string>
#include <vector>

#include <KeldaBase/AgentMountFileInfoWrap.h>

#include "JsonDocument.h"

namespace KeldaTool {

struct ConfigPath {
    std::string path;
    std::string type;
};

/// The config paths in byte order. Asks an entity, which loads if need be; faults leave as
/// Fen::AgentException.
std::vector<ConfigPath> askConfig(Kelda::AgentMountFileInfoWrap& entity);

Json configDocument(std::vector<ConfigPath> const& paths);

/// The paths, one per line, and a line of totals.
std::string configTable(std::vector<ConfigPath> const& paths, bool colour);

} // namespace KeldaTool
