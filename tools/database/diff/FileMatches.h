// The files of two devices, and their lines, beside each other.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "DeviceSide.h"
#include "LineMatch.h"

namespace KeldaDatabase {

/// Files correspond by their family, their folder and their name.
class FileMatches {
  public:
    using Version = LineMatch::Version;

    FileMatches(DeviceSide& before, DeviceSide& after) : before_(before), after_(after) {}

    DeviceSide& side(Version version) { return version == Version::before ? before_ : after_; }
    DeviceSide& other(Version version) { return version == Version::before ? after_ : before_; }

    /// The file in the other device; none where it is not there.
    FileId counterpart(Version version, FileId file);
    /// How the lines of a file that is in both devices belong together.
    LineMatch const& match(Version version, FileId file);

  private:
    DeviceSide& before_;
    DeviceSide& after_;
    std::map<FileId, LineMatch> matches_; // by the file in the former device
};

} // namespace KeldaDatabase
