// A line is cut into cells: characters, each with what is shown for it. A sequence of bytes that is
// no UTF-8 is one character, as the columns of places count.
#include "check/CheckSourceLine.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Text.h"

namespace KeldaTool {
namespace {

constexpr std::size_t tabStop = 8;
// In terminal columns.
constexpr std::size_t widestWhole = 200;
constexpr std::size_t windowWidth = 120;
constexpr std::size_t windowLead = 40; // before the subject, more where little is behind it
// Bytes on each side of where a subject begins that are looked at: enough for any window of
// characters that are to be seen, however long the line.
constexpr std::size_t reach = 1024;
constexpr std::string_view ellipsis = "...";

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U;
}

// How many bytes the first character of a line takes: as many as are one when it is made UTF-8.
std::size_t firstCharacter(std::string_view line) {
    constexpr std::size_t longest = 4;
    if (static_cast<unsigned char>(line[0]) < 0x80)
        return 1;
    auto length = std::min(longest, line.size());
    for (; length > 1; --length) {
        auto const text = replaceNonUtf8(line.substr(0, length));
        if (std::all_of(text.begin() + 1, text.end(), continuesCharacter))
            break;
    }
    return length;
}

// Where the line's character of this number, from 0, begins; the end of a line that has fewer.
std::size_t beginOfCharacter(std::string_view line, std::int32_t number) {
    std::size_t at = 0;
    for (; number > 0 && at < line.size(); --number)
        at += firstCharacter(line.substr(at));
    return at;
}

// The first byte from `at` on that begins a character whatever the bytes before `at` are: it
// continues none, or it comes after the three that the longest character has.
std::size_t nextCharacter(std::string_view line, std::size_t at) {
    for (std::size_t continuing = 0; at < line.size() && continuing < 3; ++at, ++continuing)
        if (!continuesCharacter(line[at]))
            break;
    return at;
}

struct Cell {
    std::size_t begin; // byte in the line
    std::string text;
    std::size_t width;
};
using Cells = std::vector<Cell>;

Cell cellOf(std::string_view bytes, std::size_t begin, std::size_t column) {
    if (bytes == "\t") {
        auto const width = tabStop - column % tabStop;
        return {begin, std::string(width, ' '), width};
    }
    auto text = printable(bytes);
    auto const width = displayWidth(text);
    return {begin, std::move(text), width};
}

// Those that begin in a span of bytes.
Cells cellsOf(std::string_view line, std::size_t begin, std::size_t end) {
    Cells cells;
    for (std::size_t column = 0; begin < end;) {
        auto const length = firstCharacter(line.substr(begin));
        cells.push_back(cellOf(line.substr(begin, length), begin, column));
        column += cells.back().width;
        begin += length;
    }
    return cells;
}

using Position = Cells::const_iterator;

std::size_t widthOf(Position first, Position last) {
    std::size_t width = 0;
    for (; first != last; ++first)
        width += first->width;
    return width;
}

Position firstFrom(Cells const& cells, std::size_t byte) {
    return std::find_if(cells.begin(), cells.end(),
                        [byte](Cell const& cell) { return cell.begin >= byte; });
}

// The cells that are shown: all, or those around the subject.
struct Window {
    Position first;
    Position last;
};

Window windowAround(Cells const& cells, Position subject) {
    auto const behind = std::min(widthOf(subject, cells.end()), windowWidth - windowLead);
    auto first = subject;
    for (auto room = windowWidth - behind; first != cells.begin(); --first) {
        auto const width = std::prev(first)->width;
        if (width > room)
            break;
        room -= width;
    }
    auto last = first;
    for (auto room = windowWidth; last != cells.end() && last->width <= room; ++last)
        room -= last->width;
    return {first, last};
}

std::string shownIn(Window const& window) {
    std::string text;
    for (auto cell = window.first; cell != window.last; ++cell)
        text += cell->text;
    return text;
}

void removeBlanksAtEnd(std::string& text) {
    text.erase(text.find_last_not_of(' ') + 1);
}

// The cells of a line that may be shown, those around the subject.
struct Surroundings {
    Cells cells;
    Position subject;
    bool isCutBefore;
    bool isCutBehind;
};

Surroundings surroundingsOf(SourcePlace const& place) {
    std::string_view const line = place.text;
    auto const subject = beginOfCharacter(line, std::max(place.column, 1) - 1);
    auto const begin = subject > reach ? nextCharacter(line, subject - reach) : 0;
    auto const end = std::min(line.size(), subject + reach);
    Surroundings near{cellsOf(line, begin, end), {}, begin > 0, end < line.size()};
    near.subject = firstFrom(near.cells, subject);
    return near;
}

// At least one, so that there is a caret.
std::size_t underlinedOf(Position subject, Position last, std::int32_t characters) {
    auto const room = last - subject;
    auto const end = subject + std::min<std::ptrdiff_t>(std::max(characters, 1), room);
    return std::max<std::size_t>(widthOf(subject, end), 1);
}

} // namespace

ShownLine shownLine(SourcePlace const& place) {
    auto const near = surroundingsOf(place);
    Window window{near.cells.begin(), near.cells.end()};
    if (widthOf(window.first, window.last) > widestWhole)
        window = windowAround(near.cells, near.subject);
    auto const isCutBefore = near.isCutBefore || window.first != near.cells.begin();
    auto const isCutBehind = near.isCutBehind || window.last != near.cells.end();
    std::string const before(isCutBefore ? ellipsis : "");
    std::string const behind(isCutBehind ? ellipsis : "");
    ShownLine shown{before + shownIn(window) + behind, 0, 0};
    removeBlanksAtEnd(shown.text);
    if (place.column > 0) {
        shown.caret = before.size() + widthOf(window.first, near.subject);
        shown.underlined = underlinedOf(near.subject, window.last, place.width);
    }
    return shown;
}

} // namespace KeldaTool
