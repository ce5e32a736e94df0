#include "agents/AgentsAnswer.h"

#include <algorithm>
#include <set>
#include <unordered_set>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "JsonWriter.h"
#include "Table.h"
#include "Text.h"
#include "database/findings/Rules.h"
#include "database/paths/AgentMounts.h"

namespace KeldaTool {
namespace {

using KeldaDatabase::Agent;
using KeldaDatabase::AgentMount;
using KeldaDatabase::Device;
using KeldaDatabase::Profile;

constexpr std::string_view subAgentKeyword = "subAgent:";

// How many faults each agent meets, found in one pass over the faults. A fault that only follows
// from another one of its line does not count.
class FaultCounts {
  public:
    explicit FaultCounts(Device const& device)
        : ofAgent_(device.agents.size()), ofProfile_(device.profiles.size()) {
        for (auto const& fault : device.faults)
            if (!KeldaDatabase::isFollowOn(fault.exception.msg.view()))
                add(fault);
    }

    std::size_t of(std::size_t index, Agent const& agent) const {
        auto count = ofAll_ + ofAgent_[index];
        for (auto const id : agent.profiles)
            count += ofProfile_[id];
        return count;
    }
    std::size_t inAll() const { return inAll_; }

  private:
    void add(KeldaDatabase::Fault const& fault) {
        ++inAll_;
        if (fault.isTogether)
            for (auto const agent : fault.agents)
                ++ofAgent_[agent];
        else
            ++(fault.profile == KeldaDatabase::none ? ofAll_ : ofProfile_[fault.profile]);
    }

    std::size_t inAll_ = 0;
    std::size_t ofAll_ = 0;
    std::vector<std::size_t> ofAgent_;
    std::vector<std::size_t> ofProfile_;
};

class AllAgents {
  public:
    explicit AllAgents(Device const& device) : device_(device), mounts_(device), faults_(device) {
        for (auto const& agent : device.agents)
            if (agent.isActiveVariant)
                withVariant_.insert(agent.name);
    }

    AgentsAnswer take() {
        for (std::size_t i = 0; i < device_.agents.size(); ++i)
            if (!device_.agents[i].isActiveVariant)
                answer_.agents.push_back(rowOf(i, device_.agents[i]));
        for (auto const& profile : device_.profiles)
            answer_.profiles += profile.file == KeldaDatabase::none ? 0 : 1;
        answer_.paths = paths_.size();
        answer_.written = written_.size();
        answer_.faults = faults_.inAll();
        return std::move(answer_);
    }

  private:
    AgentRow rowOf(std::size_t index, Agent const& agent) {
        AgentRow row;
        row.name = textOf(agent.name);
        row.hasActiveVariant = withVariant_.contains(agent.name);
        row.faults = faults_.of(index, agent);
        for (auto const id : agent.profiles)
            addProfile(row, device_.profiles[id]);
        mounts_.visit(agent, [&](AgentMount const& mount) { addMount(row, mount); });
        row.groups = groupsOf(agent);
        return row;
    }

    void addProfile(AgentRow& row, Profile const& profile) {
        if (profile.file != KeldaDatabase::none)
            row.profiles.push_back(device_.files[profile.file].path());
        for (auto i = profile.keywords.begin; i < profile.keywords.end; ++i) {
            auto const& keyword = device_.keywords[i];
            row.activeMount = row.activeMount || keyword.keyword == "activeMount";
            if (keyword.keyword == subAgentKeyword)
                addSubAgent(row, keyword.line.substr(subAgentKeyword.size()));
        }
    }

    static void addSubAgent(AgentRow& row, std::string const& name) {
        if (std::find(row.subAgents.begin(), row.subAgents.end(), name) == row.subAgents.end())
            row.subAgents.push_back(name);
    }

    void addMount(AgentRow& row, AgentMount const& mount) {
        ++row.paths;
        paths_.insert(mount.path);
        if (!KeldaDatabase::writes(mount.flags))
            return;
        ++row.written;
        written_.insert(mount.path);
    }

    // Groups are told apart by the literal part of the agent's name and their own. A group is there
    // once it has a mount; what stands before the first one is in the group without a name.
    std::size_t groupsOf(Agent const& agent) const {
        std::set<std::pair<Rook::String, std::string>> groups;
        bool hasDefault = false;
        for (auto const id : agent.profiles) {
            auto const& profile = device_.profiles[id];
            auto group = KeldaDatabase::none - 1; // no group at all
            for (auto i = profile.mounts.begin; i < profile.mounts.end; ++i) {
                auto const& mount = device_.mounts[i];
                if (mount.group == group || mount.isRefused)
                    continue;
                group = mount.group;
                if (group != KeldaDatabase::none)
                    groups.emplace(profile.agentKey, device_.groups[group].name);
                else if (profile.isDefaultGroup())
                    hasDefault = true;
                else
                    groups.emplace(profile.agentKey, "");
            }
        }
        return groups.size() + (hasDefault ? 1 : 0);
    }

    Device const& device_;
    KeldaDatabase::AgentMounts mounts_;
    FaultCounts faults_;
    std::unordered_set<Rook::String> withVariant_;
    std::unordered_set<Rook::String> paths_;
    std::unordered_set<Rook::String> written_;
    AgentsAnswer answer_;
};

std::size_t activeAgents(AgentsAnswer const& answer) {
    return static_cast<std::size_t>(
        std::count_if(answer.agents.begin(), answer.agents.end(),
                      [](AgentRow const& agent) { return agent.activeMount; }));
}

std::string totals(AgentsAnswer const& answer) {
    auto const active = activeAgents(answer);
    return fmt::format("{} ({} active, {} passive), {}, {} ({} written), {}\n",
                       counted(answer.agents.size(), "agent"), active,
                       answer.agents.size() - active, counted(answer.profiles, "profile"),
                       counted(answer.paths, "path"), answer.written,
                       counted(answer.faults, "fault"));
}

void writeTexts(JsonWriter& json, std::string_view name, std::vector<std::string> const& texts) {
    json.key(name);
    json.beginArray();
    for (auto const& text : texts)
        json.value(jsonText(text));
    json.endArray();
}

void write(JsonWriter& json, AgentRow const& agent) {
    json.beginObject();
    json.member("name", jsonText(agent.name));
    writeTexts(json, "profiles", agent.profiles);
    json.member("paths", agent.paths);
    json.member("written", agent.written);
    json.member("groups", agent.groups);
    json.member("activeMount", agent.activeMount);
    json.member("hasActiveVariant", agent.hasActiveVariant);
    writeTexts(json, "subAgents", agent.subAgents);
    json.member("faults", agent.faults);
    json.endObject();
}

void writeTotals(JsonWriter& json, AgentsAnswer const& answer) {
    json.beginObject();
    json.member("agents", answer.agents.size());
    json.member("activeMount", activeAgents(answer));
    json.member("profiles", answer.profiles);
    json.member("paths", answer.paths);
    json.member("written", answer.written);
    json.member("faults", answer.faults);
    json.endObject();
}

} // namespace

AgentsAnswer askAgents(Device const& device) {
    return AllAgents(device).take();
}

std::string agentsTable(AgentsAnswer const& answer, bool colour) {
    Table table(
        {"AGENT", "PROFILES", "PATHS", "WRITTEN", "GROUPS", "MOUNTS", "FAULTS", "SUB-AGENTS"});
    for (auto const& agent : answer.agents)
        table.addRow({agent.name, std::to_string(agent.profiles.size()),
                      std::to_string(agent.paths), std::to_string(agent.written),
                      std::to_string(agent.groups), agent.activeMount ? "active" : "passive",
                      std::to_string(agent.faults),
                      fmt::format("{}", fmt::join(agent.subAgents, ", "))});
    return table.text(colour) + "\n" + totals(answer);
}

std::string agentsDocument(AgentsAnswer const& answer) {
    JsonWriter json;
    json.beginObject();
    json.key("agents");
    json.beginArray();
    for (auto const& agent : answer.agents)
        write(json, agent);
    json.endArray();
    json.key("totals");
    writeTotals(json, answer);
    json.endObject();
    return json.take();
}

} // namespace KeldaTool
