// The findings of a check as people read them.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "CheckResults.h"
#include "check/CheckFormats.h"

namespace {

using namespace toolunits;
using KeldaTool::checkText;
using KeldaTool::TextStyle;

constexpr TextStyle plain{.colour = false, .showSource = true};
constexpr TextStyle withoutSource{.colour = false, .showSource = false};
constexpr TextStyle coloured{.colour = true, .showSource = true};

// What is written of a finding, without the totals.
std::string textOf(CheckedFinding const& finding, TextStyle const& style = plain) {
    auto const text = checkText(resultOf({finding}), style);
    return text.substr(0, text.rfind("\n\n") + 1);
}

CheckedFinding findingAt(SourcePlace place) {
    return finding(RuleId::flagUnknown, std::move(place), "m");
}

std::string withoutColour(std::string text) {
    for (auto at = text.find('\x1b'); at != std::string::npos; at = text.find('\x1b'))
        text.erase(at, text.find('m', at) + 1 - at);
    return text;
}

TEST(CheckText, TellsEverythingThatAFindingHas) {
    EXPECT_EQ(checkText(sampleResult(), plain), expected("check-text.txt"));
}

TEST(CheckText, LeavesOutLinesOfFiles) {
    EXPECT_EQ(checkText(sampleResult(), withoutSource), expected("check-text-without-source.txt"));
}

TEST(CheckText, ColoursPlacesSeveritiesAndCarets) {
    EXPECT_EQ(checkText(sampleResult(), coloured), expected("check-text-coloured.txt"));
}

TEST(CheckText, NamesTheFilesThatWereLookedAtFirst) {
    EXPECT_EQ(checkText(sampleResultWithFiles(), plain), "read preinit/Base\n"
                                                         "read preinit/Slots\n"
                                                         "read profiles/Fan\n"
                                                         "read profiles/Led\n"
                                                         "skipped profiles/Fan~: the name of a "
                                                         "copy\n" +
                                                             expected("check-text.txt"));
}

struct Totals {
    std::vector<RuleId> rules;
    std::size_t preinitFiles, profiles, suppressed, inBaseline;
    std::string text;
};

TEST(CheckText, EndsWithTotals) {
    for (auto const& [rules, preinitFiles, profiles, suppressed, inBaseline, text] : {
             Totals{{}, 4, 20, 0, 0, "no findings in 20 profiles and 4 preinit files\n"},
             {{}, 1, 1, 0, 0, "no findings in 1 profile and 1 preinit file\n"},
             {{},
              0,
              0,
              2,
              5,
              "no findings in 0 profiles and 0 preinit files, 2 allowed by comments, 5 in the "
              "baseline\n"},
             {{RuleId::flagUnknown},
              1,
              2,
              0,
              1,
              "1 error in 2 profiles and 1 preinit file, 1 in the baseline\n"},
             {{RuleId::aliasUnused, RuleId::orphanFile, RuleId::aliasUnused},
              1,
              2,
              1,
              0,
              "1 warning, 2 notes in 2 profiles and 1 preinit file, 1 allowed by comments\n"},
         }) {
        CheckResult result{.preinitFiles = preinitFiles,
                           .profiles = profiles,
                           .findings = {},
                           .suppressed = suppressed,
                           .inBaseline = inBaseline,
                           .staleBaseline = {},
                           .filesRead = {},
                           .filesSkipped = {}};
        for (auto const rule : rules)
            result.findings.push_back(finding(rule, {"f", 1, 0, 0, ""}, "m"));
        auto const whole = checkText(result, plain);
        EXPECT_TRUE(whole == text || whole.ends_with("\n\n" + text)) << whole;
        EXPECT_EQ(whole == text, rules.empty()) << whole;
    }
}

struct Pointed {
    std::string line;
    std::int32_t column, width;
    std::string shown, caret; // without what stands in front of each line
};

void expectPointed(Pointed const& pointed) {
    auto const& [line, column, width, shown, caret] = pointed;
    auto const text = textOf(findingAt({"f", 7, column, width, line}));
    auto const head = "f:7:" + std::to_string(column) + ": error: m [flag-unknown]\n";
    EXPECT_EQ(text, head + "    7 | " + shown + "\n      | " + caret + "\n") << line;
}

TEST(CheckText, PutsTheCaretBelowTheSubject) {
    for (auto const& pointed : {
             Pointed{"a,T,z", 5, 1, "a,T,z", "    ^"},
             {"a,T,z", 1, 5, "a,T,z", "^~~~~"},
             {"a,T,z", 1, 9, "a,T,z", "^~~~~"},    // ends with the line
             {"a,T,z", 6, 1, "a,T,z", "     ^"},   // behind the line
             {"a,T,z", 60, 1, "a,T,z", "     ^"},  // far behind it
             {"a,T,z   ", 5, 1, "a,T,z", "    ^"}, // blanks at the end are not shown
             {"  a", 3, 0, "  a", "  ^"},          // no width
             {"  a", 3, -5, "  a", "  ^"},         //
             {"a,T,z", 1, 0x7fffffff, "a,T,z", "^~~~~"},
         })
        expectPointed(pointed);
}

TEST(CheckText, PutsTheCaretBelowTheSubjectBehindTabs) {
    for (auto const& pointed : {
             Pointed{"\tz", 2, 1, "        z", "        ^"},
             {"a\tz", 3, 1, "a       z", "        ^"},
             {"1234567\tz", 9, 1, "1234567 z", "        ^"},
             {"12345678\tz", 10, 1, "12345678        z", "                ^"},
             {"a\tb\tz", 5, 1, "a       b       z", "                ^"},
             {"\u65e5\tz", 3, 1, "\u65e5      z", "        ^"},
             {"\x01\tz", 3, 1, "\\x01    z", "        ^"},
             {"a\tb", 1, 3, "a       b", "^~~~~~~~~"},
             {"\t\x80z", 3, 1, "        \\x80z", "            ^"},
         })
        expectPointed(pointed);
}

TEST(CheckText, PutsTheCaretBelowTheSubjectBehindCharactersOfAnyWidth) {
    for (auto const& pointed : {
             Pointed{"\u00e9\u00e9z", 3, 1, "\u00e9\u00e9z", "  ^"},
             {"\u65e5\u672cz", 3, 1, "\u65e5\u672cz", "    ^"},
             {"a\u65e5\u672cz", 2, 2, "a\u65e5\u672cz", " ^~~~"},
             {"e\u0301z", 3, 1, "e\u0301z", " ^"}, // a combining accent
             {"\U0001f600z", 2, 1, "\U0001f600z", "  ^"},
         })
        expectPointed(pointed);
}

TEST(CheckText, PutsTheCaretBelowTheSubjectBehindEscapedBytes) {
    for (auto const& pointed : {
             Pointed{"\x1b[31mz", 6, 1, "\\x1b[31mz", "        ^"},
             {"\x7fz", 2, 1, "\\x7fz", "    ^"},
             {"\xffz", 2, 1, "\\xffz", "    ^"},
             {"\xe2\x82z", 2, 1, "\\xe2\\x82z", "        ^"},
             {"\u202ez", 2, 1, "\\u{202e}z", "        ^"},
             {std::string("a\0z", 3), 3, 1, "a\\x00z", "     ^"},
             {"a\x1b", 2, 1, "a\\x1b", " ^~~~"},
             // A sequence that is no UTF-8 counts as one character.
             {"\x80\x80z", 3, 1, "\\x80\\x80z", "        ^"},
             {"\x80\x80z", 1, 2, "\\x80\\x80z", "^~~~~~~~"},
             {"\u20ac\x80z", 3, 1, "\u20ac\\x80z", "     ^"},
             {"\xf0\x9f\x98z", 2, 1, "\\xf0\\x9f\\x98z", "            ^"},
             {"\xed\xa0\x80z", 4, 1, "\\xed\\xa0\\x80z", "            ^"},
         })
        expectPointed(pointed);
}

TEST(CheckText, ShowsALineWithoutACaretWhenTheColumnIsNotKnown) {
    EXPECT_EQ(textOf(findingAt({"f", 7, 0, 0, "a,T"})),
              "f:7: error: m [flag-unknown]\n    7 | a,T\n");
}

TEST(CheckText, ShowsNoLineThatIsEmptyOrNotKnown) {
    EXPECT_EQ(textOf(findingAt({"f", 7, 1, 1, ""})), "f:7:1: error: m [flag-unknown]\n");
    EXPECT_EQ(textOf(findingAt({"f", 0, 1, 1, "a"})), "f: error: m [flag-unknown]\n");
}

TEST(CheckText, MakesRoomForLargeLineNumbers) {
    EXPECT_EQ(textOf(findingAt({"f", 1234567, 2, 1, "ab"})),
              "f:1234567:2: error: m [flag-unknown]\n1234567 | ab\n        |  ^\n");
}

std::string repeated(std::string const& text, std::size_t count) {
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

TEST(CheckText, ShowsALineOfTwoHundredColumnsWhole) {
    auto const line = std::string(199, 'a') + "z";
    expectPointed({line, 200, 1, line, std::string(199, ' ') + "^"});
}

TEST(CheckText, ShowsTheSurroundingsOfTheSubjectInAVeryLongLine) {
    std::string const a1000(1000, 'a');
    std::string const dots = "...";
    auto const a = [](std::size_t count) { return std::string(count, 'a'); };
    auto const blanks = [](std::size_t count) { return std::string(count, ' '); };
    for (auto const& pointed : {
             Pointed{a1000 + "z" + a1000, 1001, 1, dots + a(40) + "z" + a(79) + dots,
                     blanks(43) + "^"},
             {"z" + a1000, 1, 1, "z" + a(119) + dots, "^"},
             {a1000 + "z", 1001, 1, dots + a(119) + "z", blanks(122) + "^"},
             {a1000, 1, 1000, a(120) + dots, "^" + std::string(119, '~')},
             {a1000, 2000, 1, dots + a(120), blanks(123) + "^"},
             {repeated("\u65e5", 1000) + "z" + a1000, 1001, 1,
              dots + repeated("\u65e5", 20) + "z" + a(79) + dots, blanks(43) + "^"},
             {repeated("\x80", 1000) + "z", 1001, 1, dots + repeated("\\x80", 29) + "z",
              blanks(119) + "^"},
             {"a" + repeated("\x80", 1000), 1, 2, "a" + repeated("\\x80", 29) + dots, "^~~~~"},
             {repeated("\x01", 1000) + "z" + a1000, 1001, 1,
              dots + repeated("\\x01", 10) + "z" + a(79) + dots, blanks(43) + "^"},
         })
        expectPointed(pointed);
}

TEST(CheckText, ShowsLittleOfALineWhateverItsLength) {
    for (std::string const piece : {"a", "\t", "\x80", "\xe2\x82\xac", "\u0301", "\x1b"}) {
        auto const line = repeated(piece, 100000);
        for (std::int32_t const column : {0, 1, 50000, 100000, 200000})
            EXPECT_LT(textOf(findingAt({"f", 7, column, 100000, line})).size(), 4000U)
                << column << " of " << KeldaTool::printable(piece);
    }
}

// Characters without a width of their own, of which any number fits in a window.
TEST(CheckText, CutsVeryLongLinesBetweenCharacters) {
    for (std::string const mark : {"\u0301", "\u20d0", "\U000e0100"}) {
        auto const line = repeated(mark, 2000) + "az" + repeated(mark, 2000);
        auto const text = textOf(findingAt({"f", 7, 2002, 1, line}));
        auto const shown = linesOf(text).at(1);
        EXPECT_TRUE(shown.starts_with("    7 | ..." + mark)) << shown;
        EXPECT_TRUE(shown.ends_with(mark + "...")) << shown;
        EXPECT_EQ(linesOf(text).at(2), "      |     ^");
    }
}

TEST(CheckText, IndentsFurtherLinesOfAMessage) {
    auto const made = finding(RuleId::flagUnknown, {"f", 1, 0, 0, ""}, "one\ntwo\n\nthree\n\n");
    EXPECT_EQ(textOf(made), "f:1: error: one [flag-unknown]\n    two\n\n    three\n");
}

TEST(CheckText, OfAFindingWithoutAFileBeginsWithTheProgram) {
    EXPECT_EQ(textOf(finding(RuleId::directoryUnreadable, {}, "Cannot open directory x")),
              "kelda: error: Cannot open directory x [directory-unreadable]\n");
}

TEST(CheckText, NamesThreeOfManyAgentsAndIncludes) {
    auto made = findingAt({"f", 1, 0, 0, ""});
    std::string const head = "f:1: error: m [flag-unknown]\n";
    for (auto const* const words : {"A1", "A1 and A2", "A1, A2 and A3", "A1, A2, A3 and A4",
                                    "A1, A2, A3 and 2 more", "A1, A2, A3 and 3 more"}) {
        made.agents.push_back("A" + std::to_string(made.agents.size() + 1));
        EXPECT_EQ(textOf(made), head + "  concerns " + words + "\n");
    }
    made.agents.clear();
    made.includedFrom = {{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4}, {"e", 5}};
    EXPECT_EQ(textOf(made), head + "  included from a:1, b:2, c:3 and 2 more\n");
}

TEST(CheckText, PointsIntoRelatedLines) {
    auto made = findingAt({"f", 1, 0, 0, ""});
    made.related = {{{"g", 2, 3, 2, "a bc"}, "see here"}, {{}, "and\nthere"}};
    EXPECT_EQ(textOf(made), "f:1: error: m [flag-unknown]\n"
                            "  g:2:3: see here\n"
                            "      2 | a bc\n"
                            "        |   ^~\n"
                            "  and / there\n");
}

TEST(CheckText, EscapesWhatCannotBeShown) {
    auto made = finding(RuleId::flagUnknown, {"f\n\x1b", 1, 0, 0, ""}, "m\x1b\xff");
    made.hint = "h\n\x07";
    made.agents = {"A\nB"};
    EXPECT_EQ(textOf(made), "f\\x0a\\x1b:1: error: m\\x1b\\xff [flag-unknown]\n"
                            "  hint: h / \\x07\n"
                            "  concerns A\\x0aB\n");
}

TEST(CheckText, ColourAddsNothingButColour) {
    EXPECT_EQ(withoutColour(checkText(sampleResult(), coloured)), checkText(sampleResult(), plain));
}

RC_GTEST_PROP(CheckTextProperty, IsFitForATerminalWhateverTheFilesHold, ()) {
    auto const result = anyResult();
    RC_ASSERT(isFitForATerminal(checkText(result, plain)));
    RC_ASSERT(isFitForATerminal(checkText(result, withoutSource)));
    RC_ASSERT(withoutColour(checkText(result, coloured)) == checkText(result, plain));
}

// Neither a message nor a name makes a line that looks like the beginning of another finding.
RC_GTEST_PROP(CheckTextProperty, OnlyFindingsBeginAtTheFirstColumn, ()) {
    auto made = anyFinding();
    made.place = {"file", 1, 0, 0, ""};
    auto const lines = linesOf(textOf(made, withoutSource));
    RC_ASSERT(lines[0].starts_with("file:1: "));
    for (std::size_t i = 1; i < lines.size(); ++i)
        RC_ASSERT(lines[i].empty() || lines[i].starts_with("  "));
}

} // namespace
