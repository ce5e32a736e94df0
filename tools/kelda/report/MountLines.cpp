#include "report/MountLines.h"

#include "database/findings/Spelling.h"
#include "database/paths/WrittenLine.h"

namespace KeldaTool {

using KeldaDatabase::lowerCase;
using KeldaDatabase::Mount;
using KeldaDatabase::none;
using Origin = KeldaDatabase::StoryAlias::Origin;

MountLine MountLines::of(std::size_t index) {
    auto const& mount = device_.mounts[index];
    readUpTo(mount);
    MountLine line;
    line.text = source_.textOf(mount.place);
    if (auto const fields = KeldaDatabase::pathFields(line.text)) {
        line.writtenPath = fields->path;
        for (auto const& token : KeldaDatabase::tokensIn(line.writtenPath))
            line.expansions.push_back(expansionOf(token));
    }
    line.group = groupOf(mount);
    if (mount.isConditional)
        line.condition = condition_;
    return line;
}

void MountLines::begin(KeldaDatabase::ProfileId profile) {
    profile_ = profile;
    alias_ = device_.profiles[profile].aliases.begin;
    keyword_ = device_.profiles[profile].keywords.begin;
    definitions_.clear();
    condition_.clear();
}

// An alias line stands in the profile itself, so it counts for included lines if it stands above
// their Include line.
void MountLines::readUpTo(Mount const& mount) {
    if (mount.profile != profile_)
        begin(mount.profile);
    auto const& profile = device_.profiles[profile_];
    auto const& place = mount.place;
    auto const line =
        place.include == none ? place.line : device_.includes[place.include].place.line;
    for (; alias_ < profile.aliases.end && device_.aliases[alias_].place.line < line; ++alias_)
        definitions_[lowerCase(device_.aliases[alias_].name.view())] = &device_.aliases[alias_];
    for (; keyword_ < profile.keywords.end && device_.keywords[keyword_].moment < mount.moment;
         ++keyword_)
        if (device_.keywords[keyword_].keyword.starts_with("Condition"))
            condition_ = source_.textOf(device_.keywords[keyword_].place);
}

std::string_view MountLines::groupOf(Mount const& mount) const {
    if (mount.group != none)
        return device_.groups[mount.group].name;
    return device_.profiles[profile_].isDefaultGroup() ? "default" : "";
}

Expansion MountLines::expansionOf(std::string const& token) const {
    auto const name = lowerCase(token);
    if (auto const found = definitions_.find(name); found != definitions_.end()) {
        auto const& alias = *found->second;
        return {token, std::string(alias.value.view()),
                alias.isToken ? Origin::token : Origin::aliasLine, &alias};
    }
    if (name == "%agentstring")
        return {token, std::string(1, '*'), Origin::agentString, nullptr};
    if (auto const found = everyProfile_.find(Rook::String(name)); found != everyProfile_.end())
        return {token, std::string(found->second.view()), Origin::everyProfile, nullptr};
    return {token, "", Origin::undefined, nullptr};
}

} // namespace KeldaTool
