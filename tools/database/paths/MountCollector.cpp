#include "MountCollector.h"

#include <utility>

#include <KeldaUtil/MountFlags.h>

namespace KeldaDatabase {
namespace {

// The mounts below a path that make their paths exist.
std::vector<StoryDirectory::Below> mountsBelow(Kelda::MountArgsMap const& records,
                                               std::string_view path) {
    auto const start = std::string(path) + "/";
    std::vector<StoryDirectory::Below> below;
    for (auto at = records.lower_bound(Rook::String(start));
         at != records.end() && at->first.startsWith(start); ++at)
        if (at->second.isExplicit && at->second.flags.instantiatingMount())
            below.push_back({std::string(at->first.view()), flagText(at->second.flags)});
    return below;
}

} // namespace

std::string flagText(Fen::MountTable::Flags flags) {
    return std::string(KeldaUtil::mountTableFlagsToString(flags).view());
}

std::optional<StoryLine> MountCollector::takeRefusedLine() {
    return std::exchange(line_, std::nullopt);
}

void MountCollector::changed(Rook::String const& path, Kelda::MountArgs const* before,
                             Kelda::MountArgs const& after, bool byLine) {
    if (!asked_.matches(path.view()))
        return;
    auto& mount = mounts_[path];
    if (byLine && line_) {
        line_->flagsAfter = flagText(after.flags);
        mount.lines.push_back(*std::exchange(line_, std::nullopt));
    }
    if (byLine)
        return;
    if (!mount.directory)
        mount.directory = {{}, before == nullptr ? "" : flagText(before->flags), ""};
    mount.directory->after = flagText(after.flags);
}

void MountCollector::inherited(Rook::String const& path, Rook::String const& parent,
                               Fen::MountTable::Flags before, Fen::MountTable::Flags after) {
    if (asked_.matches(path.view()))
        mounts_[path].inherited = {std::string(parent.view()), "", flagText(before),
                                   flagText(after)};
}

std::vector<StoryMount> MountCollector::take(Kelda::MountArgsMap const& records,
                                             Rook::String const& rootFlags) {
    std::vector<StoryMount> mounts;
    for (auto& [path, mount] : mounts_) {
        auto const& record = records.at(path);
        mount.path = path.view();
        mount.type = record.type.view();
        mount.flags = flagText(record.flags);
        mount.isExplicit = record.isExplicit;
        if (mount.directory)
            mount.directory->below = mountsBelow(records, path.view());
        if (mount.inherited)
            mount.inherited->parentFlags =
                mount.inherited->parent.empty()
                    ? std::string(rootFlags.view())
                    : flagText(records.at(Rook::String(mount.inherited->parent)).flags);
        mounts.push_back(std::move(mount));
    }
    mounts_.clear();
    return mounts;
}

} // namespace KeldaDatabase
