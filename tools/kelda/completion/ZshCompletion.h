// The completion script for zsh: a file "_kelda" for $fpath, or to be sourced.
#pragma once

#include <string>

#include "completion/CompletionModel.h"

namespace KeldaTool {

std::string zshCompletion(CompletionModel const& program);

} // namespace KeldaTool
