// What makes the agent side strict: every fault is thrown, an undefined alias is a fault, and only
// two things excuse a path without a type.
#include <KeldaBase/AgentMountFileInfo.h>

#include <string>

#include <Fen/Assert.h>
#include <Fen/Exception.h>

#include "../Tracing.h"

namespace Kelda {

void AgentMountFileInfo::maybeThrow(Rook::String const& message) const {
    MountFileInfo::maybeThrow(message);
    FEN_ASSERT(!exceptions_.empty());
    throw Fen::AgentException(std::string(mfiExceptionToString(exceptions_.back()).view()));
}

Rook::String AgentMountFileInfo::evaluateAliasValue(Rook::String const& token) {
    MFI_TRACE(8, "( token : {} )", token);
    if (token.find("%") == Rook::String::npos)
        return token;
    if (auto const value = lookupAlias(token))
        return *value;
    reportAndTrace("No such alias defined: '" + token + "'");
    return {};
}

std::optional<Rook::String> AgentMountFileInfo::excuseMissingType(std::ostringstream& message,
                                                                  char const* type) const {
    if (inConditionalGroup_)
        message << " Allowed since conditional mountgroup.";
    else if (!defaultPreinitsLoaded_)
        message << " Allowed since default preinits are overriden.";
    else
        return std::nullopt;
    return Rook::String(type);
}

void AgentMountFileInfo::tokenizeAgentString() {
    MountFileInfo::tokenizeAgentString();
    if (agentString_.endsWith("-") && !agentStringTokens_.empty())
        agentStringTokens_.back() += "-";
}

} // namespace Kelda
