// Profile path lines and the records they leave: type, flags and whether the path was named.
#include <KeldaBase/MountFileInfo.h>

#include <algorithm>
#include <cstring>

#include <Fen/Assert.h>
#include <KeldaBase/LoadObserver.h>
#include <KeldaUtil/MountFlags.h>
#include <fmt/format.h>

#include "../Text.h"
#include "../Tracing.h"
#include "LoadCaches.h"
#include "PseudoNames.h"

namespace Kelda {

using KeldaUtil::mountTableFlagsToString;

void MountFileInfo::handleProfilePathLine(LineBuffer& buffer) {
    MFI_TRACE(8, "( buffer : \"{}\" )", buffer.data());
    char* const firstComma = std::strchr(buffer.data(), ',');
    FEN_ASSERT_MSG(firstComma != nullptr && std::strchr(buffer.data(), '=') == nullptr,
                   "firstComma != nullptr && strchr( buffer.data(), '=' ) == nullptr");
    char* const secondComma = std::strchr(firstComma + 1, ',');
    FEN_ASSERT(secondComma != nullptr);

    // Field 1, the path, without one slash at its end.
    bool const endsInSlash = firstComma != buffer.data() && firstComma[-1] == '/';
    char* const pathEnd = endsInSlash ? firstComma - 1 : firstComma;
    LineBuffer path;
    copyText(path, std::string_view(buffer.data(), pathEnd));
    convertPath(path);
    // Field 2, the type; field 3, the flags, is the rest of the line.
    *secondComma = '\0';
    auto const type = validateType(path, firstComma + 1);
    if (!type) {
        tellRefusedMountLine(path, firstComma + 1, secondComma + 1);
        return;
    }
    if (observer_ == nullptr) [[likely]] {
        expandAliasInPath(path.data(), path.size());
    } else {
        auto const written = path;
        expandAliasInPath(path.data(), path.size());
        observer_->mountLine({written.data(), firstComma + 1, secondComma + 1, path.data(),
                              valueOf(type), false, inConditionalGroup_},
                             currentFiles_);
    }
    recordMountPath(path.data(), valueOf(type), secondComma + 1);
}

void MountFileInfo::tellRefusedMountLine(LineBuffer const& path, char const* type,
                                         char const* flags) const {
    if (observer_ != nullptr)
        observer_->mountLine(
            {path.data(), type, flags, path.data(), Rook::String(), true, inConditionalGroup_},
            currentFiles_);
}

namespace {

// The key of a path in the type map. Only the key becomes a string: the path as written is not
// needed as one.
Rook::String typeKey(LineBuffer const& path) {
    if (std::strchr(path.data(), '%') == nullptr)
        return path.data();
    LineBuffer key;
    copyText(key, path.data());
    MountFileInfo::wildcardPath(key);
    return key.data();
}

} // namespace

std::optional<Rook::String> MountFileInfo::validateType(LineBuffer const& path,
                                                        char const* type) const {
    MFI_TRACE(8, "( path : {}, type : {} )", path.data(), type);
    auto const found = pathTypeMap_.find(typeKey(path));
    if (found != pathTypeMap_.end() && !found->second.empty())
        return found->second;
    std::ostringstream message;
    message << "No type info for path '" << path.data()
            << "' found in preinit files while loading profile file";
    if (found == pathTypeMap_.end())
        message << " because the path was not loaded from any preinit";
    message << "...";
    auto excused = excuseMissingType(message, type);
    if (excused)
        MFI_TRACE(1, "{}", message.str());
    else
        reportAndTrace(fmtNotFoundError(message.str(), false));
    return excused;
}

void MountFileInfo::recordMountPath(char const* path, Rook::String const& type, char const* flags) {
    MFI_TRACE(8, "( path : {}, typeStr : {}, flagsStr : {} )", path, type, flags);
    Rook::String const pathString(path);
    recordMountArgsInternal(pathString, {type, KeldaUtil::parseMountTableFlags(flags)}, true);
    mountGroupPathsMapIs(caches_->mountGroupKey.of(agentKey_, currentMountGroup_), pathString);
    FEN_ASSERT(!currentFiles_.empty());
    profileFilePathsMapIs(currentFiles_.back().file, pathString);
}

void MountFileInfo::recordMountArgsInternal(Rook::String const& path, MountArgs const& args,
                                            bool targetPath) {
    MFI_TRACE(8, "( path : {}, args : MountArgs( {}, {} ), targetPath : {} )", path, args.type,
              mountTableFlagsToString(args.flags), targetPath);
    recordMountArgs(path, args, targetPath, false, false);
}

void MountFileInfo::recordMountArgsExternal(Rook::String const& path, MountArgs const& args,
                                            bool targetPath, bool mergeType) {
    MFI_TRACE(7, "( path : {}, args : MountArgs( {}, {} ), targetPath : {}, mergeType : {} )", path,
              args.type, mountTableFlagsToString(args.flags), targetPath, mergeType);
    recordMountArgs(path, args, targetPath, mergeType, true);
}

// Whether the flags are valid on a path. The answer for a value is remembered, unless somebody
// listens to what the check traces.
bool MountFileInfo::flagsAreValid(Fen::MountTable::Flags flags) const {
    bool const traced = mountFileInfoTrace().enabled(7) || mountFileInfoTrace().enabled(1);
    if (!traced && caches_->validFlags.holds(flags))
        return true;
    if (!validFlags(mountTableFlagsToString(flags), false))
        return false;
    caches_->validFlags.add(flags);
    return true;
}

void MountFileInfo::recordMountArgs(Rook::String const& path, MountArgs const& args,
                                    bool targetPath, bool mergeType, bool dynamic) {
    MFI_TRACE(8,
              "( path : {}, args : MountArgs( {}, {} ), targetPath : {}, mergeType : {}, "
              "dynamic : {} )",
              path, args.type, mountTableFlagsToString(args.flags), targetPath, mergeType, dynamic);
    if (!flagsAreValid(args.flags)) {
        reportAndTrace(
            fmt::format("Invalid flags {} in path {}", mountTableFlagsToString(args.flags), path));
        return;
    }
    if (dynamic && targetPath) {
        mountGroupPathsMapIs(agentKey_ + "::" + dynamicPathsName, path);
        profileFilePathsMapIs(dynamicPathsName, path);
    }
    MFI_TRACE(9, "path {} {} {}", path, args.type, mountTableFlagsToString(args.flags));
    auto* const record = findRecord(path);
    std::optional<MountArgs> before;
    if (observer_ != nullptr && record != nullptr) [[unlikely]]
        before = *record;
    if (record == nullptr)
        addRecord(path, args, targetPath, dynamic);
    else if (!mergeIntoRecord(path, *record, args, targetPath, mergeType))
        return;
    if (observer_ != nullptr) [[unlikely]]
        observer_->recordChanged(path, before ? &*before : nullptr, recordOf(path), currentFiles_);
    MFI_TRACE(9, "result flags {}", mountTableFlagsToString(recordOf(path).flags));
}

void MountFileInfo::addRecord(Rook::String const& path, MountArgs const& args, bool targetPath,
                              bool dynamic) {
    MFI_TRACE(9, "adding new flags {}", mountTableFlagsToString(args.flags));
    recordOf(path) = {args.type, args.flags, targetPath};
    if (targetPath)
        return;
    MFI_TRACE(9, "adding {} intermediate path {}", dynamic ? "dynamic" : "mount profile", path);
    intermediatePaths_.insert(path);
}

// False, with the record unchanged, when the types differ.
bool MountFileInfo::mergeIntoRecord(Rook::String const& path, MountArgs& record,
                                    MountArgs const& args, bool targetPath, bool mergeType) {
    MFI_TRACE(9, "appending existing flags {} with {}", mountTableFlagsToString(record.flags),
              mountTableFlagsToString(args.flags));
    if (!mergeType && args.type != record.type) {
        reportAndTrace(fmt::format("recordMountArgs: types don't match for path '{}': '{}'  '{}'",
                                   path, args.type, record.type));
        return false;
    }
    if (record.type.empty())
        record.type = args.type;
    record.flags = KeldaUtil::safelyMergeFlags(record.flags, args.flags);
    record.isExplicit = record.isExplicit || targetPath;
    settleIntermediate(path, targetPath);
    return true;
}

// Keeps the set of intermediate paths right when a path with a record is met again.
void MountFileInfo::settleIntermediate(Rook::String const& path, bool targetPath) {
    if (!targetPath) {
        MFI_TRACE(9, "{} already {}, skipping intermediate set", path,
                  intermediatePaths_.contains(path) ? "intermediate" : "explicit");
        return;
    }
    if (intermediatePaths_.empty() || intermediatePaths_.erase(path) == 0)
        return;
    MFI_TRACE(9, "{} previously intermediate, now explicit, removing from intermediate set", path);
}

MountArgs* MountFileInfo::findRecord(Rook::String const& path) {
    if (auto* const known = caches_->records.find(path))
        return &known->second;
    if (caches_->records.size() == pathMountArgsMap_.size())
        return nullptr;
    // A flavour put records into the map itself.
    auto const found = pathMountArgsMap_.find(path);
    return found == pathMountArgsMap_.end() ? nullptr : &found->second;
}

// The record of a path; an empty one is made where there is none.
MountArgs& MountFileInfo::recordOf(Rook::String const& path) {
    if (auto* const known = caches_->records.find(path))
        return known->second;
    auto const record = pathMountArgsMap_.try_emplace(placeOf(path), path);
    caches_->records.insert(*record);
    caches_->lastRecord = record;
    return record->second;
}

// Where to insert a path: profiles are often written in path order, so try behind the path that was
// inserted last.
MountArgsMap::iterator MountFileInfo::placeOf(Rook::String const& path) {
    auto const last = caches_->lastRecord;
    if (!last || !((*last)->first < path))
        return pathMountArgsMap_.lower_bound(path);
    auto const next = std::next(*last);
    bool const fits = next == pathMountArgsMap_.end() || path < next->first;
    return fits ? next : pathMountArgsMap_.lower_bound(path);
}

void MountFileInfo::updateMountFlags(Rook::String path, Fen::MountTable::Flags flags) {
    MFI_TRACE(7, "( path : {}, flags : {} )", path, mountTableFlagsToString(flags));
    auto* const record = findRecord(path);
    if (record == nullptr) {
        reportAndTrace("Attempting to update flags for path " + path +
                       ", which does not exist in MountFileInfo");
        return;
    }
    auto const dynamicPaths = profileFilePathsMap_.find(dynamicPathsName);
    bool const isDynamic =
        dynamicPaths != profileFilePathsMap_.end() &&
        std::ranges::find(dynamicPaths->second, path) != dynamicPaths->second.end();
    if (!isDynamic) {
        reportAndTrace("Attempting to update flags for path " + path +
                       ", which is present in a mount profile (not a dynamic path)");
        return;
    }
    record->flags = flags;
}

} // namespace Kelda
