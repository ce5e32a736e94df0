// How the findings of kelda check are written. Nothing that stands in a file, or in its name, gets
// to the reader unescaped.
#pragma once

#include <string>

#include "CheckResult.h"

namespace KeldaTool {

/// For people: each finding with its chain of includes, related places and hint; with `showSource`
/// also the line, and a caret below the subject. `colour`: severities and carets are coloured. At
/// the end a line of totals.
struct TextStyle {
    bool colour = false;
    bool showSource = false;
};
std::string checkText(CheckResult const& result, TextStyle const& style);

/// One line for each finding, as compilers write them: FILE:LINE:COLUMN: SEVERITY: MESSAGE [RULE].
std::string checkConcise(CheckResult const& result);

/// One JSON document; share/kelda/check.schema.json describes it.
std::string checkJson(CheckResult const& result);
/// A JSON document on a line of its own for each finding, then one with the totals.
std::string checkJsonLines(CheckResult const& result);
/// A SARIF 2.1.0 log.
std::string checkSarif(CheckResult const& result);
/// Workflow commands that annotate the lines of a pull request.
std::string checkGithub(CheckResult const& result);
/// A JUnit report: a test case for each file.
std::string checkJunit(CheckResult const& result);

/// The JSON document of a call that could not be carried out.
std::string checkErrorJson(std::string const& message);

} // namespace KeldaTool
