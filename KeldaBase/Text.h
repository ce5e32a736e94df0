// Small operations on the characters of lines and paths.
#pragma once

#include <cctype>
#include <cstddef>
#include <string_view>

#include <strings.h>

#include <KeldaBase/MountFileInfoTypes.h>

namespace Kelda {

inline bool equalsIgnoringCase(char const* a, char const* b) {
    return strcasecmp(a, b) == 0;
}

inline bool startsWithIgnoringCase(char const* text, std::string_view prefix) {
    return strncasecmp(text, prefix.data(), prefix.size()) == 0;
}

// Letters, digits and "_": the characters of a token behind its "%".
inline bool isTokenChar(char c) {
    return c == '_' || std::isalnum(static_cast<unsigned char>(c)) != 0;
}

// The length of the token that begins with the "%" at the start of `text`, the "%" included.
inline std::size_t tokenLength(char const* text) {
    std::size_t length = 1;
    while (isTokenChar(text[length]))
        ++length;
    return length;
}

// Removes every white-space character, closing the gaps.
inline void removeBlanks(char* text) {
    char* out = text;
    for (char const* in = text; *in != '\0'; ++in) {
        // No visible ASCII character is white space in any locale.
        bool const visible = *in > ' ' && *in <= '~';
        if (visible || std::isspace(static_cast<unsigned char>(*in)) == 0)
            *out++ = *in;
    }
    *out = '\0';
}

// Copies a text into a buffer, cut at the buffer's 1023 characters.
inline void copyText(LineBuffer& buffer, std::string_view text) {
    auto const length = text.copy(buffer.data(), buffer.size() - 1);
    buffer[length] = '\0';
}

} // namespace Kelda
