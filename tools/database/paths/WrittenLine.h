// Lines as they were written, read once more from their files.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "PathStory.h"
#include "database/Device.h"
#include "database/findings/SourceText.h"
#include "database/findings/Spelling.h"

namespace KeldaDatabase {

/// A line with those that continue it.
struct LogicalLine {
    std::string text;      ///< without its comment, and without blanks at its ends
    std::int32_t next = 0; ///< the number of the line behind it, as an editor counts
};
LogicalLine logicalLine(SourceText const& text, std::int32_t editorLine);

/// The text without any blank.
std::string withoutBlanks(std::string_view text);

/// The fields of a path line "path,type,flags"; nothing where a line is none. Short forms in the
/// path are written out and one slash at its end is dropped.
struct PathFields {
    std::string path, type, flags;
};
std::optional<PathFields> pathFields(std::string_view line);
/// The same of a preinit line "[CONFIG:]path,type[,attribute]"; flags is the attribute.
std::optional<PathFields> preinitFields(std::string_view line);

/// The tokens in a path, "%" with the letters, digits and "_" behind it, in their order.
std::vector<std::string> tokensIn(std::string_view path);

/// The path with "*" for each token, whatever its length.
std::string wildcard(std::string_view path);

/// Finds the lines of a device for a reader.
class PlaceReader {
  public:
    explicit PlaceReader(Device const& device) : device_(device) {}

    /// A place of the device; one that is not known gives an empty one.
    StoryPlace told(Place const& place);
    /// A line of a file, counted as the parser does.
    StoryPlace told(std::string const& file, std::int32_t parserLine);
    /// The text of a regular file; anything else has no lines.
    SourceText const& textOf(std::string const& file);

  private:
    Device const& device_;
    SourceTexts texts_;
};

} // namespace KeldaDatabase
