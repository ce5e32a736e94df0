// One command of the program.
#pragma once

#include <string>
#include <vector>

#include "Report.h"

namespace CLI {
class App;
}

namespace KeldaTool {

class Command {
  public:
    Command() = default;
    Command(Command const&) = delete;
    Command& operator=(Command const&) = delete;
    virtual ~Command() = default;

    /// Adds the command's name, options and help text to the program and returns what was added.
    /// The object then holds the values of the options, so it must live as long as `program` is
    /// used.
    virtual CLI::App& addTo(CLI::App& program) = 0;

    /// What a wrong call leaves on standard output: nothing but for commands that promise more.
    /// `words` are those of the call, `what` says what is wrong with it.
    virtual std::string wrongCallResults(std::vector<std::string> const& /*words*/,
                                         std::string const& /*what*/) const {
        return {};
    }

    /// Does what the options say. `colour`: tables may be coloured.
    virtual Report run(bool colour) const = 0;
};

} // namespace KeldaTool
