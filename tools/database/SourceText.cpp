#include "SourceText.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include <KeldaBase/MountFileInfoTypes.h>

namespace KeldaDatabase {
namespace {

constexpr std::size_t longestLine = std::tuple_size_v<Kelda::LineBuffer> - 1;

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U;
}

// In characters; a byte that begins none counts as one.
std::int32_t charactersIn(std::string_view text) {
    return static_cast<std::int32_t>(
        std::ranges::count_if(text, [](char c) { return !continuesCharacter(c); }));
}

} // namespace

SourceText::SourceText(std::string text) : text_(std::move(text)) {
    findLines();
    findPieces();
}

SourceText SourceText::ofFile(std::string const& path) {
    std::ifstream stream(path, std::ios::binary);
    return SourceText(std::string(std::istreambuf_iterator<char>(stream), {}));
}

void SourceText::findLines() {
    for (std::size_t at = 0; at < text_.size();) {
        starts_.push_back(at);
        auto const end = text_.find('\n', at);
        at = end == std::string::npos ? text_.size() : end + 1;
    }
}

// Reads as the parser does: a line or what its buffer holds of it, then what continues it.
void SourceText::findPieces() {
    std::size_t at = 0;
    std::int32_t editorLine = 1;
    std::string buffer;
    auto const readPiece = [&](std::size_t room) {
        auto piece = std::string_view(text_).substr(at, room);
        if (auto const end = piece.find('\n'); end != std::string_view::npos)
            piece = piece.substr(0, end + 1);
        at += piece.size();
        editorLines_.push_back(editorLine);
        if (piece.ends_with('\n'))
            ++editorLine;
        buffer += piece.substr(0, piece.find('\0'));
    };
    while (at < text_.size()) {
        buffer.clear();
        readPiece(longestLine);
        for (auto slash = buffer.find('\\');
             slash != std::string::npos && buffer[0] != '#' && at < text_.size() &&
             std::string_view(buffer).substr(slash) == "\\\n";
             slash = buffer.find('\\')) {
            buffer.resize(slash);
            readPiece(longestLine - slash);
        }
    }
}

std::string_view SourceText::line(std::int32_t number) const {
    if (number < 1 || number > lines())
        return {};
    auto text = std::string_view(text_).substr(starts_[static_cast<std::size_t>(number - 1)]);
    text = text.substr(0, text.find('\n'));
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    return text;
}

std::int32_t SourceText::editorLine(std::int32_t parserLine) const {
    if (parserLine < 1 || static_cast<std::size_t>(parserLine) > editorLines_.size())
        return parserLine;
    return editorLines_[static_cast<std::size_t>(parserLine - 1)];
}

bool SourceText::isTakenInPieces(std::int32_t editorLine) const {
    auto const pieces = std::ranges::equal_range(editorLines_, editorLine);
    return pieces.size() > 1;
}

SourceText::Span SourceText::spanOf(std::string_view line, Subject const& subject) const {
    std::size_t begin = 0;
    auto end = std::min(line.find('#'), line.size());
    if (subject.field == Subject::behindColon) {
        auto const colon = line.find(':');
        if (colon < end)
            begin = colon + 1;
    }
    for (int field = 0; field < subject.field; ++field) {
        auto const comma = line.find(',', begin);
        if (comma >= end)
            return {};
        begin = comma + 1;
    }
    if (subject.field >= 0)
        end = std::min(line.find(',', begin), end);
    // The text, whose characters may have blanks between them.
    auto const matchAt = [&](std::size_t start) -> std::size_t {
        std::size_t matched = 0;
        auto at = start;
        for (; at < end && matched < subject.text.size(); ++at) {
            if (lower(line[at]) == lower(subject.text[matched]))
                ++matched;
            else if (!isBlank(line[at]) || matched == 0)
                return 0;
        }
        return matched == subject.text.size() ? at : 0;
    };
    if (!subject.text.empty())
        for (auto start = begin; start < end; ++start)
            if (auto const stop = matchAt(start); stop != 0)
                return {start, stop};
    while (begin < end && isBlank(line[begin]))
        ++begin;
    while (end > begin && isBlank(line[end - 1]))
        --end;
    return {begin, end};
}

std::int32_t SourceText::columnOf(std::int32_t editorLine, Subject const& subject) const {
    auto const text = line(editorLine);
    return charactersIn(text.substr(0, spanOf(text, subject).begin)) + 1;
}

std::int32_t SourceText::widthOf(std::int32_t editorLine, Subject const& subject) const {
    auto const text = line(editorLine);
    auto const span = spanOf(text, subject);
    return std::max(1, charactersIn(text.substr(span.begin, span.end - span.begin)));
}

SourceText const& SourceTexts::of(std::string const& path) {
    auto found = texts_.find(path);
    if (found == texts_.end())
        found = texts_.emplace(path, SourceText::ofFile(path)).first;
    return found->second;
}

} // namespace KeldaDatabase
