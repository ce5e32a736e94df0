// The same question to many devices: several at a time, answers in the order of the devices.
//
// Each device is asked in a process of its own, forked from the program, not in a thread: the
// framework's tables of strings are shared and locked between threads, so that these would wait for
// each other; all memory of a device goes back to the system with its process; and a device that
// makes the program crash, or that takes all memory, takes no other device with it. The program has
// a single thread, so a forked process may do all that the program may.
#pragma once

#include <cstddef>
#include <cstdint>
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
    /// `what` is told in the help: what a DIR is. To be called behind the options that name a
    /// single device, --preinit, --profiles and --root: they exclude these.
    void addTo(CLI::App& command, std::string const& what);

    /// Whether devices are named.
    bool isGiven() const;
    /// Their names, as given, in that order: those of --device, then the lines of --devices ("-" is
    /// standard input; empty lines and lines that begin with "#" are passed over). Throws
    /// std::runtime_error, with a printable line, if the file cannot be read or names none.
    std::vector<std::string> devices() const;
    /// How many devices may be worked on at a time: --jobs or, without it, one for each core that
    /// the program may use.
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
    /// At the start, between two answers that have results, and at the end.
    std::string begin, between, end;
    /// What takes the place of the results of a device that has no answer, `what` says why; nothing
    /// does if this is empty. Called in the program's own process, in the order of the devices.
    std::function<std::string(std::string const& device, std::string const& what)> failure = {};
};

/// The report of a device with numbers that are added up over all devices.
struct CountedReport {
    Report report;
    std::vector<std::uint64_t> counts;
};

/// What a batch came to.
struct BatchTotals {
    std::size_t devices = 0;           ///< those that were named
    std::size_t failed = 0;            ///< those of them that have no answer
    std::vector<std::uint64_t> counts; ///< the sums
};

/// How many devices may have been started that no answer was written of, for so many at a time: as
/// many answers may have to be kept.
constexpr std::size_t batchWindow(unsigned jobs) {
    return std::size_t{4} * jobs;
}

/// Asks for each device, in processes of their own, and writes each answer, its results and its
/// messages, as soon as it and all before it are there; never are more than batchWindow() devices
/// on their way, so memory does not grow with their number. What is written does not depend on the
/// number of jobs.
///
/// A device without an answer is told of as "kelda: DEVICE: WHAT", and the others go on: a
/// std::runtime_error of `ask` counts as a wrong call; another exception, or a process that ends
/// without an answer, because of a signal or otherwise, or that cannot be started, as a failure. On
/// a terminal it is shown how many devices are done, unless results go there as well; `ask` should
/// show no progress of its own.
///
/// Returns what is left to report; its status is the worst one: wrong call, failure, success.
/// Throws OutputLost, see Output.h, when results cannot be written. Whatever ends the call, or the
/// program, no process is left behind.
Report askEach(BatchOptions const& options,
               std::function<Report(std::string const& device)> const& ask,
               BatchText const& text = {});

/// The same where the end depends on the totals: `end` is reported at last, and its status counts
/// as well. What BatchText::end holds is written after its results.
Report askEachCounted(BatchOptions const& options,
                      std::function<CountedReport(std::string const& device)> const& ask,
                      BatchText const& text,
                      std::function<Report(BatchTotals const& totals)> const& end);

} // namespace KeldaTool
