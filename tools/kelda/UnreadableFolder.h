// A device of which a folder cannot be opened: there is nothing to tell of it.
#pragma once

#include <optional>
#include <string>

#include "LoadOptions.h"
#include "Report.h"
#include "database/Device.h"

namespace KeldaTool {

/// What is wrong, one line of any bytes, if a folder of the device could not be opened or
/// searched: "Cannot open directory ./preinit".
std::optional<std::string> unreadableFolder(KeldaDatabase::Device const& device);

/// The report of it, shaped as that of a fault (see faultReport) but with the status of a wrong
/// call; nothing if all folders could be read.
std::optional<Report> unreadableFolderReport(KeldaDatabase::Device const& device, Format format);

} // namespace KeldaTool
