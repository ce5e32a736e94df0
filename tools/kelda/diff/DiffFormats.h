// How the differences of two devices are written. Nothing that stands in a file, or in its name,
// gets to the reader unescaped.
#pragma once

#include <string>

#include "diff/DiffResult.h"

namespace KeldaTool {

/// For people: the changes by class, the worst first, each with what it was and is, the agents that
/// it concerns and the lines that brought it about; then a line of totals. `colour`: classes, kinds
/// and the two sides are coloured; without it there is no escape sequence.
std::string diffText(DiffResult const& result, bool colour);

/// For the comment of a review: a line of totals and a table for each class. Has less than
/// `commentLimit` bytes; changes for which there is no room are counted in its last line.
std::string diffMarkdown(DiffResult const& result);
inline constexpr std::size_t commentLimit = 65'536;

/// One JSON document; share/kelda/diff.schema.json describes it.
std::string diffJson(DiffResult const& result);

/// The document of a comparison that could not be made. `device` is left out where it is empty.
std::string diffErrorJson(std::string const& device, std::string const& message);

/// The same document in one line, with its newline.
std::string diffInOneLine(std::string const& document);

} // namespace KeldaTool
