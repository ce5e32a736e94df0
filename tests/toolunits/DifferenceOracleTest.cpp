// The difference of two devices is what each agent's own parser knows, compared: of a large device
// with random edits, agent for agent.
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <KeldaUtil/MountFlags.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AgentDocument.h"
#include "support/CarefulEdits.h"
#include "support/ComparedDevices.h"
#include "support/Corpus.h"

namespace {

using KeldaDatabase::ChangeKind;
using KeldaDatabase::Difference;
using KeldaTool::Json;
using support::ComparedDevices;
using support::documentOf;

// What changed for one agent: "KIND PATH 'BEFORE' -> 'AFTER'".
using Facts = std::multiset<std::string>;

std::string fact(ChangeKind kind, std::string const& path, std::string const& before,
                 std::string const& after) {
    return fmt::format("{} {} '{}' -> '{}'", nameOf(kind), path, before, after);
}

bool isExplicit(Json const& mount) {
    return mount.at("explicit").get<bool>();
}

// Compares two documents of an agent.
class DocumentFacts {
  public:
    DocumentFacts(Json const& before, Json const& after, std::string const& agentKey)
        : before_(before), after_(after), ownGroups_(agentKey + "::") {}

    Facts take() {
        if (before_.contains("error") || after_.contains("error")) {
            addFaults();
            return std::move(facts_);
        }
        addMounts();
        addTexts(ChangeKind::rootFlagsChanged, textOf(before_, "rootFlags"),
                 textOf(after_, "rootFlags"));
        addTexts(ChangeKind::connectionFlagsChanged, textOf(before_, "connectionFlags"),
                 textOf(after_, "connectionFlags"));
        addTexts(ChangeKind::subAgentsChanged, joined(before_["subAgents"]),
                 joined(after_["subAgents"]));
        addTexts(ChangeKind::activeMountChanged, activeText(before_), activeText(after_));
        addTexts(ChangeKind::noDefaultMountGroupChanged, yesNo(before_, "noDefaultMountGroup"),
                 yesNo(after_, "noDefaultMountGroup"));
        return std::move(facts_);
    }

  private:
    static std::string textOf(Json const& document, char const* member) {
        return document.value(member, "");
    }
    static std::string yesNo(Json const& document, char const* member) {
        return document.at(member).get<bool>() ? "yes" : "no";
    }
    static std::string activeText(Json const& document) {
        return document.at("activeMount").get<bool>() ? "active" : "passive";
    }
    static std::string joined(Json const& texts) {
        return fmt::format("{}", fmt::join(texts.get<std::vector<std::string>>(), ", "));
    }
    static std::map<std::string, Json> mountsOf(Json const& document) {
        std::map<std::string, Json> mounts;
        for (auto const& mount : document.at("mounts"))
            mounts[mount.at("path")] = mount;
        return mounts;
    }
    std::set<std::string> groupsOf(Json const& document, std::string const& path) const {
        std::set<std::string> groups;
        for (auto const& [key, paths] : document.at("groups").items())
            if (std::find(paths.begin(), paths.end(), path) != paths.end()) {
                auto const isOwn = key.starts_with(ownGroups_);
                auto const name = isOwn ? key.substr(ownGroups_.size()) : key;
                groups.insert(name.empty() ? "::" : name);
            }
        return groups;
    }

    void addTexts(ChangeKind kind, std::string const& before, std::string const& after) {
        if (before != after)
            facts_.insert(fact(kind, "", before, after));
    }
    void addFaults() {
        auto const before = textOf(before_, "error");
        auto const after = textOf(after_, "error");
        if (before == after)
            return;
        if (!before.empty())
            facts_.insert(fact(ChangeKind::faultRemoved, "", before, ""));
        if (!after.empty())
            facts_.insert(fact(ChangeKind::faultAdded, "", "", after));
    }
    // A directory that only followed from other mounts and is mounted by a line now counts as a
    // mount that came, and the other way round.
    void addMounts() {
        auto const before = mountsOf(before_);
        auto const after = mountsOf(after_);
        for (auto const& [path, mount] : before)
            if (auto const other = after.find(path);
                other != after.end() && isExplicit(mount) == isExplicit(other->second))
                addDifference(path, mount, other->second);
            else if (other == after.end() || isExplicit(mount))
                addMount(ChangeKind::mountRemoved, path, mount);
        for (auto const& [path, mount] : after)
            if (auto const other = before.find(path);
                other == before.end() || (isExplicit(mount) && !isExplicit(other->second)))
                addMount(ChangeKind::mountAdded, path, mount);
    }
    static std::string ofType(Json const& mount) {
        return " of type " + mount.at("type").get<std::string>();
    }
    void addMount(ChangeKind kind, std::string const& path, Json const& mount) {
        std::string const flags = mount.at("flags");
        bool const isAdded = kind == ChangeKind::mountAdded;
        facts_.insert(fact(kind, path, isAdded ? "" : flags, isAdded ? flags : "") +
                      (isExplicit(mount) ? "" : " follows") + ofType(mount));
    }
    void addDifference(std::string const& path, Json const& before, Json const& after) {
        if (before.at("type") != after.at("type"))
            facts_.insert(fact(ChangeKind::typeChanged, path, before.at("type"), after.at("type")));
        addFlags(path, before, after);
        auto const former = groupsOf(before_, path);
        auto const groups = groupsOf(after_, path);
        for (auto const& group : former)
            if (!groups.contains(group))
                facts_.insert(fact(ChangeKind::groupRemoved, path, group, ""));
        for (auto const& group : groups)
            if (!former.contains(group))
                facts_.insert(fact(ChangeKind::groupAdded, path, "", group));
    }
    void addFlags(std::string const& path, Json const& mount, Json const& other) {
        std::string const before = mount.at("flags");
        std::string const after = other.at("flags");
        if (before == after)
            return;
        auto const old = KeldaUtil::parseMountTableFlags(before.c_str()).bits();
        auto const now = KeldaUtil::parseMountTableFlags(after.c_str()).bits();
        auto const kind = (old & ~now) == 0   ? ChangeKind::flagsWidened
                          : (now & ~old) == 0 ? ChangeKind::flagsNarrowed
                                              : ChangeKind::flagsReplaced;
        facts_.insert(fact(kind, path, before, after) + ofType(other));
    }

    Json const& before_;
    Json const& after_;
    std::string ownGroups_;
    Facts facts_;
};

// What is in one list only, for a failure that can be read; empty where they are equal.
std::string inOneOnly(Facts const& told, Facts const& known) {
    std::vector<std::string> tooMuch, missing;
    std::set_difference(told.begin(), told.end(), known.begin(), known.end(),
                        std::back_inserter(tooMuch));
    std::set_difference(known.begin(), known.end(), told.begin(), told.end(),
                        std::back_inserter(missing));
    if (told == known)
        return "";
    return fmt::format("told, but not known:\n  {}\nknown, but not told:\n  {}\n",
                       fmt::join(tooMuch, "\n  "), fmt::join(missing, "\n  "));
}

// What no document tells of an agent.
bool isBeyondDocuments(ChangeKind kind) {
    return kind == ChangeKind::groupPriorityChanged || kind == ChangeKind::conditionChanged ||
           kind == ChangeKind::matchActiveNameChanged || kind >= ChangeKind::tokensChanged;
}

// As DocumentFacts has it.
std::string factOf(KeldaDatabase::Change const& change, KeldaDatabase::ChangedPath const& path) {
    auto text = fact(change.kind, path.path, change.before, change.after);
    if (change.follows &&
        (change.kind == ChangeKind::mountAdded || change.kind == ChangeKind::mountRemoved))
        text += " follows";
    if (change.kind >= ChangeKind::mountAdded && change.kind <= ChangeKind::flagsReplaced)
        text += " of type " + path.type;
    return text;
}

// What a difference tells, agent for agent.
std::map<std::string, Facts> factsByAgent(Difference const& difference) {
    std::map<std::string, Facts> facts;
    for (auto const& change : difference.changes)
        if (!isBeyondDocuments(change.kind))
            for (auto const& path : change.paths)
                for (auto const& agent : path.agents)
                    facts[agent].insert(factOf(change, path));
    return facts;
}

// The agents of changes that reach no more than three.
std::set<std::string> agentsOfFew(Difference const& difference) {
    std::set<std::string> agents;
    for (auto const& change : difference.changes)
        if (change.agentCount() <= 3)
            for (auto const& path : change.paths)
                agents.insert(path.agents.begin(), path.agents.end());
    return agents;
}

// The agents of both devices, variants aside: their names by what makes them the same agent, the
// name in the new device if it is there.
struct OneAgent {
    std::string name;        // as the difference has it
    std::string agentString; // its tokens stand for themselves
    std::string key;         // the literal part
    bool isInOld = false;
    bool isInNew = false;
};
std::vector<OneAgent> agentsOf(ComparedDevices& devices) {
    std::map<std::pair<std::string, bool>, OneAgent> agents;
    for (bool const isNew : {false, true})
        for (auto const& agent :
             (isNew ? devices.after() : devices.before()).parser().device().agents) {
            if (agent.isActiveVariant)
                continue;
            std::string const name(agent.name.view());
            auto const mark = name.find("-%");
            auto& one = agents[{name.substr(0, mark), mark != std::string::npos}];
            one.key = name.substr(0, mark);
            one.name = name;
            one.agentString = name.ends_with('$') ? name.substr(0, name.size() - 1) : name;
            (isNew ? one.isInNew : one.isInOld) = true;
        }
    std::vector<OneAgent> all;
    for (auto& [key, agent] : agents)
        all.push_back(std::move(agent));
    return all;
}

class Oracle : public testing::Test {
  protected:
    void SetUp() override { SKIP_WITHOUT_CORPUS(); }

    // The device with 20 random edits, made or undone; what was done is told with a failure.
    void compare(std::uint64_t seed, std::size_t agentsToLoad) {
        static auto const files = support::filesOf(support::corpusDir("openconfig"));
        support::CarefulEdits editor(seed, files);
        std::string done;
        for (int i = 0; i < 20; ++i)
            done += editor.edit() + "\n";
        SCOPED_TRACE(fmt::format("seed {}\n{}", seed, done));
        bool const isUndone = seed % 2 == 0;
        ComparedDevices devices(isUndone ? editor.files() : files,
                                isUndone ? files : editor.files());
        expectWhatAgentsKnow(devices, editor.touched(), agentsToLoad, support::Dice(seed));
    }

    std::size_t agentsLoaded_ = 0;
    std::size_t factsSeen_ = 0;

  private:
    // Agents of files that were edited or that the difference tells of come first, then others.
    void expectWhatAgentsKnow(ComparedDevices& devices, std::set<std::string> const& touched,
                              std::size_t agentsToLoad, support::Dice dice) {
        auto const difference = devices.difference();
        auto const told = factsByAgent(difference);
        auto const singled = agentsOfFew(difference);
        auto agents = agentsOf(devices);
        auto const rank = [&](OneAgent const& agent) {
            if (touched.contains("profiles/" + agent.key) || singled.contains(agent.name))
                return 0;
            return told.contains(agent.name) ? 1 : 2;
        };
        for (std::size_t i = agents.size(); i > 1; --i)
            std::swap(agents[i - 1], agents[dice.below(i)]);
        std::stable_sort(agents.begin(), agents.end(),
                         [&](auto const& a, auto const& b) { return rank(a) < rank(b); });
        if (agents.size() > agentsToLoad) // some of the last ones, too: nothing changed for them
            agents.erase(agents.begin() + static_cast<std::ptrdiff_t>(agentsToLoad) - 4,
                         agents.end() - 4);
        for (auto const& agent : agents)
            expectWhatIsKnown(devices, difference, agent,
                              told.contains(agent.name) ? told.at(agent.name) : Facts());
    }

    void expectWhatIsKnown(ComparedDevices& devices, Difference const& difference,
                           OneAgent const& agent, Facts const& told) {
        ++agentsLoaded_;
        factsSeen_ += told.size();
        if (agent.isInOld && agent.isInNew) {
            auto const before = documentOf(devices.before(), agent.agentString);
            auto const after = documentOf(devices.after(), agent.agentString);
            EXPECT_EQ(inOneOnly(told, DocumentFacts(before, after, agent.key).take()), "")
                << agent.name;
            return;
        }
        auto& device = agent.isInOld ? devices.before() : devices.after();
        expectAllOf(difference, agent, documentOf(device, agent.agentString), told);
    }

    // An agent that came or went is told with its explicit mounts, and with its fault.
    void expectAllOf(Difference const& difference, OneAgent const& agent, Json const& document,
                     Facts const& told) {
        auto const kind = agent.isInOld ? ChangeKind::agentRemoved : ChangeKind::agentAdded;
        Facts known{fact(kind, "", "", "")};
        if (document.contains("error"))
            known.insert(agent.isInOld
                             ? fact(ChangeKind::faultRemoved, "", document.at("error"), "")
                             : fact(ChangeKind::faultAdded, "", "", document.at("error")));
        EXPECT_EQ(inOneOnly(told, known), "") << agent.name;
        if (document.contains("error"))
            return;
        EXPECT_EQ(inOneOnly(mountsTold(difference, agent.name), mountsKnown(document)), "")
            << agent.name;
    }
    static Facts mountsTold(Difference const& difference, std::string const& agent) {
        Facts mounts;
        for (auto const& change : difference.changes)
            for (auto const& mount : change.mounts)
                if (mount.agent == agent)
                    mounts.insert(fmt::format("{} {} {}", mount.path, mount.type, mount.flags));
        return mounts;
    }
    static Facts mountsKnown(Json const& document) {
        Facts mounts;
        auto const text = [](Json const& value) { return value.get<std::string>(); };
        for (auto const& mount : document.at("mounts"))
            if (isExplicit(mount))
                mounts.insert(fmt::format("{} {} {}", text(mount["path"]), text(mount["type"]),
                                          text(mount["flags"])));
        return mounts;
    }

    support::CleanEnvironment environment_;
};

// A longer run: KELDA_RANDOM_EDITS=1000:500 tool_unit_tests --gtest_filter='*ThatEditsTouch'
TEST_F(Oracle, KnowsWhatTheDifferenceTellsOfTheAgentsThatEditsTouch) {
    std::uint64_t first = 1;
    std::uint64_t count = 10;
    if (char const* const chosen = std::getenv("KELDA_RANDOM_EDITS")) {
        char* end = nullptr;
        first = std::strtoull(chosen, &end, 10);
        count = std::strtoull(end + 1, nullptr, 10);
    }
    for (auto seed = first; seed < first + count && !HasFailure(); ++seed)
        compare(seed, 30);
    EXPECT_GT(factsSeen_, agentsLoaded_);
}

TEST_F(Oracle, KnowsWhatTheDifferenceTellsOfEveryAgent) {
    compare(101, 10'000);
    EXPECT_GT(agentsLoaded_, 260U);
}

} // namespace
