#include "PreinitAnswer.h"

#include <algorithm>

#include <fmt/format.h>

#include "Table.h"
#include "Text.h"

namespace KeldaTool {
namespace {

std::string textOf(Rook::String const& text) {
    return std::string(text.view());
}

std::string typeOf(Kelda::AgentMountFileInfo const& parser, Rook::String const& path) {
    auto const type = parser.pathTypeMap().find(Kelda::MountFileInfo::wildcardPath(path));
    return type == parser.pathTypeMap().end() ? "" : textOf(type->second);
}

std::vector<PreinitPath> pathsOf(Kelda::AgentMountFileInfo& parser) {
    std::vector<PreinitPath> paths;
    for (auto const& [path, attribute] : parser.pathAttrMap())
        paths.push_back({textOf(path), typeOf(parser, path), parser.preinitAttrToString(attribute),
                         parser.pathIsConfig(path, false)});
    std::sort(paths.begin(), paths.end(),
              [](PreinitPath const& a, PreinitPath const& b) { return a.path < b.path; });
    return paths;
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

PreinitAnswer askPreinit(Kelda::AgentMountFileInfo& parser) {
    parser.doInit();
    PreinitAnswer answer;
    answer.paths = pathsOf(parser);
    for (auto const& [path, type] : parser.pathTypeMap())
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
