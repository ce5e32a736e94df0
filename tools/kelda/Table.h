// A table for people: a line of headings, then rows, in columns as wide as their widest cell.
#pragma once

#include <string>
#include <vector>

namespace KeldaTool {

class Table {
  public:
    enum class Emphasis { normal, faint };

    explicit Table(std::vector<std::string> headings);

    /// Adds a row with one cell per heading. Cells may hold any bytes; an empty one shows as "-".
    void addRow(std::vector<std::string> cells, Emphasis emphasis = Emphasis::normal);

    /// The lines, each ended by a newline, without blanks at their ends. Nothing is cut, however
    /// wide the terminal.
    std::string text(bool colour) const;

  private:
    struct Row {
        std::vector<std::string> cells;
        Emphasis emphasis;
    };
    std::vector<std::size_t> widths() const;

    std::vector<std::string> headings_;
    std::vector<Row> rows_;
};

} // namespace KeldaTool
