// The operations that only one flavour offers: here each says which one and why.
#include <KeldaBase/MountFileInfo.h>

#include <Fen/Exception.h>

namespace Kelda {

namespace {

[[noreturn]] void notImplemented(char const* message) {
    throw Fen::NoImplementationException(message);
}

} // namespace

void MountFileInfo::addAgent(Rook::String /*agentString*/, Rook::String /*overrideAgentString*/) {
    notImplemented("Not Implemented: Per-Agent loading is supported for Agent-side parsing but not "
                   "for Kelda-side");
}

void MountFileInfo::addProfile(Rook::String const& /*name*/) {
    notImplemented("Not Implemented: Individual file loading is supported for Kelda-side parsing "
                   "but not for Agent-side.");
}

Rook::String MountFileInfo::agentName() {
    notImplemented("Not Implemented: This only makes sense when mfi holds a single agent, which is "
                   "not a reasonable assumption in general for Agent-side parsing.");
}

void MountFileInfo::disableUnDoInit() {
    notImplemented("Not Implemented: Disabling unDoInit is a feature for Agent-side parsing only "
                   "(and even then only for use in ConfigAgent, Tidewell, and standby Kelda)");
}

void MountFileInfo::setRootFlags(Rook::String const& /*flags*/) {
    notImplemented("Not Implemented: Manually setting root flags is only supported for Agent-side "
                   "parsing, and even then only if no profiles are loaded (this is only used in "
                   "EntityManager at the moment). This is not supported for Kelda-side parsing");
}

void MountFileInfo::setExclusionRegex(std::regex const& /*expression*/) {
    notImplemented("Not Implemented: Exclusion regex is only supported for Kelda-side parsing.");
}

void MountFileInfo::setForceNoDefaultMountGroup() {
    notImplemented("Not Implemented: Only on Kelda-side do we need this option. It exists so we "
                   "know to skip writing all default mounts to Kelda, independent of whether we "
                   "have 'noDefaultMountGroup' in a profile This behavior can be replicated with "
                   "the \"noDefaultMountGroup\" keyword in mount profiles.");
}

void MountFileInfo::setWaitForActiveReady() {
    notImplemented("Not Implemented: Only on Kelda-side do we need this option. It exists so we "
                   "know to add additional default mounts for sso standby agents");
}

void MountFileInfo::staticCheckIs(bool /*on*/) {
    notImplemented("Not Implemented: We only use the Kelda-side version of MountFileInfo to "
                   "perform static checks.");
}

bool MountFileInfo::foundMountProfile(Rook::String const& /*agentString*/) {
    notImplemented("Per-agent profile loading is only supported for Agent-side parsing.");
}

int MountFileInfo::profileSearcher(FILE* /*file*/) {
    notImplemented("Not Implemented: Per-Agent loading is supported for Agent-side parsing but not "
                   "for Kelda-side.");
}

} // namespace Kelda
