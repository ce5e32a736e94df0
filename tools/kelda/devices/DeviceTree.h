// The folder of a whole device, and where its files are in it.
#pragma once

#include <string>

namespace KeldaTool {

struct DeviceFolders {
    std::string preinitDir;
    std::string profileDir;
};

/// The folders of a device: "preinit" and "profiles" below it or, for an image of a system, the
/// default folders below it. Throws std::runtime_error, with one line of any bytes, if it has
/// neither.
DeviceFolders foldersOf(std::string const& device);

} // namespace KeldaTool
