// Intermediate paths: every ancestor of a mounted path gets a record, whose flags follow from the
// mounts below it (bottom-up) and from its parent or the root flags (top-down).
#include <KeldaBase/MountFileInfo.h>

#include <utility>

#include <Fen/Assert.h>
#include <KeldaBase/LoadObserver.h>
#include <KeldaUtil/MountFlags.h>
#include <fmt/format.h>

#include "../Tracing.h"
#include "LoadCaches.h"
#include "PseudoNames.h"

namespace Kelda {

using Fen::MountTable::Flags;
using KeldaUtil::mountTableFlagsToString;

namespace {

// The part of a path before its last slash; empty when there is none or when it is the first
// character.
Rook::String getParent(Rook::String const& path) {
    auto const slash = path.view().rfind('/');
    return slash == std::string_view::npos ? Rook::String() : path.substr(0, slash);
}

} // namespace

void MountFileInfo::recordIntermediatePaths() {
    MFI_TRACE(8, "");
    FEN_ASSERT(allProfilesLoaded_);
    if (dontMergeFlags_ || !activeMountSeen_)
        return;
    // Ancestors sort before the path being visited, so the records made here are not visited.
    for (auto const& [path, args] : pathMountArgsMap_) {
        if (!args.flags.instantiatingMount())
            continue;
        MountArgs const intermediate{directoryType,
                                     getIntermediateFlagsImpl(args.flags, Flags(), false)};
        auto prefix = path.view();
        for (auto slash = prefix.rfind('/'); slash != std::string_view::npos;
             slash = prefix.rfind('/')) {
            prefix = prefix.substr(0, slash);
            recordMountArgsInternal(prefix, intermediate, false);
        }
    }
}

void MountFileInfo::inheritParentFlags() {
    MFI_TRACE(8, "");
    FEN_ASSERT(allProfilesLoaded_);
    recordIntermediatePaths();
    for (auto const& path : intermediatePaths_)
        inheritFlags(path);
    OrderedStringSet().swap(intermediatePaths_);
}

void MountFileInfo::inheritFlags(Rook::String const& path) {
    MFI_TRACE(9, "Inheriting flags for {}", path);
    auto const parentFlags = flagsToInherit(path);
    auto const intermediate = pathMountArgsMap_.find(path);
    FEN_ASSERT(intermediate != pathMountArgsMap_.end());
    auto& flags = intermediate->second.flags;
    auto const inherited = getIntermediateFlagsImpl(flags, parentFlags, true);
    MFI_TRACE(9, "Flags for intermediate path {}{}", path,
              inherited == flags
                  ? fmt::format(" left unchanged ({})", mountTableFlagsToString(inherited))
                  : fmt::format(" inherited from {} to {}", mountTableFlagsToString(flags),
                                mountTableFlagsToString(inherited)));
    auto const before = std::exchange(flags, inherited);
    if (observer_ != nullptr)
        observer_->flagsInherited(path, getParent(path), before, inherited);
}

// The flags of the parent's record, or the root flags at the top.
Flags MountFileInfo::flagsToInherit(Rook::String const& path) const {
    auto const parentPath = getParent(path);
    if (parentPath.empty()) {
        MFI_TRACE(9, "Inheriting from root flags {}", rootFlags_);
        return KeldaUtil::parseMountTableFlags(rootFlags_);
    }
    auto const parent = pathMountArgsMap_.find(parentPath);
    FEN_ASSERT(parent != pathMountArgsMap_.end());
    MFI_TRACE(9, "Parent {} has flags {}", parentPath,
              mountTableFlagsToString(parent->second.flags));
    return parent->second.flags;
}

Flags MountFileInfo::getIntermediateFlags(Flags targetFlags, Rook::String const& intermediatePath) {
    MFI_TRACE(7, "( targetFlags : {}, intermediatePath : {} )",
              mountTableFlagsToString(targetFlags), intermediatePath);
    doInit();
    if (auto const* const record = findRecord(intermediatePath)) {
        auto const result = KeldaUtil::safelyMergeFlags(
            getIntermediateFlagsImpl(targetFlags, Flags(), false), record->flags);
        MFI_TRACE(9,
                  "Intermediate {} already has data with flags {}. Doing bottom-up inheritance "
                  "only, giving flags {}.",
                  intermediatePath, mountTableFlagsToString(record->flags),
                  mountTableFlagsToString(result));
        return result;
    }
    return getIntermediateFlagsImpl(targetFlags, flagsOfNearestAncestor(intermediatePath), true);
}

// The flags of the nearest ancestor that was mounted itself, or the root flags.
Flags MountFileInfo::flagsOfNearestAncestor(Rook::String const& path) const {
    for (auto ancestor = getParent(path); !ancestor.empty(); ancestor = getParent(ancestor)) {
        auto const found = pathMountArgsMap_.find(ancestor);
        if (found == pathMountArgsMap_.end() || intermediatePaths_.contains(ancestor))
            continue;
        MFI_TRACE(9, "Found parent {} with flags {}", ancestor,
                  mountTableFlagsToString(found->second.flags));
        return found->second.flags;
    }
    MFI_TRACE(9, "Inheriting from root flags {}", rootFlags_);
    return KeldaUtil::parseMountTableFlags(rootFlags_);
}

} // namespace Kelda
