#include "NearestPath.h"

#include <algorithm>

namespace KeldaTool {
namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool areAlike(char a, char b) {
    return lower(a) == lower(b);
}

bool differInCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), areAlike);
}

// Whether one typing error leads from one to the other; the case of letters does not count. All
// very short names would be near each other.
bool differInOneError(std::string_view a, std::string_view b) {
    constexpr std::size_t shortest = 3;
    if (std::max(a.size(), b.size()) < shortest)
        return false;
    while (!a.empty() && !b.empty() && areAlike(a.front(), b.front())) {
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    while (!a.empty() && !b.empty() && areAlike(a.back(), b.back())) {
        a.remove_suffix(1);
        b.remove_suffix(1);
    }
    if (a.size() == 2 && b.size() == 2)
        return areAlike(a[0], b[1]) && areAlike(a[1], b[0]);
    return std::max(a.size(), b.size()) <= 1;
}

// Takes the first segment off a path; a path without segments is null.
std::string_view nextSegment(std::string_view& path) {
    auto const segment = path.substr(0, path.find('/'));
    path = segment.size() == path.size() ? std::string_view() : path.substr(segment.size() + 1);
    return segment;
}

} // namespace

NearestPath::NearestPath(std::string_view wanted) {
    if (wanted.ends_with('/'))
        wanted.remove_suffix(1);
    do {
        segments_.emplace_back(nextSegment(wanted));
        patterns_.emplace_back(segments_.back());
    } while (wanted.data() != nullptr);
}

NearestPath::Distance NearestPath::distanceOf(std::string_view path) const {
    auto distance = Distance::none;
    for (std::size_t i = 0; i < segments_.size(); ++i) {
        if (path.data() == nullptr)
            return Distance::far;
        auto const segment = nextSegment(path);
        if (segment == segments_[i] || patterns_[i].matches(segment))
            continue;
        if (distance != Distance::oneError && differInCase(segment, segments_[i]))
            distance = Distance::inCase;
        else if (distance == Distance::none && differInOneError(segment, segments_[i]))
            distance = Distance::oneError;
        else
            return Distance::far;
    }
    return path.data() == nullptr ? distance : Distance::far;
}

bool NearestPath::consider(std::string_view path) {
    auto const distance = distanceOf(path);
    if (distance == Distance::far || distance > distance_ ||
        (distance == distance_ && path >= nearest_))
        return false;
    distance_ = distance;
    nearest_ = path;
    return true;
}

std::optional<std::string> NearestPath::nearest() const {
    if (distance_ == Distance::far)
        return std::nullopt;
    std::string text;
    std::string_view rest = nearest_;
    for (std::size_t i = 0; i < segments_.size(); ++i) {
        auto const segment = nextSegment(rest);
        text += (i == 0 ? "" : "/");
        text += patterns_[i].matches(segment) ? std::string_view(segments_[i]) : segment;
    }
    return text;
}

} // namespace KeldaTool
