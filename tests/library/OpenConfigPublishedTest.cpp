// What an entity publishes about a large device is exactly what a parser of one's own answers.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/PublishedDevice.h"
#include "support/Thrown.h"

namespace {

using Kelda::AgentMountFileInfo;
using Kelda::AgentMountFileInfoWrap;
using support::elementsOf;
using support::firstDifference;
using support::mountLines;
using support::sortedStrings;
using support::thrownText;

class OpenConfigPublished : public testing::TestWithParam<std::size_t> {
  protected:
    static constexpr std::size_t shards = 8;

    void SetUp() override { SKIP_WITHOUT_CORPUS(); }

    support::Wrap wrapOf(std::string const& agent) const {
        return Kelda::agentMountFileInfoWrapFactory(false, agent, "", preinits, profiles, true);
    }
    std::unique_ptr<AgentMountFileInfo> parserOf(std::string const& agent) const {
        auto parser = std::make_unique<AgentMountFileInfo>(false, preinits, profiles, true,
                                                           "DefaultMountGroup");
        parser->addAgent(agent, "");
        return parser;
    }
    // Every agent of this shard with an entity and a parser of its own.
    template <class Comparison>
    void forEachAgent(Comparison const& comparison) const {
        auto const agents = support::openConfigAgents();
        ASSERT_GE(agents.size(), 265U);
        for (std::size_t i = GetParam(); i < agents.size(); i += shards) {
            SCOPED_TRACE(agents[i]);
            comparison(*wrapOf(agents[i]), *parserOf(agents[i]), agents[i]);
        }
    }

    support::CleanEnvironment environment;
    std::string const preinits = support::corpusDir("openconfig") / "preinit";
    std::string const profiles = support::corpusDir("openconfig") / "profiles";
};

// In shards, so that a test run may spread them.
INSTANTIATE_TEST_SUITE_P(Shard, OpenConfigPublished, testing::Range<std::size_t>(0, 8));

// --- one comparison for each question about mounts ---

void compareAgent(AgentMountFileInfoWrap& wrap, AgentMountFileInfo& parser,
                  std::string const& agent) {
    auto const paths = parser.agentPaths(agent);
    EXPECT_FALSE(paths.empty());
    EXPECT_EQ(
        firstDifference(mountLines(parser, paths), elementsOf(wrap.getMountPathInfoAll(agent))),
        "");
    for (auto const& [name, files] : parser.agentStringProfileFileMap())
        EXPECT_EQ(wrap.getMountPathInfoAll(name)->size(), parser.agentPaths(name).size()) << name;
}

void compareFile(AgentMountFileInfoWrap& wrap, AgentMountFileInfo& parser,
                 std::string const& name) {
    for (bool const withIncludes : {false, true})
        EXPECT_EQ(firstDifference(mountLines(parser, parser.profileFilePaths(name, withIncludes)),
                                  elementsOf(wrap.getMountPathInfoFile(name, withIncludes))),
                  "")
            << name << (withIncludes ? " with includes" : "");
}

void compareFiles(AgentMountFileInfoWrap& wrap, AgentMountFileInfo& parser) {
    auto const files = sortedStrings(parser.includedProfileFiles());
    EXPECT_FALSE(files.empty());
    for (auto const& file : files) {
        EXPECT_TRUE(wrap.fileIsLoaded(file)) << file;
        compareFile(wrap, parser, file);
        compareFile(wrap, parser, file.substr(0, file.size() / 2) + "*");
    }
    compareFile(wrap, parser, "*");
}

void compareGroups(AgentMountFileInfoWrap& wrap, AgentMountFileInfo& parser) {
    parser.doInit();
    auto const groups = sortedStrings(parser.mountGroups());
    EXPECT_FALSE(groups.empty());
    for (auto const& group : groups)
        EXPECT_EQ(firstDifference(mountLines(parser, parser.mountGroupPaths(group)),
                                  elementsOf(wrap.getMountPathInfoGroup(group))),
                  "")
            << group;
}

void compareRecords(AgentMountFileInfoWrap& wrap, AgentMountFileInfo& parser) {
    parser.doInit();
    std::vector<std::string> expected;
    std::vector<std::string> published;
    for (auto const& [path, args] : parser.pathMountArgsMap()) {
        expected.push_back(support::mountLine(parser, path));
        published.push_back(support::textOf(wrap.getMountPathInfo(path)));
    }
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(firstDifference(expected, published), "");
}

TEST_P(OpenConfigPublished, MountsOfEveryAgentAreThoseOfAParser) {
    forEachAgent([](auto& wrap, auto& parser, std::string const& agent) {
        compareGroups(wrap, parser); // first, so that the entity loads for a group
        compareAgent(wrap, parser, agent);
        compareFiles(wrap, parser);
        compareRecords(wrap, parser);
    });
}

// --- what all agents have in common ---

TEST_P(OpenConfigPublished, ConfigAndPreinitPathsAreThoseOfAParser) {
    auto const agent = support::openConfigAgents()[GetParam()];
    auto const wrap = wrapOf(agent);
    auto const parser = parserOf(agent);
    auto const configs = support::configLines(*parser);
    EXPECT_EQ(configs.size(), 140U);
    EXPECT_EQ(firstDifference(configs, sortedStrings(elementsOf(wrap->getConfigPathInfo()))), "");
    auto const declared = support::preinitLines(*parser);
    EXPECT_EQ(declared.size(), 5893U);
    EXPECT_EQ(firstDifference(declared, elementsOf(wrap->getPreinitPathInfo())), "");
}

TEST_P(OpenConfigPublished, WhatIsNotThereIsAFaultWithTheParsersText) {
    auto const agent = support::openConfigAgents()[GetParam()];
    auto const wrap = wrapOf(agent);
    auto const parser = parserOf(agent);
    EXPECT_EQ(thrownText([&] { wrap->getMountPathInfo("no/such/path"); }),
              thrownText([&] { parser->mountInfo("no/such/path"); }));
    EXPECT_EQ(thrownText([&] { wrap->getMountPathInfoFile("NoSuchFile", true); }),
              thrownText([&] { parser->profileFilePaths("NoSuchFile", true); }));
    EXPECT_EQ(thrownText([&] { wrap->getMountPathInfoFile("NoSuchFile*", false); }),
              thrownText([&] { parser->profileFilePaths("NoSuchFile*", false); }));
    EXPECT_EQ(thrownText([&] { wrap->getMountPathInfoGroup("NoSuch::group"); }),
              thrownText([&] { parser->mountGroupPaths("NoSuch::group"); }));
    EXPECT_EQ(parser->exceptions().size(), 4U);
}

} // namespace
