#include "preinit/ConfigAnswer.h"

#include <algorithm>

#include "Table.h"
#include "Text.h"

namespace KeldaTool {

std::vector<ConfigPath> askConfig(Kelda::AgentMountFileInfoWrap& entity) {
    std::vector<ConfigPath> paths;
    auto const collection = entity.getConfigPathInfo();
    for (auto const& info : *collection)
        paths.push_back({textOf(info.path()), textOf(info.type())});
    std::sort(paths.begin(), paths.end(),
              [](ConfigPath const& a, ConfigPath const& b) { return a.path < b.path; });
    return paths;
}

Json configDocument(std::vector<ConfigPath> const& paths) {
    auto array = Json::array();
    for (auto const& path : paths)
        array.push_back({{"path", jsonText(path.path)}, {"type", jsonText(path.type)}});
    return {{"paths", array}};
}

std::string configTable(std::vector<ConfigPath> const& paths, bool colour) {
    Table table({"PATH", "TYPE"});
    for (auto const& path : paths)
        table.addRow({path.path, path.type});
    return table.text(colour) + "\n" + counted(paths.size(), "config path") + "\n";
}

} // namespace KeldaTool
