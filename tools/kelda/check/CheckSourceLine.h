// A line of a file as it is shown below a finding, with a caret below the subject.
#pragma once

#include <cstddef>
#include <string>

#include "check/CheckResult.h"

namespace KeldaTool {

/// A line fit for a terminal: tabs are blanks, what cannot be shown is escaped, and of a line that
/// is very long only the surroundings of the subject are there, between "...".
struct ShownLine {
    std::string text;           ///< without blanks at its end
    std::size_t caret = 0;      ///< terminal columns before the subject
    std::size_t underlined = 0; ///< terminal columns that the subject takes, 0 for no subject
};

/// The line of a place, and where its subject is.
ShownLine shownLine(SourcePlace const& place);

} // namespace KeldaTool
