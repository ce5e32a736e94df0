// The names of a generated device: what its agents are called, which aliases they define and which
// paths and types they own. Every name is a function of the seed and of two numbers, so that
// nothing needs to be kept to name it again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

// A number that looks random and is the same everywhere for the same arguments.
std::uint64_t dice(std::uint64_t seed, std::string_view purpose, std::uint64_t a,
                   std::uint64_t b = 0);

// One agent and the root of the tree of paths that it owns.
struct AgentNames {
    std::size_t number = 0;
    std::string module;               // "Bgp"
    std::string profile;              // "Bgp17", the name of its profile file
    std::vector<std::string> tokens;  // "%linecard", "%port"
    bool consuming = false;           // its last token takes the rest of the agent string
    std::vector<std::string> aliases; // "%groupName"
    std::string trunk;                // "network-instances/network-instance/%vrf/bgp-17"
    std::size_t plainPaths = 0;       // so many of its first paths hold no token of its own

    std::string agentName() const; // "Bgp17-%vrf"
    // Whether others can name its plain paths: they hold no token at all but for the cell's.
    bool hasPublicPaths() const { return tokens.empty(); }
};

// One path as a profile writes it.
struct PathNames {
    std::string path;
    std::string type;
};

class DeviceNames {
  public:
    explicit DeviceNames(std::uint64_t seed) : seed_(seed) {}

    AgentNames agent(std::size_t number, std::size_t plainPaths) const;

    // Path `number` of an agent. Even numbers are directories, each odd one is the "config" or
    // "state" of the directory before it; no two numbers give the same path.
    PathNames path(AgentNames const& agent, std::size_t number) const;

    // Every token that a path may hold but for the cell's.
    static std::vector<std::string_view> allTokens();

    // The right-hand side of an alias of the agent, without operators `~` and `?`.
    std::string aliasValue(AgentNames const& agent, std::size_t index) const;

  private:
    std::string word(AgentNames const& agent, std::size_t directory) const;
    std::string directory(AgentNames const& agent, std::size_t number) const;
    void addTokens(AgentNames& agent) const;

    std::uint64_t const seed_;
};

} // namespace bench
