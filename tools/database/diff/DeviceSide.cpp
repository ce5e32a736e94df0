#include "DeviceSide.h"

#include <algorithm>

#include <KeldaBase/MountFileInfo.h>

namespace KeldaDatabase {
namespace {

// The text with one blank for each run of blanks, and none at its ends.
std::string withSingleBlanks(std::string_view text) {
    std::string result;
    for (char const c : text)
        if (c != ' ' && (c < '\t' || c > '\r'))
            result += c;
        else if (!result.empty() && result.back() != ' ')
            result += ' ';
    while (result.ends_with(' '))
        result.pop_back();
    return result;
}

bool isCondition(Keyword const& keyword) {
    return keyword.keyword == "Condition:" || keyword.keyword == "ConditionBlocker:";
}

} // namespace

Rook::String DeviceSide::typeOf(Rook::String const& wildcardPath) const {
    auto const& types = static_cast<DatabaseMountFileInfo const&>(parser_).pathTypeMap();
    auto const found = types.find(wildcardPath);
    return found == types.end() ? Rook::String() : found->second;
}

DeviceSide::FileName DeviceSide::nameOf(FileId id) const {
    auto const& file = device_.files[id];
    auto const& main =
        file.family == FileFamily::preinit ? device_.preinitDirectory : device_.profileDirectory;
    if (file.directory == main)
        return {"", file.name};
    // Of preinit files, the environment may name any number of folders and files.
    return {file.family == FileFamily::preinit ? "extra " + file.directory : "extra", file.name};
}

FileId DeviceSide::fileNamed(FileFamily family, FileName const& name) {
    if (files_.empty())
        for (FileId id = 0; id < device_.files.size(); ++id)
            files_.try_emplace({device_.files[id].family, nameOf(id)}, id);
    auto const found = files_.find({family, name});
    return found == files_.end() ? none : found->second;
}

WrittenFile const& DeviceSide::written(FileId file) {
    auto const found = written_.find(file);
    if (found != written_.end())
        return found->second;
    auto const& named = device_.files[file];
    return written_.try_emplace(file, places_.textOf(named.path()), named.family).first->second;
}

std::int32_t DeviceSide::editorLine(Place const& place) {
    return places_.textOf(device_.pathOf(place)).editorLine(place.line);
}

// Files in which nothing changed need not be read once more.
std::map<std::int32_t, std::vector<std::size_t>> const& DeviceSide::mountsByLine(FileId file) {
    if (mountsOfFile_.empty())
        for (std::size_t i = 0; i < device_.mounts.size(); ++i)
            if (device_.mounts[i].place.isKnown())
                mountsOfFile_[device_.mounts[i].place.file].push_back(i);
    auto const [entry, added] = mountsByLine_.try_emplace(file);
    if (auto const mounts = mountsOfFile_.find(file); added && mounts != mountsOfFile_.end())
        for (auto const mount : mounts->second)
            entry->second[editorLine(device_.mounts[mount].place)].push_back(mount);
    return entry->second;
}

std::span<std::size_t const> DeviceSide::mountsAt(FileId file, std::int32_t line) {
    auto const& mounts = mountsByLine(file);
    auto const found = mounts.find(line);
    if (found == mounts.end())
        return {};
    return found->second;
}

ProfileId DeviceSide::profileOf(FileId file) {
    if (profiles_.empty())
        for (ProfileId id = 0; id < device_.profiles.size(); ++id)
            if (device_.profiles[id].file != KeldaDatabase::none)
                profiles_.try_emplace(device_.profiles[id].file, id);
    auto const found = profiles_.find(file);
    return found == profiles_.end() ? none : found->second;
}

PreinitDeclaration const* DeviceSide::typeGiver(Rook::String const& wildcardPath) {
    if (typeGivers_.empty())
        findTypeGivers();
    for (auto const* const givers : {&typeGivers_, &directoryGivers_})
        if (auto const found = givers->find(wildcardPath); found != givers->end())
            return found->second;
    return nullptr;
}

void DeviceSide::findTypeGivers() {
    for (auto const& line : device_.preinits)
        addGiver(line);
}

void DeviceSide::addGiver(PreinitDeclaration const& line) {
    auto const path = Kelda::MountFileInfo::wildcardPath(line.path);
    typeGivers_[path] = &line;
    if (line.attr == Kelda::PreinitAttr::createOnMount)
        return;
    auto rest = path.view();
    for (auto slash = rest.rfind('/'); slash != std::string_view::npos; slash = rest.rfind('/')) {
        rest = rest.substr(0, slash);
        Rook::String const ancestor(rest);
        if (typeGivers_.contains(ancestor) || !directoryGivers_.try_emplace(ancestor, &line).second)
            return;
    }
}

Condition const& DeviceSide::conditionOf(std::size_t mount) {
    if (conditions_.empty())
        findConditions();
    return conditions_[conditionOfMount_[mount]];
}

void DeviceSide::findConditions() {
    conditions_.emplace_back();
    conditionOfMount_.assign(device_.mounts.size(), 0);
    for (auto const& profile : device_.profiles)
        findConditions(profile);
}

// Condition lines add up until the next group begins.
void DeviceSide::findConditions(Profile const& profile) {
    std::vector<std::size_t> inForce;
    std::uint32_t condition = 0;
    auto mount = profile.mounts.begin;
    auto const giveUpTo = [&](Moment moment) {
        for (; mount < profile.mounts.end && device_.mounts[mount].moment < moment; ++mount)
            if (device_.mounts[mount].isConditional)
                conditionOfMount_[mount] = condition;
    };
    for (auto i = profile.keywords.begin; i < profile.keywords.end; ++i) {
        auto const& keyword = device_.keywords[i];
        bool const isGroup = keyword.keyword == "MountGroup:";
        if (!isGroup && !isCondition(keyword))
            continue;
        giveUpTo(keyword.moment);
        if (isGroup)
            inForce.clear();
        else
            inForce.push_back(i);
        condition = conditionOf(inForce);
    }
    giveUpTo(KeldaDatabase::none);
}

std::uint32_t DeviceSide::conditionOf(std::vector<std::size_t> const& keywords) {
    if (keywords.empty())
        return 0;
    Condition condition{"", keywords};
    for (auto const keyword : keywords) {
        auto const& line = device_.keywords[keyword];
        auto const text = places_.told(line.place).text;
        condition.text += condition.text.empty() ? "" : ", ";
        condition.text += line.keyword;
        condition.text += ' ';
        condition.text +=
            withSingleBlanks(text.substr(std::min(text.find(':'), text.size() - 1) + 1));
    }
    conditions_.push_back(std::move(condition));
    return static_cast<std::uint32_t>(conditions_.size() - 1);
}

} // namespace KeldaDatabase
