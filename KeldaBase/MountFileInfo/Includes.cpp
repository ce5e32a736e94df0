// Include lines: profile files read in the place of a line, in which only path lines and the
// activeMount keyword may stand.
#include <KeldaBase/MountFileInfo.h>

#include <cstring>

#include <KeldaBase/LoadObserver.h>
#include <fmt/format.h>

#include "../Tracing.h"
#include "Restore.h"

namespace Kelda {

namespace {

constexpr std::size_t includeKeyword = std::string_view("Include:").size();

} // namespace

std::uint32_t MountFileInfo::handleIncludeLine(LineBuffer const& line) {
    MFI_TRACE(8, "( buffer : \"{}\" )", line.data());
    // Cleared again however the included files end; includes never nest.
    Restore const clearing(inInclude_, false);
    inInclude_ = true;
    char const* const pattern = line.data() + includeKeyword;
    MFI_TRACE(9, "including '{}'", pattern);
    auto const load = &MountFileInfo::profileLoader;
    int files = mapDir(keldaMountProfileDir_, load, pattern, &profileFileCheck_);
    if (!extraProfileDir_.empty())
        files += mapDir(extraProfileDir_, load, pattern, &profileFileCheck_);
    if (observer_ != nullptr)
        observer_->included(pattern, files, currentFiles_);
    if (files == 0)
        reconcileFailedInclude(pattern);
    return static_cast<std::uint32_t>(files);
}

void MountFileInfo::includedError(LineBuffer const& line) const {
    reportAndTrace(fmt::format("Syntax error in included file: '{}'. One may only specify mount "
                               "paths or the activeMount keyword in an included file. For more "
                               "information see REF482",
                               line.data()));
}

void MountFileInfo::reconcileFailedInclude(char const* pattern) const {
    MFI_TRACE(8, "( pattern : {} )", pattern);
    auto const message = fmt::format("Cannot find profile to include matching {}", pattern);
    bool const namesOneFile = std::strpbrk(pattern, "?[*") == nullptr;
    if (namesOneFile)
        reportAndTrace(message);
    else
        MFI_TRACE(1, "{}", message);
}

void MountFileInfo::profileFileIncludesMapIs(Rook::String const& key, Rook::String const& value) {
    MFI_TRACE(8, "( key: {}, value: {} )", key, value);
    profileFileIncludesMap_[key].push_back(value);
}

void MountFileInfo::appendIncludePaths(Rook::String const& profileFileName, StringList& ret) {
    MFI_TRACE(8, "( profileFileName : {}, ret : {} )", profileFileName, vecToString(ret));
    auto const includes = profileFileIncludesMap_.find(profileFileName);
    if (includes == profileFileIncludesMap_.end())
        return;
    auto const& files = profileFilePathsMap();
    for (auto const& included : includes->second) {
        auto const paths = files.find(included);
        if (paths != files.end())
            ret.insert(ret.end(), paths->second.begin(), paths->second.end());
    }
}

StringList MountFileInfo::includedProfileFiles() {
    MFI_TRACE(7, "");
    doInit();
    StringList names;
    names.reserve(profileFilePathsMap_.size());
    for (auto const& entry : profileFilePathsMap_)
        names.push_back(entry.first);
    return names;
}

} // namespace Kelda
