#include "Publishing.h"

#include <fmt/format.h>

#include <KeldaBase/MountFileInfo.h>
#include <KeldaUtil/MountFlags.h>

namespace bench {

namespace {

using Kelda::AgentMountFileInfoWrap;

template <class Collection>
Published published(Rook::Ptr<Collection> const& collection) {
    return {collection, collection->size()};
}

} // namespace

Wrap loadWrap(Directories const& directories, std::string const& agentString) {
    auto const wrap = Kelda::agentMountFileInfoWrapFactory(
        false, agentString, "", directories.preinit, directories.profiles, true);
    auto& parser = *wrap->mountFileInfoPtr();
    parser.doInit();
    // The library puts the lists of files in order when they are first asked for.
    parser.profileFilePathsMap();
    return wrap;
}

std::array<PublishQuestion const, 3> const publishQuestions = {{
    {"getMountPathInfoAll",
     [](AgentMountFileInfoWrap& wrap, std::string const& agentString) {
         return published(wrap.getMountPathInfoAll(agentString));
     }},
    {"getMountPathInfoFile",
     [](AgentMountFileInfoWrap& wrap, std::string const& agentString) {
         return published(wrap.getMountPathInfoFile(agentString, true));
     }},
    {"getPreinitPathInfo",
     [](AgentMountFileInfoWrap& wrap, std::string const& /*agentString*/) {
         return published(wrap.getPreinitPathInfo());
     }},
}};

namespace {

std::string differentMounts(char const* what, Kelda::MountPathInfoCol const& mounts,
                            Kelda::UnorderedStringSet const& paths, Kelda::MountFileInfo& parser) {
    if (mounts.size() != paths.size())
        return fmt::format("{} gives {} paths of {}", what, mounts.size(), paths.size());
    for (auto const& mount : mounts) {
        auto const args = parser.mountInfo(mount->path());
        if (!paths.contains(mount->path()) || mount->type() != args.type ||
            mount->flags() != KeldaUtil::mountTableFlagsToString(args.flags))
            return fmt::format("{} gives another {}", what, mount->path());
    }
    return "";
}

std::string differentPreinits(Kelda::PreinitPathInfoCol const& preinits,
                              Kelda::MountFileInfo& parser) {
    auto const paths = parser.rawPreinitPaths();
    if (preinits.size() != paths.size())
        return fmt::format("{} preinit paths of {}", preinits.size(), paths.size());
    for (auto const& path : paths) {
        auto const info = preinits.preinitPathData(path);
        if (info.path() != path || info.attr() != parser.getPreinitAttr(path) ||
            info.type() != parser.getType(Kelda::MountFileInfo::wildcardPath(path)))
            return fmt::format("another preinit path {}", path);
    }
    return "";
}

} // namespace

std::string differenceInPublishing(Directories const& directories, std::string const& agentString) {
    auto const wrap = loadWrap(directories, agentString);
    auto& parser = *wrap->mountFileInfoPtr();
    auto const fileList = parser.profileFilePaths(agentString, true);
    Kelda::UnorderedStringSet const filePaths(fileList.begin(), fileList.end());
    for (auto const& found :
         {differentMounts("getMountPathInfoAll", *wrap->getMountPathInfoAll(agentString),
                          parser.agentPaths(agentString), parser),
          differentMounts("getMountPathInfoFile", *wrap->getMountPathInfoFile(agentString, true),
                          filePaths, parser),
          differentPreinits(*wrap->getPreinitPathInfo(), parser)})
        if (!found.empty())
            return found;
    return "";
}

} // namespace bench
