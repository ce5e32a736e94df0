// Which letters a flag text may hold, and the rules between them.
#pragma once

#include <string_view>

namespace Kelda::FlagVocabulary {

// Letters that a path line may use, that the library itself adds, and that a connectionFlags: line
// may use (path lines accept these too).
constexpr std::string_view mountLetters = "wrcifSDdOAKL";
constexpr std::string_view internalLetters = "tpCney";
constexpr std::string_view connectionLetters = "SNAE";

enum class LetterKind { valid, internal, unknown };

// What a letter is on a connectionFlags: line or, with isConnectionFlags false, elsewhere.
LetterKind kindOf(char letter, bool isConnectionFlags);

enum class RuleBreach { none, cWithD, dWithoutC };

// The breach, if any, of the rules between the letters c, D and d. Internal letters and letters
// that are unknown where they stand do not count.
RuleBreach breachOf(std::string_view flags, bool isConnectionFlags);

} // namespace Kelda::FlagVocabulary
