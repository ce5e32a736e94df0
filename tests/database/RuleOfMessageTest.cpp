// Which rule each message of the library belongs to, whatever names stand in it.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "database/findings/Rules.h"

namespace {

using namespace KeldaDatabase;

struct MessageRow {
    std::string_view before; // what comes before a name in the message, and what behind it
    std::string_view behind;
    RuleId rule;
};

constexpr MessageRow messages[] = {
    {"Cannot open directory ", "", RuleId::directoryUnreadable},
    {"Glob threw exception 1 while searching for file ", "/* ", RuleId::directoryUnreadable},
    {"Cannot openat file ", " in /usr/lib64/preinit", RuleId::fileUnreadable},
    {"Cannot openat file Fan in ", "", RuleId::fileUnreadable},
    {"Cannot fdopen file ", " in /usr/lib64/preinit", RuleId::fileUnreadable},
    {"Cannot read file ", ": Input/output error", RuleId::fileUnreadable},
    {"Cannot look ahead in file ", ": Illegal seek", RuleId::fileUnreadable},
    {"Unable to fopen preinit profile: ", "", RuleId::extraPreinitUnreadable},
    {"syntax error: multi-line comment: ", " \\\n", RuleId::commentContinued},
    {"syntax error: additional characters after \\: ", "\\ ", RuleId::textAfterBackslash},
    {"syntax error: NUL character in line after: ", "", RuleId::nulCharacter},
    {"preinit syntax error: ", "", RuleId::preinitSyntax},
    {"invalid attribute: ", "", RuleId::attributeUnknown},
    {"Redefining attribute for ",
     "\nOld Attribute: createOnMount\nNew Attribute: ", RuleId::attributeRedefined},
    {"non-cell tokens in non-createOnMount path: ", "", RuleId::tokenNeedsCreateOnMount},
    {"alias found in preinit CONFIG path: ", "", RuleId::configPathWithToken},
    {"path ",
     " may not have both CONFIG and createOnMount. All config paths must be present at startup",
     RuleId::configCreateOnMount},
    {"Syntax error in included file: '",
     "'. One may only specify mount paths or the activeMount keyword in an included file. For more "
     "information see REF482",
     RuleId::notAllowedInInclude},
    {"Cannot find profile to include matching ", "", RuleId::includeNotFound},
    {"No type info for path '",
     "' found in preinit files while loading profile file because the path was not loaded from any "
     "preinit...",
     RuleId::pathWithoutType},
    {"No type info for path '", "' found in preinit files while loading profile file...",
     RuleId::pathWithoutType},
    {"cannot expand path", "", RuleId::pathTooLong},
    {"Path buffer too small to expand alias from '%a'to '", "' in a/%a", RuleId::pathTooLong},
    {"Path buffer too small to expand alias from '%a'to 'b' in ", "", RuleId::pathTooLong},
    {"recordMountArgs: types don't match for path '", "': 'Fen::Dir'  'T'", RuleId::typesDiffer},
    {"recordMountArgs: types don't match for path 'a': '", "'  'T'", RuleId::typesDiffer},
    {"Encountered unknown mount flag ", "", RuleId::flagUnknown},
    {"c and D flags cannot be used simultaneously on mount path", "", RuleId::flagsCAndD},
    {"d flag must be used with c flag on same mount path", "", RuleId::flagDWithoutC},
    {"Encountered invalid connection flag ", "", RuleId::connectionFlagUnknown},
    {"syntax error: '",
     "': lhs must specify key name matched by '%[a-zA-Z0-9_].*' with no leading '_' or digit after "
     "the %.",
     RuleId::aliasNameInvalid},
    {"No such alias defined: '", "'", RuleId::aliasUndefined},
    {"missing ':' after '?' in ternary alias", "", RuleId::aliasChoiceIncomplete},
    {"Priority 0 specified for mount group ", " out of range [1, 99]", RuleId::groupPriorityRange},
    {"Cannot use reserved mount group name ", "", RuleId::groupNameReserved},
    {"Found the 'Condition' keyword, but we've already parsed the 'activeMount' keyword for agent ",
     ", meaning this condition will be ignored under active mounts. See REF482 for how to convert "
     "conditions to active mounts.",
     RuleId::conditionWithActiveMount},
    {"Found the 'activeMount' keyword, but we've already parsed a passive mount-only keyword (one "
     "of 'Condition' or 'ConditionBlocker') which are ignored for active mount agents. See REF482 "
     "for how to convert these keywords to active mounts.",
     "", RuleId::conditionWithActiveMount},
    {"'matchActiveName' keyword requires 'activeMount' keyword", "", RuleId::matchActiveNameAlone},
    {"Profile '",
     "' contains 'matchActiveName' keyword but the agentName line contains '$' (consuming token). "
     "The 'matchActiveName' keyword is incompatible with consuming tokens in the agentName line.",
     RuleId::matchActiveNameWithRest},
    // Answers to what programs ask, and not about files.
    {"getType: no type info for path ", "", RuleId::otherFault},
    {"getPreinitAttr: no attr info for path ", "", RuleId::otherFault},
    {"getPreinitAttr: attributes are indexed by plain paths, including tokens, not wildcards", "",
     RuleId::otherFault},
    {"mountInfo: no such path: ", "", RuleId::otherFault},
    {"mountGroupPaths: no such mount group: ", "", RuleId::otherFault},
    {"profileFilePaths: no such file: ", "", RuleId::otherFault},
    {"profileFilePaths: no such files: ", "", RuleId::otherFault},
    {"reloaded agent ", " with override a rather than b after doInit()", RuleId::otherFault},
    {"Attempting to overwrite ConfigInfo for path ",
     ". Old: (config, explicit), New: (config, child)", RuleId::otherFault},
    {"Attempting to update flags for path ", ", which does not exist in MountFileInfo",
     RuleId::otherFault},
    {"Attempting to update flags for path ",
     ", which is present in a mount profile (not a dynamic path)", RuleId::otherFault},
    {"", "", RuleId::otherFault},
};

std::string_view nameOfRule(RuleId rule) {
    return ruleOf(rule).name;
}

TEST(RuleOfMessage, IsToldByTheMessagesOwnWords) {
    for (auto const& [before, behind, rule] : messages) {
        auto const message = std::string(before) + "name" + std::string(behind);
        EXPECT_EQ(nameOfRule(ruleOfMessage(message)), nameOfRule(rule)) << message;
    }
}

// Names are taken from files, and may look like anything that a message could hold.
constexpr std::string_view oddNames[] = {
    "",
    " ",
    "'",
    "'': '",
    "\n",
    "a\nNew Attribute: b",
    "{}",
    "%s%n",
    "\x01\xff\xfe",
    "path",
    "Priority 0",
    "No type info for path 'a'",
    "syntax error: 'a'",
    "'matchActiveName' keyword requires 'activeMount' keyword",
    " may not have both CONFIG and createOnMount.",
    " out of range [1, 99]",
    "' keyword, but we've already parsed ",
    "' contains 'matchActiveName' keyword but ",
};

TEST(RuleOfMessage, DoesNotHangOnTheNamesInIt) {
    for (auto const& [before, behind, rule] : messages)
        for (auto const name : oddNames) {
            if (before.empty())
                continue;
            auto const message = std::string(before) + std::string(name) + std::string(behind);
            EXPECT_EQ(nameOfRule(ruleOfMessage(message)), nameOfRule(rule)) << message;
        }
}

TEST(RuleOfMessage, OfALineOfNoKindIsUnknownKeyword) {
    // The parser shows such a line without its blanks.
    for (std::string const line : {"MountGroups:fans", "nonsense", "lamp/front,Lamp::Colour",
                                   "agentName:Second", "'", "''", ":lhsmustspecifykeynamematchedby",
                                   "activeMoun", "activeMount", "noDefaultMountGrou", "active"})
        EXPECT_EQ(ruleOfMessage("syntax error: '" + line + "'"), RuleId::unknownKeyword) << line;
}

TEST(RuleOfMessage, OfAKeywordWithMoreBehindItIsTextAfterKeyword) {
    for (std::string const line :
         {"activeMount:yes", "ACTIVEMOUNT:", "activeMount'", "activeMounts",
          "matchActiveName:", "MatchActiveName,x", "noDefaultMountGroup:1", "nodefaultmountgroup'"})
        EXPECT_EQ(ruleOfMessage("syntax error: '" + line + "'"), RuleId::textAfterKeyword) << line;
}

TEST(RuleOfMessage, IsTakenFromTheBeginningOnly) {
    for (std::string_view const message :
         {"Kelda: No type info for path 'a'", " Cannot open directory a", "path a", "Profile 'a'",
          "Priority 0", "Found the 'x", "cannot open directory a"})
        EXPECT_EQ(ruleOfMessage(message), RuleId::otherFault) << message;
}

TEST(FollowOns, AreWhatIsSaidOfALineBesideItsFault) {
    for (std::string_view const message :
         {"Invalid flags w in path a", "Invalid root flags x", "Invalid connection flags R",
          "Invalid preinit path attr"}) {
        EXPECT_TRUE(isFollowOn(message)) << message;
        EXPECT_EQ(nameOfRule(ruleOfMessage(message)), "other-fault") << message;
    }
}

TEST(FollowOns, AreNoneOfTheOtherMessages) {
    for (auto const& [before, behind, rule] : messages)
        for (std::string_view const name : {"", "Invalid flags w in path a"})
            EXPECT_FALSE(!before.empty() &&
                         isFollowOn(std::string(before) + std::string(name) + std::string(behind)))
                << before;
}

} // namespace
