// Replacement inside the fixed buffer of a path: shorthands by plain text, aliases by value.
#include <KeldaBase/MountFileInfo.h>

#include <algorithm>
#include <cstring>
#include <span>

#include <fmt/format.h>

#include "../Text.h"
#include "../Tracing.h"

namespace Kelda {

namespace {

// Puts `text` in the place of the `removed` characters at `position` of the NUL-terminated string
// in `buffer`. What has no room is cut off; true when nothing was.
bool replaceAt(std::span<char> buffer, std::size_t position, std::size_t removed,
               std::string_view text) {
    auto const room = buffer.size() - 1;
    auto const inserted = std::min(text.size(), room - position);
    char* const place = buffer.data() + position;
    auto const tail = std::strlen(place + removed);
    auto const kept = std::min(tail, room - position - inserted);
    std::memmove(place + inserted, place + removed, kept);
    text.copy(place, inserted);
    place[inserted + kept] = '\0';
    return inserted == text.size() && kept == tail;
}

} // namespace

void MountFileInfo::strcCaseReplace(LineBuffer& buffer, char const* from, char const* to) const {
    auto const fromLength = std::strlen(from);
    std::string_view const replacement(to);
    if (fromLength == 0)
        return;
    auto length = std::strlen(buffer.data());
    char const* search = buffer.data();
    while (char const* const match = strcasestr(search, from)) {
        auto const position = static_cast<std::size_t>(match - buffer.data());
        length = length - fromLength + replacement.size();
        if (length >= buffer.size())
            reportAndTrace(fmt::format("cannot expand path{}", buffer.data()));
        replaceAt(buffer, position, fromLength, replacement);
        length = std::min(length, buffer.size() - 1);
        search = buffer.data() + std::min(position + replacement.size(), length);
    }
}

void MountFileInfo::expandAliasInPath(char* path, std::size_t bufferSize) {
    MFI_TRACE(8, "( path : {} )", path);
    auto const buffer = std::span(path, bufferSize);
    for (char* percent = std::strchr(path, '%'); percent != nullptr;) {
        auto const length = tokenLength(percent);
        Rook::String const token(std::string_view(percent, length));
        MFI_TRACE(9, "Found token {}", token);
        auto const value = evaluateAliasValue(token);
        MFI_TRACE(9, "Found token '{}'with value '{}'", token, value);

        auto const position = static_cast<std::size_t>(percent - path);
        auto const newLength = std::strlen(path) - length + value.size();
        if (newLength >= bufferSize)
            reportAndTrace(
                fmt::format("Path buffer too small to expand alias from '{}'to '{}' in {}", token,
                            value, path));
        // One character too many refuses the expansion; more are cut off.
        if (newLength == bufferSize)
            return;
        replaceAt(buffer, position, length, value);
        percent = std::strchr(path + std::min(position + value.size(), bufferSize - 1), '%');
    }
    MFI_TRACE(9, "after replacement:{}", path);
}

} // namespace Kelda
