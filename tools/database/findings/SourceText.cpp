#include "SourceText.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <optional>

#include <KeldaBase/MountFileInfoTypes.h>

namespace KeldaDatabase {
namespace {

constexpr std::size_t longestLine = std::tuple_size_v<Kelda::LineBuffer> - 1;
constexpr std::string_view continuation = "\\\n";
constexpr std::string_view agentNameKeyword = "agentname:";

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isTokenChar(char c) {
    return (lower(c) >= 'a' && lower(c) <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

bool isBlankText(std::string_view text) {
    return std::ranges::all_of(text, isBlank);
}

std::string_view withoutComment(std::string_view text) {
    return text.substr(0, text.find('#'));
}

bool namesAgent(std::string_view line) {
    std::string text;
    std::ranges::copy_if(line, std::back_inserter(text), [](char c) { return !isBlank(c); });
    std::ranges::transform(text, text.begin(), lower);
    return text.starts_with(agentNameKeyword);
}

// How many bytes the first character takes; for bytes that are no UTF-8, those up to the first that
// cannot belong to it.
std::size_t firstCharacter(std::string_view text) {
    auto const lead = static_cast<unsigned char>(text[0]);
    std::size_t const wanted = lead < 0xc2 || lead > 0xf4 ? 1
                               : lead < 0xe0              ? 2
                               : lead < 0xf0              ? 3
                                                          : 4;
    // Of the second byte: leave out long forms, surrogates and what is too large.
    unsigned least = lead == 0xe0 ? 0xa0 : lead == 0xf0 ? 0x90 : 0x80;
    unsigned most = lead == 0xed ? 0x9f : lead == 0xf4 ? 0x8f : 0xbf;
    std::size_t length = 1;
    for (; length < wanted && length < text.size(); ++length) {
        auto const byte = static_cast<unsigned char>(text[length]);
        if (byte < least || byte > most)
            break;
        least = 0x80;
        most = 0xbf;
    }
    return length;
}

std::int32_t charactersIn(std::string_view text) {
    std::int32_t count = 0;
    for (; !text.empty(); ++count)
        text.remove_prefix(firstCharacter(text));
    return count;
}

// A piece of a text: the first byte and the one behind the last.
struct Span {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool isEmpty() const { return begin == end; }
    std::string_view of(std::string_view text) const { return text.substr(begin, end - begin); }
};

// Without the blanks at both ends; the beginning where there is nothing else.
Span trimmed(std::string_view text, Span span) {
    auto begin = span.begin;
    while (begin < span.end && isBlank(text[begin]))
        ++begin;
    if (begin == span.end)
        return {span.begin, span.begin};
    while (isBlank(text[span.end - 1]))
        --span.end;
    return {begin, span.end};
}

// The field of a line that ends at `content.end`; none where it has no such field.
std::optional<Span> fieldOf(std::string_view text, Span content, int field) {
    if (field == Subject::behindColon)
        if (auto const colon = text.find(':'); colon < content.end)
            content.begin = colon + 1;
    for (int i = 0; i < field; ++i) {
        auto const comma = text.find(',', content.begin);
        if (comma >= content.end)
            return std::nullopt;
        content.begin = comma + 1;
    }
    if (field >= 0)
        content.end = std::min(text.find(',', content.begin), content.end);
    return content;
}

// Where a sought text that begins at a position ends: its characters may have blanks between them.
std::optional<std::size_t> endOfMatch(std::string_view text, Span span, std::string_view sought) {
    std::size_t matched = 0;
    auto at = span.begin;
    for (; at < span.end && matched < sought.size(); ++at) {
        if (lower(text[at]) == lower(sought[matched]))
            ++matched;
        else if (!isBlank(text[at]) || matched == 0)
            return std::nullopt;
    }
    return matched == sought.size() ? std::optional(at) : std::nullopt;
}

// The first place of a text; of a token, the first one where it is not the beginning of another.
std::optional<Span> find(std::string_view text, Span span, std::string_view sought) {
    std::optional<Span> first;
    for (auto begin = span.begin; begin < span.end && !sought.empty(); ++begin) {
        auto const end = endOfMatch(text, {begin, span.end}, sought);
        if (!end)
            continue;
        bool const isCutToken = sought.front() == '%' && *end < span.end && isTokenChar(text[*end]);
        if (!isCutToken)
            return Span{begin, *end};
        if (!first)
            first = Span{begin, *end};
    }
    return first;
}

Span spanOf(std::string_view text, Subject const& subject) {
    auto const content = Span{0, withoutComment(text).size()};
    auto const all = Span{0, text.size()};
    auto const visible = trimmed(text, content);
    auto const whole = visible.isEmpty() ? trimmed(text, all) : visible;
    auto const field = fieldOf(text, content, subject.field);
    if (!field)
        return whole;
    if (auto const found = find(text, *field, subject.text))
        return *found;
    if (subject.field >= 0)
        return trimmed(text, *field);
    if (auto const found = find(text, all, subject.text))
        return *found;
    auto const rest = trimmed(text, *field);
    return rest.isEmpty() ? whole : rest;
}

} // namespace

std::string bytesOfFile(std::string const& path) {
    std::unique_ptr<FILE, int (*)(FILE*)> const file(std::fopen(path.c_str(), "rbe"), &std::fclose);
    std::string bytes;
    if (!file)
        return bytes;
    constexpr std::size_t chunk = 65536;
    for (std::size_t read = chunk; read == chunk;) {
        auto const size = bytes.size();
        bytes.resize(size + chunk);
        read = std::fread(bytes.data() + size, 1, chunk, file.get());
        bytes.resize(size + read);
    }
    bytes.shrink_to_fit(); // most files are small, and there may be thousands
    return bytes;
}

SourceText::SourceText(std::string text) : text_(std::move(text)) {
    findLines();
    findPieces();
    findGroups();
}

SourceText SourceText::ofFile(std::string const& path) {
    return SourceText(bytesOfFile(path));
}

void SourceText::findLines() {
    for (std::size_t at = 0; at < text_.size();) {
        starts_.push_back(at);
        auto const end = text_.find('\n', at);
        at = end == std::string::npos ? text_.size() : end + 1;
    }
}

void SourceText::findPieces() {
    for (auto at = addLinesToAgentName(); at < text_.size();)
        at = addLogicalLine(at);
}

// The search for the agent's name joins no lines. Where a line names it, this adds all lines up to
// there and returns where the rest begins; otherwise the file is read from its beginning.
std::size_t SourceText::addLinesToAgentName() {
    std::vector<Piece> before;
    for (std::size_t at = 0; at < text_.size(); at = before.back().end) {
        before.push_back(pieceAt(at, longestLine));
        auto const text = textOf(before.back());
        if (isBlankText(text) || text.front() == '#')
            continue;
        bool const holdsNul = text.size() < before.back().end - at;
        if (holdsNul || !namesAgent(text))
            return 0;
        std::ranges::for_each(before, [this](Piece const& piece) { add(piece); });
        agentNameLine_ = pieces_.back().editorLine;
        return pieces_.back().end;
    }
    return 0;
}

// A line or what the parser's buffer holds of it, then what continues it.
std::size_t SourceText::addLogicalLine(std::size_t at) {
    std::size_t used = 0; // of the buffer
    char first = '\0';    // character in it
    for (bool goesOn = true; goesOn;) {
        auto piece = pieceAt(at, longestLine - used);
        auto const text = textOf(piece);
        if (used == 0 && !text.empty())
            first = text.front();
        at = piece.end;
        goesOn = first != '#' && at < text_.size() && text.ends_with(continuation) &&
                 text.find('\\') == text.size() - continuation.size();
        used += goesOn ? text.size() - continuation.size() : 0;
        piece.goesOn = goesOn;
        add(piece);
    }
    return at;
}

SourceText::Piece SourceText::pieceAt(std::size_t at, std::size_t room) const {
    auto const text = std::string_view(text_).substr(at, room);
    auto const lineEnd = text.find('\n');
    return {at, at + (lineEnd == std::string_view::npos ? text.size() : lineEnd + 1)};
}

void SourceText::add(Piece piece) {
    if (pieces_.empty())
        piece.editorLine = 1;
    else
        piece.editorLine =
            pieces_.back().editorLine + (text_[pieces_.back().end - 1] == '\n' ? 1 : 0);
    pieces_.push_back(piece);
}

// As the parser sees it: it ends at a NUL.
std::string_view SourceText::textOf(Piece const& piece) const {
    auto const text = std::string_view(text_).substr(piece.begin, piece.end - piece.begin);
    return text.substr(0, text.find('\0'));
}

bool SourceText::isCutBetween(Piece const& piece, Piece const& next) const {
    auto const rest = textOf(next);
    return piece.editorLine == next.editorLine &&
           (textOf(piece).ends_with('\\') || !isBlankText(withoutComment(rest)) ||
            rest.find('\\') != std::string_view::npos);
}

void SourceText::findGroups() {
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
        auto const& piece = pieces_[i];
        bool const belongsToFormer =
            i > 0 && (pieces_[i - 1].goesOn || pieces_[i - 1].editorLine == piece.editorLine);
        if (!belongsToFormer)
            groups_.push_back({i, false});
        else if (isCutBetween(pieces_[i - 1], piece))
            groups_.back().isCut = true;
    }
}

std::string_view SourceText::line(std::int32_t number) const {
    if (!hasLine(number))
        return {};
    auto text = std::string_view(text_).substr(starts_[static_cast<std::size_t>(number - 1)]);
    text = text.substr(0, text.find('\n'));
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    return text;
}

std::int32_t SourceText::lineOfByte(std::size_t offset) const {
    return static_cast<std::int32_t>(std::ranges::upper_bound(starts_, offset) - starts_.begin());
}

std::int32_t SourceText::editorLine(std::int32_t parserLine) const {
    if (parserLine < 1 || static_cast<std::size_t>(parserLine) > pieces_.size())
        return parserLine;
    return pieces_[static_cast<std::size_t>(parserLine - 1)].editorLine;
}

std::int32_t SourceText::parserLineOfByte(std::size_t offset) const {
    auto const behind = std::ranges::upper_bound(pieces_, offset, {}, &Piece::begin);
    return static_cast<std::int32_t>(behind - pieces_.begin());
}

// Of a line that there is.
std::size_t SourceText::groupOf(std::int32_t editorLine) const {
    auto const firstLine = [this](Group const& group) {
        return pieces_[group.firstPiece].editorLine;
    };
    auto const behind = std::ranges::upper_bound(groups_, editorLine, {}, firstLine);
    return static_cast<std::size_t>(behind - groups_.begin()) - 1;
}

EditorLines SourceText::linesTakenWith(std::int32_t editorLine) const {
    if (!hasLine(editorLine))
        return {editorLine, editorLine};
    auto const group = groupOf(editorLine);
    auto const behind = group + 1 < groups_.size() ? groups_[group + 1].firstPiece : pieces_.size();
    return {pieces_[groups_[group].firstPiece].editorLine, pieces_[behind - 1].editorLine};
}

bool SourceText::isTakenInPieces(std::int32_t editorLine) const {
    return hasLine(editorLine) && groups_[groupOf(editorLine)].isCut;
}

// The pieces of a logical line, joined.
struct SourceText::LogicalLine {
    struct Part {
        std::size_t begin = 0;  // in the joined text
        std::size_t source = 0; // in the file
    };
    std::string text;
    std::vector<Part> parts;

    std::size_t partOf(std::size_t position) const {
        auto const behind = std::ranges::upper_bound(parts, position, {}, &Part::begin);
        return static_cast<std::size_t>(behind - parts.begin()) - 1;
    }
    // What of a span stands in a part.
    Span within(std::size_t part, Span span) const {
        auto const end = part + 1 < parts.size() ? parts[part + 1].begin : text.size();
        return trimmed(text, {span.begin, std::min(span.end, end)});
    }
};

SourceText::LogicalLine SourceText::logicalLineFrom(std::size_t piece) const {
    LogicalLine line;
    for (bool goesOn = true; goesOn; ++piece) {
        auto text = textOf(pieces_[piece]);
        goesOn = pieces_[piece].goesOn;
        if (goesOn)
            text.remove_suffix(continuation.size());
        else if (text.ends_with('\n'))
            text.remove_suffix(1);
        line.parts.push_back({line.text.size(), pieces_[piece].begin});
        line.text += text;
    }
    return line;
}

Spot SourceText::spotOf(std::int32_t parserLine, Subject const& subject) const {
    if (parserLine < 1 || static_cast<std::size_t>(parserLine) > pieces_.size())
        return {std::max(1, parserLine), 1, 1};
    auto const logical = logicalLineFrom(static_cast<std::size_t>(parserLine - 1));
    auto const span = spanOf(logical.text, subject);
    auto const part = logical.partOf(span.begin);
    auto const shown = logical.within(part, span);
    auto const at = logical.parts[part].source + (shown.begin - logical.parts[part].begin);
    auto const line = lineOfByte(at);
    auto const before = at - starts_[static_cast<std::size_t>(line - 1)];
    return {line, charactersIn(this->line(line).substr(0, before)) + 1,
            std::max(1, charactersIn(shown.of(logical.text)))};
}

std::int32_t SourceText::columnOf(std::int32_t editorLine, Subject const& subject) const {
    auto const text = line(editorLine);
    return charactersIn(text.substr(0, spanOf(text, subject).begin)) + 1;
}

std::int32_t SourceText::widthOf(std::int32_t editorLine, Subject const& subject) const {
    auto const text = line(editorLine);
    return std::max(1, charactersIn(spanOf(text, subject).of(text)));
}

SourceText const& SourceTexts::of(std::string const& path) {
    auto found = texts_.find(path);
    if (found == texts_.end())
        found = texts_.emplace(path, SourceText::ofFile(path)).first;
    return found->second;
}

} // namespace KeldaDatabase
