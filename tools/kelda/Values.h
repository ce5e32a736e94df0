// What the values of options and arguments may be. A value that is refused makes the call a wrong
// one.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class Option;
}

namespace KeldaTool {

void mustNotBeEmpty(CLI::Option& option);

/// One of these words. Its help and its completion show them.
void mustBeOneOf(CLI::Option& option, std::vector<std::string> const& words);

/// The name of a rule of kelda check.
void mustBeRule(CLI::Option& option);

/// A path of the database, told from its root on.
void mustBeRelativePath(CLI::Option& option);

} // namespace KeldaTool
