#include "check/CheckTextParts.h"

#include <algorithm>

#include <fmt/format.h>

#include "Text.h"

namespace KeldaTool {
namespace {

constexpr std::size_t namedOfMany = 3;

std::string_view withoutNewlinesAtEnd(std::string_view text) {
    while (text.ends_with('\n'))
        text.remove_suffix(1);
    return text;
}

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    for (;;) {
        auto const end = text.find('\n');
        lines.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return lines;
        text.remove_prefix(end + 1);
    }
}

// "A, B and C"; "A, B, C and 4 more".
std::string listed(std::vector<std::string> const& names) {
    // To name the fourth takes no more room than to count it.
    auto const named = names.size() <= namedOfMany + 1 ? names.size() : namedOfMany;
    std::string text;
    for (std::size_t i = 0; i < named; ++i) {
        if (i > 0)
            text += i + 1 == names.size() ? " and " : ", ";
        text += names[i];
    }
    if (named < names.size())
        text += fmt::format(" and {} more", names.size() - named);
    return text;
}

std::string listedAfter(std::string_view words, std::vector<std::string> const& names) {
    return names.empty() ? std::string() : fmt::format("{} {}", words, listed(names));
}

std::string blanksRemoved(std::string_view line) {
    auto const first = line.find_first_not_of(" \t\r");
    if (first == std::string_view::npos)
        return {};
    return std::string(line.substr(first, line.find_last_not_of(" \t\r") + 1 - first));
}

} // namespace

std::string indentedMessage(std::string_view message) {
    std::string text;
    for (auto const line : linesOf(withoutNewlinesAtEnd(message))) {
        if (!text.empty())
            text += line.empty() ? "\n" : "\n    ";
        text += printable(line);
    }
    return text;
}

std::string messageInOneLine(std::string_view message) {
    std::string text;
    for (auto const line : linesOf(message)) {
        auto const words = printable(blanksRemoved(line));
        if (!words.empty() && !text.empty())
            text += " / ";
        text += words;
    }
    return text;
}

std::string placeText(SourcePlace const& place) {
    if (place.file.empty())
        return "kelda";
    auto text = printable(place.file);
    if (place.line > 0)
        text += fmt::format(":{}", place.line);
    if (place.line > 0 && place.column > 0)
        text += fmt::format(":{}", place.column);
    return text;
}

std::string ruleText(CheckedFinding const& finding) {
    return finding.rule == nullptr ? std::string() : fmt::format(" [{}]", finding.rule->name);
}

std::string includedFromText(CheckedFinding const& finding) {
    std::vector<std::string> places;
    for (auto const& [file, line] : finding.includedFrom)
        places.push_back(placeText({file, line, 0, 0, ""}));
    return listedAfter("included from", places);
}

std::string agentsText(CheckedFinding const& finding) {
    std::vector<std::string> names;
    for (auto const& agent : finding.agents)
        names.push_back(printable(agent));
    return listedAfter("concerns", names);
}

std::string findingInOneLine(CheckedFinding const& finding) {
    return fmt::format("{}: {}: {}{}", placeText(finding.place), nameOf(finding.severity),
                       messageInOneLine(finding.message), ruleText(finding));
}

} // namespace KeldaTool
