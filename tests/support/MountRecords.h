// Records of mount paths in the compact notation "TYPE FLAGS explicit" or "TYPE FLAGS
// intermediate".
#pragma once

#include <string>
#include <string_view>

#include <KeldaBase/MountFileInfo.h>
#include <KeldaUtil/MountFlags.h>

namespace support {

inline constexpr std::string_view noRecord = "(no record)";

inline Fen::MountTable::Flags flags(std::string_view letters) {
    return KeldaUtil::parseMountTableFlags(letters);
}

inline Kelda::MountArgs mount(std::string_view type, std::string_view letters,
                              bool isExplicit = false) {
    return {type, flags(letters), isExplicit};
}

inline std::string shown(Kelda::MountArgs const& args) {
    return std::string(args.type.view()) + " " +
           std::string(KeldaUtil::mountTableFlagsToString(args.flags).view()) +
           (args.isExplicit ? " explicit" : " intermediate");
}

// The record of a path as it stands, without loading.
inline std::string recordOf(Kelda::MountFileInfo const& parser, std::string_view path) {
    auto const found = parser.pathMountArgsMap().find(Rook::String(path));
    return found == parser.pathMountArgsMap().end() ? std::string(noRecord) : shown(found->second);
}

} // namespace support
