// From the words of a call to the report of the command that they name.
#pragma once

#include "Report.h"

namespace KeldaTool {

/// Runs the command that the arguments name. Help and version are results; a wrong call is told in
/// the messages. `colour`: tables may be coloured.
Report runCommandLine(int argc, char const* const* argv, bool colour);

} // namespace KeldaTool
