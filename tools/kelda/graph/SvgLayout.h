// Where everything of a drawing in three columns stands, in pixels.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "graph/GraphColumns.h"
#include "graph/PathGraph.h"

namespace KeldaTool {

/// The columns that a text takes at most, and what is left of a longer one: its ends.
inline constexpr std::size_t svgLongestLabel = 60;
std::string svgLabel(std::string label);

/// What a text takes at the size of names, or of flags. No usual monospaced font takes more.
int svgTextWidth(std::string_view text);
int svgFlagsWidth(std::string_view text);

inline constexpr int svgRow = 16;     ///< a line of text
inline constexpr int svgPadding = 8;  ///< between a frame and its text
inline constexpr int svgMargin = 24;  ///< around everything
inline constexpr int svgHeading = 34; ///< above the columns
inline constexpr int svgLegend = 36;  ///< below them

struct SvgBox {
    int x = 0, y = 0, width = 0, height = 0;
    int right() const { return x + width; }
    int middle() const { return y + height / 2; }
};

/// A line from the left to the right.
struct SvgLine {
    int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
};

struct SvgLayout {
    int width = 0, height = 0;
    GraphColumns columns;
    std::vector<SvgBox> writers, readers; ///< by agent; empty for agents not in the column
    std::vector<SvgBox> paths;            ///< by path
    int leftFlags = 0, rightFlags = 0;    ///< what flags take within the boxes of paths
    std::vector<SvgLine> edges;           ///< by edge
};

/// No two boxes overlap, and no two edges end at the same place of a path.
SvgLayout svgLayout(PathGraph const& graph);

} // namespace KeldaTool
