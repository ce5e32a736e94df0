// How one agent comes to a path: its own parser loads, and is listened to.
#pragma once

#include <string>
#include <vector>

#include "AskedPath.h"
#include "PathStory.h"
#include "WrittenLine.h"

namespace KeldaDatabase {

/// A line that would mount the path, but does not.
struct PassedLine {
    StoryLine line;
    std::string fault; ///< why it was refused; empty where an alias has another value
};

struct StoryFault {
    StoryPlace place; ///< not known for a fault without a file
    std::string message;
};

struct AgentStory {
    bool foundMountProfile = false;
    bool noDefaultMountGroup = false;
    StoryAgent agent; ///< its name is the agent string
    std::vector<PassedLine> passed;
    std::vector<std::string> profiles; ///< the files that were loaded as its profiles
    /// In the order found. The agent ends at the first one; the story goes on, as if it had not.
    std::vector<StoryFault> faults;
};

/// Loads the agent of an agent string. `places` needs to know nothing of the files.
AgentStory agentStory(std::string const& preinitDir, std::string const& profileDir,
                      std::string const& agentString, AskedPath const& asked, PlaceReader& places);

} // namespace KeldaDatabase
