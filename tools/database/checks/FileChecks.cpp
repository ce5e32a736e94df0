// Files that nobody reads, and includes that read nothing.
#include "StaticChecks.h"

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

#include "database/findings/FindingList.h"
#include "database/paths/WrittenLine.h"

namespace KeldaDatabase {
namespace {

// The files of default groups, also those that are not read as the device is loaded now.
bool isForDefaultGroup(Device const& device, std::string_view name) {
    std::string_view base = "DefaultMountGroup";
    for (auto const& profile : device.profiles)
        if (profile.kind == Profile::Kind::defaultGroup && profile.file != none)
            base = device.files[profile.file].name;
    if (!name.starts_with(base))
        return false;
    name.remove_prefix(base.size());
    return name.empty() || name == "PerAgent" || name == "Standby";
}

bool isOrphan(Device const& device, File const& file) {
    if (file.family != FileFamily::profile || file.hasAgentName || file.isDefaultGroup ||
        file.includes != 0 || isForDefaultGroup(device, file.name))
        return false;
    // A folder in the profile folder is opened, too, and found empty.
    std::error_code error;
    return !std::filesystem::is_directory(file.path(), error);
}

// The first line that looks as if it was to name the agent; 0 for none.
std::int32_t agentNameLineIn(SourceText const& text) {
    for (std::int32_t line = 1; line <= text.lines(); ++line)
        if (lowerCase(withoutBlanks(text.line(line))).starts_with("agentname:"))
            return line;
    return 0;
}

} // namespace

std::vector<Finding> orphanFiles(Device const& device) {
    FindingList findings(device, RuleId::orphanFile);
    for (FileId id = 0; id < device.files.size(); ++id) {
        auto const& file = device.files[id];
        if (!isOrphan(device, file))
            continue;
        auto& finding = *findings.at({id, 1, none});
        finding.message = fmt::format(
            "no agent reads '{}': it names no agent, and no profile includes it", file.name);
        auto const line = agentNameLineIn(SourceText::ofFile(file.path()));
        if (line == 0)
            continue;
        finding.hint = "above the agent name only empty lines and comments may stand, and such a "
                       "comment begins at the very left";
        finding.related.push_back({{id, line, none}, "an agent is named here"});
    }
    return findings.take();
}

std::vector<Finding> includesThatMatchNothing(Device const& device) {
    FindingList findings(device, RuleId::includeMatchesNothing);
    for (auto const& include : device.includes) {
        bool const isPattern = include.pattern.find_first_of("?*[") != std::string::npos;
        if (include.loaded != 0 || !isPattern)
            continue;
        auto* const finding = findings.at(include.place, include.profile);
        if (finding == nullptr)
            continue;
        finding->subject = {Subject::behindColon, include.pattern};
        finding->message = fmt::format("no file matches '{}'", include.pattern);
    }
    return findings.take();
}

} // namespace KeldaDatabase
