#include "Hints.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include <fmt/format.h>

namespace KeldaDatabase {
namespace {

constexpr std::string_view keywords[] = {
    "activeMount",       "agentName:",          "alias:",     "Condition:",
    "ConditionBlocker:", "connectionFlags:",    "Include:",   "MountGroup:",
    "matchActiveName",   "noDefaultMountGroup", "rootFlags:", "subAgent:"};

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// How many characters have to be put in, taken out or changed.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        auto diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            auto const change = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({change, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::string_view nearestKeyword(std::string_view line) {
    auto const colon = line.find(':');
    auto const word = line.substr(0, colon == std::string_view::npos ? colon : colon + 1);
    constexpr std::size_t longestKeyword = 24;
    if (word.size() > longestKeyword)
        return {};
    std::string_view nearest;
    auto best = std::max<std::size_t>(1, word.size() / 3) + 1;
    for (auto const keyword : keywords)
        if (auto const d = distance(word, keyword); d < best) {
            best = d;
            nearest = keyword;
        }
    return nearest;
}

std::string hintFor(Device const& /*device*/, RuleId rule, Kelda::MfiException const& fault) {
    if (rule != RuleId::unknownKeyword)
        return {};
    auto const message = fault.msg.view();
    constexpr std::string_view start = "syntax error: '";
    auto const line = message.substr(start.size(), message.size() - start.size() - 1);
    auto const keyword = nearestKeyword(line);
    return keyword.empty() ? std::string() : fmt::format("did you mean '{}'?", keyword);
}

} // namespace KeldaDatabase
