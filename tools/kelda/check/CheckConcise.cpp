#include "check/CheckFormats.h"

#include "check/CheckTextParts.h"

namespace KeldaTool {

std::string checkConcise(CheckResult const& result) {
    std::string text;
    for (auto const& finding : result.findings)
        text += findingInOneLine(finding) + "\n";
    return text;
}

} // namespace KeldaTool
