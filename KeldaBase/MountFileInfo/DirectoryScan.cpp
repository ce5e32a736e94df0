// The one directory scan: finds the files of a directory that match a pattern, passes over those
// that are not to be read, and hands each of the others to a loader.
#include <KeldaBase/MountFileInfo.h>

#include <cstdlib>
#include <string>

#include <Fen/Assert.h>
#include <KeldaBase/LoadObserver.h>
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

// Tells an observer that the file on top of the stack is closed, however its loader ends.
template <class Stack>
class ClosingNotice {
  public:
    ClosingNotice(LoadObserver& observer, Stack const& files)
        : observer_(observer), files_(files) {}
    ~ClosingNotice() { observer_.fileClosed(files_); }
    ClosingNotice(ClosingNotice const&) = delete;
    ClosingNotice& operator=(ClosingNotice const&) = delete;

  private:
    LoadObserver& observer_;
    Stack const& files_;
};

} // namespace

// What one call of mapDir is about.
struct MountFileInfo::DirectoryScan {
    Rook::String const& directory;
    int descriptor;
    FileLoader loader;
    char const* givenPattern; // null for all files
    DynFileLoadCheck* check;  // null for none

    std::string_view pattern() const { return givenPattern == nullptr ? allFiles : givenPattern; }
    bool ofWholeDirectory() const { return givenPattern == nullptr; }
};

int MountFileInfo::mapDir(Rook::String dirName, FileLoader loader, char const* pattern,
                          DynFileLoadCheck* check) {
    MFI_TRACE(8, "( dirName : {}, _ , pattern : {}, _ )", dirName,
              pattern == nullptr ? "" : pattern);
    OpenDirectory const directory(::opendir(dirName.c_str()));
    if (!directory) {
        reportAndTrace("Cannot open directory " + dirName);
        return 0;
    }
    DirectoryScan const scan{dirName, ::dirfd(directory.get()), loader, pattern, check};
    bool const isConfigMountProfile = scan.pattern() == configMountProfileName;
    if (isConfigMountProfile && !readsRealConfigMountProfile())
        return loadConfigMountProfile();
    auto const count = searchAndLoad(scan);
    if (!count)
        return 0;
    return *count == 0 && isConfigMountProfile ? loadConfigMountProfile() : *count;
}

// The sum of what the loader returned; nothing when the search failed or a file cannot be read.
std::optional<int> MountFileInfo::searchAndLoad(DirectoryScan const& scan) {
    if (auto* const listing = caches_->listing;
        listing != nullptr && listing->answers(scan.directory, scan.pattern()))
        return loadFiles(scan, listing->matching(std::string(scan.pattern())));

    DirectoryMatches const matches(scan.directory, scan.pattern());
    if (matches.code() != 0 && matches.code() != GLOB_NOMATCH) {
        reportAndTrace(fmt::format("Glob threw exception {} while searching for file {}/{} ",
                                   matches.code(), scan.directory, scan.pattern()));
        return std::nullopt;
    }
    auto const names = matches.names();
    if (!scan.ofWholeDirectory())
        return loadFiles(scan, names);
    DirectoryListing listing(scan.directory, names);
    Restore const forgetting(caches_->listing, caches_->listing);
    caches_->listing = &listing;
    return loadFiles(scan, names);
}

std::optional<int> MountFileInfo::loadFiles(DirectoryScan const& scan,
                                            std::vector<char const*> const& names) {
    int count = 0;
    for (char const* const name : names) {
        if (!passesFilters(scan, name))
            continue;
        auto const loaded = loadDirectoryFile(scan, name);
        if (!loaded)
            return std::nullopt;
        count += *loaded;
    }
    return count;
}

// What the loader returned for one file; nothing when the file cannot be read.
std::optional<int> MountFileInfo::loadDirectoryFile(DirectoryScan const& scan, char const* name) {
    auto descriptor = openForReading(scan.descriptor, name);
    if (!descriptor.isOpen()) {
        reportAndTrace(fmt::format("Cannot openat file {} in {}", name, scan.directory));
        return std::nullopt;
    }
    auto const file = streamOf(std::move(descriptor));
    if (!file) {
        reportAndTrace(fmt::format("Cannot fdopen file {} in {}", name, scan.directory));
        return std::nullopt;
    }
    MFI_TRACE(4, "found match for {}: '{}'", scan.pattern(), name);
    noteInclude(name);
    return loadOpenFile(file.get(), scan.directory, name, scan.loader);
}

int MountFileInfo::loadOpenFile(FILE* file, Rook::String const& directory, Rook::String const& name,
                                FileLoader loader) {
    OpenFileRecord const record(currentFiles_, name);
    if (observer_ == nullptr) [[likely]]
        return (this->*loader)(file);
    observer_->fileOpened(directory, currentFiles_);
    ClosingNotice const notice(*observer_, currentFiles_);
    return (this->*loader)(file);
}

// Remembers, while an include line is being served, that the current profile includes the file.
void MountFileInfo::noteInclude(char const* name) {
    if (!inInclude_)
        return;
    FEN_ASSERT(!currentFiles_.empty());
    profileFileIncludesMapIs(currentFiles_.back().file, name);
}

bool MountFileInfo::passesFilters(DirectoryScan const& scan, char const* name) const {
    auto const reason = reasonToSkip(scan, name);
    if (reason && observer_ != nullptr)
        observer_->fileSkipped(scan.directory, name, *reason);
    return !reason;
}

std::optional<SkipReason> MountFileInfo::reasonToSkip(DirectoryScan const& scan,
                                                      std::string const& fileName) const {
    if (chroot_ && fileName.find(';') != std::string::npos) {
        MFI_TRACE(4, "skipping filename with ';' :{}", fileName);
        return SkipReason::semicolon;
    }
    if (fileName.ends_with('~')) {
        MFI_TRACE(4, "skipping filename ending in  '~' :{}", fileName);
        return SkipReason::backup;
    }
    if (scan.check == nullptr) {
        MFI_TRACE(4, "No json check.");
    } else if (!scan.check->canLoad(std::string(scan.directory.view()), fileName)) {
        MFI_TRACE(4, "json disabled loading '{}' by check of type {}", fileName,
                  scan.check->fileType());
        return SkipReason::loadCheck;
    } else {
        MFI_TRACE(4, "canLoad oks loading '{}'", fileName);
    }
    if (exclusionRegex_ && std::regex_search(fileName, *exclusionRegex_)) {
        MFI_TRACE(4, "excluding {} based on the keldaExclusionRegex", fileName);
        return SkipReason::exclusion;
    }
    return std::nullopt;
}

} // namespace Kelda
