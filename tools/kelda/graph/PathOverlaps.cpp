#include "graph/PathOverlaps.h"

#include <algorithm>
#include <string>
#include <utility>

namespace KeldaTool {
namespace {

constexpr char star = '*';

// Takes the first segment off a path. What is left begins behind its "/"; the last segment leaves
// nothing at all, which differs from an empty segment behind a "/".
std::string_view takeSegment(std::string_view& path) {
    auto const end = std::min(path.find('/'), path.size());
    auto const segment = path.substr(0, end);
    path = end == path.size() ? std::string_view() : path.substr(end + 1);
    return segment;
}

bool hasMore(std::string_view rest) {
    return rest.data() != nullptr;
}

bool hasStar(std::string_view text) {
    return text.find(star) != std::string_view::npos;
}

bool isStarAt(std::string_view text, std::size_t at) {
    return at < text.size() && text[at] == star;
}

// Takes equal characters off both fronts, up to a "*"; false where they differ before one.
bool dropCommonFront(std::string_view& a, std::string_view& b) {
    while (!isStarAt(a, 0) && !isStarAt(b, 0)) {
        if (a.empty() || b.empty())
            return a.empty() && b.empty();
        if (a.front() != b.front())
            return false;
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return true;
}

bool dropCommonBack(std::string_view& a, std::string_view& b) {
    while (!isStarAt(a, a.size() - 1) && !isStarAt(b, b.size() - 1)) {
        if (a.empty() || b.empty())
            return a.empty() && b.empty();
        if (a.back() != b.back())
            return false;
        a.remove_suffix(1);
        b.remove_suffix(1);
    }
    return true;
}

} // namespace

bool coversText(std::string_view pattern, std::string_view text) {
    auto at = pattern.find(star);
    if (at == std::string_view::npos)
        return text == pattern;
    if (!text.starts_with(pattern.substr(0, at)))
        return false;
    text.remove_prefix(at);
    pattern.remove_prefix(at + 1);
    while ((at = pattern.find(star)) != std::string_view::npos) {
        auto const found = text.find(pattern.substr(0, at));
        if (found == std::string_view::npos)
            return false;
        text.remove_prefix(found + at);
        pattern.remove_prefix(at + 1);
    }
    return text.ends_with(pattern);
}

// With both ends cut to a "*", either one of the texts has a "*" at its front and the other one at
// its back, or one has both. Then only a text without any "*" can still fail to fit.
bool haveCommonText(std::string_view a, std::string_view b) {
    if (!dropCommonFront(a, b) || !dropCommonBack(a, b))
        return false;
    if (!hasStar(a))
        return coversText(b, a);
    return hasStar(b) || coversText(a, b);
}

bool coversPath(std::string_view pattern, std::string_view path) {
    while (hasMore(pattern) && hasMore(path))
        if (!coversText(takeSegment(pattern), takeSegment(path)))
            return false;
    return !hasMore(pattern) && !hasMore(path);
}

void PathOverlaps::add(std::string_view path, std::uint32_t id) {
    std::uint32_t node = 0;
    while (hasMore(path)) {
        auto const next = static_cast<std::uint32_t>(nodes_.size());
        auto const [child, isNew] = nodes_[node].children.try_emplace(takeSegment(path), next);
        node = child->second;
        if (isNew)
            nodes_.emplace_back();
    }
    nodes_[node].id = id;
}

struct PathOverlaps::Search {
    std::vector<Node> const& nodes;
    std::vector<std::uint32_t> found;

    void visit(std::uint32_t node, std::string_view rest) {
        if (!hasMore(rest)) {
            if (nodes[node].id != nothing)
                found.push_back(nodes[node].id);
            return;
        }
        auto const segment = takeSegment(rest);
        auto const& children = nodes[node].children;
        auto const literal = segment.substr(0, segment.find(star));
        // Children that go on where the segment has its "*".
        if (hasStar(segment))
            visitThose(children, literal, segment, rest);
        else if (auto const child = children.find(segment); child != children.end())
            visit(child->second, rest);
        // Children whose own "*" stands within that, or at the same place.
        std::string start;
        for (std::size_t length = 0; length <= literal.size(); ++length) {
            bool const isVisited = hasStar(segment) && length == literal.size();
            start.assign(literal.substr(0, length)).push_back(star);
            if (!isVisited)
                visitThose(children, start, segment, rest);
        }
    }

    // The children that begin with a text and fit the segment.
    void visitThose(std::map<std::string_view, std::uint32_t> const& children,
                    std::string_view start, std::string_view segment, std::string_view rest) {
        for (auto child = children.lower_bound(start);
             child != children.end() && child->first.starts_with(start); ++child)
            if (haveCommonText(segment, child->first))
                visit(child->second, rest);
    }
};

std::vector<std::uint32_t> PathOverlaps::of(std::string_view path) const {
    Search search{nodes_, {}};
    search.visit(0, path);
    std::sort(search.found.begin(), search.found.end());
    return std::move(search.found);
}

} // namespace KeldaTool
