// A large device in which everything is valid: every agent loads, and nothing is reported.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/LenientParser.h"
#include "support/Thrown.h"

namespace {

using support::answersOf;
using support::firstDifference;
using support::nothingThrown;
using support::thrownText;

class OpenConfigCorpus : public testing::Test {
  protected:
    void SetUp() override { SKIP_WITHOUT_CORPUS(); }

    std::unique_ptr<Kelda::AgentMountFileInfo> emptyAgent() const {
        return std::make_unique<Kelda::AgentMountFileInfo>(false, preinits, profiles, true,
                                                           "DefaultMountGroup");
    }
    std::unique_ptr<Kelda::AgentMountFileInfo> agent(std::string const& agentString) const {
        auto parser = emptyAgent();
        parser->addAgent(agentString, "");
        return parser;
    }
    static std::vector<std::string> everyNthAgent(std::size_t n) {
        std::vector<std::string> sample;
        auto const all = support::openConfigAgents();
        for (std::size_t i = 0; i < all.size(); i += n)
            sample.push_back(all[i]);
        return sample;
    }

    support::CleanEnvironment environment;
    std::string const preinits = support::corpusDir("openconfig") / "preinit";
    std::string const profiles = support::corpusDir("openconfig") / "profiles";
};

TEST_F(OpenConfigCorpus, IsAsLargeAsItsDescriptionSays) {
    EXPECT_EQ(support::significantLines(support::corpusDir("openconfig") / "agents.txt").size(),
              265U);
    EXPECT_EQ(emptyAgent()->rawPreinitPaths().size(), 5893U); // 5913 lines, 20 of them the second
}

// In shards, so that a test run may spread them.
class OpenConfigAgents : public OpenConfigCorpus, public testing::WithParamInterface<std::size_t> {
  protected:
    static constexpr std::size_t shards = 8;
};
INSTANTIATE_TEST_SUITE_P(Shard, OpenConfigAgents, testing::Range<std::size_t>(0, 8));

TEST_P(OpenConfigAgents, EveryAgentLoadsItsProfileWithoutAFault) {
    auto const agents = support::openConfigAgents();
    ASSERT_GE(agents.size(), 265U);
    for (std::size_t i = GetParam(); i < agents.size(); i += shards) {
        auto const parser = agent(agents[i]);
        EXPECT_EQ(thrownText([&] { parser->doInit(); }), nothingThrown) << agents[i];
        EXPECT_TRUE(parser->foundMountProfile(agents[i])) << agents[i];
        EXPECT_TRUE(parser->foundMountProfile()) << agents[i];
    }
}

TEST_F(OpenConfigCorpus, OneParserServesAllAgents) {
    auto const parser = emptyAgent();
    auto const agents = support::openConfigAgents();
    for (auto const& agentString : agents)
        parser->addAgent(agentString, "");
    EXPECT_EQ(thrownText([&] { parser->doInit(); }), nothingThrown);
    for (auto const& agentString : agents)
        EXPECT_TRUE(parser->foundMountProfile(agentString)) << agentString;
}

TEST_F(OpenConfigCorpus, EveryPathOfAnAgentHasARecordWithTheTypeOfItsDeclaration) {
    for (auto const& agentString : everyNthAgent(10)) {
        auto const parser = agent(agentString);
        auto const paths = parser->agentPaths(agentString);
        EXPECT_FALSE(paths.empty()) << agentString;
        for (auto const& path : paths) {
            EXPECT_TRUE(parser->isExplicit(path)) << agentString << ": " << path;
            EXPECT_FALSE(parser->mountInfo(path).type.empty()) << agentString << ": " << path;
        }
    }
}

TEST_F(OpenConfigCorpus, TheLenientFlavourRecordsNoFaultOverEverything) {
    support::LenientParser parser(preinits, profiles);
    parser.doInit();
    for (auto const& exception : parser.exceptions())
        ADD_FAILURE() << Kelda::MountFileInfo::mfiExceptionToString(exception);
    EXPECT_GT(parser.pathMountArgsMap().size(), 1000U);
}

TEST_F(OpenConfigCorpus, TheLenientAgentRecordsNoFaultEither) {
    for (auto const& agentString : everyNthAgent(20)) {
        support::LenientAgent parser(preinits, profiles);
        parser.addAgent(agentString, "");
        parser.doInit();
        EXPECT_EQ(parser.firstException(), std::nullopt) << agentString;
    }
}

TEST_F(OpenConfigCorpus, InitialisingAgainGivesTheSameAnswers) {
    for (auto const& agentString : everyNthAgent(20)) {
        auto const parser = agent(agentString);
        auto const before = answersOf(*parser);
        parser->unDoInit();
        EXPECT_EQ(firstDifference(before, answersOf(*parser)), "") << agentString;
    }
}

TEST_F(OpenConfigCorpus, AnAgentAddedLateGivesTheSamePathsAsOneQueued) {
    for (auto const& agentString : everyNthAgent(25)) {
        auto const queued = agent(agentString);
        auto const late = emptyAgent();
        late->doInit();
        late->addAgent(agentString, "");
        EXPECT_EQ(support::sortedStrings(queued->agentPaths(agentString)),
                  support::sortedStrings(late->agentPaths(agentString)))
            << agentString;
    }
}

} // namespace
