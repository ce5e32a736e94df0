/// @file
/// The parser of preinit files and mount profiles, and the one answerer of questions about them.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <regex>
#include <set>
#include <span>
#include <sstream>
#include <string_view>
#include <vector>

#include <KeldaBase/DynFileLoadCheck.h>
#include <KeldaBase/MountFileInfoTypes.h>

namespace Kelda {

class LoadObserver;
enum class SkipReason : std::uint8_t;

/// One instance reads a directory of preinit files (which paths exist, with types and attributes)
/// and a directory of mount profiles (which agent mounts which path with which flags), keeps what
/// it learnt, and answers queries about it.
///
/// The class is the base of two flavours. AgentMountFileInfo loads only what belongs to its agents
/// and throws at the first fault; a database-side flavour reads everything, records every fault and
/// goes on. They differ in the virtual operations: doInit decides what is read, maybeThrow what a
/// fault does.
///
/// Faults. Whatever is wrong in a file is reported through maybeThrow. In this class that records
/// an MfiException and returns; most handlers then still apply the effect of the line. Texts given
/// below as "reports ..." are the messages; "%s", "%d" and "%c" stand for what the sentence names.
/// Programming errors (no file open, a query before loading) are assertions and end the process.
///
/// Queries. Where nothing else is said, a query first calls doInit, so that it loads everything
/// when that was not done yet.
///
/// Threads: one thread at a time uses a parser; two threads may each use their own.
///
/// All operations are public, those of the handlers too: a flavour or a test may call each alone.
class KELDABASE_API MountFileInfo {
  public:
    // ------------------------------------------------------------------------------------------
    /// @name Life cycle, and the operations that flavours override
    /// The virtual operations stand in the order of their slots; a flavour built elsewhere relies
    /// on it.
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Destroys what was loaded; unDoInit is not called.
    virtual ~MountFileInfo();

    /// Adds an agent to load; see AgentMountFileInfo. Agent side only; throws
    /// Fen::NoImplementationException here.
    virtual void addAgent(Rook::String agentString, Rook::String overrideAgentString);
    /// Adds one profile by name. Database side only; throws Fen::NoImplementationException here.
    virtual void addProfile(Rook::String const& name);
    /// The agent of the single profile that a parser holds. Database side only; throws
    /// Fen::NoImplementationException here.
    virtual Rook::String agentName();
    /// Loads what the flavour loads, unless that is done already.
    virtual void doInit() = 0;
    /// Returns the parser to what its constructor made and gives back the memory; does nothing when
    /// it is not initialised. The agents that were added stay, and so do faults, title templates
    /// and the aliases of the current file, which clearProfileData empties.
    virtual void unDoInit();
    /// Pins what was loaded. Agent side only; throws Fen::NoImplementationException here.
    virtual void disableUnDoInit();
    /// Forgets what profiles brought, recorded faults included, and keeps what preinit files did.
    /// The parser stays initialised, so that no query loads the profiles again.
    virtual void clearProfileData();
    /// Sets the root flags by hand. Agent side only; throws Fen::NoImplementationException here.
    virtual void setRootFlags(Rook::String const& flags);
    /// Files whose names the expression matches anywhere are not read. Database side only; throws
    /// Fen::NoImplementationException here.
    virtual void setExclusionRegex(std::regex const& expression);
    /// Leaves the default mounts out, whatever the profiles say. Database side only; throws
    /// Fen::NoImplementationException here.
    virtual void setForceNoDefaultMountGroup();
    /// Adds the default mounts of agents on a standby. Database side only; throws
    /// Fen::NoImplementationException here.
    virtual void setWaitForActiveReady();
    /// Switches static checks on or off. Database side only; throws Fen::NoImplementationException
    /// here.
    virtual void staticCheckIs(bool on);
    /// Whether a profile was found for an agent string. Agent side only; throws
    /// Fen::NoImplementationException here.
    virtual bool foundMountProfile(Rook::String const& agentString);
    /// Records a mount at run time (a dynamic path), by the rules of recordMountArgs.
    virtual void recordMountArgsExternal(Rook::String const& path, MountArgs const& args,
                                         bool targetPath, bool mergeType);
    /// Ends an initialisation: counts it and marks the parser initialised. Flavours' doInit calls
    /// it last.
    virtual void handleDoInit();
    /// Takes or passes over one open profile file, and returns how many profiles that loaded. Agent
    /// side only; throws Fen::NoImplementationException here.
    virtual int profileSearcher(FILE* file);
    /// Splits the current agent string at every "-" into agentStringTokens().
    virtual void tokenizeAgentString();
    /// Binds one token of a profile's agent name: makes it an alias of the current file and a title
    /// template. `isConsuming`: the token took all that was left of the agent string.
    virtual void recordAgentNameTokenAlias(Rook::String token, Rook::String value,
                                           bool isConsuming);
    /// The value of one operand of an alias expression, or of an alias in a path: the operand
    /// itself when it holds no "%", else lookupAlias. An alias that is not defined is reported as
    /// "No such alias defined: '%s'" and gives the empty string.
    virtual Rook::String evaluateAliasValue(Rook::String const& token) = 0;
    /// Opens a mount group: the paths that follow belong to it. The priority, 1 to 99, is traced
    /// only.
    virtual void recordMountGroup(char const* name, unsigned char priority);
    /// Evaluates an expression (which it may write over) and makes it an alias of the current file.
    virtual void recordAlias(char const* key, char* rhs);
    /// Notes a condition line, given with its blanks: the paths that follow are conditional until
    /// the next group. `blocking`: it is a "ConditionBlocker:" line.
    virtual void recordCondition(LineBuffer const& bufferWithSpaces, bool blocking);
    /// What a fault does: here it is recorded in exceptions() with the current file and line. A
    /// flavour may throw instead, but must record first.
    virtual void maybeThrow(Rook::String const& message) const;
    /// Called for an include that loaded nothing: reports "Cannot find profile to include matching
    /// " and the pattern when it named one file, and only traces that for a pattern with wildcards.
    virtual void reconcileFailedInclude(char const* pattern) const;
    /// The type of a path without a preinit type, or nothing when that is a fault. `type` is the
    /// type written in the profile line; what the excuse adds to the message goes to `message`.
    /// Here nothing is excused.
    virtual std::optional<Rook::String> excuseMissingType(std::ostringstream& message,
                                                          char const* type) const;

    /// `dontMergeFlags` switches intermediate paths off (recordIntermediatePaths). Takes the cell
    /// numbers, the system's name and whether Q9_CHROOT is set from the process, and makes the two
    /// file-load checks. Reads no file.
    MountFileInfo(bool dontMergeFlags, Rook::String preinitDir, Rook::String keldaMountProfileDir,
                  Rook::String defaultGroupName);
    MountFileInfo(MountFileInfo const&) = delete;
    MountFileInfo& operator=(MountFileInfo const&) = delete;

    /// Ends a profile that was not included: its group, its condition and its aliases are over.
    void resetFileContext();

    /// Whether handleDoInit ran, and unDoInit not since.
    bool isInitialized() const { return isInitialized_; }
    /// How often handleDoInit ran.
    std::int32_t doInitCount() const { return doInitCount_; }
    /// Whether intermediate paths are switched off, as given to the constructor.
    bool dontMergeFlags() const { return dontMergeFlags_; }
    /// The directory of preinit files, as given to the constructor.
    Rook::String const& preinitDir() const { return preinitDir_; }
    /// The directory of mount profiles, as given to the constructor.
    Rook::String const& keldaMountProfileDir() const { return keldaMountProfileDir_; }
    /// The file of the default mount group, as given to the constructor; with "PerAgent" at its end
    /// that of the group that each agent gets for itself.
    Rook::String const& defaultGroupName() const { return defaultGroupName_; }
    /// Whether Q9_CHROOT was set, to whatever value, when the parser was made.
    bool chroot() const { return chroot_; }

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name Faults and messages
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Every fault, in the order found.
    std::vector<MfiException> const& exceptions() const { return exceptions_; }
    /// The first fault, if any.
    std::optional<MfiException> firstException() const;
    /// A fault as text: file, line and message on lines of their own, without those it lacks; the
    /// message alone when there is no file.
    static Rook::String mfiExceptionToString(MfiException const& exception);
    /// Reports through maybeThrow and, when that returns, traces the recorded fault at level 0. All
    /// faults are reported this way.
    void reportAndTrace(Rook::String const& message) const;
    /// `error` followed by what may explain missing data: the package that Q9PKG names and, for a
    /// profile error, the agents that were loaded.
    Rook::String fmtNotFoundError(Rook::String const& error, bool profileError) const;
    /// "{a, b}"; "{}" when empty.
    static Rook::String vecToString(std::span<Rook::String const> list);
    /// The same of strings that are written out.
    static Rook::String vecToString(std::initializer_list<Rook::String> list);

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name Open files and lines
    /// @{
    // ------------------------------------------------------------------------------------------

    /// The name of the file being read; a programming error when no file is open.
    Rook::String currentFileName() const;
    /// Its current line, counted from 1; a programming error when no file is open.
    std::int32_t currentLine() const;
    /// Adds `n`, the physical lines that the last logical line took, to the current line.
    void nextLine(int n);

    /// Makes a logical line of the physical line in the buffer: joins the lines that follow while
    /// it ends in a backslash, then cuts it at the first "#". Returns how many physical lines it
    /// took, at least 1.
    ///
    /// Reports "syntax error: multi-line comment: %s" for a line that begins with "#" and holds a
    /// backslash, and "syntax error: additional characters after \: %s" for a backslash that is not
    /// followed by the line's end; the line then stays as it is.
    int prepareLine(LineBuffer& buffer, FILE* file) const;
    /// Writes out the shorthands "%cellPath" and "%peerCellPath", in any case, as "cell/%cellId"
    /// and "cell/%peerCellId".
    void convertPath(LineBuffer& buffer) const;
    /// Whether the line is `path,type,flags`: two commas or more and no "=".
    static bool matchProfilePathLine(LineBuffer const& buffer);
    /// Whether the line is `alias:name=value`: begins with "alias:" in any case and holds a "=".
    static bool matchAliasLine(LineBuffer const& buffer);

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name Loading: directories and files
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Reads one open file and returns what it counts for.
    using FileLoader = int (MountFileInfo::*)(FILE* file);

    /// Reads the preinit directory (unless MFI_NO_DEFAULT_PREINIT is set), then the files and
    /// directories of KELDA_EXTRA_PREINIT_PATH, separated by ":", and takes note of
    /// KELDA_EXTRA_PROFILE_PATH. An extra entry that cannot be read is reported as "Unable to fopen
    /// preinit profile: " and the entry, and ends the operation at once.
    void doLoadPreinits();

    /// Calls `loader` on each file of a directory whose name matches `pattern` (a file name
    /// pattern; null for all files), in name order, and returns the sum of what it returns. Names
    /// that begin with "." are matched only by a pattern that does too.
    ///
    /// Passed over are names that end in "~", names with ";" when chroot() is set, names that
    /// `check` (null for none) refuses and names that the exclusion expression matches. The pattern
    /// "ConfigMountProfile" stands for a profile that no file holds: it mounts every path declared
    /// with "CONFIG:" with the flags "wi" and counts 1; only when PROFILEMULTIWRITERCHECK is set is
    /// a file of that name looked for first.
    ///
    /// Reports "Cannot open directory ", "Cannot openat file " and "Cannot fdopen file " with the
    /// names, or "Glob threw exception %d while searching for file %s ", and then returns 0; what
    /// was read before stays. A file that is neither regular nor a directory counts as one that
    /// cannot be opened; a directory reads as an empty file.
    int mapDir(Rook::String dirName, FileLoader loader, char const* pattern,
               DynFileLoadCheck* check);

    /// Reads one open preinit file to its end; returns 1.
    ///
    /// This and profileLoader read the file line by line from where it stands. A line that is
    /// longer than a LineBuffer is taken in pieces, each a line of its own. A NUL character ends
    /// its line, which is reported as "syntax error: NUL character in line after: %s"; a file that
    /// cannot be read on is reported as "Cannot read file %s: %s" (name, what the system says) and
    /// ends there.
    int preinitLoader(FILE* file);
    /// Reads one open profile to its end and returns how many profiles that were, the included ones
    /// counted. The agent-name line has been read already where the flavour needs one. Handles each
    /// line by its kind, reports "syntax error: '%s'" for a line of no kind, and at the end
    /// "'matchActiveName' keyword requires 'activeMount' keyword" where the second is missing.
    int profileLoader(FILE* file);

    /// Query: whether a profile file of this name contributed a path.
    bool fileIsLoaded(Rook::String const& path);
    /// Whether the default preinit files are in force: set by doLoadPreinits.
    bool defaultPreinitsLoaded() const { return defaultPreinitsLoaded_; }
    /// The directory of KELDA_EXTRA_PROFILE_PATH; empty when it was not set.
    Rook::String const& extraProfileDir() const { return extraProfileDir_; }

    /// From now on this observer is told of everything that is read; null for none, as at first.
    /// It is the caller's and must live as long as it is attached.
    void loadObserverIs(LoadObserver* observer) { observer_ = observer; }
    /// The observer; null for none.
    LoadObserver* loadObserver() const { return observer_; }

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name Preinit files: types, attributes, config paths
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Handles one line `[CONFIG:]path,type[,attribute]` without blanks, and may write over it. A
    /// "/" at the path's end is dropped. Reports "preinit syntax error: " and the line when it has
    /// no comma; a path that validateAndRecordPathAttr or validateAndRecordPathConfigInfo refuses
    /// gets no type.
    void handlePreinitPathLine(LineBuffer& buffer);

    /// The key of a path in the type map: every token ("%" with the letters, digits and "_" after
    /// it) becomes "*".
    static void wildcardPath(LineBuffer& path);
    /// The same of a string, of which at most 1023 characters are taken.
    static Rook::String wildcardPath(Rook::String const& path);

    /// Sets the type of a wildcard path; the last one wins.
    void pathTypeMapIs(Rook::String path, Rook::String type);
    /// Gives every ancestor of `path` the type "Fen::Dir", nearest first, up to the first that has
    /// a type. Cuts `path` up.
    void addParentPathTypes(char* path);
    /// The type of a wildcard path, without loading first. Reports "getType: no type info for path
    /// " and the path (through fmtNotFoundError) when there is none, and gives "".
    Rook::String pathTypeMap(Rook::String const& path) const;
    /// Query: the type of a wildcard path, as pathTypeMap gives it.
    Rook::String getType(Rook::String path);
    /// Query: every wildcard path that has a type, those given to ancestors included.
    std::set<Rook::String> preinitPaths();

    /// The attribute of a text, in any case; a null text gives `none`. Reports "invalid attribute:
    /// %s" for any other text, the empty one included, and gives `invalid`.
    PreinitAttr preinitAttrFromString(char const* text) const;
    /// The text of an attribute. Reports "Invalid preinit path attr" for one that has none, and
    /// gives null.
    char const* preinitAttrToString(PreinitAttr attr) const;
    /// Records the attribute of a token path and returns it; the first one of a path stays. Returns
    /// `invalid` after reporting a bad text; another attribute than the first, as "Redefining
    /// attribute for %s", "Old Attribute: %s" and "New Attribute: %s" on lines of their own; or
    /// "non-cell tokens in non-createOnMount path: %s". A token is a cell token when "%cellId"
    /// or "%peerCellId" begins with it, in any case.
    PreinitAttr validateAndRecordPathAttr(char const* tokenPath, char const* attrText);
    /// Sets the attribute of a token path; the last one wins.
    void pathAttrMapIs(Rook::String path, PreinitAttr attr);
    /// Query: the attribute text of a token path, "" for none. Reports "getPreinitAttr: attributes
    /// are indexed by plain paths, including tokens, not wildcards" for a path with "*", and
    /// "getPreinitAttr: no attr info for path " and the path (through fmtNotFoundError) for one
    /// never declared.
    Rook::String getPreinitAttr(Rook::String path);
    /// Query: every token path of the preinit files, in no particular order.
    StringList rawPreinitPaths();

    /// Records a path of a "CONFIG:" line as an explicit config path and returns true. Reports
    /// "alias found in preinit CONFIG path: %s" and goes on; reports "path %s may not have both
    /// CONFIG and createOnMount. All config paths must be present at startup" and returns false.
    bool validateAndRecordPathConfigInfo(char const* tokenPath, PreinitAttr attr);
    /// Records whether a path is a config path. The first record of a path stays: another one is
    /// reported as "Attempting to overwrite ConfigInfo for path %s. Old: (%s, %s), New: (%s, %s)".
    void addPathConfigInfo(Rook::String const& path, bool isConfig, bool isExplicit);
    /// Declares a path a child of a config path, as addPathConfigInfo does. Loads first.
    void addConfigChildPath(Rook::String const& path);
    /// Declares a path no config path, as addPathConfigInfo does. Loads first.
    void addNonConfigPath(Rook::String const& path);
    /// Query: whether a path is declared a config path or, with includeChildren, is a child of one.
    bool pathIsConfig(Rook::String const& path, bool includeChildren);
    /// Query: the config information of every path that has any.
    StringKeyed<ConfigInfo> const& pathConfigInfoMap();
    /// Query: whether a path has config information.
    bool pathConfigInfoMapHas(Rook::String const& path);

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name Mount paths
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Handles one profile line `path,type,flags` without blanks, and may write over it. A "/" at
    /// the path's end is dropped. The type recorded is the one that the preinit files give the
    /// path; the line's own only serves excuseMissingType. A path without a type is not recorded.
    void handleProfilePathLine(LineBuffer& buffer);
    /// The type of a path as written, before aliases are expanded. Reports "No type info for path
    /// '%s' found in preinit files while loading profile file" and what is known of the reason when
    /// there is none and nothing excuses it.
    std::optional<Rook::String> validateType(LineBuffer const& path, char const* type) const;
    /// Records a path of a profile, and files it under its mount group and its profile file; a
    /// programming error when no file is open.
    void recordMountPath(char const* path, Rook::String const& type, char const* flags);
    /// recordMountArgs for a path that is not dynamic and whose type must be the same.
    void recordMountArgsInternal(Rook::String const& path, MountArgs const& args, bool targetPath);
    /// The merge behind all records. `targetPath`: the path itself was named; otherwise it exists
    /// above one that was. Flags of a path met again are merged; its type must be the same, unless
    /// `mergeType` keeps the first one that is not empty. `dynamic`: recorded at run time; such a
    /// path is filed under a group and a file of the name "recordMountArgs".
    ///
    /// Reports "Invalid flags %s in path %s", or "recordMountArgs: types don't match for path '%s':
    /// '%s'  '%s'" (path, new type, old type), and leaves the record as it was.
    void recordMountArgs(Rook::String const& path, MountArgs const& args, bool targetPath,
                         bool mergeType, bool dynamic);
    /// Replaces the flags of a dynamic path. Reports "Attempting to update flags for path %s, which
    /// does not exist in MountFileInfo", or "Attempting to update flags for path %s, which is
    /// present in a mount profile (not a dynamic path)", and changes nothing.
    void updateMountFlags(Rook::String path, Fen::MountTable::Flags flags);
    /// Query: the record of a path. Reports "mountInfo: no such path: " and the path (through
    /// fmtNotFoundError) when there is none, and gives an empty record.
    MountArgs mountInfo(Rook::String path);
    /// Query: whether a path has a record.
    bool infoExists(Rook::String const& path);
    /// Query: whether a path has a record and was named itself.
    bool isExplicit(Rook::String const& path);
    /// Whether mounting the path with these flags would change nothing: its record holds them all.
    /// The type must be the same where the mount instantiates or, with `prevUnmounted`, was
    /// unmounted before. `mountSynchronized` leaves the instantiating flag out of the comparison,
    /// `active` the passive one. A write flag beside a passive one does not count, in the new flags
    /// only with `active`. A path without a record gets an empty one; nothing is loaded.
    bool infoCompatible(Rook::String const& path, Rook::String const& type,
                        Fen::MountTable::Flags newFlag, bool mountSynchronized, bool active,
                        bool prevUnmounted);
    /// Every record in path order, the intermediate ones included; loads nothing.
    MountArgsMap const& pathMountArgsMap() const { return pathMountArgsMap_; }

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name Flags
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Whether every letter of a flag text may be written: on a path or rootFlags: line the letters
    /// "wrcifSDdOAKLSNAE", on a connectionFlags: line "SNAE"; the internal letters "tpCney" are
    /// accepted with a trace. Reports "Encountered unknown mount flag %c" or "Encountered invalid
    /// connection flag %c" for every bad letter, then "c and D flags cannot be used simultaneously
    /// on mount path" or "d flag must be used with c flag on same mount path".
    bool validFlags(Rook::String const& flags, bool isConnectionFlags) const;

    /// Handles one line "rootFlags:FLAGS". Valid flags replace the former ones; others are reported
    /// as "Invalid root flags %s".
    void handleRootFlagsLine(LineBuffer const& line);
    /// Handles one line "connectionFlags:FLAGS". Valid flags replace the former ones; others are
    /// reported as "Invalid connection flags %s".
    void handleConnectionFlagsLine(LineBuffer const& line);
    /// Root flags completed with what every agent's must hold: "rt" for none, else with a "t".
    Rook::String addDefaultRootFlags(Rook::String const& inputFlags);
    /// Query: the root flags.
    Rook::String rootFlags();
    /// Query: the connection flags.
    Rook::String connectionFlags();

    /// Makes a record for every ancestor of every instantiating mount, with the flags that follow
    /// from the mounts below it. Does nothing when dontMergeFlags() is set or the agent is no
    /// active-mount agent. A programming error before all profiles are loaded.
    void recordIntermediatePaths();
    /// Runs recordIntermediatePaths, then gives every intermediate path the flags that it inherits
    /// from its parent, or from the root flags at the top.
    void inheritParentFlags();
    /// Query: the flags that an intermediate path would have above a mount with `targetFlags`,
    /// which must be instantiating.
    Fen::MountTable::Flags getIntermediateFlags(Fen::MountTable::Flags targetFlags,
                                                Rook::String const& intermediatePath);

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name Aliases
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Handles one line "alias:KEY=EXPRESSION", and may write over it. A key that is no "%" with
    /// letters, digits and "_", or that begins with "_" or a digit after the "%", is recorded all
    /// the same but reported as "syntax error: '%s': lhs must specify key name matched by
    /// '%[a-zA-Z0-9_].*' with no leading '_' or digit after the %.".
    void handleAliasLine(LineBuffer& line);
    /// The value of an expression. With a "," it is a list: the values that are not empty, joined
    /// by "-". Else with a "~" a test: the left value if it contains the right one. Else with a "?"
    /// a choice, `condition?then:otherwise`, that takes `then` when the condition is not empty.
    /// Else one operand. Operands are evaluated by evaluateAliasValue. Reports "missing ':' after
    /// '?' in ternary alias" and gives "".
    Rook::String evaluateAliasExpr(char const* rhs);
    /// The value of an alias, its name taken in any case: of the current file, else a predefined
    /// one.
    std::optional<Rook::String> lookupAlias(Rook::String const& token) const;
    /// Sets an alias of the current file; the key begins with "%", and its case does not count.
    void perFileAliasesPushBack(Rook::String const& key, Rook::String const& value);
    /// Sets an alias that every file has; the key begins with "%", and its case does not count.
    void predefinedAliasesIs(Rook::String const& key, Rook::String const& value);
    /// The aliases of the current file, by lower-case name.
    StringMap const& perFileAliases() const { return perFileAliases_; }
    /// The aliases that every file has, by lower-case name; at first "%cellid", "%peercellid",
    /// "%sysname" and "%sliceid" (always "FixedSystem").
    StringMap const& predefinedAliases() const { return predefinedAliases_; }

    /// Replaces every `from` in the buffer, found in any case, by `to`. Reports "cannot expand
    /// path" and the buffer when the result has no room; it is then cut at 1023 characters.
    void strcCaseReplace(LineBuffer& buffer, char const* from, char const* to) const;
    /// Replaces every alias in a path, in a buffer of `bufferSize` bytes, by its value; a value is
    /// not expanded again. When the result has no room, reports "Path buffer too small to expand
    /// alias from '%s'to '%s' in %s": a result that is one character too long ends the expansion
    /// unchanged, a longer one is cut at the buffer's end.
    void expandAliasInPath(char* path, std::size_t bufferSize);

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name Agent names
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Reads an open profile up to its agent-name line, the first line that is neither blank nor a
    /// comment, and returns the name inside `buffer`, without blanks. Null when that line is no
    /// agent-name line or holds a NUL character; only a file that cannot be read is reported.
    char* getAgentNameFromProfile(FILE* file, LineBuffer& buffer);
    /// Looks ahead in an open profile, behind its agent-name line, for a line that begins with
    /// "matchActiveName", and goes back to where the file stood. With `hasConsumingToken`, a "$" in
    /// the agent name, reports a keyword that is found as "Profile '%s' contains 'matchActiveName'
    /// keyword but the agentName line contains '$' (consuming token). The 'matchActiveName' keyword
    /// is incompatible with consuming tokens in the agentName line.". A file that cannot be read
    /// twice is reported as "Cannot look ahead in file %s: %s".
    bool findMatchActiveName(FILE* file, bool hasConsumingToken) const;
    /// How the name of a profile, literal or with "-%" tokens, matches an agent string.
    static AgentNameMatch matchAgentName(Rook::String const& profileAgentName,
                                         Rook::String const& agentString);
    /// The pieces of `value` between the occurrences of a delimiter. A delimiter at the end gives
    /// no empty piece; the empty value gives none at all.
    static std::vector<Rook::String> tokenize(Rook::String const& value,
                                              Rook::String const& delimiterSeq);
    /// Binds the tokens of a profile's name to the parts of the current agent string
    /// (agentStringTokens). A last token that ends in "$" takes all that is left.
    void tokenizeAgentName(Rook::String const& profileAgentName);
    /// Adds a token to getTitleTemplates().
    void titleTemplatesPushBack(Rook::String const& key);
    /// The tokens bound so far, in the order bound.
    std::vector<Rook::String> const& getTitleTemplates() const;
    /// Query: the agent strings of the parser.
    std::vector<Rook::String> getAgentStrings();
    /// The agent string being served.
    Rook::String const& agentString() const { return agentString_; }
    /// Its parts, as tokenizeAgentString made them.
    std::vector<Rook::String> const& agentStringTokens() const { return agentStringTokens_; }
    /// The matched name of the profile being read (AgentNameMatch), which is also the first half of
    /// the keys of mount groups.
    Rook::String const& agentKey() const { return agentKey_; }

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name Includes and profile files
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Handles one line "Include:PATTERN": loads the matching files of the profile directory and of
    /// the extra one. Returns how many that were.
    std::uint32_t handleIncludeLine(LineBuffer const& line);
    /// Reports a line that may not stand in an included file. The text is "Syntax error in included
    /// file: '%s'. One may only specify mount paths or the activeMount keyword in an included file.
    /// For more information see REF482".
    void includedError(LineBuffer const& line) const;
    /// Notes that the profile file `key` includes the file `value`.
    void profileFileIncludesMapIs(Rook::String const& key, Rook::String const& value);
    /// Appends to `ret` the paths of every file that a profile file included.
    void appendIncludePaths(Rook::String const& profileFileName, StringList& ret);
    /// Query: every profile file that contributed paths, in no particular order.
    StringList includedProfileFiles();

    /// Files a path under the profile file it came from.
    void profileFilePathsMapIs(Rook::String const& key, Rook::String const& path);
    /// Files a profile file under an agent.
    void agentStringProfileFileMapIs(Rook::String const& key, Rook::String const& profileFile);
    /// Query: the paths of a profile file, sorted, duplicates kept. A name that ends in "*" stands
    /// for all files that begin with the rest. Reports "profileFilePaths: no such file: " or
    /// "profileFilePaths: no such files: " and the name (through fmtNotFoundError).
    StringList profileFilePaths(Rook::String profileFileName, bool withIncludes);
    /// Query: the paths that an agent gets from its profiles, and every dynamic path.
    UnorderedStringSet agentPaths(Rook::String const& agentString);

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name Mount groups, conditions, sub-agents, active mounts
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Handles one line "MountGroup:NAME[,PRIORITY]", and may write over it. A priority that is not
    /// given is 99; of a larger number the low 8 bits count.
    void handleMountGroupLine(LineBuffer& line);
    /// Reports "Priority %d specified for mount group %s out of range [%d, %d]" for a priority that
    /// is not 1 to 99, and "Cannot use reserved mount group name %s" for "default" and "all".
    void validateMountGroup(char const* name, unsigned char priority) const;
    /// Handles the keyword "noDefaultMountGroup".
    void handleNoDefaultMountGroupLine();
    /// Handles the keyword "matchActiveName".
    void handleMatchActiveNameLine();
    /// Handles the keyword "activeMount"; reports a condition that was seen before it, which active
    /// mounts ignore, unless the parser serves several agents.
    void handleActiveMountLine();
    /// Handles one line "subAgent:NAME"; aliases in the name are expanded.
    void handleSubAgentLine(LineBuffer const& line);
    /// Handles one line "Condition:...", given with its blanks, by
    /// verifyNoActiveMountKeywordConflict and recordCondition.
    void handleConditionLine(LineBuffer const& bufferWithSpaces);
    /// Handles one line "ConditionBlocker:..." in the same way.
    void handleConditionBlockerLine(LineBuffer const& bufferWithSpaces);
    /// Reports an "activeMount" that was seen before the line with this keyword, unless the parser
    /// serves several agents.
    void verifyNoActiveMountKeywordConflict(char const* keyword) const;

    /// Files a path under a mount group; the key is the agent key, "::" and the group's name.
    void mountGroupPathsMapIs(Rook::String const& key, Rook::String const& path);
    /// The keys of all mount groups, in no particular order; loads nothing.
    StringList mountGroups();
    /// The paths of a mount group by its whole key; loads nothing. Reports "mountGroupPaths: no
    /// such mount group: " and the key (through fmtNotFoundError).
    StringList mountGroupPaths(Rook::String const& mountGroupName);

    /// Query: whether the keyword "noDefaultMountGroup" was seen.
    bool noDefaultMountGroup();
    /// Query: whether a profile was found; of several agents, for the last one.
    bool foundMountProfile();
    /// Query: the names of the "subAgent:" lines in their order.
    std::vector<Rook::String> subAgents();
    /// Query: whether the agent is an active-mount agent; on the agent side, one without a profile
    /// is.
    bool activeMount();
    /// As activeMount, without loading; a programming error before all profiles are loaded.
    bool activeMountInternal() const;
    /// The same at any time: whether the keyword "activeMount" was seen so far.
    bool activeMountSeen() const;
    /// Whether the keyword "matchActiveName" was seen so far.
    bool matchActiveNameSeen() const;
    /// Adds "p" to the root flags of an agent that is no active-mount agent, unless they hold it; a
    /// programming error before all profiles are loaded.
    void maybeAddPassiveRootFlag();

    /// @}

    // ------------------------------------------------------------------------------------------
    /// @name The maps as they stand, without loading
    /// @{
    // ------------------------------------------------------------------------------------------

    /// Types by wildcard path.
    StringMap const& pathTypeMap() const { return pathTypeMap_; }
    /// Attributes by token path.
    StringKeyed<PreinitAttr> const& pathAttrMap() const { return pathAttrMap_; }
    /// Paths by the key of their mount group; on the agent side sorted and without duplicates once
    /// an agent is loaded.
    StringListMap const& mountGroupPathsMap() const { return mountGroupPathsMap_; }
    /// Paths by profile file; sorted, duplicates kept, for every file that was read to its end.
    StringListMap const& profileFilePathsMap() const;
    /// Included files by profile file, in the order met.
    StringListMap const& profileFileIncludesMap() const { return profileFileIncludesMap_; }
    /// Profile files by the matched name in them (agentKey), and by the agent string that was being
    /// served where that differs.
    StringListMap const& agentStringProfileFileMap() const { return agentStringProfileFileMap_; }

    /// @}

  protected:
    // Beside a member stands the operation that explains it.

    // Constructor arguments.
    bool const dontMergeFlags_;               ///< dontMergeFlags()
    Rook::String const preinitDir_;           ///< preinitDir()
    Rook::String const keldaMountProfileDir_; ///< keldaMountProfileDir()
    Rook::String const defaultGroupName_;     ///< defaultGroupName()

    // Life cycle.
    bool isInitialized_ = false;     ///< isInitialized()
    bool allProfilesLoaded_ = false; ///< doInit sets it before handleDoInit
    std::int32_t doInitCount_ = 0;   ///< doInitCount()

    // What preinit files brought.
    StringMap pathTypeMap_;                     ///< pathTypeMap()
    StringKeyed<PreinitAttr> pathAttrMap_;      ///< pathAttrMap()
    StringKeyed<ConfigInfo> pathConfigInfoMap_; ///< pathConfigInfoMap()
    bool defaultPreinitsLoaded_ = false;        ///< defaultPreinitsLoaded()
    Rook::String extraProfileDir_;              ///< extraProfileDir()

    // What profiles brought.

    /// pathMountArgsMap(). Insert only through record operations or at keys that it does not hold:
    /// an index beside it remembers where each record is.
    MountArgsMap pathMountArgsMap_;
    /// Paths whose record exists only as the ancestor of others; inheritParentFlags empties it.
    OrderedStringSet intermediatePaths_;
    StringListMap mountGroupPathsMap_;          ///< mountGroupPathsMap()
    mutable StringListMap profileFilePathsMap_; ///< profileFilePathsMap(), not sorted yet
    StringListMap profileFileIncludesMap_;      ///< profileFileIncludesMap()
    StringListMap agentStringProfileFileMap_;   ///< agentStringProfileFileMap()
    std::vector<Rook::String> titleTemplates_;  ///< getTitleTemplates()
    Rook::String rootFlags_;                    ///< rootFlags()
    Rook::String connectionFlags_;              ///< connectionFlags()
    std::vector<Rook::String> subAgents_;       ///< subAgents()
    bool activeMountSeen_ = false;              ///< activeMountSeen()
    bool matchActiveNameSeen_ = false;          ///< matchActiveNameSeen()
    bool noDefaultMountGroup_ = false;          ///< noDefaultMountGroup()
    bool foundMountProfile_ = false;            ///< foundMountProfile()
    bool conditionSeen_ = false;                ///< recordCondition was called

    // The agents served, and the one being loaded.
    std::vector<Rook::String> agentStrings_;         ///< getAgentStrings()
    std::vector<Rook::String> overrideAgentStrings_; ///< one per agent string, at the same index
    Rook::String agentString_;                       ///< agentString()
    Rook::String overrideAgentString_;               ///< the override of agentString(), may be ""
    std::vector<Rook::String> agentStringTokens_;    ///< agentStringTokens()
    Rook::String agentKey_;                          ///< agentKey()

    // The file being read.

    /// The open files, the one being read last.
    std::vector<FileContext, Allocator<FileContext>> currentFiles_;
    StringMap perFileAliases_;        ///< perFileAliases()
    StringMap predefinedAliases_;     ///< predefinedAliases()
    Rook::String currentMountGroup_;  ///< "" before the first group of a file
    bool inConditionalGroup_ = false; ///< the paths that follow are conditional
    bool inInclude_ = false;          ///< the file being read is an included one

    bool const chroot_;                            ///< chroot()
    std::optional<std::regex> exclusionRegex_;     ///< see mapDir
    mutable std::vector<MfiException> exceptions_; ///< exceptions()
    DynFileLoadCheck profileFileCheck_;            ///< of the type "KeldaMountProfiles"
    DynFileLoadCheck preinitFileCheck_;            ///< of the type "preinit"
    LoadObserver* observer_ = nullptr;             ///< loadObserver()

    /// Empties everything that loading filled, as unDoInit does, whether initialised or not.
    void releaseLoadedData();
    /// Sorts the list of every mount group that grew since the last call, and drops duplicates.
    void sortMountGroups();

  private:
    class LoadCaches;

    // Life cycle
    KELDABASE_LOCAL void releaseProfileMaps();
    KELDABASE_LOCAL void resetProfileState();

    // Lines and files
    KELDABASE_LOCAL bool readLogicalLine(FILE* file, LineBuffer& buffer, int& step);
    KELDABASE_LOCAL bool readContinuation(LineBuffer& buffer, std::size_t backslash,
                                          FILE* file) const;
    KELDABASE_LOCAL void reportReadError(int error) const;
    KELDABASE_LOCAL void reportNul(char const* line) const;
    struct DirectoryScan;
    KELDABASE_LOCAL std::optional<int> searchAndLoad(DirectoryScan const& scan);
    KELDABASE_LOCAL std::optional<int> loadFiles(DirectoryScan const& scan,
                                                 std::vector<char const*> const& names);
    KELDABASE_LOCAL std::optional<int> loadDirectoryFile(DirectoryScan const& scan,
                                                         char const* name);
    KELDABASE_LOCAL int loadOpenFile(FILE* file, Rook::String const& directory,
                                     Rook::String const& name, FileLoader loader);
    KELDABASE_LOCAL bool passesFilters(DirectoryScan const& scan, char const* name) const;
    KELDABASE_LOCAL std::optional<SkipReason> reasonToSkip(DirectoryScan const& scan,
                                                           std::string const& name) const;
    KELDABASE_LOCAL void noteInclude(char const* name);
    KELDABASE_LOCAL int loadConfigMountProfile();
    KELDABASE_LOCAL bool loadExtraPreinits(char const* list, bool& namesDefault);
    KELDABASE_LOCAL bool loadExtraPreinitFile(Rook::String const& entry);
    KELDABASE_LOCAL void reportRedefinition(char const* path, PreinitAttr oldAttr,
                                            PreinitAttr newAttr) const;

    // Profiles
    KELDABASE_LOCAL bool looksAheadForMatchActiveName(FILE* file) const;
    KELDABASE_LOCAL int handleProfileLine(LineBuffer& line, LineBuffer const& lineWithBlanks);
    KELDABASE_LOCAL void tellRefusedMountLine(LineBuffer const& path, char const* type,
                                              char const* flags) const;
    KELDABASE_LOCAL void finishProfile(int profiles);
    KELDABASE_LOCAL void fileProfileUnderAgent();
    KELDABASE_LOCAL Rook::String evaluateList(Rook::String const& expression);
    KELDABASE_LOCAL Rook::String evaluateContainment(Rook::String const& expression,
                                                     std::size_t tilde);
    KELDABASE_LOCAL Rook::String evaluateChoice(Rook::String const& expression, std::size_t mark);

    // Records
    KELDABASE_LOCAL MountArgs* findRecord(Rook::String const& path);
    KELDABASE_LOCAL MountArgs& recordOf(Rook::String const& path);
    KELDABASE_LOCAL MountArgsMap::iterator placeOf(Rook::String const& path);
    KELDABASE_LOCAL bool flagsAreValid(Fen::MountTable::Flags flags) const;
    KELDABASE_LOCAL void addRecord(Rook::String const& path, MountArgs const& args, bool targetPath,
                                   bool dynamic);
    KELDABASE_LOCAL bool mergeIntoRecord(Rook::String const& path, MountArgs& record,
                                         MountArgs const& args, bool targetPath, bool mergeType);
    KELDABASE_LOCAL void settleIntermediate(Rook::String const& path, bool targetPath);
    KELDABASE_LOCAL void inheritFlags(Rook::String const& path);
    KELDABASE_LOCAL Fen::MountTable::Flags flagsToInherit(Rook::String const& path) const;
    KELDABASE_LOCAL Fen::MountTable::Flags flagsOfNearestAncestor(Rook::String const& path) const;

    // Queries
    KELDABASE_LOCAL void appendFilePaths(Rook::String const& name, bool withIncludes,
                                         StringList& paths);
    KELDABASE_LOCAL StringList noSuchFile(Rook::String const& message) const;

    // What makes loading fast; see the class.
    std::unique_ptr<LoadCaches> caches_;
};

/// The rule for the flags of an intermediate path, given those of the mount below it, which must be
/// instantiating, and those of the nearest ancestor above it. Only with `topDown` and a parent that
/// holds 0x10 is anything inherited from the parent.
KELDABASE_API Fen::MountTable::Flags
getIntermediateFlagsImpl(Fen::MountTable::Flags const& targetFlags,
                         Fen::MountTable::Flags const& parentFlags, bool topDown);

} // namespace Kelda
