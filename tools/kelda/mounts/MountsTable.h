// What an agent mounts, as a table.
#pragma once

#include <string>

#include "mounts/MountsAnswer.h"

namespace KeldaTool {

/// The mounts, one per line, a sentence about the agent, and a line of totals; of a selection, the
/// mounts and a line of totals.
std::string mountsTable(MountsAnswer const& answer, MountsSelection const& selection, bool colour);

} // namespace KeldaTool
