// The agent-side parser's construction, its lazy initialisation, and what an un-initialisation
// leaves.
#include <KeldaBase/AgentMountFileInfo.h>

#include <Fen/Assert.h>

#include "../Tracing.h"

namespace Kelda {

AgentMountFileInfo::AgentMountFileInfo(bool dontMergeFlags, Rook::String preinitDir,
                                       Rook::String keldaMountProfileDir, bool loadMountProfile,
                                       Rook::String defaultGroupName)
    : MountFileInfo(dontMergeFlags, std::move(preinitDir), std::move(keldaMountProfileDir),
                    std::move(defaultGroupName)),
      loadMountProfile_(loadMountProfile) {
    MFI_TRACE(7, "( loadMountProfile : {} )", loadMountProfile);
}

AgentMountFileInfo::~AgentMountFileInfo() {
    AgentMountFileInfo::unDoInit();
    MountFileInfo::clearProfileData();
}

void AgentMountFileInfo::doInit() {
    MFI_TRACE(7, "");
    if (isInitialized_)
        return;
    if (loadUnderWay_)
        forgetInterruptedLoad();
    loadUnderWay_ = true;
    allProfilesLoaded_ = false;
    // Every initialisation binds the tokens of its profiles anew.
    titleTemplates_.clear();
    MFI_TRACE(2, "Initializing MFI and setting isInitialized_ to true");
    doLoadPreinits();
    for (std::size_t i = 0; i < agentStrings_.size(); ++i)
        doAddAgent(agentStrings_[i], overrideAgentStrings_[i]);
    allProfilesLoaded_ = true;
    handleDoInit();
    loadUnderWay_ = false;
}

// Starts afresh after a load that a fault ended. Mounts recorded before the first initialisation
// went with the rest and are recorded again; handleDoInit sees to those of later ones.
void AgentMountFileInfo::forgetInterruptedLoad() {
    releaseLoadedData();
    UnorderedStringSet().swap(agentStringsWithoutProfile_);
    resetFileContext();
    if (doInitCount_ == 0)
        replaySavedRMAs();
}

void AgentMountFileInfo::handleDoInit() {
    MFI_TRACE(8, "");
    if (!rootFlags_.empty())
        maybeAddPassiveRootFlag();
    if (activeMountInternal())
        inheritParentFlags();
    if (doInitCount_ != 0)
        replaySavedRMAs();
    MountFileInfo::handleDoInit();
}

void AgentMountFileInfo::unDoInit() {
    MFI_TRACE(7, "");
    if (unDoInitDisabled_)
        return;
    MountFileInfo::unDoInit();
    UnorderedStringSet().swap(agentStringsWithoutProfile_);
}

void AgentMountFileInfo::disableUnDoInit() {
    MFI_TRACE(7, "");
    unDoInitDisabled_ = true;
}

void AgentMountFileInfo::clearProfileData() {
    MountFileInfo::clearProfileData();
    UnorderedStringSet().swap(agentStringsWithoutProfile_);
}

void AgentMountFileInfo::setRootFlags(Rook::String const& flags) {
    MFI_TRACE(7, "( flags : {} )", flags);
    doInit();
    FEN_ASSERT(rootFlags_ == "");
    FEN_ASSERT(!foundMountProfile_);
    FEN_ASSERT(activeMountInternal());
    rootFlags_ = addDefaultRootFlags(flags);
}

} // namespace Kelda
