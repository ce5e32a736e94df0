// The published values and collections. What they do is the framework's; here are their names.
#include <KeldaBase/AgentMountFileInfoWrap.h>

namespace Kelda {

MountPathInfo::MountPathInfo() = default;
MountPathInfo::MountPathInfo(Rook::String const& path, Rook::String const& type,
                             Rook::String const& flags)
    : path_(path), type_(type), flags_(flags) {}
MountPathInfo::~MountPathInfo() = default;

ConfigPathInfo::ConfigPathInfo(std::string_view strep)
    : ConfigPathInfo(Fen::strepToValue<ConfigPathInfo>(strep)) {}
ConfigPathInfo::ConfigPathInfo(Rook::String const& path, Rook::String const& type)
    : path_(path), type_(type) {}

PreinitPathInfo::PreinitPathInfo(std::string_view strep)
    : PreinitPathInfo(Fen::strepToValue<PreinitPathInfo>(strep)) {}
PreinitPathInfo::PreinitPathInfo(Rook::String const& path, Rook::String const& type,
                                 Rook::String const& attr)
    : path_(path), type_(type), attr_(attr) {}

Rook::Ptr<MountPathInfo> mountPathInfoFactory(Rook::String const& path, Rook::String const& type,
                                              Rook::String const& flags) {
    return new MountPathInfo(path, type, flags);
}

MountPathInfoCol::MountPathInfoCol() = default;
MountPathInfoCol::~MountPathInfoCol() = default;

void MountPathInfoCol::mountPathDataIs(Rook::Ptr<MountPathInfo> const& info) {
    elementIs(info);
}

Rook::Ptr<MountPathInfo> MountPathInfoCol::mountPathDataDel(Rook::String const& path) {
    return elementDel(path);
}

void MountPathInfoCol::mountPathDataDelAll() {
    elementDelAll();
}

Rook::Ptr<MountPathInfo> MountPathInfoCol::mountPathData(Rook::String const& path) const {
    return element(path);
}

ConfigPathInfoCol::ConfigPathInfoCol() = default;
ConfigPathInfoCol::~ConfigPathInfoCol() = default;

void ConfigPathInfoCol::configPathDataIs(ConfigPathInfo const& info) {
    elementIs(info);
}

void ConfigPathInfoCol::configPathDataDel(Rook::String const& path) {
    elementDel(path);
}

void ConfigPathInfoCol::configPathDataDelAll() {
    elementDelAll();
}

ConfigPathInfo ConfigPathInfoCol::configPathData(Rook::String const& path) const {
    return element(path);
}

PreinitPathInfoCol::PreinitPathInfoCol() = default;
PreinitPathInfoCol::~PreinitPathInfoCol() = default;

void PreinitPathInfoCol::preinitPathDataIs(PreinitPathInfo const& info) {
    elementIs(info);
}

void PreinitPathInfoCol::preinitPathDataDel(Rook::String const& path) {
    elementDel(path);
}

void PreinitPathInfoCol::preinitPathDataDelAll() {
    elementDelAll();
}

PreinitPathInfo PreinitPathInfoCol::preinitPathData(Rook::String const& path) const {
    return element(path);
}

Rook::Ptr<MountPathInfoCol> mountPathInfoColFactory() {
    return new MountPathInfoCol;
}

Rook::Ptr<ConfigPathInfoCol> configPathInfoColFactory() {
    return new ConfigPathInfoCol;
}

Rook::Ptr<PreinitPathInfoCol> preinitPathInfoColFactory() {
    return new PreinitPathInfoCol;
}

} // namespace Kelda
