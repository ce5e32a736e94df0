// The path that somebody asks about, and how another path compares with it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "PathPattern.h"

namespace KeldaDatabase {

/// How many typing errors may have made one name of the other: up to two, one in short names; 0 for
/// names that differ more or not at all. The case of letters does not count.
std::size_t typingErrors(std::string_view a, std::string_view b);

class AskedPath {
  public:
    /// A path or pattern: tokens count as "*", each name is a PathPattern of its own, and one "/"
    /// at the end is dropped.
    explicit AskedPath(std::string_view path);
    AskedPath(AskedPath const&) = delete;
    AskedPath& operator=(AskedPath const&) = delete;

    std::string const& text() const { return text_; }
    /// Whether a path, whose tokens are "*", can be the one asked about.
    bool matches(std::string_view path) const;
    /// The part of a path that can be the one asked about, with something below it; empty for none.
    std::string_view ancestorIn(std::string_view path) const;
    /// Whether the first names agree: only such paths have a common directory.
    bool sharesFirstName(std::string_view path) const;

    /// In what a path that does not match differs.
    struct Difference {
        bool slashes = false;    ///< "/" at its front or twice in a row
        bool letterCase = false; ///< of ASCII letters
        /// One name is another one.
        bool hasOtherName = false;
        std::string_view asked, other; ///< the two names
    };
    /// Nothing for a path that differs in more than one name, or in their number.
    std::optional<Difference> differenceTo(std::string_view path) const;

  private:
    bool nameMatches(std::size_t index, std::string_view name) const;

    std::string text_;
    std::vector<std::string_view> names_; // of text_
    std::vector<PathPattern> patterns_;   // of the names
};

} // namespace KeldaDatabase
