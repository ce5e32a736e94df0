// The canonical layout of one line, as far as it does not depend on its neighbours.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formatting/SourceLines.h"

namespace KeldaTool {

struct LaidOutLine {
    enum class Kind {
        blank,
        comment, ///< and nothing else
        row,     ///< a path line, whose columns stand below those of its neighbours
        loose,   ///< a path line that has a layout of its own
        other
    };

    Kind kind = Kind::other;
    std::string text{}; ///< for a row, without alignment; without line end unless kept
    std::vector<std::string> cells{}; ///< of a row: two or three
    std::string comment{};            ///< of a row, with its "#"; may be empty
    std::string_view obstacle{};      ///< why the line is kept as it is; empty for a layout
};

LaidOutLine laidOut(SourceLine const& line, KeldaDatabase::FileFamily family);

} // namespace KeldaTool
