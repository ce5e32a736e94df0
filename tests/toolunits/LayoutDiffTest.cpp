// The unified diff of kelda fmt --diff: to the letter, and taken back by applying it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "formatting/Layout.h"
#include "formatting/UnifiedDiff.h"
#include "support/RandomFiles.h"

namespace {

using KeldaTool::unifiedDiff;

std::string numbers(int first, int last) {
    std::string text;
    for (int i = first; i <= last; ++i)
        text += std::to_string(i) + "\n";
    return text;
}

struct Row {
    char const* what;
    std::string before;
    std::string after;
    std::string hunks;
};

class EveryDiff : public testing::TestWithParam<Row> {};

TEST_P(EveryDiff, ReadsLikeThis) {
    auto const& [what, before, after, hunks] = GetParam();
    auto const wanted = hunks.empty() ? "" : "--- F\n+++ F\n" + hunks;
    EXPECT_EQ(unifiedDiff("F", before, after), wanted) << what;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, EveryDiff,
    testing::Values(
        Row{"the same", "a\n", "a\n", ""}, Row{"nothing", "", "", ""},
        Row{"something of nothing", "", "a\n", "@@ -0,0 +1 @@\n+a\n"},
        Row{"nothing of something", "a\nb\n", "", "@@ -1,2 +0,0 @@\n-a\n-b\n"},
        Row{"a line end", "a", "a\n", "@@ -1 +1 @@\n-a\n\\ No newline at end of file\n+a\n"},
        Row{"no line end in the context", " a\nb", "a\nb",
            "@@ -1,2 +1,2 @@\n- a\n+a\n b\n\\ No newline at end of file\n"},
        Row{"three lines around a change", numbers(1, 9), numbers(1, 4) + " 5\n" + numbers(6, 9),
            "@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-5\n+ 5\n 6\n 7\n 8\n"},
        Row{"six lines between do not part changes", "a\n" + numbers(1, 6) + "b\n",
            "A\n" + numbers(1, 6) + "B\n",
            "@@ -1,8 +1,8 @@\n-a\n+A\n 1\n 2\n 3\n 4\n 5\n 6\n-b\n+B\n"},
        Row{"seven do", "a\n" + numbers(1, 7) + "b\n", "A\n" + numbers(1, 7) + "B\n",
            "@@ -1,4 +1,4 @@\n-a\n+A\n 1\n 2\n 3\n@@ -6,4 +6,4 @@\n 5\n 6\n 7\n-b\n+B\n"},
        Row{"a blank line that goes", "\n\na\n", "\na\n", "@@ -1,3 +1,2 @@\n \n-\n a\n"},
        Row{"a blank line that comes", "a\nb\n", "a\n\nb\n", "@@ -1,2 +1,3 @@\n a\n+\n b\n"},
        Row{"changes side by side", "a ,b\nc ,d\n", "a, b\nc, d\n",
            "@@ -1,2 +1,2 @@\n-a ,b\n-c ,d\n+a, b\n+c, d\n"},
        Row{"different lines", "a\nb\n", "c\n", "@@ -1,2 +1 @@\n-a\n-b\n+c\n"}));

TEST(UnifiedDiff, EndsANameWithBlanksAsPatchReadsIt) {
    EXPECT_EQ(unifiedDiff("a b", "c\n", "d\n"), "--- a b\t\n+++ a b\t\n@@ -1 +1 @@\n-c\n+d\n");
}

// --- applying ---

std::vector<std::string> linesOf(std::string const& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        auto const size = std::min(text.find('\n', at), text.size() - 1) + 1 - at;
        lines.push_back(text.substr(at, size));
        at += size;
    }
    return lines;
}

// What the diff makes of a text; throws where it does not fit.
class Patched {
  public:
    Patched(std::string const& text, std::string const& diff)
        : before_(linesOf(text)), diff_(linesOf(diff)) {
        for (at_ = std::min<std::size_t>(2, diff_.size()); at_ < diff_.size(); ++at_)
            apply(diff_[at_]);
        for (; old_ < before_.size(); ++old_)
            after_ += before_[old_];
    }
    std::string const& text() const { return after_; }

  private:
    void apply(std::string const& line) {
        if (line.starts_with("@@"))
            return goTo(line);
        auto content = line.substr(1);
        if (at_ + 1 < diff_.size() && diff_[at_ + 1].starts_with("\\")) {
            content.pop_back();
            ++at_;
        }
        if (line[0] != '+' && (old_ == before_.size() || before_[old_++] != content))
            throw std::runtime_error("does not fit: " + line);
        if (line[0] != '-')
            after_ += content;
    }
    void goTo(std::string const& line) {
        unsigned long first = 0;
        unsigned long count = 1;
        if (std::sscanf(line.c_str(), "@@ -%lu,%lu", &first, &count) < 1)
            throw std::runtime_error("no hunk: " + line);
        for (auto const end = first - (count == 0 ? 0 : 1); old_ < end; ++old_)
            after_ += before_.at(old_);
    }

    std::vector<std::string> before_;
    std::vector<std::string> diff_;
    std::size_t old_ = 0;
    std::size_t at_ = 0;
    std::string after_;
};

std::string randomText(support::Dice& dice) {
    std::string text;
    for (auto i = dice.below(30); i > 0; --i)
        text +=
            dice.oneOf({"a\n", " a\n", "A\n", "b,c\n", "b, c\n", "\n", "\n", " \n", "d\n", "e"});
    return text;
}

TEST(AnyDiff, MakesTheOtherTextOfTheOne) {
    support::Dice dice(1);
    for (int i = 0; i < 5000; ++i) {
        auto const before = randomText(dice);
        auto const after =
            i % 2 == 0 ? randomText(dice)
                       : KeldaTool::formatted(before, KeldaDatabase::FileFamily::preinit).text;
        auto const diff = unifiedDiff("F", before, after);
        ASSERT_EQ(Patched(before, diff).text(), after) << diff;
    }
}

} // namespace
