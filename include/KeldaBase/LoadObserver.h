/// @file
/// What a parser tells, while it loads, to whoever wants to know where things come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include <KeldaBase/MountFileInfoTypes.h>

namespace Kelda {

/// The open files, each with its current line, the one being read last. The files before it are
/// those whose Include lines led there.
using Places = std::span<FileContext const>;

/// Why a directory scan passes a file over.
enum class SkipReason : std::uint8_t {
    semicolon, ///< its name holds ";", and Q9_CHROOT is set
    backup,    ///< its name ends in "~"
    loadCheck, ///< the file-load check refuses it
    exclusion  ///< the exclusion expression matches its name
};

/// A line `[CONFIG:]path,type[,attribute]` that was recorded.
struct PreinitLine {
    Rook::String path;                    ///< with its tokens; shorthands written out
    Rook::String type;                    ///< as written
    PreinitAttr attr = PreinitAttr::none; ///< as written; never `invalid`
    bool isConfig = false;                ///< the line begins with "CONFIG:"
};

/// A line `path,type,flags` of a profile.
struct MountLine {
    std::string_view writtenPath; ///< as written; shorthands written out, aliases not
    std::string_view writtenType; ///< as written
    std::string_view flags;       ///< as written
    Rook::String path;            ///< aliases expanded; as written where isRefused
    Rook::String type;            ///< the type to record; empty where isRefused
    bool isRefused = false;       ///< the path has no type, and nothing is recorded
    bool isConditional = false;   ///< a condition holds for the line's group
};

/// Attached to a parser with MountFileInfo::loadObserverIs, it is told of every file, line and
/// record in the order in which the parser meets them, before a fault of theirs is reported unless
/// said otherwise. Everything it is given is valid during the call only.
///
/// An operation may not call the parser. Those that are not overridden do nothing.
class KELDABASE_API LoadObserver {
  public:
    LoadObserver() = default;
    LoadObserver(LoadObserver const&) = delete;
    LoadObserver& operator=(LoadObserver const&) = delete;
    virtual ~LoadObserver();

    /// A file was opened, the last one of `places`, whose line is 0. `directory` is the scanned one
    /// as the parser was given it; empty for a file of KELDA_EXTRA_PREINIT_PATH, which is named
    /// with its path.
    virtual void fileOpened(Rook::String const& directory, Places places);
    /// The last file of `places` was read to its end, or a fault ended the load.
    virtual void fileClosed(Places places);
    /// A file of a directory is not read.
    virtual void fileSkipped(Rook::String const& directory, std::string_view name,
                             SkipReason reason);

    /// A preinit line was recorded; refused ones are only reported.
    virtual void preinitLine(PreinitLine const& line, Places places);

    /// A path line of a profile is about to be recorded. Where a profile includes the virtual file
    /// "ConfigMountProfile", the line is that of the Include.
    virtual void mountLine(MountLine const& line, Places places);
    /// The record of a path was made or changed, also by intermediate paths and mounts recorded at
    /// run time. `before` is null for a new record; `places` is empty when no file is open.
    virtual void recordChanged(Rook::String const& path, MountArgs const* before,
                               MountArgs const& after, Places places);
    /// An intermediate path inherited from its parent (empty: from the root flags) or was left as
    /// it is.
    virtual void flagsInherited(Rook::String const& path, Rook::String const& parent,
                                Fen::MountTable::Flags before, Fen::MountTable::Flags after);

    /// A token of the agent's name became an alias of the file; see
    /// MountFileInfo::recordAgentNameTokenAlias.
    virtual void tokenBound(Rook::String const& token, Rook::String const& value, Places places);
    /// An alias line was handled. Told after the faults of its expression.
    virtual void aliasDefined(Rook::String const& name, std::string_view expression,
                              Rook::String const& value, Places places);
    /// An alias of a file was looked up and found. `name` is in lower case.
    virtual void aliasUsed(Rook::String const& name, Rook::String const& value, Places places);

    /// A keyword line, "activeMount" included, is about to be handled: `keyword` as the language
    /// spells it, `line` without blanks. What it brings about is told of after it.
    virtual void keywordLine(std::string_view keyword, std::string_view line, Places places);
    /// A mount group begins.
    virtual void groupOpened(std::string_view name, unsigned char priority, Places places);
    /// An Include line was served; `files` is how many profiles it loaded.
    virtual void included(std::string_view pattern, int files, Places places);
};

} // namespace Kelda
