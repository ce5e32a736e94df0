#include "mounts/MountsAnswer.h"

#include <algorithm>

#include <KeldaBase/MountFileInfo.h>

#include "Text.h"
#include "mounts/PublishedMounts.h"

namespace KeldaTool {
namespace {

template <class Strings>
std::vector<std::string> textsOf(Strings const& strings) {
    std::vector<std::string> texts;
    for (auto const& text : strings)
        texts.push_back(textOf(text));
    return texts;
}

template <class Strings>
std::vector<std::string> sortedTextsOf(Strings const& strings) {
    auto texts = textsOf(strings);
    std::sort(texts.begin(), texts.end());
    return texts;
}

// Lists that nothing was put into are not told: they are left behind by queries.
MountsAnswer::Lists listsOf(Kelda::StringListMap const& map) {
    MountsAnswer::Lists lists;
    for (auto const& [key, paths] : map)
        if (!paths.empty())
            lists[textOf(key)] = sortedTextsOf(paths);
    return lists;
}

std::vector<std::string> pathsOf(std::vector<Mount> const& mounts) {
    std::vector<std::string> paths;
    for (auto const& mount : mounts)
        paths.push_back(mount.path);
    return paths;
}

} // namespace

MountsAnswer askMounts(Kelda::AgentMountFileInfoWrap& entity, std::string const& agent,
                       MountsSelection const& selection) {
    MountsAnswer answer;
    answer.agent = agent;
    answer.mounts = selectedMounts(entity, selection);
    answer.selected =
        selection.by == MountsSelection::By::path ? answer.mounts.front().path : selection.name;
    answer.agentPaths = pathsOf(mountsOfAgent(entity, agent));
    auto& parser = *entity.mountFileInfoPtr();
    answer.foundMountProfile = parser.foundMountProfile(agent);
    answer.activeMount = parser.activeMount();
    answer.noDefaultMountGroup = parser.noDefaultMountGroup();
    answer.rootFlags = textOf(parser.rootFlags());
    answer.connectionFlags = textOf(parser.connectionFlags());
    answer.subAgents = textsOf(parser.subAgents());
    answer.files = listsOf(parser.profileFilePathsMap());
    answer.groups = listsOf(parser.mountGroupPathsMap());
    return answer;
}

} // namespace KeldaTool
