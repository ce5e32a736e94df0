// The path lines of a device as they were written, with what their tokens and aliases stand for.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <KeldaBase/MountFileInfoTypes.h>

#include "database/Device.h"
#include "database/paths/PathStory.h"
#include "report/SourceLines.h"

namespace KeldaTool {

/// A token or alias in a path, and what came in its place.
struct Expansion {
    std::string name; ///< as written in the path
    std::string value;
    KeldaDatabase::StoryAlias::Origin origin = KeldaDatabase::StoryAlias::Origin::undefined;
    KeldaDatabase::Alias const* definition = nullptr; ///< of a token or an alias line
};

struct MountLine {
    std::string text;        ///< with the lines that continue it, without its comment
    std::string writtenPath; ///< short forms written out; empty for "Include: ConfigMountProfile"
    std::vector<Expansion> expansions; ///< of the written path, in order
    std::string_view group;            ///< empty for the group without a name
    std::string_view condition;        ///< the line; empty for none
};

/// Tells one line after the other: what is known of the lines above is kept, so that all lines
/// together take no more time than there is text.
class MountLines {
  public:
    /// `everyProfile`: the aliases that every profile has, by lower-case name. All of it must
    /// outlive the object.
    MountLines(KeldaDatabase::Device const& device, Kelda::StringMap const& everyProfile,
               SourceLines& source)
        : device_(device), everyProfile_(everyProfile), source_(source) {}

    /// The line of a mount (an index to Device::mounts), to be asked for in their order. What it
    /// refers to is valid up to the next call.
    MountLine of(std::size_t mount);

  private:
    void begin(KeldaDatabase::ProfileId profile);
    void readUpTo(KeldaDatabase::Mount const& mount);
    std::string_view groupOf(KeldaDatabase::Mount const& mount) const;
    Expansion expansionOf(std::string const& token) const;

    KeldaDatabase::Device const& device_;
    Kelda::StringMap const& everyProfile_;
    SourceLines& source_;
    // Of the profile that is being told, up to the last line.
    KeldaDatabase::ProfileId profile_ = KeldaDatabase::none;
    std::size_t alias_ = 0; // the next ones
    std::size_t keyword_ = 0;
    std::unordered_map<std::string, KeldaDatabase::Alias const*> definitions_; // by lower-case name
    std::string condition_;
};

} // namespace KeldaTool
