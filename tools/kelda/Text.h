// Text from files and from the command line, which may hold any bytes, made fit for output.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <Rook/String.h>

namespace KeldaTool {

/// A string of the library, byte for byte.
std::string textOf(Rook::String const& text);

/// The text as UTF-8: each ill-formed sequence of bytes becomes one U+FFFD.
std::string replaceNonUtf8(std::string_view bytes);

/// The text in one line that can be shown on a terminal. Control characters and bytes that are not
/// UTF-8 become "\x1b", characters that change how their neighbours are shown "\u{202e}".
std::string printable(std::string_view bytes);

/// The columns that a printable text takes on a terminal.
std::size_t displayWidth(std::string_view text);

/// "1 file", "2 files".
std::string counted(std::size_t count, std::string_view noun);

} // namespace KeldaTool
