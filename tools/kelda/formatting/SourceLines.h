// The lines of a file as the parser reads them, each with the bytes that it was read from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "database/Device.h"

namespace KeldaTool {

/// A logical line: one line of the editor, or several that are continued. Where the parser takes
/// lines in pieces, all that it makes of them together.
struct SourceLine {
    std::string_view bytes;  ///< with all line ends; the last line of a file may have none
    std::int32_t number = 1; ///< of its first line, as an editor counts
    /// Why no other text than these bytes is sure to mean the same; empty if nothing speaks against
    /// another layout.
    std::string_view obstacle;
    /// Unless there is an obstacle: the lines of the editor, without line ends and without the
    /// backslash that continues them.
    std::vector<std::string_view> parts;
    /// It is the agent-name line, which is read without regard to comments and continuations.
    bool namesAgent = false;

    bool endsInNewline() const { return bytes.ends_with('\n'); }
};

/// The whole text, in order: the bytes of all lines together are the text. The views look into it.
std::vector<SourceLine> sourceLines(std::string_view text, KeldaDatabase::FileFamily family);

/// The most characters of a line, its line end counted, that the parser reads at once.
inline constexpr std::size_t longestLine = 1023;

// Characters, as the parser has them.

/// White space, which the parser takes out of lines.
bool isBlank(char c);
std::string_view withoutBlanksInFront(std::string_view text);
std::string_view withoutBlanksAround(std::string_view text);
std::string withoutBlanks(std::string_view text);
/// Whether a text begins with this word, in any case.
bool beginsWith(std::string_view text, std::string_view word);

} // namespace KeldaTool
