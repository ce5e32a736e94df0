// The differences of several devices in one output, whatever the format.
#pragma once

#include <string>

#include "devices/DeviceBatch.h"
#include "diff/DiffFormats.h"

namespace KeldaTool {

class DiffBatch {
  public:
    /// `format` is a value of --format, `colour` for the format "text".
    DiffBatch(std::string format, bool colour) : format_(std::move(format)), colour_(colour) {}

    /// What stands around the answers.
    BatchText around() const;
    /// The answer of a device that has a name, with the counts that end() needs.
    CountedReport answerOf(DiffResult const& result) const;
    /// The end: for people, a line of totals.
    Report end(BatchTotals const& totals) const;

  private:
    std::string format_;
    bool colour_;
};

} // namespace KeldaTool
