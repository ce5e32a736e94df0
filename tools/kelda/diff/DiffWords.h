// The words in which changes are told to people.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "database/diff/Difference.h"

namespace KeldaTool {

/// Makes what comes from files, any bytes, fit to stand among the words.
using Quoted = std::function<std::string(std::string_view bytes)>;

/// What has changed: "mount added", "became a config path".
std::string_view headlineOf(KeldaDatabase::Change const& change);

/// What it was and is: "r -> rw (+w)", "with the flags r", "was a Sys::Log". Empty where the
/// headline says it.
std::string valuesText(KeldaDatabase::Change const& change, Quoted const& quoted);

/// Why something has changed whose own line was not touched: "because %root has another value".
/// Empty where the lines say it themselves.
std::string causeText(KeldaDatabase::Change const& change, Quoted const& quoted);

/// What a change of the class can do: "agents may not start, or lack what they had".
std::string_view meaningOf(KeldaDatabase::ChangeClass severity);

/// The first of some items, and how many there are beside them. Nobody is spared a single one.
template <class Item>
struct FirstOf {
    std::vector<Item> shown;
    std::size_t more = 0;
};
template <class Item>
FirstOf<Item> firstOf(std::vector<Item> const& items, std::size_t most) {
    auto const count = items.size() > most + 1 ? most : items.size();
    return {{items.begin(), items.begin() + static_cast<std::ptrdiff_t>(count)},
            items.size() - count};
}

/// A printable text of at most so many characters; "..." stands for the rest.
std::string clipped(std::string const& text, std::size_t most);

} // namespace KeldaTool
