#include "mounts/PublishedMounts.h"

#include <KeldaBase/MountFileInfo.h>
#include <KeldaUtil/MountFlags.h>

#include "Text.h"

namespace KeldaTool {
namespace {

using Kelda::AgentMountFileInfoWrap;

Mount mountOf(AgentMountFileInfoWrap& entity, Kelda::MountPathInfo const& info) {
    return {textOf(info.path()), textOf(info.type()), textOf(info.flags()),
            entity.mountFileInfoPtr()->isExplicit(info.path())};
}

std::vector<Mount> mountsOf(AgentMountFileInfoWrap& entity,
                            Rook::Ptr<Kelda::MountPathInfoCol> const& collection) {
    std::vector<Mount> mounts;
    for (auto const& info : *collection)
        mounts.push_back(mountOf(entity, *info));
    return mounts;
}

// The entity takes a "/" at the front of a path for its caller's error and drops one at the end,
// yet aliases without a value can leave both in a profile's path.
bool canBeAskedFor(Rook::String const& path) {
    return !path.startsWith("/") && !path.endsWith("/");
}

std::vector<Mount> everyMount(AgentMountFileInfoWrap& entity) {
    entity.mountFileInfoPtr()->doInit();
    std::vector<Mount> mounts;
    for (auto const& [path, args] : entity.mountFileInfoPtr()->pathMountArgsMap())
        if (canBeAskedFor(path))
            mounts.push_back(mountOf(entity, *entity.getMountPathInfo(path)));
        else
            mounts.push_back({textOf(path), textOf(args.type),
                              textOf(KeldaUtil::mountTableFlagsToString(args.flags)),
                              args.isExplicit});
    return mounts;
}

} // namespace

std::vector<Mount> mountsOfAgent(AgentMountFileInfoWrap& entity, std::string const& agent) {
    return mountsOf(entity, entity.getMountPathInfoAll(agent));
}

std::vector<Mount> selectedMounts(AgentMountFileInfoWrap& entity,
                                  MountsSelection const& selection) {
    switch (selection.by) {
    case MountsSelection::By::nothing:
        break;
    case MountsSelection::By::path:
        return {mountOf(entity, *entity.getMountPathInfo(selection.name))};
    case MountsSelection::By::file:
        return mountsOf(entity,
                        entity.getMountPathInfoFile(selection.name, selection.withIncludes));
    case MountsSelection::By::group:
        return mountsOf(entity, entity.getMountPathInfoGroup(selection.name));
    }
    return everyMount(entity);
}

} // namespace KeldaTool
