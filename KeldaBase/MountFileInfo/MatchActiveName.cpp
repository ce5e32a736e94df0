// The look-ahead for the keyword "matchActiveName" in a profile that is about to be loaded.
#include <KeldaBase/MountFileInfo.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fmt/format.h>

#include "../Text.h"
#include "PhysicalLine.h"

namespace Kelda {

namespace {

constexpr std::string_view matchActiveNameKeyword = "matchActiveName";

// Whether a line that is still to be read begins with the keyword.
bool saysMatchActiveName(FILE* file) {
    LineBuffer line;
    while (readPhysicalLine(file, line) < ReadResult::end) {
        char const* text = line.data();
        while (std::isspace(static_cast<unsigned char>(*text)) != 0)
            ++text;
        if (startsWithIgnoringCase(text, matchActiveNameKeyword))
            return true;
    }
    return false;
}

} // namespace

bool MountFileInfo::findMatchActiveName(FILE* file, bool hasConsumingToken) const {
    bool const found = looksAheadForMatchActiveName(file);
    if (found && hasConsumingToken)
        reportAndTrace(fmt::format(
            "Profile '{}' contains 'matchActiveName' keyword but the agentName line contains '$' "
            "(consuming token). The 'matchActiveName' keyword is incompatible with consuming "
            "tokens in the agentName line.",
            currentFileName()));
    return found;
}

bool MountFileInfo::looksAheadForMatchActiveName(FILE* file) const {
    auto const position = std::ftell(file);
    if (position < 0) {
        reportAndTrace(fmt::format("Cannot look ahead in file {}: {}", currentFileName(),
                                   std::strerror(errno)));
        return false;
    }
    bool const found = saysMatchActiveName(file);
    // A read error is met again, and reported, when the file is loaded.
    std::clearerr(file);
    if (std::fseek(file, position, SEEK_SET) != 0)
        reportAndTrace(fmt::format("Cannot look ahead in file {}: {}", currentFileName(),
                                   std::strerror(errno)));
    return found;
}

} // namespace Kelda
