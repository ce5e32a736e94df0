// The part of Causes for the settings of agents, and for their faults.
#include <algorithm>

#include "Causes.h"

namespace KeldaDatabase {

Cause Causes::ofSetting(AgentPair const& agents, std::optional<std::size_t> before,
                        std::optional<std::size_t> after) {
    if (before && !after)
        return fromHere(forward_.lostKeyword(*before, *agents.after));
    if (after && !before)
        return fromThere(backward_.lostKeyword(*after, *agents.before));
    Cause cause{ChangeCause::keyword, {}, {}};
    if (before && after) {
        auto const& device = forward_.here().device();
        auto const& other = backward_.here().device();
        cause.before.push_back(forward_.lineOf(device.keywords[*before].place));
        cause.after.push_back(backward_.lineOf(other.keywords[*after].place));
    }
    return cause;
}

Cause Causes::ofTokens(Lines const& before, Lines const& after) {
    Cause all;
    auto const add = [&](Tracer& tracer, Lines const& lines) {
        auto const& device = tracer.here().device();
        for (auto const line : lines)
            if (auto const name = tracer.agentNameLine(
                    tracer.here(), device.profiles[device.mounts[line].profile].file)) {
                Trace const trace{ChangeCause::agentName, {*name}, {}};
                all.add(&tracer == &forward_ ? fromHere(trace) : fromThere(trace));
            }
    };
    add(forward_, before);
    add(backward_, after);
    return all;
}

Trace Causes::lostSubAgent(Tracer& tracer, std::size_t index, Agent const& agentThere) {
    auto const& keyword = tracer.here().device().keywords[index];
    auto trace = tracer.lostKeyword(index, agentThere);
    auto const same = tracer.sameLine(tracer.lineOf(keyword.place));
    if (trace.cause != ChangeCause::keyword || !same || keyword.profile == none)
        return trace;
    // The line is there: its aliases may be others.
    auto const profile = tracer.profileThere(keyword.profile);
    return tracer.otherAliases(keyword.line, keyword.profile, keyword.place.line, profile, *same);
}

Cause Causes::ofSubAgents(AgentPair const& agents, Lines const& before, Lines const& after) {
    Cause all;
    for (auto const line : before)
        all.add(fromHere(lostSubAgent(forward_, line, *agents.after)));
    for (auto const line : after)
        all.add(fromThere(lostSubAgent(backward_, line, *agents.before)));
    if (all.isKnown())
        return all;
    // They only stand in another order.
    all.cause = ChangeCause::keyword;
    for (auto const line : before)
        all.before.push_back(forward_.lineOf(forward_.here().device().keywords[line].place));
    for (auto const line : after)
        all.after.push_back(backward_.lineOf(backward_.here().device().keywords[line].place));
    return all;
}

Cause Causes::ofFaultBefore(AgentPair const& agents, std::size_t fault) {
    return fromHere(lostFault(forward_, forward_.here().device().faults[fault], *agents.after));
}

Cause Causes::ofFaultAfter(AgentPair const& agents, std::size_t fault) {
    return fromThere(lostFault(backward_, backward_.here().device().faults[fault], *agents.before));
}

Trace Causes::lostFault(Tracer& tracer, Fault const& fault, Agent const& agentThere) {
    if (fault.isTogether)
        return lostFaultTogether(tracer, fault, agentThere);
    if (!fault.place.isKnown())
        return {};
    auto const line = tracer.lineOf(fault.place);
    auto trace = lostFaultOfLine(tracer, fault, line, agentThere);
    if (trace.here.empty() && trace.there.empty())
        trace.here.push_back(line);
    return trace;
}

// Why a line is refused that is not over there, where it makes a mount.
Trace Causes::lostRefusal(Tracer& tracer, CausingLine const& line, std::size_t mountThere) {
    Trace trace;
    if (auto const fields = pathFields(tracer.textOf(line)))
        trace = tracer.lostType(fields->path);
    if (!trace.here.empty() || !trace.there.empty())
        return trace;
    trace.cause = ChangeCause::keyword;
    for (auto const keyword : tracer.there().conditionOf(mountThere).keywords)
        trace.there.push_back(tracer.lineOfThere(tracer.there().device().keywords[keyword].place));
    return trace;
}

Trace Causes::lostFaultOfLine(Tracer& tracer, Fault const& fault, CausingLine const& line,
                              Agent const& agentThere) {
    if (auto const why = tracer.replacedLine(line, ChangeCause::line))
        return *why;
    auto const& device = tracer.here().device();
    for (auto const mount : tracer.here().mountsAt(line.file, line.line))
        if (device.mounts[mount].profile == fault.profile) {
            auto const followed = tracer.follow(mount, agentThere);
            if (!followed.mount && followed.why.cause != ChangeCause::line)
                return followed.why;
            // The path may be the same without being refused: it is the fault that went.
            if (followed.mount && !isMounted(device.mounts[mount]))
                return lostRefusal(tracer, line, *followed.mount);
        }
    if (fault.profile == none)
        return {ChangeCause::line, {line}, {}};
    auto const& range = device.profiles[fault.profile].keywords;
    for (auto i = range.begin; i < range.end; ++i)
        if (device.keywords[i].place == fault.place) {
            auto why = tracer.lostKeyword(i, agentThere);
            if (device.keywords[i].keyword == "Include:" && why.cause == ChangeCause::keyword)
                why.cause = ChangeCause::include;
            return why;
        }
    return {ChangeCause::line, {line}, {}};
}

// Of several lines that are in conflict, those that are not over there.
Trace Causes::lostFaultTogether(Tracer& tracer, Fault const& fault, Agent const& agentThere) {
    auto places = fault.causes;
    if (fault.place.isKnown())
        places.push_back(fault.place);
    Trace all;
    Trace standing{ChangeCause::line, {}, {}};
    for (auto const& place : places) {
        auto const line = tracer.lineOf(place);
        standing.here.push_back(line);
        auto why = lostFaultOfLine(tracer, fault, line, agentThere);
        if (why.there.size() == 1 && why.here.size() == 1 && tracer.sameLine(line))
            continue;
        all.cause =
            all.here.empty() && all.there.empty() ? why.cause : std::min(all.cause, why.cause);
        all.here.insert(all.here.end(), why.here.begin(), why.here.end());
        all.there.insert(all.there.end(), why.there.begin(), why.there.end());
    }
    return all.here.empty() && all.there.empty() ? standing : all;
}

} // namespace KeldaDatabase
