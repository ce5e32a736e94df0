// The parser on the side of the database: reads every file, records every fault, and goes on.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <regex>
#include <sstream>
#include <utility>
#include <vector>

#include <KeldaBase/MountFileInfo.h>

#include "Device.h"
#include "LoadRecorder.h"
#include "database/findings/Finding.h"

namespace KeldaDatabase {

/// Loads all preinit files and every profile: the files with an agent-name line in name order, then
/// the default group files. Files without an agent-name line are read only where they are included.
/// A token of an agent name, and "%agentString", stand for "*".
///
/// Keywords and types of two profiles can be in conflict only where some agent loads both. Such
/// faults are recorded behind all others, once for each line.
///
/// A fault that hangs on the value of a token ("%slot~1", a path too long for one slot only) is
/// found as it is for the value "*".
class DatabaseMountFileInfo : public Kelda::MountFileInfo {
  public:
    DatabaseMountFileInfo(Rook::String preinitDir, Rook::String keldaMountProfileDir,
                          Rook::String defaultGroupName = "DefaultMountGroup");
    ~DatabaseMountFileInfo() override;

    // Before loading; where a parser is initialised already, from the next initialisation on.

    /// Loads this profile, and of all profiles only those that were added.
    void addProfile(Rook::String const& name) override;
    /// Files whose names the expression matches anywhere are not read.
    void setExclusionRegex(std::regex const& expression) override;
    /// Leaves the default group files out, whatever the profiles say.
    void setForceNoDefaultMountGroup() override;
    /// Reads the default group file of agents on a standby, too: the name of the default group with
    /// "Standby" at its end.
    void setWaitForActiveReady() override;
    /// Whether a token of an agent name stands for its number in the name, "%1", "%2" and so on, so
    /// that paths tell which token is where. At first not: each stands for "*".
    void numberedTokensIs(bool on) { numberedTokens_ = on; }
    /// Whether findings() holds what goes beyond the faults that loading records. At first not.
    void staticCheckIs(bool on) override;

    /// Called with the number of files read so far, each time that a file is opened.
    using Progress = std::function<void(std::size_t files)>;
    void progressIs(Progress progress) { progress_ = std::move(progress); }

    void doInit() override;
    void unDoInit() override;
    void clearProfileData() override;

    /// Query: the agent name of the single profile that was loaded; throws Fen::AgentException when
    /// there is none or more than one.
    Rook::String agentName() override;
    /// Query: all that the files say.
    Device const& device();
    /// Query: what is wrong, each once, in the order of the places found: faults without those that
    /// follow from another fault of their line and, with staticCheckIs, what the checks find.
    std::vector<Finding> const& findings();
    /// The same for whoever wants to keep them; a further call finds them anew.
    std::vector<Finding> takeFindings();

    // What the parser asks its flavours.
    Rook::String evaluateAliasValue(Rook::String const& token) override;
    void maybeThrow(Rook::String const& message) const override;
    std::optional<Rook::String> excuseMissingType(std::ostringstream& message,
                                                  char const* type) const override;

  private:
    int loadProfile(FILE* file);
    void loadProfiles(Rook::String const& directory);
    void loadDefaultGroup(Rook::String const& fileName, Profile::Kind kind);
    void bindTokens(Rook::String const& agentName);
    void beginProfile(Profile::Kind kind);
    void settleFaults();
    void forget();

    std::vector<Rook::String> added_;
    bool forceNoDefaultMountGroup_ = false;
    bool waitForActiveReady_ = false;
    bool staticCheck_ = false;
    bool numberedTokens_ = false;
    bool isLoading_ = false;
    Device device_;
    Progress progress_;
    mutable LoadRecorder recorder_{device_, progress_};
    std::vector<Finding> findings_;
    bool findingsAreMade_ = false;
};

} // namespace KeldaDatabase
