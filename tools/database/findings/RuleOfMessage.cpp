// Which rule a message of the parser belongs to: the messages are told apart by how they begin.
#include "Rules.h"

#include <algorithm>

namespace KeldaDatabase {
namespace {

struct MessageStart {
    std::string_view start;
    std::string_view contained; // also in the message; empty for anything
    RuleId rule;
};

// The first row that fits wins.
constexpr MessageStart messageStarts[] = {
    {"Cannot open directory ", "", RuleId::directoryUnreadable},
    {"Glob threw exception ", "", RuleId::directoryUnreadable},
    {"Cannot openat file ", "", RuleId::fileUnreadable},
    {"Cannot fdopen file ", "", RuleId::fileUnreadable},
    {"Cannot read file ", "", RuleId::fileUnreadable},
    {"Cannot look ahead in file ", "", RuleId::fileUnreadable},
    {"Unable to fopen preinit profile: ", "", RuleId::extraPreinitUnreadable},
    {"syntax error: multi-line comment: ", "", RuleId::commentContinued},
    {"syntax error: additional characters after \\: ", "", RuleId::textAfterBackslash},
    {"syntax error: NUL character in line after: ", "", RuleId::nulCharacter},
    {"preinit syntax error: ", "", RuleId::preinitSyntax},
    {"invalid attribute: ", "", RuleId::attributeUnknown},
    {"Redefining attribute for ", "", RuleId::attributeRedefined},
    {"non-cell tokens in non-createOnMount path: ", "", RuleId::tokenNeedsCreateOnMount},
    {"alias found in preinit CONFIG path: ", "", RuleId::configPathWithToken},
    {"path ", " may not have both CONFIG and createOnMount.", RuleId::configCreateOnMount},
    {"syntax error: '", "': lhs must specify key name matched by ", RuleId::aliasNameInvalid},
    {"syntax error: '", "", RuleId::unknownKeyword},
    {"Syntax error in included file: '", "", RuleId::notAllowedInInclude},
    {"Cannot find profile to include matching ", "", RuleId::includeNotFound},
    {"No type info for path '", "", RuleId::pathWithoutType},
    {"Path buffer too small to expand alias ", "", RuleId::pathTooLong},
    {"cannot expand path", "", RuleId::pathTooLong},
    {"recordMountArgs: types don't match for path '", "", RuleId::typesDiffer},
    {"Encountered unknown mount flag ", "", RuleId::flagUnknown},
    {"c and D flags cannot be used simultaneously ", "", RuleId::flagsCAndD},
    {"d flag must be used with c flag ", "", RuleId::flagDWithoutC},
    {"Encountered invalid connection flag ", "", RuleId::connectionFlagUnknown},
    {"No such alias defined: '", "", RuleId::aliasUndefined},
    {"missing ':' after '?' in ternary alias", "", RuleId::aliasChoiceIncomplete},
    {"Priority ", " out of range [", RuleId::groupPriorityRange},
    {"Cannot use reserved mount group name ", "", RuleId::groupNameReserved},
    {"Found the '", " keyword, but we've already parsed ", RuleId::conditionWithActiveMount},
    {"'matchActiveName' keyword requires 'activeMount' keyword", "", RuleId::matchActiveNameAlone},
    {"Profile '", "' contains 'matchActiveName' keyword but ", RuleId::matchActiveNameWithRest},
};

constexpr std::string_view followOns[] = {
    "Invalid flags ", "Invalid root flags ", "Invalid connection flags ",
    "Invalid preinit path attr", // while "Redefining attribute" is put together
};

// Without regard to case, as keywords are compared.
bool startsWithKeyword(std::string_view text, std::string_view keyword) {
    auto const same = [](char a, char b) {
        auto const lower = [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; };
        return lower(a) == lower(b);
    };
    return text.size() > keyword.size() &&
           std::equal(keyword.begin(), keyword.end(), text.begin(), same);
}

// Keywords that stand alone on their line.
constexpr std::string_view wholeLineKeywords[] = {"activeMount", "matchActiveName",
                                                  "noDefaultMountGroup"};

} // namespace

RuleId ruleOfMessage(std::string_view message) {
    auto const* const row = std::ranges::find_if(messageStarts, [&](MessageStart const& candidate) {
        return message.starts_with(candidate.start) &&
               message.find(candidate.contained) != std::string_view::npos;
    });
    if (row == std::end(messageStarts))
        return RuleId::otherFault;
    if (row->rule != RuleId::unknownKeyword)
        return row->rule;
    auto const line = message.substr(row->start.size());
    bool const isMore = std::ranges::any_of(wholeLineKeywords, [line](std::string_view keyword) {
        return startsWithKeyword(line, keyword) && line.substr(keyword.size()) != "'";
    });
    return isMore ? RuleId::textAfterKeyword : RuleId::unknownKeyword;
}

bool isFollowOn(std::string_view message) {
    return std::ranges::any_of(
        followOns, [message](std::string_view start) { return message.starts_with(start); });
}

} // namespace KeldaDatabase
