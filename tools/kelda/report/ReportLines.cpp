#include "report/ReportLines.h"

#include "database/paths/WrittenLine.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::none;
using KeldaDatabase::StoryAlias;

std::string_view nameOf(StoryAlias::Origin origin) {
    switch (origin) {
    case StoryAlias::Origin::everyProfile:
        return "everyProfile";
    case StoryAlias::Origin::agentString:
        return "agentString";
    case StoryAlias::Origin::token:
        return "token";
    case StoryAlias::Origin::aliasLine:
        return "aliasLine";
    case StoryAlias::Origin::undefined:
        break;
    }
    return "undefined";
}

} // namespace

void writePlacePair(KeldaDatabase::Place const& place, SourceLines& source, CompactJson& json) {
    json.beginArray();
    json.number(place.file);
    json.number(source.numberOf(place));
    json.endArray();
}

void writePlaceMembers(KeldaDatabase::Place const& place, SourceLines& source, CompactJson& json) {
    json.number("f", place.file);
    json.number("l", source.numberOf(place));
}

ReportLines::ReportLines(KeldaDatabase::Device const& device, ReportMounts const& mounts,
                         Kelda::StringMap const& everyProfile, SourceLines& source)
    : device_(device), source_(source), lines_(device, everyProfile, source),
      numbers_(device.mounts.size(), none), paths_(device.mounts.size(), none),
      wildcardPaths_(mounts.paths().size()) {
    for (auto const& mount : mounts.mounts())
        for (auto const line : mounts.linesOf(mount))
            paths_[line] = mount.path;
    std::uint32_t count = 0;
    for (std::size_t i = 0; i < paths_.size(); ++i)
        if (paths_[i] != none)
            numbers_[i] = count++;
}

void ReportLines::writeTo(CompactJson& json) {
    json.beginArray();
    for (std::size_t i = 0; i < numbers_.size(); ++i)
        if (numbers_[i] != none)
            write(i, json);
    json.endArray();
}

void ReportLines::write(std::size_t mount, CompactJson& json) {
    auto const line = lines_.of(mount);
    auto const& place = device_.mounts[mount].place;
    if (auto& wildcardPath = wildcardPaths_[paths_[mount]]; wildcardPath.empty())
        wildcardPath = KeldaDatabase::wildcard(line.writtenPath);
    json.beginObject();
    writePlaceMembers(place, source_, json);
    if (place.include != none) {
        json.key("i");
        writePlacePair(device_.includes[place.include].place, source_, json);
    }
    writeText(numbers_[mount], line, json);
    writeExpansions(numbers_[mount], line, json);
    if (!line.group.empty())
        json.text("g", line.group);
    if (!line.condition.empty())
        json.text("c", line.condition);
    json.endObject();
}

void ReportLines::writeText(std::uint32_t number, MountLine const& line, CompactJson& json) {
    auto const [entry, added] = texts_.try_emplace(line.text, number);
    if (!added)
        return json.number("s", entry->second);
    json.text("t", line.text);
    if (!line.writtenPath.empty())
        json.text("p", line.writtenPath);
}

void ReportLines::writeExpansions(std::uint32_t number, MountLine const& line, CompactJson& json) {
    if (line.expansions.empty())
        return;
    auto const expansions = expansionsOf(line);
    auto const [entry, added] = expansions_.try_emplace(expansions, number);
    if (!added)
        return json.number("y", entry->second);
    json.key("x");
    json.written(expansions);
}

std::string ReportLines::expansionsOf(MountLine const& line) {
    CompactJson json;
    json.beginArray();
    for (auto const& expansion : line.expansions) {
        json.beginObject();
        json.text("n", expansion.name);
        json.text("v", expansion.value);
        json.text("o", nameOf(expansion.origin));
        if (auto const* const alias = expansion.definition; alias != nullptr) {
            if (!alias->isToken)
                json.text("e", alias->expression);
            writePlaceMembers(alias->place, source_, json);
        }
        json.endObject();
    }
    json.endArray();
    return json.take();
}

} // namespace KeldaTool
