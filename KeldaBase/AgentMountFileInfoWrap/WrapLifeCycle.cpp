// The published entity's life: its parser and its own collections come and go.
#include <KeldaBase/AgentMountFileInfoWrap.h>

#include <memory>
#include <utility>

#include <KeldaBase/AgentMountFileInfo.h>

#include "WrapTracing.h"

namespace Kelda {

namespace {

constexpr char const* defaultPreinitDir = "/usr/lib64/preinit";
constexpr char const* defaultProfileDir = "/usr/lib64/KeldaMountProfiles";
constexpr char const* defaultGroupName = "DefaultMountGroup";

Rook::String orDefault(Rook::String const& directory, char const* defaultDir) {
    return directory.empty() ? Rook::String(defaultDir) : directory;
}

} // namespace

AgentMountFileInfoWrap::AgentMountFileInfoWrap(bool dontMergeFlags, Rook::String const& agentString,
                                               Rook::String const& overrideAgentString,
                                               Rook::String const& preinitDir,
                                               Rook::String const& profileDir,
                                               bool loadMountProfile)
    : dontMergeFlags_(dontMergeFlags), loadMountProfile_(loadMountProfile),
      agentString_(agentString), overrideAgentString_(overrideAgentString), preinitDir_(preinitDir),
      profileDir_(profileDir) {
    doInit();
}

AgentMountFileInfoWrap::~AgentMountFileInfoWrap() {
    underDestructionIs();
    handleDestruction();
}

void AgentMountFileInfoWrap::doInit() {
    if (initialized_)
        return;
    WRAP_TRACE("doInit");
    auto parser = std::make_unique<AgentMountFileInfo>(
        dontMergeFlags_, orDefault(preinitDir_, defaultPreinitDir),
        orDefault(profileDir_, defaultProfileDir), loadMountProfile_, defaultGroupName);
    parser->addAgent(agentString_, overrideAgentString_);
    configPathColIs();
    preinitPathColIs();
    // One that was given while there was none goes.
    delete std::exchange(mountFileInfo_, parser.release());
    initialized_ = true;
}

void AgentMountFileInfoWrap::handleDestruction() {
    WRAP_TRACE("handleDestruction");
    delete std::exchange(mountFileInfo_, nullptr);
    initialized_ = false;
}

void AgentMountFileInfoWrap::mountFileInfoPtrIs(MountFileInfo* mountFileInfo) {
    mountFileInfo_ = mountFileInfo;
}

Rook::Ptr<ConfigPathInfoCol> AgentMountFileInfoWrap::configPathColIs() {
    if (configPathCol_ == nullptr)
        configPathCol_ = configPathInfoColFactory();
    return configPathCol_;
}

Rook::Ptr<PreinitPathInfoCol> AgentMountFileInfoWrap::preinitPathColIs() {
    if (preinitPathCol_ == nullptr)
        preinitPathCol_ = preinitPathInfoColFactory();
    return preinitPathCol_;
}

Rook::Ptr<ConfigPathInfoCol> AgentMountFileInfoWrap::configPathColDel() {
    return std::exchange(configPathCol_, nullptr);
}

Rook::Ptr<PreinitPathInfoCol> AgentMountFileInfoWrap::preinitPathColDel() {
    return std::exchange(preinitPathCol_, nullptr);
}

Rook::Ptr<AgentMountFileInfoWrap> agentMountFileInfoWrapFactory(
    bool dontMergeFlags, Rook::String const& agentString, Rook::String const& overrideAgentString,
    Rook::String const& preinitDir, Rook::String const& profileDir, bool loadMountProfile) {
    return new AgentMountFileInfoWrap(dontMergeFlags, agentString, overrideAgentString, preinitDir,
                                      profileDir, loadMountProfile);
}

Rook::Ptr<AgentMountFileInfoWrap>
agentMountFileInfoWrapFactory(std::span<Rook::String const> constructorArguments) {
    using Factory =
        Rook::Ptr<AgentMountFileInfoWrap>(bool, Rook::String const&, Rook::String const&,
                                          Rook::String const&, Rook::String const&, bool);
    return Fen::construct(static_cast<Factory*>(agentMountFileInfoWrapFactory),
                          constructorArguments);
}

} // namespace Kelda
