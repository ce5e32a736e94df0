// Adding agents: the queue of agent strings, and the loading of one agent's profiles and default
// groups.
#include <KeldaBase/AgentMountFileInfo.h>

#include <algorithm>

#include <fmt/format.h>

#include "../Tracing.h"

namespace Kelda {

void AgentMountFileInfo::addAgent(Rook::String agentString, Rook::String overrideAgentString) {
    MFI_TRACE(7, "( agentString : {}, overrideAgentString : {} )", agentString,
              overrideAgentString);
    auto const known = std::ranges::find(agentStrings_, agentString);
    if (known != agentStrings_.end()) {
        auto const index = static_cast<std::size_t>(known - agentStrings_.begin());
        changeOverride(agentString, overrideAgentString, overrideAgentStrings_[index]);
        return;
    }
    agentStrings_.push_back(agentString);
    overrideAgentStrings_.push_back(overrideAgentString);
    MFI_TRACE(2, "added new agentString: {}", agentString);
    if (!isInitialized_)
        return;
    doAddAgent(agentString, overrideAgentString);
    if (!rootFlags_.empty())
        maybeAddPassiveRootFlag();
}

// An agent string was added again, with an override that may differ from the stored one.
void AgentMountFileInfo::changeOverride(Rook::String const& agentString,
                                        Rook::String const& overrideAgentString,
                                        Rook::String& stored) {
    if (stored == overrideAgentString) {
        MFI_TRACE(2, "duplicate agentString and override ");
        return;
    }
    if (isInitialized_) {
        reportAndTrace(
            fmt::format("reloaded agent {} with override {} rather than {} after doInit()",
                        agentString, overrideAgentString, stored));
        return;
    }
    stored = overrideAgentString;
    MFI_TRACE(2, "duplicate agentString replaced override ");
}

void AgentMountFileInfo::doAddAgent(Rook::String agentString, Rook::String overrideAgentString) {
    MFI_TRACE(8, "( agentString : {}, overrideAgentString : {} )", agentString,
              overrideAgentString);
    agentString_ = std::move(agentString);
    overrideAgentString_ = std::move(overrideAgentString);
    tokenizeAgentString();
    if (loadMountProfile_ && loadProfilesOfAgent() > 0) {
        rootFlags_ = addDefaultRootFlags(rootFlags_);
        foundMountProfile_ = true;
        if (!noDefaultMountGroup_) {
            loadDefaultGroup();
            loadDefaultGroupPerAgent();
        }
    } else {
        noteMissingProfile();
    }
    sortMountGroups();
}

// Returns how many profiles the agent has.
int AgentMountFileInfo::loadProfilesOfAgent() {
    int files = searchProfiles(keldaMountProfileDir_);
    MFI_TRACE(2, "loaded {} files", files);
    if (extraProfileDir_.empty())
        return files;
    MFI_TRACE(2, "loading extra profiles from {}", extraProfileDir_);
    files += searchProfiles(extraProfileDir_);
    MFI_TRACE(2, "now loaded total of {} files", files);
    return files;
}

int AgentMountFileInfo::searchProfiles(Rook::String const& directory) {
    auto const search = static_cast<FileLoader>(&AgentMountFileInfo::profileSearcher);
    return mapDir(directory, search, nullptr, &profileFileCheck_);
}

void AgentMountFileInfo::noteMissingProfile() {
    MFI_TRACE(2, "no mount profiles loaded. Setting activeMount to true.");
    agentStringsWithoutProfile_.insert(agentString_);
    activeMountSeen_ = true;
    foundMountProfile_ = false;
}

void AgentMountFileInfo::loadDefaultGroup() {
    loadDefaultGroupFile(defaultGroupName_, agentStringForAliases());
}

void AgentMountFileInfo::loadDefaultGroupPerAgent() {
    auto const fileName = defaultGroupName_ + "PerAgent";
    if (subAgents_.empty()) {
        loadDefaultGroupFile(fileName, agentStringForAliases());
        return;
    }
    // A copy: sub-agents that the file itself names do not join this round.
    auto const subAgents = subAgents_;
    for (auto const& subAgent : subAgents)
        loadDefaultGroupFile(fileName, subAgent);
}

// Loads a default group file, for an agent string that its aliases see, from the extra profile
// directory or, when that has none, from the profile directory.
void AgentMountFileInfo::loadDefaultGroupFile(Rook::String const& fileName,
                                              Rook::String const& agentString) {
    resetFileContext();
    currentMountGroup_ = "default";
    perFileAliasesPushBack("%agentString", agentString);
    auto const load = static_cast<FileLoader>(&AgentMountFileInfo::profileLoader);
    int files = 0;
    if (!extraProfileDir_.empty())
        files = mapDir(extraProfileDir_, load, fileName.c_str(), nullptr);
    if (files == 0)
        mapDir(keldaMountProfileDir_, load, fileName.c_str(), nullptr);
    resetFileContext();
}

Rook::String const& AgentMountFileInfo::agentStringForAliases() const {
    return overrideAgentString_.empty() ? agentString_ : overrideAgentString_;
}

bool AgentMountFileInfo::foundMountProfile(Rook::String const& agentString) {
    doInit();
    return !agentStringsWithoutProfile_.contains(agentString);
}

} // namespace Kelda
