#include "graph/PathGraph.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "Text.h"
#include "database/Agents.h"
#include "database/paths/AgentMounts.h"
#include "database/paths/PathPattern.h"
#include "graph/PathOverlaps.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Agent;
using KeldaDatabase::AgentMount;
using KeldaDatabase::AgentMounts;
using KeldaDatabase::Device;
using KeldaDatabase::PathPattern;

AgentMounts::Wanted wantedPaths(std::vector<std::string> const& texts) {
    if (texts.empty())
        return {};
    std::vector<PathPattern> const patterns(texts.begin(), texts.end());
    return [patterns](Rook::String const& path) {
        return std::any_of(patterns.begin(), patterns.end(), [&](PathPattern const& pattern) {
            return pattern.matches(path.view());
        });
    };
}

// An agent at a path.
struct Visitor {
    std::uint32_t agent = 0;
    Fen::MountTable::Flags flags;
};

// All paths that somebody reads or writes, each with its agents.
class Meetings {
  public:
    Meetings(Device const& device, GraphQuestion const& question) {
        AgentMounts const mounts(device, wantedPaths(question.paths));
        for (std::uint32_t agent = 0; agent < device.agents.size(); ++agent)
            if (!device.agents[agent].isActiveVariant)
                mounts.visit(device.agents[agent],
                             [&](AgentMount const& mount) { add(agent, mount); });
        for (auto const& [path, visitors] : byPath_)
            paths_.push_back(&path);
        findGuests();
    }

    std::size_t size() const { return paths_.size(); }
    std::string path(std::size_t id) const { return textOf(*paths_[id]); }

    // Those of the path itself and those of paths that concern it, once each, by agent.
    std::vector<Visitor> visitorsOf(std::size_t id) const {
        auto all = byPath_.at(*paths_[id]);
        for (auto const guest : guests_[id]) {
            auto const& more = byPath_.at(*paths_[guest]);
            all.insert(all.end(), more.begin(), more.end());
        }
        std::stable_sort(all.begin(), all.end(),
                         [](auto const& a, auto const& b) { return a.agent < b.agent; });
        return merged(all);
    }

  private:
    void add(std::uint32_t agent, AgentMount const& mount) {
        if (KeldaDatabase::reads(mount.flags) || KeldaDatabase::writes(mount.flags))
            byPath_[mount.path].push_back({agent, mount.flags});
    }

    // Only paths with a "*" concern others than themselves.
    void findGuests() {
        guests_.resize(size());
        PathOverlaps overlaps;
        for (std::uint32_t id = 0; id < size(); ++id)
            overlaps.add(paths_[id]->view(), id);
        for (std::uint32_t id = 0; id < size(); ++id)
            if (auto const path = paths_[id]->view(); path.find('*') != std::string_view::npos)
                for (auto const other : overlaps.of(path))
                    if (other != id && isGuestAt(path, paths_[other]->view()))
                        guests_[other].push_back(id);
    }

    // Not where the other path stands for more.
    static bool isGuestAt(std::string_view path, std::string_view other) {
        return !coversPath(other, path) || coversPath(path, other);
    }

    static std::vector<Visitor> merged(std::vector<Visitor> const& sorted) {
        std::vector<Visitor> visitors;
        for (auto const& visitor : sorted) {
            if (visitors.empty() || visitors.back().agent != visitor.agent)
                visitors.push_back(visitor);
            else
                visitors.back().flags = visitors.back().flags | visitor.flags;
        }
        return visitors;
    }

    std::map<Rook::String, std::vector<Visitor>> byPath_;
    std::vector<Rook::String const*> paths_;
    std::vector<std::vector<std::uint32_t>> guests_; // of each path: paths that concern it
};

class Building {
  public:
    Building(Device const& device, GraphQuestion const& question)
        : device_(device), question_(question), isAsked_(device.agents.size()) {
        for (auto const& name : question.agents)
            for (auto const agent : agentsNamed(device, name))
                isAsked_[agent] = true;
    }

    PathGraph build() {
        Meetings const meetings(device_, question_);
        for (std::size_t id = 0; id < meetings.size(); ++id)
            if (auto const visitors = meetings.visitorsOf(id); concernsAsked(visitors)) {
                if (question_.allPaths || connects(visitors))
                    add(meetings.path(id), visitors);
                else
                    ++graph_.leftOut;
            }
        addAgents();
        return std::move(graph_);
    }

  private:
    bool concernsAsked(std::vector<Visitor> const& visitors) const {
        return question_.agents.empty() ||
               std::any_of(visitors.begin(), visitors.end(),
                           [this](Visitor const& visitor) { return isAsked_[visitor.agent]; });
    }

    // Whether somebody writes what somebody else reads.
    static bool connects(std::vector<Visitor> const& visitors) {
        auto const is = [](bool (*does)(Fen::MountTable::Flags)) {
            return [does](Visitor const& visitor) { return does(visitor.flags); };
        };
        return visitors.size() > 1 &&
               std::any_of(visitors.begin(), visitors.end(), is(KeldaDatabase::writes)) &&
               std::any_of(visitors.begin(), visitors.end(), is(KeldaDatabase::reads));
    }

    void add(std::string path, std::vector<Visitor> const& visitors) {
        auto const id = static_cast<std::uint32_t>(graph_.paths.size());
        graph_.paths.push_back({{std::move(path)}});
        for (auto const& visitor : visitors)
            graph_.edges.push_back({visitor.agent, id, visitor.flags,
                                    KeldaDatabase::reads(visitor.flags),
                                    KeldaDatabase::writes(visitor.flags)});
    }

    // Those with an edge: edges then refer to the graph's own list.
    void addAgents() {
        std::vector<std::uint32_t> ids(device_.agents.size(), KeldaDatabase::none);
        for (auto const& edge : graph_.edges)
            ids[edge.agent] = 0;
        for (std::uint32_t agent = 0; agent < ids.size(); ++agent)
            if (ids[agent] == 0) {
                ids[agent] = static_cast<std::uint32_t>(graph_.agents.size());
                graph_.agents.push_back({{textOf(device_.agents[agent].name)}, isAsked_[agent]});
            }
        for (auto& edge : graph_.edges)
            edge.agent = ids[edge.agent];
    }

    Device const& device_;
    GraphQuestion const& question_;
    std::vector<bool> isAsked_;
    PathGraph graph_;
};

} // namespace

std::vector<std::uint32_t> agentsNamed(Device const& device, std::string const& name) {
    bool const isPattern = name.find('*') != std::string::npos;
    auto const fits = [&](Agent const& agent) {
        return isPattern ? coversText(name, agent.name.view()) ||
                               coversText(name, agent.agentString.view())
                         : KeldaDatabase::answersTo(agent, name);
    };
    std::vector<std::uint32_t> agents;
    for (std::uint32_t i = 0; i < device.agents.size(); ++i)
        if (!device.agents[i].isActiveVariant && fits(device.agents[i]))
            agents.push_back(i);
    return agents;
}

PathGraph pathGraph(Device const& device, GraphQuestion const& question) {
    return Building(device, question).build();
}

} // namespace KeldaTool
