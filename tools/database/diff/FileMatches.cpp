#include "FileMatches.h"

namespace KeldaDatabase {

FileId FileMatches::counterpart(Version version, FileId file) {
    if (file == none)
        return none;
    auto& here = side(version);
    return other(version).fileNamed(here.device().files[file].family, here.nameOf(file));
}

LineMatch const& FileMatches::match(Version version, FileId file) {
    auto const there = counterpart(version, file);
    auto const before = version == Version::before ? file : there;
    auto const after = version == Version::before ? there : file;
    auto const found = matches_.find(before);
    if (found != matches_.end())
        return found->second;
    return matches_.try_emplace(before, before_.written(before), after_.written(after))
        .first->second;
}

} // namespace KeldaDatabase
