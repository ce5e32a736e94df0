// Files that the program writes.
#pragma once

#include <string>
#include <string_view>

namespace KeldaTool {

/// Writes a whole file: readers see the old one or the new one, never a piece. A link is followed,
/// the permissions of a file that is there are kept, its owner as far as the caller may give files
/// away, and what is no regular file is written into.
/// Throws std::runtime_error, which says what went wrong.
void writeWholeFile(std::string const& path, std::string_view text);

/// Everything that can be read from standard input. Throws std::runtime_error.
std::string readStandardInput();

} // namespace KeldaTool
