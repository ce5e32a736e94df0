// Text for shell scripts.
#pragma once

#include <string>
#include <string_view>

namespace KeldaTool {

/// The text as one word of a script for bash or zsh, whatever it holds: 'it'\''s'.
std::string shellQuoted(std::string_view text);

/// The text with a backslash before each of these characters.
std::string escaped(std::string_view text, std::string_view characters);

} // namespace KeldaTool
