#include <Fen/Attribute.h>

#include <charconv>

namespace Fen {

namespace {

void take(std::string_view& text, std::string_view expected) {
    if (!text.starts_with(expected))
        throw AttributeFormatException("no \"" + std::string(expected) + "\" in front of \"" +
                                       std::string(text) + "\"");
    text.remove_prefix(expected.size());
}

Rook::String takeString(std::string_view& text) {
    std::size_t length = 0;
    auto const read = std::from_chars(text.data(), text.data() + text.size(), length);
    if (read.ec != std::errc())
        throw AttributeFormatException("no length in front of \"" + std::string(text) + "\"");
    text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
    take(text, ":");
    if (length > text.size())
        throw AttributeFormatException("the length of \"" + std::string(text) + "\" is too large");
    Rook::String const value(text.substr(0, length));
    text.remove_prefix(length);
    return value;
}

Rook::String takeAttribute(std::string_view& text, std::string_view name, char const* after) {
    take(text, name);
    take(text, "=");
    auto const value = takeString(text);
    take(text, after);
    return value;
}

} // namespace

Rook::String desAttrPre(std::string_view& text, std::string_view typeName,
                        std::string_view attributeName) {
    take(text, typeName);
    take(text, "(");
    return takeAttribute(text, attributeName, ",");
}

Rook::String desAttrIntra(std::string_view& text, std::string_view attributeName) {
    return takeAttribute(text, attributeName, ",");
}

Rook::String desAttrPost(std::string_view& text, std::string_view attributeName) {
    return takeAttribute(text, attributeName, ")");
}

Rook::String valueToStrep(Rook::String const& value) {
    return std::to_string(value.size()) + ":" + std::string(value.view());
}

Rook::String valueToStrep(bool value) {
    return value ? "true" : "false";
}

template <>
Rook::String strepToValue<Rook::String>(std::string_view text) {
    auto const value = takeString(text);
    if (!text.empty())
        throw AttributeFormatException("text behind a string");
    return value;
}

template <>
bool strepToValue<bool>(std::string_view text) {
    if (text != "true" && text != "false")
        throw AttributeFormatException("\"" + std::string(text) + "\" is neither true nor false");
    return text == "true";
}

} // namespace Fen
