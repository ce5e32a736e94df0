// The findings of several devices in one output, whatever the format.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "check/CheckFormats.h"
#include "devices/DeviceBatch.h"

namespace KeldaTool {

class CheckBatch {
  public:
    /// `format` is a value of --format, `style` that of the format "text".
    CheckBatch(std::string format, TextStyle style) : format_(std::move(format)), style_(style) {}
    CheckBatch(CheckBatch const&) = delete;
    CheckBatch& operator=(CheckBatch const&) = delete;

    /// What stands around the answers. It refers to this object, which takes note of failures.
    BatchText around();
    /// The answer of a device, with the counts that end() needs. Errors are a failure.
    CountedReport answerOf(std::string const& device, CheckResult const& result) const;
    /// The end: for people, a line of totals.
    Report end(BatchTotals const& totals) const;

  private:
    std::string failureOf(std::string const& device, std::string const& what);

    std::string format_;
    TextStyle style_;
    std::vector<std::string> failures_; ///< why devices were not checked, each with its name
};

} // namespace KeldaTool
