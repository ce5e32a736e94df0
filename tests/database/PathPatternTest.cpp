// Patterns of paths: what each wildcard stands for, and that the answer is that of plain recursion.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "database/paths/PathPattern.h"

namespace {

using KeldaDatabase::PathPattern;

struct Sample {
    std::string pattern;
    std::string path;
    bool matches;

    friend std::ostream& operator<<(std::ostream& stream, Sample const& sample) {
        return stream << "'" << sample.pattern << "' and '" << sample.path << "'";
    }
};

class EverySample : public testing::TestWithParam<Sample> {};

TEST_P(EverySample, HasACommonInstanceOrHasNone) {
    EXPECT_EQ(PathPattern(GetParam().pattern).matches(GetParam().path), GetParam().matches);
}

INSTANTIATE_TEST_SUITE_P(LiteralText, EverySample,
                         testing::Values(Sample{"sys/clock", "sys/clock", true},
                                         Sample{"sys/clock", "sys/clocks", false},
                                         Sample{"sys/clock", "sys/cloc", false},
                                         Sample{"sys/clock", "sys", false},
                                         Sample{"sys/clock", "sys/clock/zone", false},
                                         Sample{"sys/clock", "sys/Clock", false},
                                         Sample{"a[b]{c}.\\", "a[b]{c}.\\", true},
                                         Sample{"a[b]", "ab", false}, Sample{"a//b", "a/b", false},
                                         Sample{"a//b", "a//b", true}, Sample{"", "", true},
                                         Sample{"", "a", false}));

INSTANTIATE_TEST_SUITE_P(ASlashAtTheEnd, EverySample,
                         testing::Values(Sample{"a/b/", "a/b", true}, Sample{"a/*/", "a/b", true},
                                         Sample{"a/**/", "a/b/c", true},
                                         Sample{"a/b//", "a/b", false},
                                         Sample{"a/b//", "a/b/", true}, Sample{"/", "", true}));

INSTANTIATE_TEST_SUITE_P(StarInThePattern, EverySample,
                         testing::Values(Sample{"a/*", "a/b", true}, Sample{"a/*", "a/", true},
                                         Sample{"a/*", "a", false}, Sample{"a/*", "a/b/c", false},
                                         Sample{"a/*/c", "a/b/c", true},
                                         Sample{"a/b*", "a/b", true}, Sample{"a/b*", "a/c", false},
                                         Sample{"*/b", "a/b", true}, Sample{"*b*", "abc", true},
                                         Sample{"*b*", "acc", false}, Sample{"a***b", "ab", true},
                                         Sample{"a**b", "a/b", false}));

INSTANTIATE_TEST_SUITE_P(
    StarInThePath, EverySample,
    testing::Values(Sample{"card/3/state", "card/*/state", true},
                    Sample{"card/state", "card/*/state", false},
                    Sample{"card/3/4/state", "card/*/state", false},
                    Sample{"card/*/state", "card/*/state", true},
                    Sample{"leak/a-b", "leak/*-*", true}, Sample{"leak/ab", "leak/*-*", false},
                    Sample{"leak/*b", "leak/a*", true}, Sample{"leak/b*", "leak/a*", false},
                    Sample{"x*y", "*x", false}, Sample{"x*y", "*xy", true}, Sample{"x", "**", true},
                    Sample{"a/b", "**", false}, Sample{"a", "*a*", true}, Sample{"", "*", true},
                    Sample{"?", "*", true}));

INSTANTIATE_TEST_SUITE_P(
    QuestionMark, EverySample,
    testing::Values(Sample{"a?c", "abc", true}, Sample{"a?c", "ac", false},
                    Sample{"a?c", "a/c", false}, Sample{"?", "\u00e9", true},
                    Sample{"??", "\u00e9", false}, Sample{"*??", "\u00e9", false},
                    Sample{"?", "\u6e29", true}, Sample{"?", "\xff", true},
                    Sample{"??", "\x80\x80", true}, Sample{"?", "\x80\x80", false},
                    Sample{"caf?s", "caf\u00e9s", true}, Sample{"a?", "a?", true},
                    Sample{"a/?", "a/*b", true}, Sample{"a/?", "a/*bc", false}));

INSTANTIATE_TEST_SUITE_P(
    TwoStarsAsASegment, EverySample,
    testing::Values(Sample{"**", "", true}, Sample{"**", "a/b/c", true}, Sample{"a/**", "a", true},
                    Sample{"a/**", "a/b/c", true}, Sample{"a/**", "ab", false},
                    Sample{"a/**", "ab/c", false}, Sample{"**/c", "c", true},
                    Sample{"**/c", "a/b/c", true}, Sample{"**/c", "a/c/b", false},
                    Sample{"a/**/c", "a/c", true}, Sample{"a/**/c", "a/c/c", true},
                    Sample{"a/**/b/**/c", "a/b/x/b/c", true}, Sample{"a/**/b/**/c", "a/x/c", false},
                    Sample{"**/**/a", "a", true}, Sample{"**/3/x", "a/*/x", true}));

TEST(PathPattern, SaysWhetherItIsLiteral) {
    EXPECT_TRUE(PathPattern("a/b[c]").isLiteral());
    for (auto const* const pattern : {"*", "a/?", "a/**/b", "a*"})
        EXPECT_FALSE(PathPattern(pattern).isLiteral()) << pattern;
}

using Segments = std::vector<std::string>;

Segments segmentsOf(std::string text) {
    Segments segments;
    for (auto at = text.find('/'); at != std::string::npos; at = text.find('/')) {
        segments.push_back(text.substr(0, at));
        text.erase(0, at + 1);
    }
    segments.push_back(text);
    return segments;
}

// The definition, tried out in every way.
bool segmentsMeet(std::string_view pattern, std::string_view text) {
    if (pattern.empty() && text.empty())
        return true;
    if (pattern.starts_with('*') && (segmentsMeet(pattern.substr(1), text) ||
                                     (!text.empty() && segmentsMeet(pattern, text.substr(1)))))
        return true;
    if (text.starts_with('*') && (segmentsMeet(pattern, text.substr(1)) ||
                                  (!pattern.empty() && segmentsMeet(pattern.substr(1), text))))
        return true;
    return !pattern.empty() && !text.empty() && pattern[0] != '*' && text[0] != '*' &&
           (pattern[0] == '?' || pattern[0] == text[0]) &&
           segmentsMeet(pattern.substr(1), text.substr(1));
}

bool meet(Segments const& pattern, std::size_t i, Segments const& path, std::size_t j) {
    if (i == pattern.size())
        return j == path.size();
    if (pattern[i] == "**" &&
        (meet(pattern, i + 1, path, j) || (j < path.size() && meet(pattern, i, path, j + 1))))
        return true;
    return pattern[i] != "**" && j < path.size() && segmentsMeet(pattern[i], path[j]) &&
           meet(pattern, i + 1, path, j + 1);
}

std::string random(std::string const& alphabet, int size) {
    return *rc::gen::resize(size, rc::gen::container<std::string>(rc::gen::elementOf(alphabet)));
}

RC_GTEST_PROP(PathPattern, AnswersAsPlainRecursionDoes, ()) {
    auto const pattern = random("aab//**?", 12);
    auto const path = random("aab//*", 12);
    auto stripped = pattern;
    if (stripped.ends_with('/'))
        stripped.pop_back();
    bool const expected = meet(segmentsOf(stripped), 0, segmentsOf(path), 0);
    RC_CLASSIFY(expected);
    RC_ASSERT(PathPattern(pattern).matches(path) == expected);
}

// What was made from both is an instance of both.
RC_GTEST_PROP(PathPattern, MeetsAPathThatItWasMadeFrom, ()) {
    auto const instance = random("ab/", 20);
    std::string pattern;
    std::string path;
    for (char const c : instance) {
        bool const isSlash = c == '/';
        pattern += isSlash ? '/' : *rc::gen::element(c, c, '*', '?');
        path += isSlash ? '/' : *rc::gen::element(c, c, c, '*');
    }
    if (pattern.ends_with('/'))
        pattern += '/';
    RC_ASSERT(PathPattern(pattern).matches(path));
    RC_ASSERT(PathPattern("**").matches(path));
}

// Steps in proportion to the product of the lengths, however many ways there are to try.
TEST(PathPattern, IsNotSlowWhereThereAreManyWays) {
    std::string stars;
    std::string anyNumbers;
    std::string path;
    for (int i = 0; i < 400; ++i) {
        stars += "*a";
        anyNumbers += "**/a/";
        path += "a/";
    }
    auto const begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(PathPattern(stars + "b").matches(std::string(1000, 'a')));
    EXPECT_FALSE(PathPattern(stars + "b").matches(stars + "c"));
    EXPECT_FALSE(PathPattern(anyNumbers + "b").matches(path + "c"));
    EXPECT_TRUE(PathPattern(stars).matches(std::string(1000, 'a')));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

} // namespace
