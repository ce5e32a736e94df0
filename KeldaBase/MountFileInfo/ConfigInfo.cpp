// Which paths are config paths: declared by "CONFIG:" preinit lines, or by other code at run time.
#include <KeldaBase/MountFileInfo.h>

#include <cstring>

#include <fmt/format.h>

#include "../Tracing.h"

namespace Kelda {

namespace {

std::string words(ConfigInfo const& info) {
    return fmt::format("({}, {})", info.isConfig ? "config" : "non-config",
                       info.isExplicit ? "explicit" : "child");
}

} // namespace

bool MountFileInfo::validateAndRecordPathConfigInfo(char const* tokenPath, PreinitAttr attr) {
    MFI_TRACE(8, "( tokenPath : {}, attr : {} )", tokenPath, static_cast<std::uint32_t>(attr));
    if (std::strchr(tokenPath, '%') != nullptr)
        reportAndTrace(fmt::format("alias found in preinit CONFIG path: {}", tokenPath));
    if (attr == PreinitAttr::createOnMount) {
        reportAndTrace(fmt::format("path {} may not have both CONFIG and createOnMount. All config "
                                   "paths must be present at startup",
                                   tokenPath));
        return false;
    }
    addPathConfigInfo(tokenPath, true, true);
    return true;
}

void MountFileInfo::addPathConfigInfo(Rook::String const& path, bool isConfig, bool isExplicit) {
    MFI_TRACE(8, "( path : {}, isConfig : {}, isExplicit : {} )", path, isConfig, isExplicit);
    ConfigInfo const info{isConfig, isExplicit};
    auto const [entry, added] = pathConfigInfoMap_.try_emplace(path, info);
    if (!added && entry->second != info)
        reportAndTrace(
            fmt::format("Attempting to overwrite ConfigInfo for path {}. Old: {}, New: {}", path,
                        words(entry->second), words(info)));
}

void MountFileInfo::addConfigChildPath(Rook::String const& path) {
    doInit();
    MFI_TRACE(7, "( path : {} )", path);
    addPathConfigInfo(path, true, false);
}

void MountFileInfo::addNonConfigPath(Rook::String const& path) {
    doInit();
    MFI_TRACE(7, "( path : {} )", path);
    addPathConfigInfo(path, false, false);
}

bool MountFileInfo::pathIsConfig(Rook::String const& path, bool includeChildren) {
    doInit();
    MFI_TRACE(7, "( path : {}, includeChildren : {} )", path, includeChildren);
    auto const found = pathConfigInfoMap_.find(path);
    if (found == pathConfigInfoMap_.end() || !found->second.isConfig)
        return false;
    return includeChildren || found->second.isExplicit;
}

StringKeyed<ConfigInfo> const& MountFileInfo::pathConfigInfoMap() {
    doInit();
    MFI_TRACE(7, "");
    return pathConfigInfoMap_;
}

bool MountFileInfo::pathConfigInfoMapHas(Rook::String const& path) {
    doInit();
    MFI_TRACE(7, "( path : {} )", path);
    return pathConfigInfoMap_.contains(path);
}

} // namespace Kelda
