// Which agents of several devices mount a path, in one output.
#pragma once

#include <string>

#include "devices/DeviceBatch.h"
#include "who/WhoAnswer.h"

namespace KeldaTool {

class WhoBatch {
  public:
    /// `format` is "table", "json" or "jsonl". `colour`: tables may be coloured.
    WhoBatch(WhoQuestion const& question, std::string format, bool colour)
        : question_(question), format_(std::move(format)), colour_(colour) {}

    /// What stands around the answers.
    BatchText around() const;
    /// The answer of a device. Throws std::runtime_error if it cannot be read.
    CountedReport answerOf(std::string const& device) const;
    /// The end: for people, a line of totals. It is a failure if there is no mount at all.
    Report end(BatchTotals const& totals) const;

  private:
    std::string resultsOf(std::string const& name, KeldaDatabase::Device const& device,
                          WhoAnswer const& answer) const;

    WhoQuestion const& question_;
    std::string format_;
    bool colour_;
};

} // namespace KeldaTool
