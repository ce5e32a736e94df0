// What preinit files brought, as ordered maps that a test can compare and print.
#pragma once

#include <map>
#include <string>
#include <utility>

#include <KeldaBase/MountFileInfo.h>

namespace support {

using Types = std::map<std::string, std::string>;
using Attributes = std::map<std::string, std::string>;
using Configs = std::map<std::string, std::pair<bool, bool>>;

inline Types declaredTypes(Kelda::MountFileInfo const& parser) {
    Types map;
    for (auto const& [path, type] : parser.pathTypeMap())
        map.emplace(path.view(), type.view());
    return map;
}

inline std::string nameOf(Kelda::PreinitAttr attribute) {
    switch (attribute) {
    case Kelda::PreinitAttr::none:
        return "none";
    case Kelda::PreinitAttr::createOnMount:
        return "createOnMount";
    case Kelda::PreinitAttr::createOnStandby:
        return "createOnStandby";
    case Kelda::PreinitAttr::invalid:
        return "invalid";
    }
    return "unknown";
}

inline Attributes declaredAttributes(Kelda::MountFileInfo const& parser) {
    Attributes map;
    for (auto const& [path, attribute] : parser.pathAttrMap())
        map.emplace(path.view(), nameOf(attribute));
    return map;
}

// Per path whether it is a config path, and an explicit one. Loads first when nothing is loaded.
inline Configs declaredConfigs(Kelda::MountFileInfo& parser) {
    Configs map;
    for (auto const& [path, info] : parser.pathConfigInfoMap())
        map.emplace(path.view(), std::pair(info.isConfig, info.isExplicit));
    return map;
}

} // namespace support
