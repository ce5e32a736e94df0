// The published entity's questions to its parser, and their answers as published values.
#include <KeldaBase/AgentMountFileInfoWrap.h>

#include <algorithm>
#include <string>
#include <vector>

#include <Fen/Assert.h>
#include <KeldaUtil/MountFlags.h>

#include <KeldaBase/MountFileInfo.h>

#include "WrapTracing.h"

namespace Kelda {

namespace {

// The path without the "/" at its end.
Rook::String doCleanPath(Rook::String const& path) {
    auto clean = path.endsWith("/") ? path.substr(0, path.size() - 1) : path;
    // The message names the operation in full, as people look it up.
    FEN_ASSERT_MSG(!clean.startsWith("/"),
                   "path[ 0 ] != '/', in Fen::String Kelda::doCleanPath(Fen::String, bool)");
    return clean;
}

std::string eachFollowedByBlank(std::vector<Rook::String> const& names) {
    std::string text;
    for (auto const& name : names)
        text.append(name.view()).append(" ");
    return text;
}

std::vector<ConfigPathInfo> configPathsOf(MountFileInfo& parser) {
    std::vector<ConfigPathInfo> paths;
    for (auto const& [path, info] : parser.pathConfigInfoMap())
        if (info.isConfig && info.isExplicit)
            paths.emplace_back(path, parser.getType(MountFileInfo::wildcardPath(path)));
    return paths;
}

std::vector<PreinitPathInfo> preinitPathsOf(MountFileInfo& parser) {
    auto rawPaths = parser.rawPreinitPaths();
    std::ranges::sort(rawPaths);
    std::vector<PreinitPathInfo> paths;
    paths.reserve(rawPaths.size());
    for (auto const& path : rawPaths)
        paths.emplace_back(path, parser.getType(MountFileInfo::wildcardPath(path)),
                           parser.getPreinitAttr(path));
    return paths;
}

} // namespace

MountFileInfo& AgentMountFileInfoWrap::parser() const {
    FEN_ASSERT_MSG(mountFileInfo_ != nullptr, "mountFileInfoPtr() != nullptr");
    return *mountFileInfo_;
}

void AgentMountFileInfoWrap::addAgent(Rook::String const& agentStringVal,
                                      Rook::String const& overrideAgentStringVal) {
    WRAP_TRACE("addAgent ( \"{}\", \"{}\" ) ", agentStringVal, overrideAgentStringVal);
    parser().addAgent(agentStringVal, overrideAgentStringVal);
}

void AgentMountFileInfoWrap::disableUnDoInit() {
    WRAP_TRACE("disableUnDoInit");
    parser().disableUnDoInit();
}

Rook::Ptr<MountPathInfo> AgentMountFileInfoWrap::getMountPathInfo(Rook::String const& path) {
    WRAP_TRACE("getMountPathInfo ( \"{}\" )", path);
    return publish(doCleanPath(path));
}

Rook::Ptr<MountPathInfo> AgentMountFileInfoWrap::publish(Rook::String const& path) {
    auto const args = parser().mountInfo(path);
    return mountPathInfoFactory(path, args.type, KeldaUtil::mountTableFlagsToString(args.flags));
}

// Paths that come from the parser are asked for as it spells them: a profile may write a "/" at the
// front, which is its fault and not the caller's.
Rook::Ptr<MountPathInfoCol>
AgentMountFileInfoWrap::publishAll(std::span<Rook::String const> paths) {
    auto collection = mountPathInfoColFactory();
    for (auto const& path : paths) {
        WRAP_TRACE("getMountPathInfo ( \"{}\" )", path);
        collection->mountPathDataIs(publish(path));
    }
    return collection;
}

Rook::Ptr<MountPathInfoCol>
AgentMountFileInfoWrap::getMountPathInfoAll(Rook::String const& agentName) {
    WRAP_TRACE("getMountPathInfoAll");
    // In path order, in which the collection takes them fastest.
    auto const agentPaths = parser().agentPaths(agentName);
    StringList paths(agentPaths.begin(), agentPaths.end());
    std::ranges::sort(paths);
    return publishAll(paths);
}

Rook::Ptr<MountPathInfoCol>
AgentMountFileInfoWrap::getMountPathInfoFile(Rook::String const& profileFileName,
                                             bool withIncludes) {
    WRAP_TRACE("getMountPathInfoFile");
    return publishAll(parser().profileFilePaths(profileFileName, withIncludes));
}

Rook::Ptr<MountPathInfoCol>
AgentMountFileInfoWrap::getMountPathInfoGroup(Rook::String const& mountGroupName) {
    WRAP_TRACE("getMountPathInfoGroup");
    // Unlike the other questions, this one does not make the parser load by itself.
    parser().doInit();
    return publishAll(parser().mountGroupPaths(mountGroupName));
}

// The two collections of the entity's own are filled only once every answer is there, so that a
// fault leaves them as they were.

Rook::Ptr<ConfigPathInfoCol> AgentMountFileInfoWrap::getConfigPathInfo() {
    WRAP_TRACE("getConfigPathInfo");
    auto collection = configPathColIs();
    if (collection->empty())
        for (auto const& info : configPathsOf(parser()))
            collection->configPathDataIs(info);
    return collection;
}

Rook::Ptr<PreinitPathInfoCol> AgentMountFileInfoWrap::getPreinitPathInfo() {
    WRAP_TRACE("getPreinitPathInfo");
    auto collection = preinitPathColIs();
    if (collection->empty())
        for (auto const& info : preinitPathsOf(parser()))
            collection->preinitPathDataIs(info);
    return collection;
}

bool AgentMountFileInfoWrap::fileIsLoaded(Rook::String const& fileName) {
    return parser().fileIsLoaded(fileName);
}

bool AgentMountFileInfoWrap::isLikelyTest() {
    WRAP_TRACE("isLikelyTest");
    if (!calledFromContainer_) {
        WRAP_TRACE(" true because !calledFromContainer() ");
        return true;
    }
    WRAP_TRACE(" false w/ agentNames {}", eachFollowedByBlank(parser().getAgentStrings()));
    return false;
}

} // namespace Kelda
