// The files of a device that no agent gets to see, and the paths in them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "WrittenLine.h"
#include "database/Device.h"
#include "database/findings/SourceText.h"

namespace KeldaDatabase {

struct UnreadFile {
    std::string path;   ///< opens from where the program was called
    std::string reason; ///< "it has no agent-name line, and no Include: line names it"
};

/// Those that were skipped and, of profiles, those without an agent that nobody includes.
std::vector<UnreadFile> unreadFiles(Device const& device, FileFamily family);

struct UnreadLine {
    std::int32_t line = 0; ///< as an editor counts
    std::string text;
    PathFields fields;
};

/// Calls `visit` for each line of a file that names a path.
void forEachPath(SourceText const& text, FileFamily family,
                 std::function<void(UnreadLine const&)> const& visit);

} // namespace KeldaDatabase
