// The tree of all paths: which nodes there are, and which of them are patterns of others.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <set>

#include "database/checks/PathTree.h"

namespace {

using KeldaDatabase::Device;
using KeldaDatabase::PathTree;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Texts = std::vector<std::string>;

Device deviceOf(Texts const& declared, Texts const& mounted) {
    Device device;
    device.profiles.emplace_back();
    for (auto const& path : declared)
        device.preinits.push_back({path, "T", {}, false, {}});
    for (auto const& path : mounted) {
        device.mounts.emplace_back();
        device.mounts.back().path = path;
        device.mounts.back().profile = 0;
    }
    device.profiles[0].mounts = {0, mounted.size()};
    return device;
}

Texts patternsOfMount(PathTree const& tree, std::size_t mount) {
    Texts patterns;
    tree.forEachPatternOfMount(
        mount, [&](PathTree::NodeId node) { patterns.push_back(tree.pathOf(node)); });
    return patterns;
}

TEST(PathTree, HasOneNodeForEachPathWithAStarForEachToken) {
    auto const device = deviceOf({"a/%x/b", "a/%y/b", "a", "a/fan-%x-%y"}, {"a/*/b", "c", "c"});
    PathTree const tree(device);
    EXPECT_EQ(tree.ofDeclaration(0), tree.ofDeclaration(1));
    EXPECT_EQ(tree.ofDeclaration(0), tree.ofMount(0));
    EXPECT_EQ(tree.ofMount(1), tree.ofMount(2));
    EXPECT_EQ(tree.pathOf(tree.ofDeclaration(0)), "a/*/b");
    EXPECT_EQ(tree.pathOf(tree.ofDeclaration(3)), "a/fan-*-*");
    EXPECT_TRUE(tree.hasChildren(tree.ofDeclaration(2)));
    EXPECT_FALSE(tree.hasChildren(tree.ofMount(0)));
    EXPECT_EQ(tree.size(), 6U);
}

TEST(PathTree, TellsUnusualPathsApart) {
    Texts const paths = {"", "/", "/a", "a", "a/", "a//b", "a/b", "ab", "a/bc", "a/b/c", "*", "**"};
    PathTree const tree(deviceOf(paths, paths));
    std::set<PathTree::NodeId> nodes;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        EXPECT_EQ(tree.pathOf(tree.ofDeclaration(i)), paths[i]);
        EXPECT_EQ(tree.ofMount(i), tree.ofDeclaration(i));
        nodes.insert(tree.ofMount(i));
    }
    EXPECT_EQ(nodes.size(), paths.size());
}

TEST(PathTree, TakesAPercentSignInAMountAsText) {
    PathTree const tree(deviceOf({"a/%x/b"}, {"a/%x/b", "a/%x/c"}));
    EXPECT_EQ(tree.pathOf(tree.ofMount(0)), "a/%x/b");
    EXPECT_EQ(tree.pathOf(tree.ofMount(1)), "a/%x/c");
    EXPECT_THAT(patternsOfMount(tree, 0), ElementsAre("a/*/b"));
}

TEST(PathTree, HasNoNodeForARefusedMount) {
    auto device = deviceOf({}, {"a", "b"});
    device.mounts[0].isRefused = true;
    PathTree const tree(device);
    EXPECT_EQ(tree.ofMount(0), KeldaDatabase::none);
    EXPECT_EQ(tree.size(), 2U);
}

TEST(PathTree, FindsThePatternsOfAMount) {
    auto const device = deviceOf({"hw/fan/%slot/%n", "hw/%kind/3/1", "cell/%cellId/x",
                                  "fan-%slot/a", "fan-%slot-x/a", "%any/a", "hw/fan"},
                                 {"hw/fan/*/1", "hw/fan/3/1", "cell/1/x", "fan-2/a", "fan-*/a",
                                  "fan-/a", "fax/a", "cell/1/x/y"});
    PathTree const tree(device);
    EXPECT_THAT(patternsOfMount(tree, 0), ElementsAre("hw/fan/*/*"));
    EXPECT_THAT(patternsOfMount(tree, 1),
                UnorderedElementsAre("hw/*/3/1", "hw/fan/*/1", "hw/fan/*/*"));
    EXPECT_THAT(patternsOfMount(tree, 2), ElementsAre("cell/*/x"));
    EXPECT_THAT(patternsOfMount(tree, 3), UnorderedElementsAre("*/a", "fan-*/a"));
    EXPECT_THAT(patternsOfMount(tree, 4), ElementsAre("*/a"));
    EXPECT_THAT(patternsOfMount(tree, 5), UnorderedElementsAre("*/a", "fan-*/a"));
    EXPECT_THAT(patternsOfMount(tree, 6), ElementsAre("*/a"));
    EXPECT_THAT(patternsOfMount(tree, 7), IsEmpty());
}

TEST(PathTree, LetsAValueWithASlashStandForAToken) {
    auto device = deviceOf({"x/%dir/y"}, {"x/a/b/y", "x/a/b/z"});
    KeldaDatabase::Alias alias;
    alias.name = "%d";
    alias.value = "a/b";
    alias.profile = 0;
    device.aliases.push_back(alias);
    PathTree const tree(device);
    EXPECT_THAT(patternsOfMount(tree, 0), ElementsAre("x/*/y"));
    EXPECT_EQ(tree.accessOf(tree.ofDeclaration(0)), PathTree::mounts);
}

TEST(PathTree, JoinsWhatTheMountsOfAPathDo) {
    auto device = deviceOf({"a/%x", "a/2"}, {"a/1", "a/1", "a/*"});
    device.mounts[0].flags = Fen::MountTable::Flags(0x1);
    device.mounts[2].flags = Fen::MountTable::Flags(0x2);
    PathTree const tree(device);
    EXPECT_EQ(tree.accessOf(tree.ofMount(0)), PathTree::mounts | PathTree::reads);
    EXPECT_EQ(tree.accessOf(tree.ofMount(2)),
              PathTree::mounts | PathTree::reads | PathTree::writes);
    EXPECT_EQ(tree.accessOf(tree.ofDeclaration(1)), 0);
}

TEST(PathTree, PairsNamesOfOneDirectoryThatDifferInCaseOnly) {
    PathTree const tree(deviceOf({"a/Fan/x", "b/fan"}, {"a/fan/X", "a/fAN", "a/fan/Y"}));
    Texts pairs;
    for (auto const& pair : tree.casePairs())
        pairs.push_back(tree.pathOf(pair.first) + " " + tree.pathOf(pair.later));
    EXPECT_THAT(pairs, ElementsAre("a/Fan a/fan", "a/Fan a/fAN"));
}

TEST(PathTree, FindsManyNamesInOneDirectoryAgain) {
    Texts paths;
    for (int i = 0; i < 5000; ++i)
        paths.push_back("d/x" + std::to_string(i) + "-%t/y" + std::to_string(i % 7));
    PathTree const tree(deviceOf(paths, {"d/x4711-3/y0"}));
    EXPECT_EQ(tree.size(), 2U + 5000U * 2 + 2);
    EXPECT_THAT(patternsOfMount(tree, 0), ElementsAre("d/x4711-*/y0"));
}

// A "*" of the pattern for any text, tried character by character.
bool isInstance(std::string_view text, std::string_view pattern) {
    if (pattern.empty())
        return text.empty();
    if (pattern[0] != '*')
        return !text.empty() && text[0] == pattern[0] &&
               isInstance(text.substr(1), pattern.substr(1));
    return isInstance(text, pattern.substr(1)) ||
           (!text.empty() && text[0] != '/' && isInstance(text.substr(1), pattern));
}

RC_GTEST_PROP(PathTree, FindsExactlyThePatternsThatAMountIsAnInstanceOf, ()) {
    auto const piece = rc::gen::element<std::string>("a", "b", "*", "a*", "*b", "", "ab");
    auto const path = rc::gen::map(
        rc::gen::mapcat(rc::gen::inRange<std::size_t>(1, 4),
                        [&](std::size_t n) { return rc::gen::container<Texts>(n, piece); }),
        [](Texts const& pieces) {
            std::string joined = pieces[0];
            for (std::size_t i = 1; i < pieces.size(); ++i)
                joined += "/" + pieces[i];
            return joined;
        });
    auto const declared = *rc::gen::container<Texts>(path);
    auto const mounted = *rc::gen::container<Texts>(path);
    PathTree const tree(deviceOf(declared, mounted));
    for (std::size_t i = 0; i < mounted.size(); ++i) {
        auto const found = patternsOfMount(tree, i);
        for (std::size_t k = 0; k < declared.size(); ++k) {
            bool const isFound = std::ranges::count(found, declared[k]) == 1;
            RC_ASSERT((isFound || declared[k] == mounted[i]) ==
                      isInstance(mounted[i], declared[k]));
        }
    }
}

} // namespace
