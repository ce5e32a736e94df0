#include "Table.h"

#include <algorithm>

#include "Text.h"

namespace KeldaTool {
namespace {

constexpr char const* bold = "\x1b[1m";
constexpr char const* faint = "\x1b[2m";
constexpr char const* reset = "\x1b[0m";

using Widths = std::vector<std::size_t>;

void widen(Widths& widths, std::vector<std::string> const& cells) {
    for (std::size_t i = 0; i < widths.size(); ++i)
        widths[i] = std::max(widths[i], displayWidth(cells[i]));
}

std::string lineOf(std::vector<std::string> const& cells, Widths const& widths) {
    std::string line;
    for (std::size_t i = 0; i < widths.size(); ++i) {
        line += cells[i];
        if (i + 1 < widths.size())
            line.append(widths[i] - displayWidth(cells[i]) + 2, ' ');
    }
    return line;
}

std::string coloured(std::string const& line, char const* colour) {
    return colour + line + reset;
}

} // namespace

Table::Table(std::vector<std::string> headings) : headings_(std::move(headings)) {}

void Table::addRow(std::vector<std::string> cells, Emphasis emphasis) {
    cells.resize(headings_.size());
    for (auto& cell : cells)
        cell = cell.empty() ? "-" : printable(cell);
    rows_.push_back({std::move(cells), emphasis});
}

std::vector<std::size_t> Table::widths() const {
    Widths widths(headings_.size());
    widen(widths, headings_);
    for (auto const& row : rows_)
        widen(widths, row.cells);
    return widths;
}

std::string Table::text(bool colour) const {
    auto const widths = this->widths();
    auto const headings = lineOf(headings_, widths);
    auto text = (colour ? coloured(headings, bold) : headings) + "\n";
    for (auto const& row : rows_) {
        auto const line = lineOf(row.cells, widths);
        text += colour && row.emphasis == Emphasis::faint ? coloured(line, faint) : line;
        text += "\n";
    }
    return text;
}

} // namespace KeldaTool
