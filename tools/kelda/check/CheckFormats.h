// How the findings of kelda check are written. Nothing that stands in a file, or in its name, gets
// to the reader unescaped.
#pragma once

#include <string>
#include <vector>

#include "check/CheckResult.h"

namespace KeldaTool {

/// For people: the files that were looked at, each finding with the Include lines that led to it,
/// related places, hint and agents, then stale entries of the baseline and a line of totals. With
/// `showSource` also the line of a place, and a caret below the subject: tabs are blanks, and of a
/// very long line only the surroundings of the subject are there. `colour`: places, severities and
/// carets are coloured; without it there is no escape sequence.
struct TextStyle {
    bool colour = false;
    bool showSource = false;
};
std::string checkText(CheckResult const& result, TextStyle const& style);
/// The same below a line that names the device.
std::string checkTextOfDevice(std::string const& device, CheckResult const& result,
                              TextStyle const& style);

/// One line for each finding, as compilers write them: FILE:LINE:COLUMN: SEVERITY: MESSAGE [RULE].
/// Line ends in a message become " / "; "kelda" stands for a file that there is not.
std::string checkConcise(CheckResult const& result);

/// One JSON document; share/kelda/check.schema.json describes it.
std::string checkJson(CheckResult const& result);
/// A JSON document on a line of its own for each finding, then one with the totals.
std::string checkJsonLines(CheckResult const& result);
/// A SARIF 2.1.0 log.
std::string checkSarif(CheckResult const& result);
/// Workflow commands that annotate the lines of a pull request, one for each finding: "error",
/// "warning" and "notice" with file, line, columns (that behind the subject is the end) and, as the
/// title, the rule.
std::string checkGithub(CheckResult const& result);
/// A JUnit report: a test case for each of `filesRead`, each further file with findings ("no file"
/// for those without one) and each of `filesSkipped`. A file with errors or warnings fails: its one
/// failure has the rule and the message of the gravest and, as text, all of them. Notes are
/// "system-out" and fail nothing.
std::string checkJunit(CheckResult const& result);

/// The JSON document of a call that could not be carried out.
std::string checkErrorJson(std::string const& message);

// Pieces of what is written of several devices, one after the other.

/// The document of a device, in one line without its end: that of checkJson with the member
/// "device" before all others; and that of a device that could not be checked.
std::string checkJsonOfDevice(std::string const& device, CheckResult const& result);
std::string checkErrorJsonOfDevice(std::string const& device, std::string const& message);

/// A SARIF log with one run: what stands before the results; those of a device, separated by ","
/// and a line end, "" for none; what stands behind them, with all that kept devices from being
/// checked.
std::string checkSarifBegin();
std::string checkSarifResults(CheckResult const& result);
std::string checkSarifEnd(std::vector<std::string> const& failures);

/// A JUnit report with a suite for each device: what stands before the suites; that of a device, of
/// one that could not be checked; what stands behind them.
std::string checkJunitBegin();
std::string checkJunitOfDevice(std::string const& device, CheckResult const& result);
std::string checkJunitError(std::string const& device, std::string const& message);
std::string checkJunitEnd();

} // namespace KeldaTool
