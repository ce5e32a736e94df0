// What the keywords of its profiles make of an agent.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "database/Device.h"

namespace KeldaTool {

struct AgentFacts {
    bool hasActiveMounts = false;
    bool noDefaultMountGroup = false;
    std::string rootFlags; ///< with those that every agent has
    std::string connectionFlags;
    std::vector<std::string> subAgents; ///< as written, each once
};

class AgentKeywords {
  public:
    /// The device must outlive the object.
    explicit AgentKeywords(KeldaDatabase::Device const& device);

    AgentFacts of(KeldaDatabase::Agent const& agent) const;

  private:
    void add(KeldaDatabase::Keyword const& keyword, AgentFacts& facts) const;
    bool isRefused(KeldaDatabase::Keyword const& keyword) const;

    KeldaDatabase::Device const& device_;
    // The lines with flags that the parser did not take.
    std::set<std::pair<KeldaDatabase::ProfileId, std::int32_t>> refused_;
};

} // namespace KeldaTool
