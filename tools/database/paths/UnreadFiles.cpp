#include "UnreadFiles.h"

namespace KeldaDatabase {
namespace {

std::string reasonText(Kelda::SkipReason reason) {
    switch (reason) {
    case Kelda::SkipReason::semicolon:
        return "it is passed over, as its name holds ';' and Q9_CHROOT is set";
    case Kelda::SkipReason::backup:
        return "it is passed over, as its name ends in '~'";
    case Kelda::SkipReason::loadCheck:
        return "it is passed over, as the file-load check refuses it";
    case Kelda::SkipReason::exclusion:
        return "it is passed over, as its name is excluded";
    }
    return {};
}

bool isOrphan(File const& file) {
    return file.family == FileFamily::profile && !file.hasAgentName && !file.isDefaultGroup &&
           file.includes == 0;
}

// Skipped files stand in the folders in which files were read, or in the device's own.
bool isFolderOf(Device const& device, std::string const& directory, FileFamily family) {
    auto const& own =
        family == FileFamily::preinit ? device.preinitDirectory : device.profileDirectory;
    if (directory == own)
        return true;
    for (auto const& file : device.files)
        if (file.directory == directory)
            return file.family == family;
    return false;
}

} // namespace

std::vector<UnreadFile> unreadFiles(Device const& device, FileFamily family) {
    std::vector<UnreadFile> unread;
    for (auto const& file : device.files)
        if (file.family == family && isOrphan(file))
            unread.push_back(
                {file.path(), "it has no agent-name line, and no Include: line names it"});
    for (auto const& file : device.skipped)
        if (isFolderOf(device, file.directory, family))
            unread.push_back({file.directory + "/" + file.name, reasonText(file.reason)});
    return unread;
}

void forEachPath(SourceText const& text, FileFamily family,
                 std::function<void(UnreadLine const&)> const& visit) {
    for (std::int32_t at = 1; at <= text.lines();) {
        auto line = logicalLine(text, at);
        auto fields =
            family == FileFamily::preinit ? preinitFields(line.text) : pathFields(line.text);
        if (fields)
            visit({at, std::move(line.text), std::move(*fields)});
        at = line.next;
    }
}

} // namespace KeldaDatabase
