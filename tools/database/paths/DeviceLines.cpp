#include "DeviceStory.h"
#include "MountCollector.h"
#include "database/findings/Spelling.h"

namespace KeldaDatabase {
namespace {

// The line of the profile itself that brought a mount.
std::int32_t lineInProfile(Device const& device, Place const& place) {
    return place.include == none ? place.line : device.includes[place.include].place.line;
}

} // namespace

StoryLine const& DeviceLines::of(std::size_t mount) {
    auto const [entry, added] = lines_.try_emplace(mount);
    if (added)
        entry->second = told(device_.mounts[mount]);
    return entry->second;
}

StoryLine DeviceLines::told(Mount const& mount) {
    StoryLine line;
    line.place = places_.told(mount.place);
    line.path = mount.path.view();
    line.flags = flagText(mount.flags);
    // No field: the line is "Include: ConfigMountProfile".
    if (auto const fields = pathFields(line.place.text)) {
        line.writtenPath = fields->path;
        if (mount.typeDiffers)
            line.otherType = fields->type;
        for (auto const& token : tokensIn(line.writtenPath))
            line.aliases.push_back(told(token, mount));
    }
    tellGroup(mount, line);
    tellCondition(mount, line);
    return line;
}

void DeviceLines::tellGroup(Mount const& mount, StoryLine& line) {
    if (mount.group == none) {
        if (mount.profile != none && device_.profiles[mount.profile].isDefaultGroup())
            line.group = "default";
        return;
    }
    auto const& group = device_.groups[mount.group];
    line.group = group.name;
    line.groupPriority = group.priority;
    line.groupPlace = places_.told(group.place);
}

void DeviceLines::tellCondition(Mount const& mount, StoryLine& line) {
    line.isConditional = mount.isConditional;
    if (!mount.isConditional || mount.profile == none)
        return;
    auto const& range = device_.profiles[mount.profile].keywords;
    for (auto i = range.begin; i < range.end && device_.keywords[i].moment < mount.moment; ++i)
        if (device_.keywords[i].keyword.starts_with("Condition")) {
            line.conditionPlace = places_.told(device_.keywords[i].place);
            line.condition = line.conditionPlace.text;
        }
}

StoryAlias DeviceLines::told(std::string const& token, Mount const& mount) {
    StoryAlias alias{token, "", StoryAlias::Origin::undefined, "", {}};
    if (auto const* const definition = definitionOf(token, mount)) {
        alias.value = definition->value.view();
        alias.expression = definition->expression;
        alias.origin =
            definition->isToken ? StoryAlias::Origin::token : StoryAlias::Origin::aliasLine;
        alias.place = places_.told(definition->place);
    } else if (lowerCase(token) == "%agentstring") {
        alias.value.assign(1, '*');
        alias.origin = StoryAlias::Origin::agentString;
    } else if (auto const found = everyProfile_.find(Rook::String(lowerCase(token)));
               found != everyProfile_.end()) {
        alias.value = found->second.view();
        alias.origin = StoryAlias::Origin::everyProfile;
    }
    return alias;
}

Alias const* DeviceLines::definitionOf(std::string const& token, Mount const& mount) const {
    if (mount.profile == none)
        return nullptr;
    auto const name = lowerCase(token);
    auto const line = lineInProfile(device_, mount.place);
    auto const& range = device_.profiles[mount.profile].aliases;
    Alias const* last = nullptr;
    for (auto i = range.begin; i < range.end; ++i) {
        auto const& alias = device_.aliases[i];
        if (alias.place.line < line && lowerCase(alias.name.view()) == name)
            last = &alias;
    }
    return last;
}

} // namespace KeldaDatabase
