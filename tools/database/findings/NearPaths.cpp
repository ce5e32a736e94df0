#include "NearPaths.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <KeldaBase/MountFileInfo.h>
#include <fmt/format.h>

#include "Spelling.h"

namespace KeldaDatabase {
namespace {

constexpr std::size_t mostDistance = 3;
constexpr std::size_t mostCandidates = 5000;
constexpr std::size_t mostNames = 16;

// The last name of a path begins here.
std::size_t lastName(std::string_view path) {
    auto const slash = path.rfind('/');
    return slash == std::string_view::npos ? 0 : slash + 1;
}

// No path holds a newline, so that buckets of different kinds have different names.
std::string bucketOfParent(std::string_view key, std::size_t length) {
    return std::string(key.substr(0, lastName(key))) + '\n' + std::to_string(length);
}

std::string bucketOfLastName(std::string_view key, std::size_t length) {
    return '\n' + std::string(key.substr(lastName(key))) + '\n' + std::to_string(length);
}

struct Names {
    std::string_view a;
    std::string_view b;
};

// The one name in which two paths differ; nothing where they differ in more.
std::optional<Names> differingName(std::string_view a, std::string_view b) {
    auto const [x, y] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    auto const begin = lastName(a.substr(0, static_cast<std::size_t>(x - a.begin())));
    a.remove_prefix(begin);
    b.remove_prefix(begin);
    auto const [u, v] = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend());
    auto const tail = a.substr(a.size() - static_cast<std::size_t>(u - a.rbegin()));
    auto const slash = tail.find('/');
    auto const kept = slash == std::string_view::npos ? 0 : tail.size() - slash;
    a.remove_suffix(kept);
    b.remove_suffix(kept);
    if (a.find('/') != std::string_view::npos || b.find('/') != std::string_view::npos)
        return std::nullopt;
    return Names{a, b};
}

// How far a name may be from the one that was meant. Of short names every two are alike.
std::size_t allowedDistance(std::string_view name) {
    return std::min(mostDistance, name.size() / 3);
}

// Where the names of a path begin and end.
std::vector<std::pair<std::size_t, std::size_t>> namesOf(std::string_view path) {
    std::vector<std::pair<std::size_t, std::size_t>> names;
    for (std::size_t begin = 0; begin <= path.size();) {
        auto const end = std::min(path.find('/', begin), path.size());
        names.emplace_back(begin, end);
        begin = end + 1;
    }
    return names;
}

} // namespace

struct NearPaths::Nearest {
    std::size_t distance = mostDistance + 1;
    std::size_t looksLeft = mostCandidates;
    Path const* path = nullptr;
};

NearPaths::NearPaths(Device const& device) {
    for (auto const& line : device.preinits) {
        auto const wildcardPath = Kelda::MountFileInfo::wildcardPath(line.path);
        std::string const path(wildcardPath.view());
        auto const next = static_cast<Index>(paths_.size());
        if (byWildcardPath_.try_emplace(path, next).second)
            add(std::string(line.path.view()), lowerCase(path));
    }
}

void NearPaths::add(std::string written, std::string key) {
    auto const index = static_cast<Index>(paths_.size());
    auto const length = key.size();
    byKey_.try_emplace(key, index);
    byBucket_[bucketOfParent(key, length)].push_back(index);
    byBucket_[bucketOfLastName(key, length)].push_back(index);
    paths_.push_back({std::move(written), std::move(key)});
}

std::string NearPaths::declared(std::string const& path) const {
    auto const found = byWildcardPath_.find(path);
    return found == byWildcardPath_.end() ? std::string() : paths_[found->second].written;
}

std::string NearPaths::inAnotherCase(std::string const& path) const {
    auto const found = byKey_.find(lowerCase(path));
    return found == byKey_.end() ? std::string() : paths_[found->second].written;
}

std::string NearPaths::withTokens(std::string const& path) const {
    auto const names = namesOf(path);
    if (names.size() > mostNames)
        return {};
    auto const withToken = [](std::string_view text, std::pair<std::size_t, std::size_t> name) {
        return fmt::format("{}*{}", text.substr(0, name.first), text.substr(name.second));
    };
    // From the back, so that what stands in front keeps its place.
    for (auto last = names.size(); last-- > 0;) {
        auto const once = withToken(path, names[last]);
        if (auto found = declared(once); !found.empty())
            return found;
        for (auto first = last; first-- > 0;)
            if (auto found = declared(withToken(once, names[first])); !found.empty())
                return found;
    }
    return {};
}

std::string NearPaths::misspelt(std::string const& path) {
    auto const key = lowerCase(path);
    Nearest nearest;
    auto const shortest = key.size() - std::min(key.size(), mostDistance);
    for (auto length = shortest; length <= key.size() + mostDistance; ++length) {
        compare(bucketOfParent(key, length), key, nearest);
        compare(bucketOfLastName(key, length), key, nearest);
    }
    return nearest.path == nullptr ? std::string() : nearest.path->written;
}

void NearPaths::compare(std::string const& bucket, std::string const& key, Nearest& nearest) {
    auto const found = byBucket_.find(bucket);
    if (found == byBucket_.end())
        return;
    for (auto const index : found->second) {
        // Nothing is nearer than by one character: case has been looked at before.
        if (nearest.distance == 1 || nearest.looksLeft == 0 || looksLeft_ == 0)
            return;
        --nearest.looksLeft;
        --looksLeft_;
        auto const names = differingName(key, paths_[index].key);
        if (!names)
            continue;
        auto const distance = editDistance(names->a, names->b);
        if (distance <= allowedDistance(names->b) && distance < nearest.distance) {
            nearest.distance = distance;
            nearest.path = &paths_[index];
        }
    }
}

} // namespace KeldaDatabase
