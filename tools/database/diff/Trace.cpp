#include "Trace.h"

#include <algorithm>

namespace KeldaDatabase {
namespace {

// The line of the profile itself that brought a mount.
std::int32_t lineInProfile(Device const& device, Mount const& mount) {
    return mount.place.include == none ? mount.place.line
                                       : device.includes[mount.place.include].place.line;
}

} // namespace

bool loads(Agent const& agent, ProfileId profile) {
    return profile != none &&
           std::find(agent.profiles.begin(), agent.profiles.end(), profile) != agent.profiles.end();
}

CausingLine Tracer::lineOf(Place const& place) {
    return {place.file, here_.editorLine(place), place.include};
}

CausingLine Tracer::lineOfThere(Place const& place) {
    return {place.file, there_.editorLine(place), place.include};
}

std::optional<std::int32_t> Tracer::sameLine(CausingLine const& line) {
    if (matches_.counterpart(version_, line.file) == none)
        return std::nullopt;
    return matches_.match(version_, line.file).same(version_, line.line);
}

std::string const& Tracer::textOf(CausingLine const& line) {
    static std::string const nothing;
    auto const& written = here_.written(line.file);
    auto const index = written.at(line.line);
    return index ? written.lines()[*index].text : nothing;
}

std::optional<CausingLine> Tracer::agentNameLine(DeviceSide& side, FileId file) {
    if (file == none)
        return std::nullopt;
    auto const& device = side.device();
    auto const line = side.places().textOf(device.files[file].path()).agentNameLine();
    return line > 0 ? std::optional(CausingLine{file, line}) : std::nullopt;
}

std::optional<Trace> Tracer::lostLine(CausingLine const& line, ChangeCause cause) {
    auto const file = matches_.counterpart(version_, line.file);
    if (file == none)
        return Trace{ChangeCause::file, {line}, {}};
    auto const& match = matches_.match(version_, line.file);
    if (match.same(version_, line.line))
        return std::nullopt;
    Trace trace{cause, {line}, {}};
    if (auto const edited = match.edited(version_, line.line))
        trace.there.push_back({file, *edited});
    return trace;
}

std::optional<Trace> Tracer::replacedLine(CausingLine const& line, ChangeCause cause) {
    auto trace = lostLine(line, cause);
    if (trace && trace->cause == cause && trace->there.empty())
        if (auto const replaced = matches_.match(version_, line.file).replaced(version_, line.line))
            trace->there.push_back({matches_.counterpart(version_, line.file), *replaced});
    return trace;
}

ProfileId Tracer::profileThere(ProfileId id) {
    auto const& profile = here_.device().profiles[id];
    if (!profile.isDefaultGroup())
        return there_.profileOf(matches_.counterpart(version_, profile.file));
    auto const& profiles = there_.device().profiles;
    for (ProfileId other = 0; other < profiles.size(); ++other)
        if (profiles[other].kind == profile.kind)
            return other;
    return none;
}

Trace Tracer::refusedDefault(Agent const& agentThere) {
    Trace trace{ChangeCause::keyword, {}, {}};
    auto const& device = there_.device();
    for (auto const id : agentThere.profiles)
        for (auto i = device.profiles[id].keywords.begin; i < device.profiles[id].keywords.end; ++i)
            if (trace.there.empty() && device.keywords[i].keyword == "noDefaultMountGroup")
                trace.there.push_back(lineOfThere(device.keywords[i].place));
    return trace;
}

// The profile is there, but not for this agent; or it is not there at all. `by`: a line of the
// profile's file.
std::optional<Trace> Tracer::lostProfile(ProfileId id, CausingLine const& by,
                                         Agent const& agentThere) {
    auto const other = profileThere(id);
    if (loads(agentThere, other))
        return std::nullopt;
    auto const& profile = here_.device().profiles[id];
    if (agentThere.profiles.empty()) // there is no such agent
        return Trace{ChangeCause::agentName, {by}, {}};
    if (profile.isDefaultGroup()) {
        auto trace = refusedDefault(agentThere);
        return trace.there.empty() ? Trace{ChangeCause::file, {by}, {}} : trace;
    }
    if (matches_.counterpart(version_, profile.file) == none)
        return Trace{ChangeCause::file, {by}, {}};
    Trace trace{ChangeCause::agentName, {}, {}};
    auto const& keywords = profile.keywords;
    if (agentThere.isActiveVariant && other != none &&
        !there_.device().profiles[other].saysMatchActiveName) {
        trace.cause = ChangeCause::keyword;
        for (auto i = keywords.begin; i < keywords.end && trace.here.empty(); ++i)
            if (here_.device().keywords[i].keyword == "matchActiveName")
                trace.here.push_back(lineOf(here_.device().keywords[i].place));
        if (!trace.here.empty())
            return trace;
    }
    addAgentNames(id, other, trace);
    return trace;
}

// The line of the profile's name here, and what it is there.
void Tracer::addAgentNames(ProfileId id, ProfileId other, Trace& trace) {
    auto const file = here_.device().profiles[id].file;
    auto const name = agentNameLine(here_, file);
    if (name)
        trace.here.push_back(*name);
    auto const fileThere =
        other == none ? matches_.counterpart(version_, file) : there_.device().profiles[other].file;
    if (auto const nameThere = agentNameLine(there_, fileThere))
        trace.there.push_back(*nameThere);
    else if (auto const replaced =
                 name ? replacedLine(*name, ChangeCause::agentName) : std::nullopt)
        trace.there.insert(trace.there.end(), replaced->there.begin(), replaced->there.end());
}

std::optional<Trace> Tracer::lostInclude(IncludeId include) {
    return lostLine(lineOf(here_.device().includes[include].place), ChangeCause::include);
}

bool Tracer::isIncludedAlike(Mount const& mount, Mount const& candidate) {
    if (mount.place.include == none || candidate.place.include == none)
        return mount.place.include == candidate.place.include;
    auto const same = sameLine(lineOf(here_.device().includes[mount.place.include].place));
    return same == there_.editorLine(there_.device().includes[candidate.place.include].place);
}

// The mounts that the same line makes there for the same profile.
std::vector<std::size_t> Tracer::candidates(std::size_t index, std::int32_t line) {
    auto const& mount = here_.device().mounts[index];
    auto const profile = profileThere(mount.profile);
    std::vector<std::size_t> found;
    for (auto const other :
         there_.mountsAt(matches_.counterpart(version_, mount.place.file), line)) {
        auto const& candidate = there_.device().mounts[other];
        if (candidate.profile == profile && isIncludedAlike(mount, candidate))
            found.push_back(other);
    }
    return found;
}

FollowedMount Tracer::follow(std::size_t index, Agent const& agentThere) {
    auto const& mount = here_.device().mounts[index];
    auto const line = lineOf(mount.place);
    bool const isConfigInclude = textOf(line).find(',') == std::string::npos;
    if (auto const why = lostLine(line, isConfigInclude ? ChangeCause::include : ChangeCause::line))
        return {std::nullopt, *why};
    auto const include = mount.place.include;
    auto const by = include == none ? line : lineOf(here_.device().includes[include].place);
    if (auto const why = lostProfile(mount.profile, by, agentThere))
        return {std::nullopt, *why};
    if (include != none)
        if (auto const why = lostInclude(include))
            return {std::nullopt, *why};
    auto const lineThere = sameLine(line).value_or(0);
    auto const file = matches_.counterpart(version_, line.file);
    auto const found = candidates(index, lineThere);
    for (auto const candidate : found)
        if (isMounted(there_.device().mounts[candidate]) &&
            there_.device().mounts[candidate].path == mount.path)
            return {candidate, {}};
    if (isConfigInclude)
        return {std::nullopt, lostType(mount.path.view())};
    if (!found.empty())
        return {std::nullopt, otherPath(index, found.front())};
    if (include == none)
        return {std::nullopt, {ChangeCause::line, {line}, {{file, lineThere}}}};
    // The Include line is there, and finds other files.
    auto const sameInclude = sameLine(by);
    return {std::nullopt,
            {ChangeCause::include,
             {by},
             {{matches_.counterpart(version_, by.file), sameInclude.value_or(0)}}}};
}

// What lets a line make a mount without a type: on one side only, the path is refused on the other.
Trace Tracer::conditionsOf(std::size_t mount, std::size_t candidate) {
    Trace trace{ChangeCause::keyword, {}, {}};
    if (isMounted(here_.device().mounts[mount]))
        for (auto const keyword : here_.conditionOf(mount).keywords)
            trace.here.push_back(lineOf(here_.device().keywords[keyword].place));
    if (isMounted(there_.device().mounts[candidate]))
        for (auto const keyword : there_.conditionOf(candidate).keywords)
            trace.there.push_back(lineOfThere(there_.device().keywords[keyword].place));
    return trace;
}

// The same line, which is refused here or there, or stands for another path.
Trace Tracer::otherPath(std::size_t index, std::size_t candidate) {
    auto const& mount = here_.device().mounts[index];
    auto const& other = there_.device().mounts[candidate];
    auto const line = lineOf(mount.place);
    auto const fields = pathFields(textOf(line));
    Trace trace;
    if (fields && !(isMounted(mount) && isMounted(other))) {
        trace = lostType(fields->path);
        if (trace.here.empty() && trace.there.empty())
            trace = conditionsOf(index, candidate);
    } else if (fields) {
        trace = otherAliases(fields->path, mount.profile, lineInProfile(here_.device(), mount),
                             other.profile, lineInProfile(there_.device(), other));
    }
    if (trace.here.empty() && trace.there.empty())
        return {ChangeCause::line, {line}, {lineOfThere(other.place)}};
    return trace;
}

} // namespace KeldaDatabase
