// The text of a file once more, for whoever wants to show where something stands in it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Finding.h"
#include "database/Device.h"

namespace KeldaDatabase {

/// A piece of text as an editor shows it.
struct Spot {
    std::int32_t line = 1;
    std::int32_t column = 1; ///< in characters
    std::int32_t width = 1;  ///< in characters; never beyond the end of the line
    friend bool operator==(Spot const&, Spot const&) = default;
};

/// Lines as an editor shows them, from the first to the last.
struct EditorLines {
    std::int32_t first = 1;
    std::int32_t last = 1;
    friend bool operator==(EditorLines const&, EditorLines const&) = default;
};

/// What a file holds, as far as it can be read.
std::string bytesOfFile(std::string const& path);

/// Characters are counted as they are shown: a sequence of bytes that is no UTF-8 is one.
class SourceText {
  public:
    /// The bytes of a file. The first line that is neither blank nor a comment, where it names an
    /// agent, counts as the profile loader reads it, which joins nothing to it.
    explicit SourceText(std::string text);
    /// Reads a file; one that cannot be read, a folder say, has no lines.
    static SourceText ofFile(std::string const& path);

    std::string const& text() const { return text_; }

    /// How many lines an editor shows.
    std::int32_t lines() const { return static_cast<std::int32_t>(starts_.size()); }
    /// A line as an editor shows it, counted from 1, without its line end; empty when there is
    /// none.
    std::string_view line(std::int32_t number) const;
    /// The line that a byte of the text stands in.
    std::int32_t lineOfByte(std::size_t offset) const;

    /// The editor's number of a line as the parser counts: to the parser each piece of a line that
    /// is longer than its buffer is a line. A number that the file does not have stays as it is.
    std::int32_t editorLine(std::int32_t parserLine) const;
    /// The parser's number of the piece that a byte of the text stands in.
    std::int32_t parserLineOfByte(std::size_t offset) const;
    /// The line, with all that the parser joins to it and that it joins to, and with the rest of
    /// those of them that it takes in pieces.
    EditorLines linesTakenWith(std::int32_t editorLine) const;
    /// Whether the parser cut this line, or one that it is joined with, where something stands.
    bool isTakenInPieces(std::int32_t editorLine) const;
    /// The line of the agent's name, 0 for none. It may be continued by no other line, and no
    /// comment may follow in it.
    std::int32_t agentNameLine() const { return agentNameLine_; }

    /// Where a subject stands in the logical line that begins with this line of the parser's. Where
    /// it is not found, its field, and where there is no such field, the whole line. What goes on
    /// in the next line is cut at the end of the first. Blanks do not count, nor does the case of
    /// letters. The comment is looked at where nothing stands before it, and for a text that stands
    /// nowhere else.
    Spot spotOf(std::int32_t parserLine, Subject const& subject) const;

    // The same within a single line of the editor.
    std::int32_t columnOf(std::int32_t editorLine, Subject const& subject) const;
    std::int32_t widthOf(std::int32_t editorLine, Subject const& subject) const;

  private:
    // What the parser reads at once.
    struct Piece {
        std::size_t begin = 0;
        std::size_t end = 0; // its line end included
        std::int32_t editorLine = 0;
        bool goesOn = false; // ends in a backslash that joins the next piece
    };
    // Pieces that are joined or stand in one line.
    struct Group {
        std::size_t firstPiece = 0;
        bool isCut = false; // and something stands behind the cut
    };
    struct LogicalLine;

    void findLines();
    void findPieces();
    std::size_t addLinesToAgentName();
    std::size_t addLogicalLine(std::size_t at);
    void findGroups();
    Piece pieceAt(std::size_t at, std::size_t room) const;
    void add(Piece piece);
    std::string_view textOf(Piece const& piece) const;
    bool isCutBetween(Piece const& piece, Piece const& next) const;
    bool hasLine(std::int32_t number) const { return number >= 1 && number <= lines(); }
    std::size_t groupOf(std::int32_t editorLine) const;
    LogicalLine logicalLineFrom(std::size_t piece) const;

    std::string text_;
    std::vector<std::size_t> starts_; // of each editor line
    std::vector<Piece> pieces_;       // the parser's lines
    std::vector<Group> groups_;
    std::int32_t agentNameLine_ = 0;
};

/// The files of a device, each read when it is first asked for.
class SourceTexts {
  public:
    SourceText const& of(std::string const& path);
    std::size_t size() const { return texts_.size(); }
    /// Forgets the files; references to them are gone.
    void clear() { texts_.clear(); }

  private:
    std::map<std::string, SourceText> texts_;
};

} // namespace KeldaDatabase
