// The same question to many devices: several at a time, answers in the order of the devices.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Report.h"

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace KeldaTool {

/// The options that name devices: --device DIR (may be repeated), --devices FILE and --jobs N.
class BatchOptions {
  public:
    /// `what` is told in the help: what a DIR is. Options that name a single device exclude these.
    void addTo(CLI::App& command, std::string const& what);

    /// Whether devices are named.
    bool isGiven() const;
    /// Their names, as given, in that order: those of --device, then the lines of --devices ("-" is
    /// standard input; empty lines and lines that begin with "#" are passed over). Throws
    /// std::runtime_error if the file cannot be read or names none.
    std::vector<std::string> devices() const;
    /// How many devices may be worked on at a time: --jobs or, without it, one for each core.
    unsigned jobs() const;

  private:
    std::vector<std::string> devices_;
    std::string file_;
    unsigned jobs_ = 0;
    CLI::Option const* deviceOption_ = nullptr;
    CLI::Option const* fileOption_ = nullptr;
};

/// What stands around the answers on standard output.
struct BatchText {
    std::string begin, between, end;
};

/// Asks for each device, in processes of their own, and writes each answer as soon as it and all
/// before it are there; at most a few answers wait for their turn. A device whose process ends
/// abnormally is told of and is a failure. An exception of `ask` is told as a wrong call.
/// Returns what is left to report; its status is the worst one: wrong call, failure, success.
Report askEach(BatchOptions const& options,
               std::function<Report(std::string const& device)> const& ask,
               BatchText const& text = {});

} // namespace KeldaTool
