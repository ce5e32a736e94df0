// Parts of what kelda explain prints for people.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "database/paths/AgentStory.h"
#include "database/paths/NearMounts.h"
#include "database/paths/PathStory.h"

namespace KeldaTool {

/// "FILE:LINE" and, of an included file, ", included from FILE:LINE"; fit to be shown.
std::string placeText(KeldaDatabase::StoryPlace const& place);

/// The flags, or "no flags".
std::string shownFlags(std::string_view flags);

/// "a", "a and b", "a, b and 3 more"; fit to be shown.
std::string listText(std::vector<std::string> const& names);

/// `%slot is "3", from the agent string (FILE:LINE)`
std::string aliasText(KeldaDatabase::StoryAlias const& alias);

/// What a line that comes close has to do with the path.
std::string nearText(KeldaDatabase::NearLine const& line);

} // namespace KeldaTool
