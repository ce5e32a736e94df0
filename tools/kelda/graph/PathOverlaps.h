// Which paths of a device concern each other, where "*" stands for what only agent strings give.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

namespace KeldaTool {

/// Whether some text is an instance of both; "*" stands for any text in it, also for none.
bool haveCommonText(std::string_view a, std::string_view b);

/// Whether every instance of `text`, which may hold "*" as well, is one of `pattern`.
bool coversText(std::string_view pattern, std::string_view text);

/// The same, segment by segment: a "*" of a path stands for no "/".
bool coversPath(std::string_view pattern, std::string_view path);

/// Paths in a tree of their segments. Children are sorted by their bytes, so those that a segment
/// may fit are found by what stands before the first "*" of either: looking a path up takes time
/// in proportion to what it meets, not to the number of paths.
class PathOverlaps {
  public:
    /// Adds a path, which must outlive the object.
    void add(std::string_view path, std::uint32_t id);

    /// The ids of all paths that have an instance in common with this one, itself included, in
    /// ascending order.
    std::vector<std::uint32_t> of(std::string_view path) const;

  private:
    static constexpr std::uint32_t nothing = ~std::uint32_t{0};

    struct Node {
        std::map<std::string_view, std::uint32_t> children; // to indexes of nodes_
        std::uint32_t id = nothing;                         // of the path that ends here
    };
    struct Search;

    std::vector<Node> nodes_ = std::vector<Node>(1);
};

} // namespace KeldaTool
