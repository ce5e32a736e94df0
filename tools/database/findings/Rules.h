// Everything that can be wrong in the files of a device: a lasting name, how grave it is, and a
// page that explains it. What loading reports and what the further checks find stand in one table.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace KeldaDatabase {

enum class Severity : std::uint8_t {
    note,    ///< harmless, but probably not meant
    warning, ///< works, but not as the writer will think
    error    ///< an agent that reads it does not start
};

/// "note", "warning" or "error".
std::string_view nameOf(Severity severity);

enum class RuleId : std::uint8_t {
    // What loading reports: files.
    directoryUnreadable,
    fileUnreadable,
    extraPreinitUnreadable,
    // Lines of both families.
    commentContinued,
    textAfterBackslash,
    nulCharacter,
    lineTooLong,
    // Preinit files.
    preinitSyntax,
    attributeUnknown,
    attributeRedefined,
    tokenNeedsCreateOnMount,
    configPathWithToken,
    configCreateOnMount,
    // Profiles.
    unknownKeyword,
    textAfterKeyword,
    notAllowedInInclude,
    includeNotFound,
    pathWithoutType,
    pathTooLong,
    typesDiffer,
    flagUnknown,
    flagsCAndD,
    flagDWithoutC,
    connectionFlagUnknown,
    aliasNameInvalid,
    aliasUndefined,
    aliasChoiceIncomplete,
    groupPriorityRange,
    groupNameReserved,
    conditionWithActiveMount,
    matchActiveNameAlone,
    matchActiveNameWithRest,
    otherFault, // a fault that is none of the above

    // What the further checks find.
    agentMatchedTwice,
    orphanFile,
    includeMatchesNothing,
    aliasUnused,
    aliasRedefined,
    pathMountedTwice,
    typeColumnDiffers,
    groupEmpty,
    preinitTypeRedefined,
    preinitNeverMounted,
    readNeverWritten,
    namesDifferInCase,
    suppressionUnused,
    suppressionMalformed,
};

/// One row of the table.
struct Rule {
    RuleId id;
    std::string_view name; ///< in kebab case; it never changes, and is never given to another rule
    Severity severity;
    std::string_view summary; ///< one line, no full stop
    /// Why it matters and what to do: paragraphs separated by empty lines.
    std::string_view explanation;
    /// A device that has the finding and one that has not: the text of each file behind a line
    /// "== preinit/NAME" or "== profiles/NAME". "{1100*x}" stands for 1100 times "x". Both are
    /// empty where no text can show what is wrong.
    std::string_view failing;
    std::string_view passing;
};

/// The table, in the order of RuleId.
std::span<Rule const> allRules();
Rule const& ruleOf(RuleId id);
/// Null when there is none of this name.
Rule const* ruleNamed(std::string_view name);

/// A file of an example.
struct ExampleFile {
    std::string name; ///< with its folder: "preinit/NAME" or "profiles/NAME"
    std::string text; ///< as it is to be written, repetitions written out
};

/// The files of an example, Rule::failing or Rule::passing, in its order.
std::vector<ExampleFile> filesOf(std::string_view example);

/// The rule that a message of the parser belongs to.
RuleId ruleOfMessage(std::string_view message);

/// Whether a message only says what follows from another fault of the same line.
bool isFollowOn(std::string_view message);

} // namespace KeldaDatabase
