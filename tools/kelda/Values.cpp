#include "Values.h"

#include <algorithm>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "database/findings/Rules.h"

namespace KeldaTool {
namespace {

std::string refuseEmpty(std::string const& value) {
    return value.empty() ? "must not be empty" : "";
}

std::string refuseLeadingSlash(std::string const& path) {
    return path.starts_with('/') ? "must not begin with '/', as paths are relative to the root"
                                 : "";
}

// "a", "a or b", "a, b or c"
std::string alternatives(std::vector<std::string> const& words) {
    if (words.size() == 1)
        return words.front();
    return fmt::format("{} or {}", fmt::join(words.begin(), words.end() - 1, ", "), words.back());
}

} // namespace

void mustNotBeEmpty(CLI::Option& option) {
    option.check(CLI::Validator(refuseEmpty, ""));
}

void mustBeOneOf(CLI::Option& option, std::vector<std::string> const& words) {
    auto const refuseOthers = [words](std::string const& value) {
        bool const isKnown = std::find(words.begin(), words.end(), value) != words.end();
        return isKnown ? std::string()
                       : fmt::format("must be {}, not '{}'", alternatives(words), value);
    };
    option.check(CLI::Validator(refuseOthers, ""))
        ->type_name(fmt::format("{}", fmt::join(words, "|")));
}

void mustBeRule(CLI::Option& option) {
    auto const refuseOthers = [](std::string const& value) {
        return KeldaDatabase::ruleNamed(value) != nullptr
                   ? std::string()
                   : fmt::format("there is no rule '{}'; 'kelda explain --rule list' shows all",
                                 value);
    };
    option.check(CLI::Validator(refuseOthers, ""));
}

void mustBeRelativePath(CLI::Option& option) {
    mustNotBeEmpty(option);
    option.check(CLI::Validator(refuseLeadingSlash, ""));
}

} // namespace KeldaTool
