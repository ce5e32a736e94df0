// Which agents and paths are in a graph, and what becomes of equal nodes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "database/DatabaseMountFileInfo.h"
#include "graph/PathGraph.h"
#include "support/Device.h"

namespace {

using KeldaTool::GraphQuestion;
using KeldaTool::PathGraph;
using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

// "A rw a/b" for each edge.
Lines linesOf(PathGraph const& graph) {
    Lines lines;
    for (auto const& edge : graph.edges)
        lines.push_back(labelOf(graph.agents[edge.agent]) + " " + labelOf(edge) + " " +
                        labelOf(graph.paths[edge.path]));
    return lines;
}

class Graph : public testing::Test {
  protected:
    Graph() {
        device.preinit("P", "a/b,A\na/c,A\na/d,A\nfan/%x,F,createOnMount\n"
                            "fan/%x/%y,F,createOnMount\n");
    }

    void load() {
        parser = std::make_unique<KeldaDatabase::DatabaseMountFileInfo>(device.preinitDir(),
                                                                        device.profileDir());
    }
    PathGraph graph(GraphQuestion const& question = {}) {
        load();
        return pathGraph(parser->device(), question);
    }
    Lines lines(GraphQuestion const& question = {}) { return linesOf(graph(question)); }
    Lines named(std::string const& name) {
        load();
        Lines names;
        for (auto const agent : KeldaTool::agentsNamed(parser->device(), name))
            names.emplace_back(parser->device().agents[agent].name.view());
        return names;
    }

    support::Device device;
    std::unique_ptr<KeldaDatabase::DatabaseMountFileInfo> parser;
};

TEST_F(Graph, HoldsThePathsThatOneWritesAndAnotherReads) {
    device.profile("1", "agentName:A\na/b,A,w\na/c,A,rw\na/d,A,r\n")
        .profile("2", "agentName:B\na/b,A,r\na/d,A,r\n")
        .profile("3", "agentName:C\na/c,A,i\n");
    auto const found = graph();
    EXPECT_THAT(linesOf(found), ElementsAre("A w a/b", "B r a/b"));
    EXPECT_EQ(found.agents.size(), 2U);
    EXPECT_EQ(found.leftOut, 2U);
}

TEST_F(Graph, HoldsWhatTwoReadAndWriteAndWhatOneWritesForAReaderWhoWrites) {
    device.profile("1", "agentName:A\na/b,A,rw\na/c,A,w\na/d,A,w\n")
        .profile("2", "agentName:B\na/b,A,rw\na/c,A,rw\na/d,A,w\n");
    EXPECT_THAT(lines(), ElementsAre("A rw a/b", "B rw a/b", "A w a/c", "B rw a/c"));
}

TEST_F(Graph, OfAllPathsHoldsThoseOfOneSideToo) {
    device.profile("1", "agentName:A\na/b,A,w\na/c,A,rw\na/d,A,i\n")
        .profile("2", "agentName:B\nfan/%cellId,F,r\n");
    EXPECT_THAT(lines(), IsEmpty());
    auto const found = graph({{}, {}, true});
    EXPECT_THAT(linesOf(found), ElementsAre("A w a/b", "A rw a/c", "B r fan/1"));
    EXPECT_EQ(found.leftOut, 0U);
}

TEST_F(Graph, OfAnAgentHoldsItsPathsWithAllWhoHaveThem) {
    device.profile("1", "agentName:A\na/b,A,w\na/c,A,w\n")
        .profile("2", "agentName:B\na/b,A,r\n")
        .profile("3", "agentName:C\na/b,A,r\na/c,A,r\n");
    EXPECT_THAT(lines({{"B"}, {}, false}), ElementsAre("A w a/b", "B r a/b", "C r a/b"));
    auto const found = graph({{"B"}, {}, false});
    EXPECT_EQ(found.leftOut, 0U);
    EXPECT_FALSE(found.agents[0].isAsked);
    EXPECT_TRUE(found.agents[1].isAsked);
}

TEST_F(Graph, OfPathsHoldsOnlyThose) {
    device.profile("1", "agentName:A\na/b,A,w\na/c,A,w\na/d,A,w\n")
        .profile("2", "agentName:B\na/b,A,r\na/c,A,r\na/d,A,r\n");
    EXPECT_THAT(lines({{}, {"*/b", "a/d"}, false}),
                ElementsAre("A w a/b", "B r a/b", "A w a/d", "B r a/d"));
}

TEST_F(Graph, KnowsThatTokensTakeAnyValue) {
    device.profile("1", "agentName:Fan-%x\nfan/%x,F,w\n")
        .profile("2", "agentName:One\nfan/%cellId,F,r\n");
    EXPECT_THAT(lines(), ElementsAre("Fan-%x w fan/1", "One r fan/1"));
}

// Otherwise, writer and reader of two paths would seem to be connected through the third.
TEST_F(Graph, DoesNotTakeTheReaderOfOneValueForThatOfAnother) {
    device.profile("1", "agentName:All-%x\nfan/%x,F,r\n")
        .profile("2", "agentName:One\nfan/%cellId,F,w\n")
        .profile("3", "agentName:Two\nfan/%peerCellId,F,r\n");
    EXPECT_THAT(lines(), ElementsAre("All-%x r fan/1", "One w fan/1"));
    EXPECT_THAT(lines({{}, {}, true}), ElementsAre("All-%x r fan/*", "All-%x r fan/1",
                                                   "One w fan/1", "All-%x r fan/2", "Two r fan/2"));
}

TEST_F(Graph, DoesNotDoSoForPathsWithFurtherTokensEither) {
    device.profile("1", "agentName:All-%x-%y\nfan/%x/%y,F,r\n")
        .profile("2", "agentName:One-%x\nfan/%x/%cellId,F,w\n")
        .profile("3", "agentName:Two-%x\nfan/%x/%peerCellId,F,r\n");
    EXPECT_THAT(lines(), ElementsAre("All-%x-%y r fan/*/1", "One-%x w fan/*/1"));
}

TEST_F(Graph, ConnectsPathsWithTokensAtDifferentPlaces) {
    device.profile("1", "agentName:A-%x\nfan/%x/%cellId,F,w\n")
        .profile("2", "agentName:B-%x\nfan/%cellId/%x,F,r\n");
    EXPECT_THAT(lines(), ElementsAre("A-%x w fan/*/1", "B-%x r fan/*/1", "A-%x w fan/1/*",
                                     "B-%x r fan/1/*"));
}

TEST_F(Graph, AddsUpTheFlagsOfAnAgentThatHasAPathInTwoWays) {
    device.profile("1", "agentName:A-%x\nfan/%x,F,r\nfan/%cellId,F,wi\n")
        .profile("2", "agentName:B\nfan/%cellId,F,r\n");
    EXPECT_THAT(lines(), ElementsAre("A-%x rwi fan/1", "B r fan/1"));
}

TEST_F(Graph, LeavesActiveVariantsOut) {
    device.profile("1", "agentName:A-%x\nactiveMount\nmatchActiveName\na/b,A,rw\n");
    EXPECT_THAT(lines({{}, {}, true}), ElementsAre("A-%x rw a/b"));
}

TEST_F(Graph, FindsAgentsByNameStringAndPattern) {
    device.profile("1", "agentName:Fan-%x\n")
        .profile("2", "agentName:FanTray-%x\nmatchActiveName\n")
        .profile("3", "agentName:Thermal\n");
    EXPECT_THAT(named("Fan-%x"), ElementsAre("Fan-%x"));
    EXPECT_THAT(named("Fan-2"), ElementsAre("Fan-%x"));
    EXPECT_THAT(named("Fan-*"), ElementsAre("Fan-%x"));
    EXPECT_THAT(named("Fan*"), ElementsAre("Fan-%x", "FanTray-%x"));
    EXPECT_THAT(named("*a*"), ElementsAre("Fan-%x", "FanTray-%x", "Thermal"));
    EXPECT_THAT(named("*x"), ElementsAre("Fan-%x", "FanTray-%x"));
    EXPECT_THAT(named("thermal"), IsEmpty());
    EXPECT_THAT(named("Ther"), IsEmpty());
}

TEST_F(Graph, PutsPathsWithTheSameEdgesTogether) {
    device.profile("1", "agentName:A\na/b,A,w\na/c,A,w\na/d,A,rw\n")
        .profile("2", "agentName:B\na/b,A,r\na/c,A,r\na/d,A,r\n");
    auto const few = grouped(graph(), 2);
    EXPECT_THAT(linesOf(few), ElementsAre("A w 2 paths: a/b, ...", "B r 2 paths: a/b, ...",
                                          "A rw a/d", "B r a/d"));
    EXPECT_EQ(KeldaTool::listOf(few.paths[0].paths), "a/b\na/c");
    EXPECT_EQ(countsOf(few), "2 agents, 3 paths");
    EXPECT_EQ(sentenceOf(few, few.edges[2]), "A reads and writes a/d");
    EXPECT_EQ(linesOf(grouped(graph(), 3)), linesOf(graph()));
}

TEST_F(Graph, PutsAgentsWithTheSameEdgesTogetherButThoseAskedFor) {
    device.profile("1", "agentName:W\na/b,A,w\n")
        .profile("2", "agentName:R1\na/b,A,r\n")
        .profile("3", "agentName:R2\na/b,A,r\n")
        .profile("4", "agentName:R3\na/b,A,r\n")
        .profile("5", "agentName:R4\na/b,A,ri\n");
    EXPECT_THAT(linesOf(grouped(graph({{"R2"}, {}, false}), 1)),
                ElementsAre("2 agents: R1, ... r a/b", "R2 r a/b", "R4 ri a/b", "W w a/b"));
    auto const few = grouped(graph(), 1);
    EXPECT_EQ(sentenceOf(few, few.edges[0]), "3 agents: R1, ... read a/b");
    EXPECT_THAT(linesOf(grouped(graph({{"R2"}, {}, false}), 5)), testing::SizeIs(5));
}

} // namespace
