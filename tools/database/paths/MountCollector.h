// Gathers what a parser does for one path, in the order in which it happens.
#pragma once

#include <map>
#include <optional>
#include <vector>

#include <KeldaBase/MountFileInfoTypes.h>

#include "AskedPath.h"
#include "PathStory.h"

namespace KeldaDatabase {

class MountCollector {
  public:
    explicit MountCollector(AskedPath const& asked) : asked_(asked) {}

    /// A line is about to be recorded; the next change is its doing.
    void lineIsNext(StoryLine line) { line_ = std::move(line); }
    /// The line was refused after all, if it is not recorded yet.
    std::optional<StoryLine> takeRefusedLine();

    /// What LoadObserver::recordChanged tells; `byLine`: a file was open.
    void changed(Rook::String const& path, Kelda::MountArgs const* before,
                 Kelda::MountArgs const& after, bool byLine);
    /// What LoadObserver::flagsInherited tells.
    void inherited(Rook::String const& path, Rook::String const& parent,
                   Fen::MountTable::Flags before, Fen::MountTable::Flags after);

    /// The mounts of the path, once everything is loaded.
    std::vector<StoryMount> take(Kelda::MountArgsMap const& records, Rook::String const& rootFlags);

  private:
    AskedPath const& asked_;
    std::optional<StoryLine> line_;
    std::map<Rook::String, StoryMount> mounts_;
};

/// The letters of flags.
std::string flagText(Fen::MountTable::Flags flags);

} // namespace KeldaDatabase
