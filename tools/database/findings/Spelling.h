// How near two names are to each other. The case of letters does not count.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace KeldaDatabase {

/// The text with its ASCII letters in lower case.
std::string lowerCase(std::string_view text);

bool equalIgnoringCase(std::string_view a, std::string_view b);
bool startsWithIgnoringCase(std::string_view text, std::string_view start);

/// How many characters have to be put in, taken out, changed or swapped with their neighbour to
/// make one text of the other.
std::size_t editDistance(std::string_view a, std::string_view b);

/// The candidate that is the least edit distance from a word, the first of several; empty when none
/// is within the allowed distance. A word or candidate longer than 64 characters is near to
/// nothing.
std::string_view nearestTo(std::string_view word, std::span<std::string_view const> candidates,
                           std::size_t allowed);

} // namespace KeldaDatabase
