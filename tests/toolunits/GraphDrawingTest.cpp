// Graphs drawn, with names of any bytes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <regex>
#include <set>

#include <KeldaUtil/MountFlags.h>

#include "XmlReader.h"
#include "graph/GraphColumns.h"
#include "graph/GraphDrawings.h"
#include "graph/SvgLayout.h"
#include "support/RandomFiles.h"

namespace {

using KeldaTool::PathGraph;
using KeldaTool::SvgBox;
using testing::HasSubstr;
using toolunits::XmlElement;
using toolunits::XmlReader;

PathGraph::Edge edge(std::uint32_t agent, std::uint32_t path, std::string const& flags) {
    return {agent, path, KeldaUtil::parseMountTableFlags(flags.c_str()),
            flags.find('r') != std::string::npos, flags.find('w') != std::string::npos};
}

// A writes to B, which reads and writes another path.
PathGraph smallGraph(std::string const& name = "B") {
    return {{{{"A"}, true}, {{name}, false}},
            {{{name}}, {{"p/q", "p/r"}}},
            {edge(0, 0, "w"), edge(1, 0, "r"), edge(1, 1, "rw")},
            0};
}

std::string anyBytes() {
    auto const piece = rc::gen::weightedOneOf<std::string>(
        {{3, rc::gen::container<std::string>(rc::gen::arbitrary<char>())},
         {2, rc::gen::element<std::string>("\"", "\\", "\n", "&lt;", "<", ">", "]]>", "*/", "\xff",
                                           "\xc3\xa4", "\xed\xa0\x80", "\uffff", "\u202e", "\\N",
                                           "&", std::string(1, '\0'))}});
    std::string bytes;
    for (auto const& part :
         *rc::gen::resize(5, rc::gen::container<std::vector<std::string>>(piece)))
        bytes += part;
    return bytes;
}

PathGraph anyGraph() {
    PathGraph graph;
    auto const agents = *rc::gen::inRange<std::uint32_t>(1, 8);
    auto const paths = *rc::gen::inRange<std::uint32_t>(1, 8);
    for (std::uint32_t i = 0; i < agents; ++i)
        graph.agents.push_back({{anyBytes()}, *rc::gen::arbitrary<bool>()});
    for (std::uint32_t path = 0; path < paths; ++path) {
        graph.paths.push_back({{anyBytes(), "x"}});
        for (std::uint32_t agent = 0; agent < agents; ++agent)
            if (auto const flags = *rc::gen::element<std::string>("", "r", "w", "rw", "rwcd", "ri");
                !flags.empty())
                graph.edges.push_back(edge(agent, path, flags));
    }
    return graph;
}

// Dot.

TEST(GraphDot, HasANodeOrAnEdgeInEachLine) {
    auto const text = dotOf(smallGraph());
    EXPECT_THAT(text, HasSubstr("\n  a0 [label=\"A\", tooltip=\"A\", penwidth=2.5];\n"));
    EXPECT_THAT(text, HasSubstr("\n  a1 [label=\"B\", tooltip=\"B\"];\n"));
    EXPECT_THAT(text, HasSubstr("\n  p1 [label=\"2 paths: p/q, ...\", tooltip=\"p/q\\np/r\"];\n"));
    EXPECT_THAT(text, HasSubstr("\n  a0 -> p0 [label=\"w\", tooltip=\"A writes B\", color="));
    EXPECT_THAT(text, HasSubstr("\n  p0 -> a1 [label=\"r\", tooltip=\"B reads B\", color="));
    EXPECT_THAT(text, HasSubstr("\n  a1 -> p1 [label=\"rw\", tooltip=\"B reads and writes 2 paths: "
                                "p/q, ...\", dir=both, "));
    EXPECT_THAT(text, HasSubstr("\n  { rank=min; a0; }\n"));
    EXPECT_EQ(text, dotOf(smallGraph()));
}

struct Quoted {
    std::string name;
    std::string label;
};

class EveryQuoted : public testing::TestWithParam<Quoted> {};

TEST_P(EveryQuoted, IsSafe) {
    EXPECT_THAT(
        dotOf(smallGraph(GetParam().name)),
        HasSubstr("\n  p0 [label=" + GetParam().label + ", tooltip=" + GetParam().label + "];"));
}

INSTANTIATE_TEST_SUITE_P(Names, EveryQuoted,
                         testing::Values(Quoted{"a\"b", R"("a\"b")"}, Quoted{"a\\", R"("a\\")"},
                                         Quoted{"\\N", R"("\\N")"}, Quoted{"a\\\"b", R"("a\\\"b")"},
                                         Quoted{"a\nb", R"("a\\x0ab")"},
                                         Quoted{"a\x1b", R"("a\\x1b")"},
                                         Quoted{"\xff", R"("\\xff")"},
                                         Quoted{"&lt;b&gt;", R"("&amp;lt;b&amp;gt;")"},
                                         Quoted{"<b>", R"("<b>")"},
                                         Quoted{"\xc3\xa4", "\"\xc3\xa4\""}, Quoted{"", R"("")"}));

// Svg.

TEST(GraphSvg, TellsWhatItShowsToThoseWhoDoNotSee) {
    auto const svg = XmlReader::read(svgOf(smallGraph()));
    EXPECT_EQ(svg.name, "svg");
    EXPECT_EQ(svg.attributes.at("role"), "img");
    EXPECT_EQ(svg.attributes.at("aria-labelledby"), "kelda-title kelda-desc");
    EXPECT_EQ(svg.named("title").at(0).text, "Agents and the paths between them");
    EXPECT_EQ(svg.named("desc").at(0).text,
              "2 agents, 3 paths. Agents on the left write the paths in the middle; those on the "
              "right read them.");
}

std::vector<XmlElement> groups(XmlElement const& svg, std::string const& kind) {
    std::vector<XmlElement> found;
    for (auto const& group : svg.named("g"))
        if (group.attributes.at("class").starts_with(kind))
            found.push_back(group);
    return found;
}

TEST(GraphSvg, HasABoxForEachNodeAndALineForEachEdge) {
    auto const svg = XmlReader::read(svgOf(smallGraph()));
    auto const paths = groups(svg, "path");
    ASSERT_EQ(paths.size(), 2U);
    EXPECT_EQ(paths[1].named("title").at(0).text, "p/q\np/r");
    EXPECT_EQ(paths[1].named("text").at(0).text, "2 paths: p/q, ...");
    std::vector<std::string> titles;
    for (auto const& line : svg.named("path"))
        for (auto const& title : line.named("title"))
            titles.push_back(line.attributes.at("class") + ": " + title.text);
    EXPECT_THAT(titles,
                testing::ElementsAre("edge writes: A writes B (w)", "edge reads: B reads B (r)",
                                     "edge both: B reads and writes 2 paths: p/q, ... (rw)"));
}

TEST(GraphSvg, ShowsAnAgentInBothColumnsInTheSameColour) {
    auto const agents = groups(XmlReader::read(svgOf(smallGraph())), "agent");
    ASSERT_EQ(agents.size(), 3U);
    EXPECT_EQ(agents[0].attributes.at("class"), "agent c0 asked");
    EXPECT_EQ(agents[1].attributes.at("class"), "agent c1");
    EXPECT_EQ(agents[2].attributes.at("class"), "agent c1");
    EXPECT_EQ(agents[1].named("text").at(0).text, agents[2].named("text").at(0).text);
}

TEST(GraphSvg, ShortensLongLabelsInTheirMiddle) {
    EXPECT_EQ(KeldaTool::svgLabel(std::string(60, 'x')), std::string(60, 'x'));
    EXPECT_EQ(KeldaTool::svgLabel(std::string(50, 'x') + std::string(50, 'y')),
              std::string(29, 'x') + "\u2026" + std::string(29, 'y'));
    std::string wide;
    for (int i = 0; i < 40; ++i)
        wide += "\u4e16";
    EXPECT_EQ(KeldaTool::svgLabel(wide), wide.substr(0, 42) + "\u2026" + wide.substr(0, 42));
}

RC_GTEST_PROP(GraphSvgProperty, IsWellFormedWhateverTheNames, ()) {
    auto const graph = anyGraph();
    auto const svg = XmlReader::read(svgOf(graph));
    std::multiset<std::string> expected;
    for (auto const& path : graph.paths)
        expected.insert(
            std::regex_replace(KeldaTool::listOf(path.paths), std::regex("\uffff"), "\\u{ffff}"));
    std::multiset<std::string> shown;
    for (auto const& path : groups(svg, "path"))
        shown.insert(path.named("title").at(0).text);
    RC_ASSERT(shown == expected);
    RC_ASSERT(svgOf(graph) == svgOf(graph));
}

bool overlap(SvgBox const& a, SvgBox const& b) {
    return a.x < b.right() && b.x < a.right() && a.y < b.y + b.height && b.y < a.y + a.height;
}

RC_GTEST_PROP(GraphLayoutProperty, HasBoxesApartAndWithinTheDrawing, ()) {
    auto const graph = anyGraph();
    auto const layout = svgLayout(graph);
    std::vector<SvgBox> boxes = layout.paths;
    for (auto const agent : layout.columns.writers)
        boxes.push_back(layout.writers[agent]);
    for (auto const agent : layout.columns.readers)
        boxes.push_back(layout.readers[agent]);
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        RC_ASSERT(boxes[i].x > 0 && boxes[i].right() < layout.width);
        RC_ASSERT(boxes[i].y > 0 && boxes[i].y + boxes[i].height < layout.height);
        for (std::size_t j = 0; j < i; ++j)
            RC_ASSERT(!overlap(boxes[i], boxes[j]));
    }
}

RC_GTEST_PROP(GraphLayoutProperty, HasRoomForNamesAndFlags, ()) {
    auto const graph = anyGraph();
    auto const layout = svgLayout(graph);
    std::vector<std::pair<std::pair<int, int>, int>> ends; // side and path, height
    for (std::size_t i = 0; i < graph.edges.size(); ++i) {
        auto const& [agent, path, flags, reads, writes] = graph.edges[i];
        auto const& line = layout.edges[i];
        auto const& box = layout.paths[path];
        auto const y = writes ? line.y2 : line.y1;
        RC_ASSERT(line.x1 < line.x2);
        RC_ASSERT(y - KeldaTool::svgRow / 2 >= box.y &&
                  y + KeldaTool::svgRow / 2 <= box.y + box.height);
        for (auto const& [node, other] : ends)
            RC_ASSERT(node != std::pair(writes ? 1 : 0, static_cast<int>(path)) ||
                      std::abs(other - y) >= KeldaTool::svgRow - 1);
        ends.emplace_back(std::pair(writes ? 1 : 0, static_cast<int>(path)), y);
        auto const name = KeldaTool::svgTextWidth(KeldaTool::svgLabel(labelOf(graph.paths[path])));
        RC_ASSERT(layout.leftFlags + name + layout.rightFlags < box.width);
    }
}

// Columns.

PathGraph crossedGraph() {
    return {{{{"A"}, false}, {{"B"}, false}},
            {{{"p"}}, {{"q"}}},
            {edge(0, 1, "w"), edge(1, 0, "w")},
            0};
}

TEST(GraphColumns, CountCrossingsOfEachSide) {
    auto const graph = crossedGraph();
    EXPECT_EQ(crossings(graph, columnsOf(graph)), 1U);
    EXPECT_EQ(crossings(graph, untangled(graph, columnsOf(graph))), 0U);
    auto both = graph;
    both.edges.push_back(edge(0, 0, "r"));
    EXPECT_EQ(crossings(both, columnsOf(both)), 1U);
}

std::size_t crossingsOfAllPairs(PathGraph const& graph, KeldaTool::GraphColumns const& columns) {
    auto const placeOf = [](std::vector<std::uint32_t> const& order, std::uint32_t node) {
        return std::find(order.begin(), order.end(), node) - order.begin();
    };
    std::size_t count = 0;
    for (auto const& a : graph.edges)
        for (auto const& b : graph.edges) {
            auto const& agents = a.writes ? columns.writers : columns.readers;
            if (a.writes == b.writes && placeOf(agents, a.agent) < placeOf(agents, b.agent) &&
                placeOf(columns.paths, a.path) > placeOf(columns.paths, b.path))
                ++count;
        }
    return count;
}

RC_GTEST_PROP(GraphColumnsProperty, CrossNoMoreThanBefore, ()) {
    auto const graph = anyGraph();
    auto const before = columnsOf(graph);
    auto const after = untangled(graph, before);
    RC_ASSERT(crossings(graph, before) == crossingsOfAllPairs(graph, before));
    RC_ASSERT(crossings(graph, after) == crossingsOfAllPairs(graph, after));
    RC_ASSERT(crossings(graph, after) <= crossings(graph, before));
    for (auto const column : {&KeldaTool::GraphColumns::writers, &KeldaTool::GraphColumns::paths,
                              &KeldaTool::GraphColumns::readers})
        RC_ASSERT(std::is_permutation((after.*column).begin(), (after.*column).end(),
                                      (before.*column).begin(), (before.*column).end()));
}

// The order of agents and paths, all of them writers, in which the fewest edges cross.
KeldaTool::GraphColumns bestColumns(PathGraph const& graph) {
    auto best = columnsOf(graph);
    auto tried = best;
    do {
        do {
            if (crossings(graph, tried) < crossings(graph, best))
                best = tried;
        } while (std::next_permutation(tried.paths.begin(), tried.paths.end()));
    } while (std::next_permutation(tried.writers.begin(), tried.writers.end()));
    return best;
}

TEST(GraphColumns, AreKeptWhereNoOrderIsBetter) {
    support::Dice dice(7);
    for (int round = 0; round < 100; ++round) {
        PathGraph graph{std::vector<PathGraph::Agent>(4, {{"a"}, false}),
                        std::vector<PathGraph::Path>(4, {{"p"}}),
                        {},
                        0};
        for (std::uint32_t path = 0; path < 4; ++path)
            for (std::uint32_t agent = 0; agent < 4; ++agent)
                if (dice.oneIn(2))
                    graph.edges.push_back(edge(agent, path, "w"));
        auto const best = bestColumns(graph);
        EXPECT_EQ(crossings(graph, untangled(graph, best)), crossings(graph, best));
    }
}

// A graph in which every node moved to the middle of its neighbours makes two crossings of one.
TEST(GraphColumns, AreKeptWhereTheMiddleOfNeighboursIsWorse) {
    PathGraph const graph{std::vector<PathGraph::Agent>(5, {{"a"}, false}),
                          std::vector<PathGraph::Path>(5, {{"p"}}),
                          {edge(0, 0, "w"), edge(1, 0, "r"), edge(2, 0, "w"), edge(3, 1, "w"),
                           edge(1, 3, "r"), edge(2, 3, "r"), edge(4, 3, "w"), edge(1, 4, "r"),
                           edge(2, 4, "r"), edge(4, 4, "r")},
                          0};
    EXPECT_EQ(crossings(graph, columnsOf(graph)), 1U);
    EXPECT_EQ(crossings(graph, untangled(graph, columnsOf(graph))), 1U);
}

} // namespace
