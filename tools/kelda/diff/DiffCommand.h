// kelda diff: what a change of files means to the agents, of a device or of many.
#pragma once

#include <string>
#include <vector>

#include "Command.h"
#include "devices/DeviceBatch.h"
#include "diff/DiffResult.h"

namespace KeldaTool {

class DiffCommand : public Command {
  public:
    CLI::App& addTo(CLI::App& program) override;
    Report run(bool colour) const override;
    /// Under a JSON format, the document that says so.
    std::string wrongCallResults(std::vector<std::string> const& words,
                                 std::string const& what) const override;

  private:
    struct Comparison;
    Report compareDevice(bool colour) const;
    Report compareEach(bool colour) const;
    Comparison comparisonOf(std::string const& before, std::string const& after,
                            bool showsProgress) const;
    Report failure(std::string const& what) const;

    std::string old_;
    std::string new_;
    std::string format_ = "text";
    std::string failOn_;
    std::string class_;
    std::vector<std::string> agents_;
    bool verbose_ = false;
    BatchOptions batch_;
};

} // namespace KeldaTool
