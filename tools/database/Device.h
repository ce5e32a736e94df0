// All that the files of one device say: every declaration and every mount, each with its place.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <Fen/MountTable.h>
#include <KeldaBase/LoadObserver.h>
#include <KeldaBase/MountFileInfoTypes.h>
#include <Rook/String.h>

namespace KeldaDatabase {

// The lists of a Device refer to each other by index.
using FileId = std::uint32_t;
using ProfileId = std::uint32_t;
using IncludeId = std::uint32_t;
using GroupId = std::uint32_t;

inline constexpr std::uint32_t none = ~std::uint32_t{0};

/// Counts what the parser met. What has the smaller moment was met first.
using Moment = std::uint32_t;

enum class FileFamily : std::uint8_t { preinit, profile };

/// A file that was read. A profile file that several profiles include stands here once.
struct File {
    std::string directory; ///< as it was given; empty for an extra preinit file
    std::string name;      ///< in the directory; an extra preinit file as it was named
    FileFamily family = FileFamily::profile;
    std::uint32_t includes = 0;  ///< by how many Include lines it was read
    bool hasAgentName = false;   ///< read as a profile of its own
    bool isDefaultGroup = false; ///< read as the file of a default group

    /// A path that opens from where the program was called.
    std::string path() const { return directory.empty() ? name : directory + "/" + name; }
};

struct SkippedFile {
    std::string directory;
    std::string name;
    Kelda::SkipReason reason;
};

/// A line of a file and, in an included file, the Include line that led there.
struct Place {
    FileId file = none;
    std::int32_t line = -1;   ///< as the parser counts: a piece of an over-long line is a line
    IncludeId include = none; ///< index to Device::includes

    bool isKnown() const { return file != none; }
    friend bool operator==(Place const&, Place const&) = default;
};

/// A file that was loaded for agents: it has an agent-name line or is a default group. What it
/// brought, included files counted, stands in the ranges of the device's lists.
struct Profile {
    enum class Kind : std::uint8_t { agent, defaultGroup, defaultGroupPerAgent, standbyGroup };

    /// First index and the one behind the last.
    struct Range {
        std::size_t begin = 0;
        std::size_t end = 0;
        std::size_t size() const { return end - begin; }
    };

    Kind kind = Kind::agent;
    FileId file = none;     ///< none for a default group that no file holds
    Rook::String agentName; ///< as its line has it, without blanks; empty for default groups
    Rook::String agentKey;  ///< the literal part of the agent name
    std::int32_t agentNameLine = -1;
    bool saysMatchActiveName = false; ///< the keyword stands in the profile itself
    bool saysNoDefaultMountGroup = false;
    Range mounts, aliases, groups, includes, keywords;

    bool isDefaultGroup() const { return kind != Kind::agent; }
    bool hasTokens() const { return agentName != agentKey; }
};

/// A preinit line that was recorded.
struct PreinitDeclaration {
    Rook::String path; ///< with its tokens
    Rook::String type;
    Kelda::PreinitAttr attr = Kelda::PreinitAttr::none;
    bool isConfig = false;
    Place place;
};

/// A path line of a profile. Tokens of the agent's name stand for "*".
struct Mount {
    Rook::String path; ///< expanded; as written where it was refused
    Rook::String type; ///< of the preinit files; empty where it was refused
    Fen::MountTable::Flags flags;
    Place place;
    ProfileId profile = none;
    GroupId group = none; ///< index to Device::groups; none before the first group of a file
    Moment moment = 0;
    bool isRefused = false;     ///< no type, or invalid flags: there is no such mount
    bool isConditional = false; ///< in a group that has a condition
    bool typeDiffers = false;   ///< the type column is not the type of the preinit files
};

/// A mount that is there.
inline bool isMounted(Mount const& mount) {
    return !mount.isRefused;
}

/// An alias line, or a token of an agent name.
struct Alias {
    Rook::String name;      ///< as written
    std::string expression; ///< as written, without blanks; empty for a token
    Rook::String value;
    Place place;
    ProfileId profile = none;
    std::uint32_t uses = 0; ///< look-ups that found this definition
    bool isToken = false;
};

struct Group {
    std::string name;
    unsigned priority = 0;
    Place place;
    ProfileId profile = none;
    std::uint32_t mounts = 0; ///< path lines below it, included ones counted
};

struct Include {
    std::string pattern;
    Place place;
    ProfileId profile = none;
    int loaded = 0;            ///< how many profiles it loaded
    std::vector<FileId> files; ///< that were read for it, in order
};

/// A keyword line of a profile or an included file.
struct Keyword {
    std::string_view keyword; ///< as the language spells it
    std::string line;         ///< without blanks
    Place place;
    ProfileId profile = none;
    Moment moment = 0;
};

/// A fault that the parser recorded.
struct Fault {
    Kelda::MfiException exception;
    Place place;
    ProfileId profile = none; ///< none: it meets every agent
    Moment moment = 0;
    /// Not empty: a fault of several profiles together, and these are the agents that meet it
    /// (indexes to Device::agents).
    std::vector<std::uint32_t> agents;
    bool isTogether = false;
    std::vector<Place> causes; ///< the lines that a fault of several lines conflicts with
};

/// All agent strings that one literal name, or one prefix with tokens, stands for: they load the
/// same profiles.
struct Agent {
    Rook::String name;               ///< as the first of its agent-name lines has it
    Rook::String agentString;        ///< one of its strings: tokens are "*"
    bool isActiveVariant = false;    ///< the "-Active-" strings, which only load profiles that say
                                     ///< "matchActiveName"
    std::vector<ProfileId> profiles; ///< in the order loaded, default groups last
};

struct Device {
    std::string preinitDirectory;
    std::string profileDirectory;
    std::vector<File> files; ///< in the order first opened
    std::vector<SkippedFile> skipped;
    std::vector<PreinitDeclaration> preinits;
    std::vector<Profile> profiles;
    std::vector<Mount> mounts;
    std::vector<Alias> aliases;
    std::vector<Group> groups;
    std::vector<Include> includes;
    std::vector<Keyword> keywords;
    std::vector<Fault> faults; ///< in the order found; those of several profiles at the end
    std::vector<Agent> agents; ///< by name, "-Active-" variants behind all others

    /// The path of a place's file that opens; empty for a place that is not known.
    std::string pathOf(Place const& place) const {
        return place.isKnown() ? files[place.file].path() : std::string();
    }
};

} // namespace KeldaDatabase
