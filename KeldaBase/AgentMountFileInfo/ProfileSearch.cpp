// Which profiles belong to an agent: its agent-name line must match the agent string, and an
// "-Active-" variant of an agent takes only profiles that say so.
#include <KeldaBase/AgentMountFileInfo.h>

#include <cstring>

#include "../Tracing.h"

namespace Kelda {

namespace {

constexpr std::string_view activeInfix = "-Active-";

} // namespace

int AgentMountFileInfo::profileSearcher(FILE* file) {
    MFI_TRACE(8, "( file : {} ) ", currentFileName());
    LineBuffer buffer;
    char const* const agentName = getAgentNameFromProfile(file, buffer);
    if (agentName == nullptr)
        return 0;
    auto const matchName = nameToMatch();
    auto match = matchAgentName(agentName, matchName);
    if (match.kind == AgentNameMatch::noMatch)
        return 0;
    agentKey_ = std::move(match.name);
    if (match.kind == AgentNameMatch::tokenMatch)
        tokenizeAgentName(agentName);
    if (passesOverActiveAgent(file, agentName)) {
        StringMap().swap(perFileAliases_);
        return 0;
    }
    perFileAliasesPushBack("%agentString", agentStringForAliases());
    currentMountGroup_ = Rook::String();
    inConditionalGroup_ = false;
    return profileLoader(file);
}

// The agent string, in which the infix of an "-Active-" variant counts as one "-".
Rook::String AgentMountFileInfo::nameToMatch() {
    auto const position = agentString_.find(activeInfix);
    if (position == Rook::String::npos)
        return agentString_;
    auto const dash = position + activeInfix.size() - 1;
    auto stripped =
        agentString_.substr(0, position) + agentString_.substr(dash, Rook::String::npos);
    MFI_TRACE(5, "Agent '{}' is -Active- variant, matching with stripped: {}", agentString_,
              stripped);
    agentStringTokens_ = tokenize(stripped, "-");
    return stripped;
}

// Whether a matching profile is not for this agent after all. Looks ahead in the file only where
// the keyword makes a difference.
bool AgentMountFileInfo::passesOverActiveAgent(FILE* file, char const* agentName) {
    bool const isActiveVariant = agentString_.find(activeInfix) != Rook::String::npos;
    bool const hasConsumingToken = std::strchr(agentName, '$') != nullptr;
    if (!isActiveVariant && !hasConsumingToken)
        return false;
    bool const saysSo = findMatchActiveName(file, hasConsumingToken);
    if (saysSo || !isActiveVariant)
        return false;
    MFI_TRACE(1,
              "-Active- agent '{}' matched profile '{}' but profile is missing 'matchActiveName' "
              "keyword. Skipping.",
              agentString_, agentName);
    return true;
}

} // namespace Kelda
