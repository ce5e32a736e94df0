// Which paths come from a profile file, and which an agent gets from its profiles.
#include <KeldaBase/MountFileInfo.h>

#include <algorithm>

#include "../Tracing.h"
#include "LoadCaches.h"
#include "PseudoNames.h"

namespace Kelda {

void MountFileInfo::profileFilePathsMapIs(Rook::String const& key, Rook::String const& path) {
    caches_->profileFiles.append(profileFilePathsMap_, key, path);
}

void MountFileInfo::agentStringProfileFileMapIs(Rook::String const& key,
                                                Rook::String const& profileFile) {
    MFI_TRACE(8, "( key: {}, value: {} )", key, profileFile);
    agentStringProfileFileMap_[key].push_back(profileFile);
}

// The paths of a file that was read to its end are put in order when somebody asks for them: a file
// that many profiles include would otherwise be sorted again with each of them.
StringListMap const& MountFileInfo::profileFilePathsMap() const {
    caches_->endedProfileFiles.settle(profileFilePathsMap_,
                                      [](StringList& paths) { std::ranges::sort(paths); });
    return profileFilePathsMap_;
}

bool MountFileInfo::fileIsLoaded(Rook::String const& path) {
    MFI_TRACE(7, "( path : {} ) ", path);
    doInit();
    return profileFilePathsMap_.contains(path);
}

StringList MountFileInfo::profileFilePaths(Rook::String profileFileName, bool withIncludes) {
    MFI_TRACE(7, "( profileFileName : {}, withIncludes : {} )", profileFileName, withIncludes);
    doInit();
    auto const& files = profileFilePathsMap();
    StringList paths;
    if (profileFileName.endsWith("*")) {
        auto const prefix = profileFileName.view().substr(0, profileFileName.size() - 1);
        bool matched = false;
        for (auto const& [name, filePaths] : files) {
            if (!name.startsWith(prefix))
                continue;
            matched = true;
            appendFilePaths(name, withIncludes, paths);
        }
        if (!matched)
            return noSuchFile("profileFilePaths: no such files: " + profileFileName);
    } else {
        if (!files.contains(profileFileName))
            return noSuchFile("profileFilePaths: no such file: " + profileFileName);
        appendFilePaths(profileFileName, withIncludes, paths);
    }
    std::ranges::sort(paths);
    return paths;
}

StringList MountFileInfo::noSuchFile(Rook::String const& message) const {
    reportAndTrace(fmtNotFoundError(message, true));
    MFI_TRACE(3, "Returning empty vector");
    return {};
}

// Appends the paths of a file, none when it has no paths of its own, and of what it includes.
void MountFileInfo::appendFilePaths(Rook::String const& name, bool withIncludes,
                                    StringList& paths) {
    auto const& files = profileFilePathsMap();
    if (auto const found = files.find(name); found != files.end())
        paths.insert(paths.end(), found->second.begin(), found->second.end());
    if (withIncludes)
        appendIncludePaths(name, paths);
}

UnorderedStringSet MountFileInfo::agentPaths(Rook::String const& agentString) {
    doInit();
    UnorderedStringSet paths;
    for (auto const& file : agentStringProfileFileMap_[agentString]) {
        StringList filePaths;
        appendFilePaths(file, true, filePaths);
        paths.insert(filePaths.begin(), filePaths.end());
    }
    auto const suffix = Rook::String("::") + dynamicPathsName;
    for (auto const& [key, groupPaths] : mountGroupPathsMap_)
        if (key.endsWith(suffix))
            paths.insert(groupPaths.begin(), groupPaths.end());
    return paths;
}

} // namespace Kelda
