// The answer of kelda explain, for people.
#pragma once

#include <string>

#include "explain/ExplainAnswer.h"

namespace KeldaTool {

/// Sections with a heading each; places open from where the program was called.
std::string explainText(ExplainAnswer const& answer);

} // namespace KeldaTool
