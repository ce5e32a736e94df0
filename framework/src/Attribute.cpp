// Writing and reading the string forms of values. The reader knows one position; whatever does not
// fit there ends it.
#include <Fen/Attribute.h>

#include <fmt/format.h>

namespace Fen {
namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

bool isPlain(char c) {
    return c >= ' ' && c <= '~' && c != '"' && c != '\\';
}

void appendQuoted(std::string& text, std::string_view value) {
    text += '"';
    for (char const c : value) {
        auto const byte = static_cast<unsigned char>(c);
        if (isPlain(c))
            text += c;
        else if (c == '"' || c == '\\')
            text.append({'\\', c});
        else
            text.append({'\\', 'x', hexDigits[byte >> 4U], hexDigits[byte & 0xfU]});
    }
    text += '"';
}

void appendAttribute(std::string& text, std::string_view name, std::string_view value) {
    text += name;
    text += ": ";
    appendQuoted(text, value);
}

[[noreturn]] void throwExpected(std::string_view what, std::size_t position) {
    throw AttributeFormatException(fmt::format("expected {} at offset {}", what, position),
                                   position);
}

class Reader {
  public:
    explicit Reader(AttributeCursor& cursor) : text_(cursor.text), at_(cursor.position) {}

    void skipBlanks() {
        while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t'))
            ++at_;
    }
    // Takes a word or a sign, and the blanks before it.
    void take(std::string_view piece) {
        skipBlanks();
        if (!text_.substr(at_).starts_with(piece))
            throwExpected(fmt::format("'{}'", piece), at_);
        at_ += piece.size();
    }
    bool takeTruth() {
        skipBlanks();
        for (bool const value : {true, false}) {
            std::string_view const word = value ? "true" : "false";
            if (text_.substr(at_).starts_with(word)) {
                at_ += word.size();
                return value;
            }
        }
        throwExpected("'true' or 'false'", at_);
    }
    void takeEnd() {
        skipBlanks();
        if (at_ < text_.size())
            throwExpected("the end of the text", at_);
    }
    std::string takeQuoted() {
        take("\"");
        std::string value;
        while (peek() != '"')
            value += takeCharacter();
        ++at_;
        return value;
    }

  private:
    char peek() const {
        if (at_ >= text_.size())
            throwExpected("'\"'", at_);
        return text_[at_];
    }
    char takeCharacter() {
        char const c = text_[at_];
        if (c == '\\')
            return takeEscaped();
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f')
            throwExpected("a character that is no control character", at_);
        ++at_;
        return c;
    }
    char takeEscaped() {
        ++at_;
        char const c = at_ < text_.size() ? text_[at_] : '\0';
        if (c != '"' && c != '\\' && c != 'x')
            throwExpected("'\"', '\\' or 'x'", at_);
        ++at_;
        if (c != 'x')
            return c;
        auto const high = takeHexDigit();
        return static_cast<char>(high << 4U | takeHexDigit());
    }
    unsigned takeHexDigit() {
        auto const c = at_ < text_.size() ? text_[at_] : '\0';
        auto const lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
        auto const digit = hexDigits.find(lower);
        if (digit == std::string_view::npos)
            throwExpected("a hexadecimal digit", at_);
        ++at_;
        return static_cast<unsigned>(digit);
    }

    std::string_view const text_;
    std::size_t& at_;
};

Rook::String takeAttribute(Reader& reader, std::string_view name) {
    reader.take(name);
    reader.take(":");
    return reader.takeQuoted();
}

} // namespace

Rook::String desAttrPre(AttributeCursor& cursor, std::string_view typeName,
                        std::string_view attributeName) {
    Reader reader(cursor);
    reader.take(typeName);
    reader.take("(");
    return takeAttribute(reader, attributeName);
}

Rook::String desAttrIntra(AttributeCursor& cursor, std::string_view attributeName) {
    Reader reader(cursor);
    reader.take(",");
    return takeAttribute(reader, attributeName);
}

Rook::String desAttrPost(AttributeCursor& cursor, std::string_view attributeName) {
    auto value = desAttrIntra(cursor, attributeName);
    Reader(cursor).take(")");
    return value;
}

void desEnd(AttributeCursor& cursor) {
    Reader(cursor).takeEnd();
}

void serAttrPre(std::string& text, std::string_view typeName, std::string_view attributeName,
                Rook::String const& value) {
    text += typeName;
    text += '(';
    appendAttribute(text, attributeName, value);
}

void serAttrIntra(std::string& text, std::string_view attributeName, Rook::String const& value) {
    text += ", ";
    appendAttribute(text, attributeName, value);
}

void serAttrPost(std::string& text, std::string_view attributeName, Rook::String const& value) {
    serAttrIntra(text, attributeName, value);
    text += ')';
}

Rook::String valueToStrep(Rook::String const& value) {
    std::string text;
    appendQuoted(text, value);
    return text;
}

namespace Detail {

Rook::String readString(std::string_view text) {
    AttributeCursor cursor{text};
    auto const value = Reader(cursor).takeQuoted();
    desEnd(cursor);
    return value;
}

bool readBool(std::string_view text) {
    AttributeCursor cursor{text};
    Reader reader(cursor);
    bool const value = reader.takeTruth();
    reader.takeEnd();
    return value;
}

void checkArgumentCount(std::size_t wanted, std::size_t given) {
    if (given != wanted)
        throw AttributeFormatException(
            fmt::format("expected {} constructor arguments, not {}", wanted, given));
}

void throwForArgument(std::size_t index, AttributeFormatException const& fault) {
    throw AttributeFormatException(
        fmt::format("constructor argument {}: {}", index + 1, fault.what()), fault.position());
}

} // namespace Detail

} // namespace Fen
