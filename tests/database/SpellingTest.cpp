// How near names are to each other.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "database/findings/Spelling.h"

namespace {

using namespace KeldaDatabase;

TEST(EditDistance, CountsWhatIsPutInTakenOutChangedOrSwapped) {
    struct Row {
        std::string_view a, b;
        std::size_t distance;
    };
    for (auto const& [a, b, distance] : {
             Row{"", "", 0},
             {"", "abc", 3},
             {"abc", "", 3},
             {"abc", "abc", 0},
             {"ABC", "abc", 0},
             {"abc", "abd", 1},
             {"abc", "abcd", 1},
             {"abc", "bc", 1},
             {"abc", "acb", 1},
             {"abc", "cab", 2},
             {"abcd", "badc", 2},
             {"AB", "ba", 1},
             {"kitten", "sitting", 3},
             {"clock", "lock", 1},
         })
        EXPECT_EQ(editDistance(a, b), distance) << a << " " << b;
}

TEST(NearestName, IsTheFirstOfThoseThatAreEquallyNear) {
    constexpr std::string_view names[] = {"left", "right", "lift", "loft"};
    EXPECT_EQ(nearestTo("left", names, 0), "left");
    EXPECT_EQ(nearestTo("laft", names, 1), "left");
    EXPECT_EQ(nearestTo("LIFTS", names, 1), "lift");
    EXPECT_EQ(nearestTo("night", names, 1), "right");
    EXPECT_EQ(nearestTo("night", names, 0), "");
    EXPECT_EQ(nearestTo("centre", names, 3), "");
    EXPECT_EQ(nearestTo("", names, 3), "");
    EXPECT_EQ(nearestTo(std::string(65, 'x'), std::vector<std::string_view>{"x"}, 100), "");
}

TEST(CaseOfLetters, DoesNotCount) {
    EXPECT_EQ(lowerCase("ABz[`{09_\xc4"), "abz[`{09_\xc4");
    EXPECT_TRUE(equalIgnoringCase("Fan", "fAN"));
    EXPECT_FALSE(equalIgnoringCase("Fan", "Fans"));
    EXPECT_FALSE(equalIgnoringCase("@", "`"));
    EXPECT_TRUE(startsWithIgnoringCase("FanTray", "fan"));
    EXPECT_TRUE(startsWithIgnoringCase("", ""));
    EXPECT_FALSE(startsWithIgnoringCase("Fa", "fan"));
}

} // namespace
