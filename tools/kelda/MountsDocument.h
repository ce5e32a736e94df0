// What an agent mounts, as a JSON document.
#pragma once

#include "JsonDocument.h"
#include "MountsAnswer.h"

namespace KeldaTool {

Json mountsDocument(MountsAnswer const& answer);

} // namespace KeldaTool
