// Where in a line something stands, as an editor shows it.
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "database/findings/SourceText.h"

namespace {

using namespace std::string_literals;
using KeldaDatabase::SourceText;
using KeldaDatabase::Spot;
using KeldaDatabase::Subject;

struct Sought {
    std::string text;
    Subject subject;
    Spot spot;
};

void expectSpots(std::vector<Sought> const& all) {
    for (auto const& [text, subject, spot] : all) {
        auto const found = SourceText(text).spotOf(1, subject);
        EXPECT_EQ(found, spot) << text << ": " << subject.field << " " << subject.text << ": is "
                               << found.line << ":" << found.column << "+" << found.width;
    }
}

constexpr int anywhere = Subject::anywhere;
constexpr int behindColon = Subject::behindColon;

TEST(SourceTextSpot, IsTheFieldOrATextInIt) {
    expectSpots({{"a/b, T, rw\n", {0, ""}, {1, 1, 3}},
                 {"a/b, T, rw\n", {1, ""}, {1, 6, 1}},
                 {"a/b, T, rw\n", {2, ""}, {1, 9, 2}},
                 {"a/b, T, rw\n", {2, "w"}, {1, 10, 1}},
                 {"r, T, r\n", {2, "r"}, {1, 7, 1}},
                 {"a,,r\n", {1, ""}, {1, 3, 1}},
                 {"a,T,\n", {2, ""}, {1, 5, 1}},
                 {"a,T,", {2, ""}, {1, 5, 1}},
                 {"a, T, r, s\n", {3, ""}, {1, 10, 1}}});
}

TEST(SourceTextSpot, BehindAColonIsWhatAKeywordIsAbout) {
    expectSpots({{"MountGroup: fans, 10\n", {behindColon, ""}, {1, 13, 8}},
                 {"alias: %x = a:b\n", {behindColon, "%x"}, {1, 8, 2}},
                 {"MountGroup: Mount\n", {behindColon, "Mount"}, {1, 13, 5}},
                 {"Include:\n", {behindColon, ""}, {1, 1, 8}},
                 {"Include # a: b\n", {behindColon, ""}, {1, 1, 7}}});
}

TEST(SourceTextSpot, BlanksAndCaseDoNotCount) {
    expectSpots({{"\tagent / %Slot ,T,r\n", {anywhere, "agent/%slot"}, {1, 2, 13}},
                 {"  active Mount  \n", {anywhere, ""}, {1, 3, 12}},
                 {"\t\ta , T\r\n", {0, ""}, {1, 3, 1}},
                 {" a b a c\n", {anywhere, "ac"}, {1, 6, 3}}});
}

TEST(SourceTextSpot, ATokenIsNotTheBeginningOfAnotherOne) {
    expectSpots({{"a/%slots/%slot,T\n", {0, "%slot"}, {1, 10, 5}},
                 {"a/%slots,T\n", {0, "%slot"}, {1, 3, 5}},
                 {"a/slots/slot,T\n", {0, "slot"}, {1, 3, 4}}});
}

TEST(SourceTextSpot, TheCommentIsLookedAtLast) {
    expectSpots({{"a,T # b\n", {anywhere, ""}, {1, 1, 3}},
                 {"a,T # b\n", {anywhere, "b"}, {1, 7, 1}},
                 {"a,b # b\n", {anywhere, "b"}, {1, 3, 1}},
                 {"a # ,T\n", {1, "T"}, {1, 1, 1}},
                 {" # note\n", {anywhere, ""}, {1, 2, 6}},
                 {"#\\\n", {anywhere, ""}, {1, 1, 2}}});
}

TEST(SourceTextSpot, WhereNothingIsFoundItIsTheFieldOrTheLine) {
    expectSpots({{" a, bc,r\n", {1, "x"}, {1, 5, 2}},
                 {" a, bc\n", {2, "x"}, {1, 2, 5}},
                 {" a, bc\n", {anywhere, "x"}, {1, 2, 5}},
                 {"\n", {anywhere, "x"}, {1, 1, 1}},
                 {"  \r\n", {}, {1, 1, 1}},
                 {"a,  ,r\n", {1, ""}, {1, 3, 1}},
                 {"\0"s, {}, {1, 1, 1}}});
}

TEST(SourceTextSpot, CharactersAreCounted) {
    expectSpots({{"\u00e9\u20ac\U0001f600/b, \u00e4\n", {1, ""}, {1, 8, 1}},
                 {"\u00e9\u20ac\U0001f600/b, T\n", {0, ""}, {1, 1, 5}},
                 {"\xff\x80\xe2\x82,b\n", {1, ""}, {1, 5, 1}},
                 {"\xe2\x82\xe2\x82\xac,b\n", {1, ""}, {1, 4, 1}},
                 {"\xed\xa0\x80\xc0\x80,b\n", {1, ""}, {1, 7, 1}},
                 {"\xf0\x9f\x98,b\n", {1, ""}, {1, 3, 1}}});
}

TEST(SourceTextSpot, IsInTheLineOfAContinuedOneWhereItStands) {
    std::string const text = "a/b, \\\n  Type, \\\n\\\n r w # note\n";
    expectSpots({{text, {0, ""}, {1, 1, 3}},
                 {text, {1, ""}, {2, 3, 4}},
                 {text, {2, ""}, {4, 2, 3}},
                 {text, {2, "w"}, {4, 4, 1}},
                 {text, {anywhere, "note"}, {4, 8, 4}},
                 {"a\\\n# note\n", {anywhere, "note"}, {2, 3, 4}}});
}

TEST(SourceTextSpot, EndsWithItsLine) {
    expectSpots({{"long/ \\\n  path,T\n", {0, ""}, {1, 1, 5}},
                 {"long/ \\\n  path,T\n", {0, "long/path"}, {1, 1, 5}},
                 {"a,T, \\\n\\\n  r\n", {2, ""}, {3, 3, 1}},
                 {" \\\n a,T\n", {}, {2, 2, 3}}});
}

TEST(SourceTextSpot, BehindACutCountsFromTheBeginningOfTheLine) {
    SourceText const text("a\n" + std::string(1023, 'x') + " b, T\n");
    EXPECT_EQ(text.spotOf(3, {1, ""}), (Spot{2, 1028, 1}));
    EXPECT_EQ(text.spotOf(2, {0, ""}), (Spot{2, 1, 1023}));
}

TEST(SourceTextSpot, InASingleLineIsTheSame) {
    SourceText const text("a, \\\n \u00e9t, x\\\nr\n");
    EXPECT_EQ(text.columnOf(1, {0, "a"}), 1);
    EXPECT_EQ(text.columnOf(2, {1, "x"}), 6);
    EXPECT_EQ(text.columnOf(2, {0, ""}), 2);
    EXPECT_EQ(text.widthOf(2, {0, ""}), 2);
    EXPECT_EQ(text.widthOf(3, {5, "none"}), 1);
}

// Pieces of files that do not fit together.
std::string randomText() {
    auto const piece =
        rc::gen::element(""s, "\n"s, "\\"s, "\\\n"s, "#"s, ","s, ":"s, " "s, "\t"s, "\r\n"s, "\0"s,
                         "%x"s, "ab"s, "\u20ac"s, "\xe2\x82"s, "\x80"s, "agentName:"s,
                         std::string(1019, 'y'), std::string(1023, ' '));
    std::string text;
    for (auto const& each : *rc::gen::container<std::vector<std::string>>(piece))
        text += each;
    return text;
}

RC_GTEST_PROP(SourceTextSpotProperty, ASpotIsPartOfALineThatBelongsToTheParsersOne, ()) {
    SourceText const source(randomText());
    auto const lastByte = source.text().empty() ? 0 : source.text().size() - 1;
    for (int line = source.text().empty() ? 1 : source.parserLineOfByte(lastByte); line > 0; --line)
        for (auto const& subject :
             {Subject{}, Subject{anywhere, "%x"}, Subject{anywhere, "xab"},
              Subject{behindColon, ""}, Subject{0, ""}, Subject{1, "ab"}, Subject{2, ""}}) {
            auto const spot = source.spotOf(line, subject);
            auto const lines = source.linesTakenWith(source.editorLine(line));
            RC_ASSERT(spot.line >= source.editorLine(line) && spot.line <= lines.last);
            RC_ASSERT(lines.first <= source.editorLine(line));
            RC_ASSERT(spot.column >= 1 && spot.width >= 1);
            RC_ASSERT(spot.column + spot.width - 2 <=
                      static_cast<int>(source.line(spot.line).size()));
        }
}

} // namespace
