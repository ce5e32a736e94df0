#include "Keywords.h"

#include <algorithm>
#include <array>

#include <strings.h>

namespace KeldaDatabase {
namespace {

using enum FileFamily;
using enum KeywordValue;

constexpr std::array table{
    LanguageKeyword{"agentName:", profile, agentName, "the agents that load the profile"},
    LanguageKeyword{"activeMount", profile, nothing, "the agent mounts actively", true},
    LanguageKeyword{"alias:", profile, alias, "a name for a piece of a path"},
    LanguageKeyword{"MountGroup:", profile, group, "the group of the paths that follow"},
    LanguageKeyword{"noDefaultMountGroup", profile, nothing, "the agent has no default group"},
    LanguageKeyword{"matchActiveName", profile, nothing,
                    "\"-Active-\" agents load the profile, too"},
    LanguageKeyword{"subAgent:", profile, name, "a further agent that this one serves"},
    LanguageKeyword{"Condition:", profile, condition, "when the paths that follow are mounted"},
    LanguageKeyword{"ConditionBlocker:", profile, condition,
                    "when the paths that follow are not mounted"},
    LanguageKeyword{"rootFlags:", profile, flags, "the flags of the root"},
    LanguageKeyword{"connectionFlags:", profile, flags, "the flags of the connection"},
    LanguageKeyword{"Include:", profile, name, "reads the paths of other files"},
    LanguageKeyword{"CONFIG:", preinit, path, "the path is a config path"},
};

constexpr std::array attributes{
    Word{"createOnMount", "the path is created when an agent mounts it"},
    Word{"createOnStandby", "the path is created on the standby side"},
};

constexpr std::array tokens{
    Word{"%cellPath", "\"cell/%cellId\""},
    Word{"%peerCellPath", "\"cell/%peerCellId\""},
    Word{"%cellId", "the id of this cell"},
    Word{"%peerCellId", "the id of the peer cell"},
    Word{"%sysname", "the name of the system"},
    Word{"%sliceId", "\"FixedSystem\""},
    Word{"%agentString", "the agent string that loads the profile"},
};

bool begins(std::string_view line, LanguageKeyword const& keyword) {
    auto const& word = keyword.spelling;
    bool const fits =
        keyword.value == nothing ? line.size() == word.size() : line.size() >= word.size();
    return fits && strncasecmp(line.data(), word.data(), word.size()) == 0;
}

} // namespace

std::span<LanguageKeyword const> keywords() {
    return table;
}

LanguageKeyword const* keywordOf(std::string_view line, FileFamily family) {
    auto const found = std::find_if(table.begin(), table.end(), [&](auto const& keyword) {
        return keyword.family == family && begins(line, keyword);
    });
    return found == table.end() ? nullptr : &*found;
}

std::span<Word const> preinitAttributes() {
    return attributes;
}

std::span<Word const> predefinedTokens() {
    return tokens;
}

std::string_view mountFlagLetters() {
    return "wrcifSDdOAKL";
}

std::string_view internalFlagLetters() {
    return "tpCney";
}

std::string_view connectionFlagLetters() {
    return "SNAE";
}

} // namespace KeldaDatabase
