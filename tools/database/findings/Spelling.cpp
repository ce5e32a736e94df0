#include "Spelling.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace KeldaDatabase {
namespace {

constexpr std::size_t longestWord = 64;

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

std::string lowerCase(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), lower);
    return result;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, lower, lower);
}

bool startsWithIgnoringCase(std::string_view text, std::string_view start) {
    return equalIgnoringCase(text.substr(0, start.size()), start);
}

// Row by row through the table of distances between the beginnings of the two texts.
std::size_t editDistance(std::string_view a, std::string_view b) {
    using Row = std::vector<std::size_t>;
    Row row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    Row above(row.size());
    Row twoAbove(row.size());
    for (std::size_t i = 1; i <= a.size(); ++i) {
        twoAbove.swap(above);
        above.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            auto const change = lower(a[i - 1]) == lower(b[j - 1]) ? 0U : 1U;
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + change});
            bool const isSwapped = i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                                   lower(a[i - 2]) == lower(b[j - 1]);
            if (isSwapped)
                row[j] = std::min(row[j], twoAbove[j - 2] + 1);
        }
    }
    return row.back();
}

std::string_view nearestTo(std::string_view word, std::span<std::string_view const> candidates,
                           std::size_t allowed) {
    std::string_view nearest;
    if (word.size() > longestWord)
        return nearest;
    auto best = allowed + 1;
    for (auto const candidate : candidates) {
        // What is much longer or shorter cannot be near.
        if (candidate.size() > longestWord || candidate.size() >= word.size() + best ||
            word.size() >= candidate.size() + best)
            continue;
        if (auto const distance = editDistance(word, candidate); distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

} // namespace KeldaDatabase
