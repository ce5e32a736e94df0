// Graphs in the language of Graphviz.
#include <iterator>

#include <fmt/format.h>

#include "graph/GraphDrawings.h"

namespace KeldaTool {
namespace {

// A printable text in quotes. Within these only a quote ends the text, but what they hold is then
// read once more, for backslashes and for entities of HTML; the line ends are ours.
std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (char const c : text)
        switch (c) {
        case '"':
            result += "\\\"";
            break;
        case '\\':
            result += "\\\\";
            break;
        case '&':
            result += "&amp;";
            break;
        case '\n':
            result += "\\n";
            break;
        default:
            result += c;
        }
    result += '"';
    return result;
}

// Agents that are at both ends of the drawing stand in line there.
enum class Place { first, last, between };

std::vector<Place> placesOfAgents(PathGraph const& graph) {
    std::vector<bool> writes(graph.agents.size());
    std::vector<bool> onlyReads(graph.agents.size());
    for (auto const& edge : graph.edges)
        (edge.writes ? writes : onlyReads)[edge.agent] = true;
    std::vector<Place> places;
    for (std::size_t i = 0; i < graph.agents.size(); ++i)
        places.push_back(!onlyReads[i] ? Place::first : !writes[i] ? Place::last : Place::between);
    return places;
}

class Dot {
  public:
    explicit Dot(PathGraph const& graph) : graph_(graph) {}

    std::string text() {
        write("digraph kelda {{\n"
              "  graph [rankdir=LR, ranksep=1.2, nodesep=0.15, fontname=\"sans-serif\",\n"
              "         label={}, tooltip=\"Agents and the paths between them\"];\n"
              "  node [fontname=\"monospace\", fontsize=11, height=0.3, margin=\"0.12,0.04\"];\n"
              "  edge [fontname=\"monospace\", fontsize=9, arrowsize=0.7];\n",
              quoted(countsOf(graph_)));
        writeAgents();
        writePaths();
        writeEdges();
        text_ += "}\n";
        return std::move(text_);
    }

  private:
    template <class... Arguments>
    void write(fmt::format_string<Arguments...> form, Arguments&&... arguments) {
        fmt::format_to(std::back_inserter(text_), form, std::forward<Arguments>(arguments)...);
    }

    void writeAgents() {
        text_ += "\n  // Agents\n"
                 "  node [shape=box, style=\"rounded,filled\", fillcolor=\"#dbe7f5\", "
                 "color=\"#4a6a8f\"];\n";
        for (std::size_t i = 0; i < graph_.agents.size(); ++i) {
            auto const& agent = graph_.agents[i];
            write("  a{} [label={}, tooltip={}{}];\n", i, quoted(labelOf(agent)),
                  quoted(listOf(agent.names)), agent.isAsked ? ", penwidth=2.5" : "");
        }
        auto const places = placesOfAgents(graph_);
        writeRank(places, Place::first, "min");
        writeRank(places, Place::last, "max");
    }

    void writeRank(std::vector<Place> const& places, Place place, char const* rank) {
        std::string nodes;
        for (std::size_t i = 0; i < places.size(); ++i)
            if (places[i] == place)
                nodes += fmt::format(" a{};", i);
        if (!nodes.empty())
            write("  {{ rank={};{} }}\n", rank, nodes);
    }

    void writePaths() {
        text_ += "\n  // Paths\n"
                 "  node [shape=plaintext, style=\"\", fillcolor=\"\", penwidth=1];\n";
        for (std::size_t i = 0; i < graph_.paths.size(); ++i)
            write("  p{} [label={}, tooltip={}];\n", i, quoted(labelOf(graph_.paths[i])),
                  quoted(listOf(graph_.paths[i].paths)));
    }

    void writeEdges() {
        text_ += "\n  // Values go from those that write a path to those that read it\n";
        for (auto const& edge : graph_.edges)
            writeEdge(edge);
    }

    void writeEdge(PathGraph::Edge const& edge) {
        auto const label = quoted(labelOf(edge));
        auto const tooltip = quoted(sentenceOf(graph_, edge));
        if (edge.writes)
            write("  a{} -> p{} [label={}, tooltip={}, {}];\n", edge.agent, edge.path, label,
                  tooltip,
                  edge.reads ? "dir=both, color=\"#7a4aa0\", fontcolor=\"#7a4aa0\""
                             : "color=\"#b3541e\", fontcolor=\"#b3541e\"");
        else
            write("  p{} -> a{} [label={}, tooltip={}, color=\"#1f6f8b\", fontcolor=\"#1f6f8b\", "
                  "style=dashed];\n",
                  edge.path, edge.agent, label, tooltip);
    }

    PathGraph const& graph_;
    std::string text_;
};

} // namespace

std::string dotOf(PathGraph const& graph) {
    return Dot(graph).text();
}

} // namespace KeldaTool
