// What an agent mounts, as a JSON document.
#pragma once

#include "JsonDocument.h"
#include "mounts/MountsAnswer.h"

namespace KeldaTool {

/// Everything about the agent or, of a selection, what was asked for and its mounts.
Json mountsDocument(MountsAnswer const& answer, MountsSelection const& selection);

} // namespace KeldaTool
