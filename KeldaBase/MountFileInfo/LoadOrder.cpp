// Which preinit files are read, in which order: the default directory, then the extra locations of
// the environment.
#include <KeldaBase/MountFileInfo.h>

#include <cstdlib>
#include <string>

#include <Fen/Assert.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "../Tracing.h"
#include "Directory.h"

namespace Kelda {

namespace {

constexpr char const* standardPreinitDir = "/usr/lib64/preinit";

bool isDirectory(char const* path) {
    struct stat status {};
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// The piece without the slashes at its end, unless it is nothing but slashes.
std::string_view withoutTrailingSlashes(std::string_view piece) {
    auto const last = piece.find_last_not_of('/');
    return last == std::string_view::npos ? piece : piece.substr(0, last + 1);
}

// The pieces of a list between its colons; a colon at the end is followed by no piece.
std::vector<std::string_view> splitAtColons(std::string_view list) {
    std::vector<std::string_view> pieces;
    while (!list.empty()) {
        auto const colon = list.find(':');
        pieces.push_back(list.substr(0, colon));
        list = colon == std::string_view::npos ? std::string_view() : list.substr(colon + 1);
    }
    return pieces;
}

} // namespace

void MountFileInfo::doLoadPreinits() {
    MFI_TRACE(8, "");
    bool const skipsDefault = std::getenv("MFI_NO_DEFAULT_PREINIT") != nullptr;
    if (skipsDefault)
        MFI_TRACE(2, "Skipping default preinit load because MFI_NO_DEFAULT_PREINIT is in the "
                     "environment variables");
    else
        mapDir(preinitDir_, &MountFileInfo::preinitLoader, nullptr, &preinitFileCheck_);
    FEN_ASSERT(currentFiles_.empty());

    bool namesDefault = false;
    if (char const* const list = std::getenv("KELDA_EXTRA_PREINIT_PATH");
        list != nullptr && *list != '\0' && !loadExtraPreinits(list, namesDefault))
        return;
    FEN_ASSERT(currentFiles_.empty());
    currentFiles_.shrink_to_fit();
    defaultPreinitsLoaded_ = !skipsDefault || namesDefault;
    if (char const* const directory = std::getenv("KELDA_EXTRA_PROFILE_PATH"))
        extraProfileDir_ = directory;
}

// False when an entry cannot be read: the rest of the list is not read then.
bool MountFileInfo::loadExtraPreinits(char const* list, bool& namesDefault) {
    MFI_TRACE(2, "Loading extra preinits from env variable: {}", list);
    for (auto const piece : splitAtColons(list)) {
        Rook::String const entry(withoutTrailingSlashes(piece));
        namesDefault = namesDefault || entry == standardPreinitDir;
        if (isDirectory(entry.c_str()))
            mapDir(entry, &MountFileInfo::preinitLoader, nullptr, &preinitFileCheck_);
        else if (!loadExtraPreinitFile(entry))
            return false;
    }
    return true;
}

bool MountFileInfo::loadExtraPreinitFile(Rook::String const& entry) {
    auto const file = streamOf(openForReading(AT_FDCWD, entry.c_str()));
    if (!file) {
        reportAndTrace("Unable to fopen preinit profile: " + entry);
        return false;
    }
    loadOpenFile(file.get(), Rook::String(), entry, &MountFileInfo::preinitLoader);
    return true;
}

} // namespace Kelda
