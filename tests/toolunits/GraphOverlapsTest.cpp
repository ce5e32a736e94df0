// Which paths with "*" concern each other.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <set>

#include "graph/PathOverlaps.h"

namespace {

using KeldaTool::coversPath;
using KeldaTool::coversText;
using KeldaTool::haveCommonText;
using KeldaTool::PathOverlaps;
using testing::ElementsAre;

struct Pair {
    std::string a, b;
    bool haveCommon;
    bool aCoversB;
};

class EveryPair : public testing::TestWithParam<Pair> {};

TEST_P(EveryPair, IsComparedBothWays) {
    auto const& [a, b, haveCommon, aCoversB] = GetParam();
    EXPECT_EQ(haveCommonText(a, b), haveCommon) << a << " " << b;
    EXPECT_EQ(haveCommonText(b, a), haveCommon) << b << " " << a;
    EXPECT_EQ(coversText(a, b), aCoversB) << a << " " << b;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, EveryPair,
    testing::Values(Pair{"a", "a", true, true}, Pair{"a", "b", false, false},
                    Pair{"", "", true, true}, Pair{"", "a", false, false},
                    Pair{"*", "", true, true}, Pair{"*", "a", true, true},
                    Pair{"*", "*", true, true}, Pair{"*", "a*b", true, true},
                    Pair{"a*", "*", true, false}, Pair{"a*", "ab*", true, true},
                    Pair{"a*", "*b", true, false}, Pair{"a*a", "a", false, false},
                    Pair{"a*a", "aa", true, true}, Pair{"*b*", "ac", false, false},
                    Pair{"*b*", "abc", true, true}, Pair{"*b*", "a*c", true, false},
                    Pair{"a*b*c", "abbc", true, true}, Pair{"a*b*c", "acb", false, false},
                    Pair{"a*b*c", "abc", true, true}, Pair{"?", "a", false, false},
                    Pair{"**", "*", true, true}, Pair{"Port-*-1", "Port-*-2", false, false}));

// All texts of two letters up to a length.
std::vector<std::string> textsUpTo(std::size_t length) {
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; i < texts.size(); ++i)
        if (texts[i].size() < length)
            for (char const c : {'a', 'b'})
                texts.push_back(texts[i] + c);
    return texts;
}

std::string anyTextWithStars() {
    return *rc::gen::resize(4, rc::gen::container<std::string>(rc::gen::element('a', 'b', '*')));
}

// Two patterns of up to four characters have a common instance of up to eight if they have any.
RC_GTEST_PROP(TextsWithStars, HaveACommonInstanceIfThereIsOne, ()) {
    static auto const texts = textsUpTo(8);
    auto const a = anyTextWithStars();
    auto const b = anyTextWithStars();
    bool const expected = std::any_of(texts.begin(), texts.end(), [&](std::string const& text) {
        return coversText(a, text) && coversText(b, text);
    });
    RC_ASSERT(haveCommonText(a, b) == expected);
}

RC_GTEST_PROP(TextsWithStars, CoverEachOtherIfAllInstancesDo, ()) {
    static auto const texts = textsUpTo(8);
    auto const pattern = anyTextWithStars();
    auto const text = anyTextWithStars();
    if (coversText(pattern, text))
        for (auto const& instance : texts)
            RC_ASSERT(!coversText(text, instance) || coversText(pattern, instance));
}

TEST(Paths, CoverEachOtherSegmentBySegment) {
    EXPECT_TRUE(coversPath("a/*", "a/1"));
    EXPECT_TRUE(coversPath("a/*", "a/*"));
    EXPECT_TRUE(coversPath("a/*", "a/"));
    EXPECT_FALSE(coversPath("a/*", "a"));
    EXPECT_FALSE(coversPath("a/*", "a/1/2"));
    EXPECT_FALSE(coversPath("*", "a/1"));
    EXPECT_FALSE(coversPath("a/1", "a/*"));
}

TEST(PathOverlaps, AreFoundByWhatStandsBeforeTheStars) {
    std::vector<std::string> const paths{"a/b/c", "a/*/c", "a/b*/c", "a/x/c",
                                         "*/b/c", "a/b",   "a/c*"};
    PathOverlaps overlaps;
    for (std::uint32_t i = 0; i < paths.size(); ++i)
        overlaps.add(paths[i], i);
    EXPECT_THAT(overlaps.of("a/b/c"), ElementsAre(0, 1, 2, 4));
    EXPECT_THAT(overlaps.of("a/*/c"), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_THAT(overlaps.of("a/*b/c"), ElementsAre(0, 1, 2, 4));
    EXPECT_THAT(overlaps.of("a/*"), ElementsAre(5, 6));
    EXPECT_THAT(overlaps.of("a/c"), ElementsAre(6));
    EXPECT_THAT(overlaps.of("a"), ElementsAre());
    EXPECT_THAT(overlaps.of("a/b/c/d"), ElementsAre());
}

bool overlap(std::string a, std::string b) {
    for (;;) {
        auto const endOfA = std::min(a.find('/'), a.size());
        auto const endOfB = std::min(b.find('/'), b.size());
        if (!haveCommonText(a.substr(0, endOfA), b.substr(0, endOfB)))
            return false;
        if (endOfA == a.size() || endOfB == b.size())
            return endOfA == a.size() && endOfB == b.size();
        a.erase(0, endOfA + 1);
        b.erase(0, endOfB + 1);
    }
}

RC_GTEST_PROP(PathOverlapsProperty, AreThoseOfAllPairs, ()) {
    auto const paths = *rc::gen::container<std::set<std::string>>(rc::gen::resize(
        6,
        rc::gen::nonEmpty(rc::gen::container<std::string>(rc::gen::element('a', 'b', '*', '/')))));
    PathOverlaps overlaps;
    std::uint32_t id = 0;
    for (auto const& path : paths)
        overlaps.add(path, id++);
    for (auto const& path : paths) {
        std::vector<std::uint32_t> expected;
        id = 0;
        for (auto const& other : paths) {
            if (overlap(path, other))
                expected.push_back(id);
            ++id;
        }
        RC_ASSERT(overlaps.of(path) == expected);
    }
}

} // namespace
