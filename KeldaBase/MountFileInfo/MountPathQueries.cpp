// Queries over the records of mount paths.
#include <KeldaBase/MountFileInfo.h>

#include <KeldaUtil/MountFlags.h>

#include "../Tracing.h"
#include "FlagBits.h"
#include "LoadCaches.h"

namespace Kelda {

using Fen::MountTable::Flags;
using KeldaUtil::mountTableFlagsToString;

MountArgs MountFileInfo::mountInfo(Rook::String path) {
    doInit();
    MFI_TRACE(7, "( path : {} )", path);
    if (auto const* const record = findRecord(path))
        return *record;
    reportAndTrace(fmtNotFoundError("mountInfo: no such path: " + path, true));
    MFI_TRACE(3, "Returning empty vector");
    return {};
}

bool MountFileInfo::infoExists(Rook::String const& path) {
    doInit();
    MFI_TRACE(7, "( path : {} ) ", path);
    return findRecord(path) != nullptr;
}

bool MountFileInfo::isExplicit(Rook::String const& path) {
    return infoExists(path) && findRecord(path)->isExplicit;
}

bool MountFileInfo::infoCompatible(Rook::String const& path, Rook::String const& type,
                                   Flags newFlag, bool mountSynchronized, bool active,
                                   bool prevUnmounted) {
    MFI_TRACE(7,
              "( path : {}, type : {}, newFlag : {}, mountSynchronized : {}, active : {}, "
              "prevUnmounted : {} )",
              path, type, mountTableFlagsToString(newFlag), mountSynchronized, active,
              prevUnmounted);
    auto const& record = recordOf(path);
    bool const typeMatters = (newFlag.bits() & FlagBits::instantiating) != 0 || prevUnmounted;
    if (typeMatters && record.type != type)
        return false;
    auto wanted = newFlag.bits();
    if (mountSynchronized)
        wanted &= ~FlagBits::instantiating;
    if (active)
        wanted = FlagBits::withoutSuppressedWrite(wanted) & ~FlagBits::passive;
    Flags const existing(FlagBits::withoutSuppressedWrite(record.flags.bits()));
    return KeldaUtil::safelyMergeFlags(existing, Flags(wanted)) == existing;
}

} // namespace Kelda
