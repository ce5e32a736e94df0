// The agents that --agent names, among those of the devices.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "database/Device.h"
#include "database/diff/Difference.h"

namespace KeldaTool {

class AskedAgents {
  public:
    /// Each is the name of agents ("FanTray-%tray"), an agent string ("FanTray-2"), or a prefix of
    /// names with "*" at its end. None means every agent.
    explicit AskedAgents(std::vector<std::string> asked) : asked_(std::move(asked)) {}

    /// Finds the agents of a device; those of several devices are all meant.
    void lookIn(KeldaDatabase::Device const& device);

    /// The names and agent strings that no agent of these devices answers to. A prefix need not
    /// have any.
    std::vector<std::string> unknown() const;

    /// Leaves the changes that concern these agents, with no others.
    void keepIn(KeldaDatabase::Difference& difference) const;

  private:
    bool isMeant(std::string const& agent) const { return names_.contains(agent); }

    std::vector<std::string> asked_;
    std::set<std::string> known_; // of asked_
    std::set<std::string> names_; // of the agents that are meant, as changes have them
};

} // namespace KeldaTool
