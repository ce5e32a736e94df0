// The completion script for bash. It needs nothing but bash itself, and works as a file of the
// package bash-completion too.
#pragma once

#include <string>

#include "completion/CompletionModel.h"

namespace KeldaTool {

std::string bashCompletion(CompletionModel const& program);

} // namespace KeldaTool
