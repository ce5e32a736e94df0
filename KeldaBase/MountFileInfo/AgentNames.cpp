// Agent names: the agent-name line of a profile, how it matches an agent string, and the tokens
// that it binds.
#include <KeldaBase/MountFileInfo.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include <KeldaBase/LoadObserver.h>
#include <fmt/format.h>

#include "../Text.h"
#include "../Tracing.h"
#include "PhysicalLine.h"

namespace Kelda {

namespace {

constexpr std::string_view agentNameKeyword = "agentname:";
constexpr std::string_view tokenMark = "-%";

// The parts from `first` on, joined with "-".
Rook::String joinFrom(std::span<Rook::String const> parts, std::size_t first) {
    auto const rest = parts.subspan(std::min(first, parts.size()));
    return fmt::format("{}", fmt::join(rest.begin(), rest.end(), "-"));
}

} // namespace

char* MountFileInfo::getAgentNameFromProfile(FILE* file, LineBuffer& buffer) {
    MFI_TRACE(8, "( file : {} )", currentFileName());
    for (;;) {
        auto const result = readPhysicalLine(file, buffer);
        int const error = errno;
        if (result == ReadResult::end)
            return nullptr;
        nextLine(1);
        if (result == ReadResult::failure) {
            reportReadError(error);
            return nullptr;
        }
        if (buffer[0] == '#' || buffer[0] == '\n' || buffer[0] == '\0')
            continue;
        removeBlanks(buffer.data());
        if (buffer[0] == '\0')
            continue;
        bool const isAgentName = startsWithIgnoringCase(buffer.data(), agentNameKeyword);
        if (isAgentName && result == ReadResult::line)
            return buffer.data() + agentNameKeyword.size();
        if (isAgentName)
            MFI_TRACE(1, "NUL character in the agentName line of '{}'. Skipping.",
                      currentFileName());
        MFI_TRACE(9, "first line not agentName: {}", buffer.data());
        return nullptr;
    }
}

AgentNameMatch MountFileInfo::matchAgentName(Rook::String const& profileAgentName,
                                             Rook::String const& agentString) {
    MFI_TRACE(8, "( agentName : {}, agentString : {} )", profileAgentName, agentString);
    auto const prefixLength = profileAgentName.find(tokenMark);
    if (prefixLength == Rook::String::npos || agentString.find("-") == Rook::String::npos)
        return profileAgentName == agentString
                   ? AgentNameMatch{profileAgentName, AgentNameMatch::exactMatch}
                   : AgentNameMatch{};
    auto const prefix = profileAgentName.view().substr(0, prefixLength);
    auto const agent = agentString.view();
    if (agent.starts_with(prefix) && (agent.size() == prefixLength || agent[prefixLength] == '-'))
        return {prefix, AgentNameMatch::tokenMatch};
    MFI_TRACE(9, "No match: agent string {} doesn't match start of profile agent name {}",
              agentString, profileAgentName);
    return {};
}

std::vector<Rook::String> MountFileInfo::tokenize(Rook::String const& value,
                                                  Rook::String const& delimiterSeq) {
    MFI_TRACE(8, "( value: {}, delimiterSeq : {} )", value, delimiterSeq);
    std::vector<Rook::String> pieces;
    auto const push = [&](Rook::String const& piece) {
        MFI_TRACE(3, "returned token: {}", piece);
        pieces.push_back(piece);
    };
    std::size_t start = 0;
    while (!delimiterSeq.empty()) {
        auto const end = value.find(delimiterSeq, start);
        if (end == Rook::String::npos)
            break;
        push(value.substr(start, end - start));
        start = end + delimiterSeq.size();
    }
    if (start < value.size())
        push(value.substr(start, Rook::String::npos));
    return pieces;
}

void MountFileInfo::tokenizeAgentString() {
    MFI_TRACE(8, "");
    agentStringTokens_ = tokenize(agentString_, "-");
}

void MountFileInfo::tokenizeAgentName(Rook::String const& profileAgentName) {
    MFI_TRACE(8, "( agentName : {} )", profileAgentName);
    auto pieces = tokenize(profileAgentName, tokenMark);
    if (pieces.size() < 2)
        return;
    bool const isConsuming = pieces.back().endsWith("$");
    if (isConsuming)
        pieces.back() = pieces.back().substr(0, pieces.back().size() - 1);

    auto const prefix = pieces.front().view();
    auto const dashes = static_cast<std::size_t>(std::ranges::count(prefix, '-'));
    auto const part = [&](std::size_t index) {
        return index < agentStringTokens_.size() ? agentStringTokens_[index] : Rook::String();
    };
    auto const last = pieces.size() - 1;
    bool const surplus = agentStringTokens_.size() - dashes > pieces.size();
    for (std::size_t k = 1; k <= last; ++k) {
        auto value = part(dashes + k);
        bool const takesRest = surplus && k == last;
        if (!surplus)
            MFI_TRACE(9, "Defining.1");
        else if (!takesRest)
            MFI_TRACE(9, "Defining.2");
        else
            MFI_TRACE(9, "Defining.3");
        if (takesRest && isConsuming)
            value = joinFrom(agentStringTokens_, dashes + last);
        recordAgentNameTokenAlias("%" + pieces[k], value, isConsuming && k == last);
    }
}

void MountFileInfo::recordAgentNameTokenAlias(Rook::String token, Rook::String value,
                                              bool /*isConsuming*/) {
    MFI_TRACE(8, "( token : {}, value : {} )", token, value);
    perFileAliasesPushBack(token, value);
    titleTemplatesPushBack(token);
    if (observer_ != nullptr)
        observer_->tokenBound(token, value, currentFiles_);
}

void MountFileInfo::titleTemplatesPushBack(Rook::String const& key) {
    MFI_TRACE(8, "( key: {} )", key);
    titleTemplates_.push_back(key);
}

std::vector<Rook::String> const& MountFileInfo::getTitleTemplates() const {
    MFI_TRACE(7, "");
    return titleTemplates_;
}

std::vector<Rook::String> MountFileInfo::getAgentStrings() {
    MFI_TRACE(7, "");
    doInit();
    return agentStrings_;
}

} // namespace Kelda
