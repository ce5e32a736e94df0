// The paths of a device, declared and mounted, gathered for a report.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "database/Device.h"
#include "report/ReportMounts.h"

namespace KeldaTool {

struct ReportPath {
    std::string_view path; ///< "*" for each token; valid as long as the device and the mounts
    std::string_view type; ///< of the mounts or, where nobody mounts it, of the preinit lines
    std::span<std::size_t const> declarations; ///< indexes to Device::preinits
};

class ReportPaths {
  public:
    /// `wildcardPaths`: for each path of the mounts the one that it was looked up by. The device
    /// and the mounts must outlive the object.
    ReportPaths(KeldaDatabase::Device const& device, ReportMounts const& mounts,
                std::vector<std::string> const& wildcardPaths);
    ReportPaths(ReportPaths const&) = delete;
    ReportPaths& operator=(ReportPaths const&) = delete;

    std::vector<ReportPath> const& paths() const { return paths_; } ///< sorted
    /// Which of them a path of the mounts is.
    std::uint32_t indexOf(std::uint32_t mounted) const { return indexes_[mounted]; }

  private:
    using Declarations = std::map<std::string, std::vector<std::size_t>, std::less<>>;

    void addDeclared(Declarations::const_iterator declared);
    std::span<std::size_t const> declarationsOf(std::string_view wildcardPath) const;

    KeldaDatabase::Device const& device_;
    Declarations declarations_; // by wildcard path
    std::vector<ReportPath> paths_;
    std::vector<std::uint32_t> indexes_; // by the number of the mounts
};

} // namespace KeldaTool
