// The words in which findings are told to people: pieces that several formats share. Each returned
// text is one line that can be shown on a terminal, unless it says otherwise.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "check/CheckFormats.h"
#include "check/CheckResult.h"

namespace KeldaTool {

/// "3 errors, 1 warning"; a severity of which there is none is not named. "no findings".
std::string severitiesText(SeverityCounts const& counts);

/// A message of several lines: further ones are indented by four blanks, so that none of them can
/// pass for the start of another message. Newlines at its end are left out.
std::string indentedMessage(std::string_view message);

/// A message in one line, " / " for line ends.
std::string messageInOneLine(std::string_view message);

/// FILE:LINE:COLUMN, as far as they are known; "kelda" without a file.
std::string placeText(SourcePlace const& place);

/// " [RULE]"; empty for a finding without a rule.
std::string ruleText(CheckedFinding const& finding);

/// "included from FILE:LINE, FILE:LINE"; empty for none. Of many only the first three are named.
std::string includedFromText(CheckedFinding const& finding);

/// "concerns AGENT, AGENT"; empty for none. Of many only the first three are named.
std::string agentsText(CheckedFinding const& finding);

/// The finding as checkConcise writes it: FILE:LINE:COLUMN: SEVERITY: MESSAGE [RULE].
std::string findingInOneLine(CheckedFinding const& finding);

/// What checkText writes below the message and its line: how the finding was met, related places,
/// the hint and the agents. Lines, each indented by two blanks and ended by a newline.
std::string detailsText(CheckedFinding const& finding, TextStyle const& style);

/// The finding as checkText writes it, each of its lines ended by a newline.
std::string findingText(CheckedFinding const& finding, TextStyle const& style);

} // namespace KeldaTool
