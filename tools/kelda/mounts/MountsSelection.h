// Which mounts of an agent are asked for.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace KeldaTool {

struct MountsSelection {
    enum class By { nothing, path, file, group };

    By by = By::nothing; ///< nothing: every mount is asked for
    std::string name; ///< the path, the profile file (all that begin alike if it ends in "*"), or
                      ///< the key of the mount group
    bool withIncludes = false; ///< also what the file includes
};

/// Adds the options --path, --file, --with-includes and --group.
void addSelectionOptions(CLI::App& command, MountsSelection& selection);

} // namespace KeldaTool
