#include "check/CheckSelection.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "Values.h"

namespace KeldaTool {
namespace {

void addNamesOption(CLI::App& command, char const* name, std::vector<std::string>& rules,
                    char const* description) {
    auto* const option = command.add_option(name, rules, description);
    option->type_name("NAME,...")->delimiter(',')->allow_extra_args(false);
    mustBeRule(*option);
}

} // namespace

void CheckSelection::addTo(CLI::App& command) {
    addNamesOption(command, "--select", selected_, "Tell only what these rules find; repeatable");
    addNamesOption(command, "--ignore", ignored_, "Leave out what these rules find; repeatable");
}

bool CheckSelection::holds(KeldaDatabase::RuleId rule) const {
    auto const name = KeldaDatabase::ruleOf(rule).name;
    auto const among = [name](std::vector<std::string> const& names) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    return (selected_.empty() || among(selected_)) && !among(ignored_);
}

} // namespace KeldaTool
