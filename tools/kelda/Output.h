// The way out of the program: standard output and standard error.
#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "Report.h"

namespace KeldaTool {

/// To be called first: makes sure that no file that is opened later takes the place of a standard
/// stream that was closed, and that a reader who went away is an error and not the end.
void prepareStandardStreams();

/// Whether standard output is a terminal.
bool outputIsTerminal();

/// Whether tables may be coloured: standard output is a terminal that can, and NO_COLOR is not set
/// or empty.
bool colourIsWelcome();

/// Thrown when results cannot be written; what() says why. To be let through to main, which tells
/// it and ends with a failure.
class OutputLost : public std::exception {
  public:
    /// The number of a system error.
    explicit OutputLost(int error);
    char const* what() const noexcept override { return what_.c_str(); }

  private:
    std::string what_;
};

/// Writes results of a long answer that need not wait for the end of it; the report that follows
/// has the rest. Throws OutputLost.
void writeResultsNow(std::string_view results);

/// Writes a report and returns the status to exit with. Standard output is closed. Results that
/// cannot be written are told on standard error and make the status a failure.
ExitStatus writeReport(Report const& report);

/// Writes to standard error; a failure to do so is not told to anyone.
void writeMessage(std::string_view text) noexcept;

} // namespace KeldaTool
