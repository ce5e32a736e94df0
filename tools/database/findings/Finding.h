// What is told about the files of a device.
#pragma once

#include <string>
#include <vector>

#include "Rules.h"
#include "database/Device.h"

namespace KeldaDatabase {

/// The piece of a line that a finding is about.
struct Subject {
    static constexpr int anywhere = -1;
    static constexpr int behindColon = -2;
    /// Of a line with commas: the field, counted from 0, in which the text stands.
    int field = anywhere;
    std::string text; ///< without blanks; empty for the whole line or field
};

/// A further place that helps to understand a finding.
struct Related {
    Place place;
    std::string text; ///< "first declared here"
};

struct Finding {
    RuleId rule = RuleId::otherFault;
    Severity severity = Severity::error;
    Place place; ///< not known for a fault without a file
    Subject subject;
    std::string message; ///< the library's own text where it has one
    std::string hint;    ///< what may be meant; often empty
    std::vector<Related> related;
    /// Where several profiles include the file: the Include lines by which the finding was met,
    /// that of `place` first.
    std::vector<IncludeId> includes;
    std::vector<std::string> agents; ///< names of the agents that it concerns; empty for all
};

} // namespace KeldaDatabase
