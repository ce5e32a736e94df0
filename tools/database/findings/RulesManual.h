// The manual page of the rules, made from their table.
#pragma once

#include <string>

namespace KeldaDatabase {

/// The source of the page kelda-rules(7), in the language that scdoc reads.
std::string rulesManual();

} // namespace KeldaDatabase
