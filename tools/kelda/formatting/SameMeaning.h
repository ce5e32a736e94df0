// The proof that two texts of a file mean the same to whoever reads it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "database/Device.h"

namespace KeldaTool {

/// Reads both texts with the library and compares everything that it makes of them, but for the
/// numbers of lines. Returns what differs, one line of any bytes; nothing if both mean the same.
std::optional<std::string> differenceInMeaning(std::string_view before, std::string_view after,
                                               KeldaDatabase::FileFamily family);

} // namespace KeldaTool
