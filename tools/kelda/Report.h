// What a command has to say. Commands write nothing themselves; main does.
#pragma once

#include <string>

namespace KeldaTool {

enum class ExitStatus : int {
    success = 0,
    failure = 1, ///< a file could not be loaded, a check found something, or output was lost
    wrongCall = 2
};

struct Report {
    std::string results;  ///< for standard output
    std::string messages; ///< for standard error
    ExitStatus status = ExitStatus::success;
};

} // namespace KeldaTool
