#include "mounts/MountsDocument.h"

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

Json wholeDocument(MountsAnswer const& answer) {
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

char const* memberOf(MountsSelection::By by) {
    switch (by) {
    case MountsSelection::By::path:
        return "path";
    case MountsSelection::By::file:
        return "file";
    case MountsSelection::By::group:
        return "group";
    case MountsSelection::By::nothing:
        break;
    }
    return "";
}

Json selectionDocument(MountsAnswer const& answer, MountsSelection const& selection) {
    Json document{{"agent", jsonText(answer.agent)},
                  {"foundMountProfile", answer.foundMountProfile},
                  {memberOf(selection.by), jsonText(answer.selected)}};
    if (selection.by == MountsSelection::By::file)
        document["withIncludes"] = selection.withIncludes;
    document["mounts"] = mountsArray(answer.mounts);
    return document;
}

} // namespace

Json mountsDocument(MountsAnswer const& answer, MountsSelection const& selection) {
    return selection.by == MountsSelection::By::nothing ? wholeDocument(answer)
                                                        : selectionDocument(answer, selection);
}

} // namespace KeldaTool
