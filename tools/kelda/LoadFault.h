// The fault that ended a load, and how it is told.
#pragma once

#include <string>

#include <Fen/Exception.h>
#include <KeldaBase/MountFileInfo.h>

#include "LoadOptions.h"
#include "Report.h"

namespace KeldaTool {

struct LoadFault {
    std::string file; ///< empty when no file was open
    std::string message;
    int line = -1; ///< -1 when no file was open
};

/// The fault that `parser` recorded when it threw `thrown`; an exception that is none of its faults
/// is a fault without a file.
LoadFault lastFault(Kelda::MountFileInfo const& parser, Fen::AgentException const& thrown);

/// The report of a fault: for people "file:line: message" on standard error, as JSON the document
/// {"error": {"file": ..., "line": ..., "message": ...}} on standard output.
Report faultReport(LoadFault const& fault, Format format);

} // namespace KeldaTool
