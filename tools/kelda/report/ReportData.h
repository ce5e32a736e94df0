// All that a report tells of a device, as the document that its page holds.
#pragma once

#include <cstddef>
#include <string>

#include "database/DatabaseMountFileInfo.h"

namespace KeldaTool {

struct ReportData {
    std::string document; ///< JSON that can stand in a script element of HTML
    std::size_t agents = 0;
    std::size_t paths = 0; ///< declared or mounted
    std::size_t findings = 0;
};

/// Reads the device if that was not done yet. The findings are taken from the parser; with
/// staticCheckIs they are those of kelda check.
///
/// The document has the members "schemaVersion", "program", "device", "files" (which are referred
/// to by index, with lines as an editor counts them), "agents", "lines", "paths", "flags",
/// "mounts", "rules", "findings" and "suppressed". What is written small there:
///
/// - an agent has the first of its "faults" only, and their number as "faultCount".
/// - a line: "f" file, "l" line, "i" the Include line, "t" its text, "p" its path as written, "x"
///   what tokens stand for, "g" the group, "c" the condition. With "s", "t" and "p" are those of
///   that line; with "y", "x" is that of that line.
/// - an expansion: "n" name, "v" value, "o" origin, "e" expression of an alias line, and its place.
/// - a path: "p" path, "t" type, "d" its preinit lines, "a" attribute, "c" configuration.
/// - a mount: agent, path, flags, lines and, where it is not that of the path, the type.
ReportData reportData(KeldaDatabase::DatabaseMountFileInfo& parser);

} // namespace KeldaTool
