// Findings of one rule, each line once.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Finding.h"
#include "database/Device.h"

namespace KeldaDatabase {

class FindingList {
  public:
    FindingList(Device const& device, RuleId rule) : device_(device), rule_(rule) {}

    /// A new finding, which holds its rule, severity and place, for the caller to fill in: valid up
    /// to the next call. Null when there is one for this line already: then only the Include line
    /// and the agents of the profile are added to it. `about` tells findings of one line apart.
    Finding* at(Place const& place, ProfileId profile = none, std::string_view about = {});

    /// All of them, in the order in which they were made.
    std::vector<Finding> take();

  private:
    struct Key {
        FileId file;
        std::int32_t line;
        std::string about;
        friend bool operator==(Key const&, Key const&) = default;
    };
    struct KeyHash {
        std::size_t operator()(Key const& key) const;
    };

    void noteAgents(std::size_t finding, ProfileId profile);
    void fillAgentsOfProfiles();

    Device const& device_;
    RuleId const rule_;
    std::vector<Finding> findings_;
    std::vector<std::vector<std::uint32_t>> agents_; // of each finding
    std::unordered_map<Key, std::size_t, KeyHash> known_;
    std::vector<std::vector<std::uint32_t>> agentsOfProfiles_; // empty until asked for
};

} // namespace KeldaDatabase
