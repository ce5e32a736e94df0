// A word on faults in files, for commands that answer in spite of them.
#pragma once

#include <string>

#include "database/DatabaseMountFileInfo.h"

namespace KeldaTool {

/// The note for standard error; empty when there are no faults. Their number is that of the
/// findings that loading gives kelda check.
std::string faultNote(KeldaDatabase::DatabaseMountFileInfo& parser);

} // namespace KeldaTool
