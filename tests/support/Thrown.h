// The texts of faults: thrown, traced, and none at all.
#pragma once

#include "FaultTexts.h"
#include "Faults.h"

namespace support {

// What thrownText gives for an action that throws nothing.
inline std::string const nothingThrown = thrownText([] {});

} // namespace support
