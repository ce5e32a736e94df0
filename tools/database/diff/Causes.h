// Which lines of two devices brought a change about.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "Trace.h"

namespace KeldaDatabase {

/// What was changed, and the lines in the old and in the new device.
struct Cause {
    ChangeCause cause = ChangeCause::line;
    std::vector<CausingLine> before;
    std::vector<CausingLine> after;

    bool isKnown() const { return !before.empty() || !after.empty(); }
    /// Adds the lines of another cause; of both, the first in the enumeration stays.
    void add(Cause const& other);
};

/// The same agent in both devices.
struct AgentPair {
    Agent const* before = nullptr;
    Agent const* after = nullptr;
};

class Causes {
  public:
    using Lines = std::vector<std::size_t>; ///< indexes to Device::mounts or Device::keywords

    Causes(DeviceSide& before, DeviceSide& after)
        : matches_(before, after), forward_(matches_, FileMatches::Version::before),
          backward_(matches_, FileMatches::Version::after) {}

    Causes(Causes const&) = delete; // the tracers refer to its files
    Causes& operator=(Causes const&) = delete;

    // What came or went is null or empty in the device that does not have it.

    /// Of a mount, with its path lines.
    Cause ofMounts(AgentPair const& agents, Lines const& before, Lines const& after);
    /// Of the type of a mount, with its path lines.
    Cause ofTypes(AgentPair const& agents, Lines const& before, Lines const& after);
    /// Of a mount group that a path came into, or went from: its path lines in that group.
    Cause ofGroup(AgentPair const& agents, Lines const& before, Lines const& after);
    /// Of the priority of a mount group, with one path line in it of each device.
    Cause ofPriority(std::size_t before, std::size_t after);
    /// Of what the tokens in a path take: the agent-name lines above its path lines.
    Cause ofTokens(Lines const& before, Lines const& after);
    Cause ofConditions(AgentPair const& agents, Lines const& before, Lines const& after);
    /// Of a setting of an agent, with the keyword lines that decide.
    Cause ofSetting(AgentPair const& agents, std::optional<std::size_t> before,
                    std::optional<std::size_t> after);
    Cause ofSubAgents(AgentPair const& agents, Lines const& before, Lines const& after);
    /// Of a fault: an index to Device::faults.
    Cause ofFaultBefore(AgentPair const& agents, std::size_t fault);
    Cause ofFaultAfter(AgentPair const& agents, std::size_t fault);
    Cause ofAgentBefore(Agent const& agent);
    Cause ofAgentAfter(Agent const& agent);
    /// Of what a preinit path is, with the lines that say so.
    Cause ofPreinit(PreinitDeclaration const* before, PreinitDeclaration const* after);

  private:
    struct Lost {
        std::size_t line;
        Cause cause;
    };
    Cause fromHere(Trace const& trace) const { return {trace.cause, trace.here, trace.there}; }
    Cause fromThere(Trace const& trace) const { return {trace.cause, trace.there, trace.here}; }
    std::vector<Lost> lostOf(Tracer& tracer, Lines const& lines, Agent const& agentThere,
                             Lines const& linesThere);
    void dropMoved(std::vector<Lost>& before, std::vector<Lost>& after);
    Cause allLines(ChangeCause cause, Lines const& before, Lines const& after);
    Trace lostGroup(Tracer& tracer, std::size_t line, Agent const& agentThere);
    Trace lostConditions(Tracer& tracer, std::size_t line, Agent const& agentThere);
    Trace lostSubAgent(Tracer& tracer, std::size_t line, Agent const& agentThere);
    Trace lostFault(Tracer& tracer, Fault const& fault, Agent const& agentThere);
    Trace lostFaultOfLine(Tracer& tracer, Fault const& fault, CausingLine const& line,
                          Agent const& agentThere);
    Trace lostRefusal(Tracer& tracer, CausingLine const& line, std::size_t mountThere);
    Trace lostFaultTogether(Tracer& tracer, Fault const& fault, Agent const& agentThere);

    FileMatches matches_;
    Tracer forward_;
    Tracer backward_;
};

} // namespace KeldaDatabase
