// The table of rules.
#include "Rules.h"

#include <algorithm>

namespace KeldaDatabase {
namespace {

constexpr Rule table[] = {
    {RuleId::directoryUnreadable, "directory-unreadable", Severity::error, "", "", "", ""},
    {RuleId::fileUnreadable, "file-unreadable", Severity::error, "", "", "", ""},
    {RuleId::extraPreinitUnreadable, "extra-preinit-unreadable", Severity::error, "", "", "", ""},
    {RuleId::commentContinued, "comment-continued", Severity::error, "", "", "", ""},
    {RuleId::textAfterBackslash, "text-after-backslash", Severity::error, "", "", "", ""},
    {RuleId::nulCharacter, "nul-character", Severity::error, "", "", "", ""},
    {RuleId::lineTooLong, "line-too-long", Severity::error, "", "", "", ""},
    {RuleId::preinitSyntax, "preinit-syntax", Severity::error, "", "", "", ""},
    {RuleId::attributeUnknown, "attribute-unknown", Severity::error, "", "", "", ""},
    {RuleId::attributeRedefined, "attribute-redefined", Severity::error, "", "", "", ""},
    {RuleId::tokenNeedsCreateOnMount, "token-needs-create-on-mount", Severity::error, "", "", "",
     ""},
    {RuleId::configPathWithToken, "config-path-with-token", Severity::error, "", "", "", ""},
    {RuleId::configCreateOnMount, "config-create-on-mount", Severity::error, "", "", "", ""},
    {RuleId::unknownKeyword, "unknown-keyword", Severity::error, "", "", "", ""},
    {RuleId::textAfterKeyword, "text-after-keyword", Severity::error, "", "", "", ""},
    {RuleId::notAllowedInInclude, "not-allowed-in-include", Severity::error, "", "", "", ""},
    {RuleId::includeNotFound, "include-not-found", Severity::error, "", "", "", ""},
    {RuleId::pathWithoutType, "path-without-type", Severity::error, "", "", "", ""},
    {RuleId::pathTooLong, "path-too-long", Severity::error, "", "", "", ""},
    {RuleId::typesDiffer, "types-differ", Severity::error, "", "", "", ""},
    {RuleId::flagUnknown, "flag-unknown", Severity::error, "", "", "", ""},
    {RuleId::flagsCAndD, "flags-c-and-d", Severity::error, "", "", "", ""},
    {RuleId::flagDWithoutC, "flag-d-without-c", Severity::error, "", "", "", ""},
    {RuleId::connectionFlagUnknown, "connection-flag-unknown", Severity::error, "", "", "", ""},
    {RuleId::aliasNameInvalid, "alias-name-invalid", Severity::error, "", "", "", ""},
    {RuleId::aliasUndefined, "alias-undefined", Severity::error, "", "", "", ""},
    {RuleId::aliasChoiceIncomplete, "alias-choice-incomplete", Severity::error, "", "", "", ""},
    {RuleId::groupPriorityRange, "group-priority-range", Severity::error, "", "", "", ""},
    {RuleId::groupNameReserved, "group-name-reserved", Severity::error, "", "", "", ""},
    {RuleId::conditionWithActiveMount, "condition-with-active-mount", Severity::error, "", "", "",
     ""},
    {RuleId::matchActiveNameAlone, "match-active-name-alone", Severity::error, "", "", "", ""},
    {RuleId::matchActiveNameWithRest, "match-active-name-with-rest", Severity::error, "", "", "",
     ""},
    {RuleId::otherFault, "other-fault", Severity::error, "", "", "", ""},
    {RuleId::agentMatchedTwice, "agent-matched-twice", Severity::warning, "", "", "", ""},
    {RuleId::orphanFile, "orphan-file", Severity::warning, "", "", "", ""},
    {RuleId::includeMatchesNothing, "include-matches-nothing", Severity::warning, "", "", "", ""},
    {RuleId::aliasUnused, "alias-unused", Severity::note, "", "", "", ""},
    {RuleId::aliasRedefined, "alias-redefined", Severity::warning, "", "", "", ""},
    {RuleId::pathMountedTwice, "path-mounted-twice", Severity::warning, "", "", "", ""},
    {RuleId::typeColumnDiffers, "type-column-differs", Severity::warning, "", "", "", ""},
    {RuleId::groupEmpty, "group-empty", Severity::note, "", "", "", ""},
    {RuleId::preinitTypeRedefined, "preinit-type-redefined", Severity::warning, "", "", "", ""},
    {RuleId::preinitNeverMounted, "preinit-never-mounted", Severity::note, "", "", "", ""},
    {RuleId::readNeverWritten, "read-never-written", Severity::note, "", "", "", ""},
    {RuleId::namesDifferInCase, "names-differ-in-case", Severity::warning, "", "", "", ""},
    {RuleId::suppressionUnused, "suppression-unused", Severity::warning, "", "", "", ""},
    {RuleId::suppressionMalformed, "suppression-malformed", Severity::warning, "", "", "", ""},
};

} // namespace

std::string_view nameOf(Severity severity) {
    constexpr std::string_view names[] = {"note", "warning", "error"};
    return names[static_cast<std::size_t>(severity)];
}

std::span<Rule const> allRules() {
    return table;
}

Rule const& ruleOf(RuleId id) {
    return table[static_cast<std::size_t>(id)];
}

Rule const* ruleNamed(std::string_view name) {
    auto const* const found = std::ranges::find(table, name, &Rule::name);
    return found == std::end(table) ? nullptr : found;
}

} // namespace KeldaDatabase
