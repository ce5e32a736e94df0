// The one directory scan: finds the files of a directory that match a pattern, passes over those
// that are not to be read, and hands each of the others to a loader.
#include <KeldaBase/MountFileInfo.h>

#include <cstdlib>
#include <string>

#include <Fen/Assert.h>
#include <fmt/format.h>

#include "../Tracing.h"
#include "Directory.h"
#include "LoadCaches.h"
#include "PseudoNames.h"
#include "Restore.h"

namespace Kelda {

namespace {

constexpr char const* allFiles = "*";

bool readsRealConfigMountProfile() {
    return std::getenv("PROFILEMULTIWRITERCHECK") != nullptr;
}

// Takes the file on top of the stack of open files off again, however its loader ends.
template <class Stack>
class OpenFileRecord {
  public:
    OpenFileRecord(Stack& files, Rook::String name) : files_(files), depth_(files.size()) {
        files_.push_back({std::move(name), 0});
    }
    ~OpenFileRecord() {
        if (files_.size() > depth_)
            files_.pop_back();
    }
    OpenFileRecord(OpenFileRecord const&) = delete;
    OpenFileRecord& operator=(OpenFileRecord const&) = delete;

  private:
    Stack& files_;
    std::size_t depth_;
};

} // namespace

int MountFileInfo::loadOpenFile(FILE* file, Rook::String const& name, FileLoader loader) {
    OpenFileRecord const record(currentFiles_, name);
    return (this->*loader)(file);
}

int MountFileInfo::mapDir(Rook::String dirName, FileLoader loader, char const* pattern,
                          DynFileLoadCheck* check) {
    MFI_TRACE(8, "( dirName : {}, _ , pattern : {}, _ )", dirName,
              pattern == nullptr ? "" : pattern);
    OpenDirectory const directory(::opendir(dirName.c_str()));
    if (!directory) {
        reportAndTrace("Cannot open directory " + dirName);
        return 0;
    }
    std::string_view const searched = pattern == nullptr ? allFiles : pattern;
    bool const isConfigMountProfile = searched == configMountProfileName;
    if (isConfigMountProfile && !readsRealConfigMountProfile())
        return loadConfigMountProfile();

    std::optional<int> count;
    if (auto* const listing = caches_->listing;
        listing != nullptr && listing->answers(dirName, searched))
        count = loadFiles(::dirfd(directory.get()), dirName, listing->matching(pattern), loader,
                          pattern, check);
    else
        count = searchAndLoad(::dirfd(directory.get()), dirName, loader, pattern, check);
    if (!count)
        return 0;
    return *count == 0 && isConfigMountProfile ? loadConfigMountProfile() : *count;
}

// Searches the directory itself. Nothing when the search failed or a file cannot be read.
std::optional<int> MountFileInfo::searchAndLoad(int directory, Rook::String const& dirName,
                                                FileLoader loader, char const* pattern,
                                                DynFileLoadCheck* check) {
    std::string_view const searched = pattern == nullptr ? allFiles : pattern;
    DirectoryMatches const matches(dirName, searched);
    if (matches.code() != 0 && matches.code() != GLOB_NOMATCH) {
        reportAndTrace(fmt::format("Glob threw exception {} while searching for file {}/{} ",
                                   matches.code(), dirName, searched));
        return std::nullopt;
    }
    auto names = matches.names();
    if (pattern != nullptr)
        return loadFiles(directory, dirName, names, loader, pattern, check);
    DirectoryListing listing(dirName, names);
    Restore const forgetting(caches_->listing, caches_->listing);
    caches_->listing = &listing;
    return loadFiles(directory, dirName, names, loader, pattern, check);
}

// The sum of what the loader returned; nothing when a file cannot be read, which ends the scan.
std::optional<int> MountFileInfo::loadFiles(int directory, Rook::String const& dirName,
                                            std::vector<char const*> const& names,
                                            FileLoader loader, char const* pattern,
                                            DynFileLoadCheck* check) {
    int count = 0;
    for (char const* const name : names) {
        if (!passesFilters(dirName, name, check))
            continue;
        auto const loaded = loadDirectoryFile(directory, dirName, name, loader,
                                              pattern == nullptr ? allFiles : pattern);
        if (!loaded)
            return std::nullopt;
        count += *loaded;
    }
    return count;
}

// What the loader returned for one file; nothing when the file cannot be read.
std::optional<int> MountFileInfo::loadDirectoryFile(int directory, Rook::String const& dirName,
                                                    char const* name, FileLoader loader,
                                                    std::string_view pattern) {
    auto descriptor = openForReading(directory, name);
    if (!descriptor.isOpen()) {
        reportAndTrace(fmt::format("Cannot openat file {} in {}", name, dirName));
        return std::nullopt;
    }
    auto const file = streamOf(std::move(descriptor));
    if (!file) {
        reportAndTrace(fmt::format("Cannot fdopen file {} in {}", name, dirName));
        return std::nullopt;
    }
    MFI_TRACE(4, "found match for {}: '{}'", pattern, name);
    noteInclude(name);
    return loadOpenFile(file.get(), name, loader);
}

// Remembers, while an include line is being served, that the current profile includes the file.
void MountFileInfo::noteInclude(char const* name) {
    if (!inInclude_)
        return;
    FEN_ASSERT(!currentFiles_.empty());
    profileFileIncludesMapIs(currentFiles_.back().file, name);
}

bool MountFileInfo::passesFilters(Rook::String const& dirName, char const* name,
                                  DynFileLoadCheck* check) const {
    std::string const fileName(name);
    if (chroot_ && fileName.find(';') != std::string::npos) {
        MFI_TRACE(4, "skipping filename with ';' :{}", fileName);
        return false;
    }
    if (fileName.ends_with('~')) {
        MFI_TRACE(4, "skipping filename ending in  '~' :{}", fileName);
        return false;
    }
    if (check == nullptr) {
        MFI_TRACE(4, "No json check.");
    } else if (!check->canLoad(std::string(dirName.view()), fileName)) {
        MFI_TRACE(4, "json disabled loading '{}' by check of type {}", fileName, check->fileType());
        return false;
    } else {
        MFI_TRACE(4, "canLoad oks loading '{}'", fileName);
    }
    if (exclusionRegex_ && std::regex_search(fileName, *exclusionRegex_)) {
        MFI_TRACE(4, "excluding {} based on the keldaExclusionRegex", fileName);
        return false;
    }
    return true;
}

} // namespace Kelda
