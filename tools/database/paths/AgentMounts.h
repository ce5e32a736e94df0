// What each agent mounts: the path lines of all files that it loads, put together.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "database/Device.h"

namespace KeldaDatabase {

/// One path of one agent.
struct AgentMount {
    Rook::String path; ///< tokens of the agent's name are "*"
    Rook::String type;
    Fen::MountTable::Flags flags; ///< those of all lines, merged as the parser does
    /// The lines, in the order in which the agent reads them: indexes to Device::mounts. Lines that
    /// give the path another type than the first one are faults and not among them.
    std::span<std::size_t const> lines;
};

/// Whether mounts with these flags read, or write.
bool reads(Fen::MountTable::Flags flags);
bool writes(Fen::MountTable::Flags flags);

class AgentMounts {
  public:
    using Wanted = std::function<bool(Rook::String const& path)>;
    using Visit = std::function<void(AgentMount const& mount)>;

    /// All paths of a device, which must outlive the object, or those that are wanted.
    explicit AgentMounts(Device const& device, Wanted const& wanted = {});

    /// Calls `visit` with each path of an agent once, in no particular order. What it is given is
    /// valid during the call only.
    void visit(Agent const& agent, Visit const& visit) const;

  private:
    std::vector<std::size_t> linesOf(Agent const& agent) const;

    Device const& device_;
    std::vector<std::size_t> lines_; // of wanted paths, in order
};

} // namespace KeldaDatabase
