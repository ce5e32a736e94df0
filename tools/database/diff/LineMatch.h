// Which lines of a file are still there in another version of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "database/Device.h"
#include "database/findings/SourceText.h"

namespace KeldaDatabase {

/// The logical lines of a file that hold something, by what they say: without blanks and comments.
class WrittenFile {
  public:
    struct Line {
        std::int32_t number = 0; ///< of its first line, as an editor counts
        std::string text;        ///< without blanks
        std::string subject;     ///< the path, the alias or the keyword that it is about
    };

    WrittenFile(SourceText const& text, FileFamily family);

    std::vector<Line> const& lines() const { return lines_; }
    /// The index of the line that an editor's line is part of.
    std::optional<std::size_t> at(std::int32_t editorLine) const;

  private:
    std::vector<Line> lines_;
};

/// Lines of the same text belong together: those in the same order first, then such as were moved.
/// What is left may be a line that was edited.
class LineMatch {
  public:
    LineMatch(WrittenFile const& before, WrittenFile const& after);

    /// One of the two versions, for both ways of looking.
    enum class Version : std::uint8_t { before, after };

    /// The number that a line of a version has in the other one; nothing where it is not there.
    std::optional<std::int32_t> same(Version version, std::int32_t line) const;
    /// The line of the other version, itself not in this one, that is about the same.
    std::optional<std::int32_t> edited(Version version, std::int32_t line) const;
    /// The same; where there is none, the line that stands in its place.
    std::optional<std::int32_t> replaced(Version version, std::int32_t line) const;

  private:
    using Index = std::size_t;
    static constexpr Index nothing = static_cast<Index>(-1);
    struct Side {
        WrittenFile const* file;
        std::vector<Index> same, edited, replaced;
    };
    struct Gap {
        Index begin[2], end[2];
    };

    void matchInOrder();
    void matchBetween(Gap gap);
    void matchMoved();
    void pairEdited();
    void pairReplaced();
    void pair(std::vector<Index> Side::*member, Index before, Index after);
    std::optional<std::int32_t> look(std::vector<Index> Side::*member, Version version,
                                     std::int32_t line) const;

    bool isSwapped_;
    Side sides_[2];
};

} // namespace KeldaDatabase
