// Small operations on the characters of lines and paths.
#pragma once

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstring>
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
    // The ASCII ones are the same in every locale.
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_')
        return true;
    auto const byte = static_cast<unsigned char>(c);
    return byte > 0x7f && std::isalnum(byte) != 0;
}

// The length of the token that begins with the "%" at the start of `text`, the "%" included.
inline std::size_t tokenLength(char const* text) {
    std::size_t length = 1;
    while (isTokenChar(text[length]))
        ++length;
    return length;
}

inline bool isBlank(char c) {
    // No visible ASCII character is white space in any locale.
    bool const visible = c > ' ' && c <= '~';
    return !visible && std::isspace(static_cast<unsigned char>(c)) != 0;
}

// The length of the run of visible ASCII characters at the start of `text`, taken eight at a time.
inline std::size_t visibleRun(char const* text, std::size_t length) {
    constexpr std::uint64_t ones = 0x0101010101010101;
    constexpr std::uint64_t highBits = ones << 7U;
    std::size_t run = 0;
    for (; run + sizeof(std::uint64_t) <= length; run += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text + run, sizeof word);
        // A byte below 0x21 borrows, which sets its high bit; a byte over 0x7f has it set.
        if ((((word - ones * 0x21) | word) & highBits) != 0)
            break;
    }
    while (run < length && text[run] > ' ')
        ++run;
    return run;
}

// Removes every white-space character, closing the gaps.
inline void removeBlanks(char* text) {
    char const* const end = text + std::strlen(text);
    char* out = text;
    for (char const* in = text; in != end;) {
        auto const run = visibleRun(in, static_cast<std::size_t>(end - in));
        if (out != in)
            std::memmove(out, in, run);
        out += run;
        in += run;
        if (in != end && !isBlank(*in))
            *out++ = *in;
        if (in != end)
            ++in;
    }
    *out = '\0';
}

// Copies a text into a buffer, cut at the buffer's 1023 characters.
inline void copyText(LineBuffer& buffer, std::string_view text) {
    auto const length = text.copy(buffer.data(), buffer.size() - 1);
    buffer[length] = '\0';
}

} // namespace Kelda
