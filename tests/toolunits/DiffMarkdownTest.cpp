// The differences of two devices as the comment of a review.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <regex>

#include <fmt/format.h>

#include "DiffSamples.h"
#include "diff/DiffFormats.h"

namespace {

using namespace toolunits;
using KeldaTool::commentLimit;
using KeldaTool::diffMarkdown;

// The only row of a comment with one change.
std::string rowOf(Change const& change) {
    auto const text = diffMarkdown(diffOf({change}));
    auto const begin = text.find("| --- |\n") + 8;
    return text.substr(begin, text.find('\n', begin) - begin);
}

// What a reader of Markdown takes for more than text: all but code spans, the two signs that stand
// between them, and the elements that comments have.
std::string withoutCode(std::string const& markdown) {
    auto const text = std::regex_replace(markdown, std::regex("`[^`\n]*`"), "");
    return std::regex_replace(text, std::regex("&#(124|96);|<(br|/?(details|summary))>"), "");
}

std::size_t rowsIn(std::string const& markdown) {
    auto const lines = linesOf(markdown);
    return static_cast<std::size_t>(
        std::count_if(lines.begin(), lines.end(), [](std::string const& line) {
            return line.starts_with("| ") && !line.starts_with("| --- ") &&
                   !line.starts_with("| Change ");
        }));
}

TEST(DiffMarkdown, HasATableForEachClass) {
    EXPECT_EQ(
        diffMarkdown(sampleDiff()),
        "**4 changes (1 dangerous, 1 risky, 1 notable, 1 harmless) for 4 of 19 agents**\n"
        "\n"
        "2 changes of a lesser class left out\n"
        "\n"
        "1 change left out that only follows from others; see --verbose\n"
        "\n"
        "#### 1 dangerous change: agents may not start, or lack what they had\n"
        "\n"
        "| Change | Agents | Lines |\n"
        "| --- | --- | --- |\n"
        "| mount removed<br>`sys/log`<br>flags were: `r` | `Led` | old `old/profiles/Led:3`: "
        "`sys/log, Sys::Log, r` |\n"
        "\n"
        "#### 1 risky change: agents may act otherwise, or write what they did not write\n"
        "\n"
        "| Change | Agents | Lines |\n"
        "| --- | --- | --- |\n"
        "| flags widened<br>`cell/1/health`<br>`r` -> `rw` (`+w`) | `Routing-%table`, "
        "`Routing-Active-*` | old `old/profiles/shared.cell:2`: `%cellPath/health, Cell::Health, "
        "r`<br>new `new/profiles/shared.cell:12`: `%cellPath/health, Cell::Health, rw`<br>included "
        "by `new/profiles/Routing:22`<br>included by `new/profiles/Outer:1` |\n"
        "\n"
        "#### 1 notable change: agents get more than they had, and only read it\n"
        "\n"
        "| Change | Agents | Lines |\n"
        "| --- | --- | --- |\n"
        "| agent added<br><details><summary>mounts 2 paths</summary>`fan/%slot/speed` "
        "`rw`<br>`sys/clock` `r`</details> | `Fan-%slot` | because the file is new<br>new "
        "`new/profiles/Fan:1`: `agentName: Fan-%slot` |\n"
        "\n"
        "<details><summary>1 harmless change: no agent loses anything, or does anything that it "
        "did "
        "not do</summary>\n"
        "\n"
        "| Change | Agents | Lines |\n"
        "| --- | --- | --- |\n"
        "| declaration added<br>`sys/spare`<br>type: `Sys::Spare` |  | new `new/preinit/System:9`: "
        "`sys/spare, Sys::Spare` |\n"
        "\n"
        "</details>\n");
}

TEST(DiffMarkdown, WithoutChangesIsASentence) {
    EXPECT_EQ(diffMarkdown(diffOf({})), "**no differences in meaning**\n");
}

TEST(DiffMarkdown, HasTheDeviceOfManyAsItsHeading) {
    auto result = diffOf({});
    result.device = "rack `1`";
    EXPECT_EQ(diffMarkdown(result), "### `rack `&#96;`1`&#96;\n\n**no differences in meaning**\n");
}

TEST(DiffMarkdown, FoldsALongListOfAgents) {
    auto made = change(ChangeKind::typeChanged, ChangeClass::dangerous, "A", "B");
    made.paths.front().agents = {"A1", "A2", "A3", "A4"};
    EXPECT_EQ(rowOf(made), "| type changed<br>`sys/log`<br>`A` -> `B` | <details><summary>4 agents"
                           "</summary>`A1`, `A2`, `A3`, `A4`</details> |  |");
    made.paths.front().agents.clear();
    for (int i = 100; i < 200; ++i)
        made.paths.front().agents.push_back(fmt::format("A{}", i));
    EXPECT_NE(rowOf(made).find("<summary>100 agents</summary>`A100`, "), std::string::npos);
    EXPECT_NE(rowOf(made).find(", `A139`, and 60 more</details>"), std::string::npos);
}

TEST(DiffMarkdown, NamesTheFirstOfManyPathsMountsAndLines) {
    auto made = change(ChangeKind::agentRemoved, ChangeClass::dangerous, "", "");
    made.paths.clear();
    for (int i = 0; i < 7; ++i)
        made.paths.push_back({fmt::format("p{}", i), {"A"}, ""});
    for (int i = 0; i < 50; ++i)
        made.mounts.push_back({"A", fmt::format("m{}", i), "T", "r"});
    for (int i = 1; i < 6; ++i)
        made.oldPlaces.push_back({"f", i, {}, ""});
    auto const row = rowOf(made);
    EXPECT_NE(row.find("`p4`<br>and 2 more<br>"), std::string::npos) << row;
    EXPECT_NE(row.find("<summary>mounted 50 paths</summary>`m0` `r`<br>"), std::string::npos)
        << row;
    EXPECT_NE(row.find("`m39` `r`<br>and 10 more</details>"), std::string::npos) << row;
    EXPECT_NE(row.find("old `f:3`<br>and 2 more lines |"), std::string::npos) << row;
}

struct Coded {
    std::string name, code;
};

TEST(DiffMarkdown, ShowsWhatComesFromFilesAsCode) {
    for (auto const& [name, code] : {
             Coded{"a|b", "`a`&#124;`b`"},
             {"|", "&#124;"},
             {"a\\|b", "`a\\`&#124;`b`"},
             {"`a``b`", "&#96;`a`&#96;&#96;`b`&#96;"},
             {"<script>alert(1)</script>", "`<script>alert(1)</script>`"},
             {"</details><h1>", "`</details><h1>`"},
             {"@everybody", "`@everybody`"},
             {"#1 !2 owner/name#3", "`#1 !2 owner/name#3`"},
             {"[here](https://example.org)", "`[here](https://example.org)`"},
             {"![](x.png)", "`![](x.png)`"},
             {"**bold** _it_ &amp; $x$", "`**bold** _it_ &amp; $x$`"},
             {"two\nlines", "`two\\x0alines`"},
             {"bad\xff\u202e", "`bad\\xff\\u{202e}`"},
         }) {
        auto made = change(ChangeKind::typeChanged, ChangeClass::dangerous, "A", "B");
        made.paths = {{"p", {name}, ""}};
        EXPECT_EQ(rowOf(made), fmt::format("| type changed<br>`p`<br>`A` -> `B` | {} |  |", code));
    }
}

// Everything that a difference holds, with a word by which it is found again.
DiffResult markedDiff(std::string const& hostile) {
    auto const marked = "evil" + hostile + "evil";
    std::vector<Change> changes;
    for (auto const& row : KeldaDatabase::changeTable())
        for (auto const cause : {ChangeCause::alias, ChangeCause::line}) {
            auto made = change(row.kind, row.most, marked, marked + marked);
            made.cause = cause;
            made.paths = {{marked, {marked}, marked}, {"p", {"A", "B", "C", marked}, marked}};
            made.oldPlaces = {{marked, 1, {{marked, 2}}, "%" + marked}};
            made.newPlaces = made.oldPlaces;
            made.mounts = {{marked, marked, marked, marked}};
            changes.push_back(made);
        }
    auto result = diffOf(std::move(changes));
    result.device = marked;
    return result;
}

TEST(DiffMarkdown, HasNothingFromFilesOutsideOfCode) {
    for (std::string const hostile :
         {"",    "`",  "``", "|",    "\\",    "\\`", "`|`",    "\n",   "\n\n# ", "<b>",
          "-->", "@x", "#1", "](x)", "&#96;", "\r",  "\u2028", "\xff", "\u0301", "`\n`"}) {
        auto const text = diffMarkdown(markedDiff(hostile));
        EXPECT_EQ(withoutCode(text).find("evil"), std::string::npos) << text;
        EXPECT_GT(rowsIn(text), 40U);
    }
}

// A comment of lines that are what they are meant to be.
void expectWellFormed(std::string const& text) {
    for (auto const& line : linesOf(withoutCode(text))) {
        EXPECT_EQ(line.find_first_of("`<[]@&\\"), std::string::npos) << line;
        auto const number = line.find('#');
        EXPECT_TRUE(number == std::string::npos || line.starts_with("###")) << line;
    }
    for (auto const& line : linesOf(text))
        EXPECT_EQ(std::count(line.begin(), line.end(), '|'), line.starts_with("|") ? 4 : 0) << line;
    EXPECT_TRUE(isFitForATerminal(text)) << text;
}

RC_GTEST_PROP(DiffMarkdownProperty, IsWellFormedWhateverThereIs, ()) {
    auto const result = anyDiff();
    auto const text = diffMarkdown(result);
    expectWellFormed(text);
    RC_ASSERT(text.size() < commentLimit);
}

std::size_t countOf(std::string const& text, std::string const& sought) {
    std::size_t count = 0;
    for (auto at = text.find(sought); at != std::string::npos; at = text.find(sought, at + 1))
        ++count;
    return count;
}

// What is behind the first change without room is left out, too, and all of it is counted.
TEST(DiffMarkdown, HasRoomInACommentHoweverManyChangesThereAre) {
    for (std::size_t const count : {200U, 1000U, 5000U})
        for (auto const severity : {ChangeClass::dangerous, ChangeClass::harmless}) {
            std::vector<Change> changes(
                count, change(ChangeKind::typeChanged, severity, "A", std::string(90, '|')));
            changes.push_back(change(ChangeKind::preinitAdded, ChangeClass::harmless, "", "T"));
            auto const text = diffMarkdown(diffOf(changes));
            expectWellFormed(text);
            EXPECT_LT(text.size(), commentLimit);
            auto const rows = rowsIn(text);
            EXPECT_TRUE(text.ends_with(
                fmt::format("\n{} changes left out, for want of room.\n", changes.size() - rows)));
            EXPECT_EQ(countOf(text, "<details>"), countOf(text, "</details>"));
        }
}

TEST(DiffMarkdown, TellsNothingBehindAChangeThatHasNoRoom) {
    auto large = change(ChangeKind::agentAdded, ChangeClass::risky, "", "");
    large.mounts.assign(50, {"A", std::string(200, '|'), "T", std::string(200, '`')});
    auto const small = change(ChangeKind::typeChanged, ChangeClass::risky, "A", "B");
    auto const text = diffMarkdown(diffOf({small, large, small}));
    EXPECT_EQ(rowsIn(text), 1U);
    EXPECT_TRUE(text.ends_with("\n2 changes left out, for want of room.\n")) << text;
}

TEST(DiffMarkdown, UsesTheRoomThereIs) {
    auto const small = change(ChangeKind::typeChanged, ChangeClass::risky, "A", "B");
    auto const text = diffMarkdown(diffOf(std::vector<Change>(5000, small)));
    EXPECT_GT(text.size(), commentLimit - 1024);
    EXPECT_EQ(diffMarkdown(diffOf(std::vector<Change>(900, small))).find("left out"),
              std::string::npos);
}

// The number of the line is what a reader needs.
TEST(DiffMarkdown, CutsLongNamesButNotTheNumbersOfLines) {
    auto made = change(ChangeKind::typeChanged, ChangeClass::dangerous, "A", std::string(999, 'v'));
    made.paths = {{std::string(9999, 'p'), {}, ""}};
    made.newPlaces = {{std::string(9999, 'f'), 123456, {}, std::string(9999, 't')}};
    auto const row = rowOf(made);
    EXPECT_NE(row.find("f...:123456`: `"), std::string::npos) << row;
    EXPECT_NE(row.find("`" + std::string(147, 'p') + "...`"), std::string::npos) << row;
    EXPECT_LT(row.size(), 800U);
}

} // namespace
