#include "report/ReportPage.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <fmt/format.h>

#include "Text.h"

namespace KeldaTool {
namespace {

struct Filling {
    std::string_view place;
    std::string_view text;
};

constexpr std::string_view placeBegin = "{{";

unsigned byteOf(std::string_view digits) {
    unsigned byte = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    return byte;
}

// The character of HTML; empty for one that stands for itself.
std::string_view entityOf(char c) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&#39;";
    default:
        break;
    }
    bool const isControl = (c >= '\0' && c < ' ' && c != '\t' && c != '\n') || c == '\x7f';
    return isControl ? "\ufffd" : std::string_view();
}

// Appends the text that fills the place at the beginning of `rest`, or else its first character,
// and takes off what was dealt with.
template <std::size_t count>
void fillFirst(std::string& page, std::string_view& rest,
               std::array<Filling, count> const& fillings) {
    for (auto const& filling : fillings)
        if (rest.starts_with(filling.place)) {
            page += filling.text;
            rest.remove_prefix(filling.place.size());
            return;
        }
    page += rest.front();
    rest.remove_prefix(1);
}

} // namespace

std::string base64OfHex(std::string_view digits) {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t groupDigits = 6; // three bytes, which four characters stand for
    std::string text;
    for (; !digits.empty(); digits.remove_prefix(std::min(groupDigits, digits.size()))) {
        auto const bytes = std::min(groupDigits, digits.size()) / 2;
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = (group << 8U) | (i < bytes ? byteOf(digits.substr(2 * i, 2)) : 0U);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= bytes ? alphabet[(group >> (18U - 6U * i)) & 0x3fU] : '=';
    }
    return text;
}

std::string htmlText(std::string_view bytes) {
    std::string text;
    for (char const c : replaceNonUtf8(bytes)) {
        auto const entity = entityOf(c);
        if (entity.empty())
            text += c;
        else
            text += entity;
    }
    return text;
}

std::string contentSecurityPolicy(PageAssets const& assets) {
    return fmt::format("default-src 'none'; style-src 'sha256-{}'; script-src 'sha256-{}'; "
                       "img-src data:; base-uri 'none'; form-action 'none'",
                       base64OfHex(assets.styleSha256), base64OfHex(assets.scriptSha256));
}

std::string reportPage(PageAssets const& assets, std::string_view title, std::string_view data) {
    auto const titleText = htmlText(title);
    auto const policy = contentSecurityPolicy(assets);
    std::array const fillings{Filling{"{{title}}", titleText}, Filling{"{{csp}}", policy},
                              Filling{"{{style}}", assets.style},
                              Filling{"{{script}}", assets.script}, Filling{"{{data}}", data}};
    std::string page;
    page.reserve(assets.page.size() + assets.style.size() + assets.script.size() + data.size() +
                 policy.size() + 2 * titleText.size());
    auto rest = assets.page;
    for (auto at = rest.find(placeBegin); at != std::string_view::npos;
         at = rest.find(placeBegin)) {
        page += rest.substr(0, at);
        rest.remove_prefix(at);
        fillFirst(page, rest, fillings);
    }
    page += rest;
    return page;
}

} // namespace KeldaTool
