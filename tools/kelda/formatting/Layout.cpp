#include "formatting/Layout.h"

#include <algorithm>
#include <array>

#include "Text.h"
#include "formatting/LineLayout.h"

namespace KeldaTool {
namespace {

using Kind = LaidOutLine::Kind;
using Lines = std::vector<LaidOutLine>;

// Where the columns of neighbouring path lines begin.
struct Columns {
    std::array<std::size_t, 2> widths{}; // of path and type, where something follows them
    std::size_t code = 0;                // of all in front of a comment
};

std::size_t widthOf(std::string_view text) {
    bool const isPlain = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
    return isPlain ? text.size() : displayWidth(text);
}

std::string codeOf(LaidOutLine const& row, Columns const& columns) {
    std::string text;
    for (std::size_t i = 0; i + 1 < row.cells.size(); ++i) {
        text.append(row.cells[i]).append(",");
        if (i + 2 < row.cells.size() || !row.cells.back().empty())
            text.append(columns.widths[i] - widthOf(row.cells[i]) + 1, ' ');
    }
    return text.append(row.cells.back());
}

std::string textOf(LaidOutLine const& row, Columns const& columns) {
    auto text = codeOf(row, columns);
    if (row.comment.empty())
        return text;
    text.append(columns.code - widthOf(text) + 2, ' ');
    return text.append(row.comment);
}

// A block of path lines, with comments between them and path lines that have a layout of their own.
class Block {
  public:
    Block(Lines::iterator begin, Lines::iterator end) : begin_(begin), end_(end) {}

    void align() {
        forEachRow([this](LaidOutLine const& row) {
            for (std::size_t i = 0; i + 1 < row.cells.size(); ++i)
                columns_.widths[i] = std::max(columns_.widths[i], widthOf(row.cells[i]));
        });
        forEachRow([this](LaidOutLine const& row) {
            if (!row.comment.empty())
                columns_.code = std::max(columns_.code, widthOf(codeOf(row, columns_)));
        });
        forEachRow([this](LaidOutLine& row) { row.text = textOf(row, columns_); });
    }

  private:
    template <class Visit>
    void forEachRow(Visit const& visit) {
        for (auto line = begin_; line != end_; ++line)
            if (line->kind == Kind::row)
                visit(*line);
    }

    Lines::iterator begin_, end_;
    Columns columns_;
};

bool endsBlock(LaidOutLine const& line) {
    return line.kind == Kind::blank || line.kind == Kind::other;
}

void alignBlocks(Lines& lines) {
    for (auto begin = lines.begin(); begin != lines.end();) {
        auto const end = std::find_if(begin, lines.end(), endsBlock);
        Block(begin, end).align();
        begin = end == lines.end() ? end : end + 1;
    }
}

bool isBlankLine(LaidOutLine const& line) {
    return line.kind == Kind::blank;
}

// Leaves one blank line of several, and none at the beginning and at the end.
void dropBlankLines(Lines& lines) {
    auto const last = std::unique(lines.begin(), lines.end(), [](auto const& a, auto const& b) {
        return isBlankLine(a) && isBlankLine(b);
    });
    lines.erase(last, lines.end());
    if (!lines.empty() && isBlankLine(lines.front()))
        lines.erase(lines.begin());
    if (!lines.empty() && isBlankLine(lines.back()))
        lines.pop_back();
}

std::string textOf(Lines const& lines) {
    std::string text;
    for (auto const& line : lines) {
        text += line.text;
        if (line.obstacle.empty())
            text += '\n';
    }
    return text;
}

} // namespace

Formatted formatted(std::string_view text, KeldaDatabase::FileFamily family) {
    Formatted result;
    Lines lines;
    for (auto const& source : sourceLines(text, family)) {
        lines.push_back(laidOut(source, family));
        if (!lines.back().obstacle.empty())
            result.kept.push_back({source.number, std::string(lines.back().obstacle)});
    }
    alignBlocks(lines);
    dropBlankLines(lines);
    result.text = textOf(lines);
    return result;
}

} // namespace KeldaTool
