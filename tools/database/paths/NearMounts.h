// Lines that nearly declare or mount a path.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "AgentStory.h"
#include "AskedPath.h"
#include "DeviceStory.h"
#include "PathStory.h"
#include "WrittenLine.h"

namespace KeldaDatabase {

struct NearLine {
    enum class Reason {
        refused,        ///< the parser refuses the line
        notRead,        ///< it stands in a file that nobody reads
        otherSlashes,   ///< its path has "/" at its front or twice in a row
        otherCase,      ///< letters in another case
        mistyped,       ///< one name has one or two typing errors
        otherValue,     ///< an alias in it has another value
        otherAgent,     ///< it is for agents other than the one asked about
        notForVariants, ///< its profile is passed over, as it does not say matchActiveName
        noDefaultGroup  ///< a default mount that agents refuse with noDefaultMountGroup
    };
    Reason reason = Reason::refused;
    bool isPreinit = false;
    StoryPlace place;
    std::size_t typingErrors = 0;    ///< of mistyped
    std::string path;                ///< what the line stands for; tokens are "*"
    std::string flags;               ///< of a mount
    std::string detail;              ///< the fault, why a file is not read, the other name or value
    std::vector<std::string> agents; ///< for whom the line is, or who refuses it
    std::optional<StoryPlace> cause; ///< of noDefaultGroup: the keyword line of the first agent
    std::vector<StoryAlias> aliases; ///< of otherValue: those of the path
};

/// "refused", "not-read", ...: lasting names for programs.
std::string_view nameOf(NearLine::Reason reason);

/// What an answer knows already.
struct NearQuestion {
    AskedPath const& asked;
    bool isDeclared = false;
    /// The agent asked about; null for all.
    std::string const* agent = nullptr;
    AgentStory const* story = nullptr; ///< its story, with `agent`
};

/// Preinit lines first, then mounts; each in the order of the device's lists. Of mistyped paths
/// only those with the fewest errors.
std::vector<NearLine> nearLines(Device const& device, NearQuestion const& question,
                                DeviceLines& lines, PlaceReader& places);

/// The names of agents that are nearly called so, or are when something is put behind the name.
std::vector<std::string> nearAgents(Device const& device, std::string const& agentString);

} // namespace KeldaDatabase
