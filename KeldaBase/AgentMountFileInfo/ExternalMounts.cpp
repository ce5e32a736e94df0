// Mounts that callers record at run time: saved, so that a later initialisation records them again.
#include <KeldaBase/AgentMountFileInfo.h>

#include <KeldaUtil/MountFlags.h>

#include "../Tracing.h"

namespace Kelda {

void AgentMountFileInfo::recordMountArgsExternal(Rook::String const& path, MountArgs const& args,
                                                 bool targetPath, bool mergeType) {
    MFI_TRACE(7, "( path : {}, args : MountArgs( {}, {} ), targetPath : {}, mergeType : {} )", path,
              KeldaUtil::mountTableFlagsToString(args.flags), args.type, targetPath, mergeType);
    MountFileInfo::recordMountArgsExternal(path, args, targetPath, mergeType);
    savedRMAs_.push_back({path, args, targetPath, mergeType});
}

void AgentMountFileInfo::replaySavedRMAs() {
    MFI_TRACE(8, "");
    for (auto const& saved : savedRMAs_)
        recordMountArgs(saved.path, saved.args, saved.targetPath, saved.mergeType, true);
}

} // namespace Kelda
