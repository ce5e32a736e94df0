// The words of both file languages, for whoever shows or writes them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "database/Device.h"

namespace KeldaDatabase {

/// What follows a word on its line.
enum class KeywordValue : std::uint8_t {
    nothing,   ///< the word is the whole line
    agentName, ///< "agentName: Fan-%slot"
    alias,     ///< "alias: %name = expression"
    group,     ///< "MountGroup: name, priority"
    name,      ///< a name or a pattern of file names
    condition, ///< free text, of which blanks are a part
    flags,     ///< flag letters
    path       ///< a preinit line, before which the word stands
};

struct LanguageKeyword {
    std::string_view spelling; ///< as these files spell it, with its colon; any case means the same
    FileFamily family;
    KeywordValue value;
    std::string_view meaning; ///< in a few words
    bool isAllowedInIncludedFile = false;
};

/// The keywords that begin a line, of profiles first.
std::span<LanguageKeyword const> keywords();

/// The keyword that begins this line, from which all blanks were taken; null for none. A word that
/// is a whole line must be the whole line.
LanguageKeyword const* keywordOf(std::string_view line, FileFamily family);

struct Word {
    std::string_view spelling;
    std::string_view meaning;
};

/// The attributes of preinit lines.
std::span<Word const> preinitAttributes();
/// The aliases that every profile has, and the short forms of paths.
std::span<Word const> predefinedTokens();
/// The letters of mount flags that a profile may write, and those of connection flags.
std::string_view mountFlagLetters();
std::string_view internalFlagLetters();
std::string_view connectionFlagLetters();

} // namespace KeldaDatabase
