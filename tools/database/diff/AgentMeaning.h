// What the files of a device mean to one agent.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <Fen/MountTable.h>
#include <Rook/String.h>

#include "AgentReplay.h"
#include "DeviceSide.h"

namespace KeldaDatabase {

/// One path of one agent. Tokens are numbered, "%1".
struct MountMeaning {
    Rook::String path;
    Rook::String type;
    Fen::MountTable::Flags flags;   ///< as the agent has them
    Fen::MountTable::Flags own;     ///< those of its lines alone
    std::vector<std::size_t> lines; ///< indexes to Device::mounts; none: only there for others

    bool isExplicit() const { return !lines.empty(); }
};

struct AgentMeaning {
    AgentReplay::Settings settings;
    bool isActive = false;
    bool matchesActiveName = false;
    bool refusesDefault = false;
    /// The first keyword lines that say so, as far as there are such.
    std::optional<std::size_t> activeLine, matchActiveLine, refusalLine;
    /// In the order of `MountBefore`, in which those of two devices may be merged.
    std::vector<MountMeaning> mounts;
};

/// An order of paths in which equal ones stand at the same place. It hangs on where the strings
/// lie, so nothing may come of it that is seen.
struct MountBefore {
    bool operator()(Rook::String const& a, Rook::String const& b) const {
        return std::less<>()(a.c_str(), b.c_str());
    }
    bool operator()(MountMeaning const& a, MountMeaning const& b) const {
        return (*this)(a.path, b.path);
    }
};

/// The membership of a path line in a mount group.
struct GroupMembership {
    Rook::String agentKey; ///< the agent name of the group's key
    std::string name;
    unsigned priority = 0;
    std::size_t line = 0; ///< index to Device::mounts
};

/// Tells the agents of one device.
class AgentMeanings {
  public:
    explicit AgentMeanings(DeviceSide& side);

    AgentMeaning of(Agent const& agent);
    /// The first fault that loading each agent meets: indexes to Device::faults.
    std::optional<std::size_t> firstFault(std::size_t agent) const { return faults_[agent]; }
    GroupMembership groupOf(Agent const& agent, std::size_t line) const;

  private:
    void findFirstFaults();
    void addMounts(Agent const& agent, AgentMeaning& meaning);
    void addRecords(Agent const& agent, AgentMeaning& meaning);

    Device const& device_;
    AgentReplay replay_;
    std::vector<std::optional<std::size_t>> faults_;
};

/// Whether two profiles mean the same to every agent that loads them.
bool meanTheSame(DeviceSide& before, ProfileId old, DeviceSide& after, ProfileId now);

/// The literal part of an agent's name, and whether it has tokens: what makes it the same agent in
/// another device.
Rook::String literalPart(Agent const& agent);
bool hasTokens(Agent const& agent);

} // namespace KeldaDatabase
