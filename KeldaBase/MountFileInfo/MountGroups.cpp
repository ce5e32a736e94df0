// Mount groups: the "MountGroup:" line, the lists of paths by group, and the default group's
// switch.
#include <KeldaBase/MountFileInfo.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <KeldaBase/LoadObserver.h>
#include <fmt/format.h>

#include "../Text.h"
#include "../Tracing.h"
#include "LoadCaches.h"

namespace Kelda {

namespace {

constexpr std::size_t mountGroupKeyword = std::string_view("MountGroup:").size();
constexpr unsigned char firstPriority = 1;
constexpr unsigned char lastPriority = 99;

} // namespace

void MountFileInfo::handleMountGroupLine(LineBuffer& line) {
    MFI_TRACE(8, "( buffer : \"{}\" )", line.data());
    char* const name = line.data() + mountGroupKeyword;
    auto priority = lastPriority;
    if (char* const comma = std::strchr(name, ',')) {
        *comma = '\0';
        // Only the low 8 bits count: 300 is 44.
        priority = static_cast<unsigned char>(std::strtol(comma + 1, nullptr, 10));
    }
    if (observer_ != nullptr)
        observer_->groupOpened(name, priority, currentFiles_);
    validateMountGroup(name, priority);
    recordMountGroup(name, priority);
}

void MountFileInfo::validateMountGroup(char const* name, unsigned char priority) const {
    MFI_TRACE(8, "( name : {}, priority : {} )", name, priority);
    if (priority < firstPriority || priority > lastPriority)
        reportAndTrace(fmt::format("Priority {} specified for mount group {} out of range [{}, {}]",
                                   priority, name, firstPriority, lastPriority));
    if (priority != 0 && activeMountSeen_)
        MFI_TRACE(1,
                  "We have already seen the 'activeMount' keyword for agent {}. Priority {} for "
                  "mount group {} will be ignored, as it is not supported for active mount agents. "
                  "For more information, see REF482",
                  agentKey_, priority, name);
    if (equalsIgnoringCase(name, "default") || equalsIgnoringCase(name, "all"))
        reportAndTrace(fmt::format("Cannot use reserved mount group name {}", name));
}

void MountFileInfo::recordMountGroup(char const* name, unsigned char priority) {
    MFI_TRACE(8, "( name : {}, priority : {} )", name, priority);
    currentMountGroup_ = name;
    inConditionalGroup_ = false;
}

void MountFileInfo::handleNoDefaultMountGroupLine() {
    MFI_TRACE(8, "handleNoDefaultMountGroupLine");
    noDefaultMountGroup_ = true;
}

void MountFileInfo::mountGroupPathsMapIs(Rook::String const& key, Rook::String const& path) {
    MFI_TRACE(8, "( key: {}, value: {} )", key, path);
    if (caches_->mountGroups.append(mountGroupPathsMap_, key, path))
        caches_->grownMountGroups.add(key);
}

void MountFileInfo::sortMountGroups() {
    caches_->mountGroups.clear();
    caches_->grownMountGroups.settle(mountGroupPathsMap_, [](StringList& paths) {
        std::ranges::sort(paths);
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
        paths.shrink_to_fit();
    });
}

StringList MountFileInfo::mountGroups() {
    MFI_TRACE(7, "");
    StringList keys;
    keys.reserve(mountGroupPathsMap_.size());
    for (auto const& entry : mountGroupPathsMap_)
        keys.push_back(entry.first);
    return keys;
}

StringList MountFileInfo::mountGroupPaths(Rook::String const& mountGroupName) {
    MFI_TRACE(7, "( mountGroupName : {} )", mountGroupName);
    auto const found = mountGroupPathsMap_.find(mountGroupName);
    if (found != mountGroupPathsMap_.end())
        return found->second;
    reportAndTrace(
        fmtNotFoundError("mountGroupPaths: no such mount group: " + mountGroupName, true));
    MFI_TRACE(3, "Returning empty vector");
    return {};
}

bool MountFileInfo::noDefaultMountGroup() {
    MFI_TRACE(7, "");
    doInit();
    return noDefaultMountGroup_;
}

} // namespace Kelda
