// What the files of a device do for one path: told line by line, for whoever explains it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace KeldaDatabase {

/// A line as a reader finds it.
struct StoryPlace {
    struct Line {
        std::string file;
        std::int32_t line = 0;
    };
    std::string file;       ///< a path that opens from where the program was called; "" for none
    std::int32_t line = 0;  ///< as an editor counts, from 1
    std::vector<Line> from; ///< the Include lines that led to the file, the nearest first
    std::string text;       ///< the line without the blanks at its ends; continued lines joined

    bool isKnown() const { return !file.empty(); }
};

/// A line of a preinit file that has its part in a path's type.
struct StoryDeclaration {
    StoryPlace place;
    std::string path; ///< with its tokens
    std::string type;
    std::string attribute; ///< empty for none
    bool isConfig = false;
};

/// A wildcard path that has a type.
struct DeclaredPath {
    std::string path;
    std::string type;
    bool isConfig = false;
    std::vector<StoryDeclaration> lines; ///< those of the path itself; the last one gives the type
    /// Where no line is for the path itself: the line below it that made it a directory.
    std::optional<StoryDeclaration> directoryBecauseOf;
};

/// A token or alias in a written path, and what came in its place.
struct StoryAlias {
    enum class Origin {
        everyProfile, ///< "%cellId" and the like
        agentString,  ///< "%agentString"
        token,        ///< of the agent's name
        aliasLine,
        undefined
    };
    std::string name; ///< as written in the path
    std::string value;
    Origin origin = Origin::undefined;
    std::string expression; ///< of an alias line, without blanks
    StoryPlace place;       ///< of the alias line, or the agent-name line of a token
};

/// A line of a profile that mounts a path.
struct StoryLine {
    StoryPlace place;
    std::string writtenPath; ///< short forms written out; empty for "Include: ConfigMountProfile"
    std::string path;        ///< what it stands for
    std::vector<StoryAlias> aliases; ///< of the written path, in order
    std::string flags;               ///< letters
    std::string flagsAfter;          ///< of the mount, with all lines up to this one
    std::string group;               ///< empty for the group without a name
    unsigned groupPriority = 0;      ///< 0 where no MountGroup: line is in force
    StoryPlace groupPlace;
    bool isConditional = false;
    std::string condition; ///< the line, "Condition: ..."
    StoryPlace conditionPlace;
    std::string otherType; ///< the type in the line, where the mount has another one
};

/// What mounts below a path make of it, for an active-mount agent.
struct StoryDirectory {
    struct Below {
        std::string path;
        std::string flags;
    };
    std::vector<Below> below; ///< in path order
    std::string before;       ///< the flags without them
    std::string after;
};

/// What a directory takes over from what is above it.
struct StoryInheritance {
    std::string parent; ///< empty: the root flags
    std::string parentFlags;
    std::string before;
    std::string after;
};

struct StoryMount {
    std::string path; ///< tokens are "*" where no agent string is given
    std::string type;
    std::string flags;
    bool isExplicit = false;
    std::vector<StoryLine> lines;
    std::optional<StoryDirectory> directory;
    std::optional<StoryInheritance> inherited;
};

/// Agents that come to the path in the same way.
struct StoryAgent {
    std::vector<std::string> names;
    bool hasActiveMounts = false;
    std::vector<StoryMount> mounts; ///< in path order; one unless the path has a "*"
};

} // namespace KeldaDatabase
