// The types of preinit paths, by wildcard path.
#include <KeldaBase/MountFileInfo.h>

#include <cstring>

#include "../Text.h"
#include "../Tracing.h"
#include "PseudoNames.h"

namespace Kelda {

void MountFileInfo::wildcardPath(LineBuffer& path) {
    char* out = std::strchr(path.data(), '%');
    for (char const* token = out; token != nullptr;) {
        char const* const rest = token + tokenLength(token);
        token = std::strchr(rest, '%');
        auto const length =
            token == nullptr ? std::strlen(rest) + 1 : static_cast<std::size_t>(token - rest);
        *out++ = '*';
        std::memmove(out, rest, length);
        out += length;
    }
}

Rook::String MountFileInfo::wildcardPath(Rook::String const& path) {
    if (path.find("%") == Rook::String::npos)
        return path;
    LineBuffer buffer;
    copyText(buffer, path);
    wildcardPath(buffer);
    return buffer.data();
}

void MountFileInfo::pathTypeMapIs(Rook::String path, Rook::String type) {
    MFI_TRACE(8, "( key: {}, value: {} )", path, type);
    pathTypeMap_.insert_or_assign(std::move(path), std::move(type));
}

void MountFileInfo::addParentPathTypes(char* path) {
    MFI_TRACE(8, "( path : {} )", path);
    while (char* const slash = std::strrchr(path, '/')) {
        *slash = '\0';
        Rook::String const ancestor(path);
        if (pathTypeMap_.contains(ancestor))
            return;
        pathTypeMapIs(ancestor, directoryType);
    }
}

Rook::String MountFileInfo::pathTypeMap(Rook::String const& path) const {
    MFI_TRACE(8, "( path : {} )", path);
    if (auto const found = pathTypeMap_.find(path); found != pathTypeMap_.end())
        return found->second;
    reportAndTrace(fmtNotFoundError("getType: no type info for path " + path, false));
    MFI_TRACE(3, "Returning empty string");
    return {};
}

Rook::String MountFileInfo::getType(Rook::String path) {
    MFI_TRACE(7, "( path : {} )", path);
    doInit();
    return pathTypeMap(path);
}

std::set<Rook::String> MountFileInfo::preinitPaths() {
    MFI_TRACE(7, "");
    doInit();
    std::set<Rook::String> paths;
    for (auto const& entry : pathTypeMap_)
        paths.insert(entry.first);
    return paths;
}

} // namespace Kelda
