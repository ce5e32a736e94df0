// What an agent's own parser would make of its keyword lines and mounts.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include <KeldaBase/MountFileInfo.h>

#include "database/Device.h"

namespace KeldaDatabase {

/// Has the library's own handlers take the lines of one agent after another; reads no file.
class AgentReplay : public Kelda::MountFileInfo {
  public:
    explicit AgentReplay(Device const& device);

    // Only what the library asks for.
    void doInit() override { isInitialized_ = true; }
    Rook::String evaluateAliasValue(Rook::String const& token) override;

    /// The flags of an agent as a whole. `lines`: the keyword lines that gave them, as indexes.
    struct Settings {
        Rook::String rootFlags;       ///< as the agent has them
        Rook::String connectionFlags; ///< empty for none
        std::vector<Rook::String> subAgents;
        std::optional<std::size_t> rootLine;
        std::optional<std::size_t> connectionLine;
        std::vector<std::size_t> subAgentLines;
    };
    Settings settingsOf(Agent const& agent, bool isActive);

    /// The records of an agent with active mounts that mounts these lines, in their order. Valid
    /// until the next call.
    Kelda::MountArgsMap const& recordsOf(std::vector<std::size_t> const& mounts,
                                         Rook::String const& rootFlags);

  private:
    void handle(Keyword const& keyword, std::size_t index, Settings& settings);
    void bindAliases(Profile const& profile, Keyword const& keyword);

    Device const& device_;
};

} // namespace KeldaDatabase
