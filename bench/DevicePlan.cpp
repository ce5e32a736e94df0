#include "DevicePlan.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace bench {

namespace {

// Sizes of profiles in percent of the average: many small ones, few large ones.
constexpr std::array<std::size_t, 12> sizes = {100, 28, 180, 52, 88, 40, 248, 60, 140, 68, 120, 76};

// How many lines read a public path, on average, beside the one that owns it.
constexpr double readersPerPath = 3.2;

void check(DeviceShape const& shape) {
    if (shape.lines < 1000)
        throw std::invalid_argument("a generated device has at least 1000 lines");
    if (shape.linesPerProfile < 5)
        throw std::invalid_argument("a generated profile has at least 5 lines");
    if (!(shape.sharedShare >= 0 && shape.sharedShare <= 0.6))
        throw std::invalid_argument("the share of shared lines is 0 to 0.6");
}

} // namespace

DevicePlan::DevicePlan(DeviceShape const& shape) : seed_(shape.seed) {
    check(shape);
    planLines(shape);
    // Of S shared lines in a hundred, those that own the path are shared too.
    auto const readShare = shape.sharedShare * readersPerPath / (readersPerPath + 1);
    auto const lines = static_cast<double>(shape.lines);
    auto const readInProfiles = std::max(0.0, readShare * lines - static_cast<double>(fileLines_));
    splitLines(readInProfiles / (lines - static_cast<double>(fileLines_)));
    auto const reads = readInProfiles + static_cast<double>(fileLines_);
    publishPaths(DeviceNames(seed_), static_cast<std::size_t>(reads / readersPerPath) + 1);
    wasRead_.resize(publicPaths_.size());
}

void DevicePlan::planLines(DeviceShape const& shape) {
    fileLines_ = defaultGroupLines + perAgentGroupLines + supervisorLines;
    for (auto left = shape.lines - fileLines_; left > 0;) {
        if (profiles_.size() % familySize == 0) {
            auto const family = profiles_.size() / familySize;
            auto const lines =
                familyFileLines + (hasPatternFiles(family) ? 2 * patternFileLines : 0);
            if (left <= lines) {
                profiles_.back().ownLines += left;
                break;
            }
            fileLines_ += lines;
            left -= lines;
        }
        auto const size = sizes[profiles_.size() % sizes.size()] * shape.linesPerProfile / 100;
        auto const lines = std::min(left, std::max<std::size_t>(size, 1));
        profiles_.push_back({lines, 0, 0});
        left -= lines;
    }
}

// Gives each profile its part of lines that read, fractions carried over to the next.
void DevicePlan::splitLines(double readShare) {
    double owed = 0;
    for (auto& profile : profiles_) {
        owed += static_cast<double>(profile.ownLines) * readShare;
        auto const most = profile.ownLines - 1; // every agent owns something
        profile.readLines = std::min(most, static_cast<std::size_t>(owed));
        profile.ownLines -= profile.readLines;
        owed -= static_cast<double>(profile.readLines);
    }
}

// Makes the first paths of every agent that has any public ones public, in the same proportion
// everywhere, and shuffles them.
void DevicePlan::publishPaths(DeviceNames const& names, std::size_t wanted) {
    std::vector<std::size_t> publishers;
    std::size_t candidates = 0;
    for (std::size_t i = 0; i < profiles_.size(); ++i)
        if (names.agent(i, 0).hasPublicPaths()) {
            publishers.push_back(i);
            candidates += profiles_[i].ownLines;
        }
    for (std::size_t owed = 0; auto const i : publishers) {
        owed += profiles_[i].ownLines * wanted;
        auto const count =
            std::min(profiles_[i].ownLines, owed / std::max<std::size_t>(candidates, 1));
        owed -= count * candidates;
        profiles_[i].publicPaths = count;
        for (std::size_t path = 0; path < count; ++path)
            publicPaths_.push_back({i, path});
    }
    if (publicPaths_.empty())
        throw std::runtime_error("a generated device of this shape has no path to read");
    for (std::size_t i = publicPaths_.size(); i > 1; --i)
        std::swap(publicPaths_[i - 1], publicPaths_[dice(seed_, "shuffle", i) % i]);
}

std::size_t DevicePlan::nextDeal() {
    auto const deal = dealt_++;
    auto const count = publicPaths_.size();
    if (deal < count)
        return deal;
    auto const roll = dice(seed_, "deal", deal);
    auto const hot = std::max<std::size_t>(count / 10, 1);
    return (roll >> 8) % (roll % 2 == 0 ? hot : count);
}

std::vector<PublicPath> DevicePlan::dealPaths(std::size_t count, std::size_t reader) {
    std::vector<PublicPath> paths;
    std::unordered_set<std::size_t> taken;
    auto const attempts = 20 * count;
    for (std::size_t attempt = 0; paths.size() < count && attempt < attempts; ++attempt) {
        auto const index = nextDeal();
        if (publicPaths_[index].agent == reader || !taken.insert(index).second)
            continue;
        wasRead_[index] = true;
        paths.push_back(publicPaths_[index]);
    }
    if (paths.size() < count)
        throw std::runtime_error("a generated device of this shape has too few paths to read");
    return paths;
}

std::size_t DevicePlan::sharedLines() const {
    auto shared = static_cast<std::size_t>(std::count(wasRead_.begin(), wasRead_.end(), true));
    for (auto const& profile : profiles_)
        shared += profile.readLines;
    return shared + fileLines_ - defaultGroupLines - perAgentGroupLines;
}

} // namespace bench
