#include "RulesManual.h"

#include <string_view>

#include <fmt/format.h>

#include "Rules.h"

namespace KeldaDatabase {
namespace {

constexpr std::string_view head = R"(kelda-rules(7) "KeldaBase" "Miscellaneous Information Manual"

# NAME

kelda-rules - what can be wrong in the preinit files and mount profiles of a device

# DESCRIPTION

*kelda check* tells what is wrong in the files of a device. Each finding belongs to one of the rules
on this page, which has a name and a severity. Names do not change, and none is given to another
rule later.

*error*
	An agent that reads the line does not start.

*warning*
	The files load, but not as their writer will think.

*note*
	Harmless, but probably not meant.

The examples are small devices. The text of each file stands behind a line "== preinit/FILE" or
"== profiles/FILE".

)";

constexpr std::string_view loading = R"(# WHAT LOADING REPORTS

These faults are found by the parser that agents use as well.

)";

constexpr std::string_view further = R"(# WHAT THE FURTHER CHECKS FIND

Loading says nothing of these.

)";

constexpr std::string_view tail = R"(# SEE ALSO

*kelda*(1), *kelda-preinit*(5), *kelda-profile*(5)
)";

constexpr RuleId firstFurtherRule = RuleId::agentMatchedTwice;

bool isOneOf(std::string_view characters, char c) {
    return characters.find(c) != std::string_view::npos;
}

// What is no markup, wherever a line begins.
std::string escaped(std::string_view text) {
    constexpr std::string_view markup = "\\_*`";
    constexpr std::string_view markupAtLineStart = "#-.'|[]:;<>!+\t ";
    std::string result;
    bool startsLine = true;
    for (char const c : text) {
        if (isOneOf(markup, c) || (startsLine && isOneOf(markupAtLineStart, c)))
            result += '\\';
        result += c;
        startsLine = c == '\n';
    }
    return result;
}

std::string literalBlock(std::string_view text) {
    std::string block = "```\n";
    for (char const c : text) {
        if (c == '\\')
            block += '\\';
        block += c;
    }
    return block + "```\n\n";
}

std::string example(std::string_view heading, std::string_view device) {
    if (device.empty())
        return {};
    return fmt::format("{}\n\n{}", heading, literalBlock(device));
}

std::string section(Rule const& rule) {
    return fmt::format("## {}\n\n*{}*: {}.\n\n{}\n\n", rule.name, nameOf(rule.severity),
                       escaped(rule.summary), escaped(rule.explanation)) +
           example("Wrong:", rule.failing) + example("Right:", rule.passing);
}

} // namespace

std::string rulesManual() {
    std::string page(head);
    page += loading;
    for (auto const& rule : allRules()) {
        if (rule.id == firstFurtherRule)
            page += further;
        page += section(rule);
    }
    return page + std::string(tail);
}

} // namespace KeldaDatabase
