// Graphs as pictures: what stands where is the matter of SvgLayout.
#include <array>
#include <iterator>
#include <utility>

#include <fmt/format.h>

#include "Text.h"
#include "graph/GraphDrawings.h"
#include "graph/SvgLayout.h"

namespace KeldaTool {
namespace {

// Everything that has a colour has a class, so that two sets of colours are enough.
constexpr std::string_view style =
    "text{font-family:monospace;font-size:13px;fill:#1d1d1b}\n"
    ".heading{font-family:sans-serif;font-weight:bold}\n"
    ".legend{font-family:sans-serif;font-size:12px}\n"
    ".flags{font-size:11px;fill:#5c5c57}\n"
    ".ground{fill:#ffffff}\n"
    ".edge{fill:none;stroke-width:1.3;stroke-opacity:.75}\n"
    ".edge:hover{stroke-width:3;stroke-opacity:1}\n"
    ".writes{stroke:#b3541e} .reads{stroke:#1f6f8b} .both{stroke:#7a4aa0}\n"
    ".head-writes{fill:#b3541e} .head-reads{fill:#1f6f8b} .head-both{fill:#7a4aa0}\n"
    ".reads{stroke-dasharray:5 3}\n"
    "rect{stroke-width:1}\n"
    ".path rect{fill:#f5f5f2;stroke:#b4b4ac}\n"
    ".asked rect{stroke-width:3}\n"
    ".c0 rect{fill:#dbe7f5;stroke:#4a6a8f} .c1 rect{fill:#e2f0d9;stroke:#5b7f45}\n"
    ".c2 rect{fill:#fde9d0;stroke:#a86f26} .c3 rect{fill:#f3dcea;stroke:#94507a}\n"
    ".c4 rect{fill:#e4dff5;stroke:#66589b} .c5 rect{fill:#d5eeee;stroke:#3d7f80}\n"
    ".c6 rect{fill:#f6f0c4;stroke:#867b24} .c7 rect{fill:#f7d9d5;stroke:#a0524a}\n"
    "@media (prefers-color-scheme:dark){\n"
    "text{fill:#ecece6} .flags{fill:#a9a9a2} .ground{fill:#1b1b1d}\n"
    ".writes{stroke:#ee9a63} .reads{stroke:#6cc0dc} .both{stroke:#c79be8}\n"
    ".head-writes{fill:#ee9a63} .head-reads{fill:#6cc0dc} .head-both{fill:#c79be8}\n"
    ".path rect{fill:#29292c;stroke:#62625d}\n"
    ".c0 rect{fill:#24364c;stroke:#86a9d2} .c1 rect{fill:#2b3d20;stroke:#93bd78}\n"
    ".c2 rect{fill:#493215;stroke:#dca75f} .c3 rect{fill:#452437;stroke:#d089b3}\n"
    ".c4 rect{fill:#322a50;stroke:#a598dd} .c5 rect{fill:#173d3e;stroke:#71bdbe}\n"
    ".c6 rect{fill:#3c370f;stroke:#c6b952} .c7 rect{fill:#4c241f;stroke:#de8d84}\n"
    "}\n";
constexpr std::size_t colours = 8;

// A printable text as the content of an element or an attribute. Of what may not stand in a
// document, such a text can only hold the two characters that are none.
std::string xml(std::string_view text) {
    constexpr std::pair<std::string_view, std::string_view> replacements[] = {
        {"&", "&amp;"},
        {"<", "&lt;"},
        {">", "&gt;"},
        {"\"", "&quot;"},
        {"\xef\xbf\xbe", "\\u{fffe}"},
        {"\xef\xbf\xbf", "\\u{ffff}"},
    };
    std::string result;
    while (!text.empty()) {
        auto piece = text.substr(0, 1);
        auto shown = piece;
        for (auto const& [from, to] : replacements)
            if (text.starts_with(from)) {
                piece = from;
                shown = to;
            }
        result += shown;
        text.remove_prefix(piece.size());
    }
    return result;
}

char const* classOf(PathGraph::Edge const& edge) {
    if (!edge.writes)
        return "reads";
    return edge.reads ? "both" : "writes";
}

char const* markersOf(std::string_view edgeClass) {
    return edgeClass == "both" ? " marker-start=\"url(#kelda-both)\"" : "";
}

class Svg {
  public:
    explicit Svg(PathGraph const& graph) : graph_(graph), layout_(svgLayout(graph)) {}

    std::string text() {
        writeHead();
        writeHeadings();
        for (std::size_t i = 0; i < graph_.edges.size(); ++i)
            writeEdge(graph_.edges[i], layout_.edges[i]);
        for (auto const agent : layout_.columns.writers)
            writeAgent(agent, layout_.writers[agent]);
        for (auto const path : layout_.columns.paths)
            writePath(graph_.paths[path], layout_.paths[path]);
        for (std::size_t i = 0; i < graph_.edges.size(); ++i)
            writeFlags(graph_.edges[i], layout_.edges[i]);
        for (auto const agent : layout_.columns.readers)
            writeAgent(agent, layout_.readers[agent]);
        writeLegend();
        text_ += "</svg>\n";
        return std::move(text_);
    }

  private:
    template <class... Arguments>
    void write(fmt::format_string<Arguments...> form, Arguments&&... arguments) {
        fmt::format_to(std::back_inserter(text_), form, std::forward<Arguments>(arguments)...);
    }

    void writeHead() {
        auto const width = layout_.width;
        auto const height = layout_.height;
        write(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" "
            "viewBox=\"0 0 {0} {1}\" role=\"img\" aria-labelledby=\"kelda-title kelda-desc\">\n"
            "<title id=\"kelda-title\">Agents and the paths between them</title>\n"
            "<desc id=\"kelda-desc\">{2}. Agents on the left write the paths in the middle; those "
            "on the right read them.</desc>\n"
            "<style>\n{3}</style>\n<defs>\n",
            width, height, countsOf(graph_), style);
        for (char const* const kind : {"writes", "reads", "both"})
            write("<marker id=\"kelda-{0}\" viewBox=\"0 0 8 8\" refX=\"8\" refY=\"4\" "
                  "markerWidth=\"8\" markerHeight=\"8\" markerUnits=\"userSpaceOnUse\" "
                  "orient=\"auto-start-reverse\"><path class=\"head-{0}\" d=\"M0 0L8 4L0 8z\"/>"
                  "</marker>\n",
                  kind);
        write("</defs>\n<rect class=\"ground\" width=\"{}\" height=\"{}\"/>\n", width, height);
    }

    void writeHeadings() {
        auto const& columns = layout_.columns;
        auto const heading = [this](SvgBox const& box, char const* text) {
            write("<text class=\"heading\" x=\"{}\" y=\"{}\">{}</text>\n", box.x, svgMargin + 13,
                  text);
        };
        if (!columns.writers.empty())
            heading(layout_.writers[columns.writers.front()], "Writers");
        if (!columns.paths.empty())
            heading(layout_.paths[columns.paths.front()], "Paths");
        if (!columns.readers.empty())
            heading(layout_.readers[columns.readers.front()], "Readers");
    }

    void writeEdge(PathGraph::Edge const& edge, SvgLine const& line) {
        auto const* const kind = classOf(edge);
        auto const bend = (line.x1 + line.x2) / 2;
        write("<path class=\"edge {0}\" marker-end=\"url(#kelda-{0})\"{1} "
              "d=\"M{2} {3}C{4} {3} {4} {5} {6} {5}\"><title>{7} ({8})</title></path>\n",
              kind, markersOf(kind), line.x1, line.y1, bend, line.y2, line.x2,
              xml(sentenceOf(graph_, edge)), xml(labelOf(edge)));
    }

    void writeAgent(std::uint32_t index, SvgBox const& box) {
        auto const& agent = graph_.agents[index];
        write("<g class=\"agent c{}{}\">", index % colours, agent.isAsked ? " asked" : "");
        writeBox(listOf(agent.names), box, 5);
        writeText(svgLabel(labelOf(agent)), box.x + svgPadding, box.middle() + 4);
        text_ += "</g>\n";
    }

    void writePath(PathGraph::Path const& path, SvgBox const& box) {
        text_ += "<g class=\"path\">";
        writeBox(listOf(path.paths), box, 0);
        writeText(svgLabel(labelOf(path)), box.x + svgPadding + layout_.leftFlags,
                  box.middle() + 4);
        text_ += "</g>\n";
    }

    void writeBox(std::string const& tooltip, SvgBox const& box, int radius) {
        write("<title>{}</title><rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" rx=\"{}\"/>",
              xml(tooltip), box.x, box.y, box.width, box.height, radius);
    }

    // The length holds whatever font there is.
    void writeText(std::string const& text, int x, int y) {
        if (!text.empty())
            write("<text x=\"{}\" y=\"{}\" textLength=\"{}\" lengthAdjust=\"spacingAndGlyphs\">{}"
                  "</text>",
                  x, y, svgTextWidth(text), xml(text));
    }

    // At the end of the edge, within the box of the path.
    void writeFlags(PathGraph::Edge const& edge, SvgLine const& line) {
        auto const flags = labelOf(edge);
        auto const width = svgFlagsWidth(flags);
        auto const x = edge.writes ? line.x2 + svgPadding : line.x1 - svgPadding - width;
        write("<text class=\"flags\" x=\"{}\" y=\"{}\" textLength=\"{}\" "
              "lengthAdjust=\"spacingAndGlyphs\">{}</text>\n",
              x, (edge.writes ? line.y2 : line.y1) + 4, width, xml(flags));
    }

    void writeLegend() {
        constexpr std::array<std::pair<char const*, char const*>, 3> kinds{
            {{"writes", "writes"}, {"both", "reads and writes"}, {"reads", "reads"}}};
        auto const y = layout_.height - svgMargin;
        auto x = svgMargin;
        for (auto const& [kind, meaning] : kinds) {
            write("<path class=\"edge {0}\" marker-end=\"url(#kelda-{0})\"{1} d=\"M{2} {3}H{4}\"/>"
                  "<text class=\"legend\" x=\"{5}\" y=\"{6}\">{7}</text>\n",
                  kind, markersOf(kind), x, y, x + 36, x + 42, y + 4, meaning);
            x += 42 + svgTextWidth(meaning) + svgMargin;
        }
    }

    PathGraph const& graph_;
    SvgLayout layout_;
    std::string text_;
};

} // namespace

std::string svgOf(PathGraph const& graph) {
    return Svg(graph).text();
}

} // namespace KeldaTool
