// The part of Tracer that looks for aliases, types, keywords and agent names.
#include <algorithm>

#include <KeldaBase/MountFileInfo.h>

#include "AgentMeaning.h"
#include "Trace.h"
#include "database/findings/Spelling.h"

namespace KeldaDatabase {
namespace {

// Aliases may be defined by others, those by others again.
constexpr int deepest = 20;

// The definition of a token that a line of a profile sees.
Alias const* definitionOf(Device const& device, std::string const& token, ProfileId profile,
                          std::int32_t line) {
    if (profile == none)
        return nullptr;
    auto const name = lowerCase(token);
    auto const& range = device.profiles[profile].aliases;
    for (auto i = range.end; i-- > range.begin;) {
        auto const& alias = device.aliases[i];
        if (alias.place.line < line && alias.name.size() == name.size() &&
            lowerCase(alias.name.view()) == name)
            return &alias;
    }
    return nullptr;
}

} // namespace

Trace Tracer::otherAliases(std::string_view text, ProfileId profile, std::int32_t line,
                           ProfileId profileThere, std::int32_t lineThere) {
    Trace trace{ChangeCause::agentName, {}, {}};
    addAliases(text, profile, line, profileThere, lineThere, 0, trace);
    return trace;
}

void Tracer::addAliases(std::string_view text, ProfileId profile, std::int32_t line,
                        ProfileId profileThere, std::int32_t lineThere, int depth, Trace& trace) {
    if (depth > deepest)
        return;
    for (auto const& token : tokensIn(text)) {
        auto const* const here = definitionOf(here_.device(), token, profile, line);
        auto const* const there = definitionOf(there_.device(), token, profileThere, lineThere);
        if ((here == nullptr && there == nullptr) ||
            (here != nullptr && there != nullptr && here->value == there->value))
            continue;
        bool const isToken =
            (here == nullptr || here->isToken) && (there == nullptr || there->isToken);
        if (isToken) {
            addAgentNames(profile, profileThere, trace);
            continue;
        }
        if (here != nullptr && there != nullptr && here->expression == there->expression) {
            addAliases(here->expression, profile, here->place.line, profileThere, there->place.line,
                       depth + 1, trace);
            continue;
        }
        trace.cause = ChangeCause::alias;
        if (here != nullptr)
            trace.here.push_back(lineOf(here->place));
        if (there != nullptr)
            trace.there.push_back(lineOfThere(there->place));
    }
}

Trace Tracer::lostType(std::string_view writtenPath) {
    Trace trace{ChangeCause::preinit, {}, {}};
    auto const path = Kelda::MountFileInfo::wildcardPath(Rook::String(writtenPath));
    if (auto const* const giver = here_.typeGiver(path))
        trace.here.push_back(lineOf(giver->place));
    if (auto const* const giver = there_.typeGiver(path))
        trace.there.push_back(lineOfThere(giver->place));
    return trace;
}

Trace Tracer::lostKeyword(std::size_t index, Agent const& agentThere) {
    auto const& keyword = here_.device().keywords[index];
    auto const line = lineOf(keyword.place);
    if (auto const why = lostLine(line, ChangeCause::keyword))
        return *why;
    auto const include = keyword.place.include;
    auto const by = include == none ? line : lineOf(here_.device().includes[include].place);
    if (keyword.profile != none)
        if (auto const why = lostProfile(keyword.profile, by, agentThere))
            return *why;
    if (include != none)
        if (auto const why = lostInclude(include))
            return *why;
    return {ChangeCause::keyword,
            {line},
            {{matches_.counterpart(version_, line.file), sameLine(line).value_or(0)}}};
}

Trace Tracer::lostAgent(Agent const& agent) {
    Trace all{ChangeCause::agentName, {}, {}};
    auto const& device = here_.device();
    for (auto const id : agent.profiles) {
        auto const& profile = device.profiles[id];
        if (profile.isDefaultGroup() || profile.agentKey != literalPart(agent) ||
            profile.hasTokens() != hasTokens(agent))
            continue;
        if (matches_.counterpart(version_, profile.file) != none) {
            addAgentNames(id, profileThere(id), all);
        } else if (auto const name = agentNameLine(here_, profile.file)) {
            all.cause = ChangeCause::file;
            all.here.push_back(*name);
        }
    }
    return all;
}

} // namespace KeldaDatabase
