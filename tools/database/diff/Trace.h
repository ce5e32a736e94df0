// Follows a line of one device into the other, and tells where the trail ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <tuple>
#include <vector>

#include "Difference.h"
#include "FileMatches.h"

namespace KeldaDatabase {

/// A line as an editor counts and, in an included file, the Include line that led there.
struct CausingLine {
    FileId file = none;
    std::int32_t line = 0;
    IncludeId include = none;

    friend bool operator==(CausingLine const& a, CausingLine const& b) {
        return std::tie(a.file, a.line) == std::tie(b.file, b.line);
    }
};

/// Why something of one device (here) is not, or is otherwise, in the other one (there).
struct Trace {
    ChangeCause cause = ChangeCause::line;
    std::vector<CausingLine> here;
    std::vector<CausingLine> there;
};

/// Where a mount of an agent is in the other device, or why it is not there.
struct FollowedMount {
    std::optional<std::size_t> mount; ///< index to the other device's mounts
    Trace why;
};

class Tracer {
  public:
    using Version = FileMatches::Version;

    /// Looks from the device of this version to the other one.
    Tracer(FileMatches& matches, Version version)
        : matches_(matches), version_(version), here_(matches.side(version)),
          there_(matches.other(version)) {}

    DeviceSide& here() { return here_; }
    DeviceSide& there() { return there_; }

    /// The path line that means the same to the same agent over there.
    FollowedMount follow(std::size_t mount, Agent const& agentThere);
    /// A line that nobody could lose but by itself: its file or its text is not over there.
    std::optional<Trace> lostLine(CausingLine const& line, ChangeCause cause);
    /// The same; where another line stands in its place, that one counts as what it became.
    std::optional<Trace> replacedLine(CausingLine const& line, ChangeCause cause);
    /// A keyword line that the agent over there does not meet.
    Trace lostKeyword(std::size_t keyword, Agent const& agentThere);
    /// Why an agent of here is not over there, by the agent-name lines of its own profiles.
    Trace lostAgent(Agent const& agent);
    /// Why a path has no type over there, or another one.
    Trace lostType(std::string_view writtenPath);
    /// The definitions of the aliases in a text that have another value over there.
    Trace otherAliases(std::string_view text, ProfileId profile, std::int32_t line,
                       ProfileId profileThere, std::int32_t lineThere);

    /// The number of the same line over there; nothing where it is not.
    std::optional<std::int32_t> sameLine(CausingLine const& line);
    CausingLine lineOf(Place const& place);
    CausingLine lineOfThere(Place const& place);
    std::optional<CausingLine> agentNameLine(DeviceSide& side, FileId file);
    /// The profile over there that is read from the same file; none if there is none.
    ProfileId profileThere(ProfileId profile);
    std::string const& textOf(CausingLine const& line);

  private:
    std::optional<Trace> lostProfile(ProfileId profile, CausingLine const& by,
                                     Agent const& agentThere);
    std::optional<Trace> lostInclude(IncludeId include);
    Trace refusedDefault(Agent const& agentThere);
    std::vector<std::size_t> candidates(std::size_t mount, std::int32_t line);
    bool isIncludedAlike(Mount const& mount, Mount const& candidate);
    Trace otherPath(std::size_t mount, std::size_t candidate);
    Trace conditionsOf(std::size_t mount, std::size_t candidate);
    void addAliases(std::string_view text, ProfileId profile, std::int32_t line,
                    ProfileId profileThere, std::int32_t lineThere, int depth, Trace& trace);
    void addAgentNames(ProfileId profile, ProfileId profileThere, Trace& trace);

    FileMatches& matches_;
    Version version_;
    DeviceSide& here_;
    DeviceSide& there_;
};

/// Whether an agent loads a profile.
bool loads(Agent const& agent, ProfileId profile);

} // namespace KeldaDatabase
