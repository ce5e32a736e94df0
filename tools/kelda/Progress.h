// What is shown of long work while it lasts.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace KeldaTool {

/// To be called with how much is done. Writes "1200 files read" over itself on standard error, if
/// that is a terminal, once a second has gone by since the first call; clears it when it is
/// destroyed. Elsewhere it does nothing.
std::function<void(std::size_t)> progressOnTerminal(std::string what);

} // namespace KeldaTool
