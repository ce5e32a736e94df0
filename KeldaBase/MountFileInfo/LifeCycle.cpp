// Construction, the init/un-init cycle, and what each step of it resets.
#include <KeldaBase/MountFileInfo.h>

#include <cstdlib>
#include <utility>

#include <Fen/Assert.h>
#include <Fen/SystemName.h>
#include <KeldaBase/DynCell.h>
#include <fmt/format.h>

#include "../Tracing.h"
#include "LoadCaches.h"

namespace Kelda {

MemSlab::Slab& mountFileInfoSlab() {
    static MemSlab::Slab& slab = MemSlab::slab("mountFileInfo");
    return slab;
}

namespace {

// Empties a container and gives its memory back.
template <class Container>
void release(Container& m) {
    Container().swap(m);
    FEN_ASSERT(m.size() == 0);
    if constexpr (requires { m.bucket_count(); })
        FEN_ASSERT(m.bucket_count() == 1);
}

} // namespace

MountFileInfo::MountFileInfo(bool dontMergeFlags, Rook::String preinitDir,
                             Rook::String keldaMountProfileDir, Rook::String defaultGroupName)
    : dontMergeFlags_(dontMergeFlags), preinitDir_(std::move(preinitDir)),
      keldaMountProfileDir_(std::move(keldaMountProfileDir)),
      defaultGroupName_(std::move(defaultGroupName)), chroot_(std::getenv("Q9_CHROOT") != nullptr),
      profileFileCheck_("KeldaMountProfiles"), preinitFileCheck_("preinit"),
      caches_(std::make_unique<LoadCaches>()) {
    MFI_TRACE(7,
              "( dontMergeFlags : {}, preinitDir : {}, keldaMountProfileDir : {}, "
              "defaultGroupName : {} )",
              dontMergeFlags_, preinitDir_, keldaMountProfileDir_, defaultGroupName_);
    predefinedAliasesIs("%cellId", fmt::format("{}", DynCell::cellId()));
    predefinedAliasesIs("%peerCellId", fmt::format("{}", DynCell::peerCellId(0)));
    predefinedAliasesIs("%sysname", Fen::systemName());
    predefinedAliasesIs("%sliceId", "FixedSystem");
    profileFileCheck_.parse();
    if (!profileFileCheck_.parsed())
        MFI_TRACE(1, "Failed to parse KeldaMountProfiles json files ");
    preinitFileCheck_.parse();
    if (!preinitFileCheck_.parsed())
        MFI_TRACE(1, "Failed to parse preinit json files ");
}

MountFileInfo::~MountFileInfo() = default;

void MountFileInfo::handleDoInit() {
    MFI_TRACE(8, "");
    ++doInitCount_;
    if (doInitCount_ > 1)
        MFI_TRACE(2, "doInit called {} times", doInitCount_);
    isInitialized_ = true;
}

void MountFileInfo::unDoInit() {
    MFI_TRACE(7, "");
    if (!isInitialized_)
        return;
    MFI_TRACE(2, "Cleaning up memory and setting isInitialized_ to false");
    releaseLoadedData();
    isInitialized_ = false;
    Rook::String::defragment();
}

void MountFileInfo::releaseLoadedData() {
    release(pathTypeMap_);
    release(pathAttrMap_);
    release(pathConfigInfoMap_);
    releaseProfileMaps();
    resetProfileState();
    defaultPreinitsLoaded_ = false;
    allProfilesLoaded_ = false;
    extraProfileDir_ = Rook::String();
}

void MountFileInfo::clearProfileData() {
    MFI_TRACE(7, "");
    releaseProfileMaps();
    release(perFileAliases_);
    release(titleTemplates_);
    release(exceptions_);
    resetProfileState();
}

void MountFileInfo::releaseProfileMaps() {
    caches_->clear();
    release(mountGroupPathsMap_);
    release(profileFilePathsMap_);
    release(profileFileIncludesMap_);
    release(agentStringProfileFileMap_);
    release(pathMountArgsMap_);
    release(intermediatePaths_);
    release(currentFiles_);
}

void MountFileInfo::resetProfileState() {
    activeMountSeen_ = false;
    matchActiveNameSeen_ = false;
    noDefaultMountGroup_ = false;
    foundMountProfile_ = false;
    conditionSeen_ = false;
    inConditionalGroup_ = false;
    rootFlags_ = Rook::String();
    connectionFlags_ = Rook::String();
    agentKey_ = Rook::String();
    currentMountGroup_ = Rook::String();
    release(subAgents_);
}

void MountFileInfo::resetFileContext() {
    MFI_TRACE(8, "");
    currentMountGroup_ = Rook::String();
    inConditionalGroup_ = false;
    release(perFileAliases_);
}

} // namespace Kelda
