// The agent-name line of a profile, and how a profile's name matches an agent string.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Aliases.h"
#include "support/Device.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using Kelda::AgentNameMatch;
using support::LenientParser;
using support::messages;
using testing::ElementsAre;
using testing::IsEmpty;

class AgentNameLine : public testing::Test {
  protected:
    AgentNameLine() { parser_.openFile("Fan"); }

    // The name that a profile begins with, "(null)" for none.
    std::string nameIn(std::string_view text) {
        auto const stream = support::streamOf(text);
        Kelda::LineBuffer buffer{};
        char const* const name = parser_.getAgentNameFromProfile(stream.get(), buffer);
        return name == nullptr ? "(null)" : name;
    }

    LenientParser parser_;
};

TEST_F(AgentNameLine, IsTheFirstThatIsNeitherBlankNorAComment) {
    struct Row {
        char const* text;
        char const* name;
        int linesRead;
    };
    for (auto const& row : std::vector<Row>{
             {"agentName:Fan\n", "Fan", 1},
             {"agentName:Fan", "Fan", 1},
             {"\nagentName:Fan\n", "Fan", 2},
             {"# a fan\nagentName:Fan\n", "Fan", 2},
             {"#\n\n  \t \n#agentName:x\nagentName:Fan\nagentName:y\n", "Fan", 5},
             {"foo\nagentName:Fan\n", "(null)", 1},
             {"\n\nalias:%a=b\nagentName:Fan\n", "(null)", 3},
             {" # indented\nagentName:Fan\n", "(null)", 1},
             {"agentName\n:Fan\n", "(null)", 1},
             {"agentNames:Fan\n", "(null)", 1},
             {"name:Fan\n", "(null)", 1},
             {"", "(null)", 0},
             {"# only\n\n   \n", "(null)", 3},
         }) {
        parser_.currentFiles().back().line = 0;
        EXPECT_EQ(nameIn(row.text), row.name) << row.text;
        EXPECT_EQ(parser_.currentLine(), row.linesRead) << row.text;
    }
    EXPECT_THAT(messages(parser_), IsEmpty());
}

TEST_F(AgentNameLine, MayBeWrittenInAnyCaseAndWithBlanks) {
    struct Row {
        char const* text;
        char const* name;
    };
    for (auto const& row : std::vector<Row>{
             {"AGENTNAME:x\n", "x"},
             {"agentName : x\n", "x"},
             {"  agent\tName :\tx  \r\n", "x"},
             {"agentName: Fan-%slot-%sub\n", "Fan-%slot-%sub"},
             {"agentName: F a n - %slot\n", "Fan-%slot"},
             {"agentName:CaSe\n", "CaSe"},
             {"agentName:a:b\n", "a:b"},
             {"agentName:\n", ""},
             {"agentName: Fan # tray\n", "Fan#tray"},
         })
        EXPECT_EQ(nameIn(row.text), row.name) << row.text;
}

TEST_F(AgentNameLine, IsReadIntoTheGivenBuffer) {
    auto const stream = support::streamOf("agentName:Fan\n");
    Kelda::LineBuffer buffer{};
    EXPECT_EQ(parser_.getAgentNameFromProfile(stream.get(), buffer), buffer.data() + 10);
}

TEST_F(AgentNameLine, LeavesTheRestOfTheFileToTheLoader) {
    auto const stream = support::streamOf("# fan\nagentName:Fan\nfoo\n");
    Kelda::LineBuffer buffer{};
    parser_.getAgentNameFromProfile(stream.get(), buffer);
    parser_.profileLoader(stream.get());
    ASSERT_EQ(parser_.exceptions().size(), 1U);
    EXPECT_EQ(parser_.exceptions()[0], (Kelda::MfiException{"Fan", "syntax error: 'foo'", 3}));
}

TEST_F(AgentNameLine, ItsReadingIsTraced) {
    support::TraceRecorder const trace;
    nameIn("agentName:Fan\n");
    EXPECT_TRUE(trace.has(8, "( file : Fan )"));
    EXPECT_THAT(trace.at(9), IsEmpty());
}

TEST_F(AgentNameLine, AnotherFirstLineIsTracedWithoutItsBlanks) {
    support::TraceRecorder const trace;
    nameIn("\n # a fan\nagentName:Fan\n");
    EXPECT_THAT(trace.at(9), ElementsAre("first line not agentName: #afan"));
}

AgentNameMatch noMatch() {
    return {"", 0};
}
AgentNameMatch exactly(char const* name) {
    return {name, 1};
}
AgentNameMatch byTokens(char const* prefix) {
    return {prefix, 2};
}

struct MatchRow {
    char const* profile;
    char const* agent;
    AgentNameMatch match;
};

void expectMatches(std::vector<MatchRow> const& rows) {
    for (auto const& row : rows) {
        auto const match = LenientParser::matchAgentName(row.profile, row.agent);
        EXPECT_EQ(match.name, row.match.name) << row.profile << " for " << row.agent;
        EXPECT_EQ(match.kind, row.match.kind) << row.profile << " for " << row.agent;
    }
}

TEST(AgentNameMatching, WithoutTokensANameMatchesOnlyItself) {
    expectMatches({
        {"Fan", "Fan", exactly("Fan")},
        {"Fan-3", "Fan-3", exactly("Fan-3")},
        {"Fan", "fan", noMatch()},
        {"Fan", "Fan-3", noMatch()},
        {"Fan-3", "Fan", noMatch()},
        {"Fan-3", "Fan-3-1", noMatch()},
        {"Fan-3", "Fan-4", noMatch()},
        {"Fan", "Fantastic", noMatch()},
        {"Fan", "", noMatch()},
        {"", "Fan", noMatch()},
        {"Fan%slot", "Fan%slot", exactly("Fan%slot")},
        {"Fan%slot", "Fan-3", noMatch()},
        {"%slot", "3", noMatch()},
    });
}

TEST(AgentNameMatching, WithTokensItsPrefixMustBeTheFirstPartsOfTheAgentString) {
    expectMatches({
        {"Fan-%slot-%sub", "Fan-3-1", byTokens("Fan")},
        {"Fan-%slot-%sub", "Fan-3", byTokens("Fan")},
        {"Fan-%slot-%sub", "Fan-3-1-7", byTokens("Fan")},
        {"Fan-%slot-%sub", "Fan-", byTokens("Fan")},
        {"Fan-%rest$", "Fan-a-b-c", byTokens("Fan")},
        {"Fan-Tray-%slot", "Fan-Tray-4", byTokens("Fan-Tray")},
        {"Fan-Tray-%slot", "Fan-Tray", byTokens("Fan-Tray")},
        {"A-%x", "A-", byTokens("A")},
        {"Fan-%slot-tail", "Fan-3", byTokens("Fan")},
        {"-%x", "-3", byTokens("")},
        {"Fan-%slot", "Fantastic-3", noMatch()},
        {"Fan-%slot", "fan-3", noMatch()},
        {"Fan-%slot", "Fa-3", noMatch()},
        {"Fan-%slot", "F-", noMatch()},
        {"Fan-%slot", "-Fan-3", noMatch()},
        {"Fan-Tray-%slot", "Fan-3", noMatch()},
        {"Fan-Tray-%slot", "Fan-Trays-3", noMatch()},
        {"-%x", "a-3", noMatch()},
    });
}

TEST(AgentNameMatching, WithTokensAnAgentStringWithoutAHyphenMustBeTheWholeName) {
    expectMatches({
        {"Fan-%slot", "Fan", noMatch()},
        {"Fan-%slot", "Fan%slot", noMatch()},
        {"Fan-%slot", "", noMatch()},
    });
}

TEST(AgentNameMatching, TracesBothNames) {
    support::TraceRecorder const trace;
    LenientParser::matchAgentName("Fan-%slot", "Fan-3");
    EXPECT_TRUE(trace.has(8, "( agentName : Fan-%slot, agentString : Fan-3 )"));
    EXPECT_THAT(trace.at(9), IsEmpty());
}

TEST(AgentNameMatching, TracesAPrefixThatDoesNotMatch) {
    support::TraceRecorder const trace;
    LenientParser::matchAgentName("Fan-%slot-%sub", "Fantastic-3");
    EXPECT_THAT(trace.at(9), ElementsAre("No match: agent string Fantastic-3 doesn't match start "
                                         "of profile agent name Fan-%slot-%sub"));
}

TEST(AgentNameMatching, DoesNotTraceANameThatIsNotTheSame) {
    support::TraceRecorder const trace;
    LenientParser::matchAgentName("Fan-%slot-%sub", "Fan");
    LenientParser::matchAgentName("Fan", "Fan-3");
    EXPECT_THAT(trace.at(9), IsEmpty());
}

// Profiles of a device whose preinit files declare fan/%slot and fan/%slot/%sub.
class ProfilesOfAgents : public testing::Test {
  protected:
    ProfilesOfAgents() {
        device_.preinit("fan", "fan/%slot,T,createOnMount\nfan/%slot/%sub,T,createOnMount\n");
    }

    std::vector<std::string> pathsOf(std::string const& agentString) {
        auto const agent = device_.agent(agentString);
        agent->doInit();
        std::vector<std::string> paths;
        for (auto const& [path, record] : agent->pathMountArgsMap())
            if (record.isExplicit)
                paths.emplace_back(path.view());
        return paths;
    }

    support::Device device_;
};

TEST_F(ProfilesOfAgents, UseTheTokensOfTheirNameInPaths) {
    device_.profile("Fan", "agentName: Fan-%slot-%sub\nfan/%slot/%sub,T,r\n");
    EXPECT_THAT(pathsOf("Fan-3-1"), ElementsAre("fan/3/1"));
    EXPECT_THAT(pathsOf("Fan-3-1-7"), ElementsAre("fan/3/1"));
    EXPECT_THAT(pathsOf("Fan-3"), ElementsAre("fan/3/"));
    EXPECT_THAT(pathsOf("Fantastic-3"), IsEmpty());
    EXPECT_THAT(pathsOf("Fan"), IsEmpty());
}

TEST_F(ProfilesOfAgents, GiveAConsumingTokenAllThatIsLeft) {
    device_.profile("Fan", "agentName: Fan-%rest$\nfan/%rest,T,r\n");
    EXPECT_THAT(pathsOf("Fan-a-b-c"), ElementsAre("fan/a-b-c"));
    EXPECT_THAT(pathsOf("Fan-a"), ElementsAre("fan/a"));
}

TEST_F(ProfilesOfAgents, ArePassedOverWithoutAnAgentNameLine) {
    device_.profile("A", "fan/1,T,r\nagentName:Fan\n");
    device_.profile("B", " # fans\nagentName:Fan\nfan/2,T,r\n");
    device_.profile("C", "# fans\n\nAGENT NAME : Fan\nfan/%agentString,T,r\n");
    EXPECT_THAT(pathsOf("Fan"), ElementsAre("fan/Fan"));
}

TEST_F(ProfilesOfAgents, MayKnowTheWholeAgentString) {
    device_.profile("Fan", "agentName: Fan-%slot\nfan/%slot/%agentString,T,r\n");
    EXPECT_THAT(pathsOf("Fan-3-1"), ElementsAre("fan/3/Fan-3-1"));
}

} // namespace
