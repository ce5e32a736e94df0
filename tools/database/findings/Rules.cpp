// The table of rules, put together from its parts, and the look-ups in it.
#include "Rules.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

#include "RuleTableOfChecks.h"
#include "RuleTableOfMounts.h"
#include "RuleTableOfPreinits.h"
#include "RuleTableOfReading.h"
#include "RuleTableOfSettings.h"

namespace KeldaDatabase {
namespace {

constexpr auto ruleCount = static_cast<std::size_t>(RuleId::suppressionMalformed) + 1;

template <std::size_t... sizes>
constexpr auto joined(Rule const (&... parts)[sizes]) {
    std::array<Rule, (sizes + ...)> rules{};
    std::size_t count = 0;
    auto const append = [&](auto const& part) {
        for (auto const& rule : part)
            rules[count++] = rule;
    };
    (append(parts), ...);
    return rules;
}

constexpr auto table =
    joined(rulesOfReading, rulesOfPreinits, rulesOfMounts, rulesOfSettings, rulesOfChecks);

constexpr bool isInOrder() {
    for (std::size_t i = 0; i < table.size(); ++i)
        if (table[i].id != static_cast<RuleId>(i))
            return false;
    return true;
}

constexpr bool isKebabCase(std::string_view name) {
    bool afterHyphen = true; // a name may neither begin nor end with one
    for (char const c : name) {
        bool const isHyphen = c == '-';
        if (isHyphen ? afterHyphen : c < 'a' || c > 'z')
            return false;
        afterHyphen = isHyphen;
    }
    return !afterHyphen;
}

constexpr bool namesAreRight() {
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (!isKebabCase(table[i].name))
            return false;
        for (std::size_t k = 0; k < i; ++k)
            if (table[k].name == table[i].name)
                return false;
    }
    return true;
}

static_assert(table.size() == ruleCount && isInOrder(), "row i is the rule with the number i");
static_assert(namesAreRight(), "names are in kebab case, and no two are the same");

// "{1100*x}" at the start of a text: how often which character, and how long the notation is.
struct Repetition {
    std::size_t count = 0;
    char character = '\0';
    std::size_t length = 0; // 0 when the text begins with something else
};

Repetition repetitionAt(std::string_view text) {
    Repetition repetition;
    if (!text.starts_with('{'))
        return {};
    auto const* const end = text.data() + text.size();
    auto const [rest, error] = std::from_chars(text.data() + 1, end, repetition.count);
    if (error != std::errc() || end - rest < 3 || rest[0] != '*' || rest[2] != '}')
        return {};
    repetition.character = rest[1];
    repetition.length = static_cast<std::size_t>(rest + 3 - text.data());
    return repetition;
}

std::string writtenOut(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        auto const repetition = repetitionAt(text);
        if (repetition.length == 0)
            result += text.front();
        else
            result.append(repetition.count, repetition.character);
        text.remove_prefix(std::max<std::size_t>(repetition.length, 1));
    }
    return result;
}

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
    return found == table.end() ? nullptr : found;
}

std::vector<ExampleFile> filesOf(std::string_view example) {
    constexpr std::string_view heading = "== ";
    std::vector<ExampleFile> files;
    while (!example.empty()) {
        auto const end = example.find('\n');
        auto const length = end == std::string_view::npos ? example.size() : end + 1;
        auto const line = example.substr(0, length);
        if (line.starts_with(heading))
            files.push_back(
                {std::string(example.substr(heading.size(), end - heading.size())), ""});
        else if (!files.empty())
            files.back().text += writtenOut(line);
        example.remove_prefix(length);
    }
    return files;
}

} // namespace KeldaDatabase
