// What all agents of a device mount, gathered for a report.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "database/Device.h"

namespace KeldaTool {

/// Numbers the different strings among those it is given.
class NumberedTexts {
  public:
    std::uint32_t of(Rook::String const& text);
    std::vector<Rook::String> const& texts() const { return texts_; }

  private:
    std::vector<Rook::String> texts_;
    std::unordered_map<Rook::String, std::uint32_t> numbers_;
};

/// One path of one agent.
struct ReportMount {
    std::uint32_t agent = 0; ///< index to Device::agents
    std::uint32_t path = 0;  ///< the numbers of ReportMounts
    std::uint32_t type = 0;
    std::uint32_t flags = 0;
    std::size_t firstLine = 0; ///< in the list of lines
    std::size_t lineCount = 0;
};

class ReportMounts {
  public:
    /// The mounts of all agents but the "-Active-" variants, whose mounts their agents have, too.
    explicit ReportMounts(KeldaDatabase::Device const& device);

    std::vector<ReportMount> const& mounts() const { return mounts_; } ///< by agent and path
    std::vector<Rook::String> const& paths() const { return paths_; }  ///< sorted
    std::vector<Rook::String> const& types() const { return types_.texts(); }
    std::vector<std::string> const& flags() const { return flags_; } ///< letters
    /// The lines of a mount, in the order read: indexes to Device::mounts.
    std::span<std::size_t const> linesOf(ReportMount const& mount) const {
        return std::span(lines_).subspan(mount.firstLine, mount.lineCount);
    }

  private:
    void gather(KeldaDatabase::Device const& device);
    void sortByPath();
    void numberFlags();

    std::vector<ReportMount> mounts_;
    std::vector<std::size_t> lines_;
    std::vector<Rook::String> paths_;
    NumberedTexts types_;
    std::vector<std::string> flags_;
};

} // namespace KeldaTool
