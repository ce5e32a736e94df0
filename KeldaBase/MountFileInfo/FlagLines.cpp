// Flag texts: their validation, and the lines that set the root flags and the connection flags.
#include <KeldaBase/MountFileInfo.h>

#include <fmt/format.h>

#include "../Tracing.h"
#include "FlagVocabulary.h"

namespace Kelda {

namespace {

constexpr std::size_t rootFlagsKeyword = std::string_view("rootFlags:").size();
constexpr std::size_t connectionFlagsKeyword = std::string_view("connectionFlags:").size();

} // namespace

bool MountFileInfo::validFlags(Rook::String const& flags, bool isConnectionFlags) const {
    MFI_TRACE(7, "( flags : {}, isConnectionFlags : {} )", flags, isConnectionFlags);
    bool valid = true;
    for (char const letter : flags.view()) {
        auto const kind = FlagVocabulary::kindOf(letter, isConnectionFlags);
        if (kind == FlagVocabulary::LetterKind::internal)
            MFI_TRACE(1, "Encountered internal mount flag {}", letter);
        if (kind != FlagVocabulary::LetterKind::unknown)
            continue;
        valid = false;
        reportAndTrace(isConnectionFlags
                           ? fmt::format("Encountered invalid connection flag {}", letter)
                           : fmt::format("Encountered unknown mount flag {}", letter));
    }
    switch (FlagVocabulary::breachOf(flags, isConnectionFlags)) {
    case FlagVocabulary::RuleBreach::cWithD:
        reportAndTrace("c and D flags cannot be used simultaneously on mount path");
        return false;
    case FlagVocabulary::RuleBreach::dWithoutC:
        reportAndTrace("d flag must be used with c flag on same mount path");
        return false;
    case FlagVocabulary::RuleBreach::none:
        break;
    }
    return valid;
}

void MountFileInfo::handleRootFlagsLine(LineBuffer const& line) {
    MFI_TRACE(8, "( buffer : \"{}\" )", line.data());
    Rook::String const flags(line.data() + rootFlagsKeyword);
    if (validFlags(flags, false))
        rootFlags_ = flags;
    else
        reportAndTrace("Invalid root flags " + flags);
}

void MountFileInfo::handleConnectionFlagsLine(LineBuffer const& line) {
    MFI_TRACE(8, "( buffer : \"{}\" )", line.data());
    Rook::String const flags(line.data() + connectionFlagsKeyword);
    if (validFlags(flags, true))
        connectionFlags_ = flags;
    else
        reportAndTrace("Invalid connection flags " + flags);
}

Rook::String MountFileInfo::addDefaultRootFlags(Rook::String const& inputFlags) {
    MFI_TRACE(8, "( inputFlags : {} )", inputFlags);
    Rook::String flags = inputFlags;
    if (flags.empty())
        flags = "rt";
    else if (flags.find("t") == Rook::String::npos)
        flags += "t";
    MFI_TRACE(3, "Returning {}", flags);
    return flags;
}

Rook::String MountFileInfo::rootFlags() {
    MFI_TRACE(7, "");
    if (!isInitialized_)
        doInit();
    MFI_TRACE(3, "Returning {}", rootFlags_);
    return rootFlags_;
}

Rook::String MountFileInfo::connectionFlags() {
    MFI_TRACE(7, "");
    if (!isInitialized_)
        doInit();
    return connectionFlags_;
}

} // namespace Kelda
