// What changed of the declared paths.
#pragma once

#include <vector>

#include "FoundChange.h"

namespace KeldaDatabase {

/// Compares the preinit paths of two devices. Tokens other than those of cells may have any names.
void addPreinitChanges(DeviceSide& before, DeviceSide& after, Causes& causes,
                       std::vector<FoundChange>& found);

} // namespace KeldaDatabase
