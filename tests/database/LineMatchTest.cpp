// Which lines of a file are there in another version of it.
#include <random>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "database/diff/LineMatch.h"

namespace {

using KeldaDatabase::FileFamily;
using KeldaDatabase::LineMatch;
using KeldaDatabase::SourceText;
using KeldaDatabase::WrittenFile;
using testing::ElementsAre;
using Version = LineMatch::Version;

// "1=2" for a line that is there, "1~2" for one that was edited, "1>2" for one in whose place
// another one stands, "1-" for one that is gone.
std::vector<std::string> matched(WrittenFile const& from, LineMatch const& match, Version version) {
    std::vector<std::string> shown;
    for (auto const& line : from.lines()) {
        auto const same = match.same(version, line.number);
        auto const edited = match.edited(version, line.number);
        auto const replaced = match.replaced(version, line.number);
        shown.push_back(same       ? fmt::format("{}={}", line.number, *same)
                        : edited   ? fmt::format("{}~{}", line.number, *edited)
                        : replaced ? fmt::format("{}>{}", line.number, *replaced)
                                   : fmt::format("{}-", line.number));
    }
    return shown;
}

struct Versions {
    Versions(std::string const& old, std::string const& now)
        : before(SourceText(old), FileFamily::profile), after(SourceText(now), FileFamily::profile),
          match(before, after) {}

    std::vector<std::string> forward() const { return matched(before, match, Version::before); }
    std::vector<std::string> backward() const { return matched(after, match, Version::after); }

    WrittenFile before, after;
    LineMatch match;
};

TEST(LineMatch, LooksNeitherAtLayoutNorAtComments) {
    Versions const versions("a,T,r\nMountGroup: g\nb,T,\\\n  w\n",
                            "# new\n\n a , T , r # first\nMountGroup:g\nb,T,w\n");
    EXPECT_THAT(versions.forward(), ElementsAre("1=3", "2=4", "3=5"));
}

TEST(LineMatch, FindsLinesThatWereMoved) {
    EXPECT_THAT(Versions("a,T,r\nb,T,r\nc,T,r\n", "c,T,r\na,T,r\nb,T,r\n").forward(),
                ElementsAre("1=2", "2=3", "3=1"));
}

TEST(LineMatch, TellsEqualLinesApartByWhatStandsAroundThem) {
    Versions const versions("alias:%f=left\nf/%f,T,r\nalias:%f=right\nf/%f,T,r\n",
                            "alias:%f=right\nf/%f,T,r\n");
    EXPECT_THAT(versions.forward(), ElementsAre("1-", "2-", "3=1", "4=2"));
    EXPECT_THAT(versions.backward(), ElementsAre("1=3", "2=4"));
}

TEST(LineMatch, TakesALineAboutTheSameForAnEditedOne) {
    EXPECT_THAT(Versions("a,T,r\nrootFlags:r\nalias:%x=1\nalias:%y=1\n",
                         "alias:%y=2\nROOTFLAGS: w\nalias:%x=1\na,T,w\n")
                    .forward(),
                ElementsAre("1~4", "2~2", "3=3", "4~1"));
}

TEST(LineMatch, TakesALineInTheSamePlaceForAReplacedOne) {
    EXPECT_THAT(Versions("x,T,r\na,T,r\nb,T,r\ny,T,r\n", "x,T,r\nc,T,r\ny,T,r\nd,T,r\n").forward(),
                ElementsAre("1=1", "2>2", "3-", "4=3"));
}

TEST(LineMatch, TakesOfEqualLinesTheOneThatStandsBeforeTheSame) {
    EXPECT_THAT(Versions("q\na\nr\na\nu\n", "a\nu\n").forward(),
                ElementsAre("1-", "2-", "3-", "4=1", "5=2"));
}

// Which of several ways is taken must not hang on which version is the older one.
TEST(LineMatch, IsTheSameFromBothSides) {
    std::mt19937 random(1);
    auto const anyText = [&] {
        std::string text;
        for (auto lines = random() % 8; lines-- > 0;)
            text.append({static_cast<char>('a' + random() % 5), '\n'});
        return text;
    };
    for (int i = 0; i < 3000 && !testing::Test::HasFailure(); ++i) {
        auto const old = anyText();
        auto const now = anyText();
        EXPECT_EQ(Versions(old, now).forward(), Versions(now, old).backward()) << old << "and\n"
                                                                               << now;
    }
}

TEST(WrittenFile, FindsALineByAnyOfItsPieces) {
    WrittenFile const file(SourceText("\n# c\na,T,\\\nr\nb,T,r\n"), FileFamily::profile);
    EXPECT_EQ(file.at(2), std::nullopt);
    EXPECT_EQ(file.at(3), 0U);
    EXPECT_EQ(file.at(4), 0U);
    EXPECT_EQ(file.at(5), 1U);
}

} // namespace
