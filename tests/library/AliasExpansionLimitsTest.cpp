// The limits of the line buffer: a path that just fits, that does not fit by one character, and
// that does not fit at all.
#include <array>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Aliases.h"
#include "support/Device.h"
#include "support/FaultTexts.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::expandedPath;
using support::LenientParser;
using support::lineOf;
using support::messages;
using testing::ElementsAre;
using testing::IsEmpty;

std::string filler(std::size_t count) {
    return std::string(count, 'x');
}

std::string tooSmall(std::string const& token, std::string const& value, std::string const& path) {
    return "Path buffer too small to expand alias from '" + token + "'to '" + value + "' in " +
           path;
}

class ShorthandsAtTheLimit : public testing::Test {
  protected:
    // The text after every "%c" in it became "cell/c".
    std::string replaced(std::string const& text) {
        auto buffer = lineOf(text);
        parser_.strcCaseReplace(buffer, "%c", "cell/c");
        return buffer.data();
    }

    LenientParser parser_;
};

TEST_F(ShorthandsAtTheLimit, AResultOf1023CharactersFits) {
    EXPECT_EQ(replaced(filler(1017) + "%c"), filler(1017) + "cell/c");
    EXPECT_THAT(messages(parser_), IsEmpty());
}

TEST_F(ShorthandsAtTheLimit, AResultOf1024CharactersIsReportedAndCut) {
    auto const text = filler(1018) + "%c";
    EXPECT_EQ(replaced(text), filler(1018) + "cell/");
    EXPECT_THAT(messages(parser_), ElementsAre("cannot expand path" + text));
}

TEST_F(ShorthandsAtTheLimit, TheReportOfACutIsTraced) {
    support::TraceRecorder const trace("MountFileInfo", 1U << 0);
    replaced(filler(1018) + "%c");
    ASSERT_EQ(parser_.exceptions().size(), 1U);
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser_.exceptions()[0])));
}

TEST_F(ShorthandsAtTheLimit, WhatFollowsTheReplacementIsCut) {
    auto const text = "%c/" + filler(1018) + "yz";
    ASSERT_EQ(text.size(), 1023U);
    EXPECT_EQ(replaced(text), ("cell/c/" + filler(1018)).substr(0, 1023));
    EXPECT_THAT(messages(parser_), ElementsAre("cannot expand path" + text));
}

TEST_F(ShorthandsAtTheLimit, AReplacementAtTheVeryEndOfAFullBufferIsCutToItsFirstCharacters) {
    auto const text = filler(1021) + "%C";
    EXPECT_EQ(replaced(text), filler(1021) + "ce");
    EXPECT_THAT(messages(parser_), ElementsAre("cannot expand path" + text));
}

TEST_F(ShorthandsAtTheLimit, EveryReplacementThatDoesNotFitIsReportedWithTheTextItFound) {
    auto const text = "%c%c" + filler(1019);
    EXPECT_EQ(replaced(text), "cell/ccell/c" + filler(1011));
    EXPECT_THAT(messages(parser_), ElementsAre("cannot expand path" + text,
                                               "cannot expand pathcell/c%c" + filler(1015)));
}

TEST_F(ShorthandsAtTheLimit, AShorteningReplacementOfAFullBufferFits) {
    auto buffer = lineOf(filler(1020) + "abc");
    parser_.strcCaseReplace(buffer, "abc", "d");
    EXPECT_EQ(std::string(buffer.data()), filler(1020) + "d");
    EXPECT_THAT(messages(parser_), IsEmpty());
}

TEST_F(ShorthandsAtTheLimit, AReplacementLongerThanTheBufferIsCut) {
    auto buffer = lineOf("a%cb");
    parser_.strcCaseReplace(buffer, "%c", filler(5000).c_str());
    EXPECT_EQ(std::string(buffer.data()), "a" + filler(1022));
    EXPECT_THAT(messages(parser_), ElementsAre("cannot expand patha%cb"));
}

TEST_F(ShorthandsAtTheLimit, ACellPathThatDoesNotFitIsReported) {
    auto const text = "%cellPath" + filler(1014);
    auto buffer = lineOf(text);
    parser_.convertPath(buffer);
    EXPECT_EQ(std::string(buffer.data()), "cell/%cellId" + filler(1011));
    EXPECT_THAT(messages(parser_), ElementsAre("cannot expand path" + text));
}

// A path with one alias, %a, whose value has ten characters.
class AliasesAtTheLimit : public testing::Test {
  protected:
    AliasesAtTheLimit() { parser_.perFileAliasesPushBack("%a", value_); }

    std::string const value_ = "0123456789";
    LenientParser parser_;
};

TEST_F(AliasesAtTheLimit, AResultOf1023CharactersFits) {
    EXPECT_EQ(expandedPath(parser_, filler(1013) + "%a"), filler(1013) + value_);
    EXPECT_THAT(messages(parser_), IsEmpty());
}

TEST_F(AliasesAtTheLimit, AResultOf1024CharactersIsRefused) {
    auto const path = filler(1014) + "%a";
    EXPECT_EQ(expandedPath(parser_, path), path);
    EXPECT_THAT(messages(parser_), ElementsAre(tooSmall("%a", value_, path)));
}

TEST_F(AliasesAtTheLimit, AResultOf1025CharactersIsExpandedReportedAndCut) {
    auto const path = filler(1015) + "%a";
    EXPECT_EQ(expandedPath(parser_, path), filler(1015) + "01234567");
    EXPECT_THAT(messages(parser_), ElementsAre(tooSmall("%a", value_, path)));
}

TEST_F(AliasesAtTheLimit, WhatFollowsTheValueIsCut) {
    auto const path = "%a/" + filler(1018) + "yz";
    ASSERT_EQ(path.size(), 1023U);
    EXPECT_EQ(expandedPath(parser_, path), value_ + "/" + filler(1012));
    EXPECT_THAT(messages(parser_), ElementsAre(tooSmall("%a", value_, path)));
}

TEST_F(AliasesAtTheLimit, ARefusalLeavesTheTokenAndAllLaterOnes) {
    parser_.perFileAliasesPushBack("%b", "B");
    auto const rest = "%a/%b" + filler(1010);
    EXPECT_EQ(expandedPath(parser_, "%b" + rest), "B" + rest);
    EXPECT_THAT(messages(parser_), ElementsAre(tooSmall("%a", value_, "B" + rest)));
}

TEST_F(AliasesAtTheLimit, ARefusalIsTracedAndNoResultIs) {
    support::TraceRecorder const trace;
    expandedPath(parser_, filler(1014) + "%a");
    ASSERT_EQ(parser_.exceptions().size(), 1U);
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser_.exceptions()[0])));
    EXPECT_TRUE(trace.has(9, "Found token '%a'with value '0123456789'"));
    for (auto const& text : trace.at(9))
        EXPECT_FALSE(text.starts_with("after replacement:")) << text;
}

TEST_F(AliasesAtTheLimit, ACutIsTracedAndSoIsItsResult) {
    support::TraceRecorder const trace;
    auto const result = expandedPath(parser_, filler(1015) + "%a");
    ASSERT_EQ(parser_.exceptions().size(), 1U);
    EXPECT_THAT(trace.at(0), ElementsAre(support::continuedTrace(parser_.exceptions()[0])));
    EXPECT_TRUE(trace.has(9, "after replacement:" + result));
}

TEST_F(AliasesAtTheLimit, AValueOfAWholeLineFitsAlone) {
    parser_.perFileAliasesPushBack("%line", filler(1023));
    EXPECT_EQ(expandedPath(parser_, "%line"), filler(1023));
    EXPECT_THAT(messages(parser_), IsEmpty());
}

TEST_F(AliasesAtTheLimit, AValueLongerThanTheBufferIsCut) {
    for (std::size_t const length : {1025U, 1030U, 1031U, 5000U}) {
        LenientParser parser;
        parser.perFileAliasesPushBack("%line", filler(length));
        EXPECT_EQ(expandedPath(parser, "%line"), filler(1023)) << length;
        EXPECT_THAT(messages(parser), ElementsAre(tooSmall("%line", filler(length), "%line")));
    }
}

TEST_F(AliasesAtTheLimit, AShorteningExpansionOfAFullBufferFits) {
    parser_.perFileAliasesPushBack("%slot", "3");
    EXPECT_EQ(expandedPath(parser_, "%slot/" + filler(1017)), "3/" + filler(1017));
    EXPECT_THAT(messages(parser_), IsEmpty());
}

TEST_F(AliasesAtTheLimit, ASmallerBufferHasItsOwnLimit) {
    struct Row {
        char const* path;
        char const* result;
        bool reported;
    };
    for (auto const& row : std::vector<Row>{
             {"12345%a", "123450123456789", false},
             {"123456%a", "123456%a", true},
             {"1234567%a", "123456701234567", true},
             {"%a/2345", "0123456789/2345", false},
             {"%a/23456", "%a/23456", true},
             {"%a/234567", "0123456789/2345", true},
         }) {
        parser_.clearProfileData();
        parser_.perFileAliasesPushBack("%a", value_);
        std::array<char, 16> path{};
        support::fill(path, row.path);
        parser_.expandAliasInPath(path.data(), path.size());
        EXPECT_STREQ(path.data(), row.result);
        EXPECT_EQ(messages(parser_),
                  row.reported ? std::vector<std::string>{tooSmall("%a", value_, row.path)}
                               : std::vector<std::string>{});
    }
}

TEST(LimitsOfLines, ARefusedPathIsRecordedWithItsTokens) {
    LenientParser parser;
    auto const path = filler(1000) + "/%a";
    parser.declare({filler(1000) + "/*"});
    parser.loadProfile("alias:%a=" + filler(23) + "\n" + path + ",T,r\n", "Fan");
    ASSERT_EQ(parser.exceptions().size(), 1U);
    EXPECT_EQ(parser.exceptions()[0],
              (Kelda::MfiException{"Fan", tooSmall("%a", filler(23), path), 2}));
    EXPECT_TRUE(parser.pathMountArgsMap().contains(path));
}

TEST(LimitsOfLines, ARefusedPathEndsTheLoadOfAnAgent) {
    auto const path = filler(1000) + "/%a";
    support::Device device;
    device.preinit("fan", filler(1000) + "/%a,T,createOnMount\n");
    device.profile("Fan", "agentName:Fan\nalias:%a=" + filler(23) + "\n" + path + ",T,r\n");
    auto const agent = device.agent("Fan");
    EXPECT_EQ(support::thrownText([&] { agent->doInit(); }),
              support::faultIn("Fan", 3, tooSmall("%a", filler(23), path)));
}

TEST(LimitsOfLines, AShorthandThatDoesNotFitEndsTheLoadOfAnAgent) {
    auto const path = "%cellPath/" + filler(1011);
    support::Device device;
    device.profile("Fan", "agentName:Fan\n" + path + ",,");
    auto const agent = device.agent("Fan");
    EXPECT_EQ(support::thrownText([&] { agent->doInit(); }),
              support::faultIn("Fan", 2, "cannot expand path" + path));
}

} // namespace
