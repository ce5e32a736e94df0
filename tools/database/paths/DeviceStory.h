// How the agents of a device come to a path, as far as it can be told without agent strings.
#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include <KeldaBase/MountFileInfoTypes.h>

#include "AskedPath.h"
#include "PathStory.h"
#include "WrittenLine.h"
#include "database/Device.h"

namespace KeldaDatabase {

/// Tells the mounts of a device.
class DeviceLines {
  public:
    /// `everyProfile`: the aliases that every profile has, by lower-case name.
    DeviceLines(Device const& device, Kelda::StringMap const& everyProfile, PlaceReader& places)
        : device_(device), everyProfile_(everyProfile), places_(places) {}

    /// The line of a mount (an index to Device::mounts). Its flagsAfter is not known.
    StoryLine const& of(std::size_t mount);

  private:
    StoryLine told(Mount const& mount);
    void tellGroup(Mount const& mount, StoryLine& line);
    void tellCondition(Mount const& mount, StoryLine& line);
    StoryAlias told(std::string const& token, Mount const& mount);
    Alias const* definitionOf(std::string const& token, Mount const& mount) const;

    Device const& device_;
    Kelda::StringMap const& everyProfile_;
    PlaceReader& places_;
    std::map<std::size_t, StoryLine> lines_;
};

/// The name that an agent is told with: its agent string for a variant, else as its profile has it.
std::string nameOf(Agent const& agent);

/// All agents that mount the path; such as come to it in the same way stand together. Agents stand
/// in the order of Device::agents.
std::vector<StoryAgent> agentsThatMount(Device const& device, AskedPath const& asked,
                                        DeviceLines& lines);

} // namespace KeldaDatabase
