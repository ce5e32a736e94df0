// All operations walk the bytes character by character. What is ill-formed, and how long an
// ill-formed sequence is, follows the Unicode standard's table of well-formed byte sequences: a
// sequence is cut off at the first byte that cannot continue it.
#include "Text.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cwchar>

#include <fmt/format.h>
#include <locale.h>

namespace KeldaTool {
namespace {

struct Character {
    char32_t code = 0;
    std::size_t length = 1; // in bytes
    bool isWellFormed = false;
};

// The bytes that may begin a sequence, with the bytes that may come second.
struct Lead {
    unsigned char first, last;             // lead bytes
    std::size_t length;                    // of the whole sequence
    unsigned char secondFirst, secondLast; // leave out long forms, surrogates and what is too large
};
constexpr std::array leads = {
    Lead{0xc2, 0xdf, 2, 0x80, 0xbf}, Lead{0xe0, 0xe0, 3, 0xa0, 0xbf},
    Lead{0xe1, 0xec, 3, 0x80, 0xbf}, Lead{0xed, 0xed, 3, 0x80, 0x9f},
    Lead{0xee, 0xef, 3, 0x80, 0xbf}, Lead{0xf0, 0xf0, 4, 0x90, 0xbf},
    Lead{0xf1, 0xf3, 4, 0x80, 0xbf}, Lead{0xf4, 0xf4, 4, 0x80, 0x8f},
};

unsigned char byteAt(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

bool continues(std::string_view bytes, std::size_t at, Lead const& lead) {
    if (at >= bytes.size())
        return false;
    auto const byte = byteAt(bytes, at);
    return at == 1 ? byte >= lead.secondFirst && byte <= lead.secondLast : (byte & 0xc0U) == 0x80U;
}

Character longCharacter(std::string_view bytes, Lead const& lead) {
    Character character{byteAt(bytes, 0) & (0x7fU >> lead.length), 1, false};
    for (; character.length < lead.length; ++character.length) {
        if (!continues(bytes, character.length, lead))
            return character;
        character.code = (character.code << 6U) | (byteAt(bytes, character.length) & 0x3fU);
    }
    character.isWellFormed = true;
    return character;
}

// The first character of a text that is not empty.
Character firstCharacter(std::string_view bytes) {
    auto const first = byteAt(bytes, 0);
    if (first < 0x80)
        return {first, 1, true};
    for (auto const& lead : leads)
        if (first >= lead.first && first <= lead.last)
            return longCharacter(bytes, lead);
    return {};
}

// Calls visit(character, its bytes) for each character.
template <class Visit>
void forEachCharacter(std::string_view bytes, Visit const& visit) {
    while (!bytes.empty()) {
        auto const character = firstCharacter(bytes);
        visit(character, bytes.substr(0, character.length));
        bytes.remove_prefix(character.length);
    }
}

bool isControl(char32_t code) {
    return code < 0x20 || (code >= 0x7f && code < 0xa0);
}

// Characters without a picture of their own: they turn or hide the text beside them.
bool isTrickster(char32_t code) {
    struct Range {
        char32_t first, last;
    };
    constexpr std::array ranges = {
        Range{0x61c, 0x61c},   Range{0x200b, 0x200f}, Range{0x2028, 0x202e},
        Range{0x2060, 0x206f}, Range{0xfeff, 0xfeff}, Range{0xe0000, 0xe007f},
    };
    return std::any_of(ranges.begin(), ranges.end(), [code](Range const& range) {
        return code >= range.first && code <= range.last;
    });
}

std::string escapedBytes(std::string_view bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        text += fmt::format("\\x{:02x}", byteAt(bytes, i));
    return text;
}

// Switches this thread to a locale that knows UTF-8, whatever the user's is; the library, which
// classifies single bytes, must not see it.
class Utf8Scope {
  public:
    Utf8Scope() : before_(uselocale(utf8())) {}
    ~Utf8Scope() { uselocale(before_); }
    Utf8Scope(Utf8Scope const&) = delete;
    Utf8Scope& operator=(Utf8Scope const&) = delete;

  private:
    static locale_t utf8() {
        static locale_t const locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale; // null, where the system has none, changes nothing
    }
    locale_t before_;
};

std::size_t columns(char32_t code) {
    int const width = wcwidth(static_cast<wchar_t>(code));
    return width < 0 ? 1 : static_cast<std::size_t>(width);
}

} // namespace

std::string textOf(Rook::String const& text) {
    return std::string(text.view());
}

std::string replaceNonUtf8(std::string_view bytes) {
    std::string text;
    forEachCharacter(bytes, [&text](Character const& character, std::string_view own) {
        text += character.isWellFormed ? own : "\xef\xbf\xbd";
    });
    return text;
}

std::string printable(std::string_view bytes) {
    std::string text;
    forEachCharacter(bytes, [&text](Character const& character, std::string_view own) {
        if (!character.isWellFormed || character.code < 0x80)
            text += !character.isWellFormed || isControl(character.code) ? escapedBytes(own) : own;
        else if (isControl(character.code) || isTrickster(character.code))
            text += fmt::format("\\u{{{:x}}}", static_cast<std::uint32_t>(character.code));
        else
            text += own;
    });
    return text;
}

std::size_t displayWidth(std::string_view text) {
    Utf8Scope const scope;
    std::size_t width = 0;
    forEachCharacter(text, [&width](Character const& character, std::string_view) {
        width += columns(character.code);
    });
    return width;
}

std::string counted(std::size_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

} // namespace KeldaTool
