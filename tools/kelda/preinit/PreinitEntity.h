// The published entity of a call that asks about preinit files only.
#pragma once

#include <string>

#include <KeldaBase/AgentMountFileInfoWrap.h>

namespace KeldaTool {

/// Reads no profile, so that it does not matter which agent it is for.
inline Rook::Ptr<Kelda::AgentMountFileInfoWrap> preinitEntity(std::string const& preinitDir) {
    return Kelda::agentMountFileInfoWrapFactory(false, "", "", preinitDir, "", false);
}

} // namespace KeldaTool
