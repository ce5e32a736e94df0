// Writes down what a parser meets while it loads.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include <KeldaBase/LoadObserver.h>

#include "Device.h"

namespace KeldaDatabase {

class LoadRecorder : public Kelda::LoadObserver {
  public:
    /// `progress`, unless empty, is called with the number of files opened so far.
    LoadRecorder(Device& device, std::function<void(std::size_t)> const& progress)
        : device_(device), progress_(progress) {}

    // What only the flavour knows.

    /// A profile begins, in the open file or, for a default group, before one is opened.
    void profileBegins(Profile::Kind kind, Kelda::Places places);
    void agentNameIs(Rook::String const& agentName, Rook::String const& agentKey);
    void profileEnds();
    /// A fault was recorded.
    void faultFound(Kelda::MfiException const& exception, Kelda::Places places);
    /// The last path line was not recorded after all.
    void lastMountIsRefused();
    /// The moment of what is met next.
    Moment now() const { return now_; }

    // What the parser tells.
    void fileOpened(Rook::String const& directory, Kelda::Places places) override;
    void fileClosed(Kelda::Places places) override;
    void fileSkipped(Rook::String const& directory, std::string_view name,
                     Kelda::SkipReason reason) override;
    void preinitLine(Kelda::PreinitLine const& line, Kelda::Places places) override;
    void mountLine(Kelda::MountLine const& line, Kelda::Places places) override;
    void tokenBound(Rook::String const& token, Rook::String const& value,
                    Kelda::Places places) override;
    void aliasDefined(Rook::String const& name, std::string_view expression,
                      Rook::String const& value, Kelda::Places places) override;
    void aliasUsed(Rook::String const& name, Rook::String const& value,
                   Kelda::Places places) override;
    void groupOpened(std::string_view name, unsigned char priority, Kelda::Places places) override;
    void included(std::string_view pattern, int files, Kelda::Places places) override;
    void keywordLine(std::string_view keyword, std::string_view line,
                     Kelda::Places places) override;

    /// Profile files are read from now on.
    void preinitsAreLoaded() { family_ = FileFamily::profile; }

  private:
    void define(Alias alias);
    FileId idOf(Rook::String const& directory, Rook::String const& name);
    Place placeOf(Kelda::Places places) const;
    Profile* current() { return profile_ == none ? nullptr : &device_.profiles[profile_]; }

    Device& device_;
    std::function<void(std::size_t)> const& progress_;
    std::size_t opened_ = 0;
    FileFamily family_ = FileFamily::preinit;
    std::map<std::pair<Rook::String, Rook::String>, FileId> known_;
    std::set<std::pair<Rook::String, Rook::String>> skipped_;
    std::vector<FileId> open_; // the open files, as the parser's stack has them
    ProfileId profile_ = none;
    GroupId group_ = none;
    IncludeId include_ = none; // the Include line that is being served
    std::unordered_map<Rook::String, std::size_t>
        definitions_; // of the profile, by lower-case name
    Moment now_ = 0;
};

} // namespace KeldaDatabase
