// How many path lines each file of a generated device holds, and which paths others read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "DeviceNames.h"
#include "GeneratedDevice.h"

namespace bench {

// So many profiles in a row share an include file.
constexpr std::size_t familySize = 32;
constexpr std::size_t familyFileLines = 18;
// The two files that one include with a wildcard takes in, in every third family.
constexpr std::size_t patternFileLines = 6;
// The file that makes an agent an active one, and the default groups.
constexpr std::size_t supervisorLines = 6;
constexpr std::size_t defaultGroupLines = 6;
constexpr std::size_t perAgentGroupLines = 2;

struct ProfilePlan {
    std::size_t ownLines = 0;    // the agent's first paths
    std::size_t readLines = 0;   // paths of other agents
    std::size_t publicPaths = 0; // so many of its first paths may be read by others
};

// A path of an agent, by their numbers.
struct PublicPath {
    std::size_t agent;
    std::size_t path;
};

class DevicePlan {
  public:
    explicit DevicePlan(DeviceShape const& shape);

    std::vector<ProfilePlan> const& profiles() const { return profiles_; }
    std::size_t families() const { return (profiles_.size() + familySize - 1) / familySize; }
    static bool hasPatternFiles(std::size_t family) { return family % 3 == 0; }

    // The paths that one file reads, none of them twice and none of `reader`'s own. Every public
    // path is dealt once before any is dealt again; from then on one in ten is asked for as often
    // as all the rest.
    std::vector<PublicPath> dealPaths(std::size_t count, std::size_t reader);

    // How many of the lines dealt or planned name a path that another file names too.
    std::size_t sharedLines() const;

  private:
    void planLines(DeviceShape const& shape);
    void splitLines(double readShare);
    void publishPaths(DeviceNames const& names, std::size_t wanted);
    std::size_t nextDeal();

    std::uint64_t const seed_;
    std::vector<ProfilePlan> profiles_;
    std::vector<PublicPath> publicPaths_;
    std::vector<bool> wasRead_;
    std::size_t fileLines_ = 0; // lines of include files and default groups
    std::size_t dealt_ = 0;
};

} // namespace bench
