// What the plain loader does with single texts.
#pragma once

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

inline char lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

inline std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

inline bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

inline bool beginsIgnoringCase(std::string_view text, std::string_view prefix) {
    return equalsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

inline bool isTokenCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// The end of the token that begins with the "%" at `start`.
inline std::size_t tokenEnd(std::string const& text, std::size_t start) {
    auto end = start + 1;
    while (end < text.size() && isTokenCharacter(text[end]))
        ++end;
    return end;
}

inline std::vector<std::string> split(std::string const& text, std::string const& delimiter) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(delimiter, start)) != std::string::npos;
         start = end + delimiter.size())
        pieces.push_back(text.substr(start, end - start));
    if (start < text.size())
        pieces.push_back(text.substr(start));
    return pieces;
}

inline std::string withCellPaths(std::string path) {
    constexpr std::pair<std::string_view, std::string_view> shorthands[] = {
        {"%cellPath", "cell/%cellId"}, {"%peerCellPath", "cell/%peerCellId"}};
    for (auto const& [from, to] : shorthands)
        for (std::size_t at = 0; (at = path.find('%', at)) != std::string::npos; ++at)
            if (beginsIgnoringCase(std::string_view(path).substr(at), from))
                path.replace(at, from.size(), to);
    return path;
}

inline std::string wildcardOf(std::string const& path) {
    std::string wildcard;
    for (std::size_t i = 0; i < path.size();) {
        wildcard += path[i] == '%' ? '*' : path[i];
        i = path[i] == '%' ? tokenEnd(path, i) : i + 1;
    }
    return wildcard;
}

inline std::string withoutEndingSlash(std::string path) {
    if (!path.empty() && path.back() == '/')
        path.pop_back();
    return path;
}

} // namespace bench
