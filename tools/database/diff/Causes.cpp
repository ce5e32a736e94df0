#include "Causes.h"

#include <algorithm>
#include <map>
#include <string>

namespace KeldaDatabase {

void Cause::add(Cause const& other) {
    if (!other.isKnown())
        return;
    cause = isKnown() ? std::min(cause, other.cause) : other.cause;
    auto const append = [](std::vector<CausingLine>& to, std::vector<CausingLine> const& lines) {
        for (auto const& line : lines)
            if (auto const known = std::find(to.begin(), to.end(), line); known == to.end())
                to.push_back(line);
            else if (known->include == none)
                known->include = line.include; // a line that was only found to be edited has none
    };
    append(before, other.before);
    append(after, other.after);
}

Cause Causes::allLines(ChangeCause cause, Lines const& before, Lines const& after) {
    Cause all{cause, {}, {}};
    for (auto const line : before)
        all.before.push_back(forward_.lineOf(forward_.here().device().mounts[line].place));
    for (auto const line : after)
        all.after.push_back(backward_.lineOf(backward_.here().device().mounts[line].place));
    return all;
}

// The lines of an agent that it does not have over there.
std::vector<Causes::Lost> Causes::lostOf(Tracer& tracer, Lines const& lines,
                                         Agent const& agentThere, Lines const& linesThere) {
    std::vector<Lost> lost;
    for (auto const line : lines) {
        auto const followed = tracer.follow(line, agentThere);
        if (!followed.mount)
            lost.push_back(
                {line, &tracer == &forward_ ? fromHere(followed.why) : fromThere(followed.why)});
        else if (std::find(linesThere.begin(), linesThere.end(), *followed.mount) ==
                 linesThere.end())
            lost.push_back({line, {}});
    }
    return lost;
}

// Lines that say the same somewhere else do not bring about anything, unless nothing else does.
void Causes::dropMoved(std::vector<Lost>& before, std::vector<Lost>& after) {
    std::map<std::uint32_t, std::vector<std::size_t>> byFlags;
    for (std::size_t i = after.size(); i-- > 0;)
        byFlags[backward_.here().device().mounts[after[i].line].flags.bits()].push_back(i);
    std::vector<bool> isMovedBefore(before.size()), isMovedAfter(after.size());
    std::size_t moved = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        auto& same = byFlags[forward_.here().device().mounts[before[i].line].flags.bits()];
        if (same.empty())
            continue;
        isMovedBefore[i] = isMovedAfter[same.back()] = true;
        same.pop_back();
        ++moved;
    }
    if (2 * moved == before.size() + after.size())
        return;
    auto const drop = [](std::vector<Lost>& lines, std::vector<bool> const& isMoved) {
        std::size_t i = 0;
        std::erase_if(lines, [&](Lost const&) { return isMoved[i++]; });
    };
    drop(before, isMovedBefore);
    drop(after, isMovedAfter);
}

Cause Causes::ofMounts(AgentPair const& agents, Lines const& before, Lines const& after) {
    auto gone = lostOf(forward_, before, *agents.after, after);
    auto came = lostOf(backward_, after, *agents.before, before);
    dropMoved(gone, came);
    Cause all;
    for (auto const* const lost : {&gone, &came})
        for (auto const& each : *lost)
            all.add(each.cause);
    return all.isKnown() ? all : allLines(ChangeCause::line, before, after);
}

Cause Causes::ofTypes(AgentPair const& agents, Lines const& before, Lines const& after) {
    Cause all;
    auto const add = [&](Tracer& tracer, Lines const& lines) {
        for (auto const index : lines) {
            auto const& line =
                tracer.textOf(tracer.lineOf(tracer.here().device().mounts[index].place));
            auto const fields = pathFields(line);
            auto const path =
                fields ? Rook::String(fields->path) : tracer.here().device().mounts[index].path;
            auto const why = tracer.lostType(path.view());
            all.add(&tracer == &forward_ ? fromHere(why) : fromThere(why));
        }
    };
    add(forward_, before);
    add(backward_, after);
    return all.isKnown() ? all : ofMounts(agents, before, after);
}

Trace Causes::lostGroup(Tracer& tracer, std::size_t line, Agent const& agentThere) {
    auto const followed = tracer.follow(line, agentThere);
    if (!followed.mount)
        return followed.why;
    Trace trace{ChangeCause::keyword, {}, {}};
    auto const& mount = tracer.here().device().mounts[line];
    auto const& other = tracer.there().device().mounts[*followed.mount];
    if (mount.group != none)
        trace.here.push_back(tracer.lineOf(tracer.here().device().groups[mount.group].place));
    if (other.group != none)
        trace.there.push_back(
            tracer.lineOfThere(tracer.there().device().groups[other.group].place));
    if (!trace.here.empty() || !trace.there.empty())
        return trace;
    // The group has the name of the agent in its key.
    trace.cause = ChangeCause::agentName;
    if (auto const name = tracer.agentNameLine(tracer.here(),
                                               tracer.here().device().profiles[mount.profile].file))
        trace.here.push_back(*name);
    if (auto const name = tracer.agentNameLine(
            tracer.there(), tracer.there().device().profiles[other.profile].file))
        trace.there.push_back(*name);
    return trace;
}

Cause Causes::ofGroup(AgentPair const& agents, Lines const& before, Lines const& after) {
    Cause all;
    for (auto const line : before)
        all.add(fromHere(lostGroup(forward_, line, *agents.after)));
    for (auto const line : after)
        all.add(fromThere(lostGroup(backward_, line, *agents.before)));
    return all.isKnown() ? all : allLines(ChangeCause::keyword, before, after);
}

Cause Causes::ofPriority(std::size_t before, std::size_t after) {
    Cause cause{ChangeCause::keyword, {}, {}};
    auto const add = [](Tracer& tracer, std::size_t line, std::vector<CausingLine>& to) {
        auto const& device = tracer.here().device();
        if (auto const group = device.mounts[line].group; group != none)
            to.push_back(tracer.lineOf(device.groups[group].place));
    };
    add(forward_, before, cause.before);
    add(backward_, after, cause.after);
    return cause.isKnown() ? cause : allLines(ChangeCause::keyword, {before}, {after});
}

Trace Causes::lostConditions(Tracer& tracer, std::size_t line, Agent const& agentThere) {
    auto const followed = tracer.follow(line, agentThere);
    if (!followed.mount)
        return followed.why;
    Trace trace{ChangeCause::keyword, {}, {}};
    auto const& here = tracer.here().conditionOf(line);
    auto const& there = tracer.there().conditionOf(*followed.mount);
    if (here.text == there.text)
        return trace;
    for (auto const keyword : here.keywords)
        trace.here.push_back(tracer.lineOf(tracer.here().device().keywords[keyword].place));
    for (auto const keyword : there.keywords)
        trace.there.push_back(tracer.lineOfThere(tracer.there().device().keywords[keyword].place));
    // Of several lines, those that are there in both are not the cause.
    for (std::size_t i = trace.here.size(); i-- > 0;)
        if (auto const same = tracer.sameLine(trace.here[i]))
            for (std::size_t k = trace.there.size(); k-- > 0;)
                if (trace.there[k].line == *same && trace.here.size() + trace.there.size() > 2) {
                    trace.here.erase(trace.here.begin() + static_cast<std::ptrdiff_t>(i));
                    trace.there.erase(trace.there.begin() + static_cast<std::ptrdiff_t>(k));
                    break;
                }
    return trace;
}

Cause Causes::ofConditions(AgentPair const& agents, Lines const& before, Lines const& after) {
    Cause all;
    for (auto const line : before)
        all.add(fromHere(lostConditions(forward_, line, *agents.after)));
    for (auto const line : after)
        all.add(fromThere(lostConditions(backward_, line, *agents.before)));
    return all.isKnown() ? all : allLines(ChangeCause::keyword, before, after);
}

Cause Causes::ofPreinit(PreinitDeclaration const* before, PreinitDeclaration const* after) {
    Cause cause;
    auto const add = [&](Tracer& tracer, PreinitDeclaration const* line,
                         std::vector<CausingLine>& to) {
        if (line == nullptr)
            return;
        to.push_back(tracer.lineOf(line->place));
        auto const lost = tracer.lostLine(to.back(), ChangeCause::line);
        if (lost && lost->cause == ChangeCause::file)
            cause.cause = ChangeCause::file;
    };
    add(forward_, before, cause.before);
    add(backward_, after, cause.after);
    return cause;
}

Cause Causes::ofAgentBefore(Agent const& agent) {
    return fromHere(forward_.lostAgent(agent));
}

Cause Causes::ofAgentAfter(Agent const& agent) {
    return fromThere(backward_.lostAgent(agent));
}

} // namespace KeldaDatabase
