#include "LoadRecorder.h"

#include <KeldaUtil/MountFlags.h>

namespace KeldaDatabase {

FileId LoadRecorder::idOf(Rook::String const& directory, Rook::String const& name) {
    auto const [entry, added] =
        known_.try_emplace({directory, name}, static_cast<FileId>(device_.files.size()));
    if (added)
        device_.files.push_back({std::string(directory.view()), std::string(name.view()), family_});
    return entry->second;
}

Place LoadRecorder::placeOf(Kelda::Places places) const {
    if (places.empty() || open_.empty())
        return {};
    return {open_.back(), places.back().line, open_.size() > 1 ? include_ : none};
}

void LoadRecorder::fileOpened(Rook::String const& directory, Kelda::Places places) {
    auto const file = idOf(directory, places.back().file);
    open_.push_back(file);
    ++opened_;
    if (progress_)
        progress_(opened_);
    if (auto* const profile = current(); profile != nullptr && profile->file == none)
        profile->file = file;
    if (open_.size() < 2 || include_ == none)
        return;
    ++device_.files[file].includes;
    device_.includes[include_].files.push_back(file);
}

void LoadRecorder::fileClosed(Kelda::Places /*places*/) {
    open_.pop_back();
}

void LoadRecorder::fileSkipped(Rook::String const& directory, std::string_view name,
                               Kelda::SkipReason reason) {
    if (!skipped_.emplace(directory, name).second)
        return;
    device_.skipped.push_back({std::string(directory.view()), std::string(name), reason});
}

void LoadRecorder::profileBegins(Profile::Kind kind, Kelda::Places places) {
    profile_ = static_cast<ProfileId>(device_.profiles.size());
    group_ = none;
    definitions_.clear();
    Profile profile;
    profile.kind = kind;
    if (!places.empty()) {
        profile.file = open_.back();
        profile.agentNameLine = places.back().line;
    }
    profile.mounts.begin = device_.mounts.size();
    profile.aliases.begin = device_.aliases.size();
    profile.groups.begin = device_.groups.size();
    profile.includes.begin = device_.includes.size();
    profile.keywords.begin = device_.keywords.size();
    device_.profiles.push_back(std::move(profile));
}

void LoadRecorder::agentNameIs(Rook::String const& agentName, Rook::String const& agentKey) {
    auto& profile = device_.profiles[profile_];
    profile.agentName = agentName;
    profile.agentKey = agentKey;
    device_.files[profile.file].hasAgentName = true;
}

void LoadRecorder::profileEnds() {
    auto& profile = device_.profiles[profile_];
    profile.mounts.end = device_.mounts.size();
    profile.aliases.end = device_.aliases.size();
    profile.groups.end = device_.groups.size();
    profile.includes.end = device_.includes.size();
    profile.keywords.end = device_.keywords.size();
    if (profile.isDefaultGroup() && profile.file != none)
        device_.files[profile.file].isDefaultGroup = true;
    profile_ = none;
    group_ = none;
}

void LoadRecorder::faultFound(Kelda::MfiException const& exception, Kelda::Places places) {
    device_.faults.push_back({exception, placeOf(places), profile_, now_++, {}, false, {}});
}

void LoadRecorder::lastMountIsRefused() {
    device_.mounts.back().isRefused = true;
}

void LoadRecorder::preinitLine(Kelda::PreinitLine const& line, Kelda::Places places) {
    device_.preinits.push_back({line.path, line.type, line.attr, line.isConfig, placeOf(places)});
}

void LoadRecorder::mountLine(Kelda::MountLine const& line, Kelda::Places places) {
    device_.mounts.push_back({line.path, line.type, KeldaUtil::parseMountTableFlags(line.flags),
                              placeOf(places), profile_, group_, now_++, line.isRefused,
                              line.isConditional,
                              !line.isRefused && line.type.view() != line.writtenType});
    if (group_ != none)
        ++device_.groups[group_].mounts;
}

void LoadRecorder::define(Alias alias) {
    definitions_[alias.name.toLower()] = device_.aliases.size();
    device_.aliases.push_back(std::move(alias));
}

void LoadRecorder::tokenBound(Rook::String const& token, Rook::String const& value,
                              Kelda::Places places) {
    define({token, "", value, placeOf(places), profile_, 0, true});
}

void LoadRecorder::aliasDefined(Rook::String const& name, std::string_view expression,
                                Rook::String const& value, Kelda::Places places) {
    define({name, std::string(expression), value, placeOf(places), profile_, 0, false});
}

void LoadRecorder::aliasUsed(Rook::String const& name, Rook::String const& /*value*/,
                             Kelda::Places /*places*/) {
    if (auto const found = definitions_.find(name); found != definitions_.end())
        ++device_.aliases[found->second].uses;
}

void LoadRecorder::groupOpened(std::string_view name, unsigned char priority,
                               Kelda::Places places) {
    group_ = static_cast<GroupId>(device_.groups.size());
    device_.groups.push_back({std::string(name), priority, placeOf(places), profile_, 0});
}

void LoadRecorder::included(std::string_view /*pattern*/, int files, Kelda::Places /*places*/) {
    device_.includes[include_].loaded = files;
    include_ = none;
}

void LoadRecorder::keywordLine(std::string_view keyword, std::string_view line,
                               Kelda::Places places) {
    auto const place = placeOf(places);
    device_.keywords.push_back({keyword, std::string(line), place, profile_, now_++});
    if (keyword == "Include:") {
        include_ = static_cast<IncludeId>(device_.includes.size());
        device_.includes.push_back(
            {std::string(line.substr(keyword.size())), place, profile_, 0, {}});
    }
    if (profile_ == none)
        return;
    auto& profile = device_.profiles[profile_];
    profile.saysNoDefaultMountGroup =
        profile.saysNoDefaultMountGroup || keyword == "noDefaultMountGroup";
}

} // namespace KeldaDatabase
