// What holds for the difference of any two devices.
#include <algorithm>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "database/paths/WrittenLine.h"
#include "support/ComparedDevices.h"
#include "support/DatabaseRandom.h"
#include "support/RandomEdits.h"

namespace {

using KeldaDatabase::Change;
using KeldaDatabase::ChangeKind;
using KeldaDatabase::Difference;
using support::ComparedDevices;
using support::FileTexts;

FileTexts randomDevice(std::uint64_t seed) {
    support::RandomDatabase const random(seed, seed % 4 == 0 ? 40 : 3000);
    return support::filesOf(random.device().directory().path());
}

FileTexts withRandomEdits(FileTexts const& files, std::uint64_t seed) {
    support::RandomEdits edits(seed, files);
    for (std::uint64_t i = 0; i <= seed % 5; ++i)
        edits.edit();
    return edits.files();
}

// A device, the same with a few random edits, and what is different.
void forRandomPairs(std::uint64_t count,
                    std::function<void(ComparedDevices&, Difference const&)> const& expect) {
    std::size_t different = 0;
    std::set<ChangeKind> kinds;
    for (std::uint64_t seed = 1; seed <= count && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(fmt::format("device {}", seed));
        auto const files = randomDevice(seed);
        ComparedDevices devices(files, withRandomEdits(files, seed));
        auto const difference = devices.difference();
        expect(devices, difference);
        different += difference.changes.empty() ? 0 : 1;
        for (auto const& change : difference.changes)
            kinds.insert(change.kind);
    }
    EXPECT_GT(different, count / 3);
    // Tokens that take something else hardly ever meet a path that holds them here.
    kinds.insert(ChangeKind::tokensChanged);
    for (auto const& row : KeldaDatabase::changeTable())
        EXPECT_TRUE(count < 600 || kinds.contains(row.kind)) << nameOf(row.kind);
}

// The kind and texts of a change with its places and paths; tokens have no names here and agents
// only what stands before, as the two devices may call them differently.
struct Reflection {
    std::string what;
    std::string cause;
    bool follows = false;
    std::string before, after;
    std::string oldPlaces, newPlaces;
    std::string paths;

    friend auto operator<=>(Reflection const&, Reflection const&) = default;
    friend std::ostream& operator<<(std::ostream& stream, Reflection const& shown) {
        return stream << shown.what << (shown.follows ? " follows" : "") << " by " << shown.cause
                      << ": '" << shown.before << "' -> '" << shown.after << "', "
                      << shown.oldPlaces << " => " << shown.newPlaces << ": " << shown.paths;
    }
};

// The literal part of an agent's name, "-Active-" where it is a variant.
std::string literalPart(std::string agent) {
    constexpr std::string_view infix = "-Active-";
    auto const at = agent.find(infix);
    if (at != std::string::npos)
        agent.erase(at, infix.size() - 1);
    return agent.substr(0, agent.find(at == std::string::npos ? "-%" : "-*")) +
           std::string(at == std::string::npos ? "" : infix);
}

std::string pathsOf(Change const& change) {
    std::multiset<std::string> paths;
    for (auto const& path : change.paths) {
        std::multiset<std::string> agents;
        for (auto const& agent : path.agents)
            agents.insert(literalPart(agent));
        paths.insert(
            fmt::format("{} [{}]", KeldaDatabase::wildcard(path.path), fmt::join(agents, " ")));
    }
    return fmt::format("{}", fmt::join(paths, ", "));
}

std::vector<Reflection> reflections(ComparedDevices& devices, Difference const& difference,
                                    bool areMirrored) {
    std::vector<Reflection> all;
    for (auto const& change : difference.changes) {
        auto const kind = areMirrored ? mirrorOf(change.kind) : change.kind;
        Reflection one{std::string(nameOf(kind)),
                       std::string(nameOf(change.cause)),
                       change.follows,
                       change.before,
                       change.after,
                       devices.shown(change.oldPlaces),
                       devices.shown(change.newPlaces),
                       pathsOf(change)};
        if (areMirrored) {
            std::swap(one.before, one.after);
            std::swap(one.oldPlaces, one.newPlaces);
        }
        all.push_back(std::move(one));
    }
    std::sort(all.begin(), all.end());
    return all;
}

TEST(TheDifferenceUndone, IsTheMirroredDifference) {
    forRandomPairs(600, [](ComparedDevices& devices, Difference const& difference) {
        auto const undone = devices.undone();
        EXPECT_EQ(undone.agentsBefore, difference.agentsAfter);
        EXPECT_EQ(undone.agentsAfter, difference.agentsBefore);
        EXPECT_THAT(reflections(devices, undone, true),
                    testing::ElementsAreArray(reflections(devices, difference, false)));
    });
}

TEST(TheDifference, IsTheSameEachTime) {
    forRandomPairs(200, [](ComparedDevices& devices, Difference const& difference) {
        EXPECT_EQ(devices.changes(), devices.shown(difference)) << "of the same parsers";
        devices.before().reload();
        devices.after().reload();
        EXPECT_EQ(devices.changes(), devices.shown(difference)) << "of new parsers";
    });
}

// The rules of the header about one change.
void expectWellFormed(ComparedDevices& devices, Change const& change) {
    auto const& row = KeldaDatabase::changeTable()[static_cast<std::size_t>(change.kind)];
    auto const text = devices.shown(change);
    EXPECT_LE(row.least, change.severity) << text;
    EXPECT_GE(row.most, change.severity) << text;
    EXPECT_TRUE(!change.follows || change.severity == KeldaDatabase::ChangeClass::harmless) << text;
    EXPECT_FALSE(change.paths.empty()) << text;
    std::set<std::string> agents;
    for (std::size_t i = 0; i < change.paths.size(); ++i) {
        auto const& path = change.paths[i];
        EXPECT_TRUE(i == 0 || change.paths[i - 1].path < path.path) << text;
        EXPECT_TRUE(std::is_sorted(path.agents.begin(), path.agents.end())) << text;
        EXPECT_EQ(path.agents.empty(), change.kind >= ChangeKind::preinitAdded) << text;
        agents.insert(path.agents.begin(), path.agents.end());
    }
    EXPECT_EQ(change.agentCount(), agents.size()) << text;
    EXPECT_TRUE(change.mounts.empty() || change.kind <= ChangeKind::agentRemoved) << text;
    EXPECT_TRUE(std::is_sorted(change.mounts.begin(), change.mounts.end(),
                               [](auto const& a, auto const& b) {
                                   return std::tie(a.agent, a.path) < std::tie(b.agent, b.path);
                               }))
        << text;
}

// Every place is a line of its device.
void expectLines(ComparedDevices& devices, Change const& change, bool areNew) {
    auto& device = areNew ? devices.after() : devices.before();
    auto const files = support::filesOf(device.directory().path());
    for (auto const& place : areNew ? change.newPlaces : change.oldPlaces) {
        auto const file = files.find(device.relative(place.file));
        ASSERT_NE(file, files.end()) << devices.shown(change);
        auto const lines = std::count(file->second.begin(), file->second.end(), '\n') + 1;
        EXPECT_GE(place.line, file->second.empty() ? 0 : 1) << devices.shown(change);
        EXPECT_LE(place.line, lines) << devices.shown(change);
    }
}

// No path of an agent changes twice in the same way, and none is told with the same value before
// and after.
void expectNothingTwice(ComparedDevices& devices, Difference const& difference) {
    std::set<std::string> told;
    for (auto const& change : difference.changes) {
        bool const mayBeEmpty = change.kind <= ChangeKind::agentRemoved ||
                                change.kind == ChangeKind::mountAdded ||
                                change.kind == ChangeKind::mountRemoved;
        EXPECT_TRUE(mayBeEmpty || change.before != change.after) << devices.shown(change);
        for (auto const& path : change.paths)
            for (auto const& agent : path.agents)
                EXPECT_TRUE(told.insert(fmt::format("{} {} {} {} {}", nameOf(change.kind),
                                                    path.path, agent, change.before, change.after))
                                .second)
                    << devices.shown(change);
    }
}

auto orderOf(Change const& change) {
    return std::tuple(-static_cast<int>(change.severity), change.kind, change.paths.front().path);
}

TEST(TheDifference, IsSortedAndWellFormed) {
    forRandomPairs(600, [](ComparedDevices& devices, Difference const& difference) {
        auto const& changes = difference.changes;
        EXPECT_TRUE(
            std::is_sorted(changes.begin(), changes.end(), [](Change const& a, Change const& b) {
                return orderOf(a) < orderOf(b);
            }));
        for (auto const& change : changes) {
            expectWellFormed(devices, change);
            expectLines(devices, change, false);
            expectLines(devices, change, true);
            EXPECT_FALSE(change.oldPlaces.empty() && change.newPlaces.empty())
                << devices.shown(change);
        }
        expectNothingTwice(devices, difference);
        EXPECT_EQ(difference.worst(),
                  changes.empty() ? std::nullopt : std::optional(changes.front().severity));
    });
}

// One byte in every hundred is any byte.
FileTexts withHostileBytes(FileTexts files, std::uint64_t seed) {
    support::Dice dice(seed);
    for (auto& [name, text] : files)
        for (char& byte : text)
            if (dice.oneIn(100))
                byte = static_cast<char>(dice.below(256));
    return files;
}

TEST(TheDifferenceUndone, IsTheMirroredDifferenceWhateverBytesTheFilesHold) {
    std::size_t different = 0;
    for (std::uint64_t seed = 1; seed <= 300 && !HasFailure(); ++seed) {
        SCOPED_TRACE(fmt::format("device {}", seed));
        auto const files = randomDevice(seed);
        ComparedDevices devices(seed % 2 == 0 ? files : withHostileBytes(files, seed + 1000),
                                withHostileBytes(files, seed));
        auto const difference = devices.difference();
        EXPECT_THAT(reflections(devices, devices.undone(), true),
                    testing::ElementsAreArray(reflections(devices, difference, false)));
        different += difference.changes.empty() ? 0 : 1;
    }
    EXPECT_GT(different, 200U);
}

} // namespace
