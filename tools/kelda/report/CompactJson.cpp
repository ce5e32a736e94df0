#include "report/CompactJson.h"

#include <algorithm>

#include <fmt/format.h>

#include "Text.h"

namespace KeldaTool {
namespace {

// What a browser could take for the end of an element or of a line, or JSON does not allow.
bool isEscaped(char c) {
    return (c >= '\0' && c < ' ') || c == '"' || c == '\\' || c == '<' || c == '>' || c == '&';
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '\0'; });
}

// The line end of Unicode at the front of a text, as it is to be written; empty for none.
std::string_view lineEndOf(std::string_view text) {
    return text.starts_with("\u2028") ? "\\u2028" : text.starts_with("\u2029") ? "\\u2029" : "";
}

} // namespace

void CompactJson::nextItem() {
    if (isBehindItem_)
        text_ += ',';
    isBehindItem_ = true;
}

void CompactJson::begin(char bracket) {
    nextItem();
    text_ += bracket;
    isBehindItem_ = false;
}

void CompactJson::end(char bracket) {
    text_ += bracket;
    isBehindItem_ = true;
}

void CompactJson::key(std::string_view name) {
    nextItem();
    text_ += '"';
    text_ += name;
    text_ += "\":";
    isBehindItem_ = false;
}

void CompactJson::number(std::int64_t number) {
    nextItem();
    text_ += fmt::format_int(number).c_str();
}

void CompactJson::boolean(bool value) {
    written(value ? "true" : "false");
}

void CompactJson::written(std::string_view value) {
    nextItem();
    text_ += value;
}

void CompactJson::character(char c) {
    if (c == '"' || c == '\\')
        (text_ += '\\') += c;
    else if (isEscaped(c))
        fmt::format_to(std::back_inserter(text_), "\\u{:04x}", static_cast<unsigned char>(c));
    else
        text_ += c;
}

void CompactJson::text(std::string_view bytes) {
    nextItem();
    text_ += '"';
    if (isAscii(bytes)) {
        for (char const c : bytes)
            character(c);
    } else {
        auto const replaced = replaceNonUtf8(bytes);
        for (std::string_view rest = replaced; !rest.empty();) {
            auto const lineEnd = lineEndOf(rest);
            if (lineEnd.empty())
                character(rest.front());
            text_ += lineEnd;
            rest.remove_prefix(lineEnd.empty() ? 1 : std::string_view("\u2028").size());
        }
    }
    text_ += '"';
}

} // namespace KeldaTool
