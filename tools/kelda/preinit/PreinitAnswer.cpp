#include "preinit/PreinitAnswer.h"

#include <algorithm>

#include <KeldaBase/MountFileInfo.h>
#include <fmt/format.h>

#include "Table.h"
#include "Text.h"

namespace KeldaTool {
namespace {

// The library tells the attribute of every path but of those that hold a "*", which stand for
// wildcards there; and one such path keeps the entity from publishing any.
bool isPublishable(Rook::String const& path) {
    return path.find("*") == Rook::String::npos;
}

std::vector<PreinitPath> publishedPaths(Kelda::AgentMountFileInfoWrap& entity) {
    std::vector<PreinitPath> paths;
    auto const collection = entity.getPreinitPathInfo();
    for (auto const& info : *collection)
        paths.push_back({textOf(info.path()), textOf(info.type()), textOf(info.attr()),
                         entity.mountFileInfoPtr()->pathIsConfig(info.path(), false)});
    return paths;
}

std::vector<PreinitPath> parsedPaths(Kelda::MountFileInfo& parser) {
    std::vector<PreinitPath> paths;
    for (auto const& [path, attribute] : parser.pathAttrMap())
        paths.push_back({textOf(path),
                         textOf(parser.getType(Kelda::MountFileInfo::wildcardPath(path))),
                         parser.preinitAttrToString(attribute), parser.pathIsConfig(path, false)});
    std::sort(paths.begin(), paths.end(),
              [](PreinitPath const& a, PreinitPath const& b) { return a.path < b.path; });
    return paths;
}

std::vector<PreinitPath> pathsOf(Kelda::AgentMountFileInfoWrap& entity) {
    auto& parser = *entity.mountFileInfoPtr();
    auto const paths = parser.rawPreinitPaths();
    return std::all_of(paths.begin(), paths.end(), isPublishable) ? publishedPaths(entity)
                                                                  : parsedPaths(parser);
}

Json pathsArray(std::vector<PreinitPath> const& paths) {
    auto array = Json::array();
    for (auto const& path : paths)
        array.push_back({{"path", jsonText(path.path)},
                         {"type", jsonText(path.type)},
                         {"attr", jsonText(path.attribute)},
                         {"config", path.isConfig}});
    return array;
}

std::string totals(PreinitAnswer const& answer) {
    auto const count = [&answer](auto const& test) {
        return std::count_if(answer.paths.begin(), answer.paths.end(), test);
    };
    auto const with = [&count](char const* attribute) {
        return count([attribute](PreinitPath const& path) { return path.attribute == attribute; });
    };
    return fmt::format("{} ({} createOnMount, {} createOnStandby, {} config), {} with a type\n",
                       counted(answer.paths.size(), "path"), with("createOnMount"),
                       with("createOnStandby"),
                       count([](PreinitPath const& path) { return path.isConfig; }),
                       counted(answer.types.size(), "wildcard path"));
}

} // namespace

PreinitAnswer askPreinit(Kelda::AgentMountFileInfoWrap& entity) {
    PreinitAnswer answer;
    answer.paths = pathsOf(entity);
    for (auto const& [path, type] : entity.mountFileInfoPtr()->pathTypeMap())
        answer.types[textOf(path)] = textOf(type);
    return answer;
}

Json preinitDocument(PreinitAnswer const& answer) {
    return {{"paths", pathsArray(answer.paths)}, {"types", jsonObject(answer.types)}};
}

std::string preinitTable(PreinitAnswer const& answer, bool colour) {
    Table table({"PATH", "TYPE", "ATTRIBUTE", "CONFIG"});
    for (auto const& path : answer.paths)
        table.addRow({path.path, path.type, path.attribute, path.isConfig ? "config" : ""});
    return table.text(colour) + "\n" + totals(answer);
}

} // namespace KeldaTool
