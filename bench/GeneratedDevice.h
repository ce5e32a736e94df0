// A made-up device of any size, written as real files: a directory of preinit files and one of
// mount profiles. The same shape gives the same bytes everywhere.
//
// What the files look like follows a device of some three hundred agents: paths of some eighty
// characters in trees that share long beginnings, half of them with tokens; half of the agents with
// tokens in their names; aliases, groups, conditions, shared include files, comments, continued
// lines and blanks as people leave them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace bench {

struct DeviceShape {
    std::size_t lines = 10'000;       // path lines of all profiles, include files counted once
    std::size_t linesPerProfile = 25; // on average
    double sharedShare = 0.5;         // of the lines, those whose path another profile names too
    std::size_t collectedPaths = 0;   // mounted by one more agent, the collector; 0 for none
    std::uint64_t seed = 1;
};

struct DeviceFigures {
    std::size_t profiles = 0;
    std::size_t includeFiles = 0;
    std::size_t pathLines = 0;    // as the shape asked
    std::size_t linesRead = 0;    // path lines with an include file counted at each include
    std::size_t sharedLines = 0;  // lines whose path stands in another file too
    std::size_t declarations = 0; // lines of preinit files
};

class GeneratedDevice {
  public:
    // Writes the device: at least 1000 lines, at least 5 a profile, a share of 0 to 0.6, which is
    // met to a few hundredths. Throws std::invalid_argument for other shapes, and
    // std::runtime_error when a file cannot be written, when so few large profiles have too little
    // to share, or when the agents have fewer paths of their own than are to be collected.
    explicit GeneratedDevice(DeviceShape const& shape);
    ~GeneratedDevice(); // removes the files
    GeneratedDevice(GeneratedDevice const&) = delete;
    GeneratedDevice& operator=(GeneratedDevice const&) = delete;

    std::string preinitDir() const { return (directory_ / "preinit").string(); }
    std::string profileDir() const { return (directory_ / "profiles").string(); }
    DeviceShape const& shape() const { return shape_; }
    DeviceFigures const& figures() const { return figures_; }
    // An agent with one token in its name and a profile of about the average size.
    std::string const& agentString() const { return agentString_; }
    // The agent that mounts a path of other agents on every line of its profile, which has its
    // name.
    static std::string collector() { return "Collector"; }

  private:
    DeviceShape const shape_;
    std::filesystem::path directory_;
    DeviceFigures figures_;
    std::string agentString_;
};

} // namespace bench
