// Aliases of a parser, in the words of tests.
#pragma once

#include <string>
#include <string_view>

#include <KeldaBase/MountFileInfo.h>

#include "LenientParser.h"

namespace support {

inline constexpr std::string_view noAlias = "(no such alias)";

// The value of an alias, or noAlias.
inline std::string aliasOf(Kelda::MountFileInfo const& parser, char const* token) {
    auto const value = parser.lookupAlias(token);
    return std::string(value ? value->view() : noAlias);
}

// Hands one line "alias:KEY=EXPRESSION" to its handler.
inline void defineAlias(Kelda::MountFileInfo& parser, std::string_view line) {
    auto buffer = lineOf(line);
    parser.handleAliasLine(buffer);
}

// The path with its aliases replaced.
inline std::string expandedPath(Kelda::MountFileInfo& parser, std::string_view path) {
    auto buffer = lineOf(path);
    parser.expandAliasInPath(buffer.data(), buffer.size());
    return buffer.data();
}

} // namespace support
