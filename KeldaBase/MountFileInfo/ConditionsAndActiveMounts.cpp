// Conditions (a passive-mount feature), the active-mount keywords, sub-agents, and the rule that a
// profile may not have both conditions and activeMount.
#include <KeldaBase/MountFileInfo.h>

#include <Fen/Assert.h>
#include <fmt/format.h>

#include "../Text.h"
#include "../Tracing.h"

namespace Kelda {

namespace {

constexpr std::size_t subAgentKeyword = std::string_view("subAgent:").size();

} // namespace

void MountFileInfo::handleConditionLine(LineBuffer const& bufferWithSpaces) {
    MFI_TRACE(8, "( bufferWithSpaces : {} )", bufferWithSpaces.data());
    verifyNoActiveMountKeywordConflict("Condition");
    recordCondition(bufferWithSpaces, false);
}

void MountFileInfo::handleConditionBlockerLine(LineBuffer const& bufferWithSpaces) {
    MFI_TRACE(8, "( bufferWithSpaces : {} )", bufferWithSpaces.data());
    verifyNoActiveMountKeywordConflict("ConditionBlocker");
    recordCondition(bufferWithSpaces, true);
}

void MountFileInfo::recordCondition(LineBuffer const& bufferWithSpaces, bool blocking) {
    MFI_TRACE(8, "( bufferWithSpaces : {}, blocking : {} )", bufferWithSpaces.data(), blocking);
    conditionSeen_ = true;
    inConditionalGroup_ = true;
}

// The keywords of several agents may meet in one parser; only one agent's can be in conflict.
void MountFileInfo::verifyNoActiveMountKeywordConflict(char const* keyword) const {
    if (agentStrings_.size() > 1 || !activeMountSeen_)
        return;
    reportAndTrace(fmt::format(
        "Found the '{}' keyword, but we've already parsed the 'activeMount' keyword for agent {}, "
        "meaning this condition will be ignored under active mounts. See REF482 for how to convert "
        "conditions to active mounts.",
        keyword, agentKey_));
}

void MountFileInfo::handleActiveMountLine() {
    MFI_TRACE(8, "");
    if (agentStrings_.size() <= 1 && conditionSeen_)
        reportAndTrace(
            "Found the 'activeMount' keyword, but we've already parsed a passive mount-only "
            "keyword (one of 'Condition' or 'ConditionBlocker') which are ignored for active mount "
            "agents. See REF482 for how to convert these keywords to active mounts.");
    activeMountSeen_ = true;
}

void MountFileInfo::handleMatchActiveNameLine() {
    MFI_TRACE(8, "matchActiveName keyword found");
    matchActiveNameSeen_ = true;
}

void MountFileInfo::handleSubAgentLine(LineBuffer const& line) {
    MFI_TRACE(8, "( buffer : \"{}\" )", line.data());
    LineBuffer name;
    copyText(name, line.data() + subAgentKeyword);
    expandAliasInPath(name.data(), name.size());
    subAgents_.emplace_back(name.data());
}

std::vector<Rook::String> MountFileInfo::subAgents() {
    MFI_TRACE(7, "");
    doInit();
    return subAgents_;
}

bool MountFileInfo::foundMountProfile() {
    MFI_TRACE(7, "");
    doInit();
    return foundMountProfile_;
}

bool MountFileInfo::activeMount() {
    MFI_TRACE(7, "");
    doInit();
    return activeMountInternal();
}

bool MountFileInfo::activeMountSeen() const {
    MFI_TRACE(8, "");
    return activeMountSeen_;
}

bool MountFileInfo::matchActiveNameSeen() const {
    MFI_TRACE(8, "");
    return matchActiveNameSeen_;
}

bool MountFileInfo::activeMountInternal() const {
    FEN_ASSERT(allProfilesLoaded_);
    MFI_TRACE(3, "Returning {}", activeMountSeen_);
    return activeMountSeen_;
}

void MountFileInfo::maybeAddPassiveRootFlag() {
    FEN_ASSERT(allProfilesLoaded_);
    bool const active = activeMountInternal();
    MFI_TRACE(2, "{} is a {} mount agent.", agentString_, active ? "active" : "passive");
    if (!active && rootFlags_.find("p") == Rook::String::npos)
        rootFlags_ += "p";
    MFI_TRACE(2, "rootFlags_ is now {}", rootFlags_);
}

} // namespace Kelda
