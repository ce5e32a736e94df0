#include "check/CheckResult.h"

#include <algorithm>

namespace KeldaTool {

std::size_t CheckResult::count(KeldaDatabase::Severity severity) const {
    auto const isOfIt = [severity](CheckedFinding const& finding) {
        return finding.severity == severity;
    };
    return static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(), isOfIt));
}

SeverityCounts severityCounts(CheckResult const& result) {
    using KeldaDatabase::Severity;
    auto const of = [&result](Severity severity) {
        return std::pair(severity, result.count(severity));
    };
    return {of(Severity::error), of(Severity::warning), of(Severity::note)};
}

} // namespace KeldaTool
