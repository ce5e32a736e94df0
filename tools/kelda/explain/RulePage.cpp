#include "explain/RulePage.h"

#include <string_view>

#include <fmt/format.h>

#include "Table.h"

namespace KeldaTool {
namespace {

// Each line that is not empty, moved to the right.
std::string indented(std::string_view text) {
    std::string result;
    bool startsLine = true;
    for (char const c : text) {
        if (startsLine && c != '\n')
            result += "    ";
        result += c;
        startsLine = c == '\n';
    }
    return result;
}

std::string example(std::string_view heading, std::string_view device) {
    return device.empty() ? std::string() : fmt::format("\n{}\n\n{}", heading, indented(device));
}

} // namespace

std::string rulePage(KeldaDatabase::Rule const& rule) {
    return fmt::format("{} ({})\n{}\n\n{}\n", rule.name, nameOf(rule.severity), rule.summary,
                       rule.explanation) +
           example("Wrong:", rule.failing) + example("Right:", rule.passing);
}

std::string ruleList() {
    Table table({"RULE", "SEVERITY", "SUMMARY"});
    for (auto const& rule : KeldaDatabase::allRules())
        table.addRow({std::string(rule.name), std::string(nameOf(rule.severity)),
                      std::string(rule.summary)});
    return table.text(false);
}

} // namespace KeldaTool
