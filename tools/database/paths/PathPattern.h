// Patterns of paths, and the paths that they stand for.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace KeldaDatabase {

/// A pattern holds "*" for any text within a segment, also for none, "?" for one character (a byte
/// that begins none counts as one) and, as a whole segment, "**" for any number of segments, also
/// for none. Everything else stands for itself. A "/" at its end does not count.
///
/// A path may hold "*" as well: the value of a token, which is any text within a segment.
class PathPattern {
  public:
    explicit PathPattern(std::string_view pattern);

    /// Whether some path without a "*" is an instance of both the pattern and the path. Values of
    /// a path are looked at one by one, also if they come from one token. Takes at most as many
    /// steps as the product of both lengths and, for segments of usual length, no memory.
    bool matches(std::string_view path) const;

    /// Whether the pattern holds nothing but text that stands for itself.
    bool isLiteral() const { return isLiteral_; }

  private:
    struct Segment {
        std::string text;
        bool isAnyNumber = false; ///< "**"
        bool isLiteral = false;
    };
    static bool fits(Segment const& segment, std::string_view text);

    std::string prefix_; // the literal text that a path begins with
    bool isLiteral_ = false;
    std::vector<Segment> segments_;
};

} // namespace KeldaDatabase
