// The profile that no file holds: it mounts every path that a "CONFIG:" preinit line declares.
#include <KeldaBase/MountFileInfo.h>

#include <KeldaBase/LoadObserver.h>
#include <KeldaUtil/MountFlags.h>

#include "../Tracing.h"
#include "LoadCaches.h"
#include "PseudoNames.h"

namespace Kelda {

int MountFileInfo::loadConfigMountProfile() {
    constexpr char const* flagsText = "wi";
    auto const flags = KeldaUtil::parseMountTableFlags(flagsText);
    MFI_TRACE(2, "Reading virtual ConfigMountProfile file ");
    for (auto const& [path, info] : pathConfigInfoMap_) {
        if (!info.isConfig || !info.isExplicit)
            continue;
        MFI_TRACE(2, "Adding {} with flags {} to virtual ConfigMountProfile file", path, flagsText);
        auto const type = pathTypeMap(wildcardPath(path));
        if (observer_ != nullptr)
            observer_->mountLine(
                {path.view(), type.view(), flagsText, path, type, false, inConditionalGroup_},
                currentFiles_);
        recordMountArgsInternal(path, {type, flags}, true);
        mountGroupPathsMapIs(caches_->mountGroupKey.of(agentKey_, currentMountGroup_), path);
        profileFilePathsMapIs(configMountProfileName, path);
    }
    return 1;
}

} // namespace Kelda
