#include "MountsDocument.h"

namespace KeldaTool {
namespace {

Json mountsArray(std::vector<Mount> const& mounts) {
    auto array = Json::array();
    for (auto const& mount : mounts)
        array.push_back({{"path", jsonText(mount.path)},
                         {"type", jsonText(mount.type)},
                         {"flags", jsonText(mount.flags)},
                         {"explicit", mount.isExplicit}});
    return array;
}

} // namespace

Json mountsDocument(MountsAnswer const& answer) {
    return {{"agent", jsonText(answer.agent)},
            {"foundMountProfile", answer.foundMountProfile},
            {"activeMount", answer.activeMount},
            {"noDefaultMountGroup", answer.noDefaultMountGroup},
            {"rootFlags", jsonText(answer.rootFlags)},
            {"connectionFlags", jsonText(answer.connectionFlags)},
            {"subAgents", jsonTexts(answer.subAgents)},
            {"files", jsonObject(answer.files)},
            {"groups", jsonObject(answer.groups)},
            {"mounts", mountsArray(answer.mounts)},
            {"agentPaths", jsonTexts(answer.agentPaths)}};
}

} // namespace KeldaTool
