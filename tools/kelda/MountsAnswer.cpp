#include "MountsAnswer.h"

#include <algorithm>

#include <KeldaUtil/MountFlags.h>

namespace KeldaTool {
namespace {

std::string textOf(Rook::String const& text) {
    return std::string(text.view());
}

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

std::vector<Mount> mountsOf(Kelda::MountArgsMap const& map) {
    std::vector<Mount> mounts;
    for (auto const& [path, args] : map)
        mounts.push_back({textOf(path), textOf(args.type),
                          textOf(KeldaUtil::mountTableFlagsToString(args.flags)), args.isExplicit});
    return mounts;
}

} // namespace

MountsAnswer askMounts(Kelda::AgentMountFileInfo& parser, std::string const& agent) {
    parser.doInit();
    MountsAnswer answer;
    answer.agent = agent;
    answer.foundMountProfile = parser.foundMountProfile(agent);
    answer.activeMount = parser.activeMount();
    answer.noDefaultMountGroup = parser.noDefaultMountGroup();
    answer.rootFlags = textOf(parser.rootFlags());
    answer.connectionFlags = textOf(parser.connectionFlags());
    answer.subAgents = textsOf(parser.subAgents());
    answer.files = listsOf(parser.profileFilePathsMap());
    answer.groups = listsOf(parser.mountGroupPathsMap());
    answer.mounts = mountsOf(parser.pathMountArgsMap());
    answer.agentPaths = sortedTextsOf(parser.agentPaths(agent));
    return answer;
}

} // namespace KeldaTool
