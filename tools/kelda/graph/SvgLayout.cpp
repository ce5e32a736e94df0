#include "graph/SvgLayout.h"

#include <algorithm>

#include "Text.h"

namespace KeldaTool {
namespace {

constexpr int nameCharacter = 8;
constexpr int flagsCharacter = 7;
constexpr int gapBelow = 8; // a box
constexpr int widestGap = 24;
constexpr int edgeAtAgent = 6;

int pixels(std::string_view text, int character) {
    return static_cast<int>(displayWidth(text)) * character;
}

// The characters of a printable text.
std::vector<std::string_view> charactersOf(std::string_view text) {
    std::vector<std::string_view> characters;
    while (!text.empty()) {
        std::size_t size = 1;
        while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xc0U) == 0x80U)
            ++size;
        characters.push_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return characters;
}

// How many bytes the first characters have that take no more than so many columns.
template <class Iterator>
std::size_t sizeOfColumns(Iterator character, Iterator end, std::size_t columns) {
    std::size_t size = 0;
    for (std::size_t taken = 0; character != end; ++character) {
        taken += displayWidth(*character);
        if (taken > columns)
            break;
        size += character->size();
    }
    return size;
}

class Layout {
  public:
    explicit Layout(PathGraph const& graph) : graph_(graph) {
        layout_.columns = untangled(graph, columnsOf(graph));
    }

    SvgLayout take() {
        sortEdges();
        setHeights();
        placeColumns();
        placeEdges();
        return std::move(layout_);
    }

  private:
    // Edges of a node on one of its sides, from the top to the bottom.
    using Sides = std::vector<std::vector<std::uint32_t>>;

    void sortEdges() {
        atPathLeft_.resize(graph_.paths.size());
        atPathRight_.resize(graph_.paths.size());
        atWriter_.resize(graph_.agents.size());
        atReader_.resize(graph_.agents.size());
        for (std::uint32_t i = 0; i < graph_.edges.size(); ++i) {
            auto const& edge = graph_.edges[i];
            (edge.writes ? atPathLeft_ : atPathRight_)[edge.path].push_back(i);
            (edge.writes ? atWriter_ : atReader_)[edge.agent].push_back(i);
        }
        sortBy(atPathLeft_, layout_.columns.writers, &PathGraph::Edge::agent);
        sortBy(atPathRight_, layout_.columns.readers, &PathGraph::Edge::agent);
        sortBy(atWriter_, layout_.columns.paths, &PathGraph::Edge::path);
        sortBy(atReader_, layout_.columns.paths, &PathGraph::Edge::path);
    }

    void sortBy(Sides& sides, std::vector<std::uint32_t> const& order,
                std::uint32_t PathGraph::Edge::*end) const {
        std::vector<std::size_t> place(std::max(graph_.agents.size(), graph_.paths.size()));
        for (std::size_t i = 0; i < order.size(); ++i)
            place[order[i]] = i;
        for (auto& side : sides)
            std::sort(side.begin(), side.end(), [&](std::uint32_t a, std::uint32_t b) {
                return place[graph_.edges[a].*end] < place[graph_.edges[b].*end];
            });
    }

    void setHeights() {
        layout_.paths.resize(graph_.paths.size());
        layout_.writers.resize(graph_.agents.size());
        layout_.readers.resize(graph_.agents.size());
        for (std::size_t i = 0; i < graph_.paths.size(); ++i) {
            auto const lines = std::max(atPathLeft_[i].size(), atPathRight_[i].size());
            layout_.paths[i].height = static_cast<int>(lines) * svgRow + svgPadding;
        }
        for (std::size_t i = 0; i < graph_.agents.size(); ++i) {
            layout_.writers[i].height = heightOfAgent(atWriter_[i].size());
            layout_.readers[i].height = heightOfAgent(atReader_[i].size());
        }
    }

    static int heightOfAgent(std::size_t edges) {
        return std::max(svgRow, static_cast<int>(edges) * edgeAtAgent) + svgPadding;
    }

    void placeColumns() {
        auto const& columns = layout_.columns;
        auto const tallest = std::max({heightOf(layout_.writers, columns.writers),
                                       heightOf(layout_.paths, columns.paths),
                                       heightOf(layout_.readers, columns.readers)});
        // Long lines need room to bend.
        auto const gap = std::clamp(60 + tallest / 8, 90, 360);
        auto x = svgMargin;
        x = place(layout_.writers, columns.writers, x, agentsWidth(columns.writers), tallest) + gap;
        x = place(layout_.paths, columns.paths, x, pathsWidth(), tallest);
        if (!columns.readers.empty())
            x = place(layout_.readers, columns.readers, x + gap, agentsWidth(columns.readers),
                      tallest);
        layout_.width = x + svgMargin;
        layout_.height = svgMargin + svgHeading + tallest + svgLegend + svgMargin;
    }

    static int heightOf(std::vector<SvgBox> const& boxes, std::vector<std::uint32_t> const& order) {
        int height = -gapBelow;
        for (auto const i : order)
            height += boxes[i].height + gapBelow;
        return std::max(height, 0);
    }

    // In the middle of the height, spread over it as far as that looks well. What is returned is
    // the right end of the column.
    static int place(std::vector<SvgBox>& boxes, std::vector<std::uint32_t> const& order, int x,
                     int width, int tallest) {
        auto const gaps = std::max(static_cast<int>(order.size()) - 1, 0);
        auto const spare = tallest - heightOf(boxes, order);
        auto const more = gaps == 0 ? 0 : std::min(spare / gaps, widestGap - gapBelow);
        auto y = svgMargin + svgHeading + (spare - more * gaps) / 2;
        for (auto const i : order) {
            boxes[i] = {x, y, width, boxes[i].height};
            y += boxes[i].height + gapBelow + more;
        }
        return x + width;
    }

    int agentsWidth(std::vector<std::uint32_t> const& agents) const {
        int width = 0;
        for (auto const agent : agents)
            width = std::max(width, svgTextWidth(svgLabel(labelOf(graph_.agents[agent]))));
        return width + 2 * svgPadding;
    }

    int pathsWidth() {
        int width = 0;
        for (auto const& path : graph_.paths)
            width = std::max(width, svgTextWidth(svgLabel(labelOf(path))));
        for (auto const& edge : graph_.edges) {
            auto& flags = edge.writes ? layout_.leftFlags : layout_.rightFlags;
            flags = std::max(flags, svgFlagsWidth(labelOf(edge)) + svgPadding);
        }
        return layout_.leftFlags + width + layout_.rightFlags + 2 * svgPadding;
    }

    // Edges of a side are spread over its height.
    static void spread(std::vector<std::uint32_t> const& side, SvgBox const& box,
                       std::vector<int>& ends) {
        auto const inner = box.height - svgPadding;
        auto const parts = 2 * static_cast<int>(side.size());
        for (int at = 0; at < parts / 2; ++at)
            ends[side[static_cast<std::size_t>(at)]] =
                box.y + svgPadding / 2 + inner * (2 * at + 1) / parts;
    }

    void placeEdges() {
        std::vector<int> atAgent(graph_.edges.size());
        std::vector<int> atPath(graph_.edges.size());
        for (std::size_t i = 0; i < graph_.agents.size(); ++i) {
            spread(atWriter_[i], layout_.writers[i], atAgent);
            spread(atReader_[i], layout_.readers[i], atAgent);
        }
        for (std::size_t i = 0; i < graph_.paths.size(); ++i) {
            spread(atPathLeft_[i], layout_.paths[i], atPath);
            spread(atPathRight_[i], layout_.paths[i], atPath);
        }
        for (std::size_t i = 0; i < graph_.edges.size(); ++i)
            layout_.edges.push_back(lineOf(graph_.edges[i], atAgent[i], atPath[i]));
    }

    SvgLine lineOf(PathGraph::Edge const& edge, int atAgent, int atPath) const {
        auto const& path = layout_.paths[edge.path];
        if (edge.writes)
            return {layout_.writers[edge.agent].right(), atAgent, path.x, atPath};
        return {path.right(), atPath, layout_.readers[edge.agent].x, atAgent};
    }

    PathGraph const& graph_;
    Sides atPathLeft_, atPathRight_, atWriter_, atReader_;
    SvgLayout layout_;
};

} // namespace

std::string svgLabel(std::string label) {
    if (displayWidth(label) <= svgLongestLabel)
        return label;
    constexpr std::size_t half = (svgLongestLabel - 1) / 2;
    auto const characters = charactersOf(label);
    auto const front = sizeOfColumns(characters.begin(), characters.end(), half);
    auto const back = sizeOfColumns(characters.rbegin(), characters.rend(), half);
    std::string text(label, 0, front);
    text.append("\xe2\x80\xa6").append(label, label.size() - back);
    return text;
}

int svgTextWidth(std::string_view text) {
    return pixels(text, nameCharacter);
}

int svgFlagsWidth(std::string_view text) {
    return pixels(text, flagsCharacter);
}

SvgLayout svgLayout(PathGraph const& graph) {
    return Layout(graph).take();
}

} // namespace KeldaTool
