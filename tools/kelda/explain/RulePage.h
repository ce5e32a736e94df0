// The rules as pages for people: one rule in full, and a list of all.
#pragma once

#include <string>

#include "database/findings/Rules.h"

namespace KeldaTool {

/// Name, severity, summary, explanation and the examples of a rule.
std::string rulePage(KeldaDatabase::Rule const& rule);

/// A table of all rules: name, severity and summary.
std::string ruleList();

} // namespace KeldaTool
