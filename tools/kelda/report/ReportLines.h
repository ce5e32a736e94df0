// The lines of a report: those by which agents mount something.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <KeldaBase/MountFileInfoTypes.h>

#include "database/Device.h"
#include "report/CompactJson.h"
#include "report/MountLines.h"
#include "report/ReportMounts.h"
#include "report/SourceLines.h"

namespace KeldaTool {

class ReportLines {
  public:
    /// Everything must outlive the object.
    ReportLines(KeldaDatabase::Device const& device, ReportMounts const& mounts,
                Kelda::StringMap const& everyProfile, SourceLines& source);

    /// Writes an array, each line as an object. What an earlier line has in common with a line is
    /// written as the number of that line.
    void writeTo(CompactJson& json);

    /// The number of a line (an index to Device::mounts) that is one of them.
    std::uint32_t numberOf(std::size_t mount) const { return numbers_[mount]; }
    /// After writing: for each path of the mounts the wildcard path by which its first line was
    /// looked up; empty for a line that names no path.
    std::vector<std::string> const& wildcardPaths() const { return wildcardPaths_; }

  private:
    using Known = std::unordered_map<std::string, std::uint32_t>;

    void write(std::size_t mount, CompactJson& json);
    void writeText(std::uint32_t number, MountLine const& line, CompactJson& json);
    void writeExpansions(std::uint32_t number, MountLine const& line, CompactJson& json);
    std::string expansionsOf(MountLine const& line);

    KeldaDatabase::Device const& device_;
    SourceLines& source_;
    MountLines lines_;
    std::vector<std::uint32_t> numbers_; // by mount
    std::vector<std::uint32_t> paths_;   // by mount
    std::vector<std::string> wildcardPaths_;
    Known texts_;      // the first line with each text,
    Known expansions_; // and with such expansions
};

/// Writes [file, line].
void writePlacePair(KeldaDatabase::Place const& place, SourceLines& source, CompactJson& json);
/// Writes the members "f" and "l" of a known place.
void writePlaceMembers(KeldaDatabase::Place const& place, SourceLines& source, CompactJson& json);

} // namespace KeldaTool
