// The text of a file once more, for whoever wants to show where something stands in it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Device.h"
#include "Finding.h"

namespace KeldaDatabase {

class SourceText {
  public:
    /// The bytes of a file.
    explicit SourceText(std::string text);
    /// Reads a file; one that cannot be read has no lines.
    static SourceText ofFile(std::string const& path);

    /// How many lines an editor shows.
    std::int32_t lines() const { return static_cast<std::int32_t>(starts_.size()); }
    /// A line as an editor shows it, counted from 1, without its line end; empty when there is
    /// none.
    std::string_view line(std::int32_t number) const;

    /// The editor's number of a line as the parser counts: to the parser each piece of a line that
    /// is longer than its buffer is a line. A number that the file does not have stays as it is.
    std::int32_t editorLine(std::int32_t parserLine) const;
    /// Whether the parser took this line in pieces.
    bool isTakenInPieces(std::int32_t editorLine) const;

    /// Where a subject stands in a line: the first character's column, counted in characters
    /// from 1. Blanks do not count, nor does the case of letters. 1 when it is not found or names
    /// nothing, the first visible character when only its field is found.
    std::int32_t columnOf(std::int32_t editorLine, Subject const& subject) const;
    /// How many characters of the line, from that column on, the subject takes; at least 1.
    std::int32_t widthOf(std::int32_t editorLine, Subject const& subject) const;

  private:
    struct Span {
        std::size_t begin = 0;
        std::size_t end = 0;
    };
    Span spanOf(std::string_view line, Subject const& subject) const;
    void findLines();
    void findPieces();

    std::string text_;
    std::vector<std::size_t> starts_;       // of each editor line
    std::vector<std::int32_t> editorLines_; // of each parser line
};

/// The files of a device, each read when it is first asked for.
class SourceTexts {
  public:
    SourceText const& of(std::string const& path);

  private:
    std::map<std::string, SourceText> texts_;
};

} // namespace KeldaDatabase
