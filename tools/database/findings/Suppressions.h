// Comments that allow a finding.
//
//     card/%slot/state, Card::State, rw   # kelda: allow type-column-differs: moves in spring
//     # kelda: allow path-mounted-twice, alias-unused: the second one is for the old cards
//     # kelda: allow-file orphan-file: a template that people copy
//
// The first form covers its own line, continuations included. On a line of its own a comment covers
// the next line that is neither blank nor a comment. The third form covers its file. A reason has
// to be given.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "Finding.h"
#include "database/Device.h"

namespace KeldaDatabase {

struct SuppressionResult {
    std::vector<Finding> findings;
    std::size_t suppressed = 0; ///< how many findings were left out
};

/// Whether a rule was checked, and its findings are wanted.
using RuleSelection = std::function<bool(RuleId)>;

/// Leaves out the findings that comments of the device's files allow. Appended are what is wrong
/// with the comments, suppressionMalformed, and comments that cover nothing, suppressionUnused;
/// these two cannot be suppressed. A comment that names a rule that was not checked is not told to
/// cover nothing. `findings` should be all of the device: what the reader does not ask for is
/// better left out afterwards.
SuppressionResult suppress(
    Device const& device, std::vector<Finding> findings,
    RuleSelection const& isChecked = [](RuleId) { return true; });

} // namespace KeldaDatabase
