/// @file
/// The parser that runs inside an agent: loads what is the agent's, and throws at the first fault.
#pragma once

#include <vector>

#include <KeldaBase/MountFileInfo.h>

namespace Kelda {

/// An AgentMountFileInfo loads the preinit files and, of the mount profiles, only those whose
/// agent-name line matches one of its agent strings.
///
/// Construct it, add the agent strings, then ask: the first query loads everything. Agent strings
/// that are added later are loaded at once. Every fault in a file leaves the operation that made
/// the parser load as a Fen::AgentException, whose text is mfiExceptionToString of the fault; what
/// was loaded before it stays, the fault stays in exceptions(), and a further query starts the load
/// afresh.
///
/// unDoInit gives back what was loaded and keeps the agent strings and the mounts that
/// recordMountArgsExternal added; the next query loads again.
class KELDABASE_API AgentMountFileInfo : public MountFileInfo {
  public:
    /// `loadMountProfile` false: no profile file is read, every agent counts as one without a
    /// profile. The other arguments are MountFileInfo's. Nothing is read yet.
    AgentMountFileInfo(bool dontMergeFlags, Rook::String preinitDir,
                       Rook::String keldaMountProfileDir, bool loadMountProfile,
                       Rook::String defaultGroupName);
    /// Gives back everything, also after disableUnDoInit.
    ~AgentMountFileInfo() override;

    /// Adds an agent string. `overrideAgentString`, if not empty, is what "%agentString" stands for
    /// in its profiles, in place of `agentString`. Adding the same pair again changes nothing;
    /// another override replaces the first one before the parser has loaded, and afterwards is
    /// reported as "reloaded agent %s with override %s rather than %s after doInit()".
    void addAgent(Rook::String agentString, Rook::String overrideAgentString) override;

    /// Loads the preinit files and then every agent, in the order added; does nothing when that is
    /// done already. Every query calls it.
    void doInit() override;

    /// Gives back what was loaded, unless disableUnDoInit was called.
    void unDoInit() override;

    /// From now on unDoInit does nothing; there is no way back.
    void disableUnDoInit() override;

    /// As in MountFileInfo; which agents have no profile is forgotten too.
    void clearProfileData() override;

    /// Sets the root flags of an agent that has no profile. Loads first; then it is a programming
    /// error (assertions) if there are root flags already, if a profile was found, or if the agent
    /// is no active-mount agent. unDoInit forgets them.
    void setRootFlags(Rook::String const& flags) override;

    using MountFileInfo::foundMountProfile;
    /// False for an agent string for which loading found no profile; true for every other string,
    /// one that was never added included.
    bool foundMountProfile(Rook::String const& agentString) override;

    /// Records the mount as MountFileInfo does, and again after every later initialisation.
    void recordMountArgsExternal(Rook::String const& path, MountArgs const& args, bool targetPath,
                                 bool mergeType) override;

    /// Ends an initialisation: the passive root flag, the flags of intermediate paths and, from the
    /// second time on, the mounts of recordMountArgsExternal.
    void handleDoInit() override;

    /// Decides whether the open file is a profile of the current agent and loads it if so. Returns
    /// profileLoader's count, 0 for a file that is passed over.
    int profileSearcher(FILE* file) override;

    /// As in MountFileInfo, but an agent string that ends in "-" keeps the "-" in its last token.
    void tokenizeAgentString() override;

    /// The operand itself when it holds no "%", else the alias it names; reports "No such alias
    /// defined: '%s'" when there is none.
    Rook::String evaluateAliasValue(Rook::String const& token) override;

    /// Records the fault and throws it as a Fen::AgentException.
    void maybeThrow(Rook::String const& message) const override;

    /// Excuses a path in a conditional group, and any path while the default preinit files are not
    /// loaded; the excused path takes `type`, the type written in its own line.
    std::optional<Rook::String> excuseMissingType(std::ostringstream& message,
                                                  char const* type) const override;

    /// Loads one agent: its profiles, then the default groups. Called by addAgent and doInit.
    void doAddAgent(Rook::String agentString, Rook::String overrideAgentString);

    /// Records the mounts of recordMountArgsExternal again. Called by handleDoInit.
    void replaySavedRMAs();

  protected:
    /// One call of recordMountArgsExternal.
    struct SavedRMA {
        Rook::String path;       ///< its argument of this name
        MountArgs args;          ///< its argument of this name
        bool targetPath = false; ///< its argument of this name
        bool mergeType = false;  ///< its argument of this name
    };

    bool unDoInitDisabled_ = false;   ///< disableUnDoInit was called
    bool loadMountProfile_;           ///< the constructor's argument
    std::vector<SavedRMA> savedRMAs_; ///< in the order of the calls
    /// Those that foundMountProfile says no to.
    UnorderedStringSet agentStringsWithoutProfile_;

  private:
    KELDABASE_LOCAL void forgetInterruptedLoad();
    KELDABASE_LOCAL void changeOverride(Rook::String const& agentString,
                                        Rook::String const& overrideAgentString,
                                        Rook::String& stored);
    KELDABASE_LOCAL int loadProfilesOfAgent();
    KELDABASE_LOCAL int searchProfiles(Rook::String const& directory);
    KELDABASE_LOCAL void noteMissingProfile();
    KELDABASE_LOCAL void loadDefaultGroup();
    KELDABASE_LOCAL void loadDefaultGroupPerAgent();
    KELDABASE_LOCAL void loadDefaultGroupFile(Rook::String const& fileName,
                                              Rook::String const& agentString);
    KELDABASE_LOCAL Rook::String const& agentStringForAliases() const;
    KELDABASE_LOCAL Rook::String nameToMatch();
    KELDABASE_LOCAL bool passesOverActiveAgent(FILE* file, char const* agentName);

    bool loadUnderWay_ = false;
};

} // namespace Kelda
