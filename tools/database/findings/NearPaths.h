// Which declared path may be meant by one that is not declared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "database/Device.h"

namespace KeldaDatabase {

/// The paths of a device's preinit lines, arranged to be searched often. All paths that are asked
/// about, and that are compared, are wildcard paths; all answers are paths as a preinit line has
/// them, empty where there is none.
class NearPaths {
  public:
    explicit NearPaths(Device const& device);

    std::string declared(std::string const& path) const;
    /// Differs in case only.
    std::string inAnotherCase(std::string const& path) const;
    /// Has a token in the place of one or two of the names of the path.
    std::string withTokens(std::string const& path) const;
    /// Differs in one of its names, and there by few characters. Of paths that are many and alike,
    /// only the first ones are looked at, and after 300,000 looks in all nothing more is found.
    std::string misspelt(std::string const& path);

  private:
    using Index = std::uint32_t;
    using Bucket = std::vector<Index>;

    struct Path {
        std::string written;
        std::string key; // the wildcard path in lower case
    };
    struct Nearest;

    void add(std::string written, std::string key);
    void compare(std::string const& bucket, std::string const& key, Nearest& nearest);

    std::vector<Path> paths_;
    std::unordered_map<std::string, Index> byWildcardPath_;
    std::unordered_map<std::string, Index> byKey_;
    // Where one name is misspelt, the names before it or the last name is right. Apart by length,
    // since what is near is nearly as long.
    std::unordered_map<std::string, Bucket> byBucket_;
    std::size_t looksLeft_ = 300'000;
};

} // namespace KeldaDatabase
