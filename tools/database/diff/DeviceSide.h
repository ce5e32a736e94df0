// One of two devices that are compared, and what its files say in order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "LineMatch.h"
#include "database/DatabaseMountFileInfo.h"
#include "database/paths/WrittenLine.h"

namespace KeldaDatabase {

/// The condition lines that are in force for a path line.
struct Condition {
    std::string text; ///< "Condition: a text", several joined by ", "; empty for none
    std::vector<std::size_t> keywords;
};

/// The files of a device, the lines that give types, and the conditions of path lines; each found
/// when it is first asked for.
class DeviceSide {
  public:
    explicit DeviceSide(DatabaseMountFileInfo& parser)
        : parser_(parser), device_(parser.device()), places_(device_) {}

    Device const& device() const { return device_; }
    PlaceReader& places() { return places_; }
    Kelda::StringMap const& everyProfile() const { return parser_.predefinedAliases(); }
    /// The type that the preinit files give a wildcard path; empty for none.
    Rook::String typeOf(Rook::String const& wildcardPath) const;

    /// What a file is called in every device: its folder, "" for the main one, and its name.
    using FileName = std::pair<std::string, std::string>;
    FileName nameOf(FileId file) const;
    FileId fileNamed(FileFamily family, FileName const& name);
    WrittenFile const& written(FileId file);
    std::int32_t editorLine(Place const& place);

    /// The path lines that begin at a line of a file, as the editor counts: indexes to the mounts.
    std::span<std::size_t const> mountsAt(FileId file, std::int32_t line);
    /// The profile that was read from a file; none for a file that is no profile.
    ProfileId profileOf(FileId file);
    /// The preinit line that gives a wildcard path its type: its own last one or, for a directory,
    /// the first one below it.
    PreinitDeclaration const* typeGiver(Rook::String const& wildcardPath);
    Condition const& conditionOf(std::size_t mount);

  private:
    std::map<std::int32_t, std::vector<std::size_t>> const& mountsByLine(FileId file);
    void findConditions();
    void findConditions(Profile const& profile);
    std::uint32_t conditionOf(std::vector<std::size_t> const& keywords);
    void findTypeGivers();
    void addGiver(PreinitDeclaration const& line);

    DatabaseMountFileInfo& parser_;
    Device const& device_;
    PlaceReader places_;
    std::map<std::pair<FileFamily, FileName>, FileId> files_;
    std::map<FileId, WrittenFile> written_;
    using Mounts = std::vector<std::size_t>;
    std::map<FileId, Mounts> mountsOfFile_; // of all files, but only these files were read:
    std::map<FileId, std::map<std::int32_t, Mounts>> mountsByLine_;
    std::map<FileId, ProfileId> profiles_;
    std::unordered_map<Rook::String, PreinitDeclaration const*> typeGivers_, directoryGivers_;
    std::vector<std::uint32_t> conditionOfMount_;
    std::vector<Condition> conditions_; // the first one is none
};

} // namespace KeldaDatabase
