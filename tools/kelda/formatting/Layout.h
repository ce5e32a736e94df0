// The canonical layout of preinit files and mount profiles.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "database/Device.h"

namespace KeldaTool {

/// A line that was left as it is, because no other layout is sure to mean the same.
struct KeptLine {
    std::int32_t line = 0; ///< as an editor counts, of the text given
    std::string reason;    ///< "the line is longer than 1023 characters"
};

struct Formatted {
    std::string text;
    std::vector<KeptLine> kept; ///< by line
};

/// The text of a file in its canonical layout: formatting what was returned changes nothing. Any
/// bytes will do.
Formatted formatted(std::string_view text, KeldaDatabase::FileFamily family);

} // namespace KeldaTool
