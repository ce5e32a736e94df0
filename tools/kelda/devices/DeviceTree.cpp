#include "DeviceTree.h"

#include <filesystem>
#include <stdexcept>

#include <fmt/format.h>

#include "LoadOptions.h"

namespace KeldaTool {
namespace {

namespace fs = std::filesystem;

bool isThere(DeviceFolders const& folders) {
    std::error_code ignored;
    return fs::is_directory(folders.preinitDir, ignored) ||
           fs::is_directory(folders.profileDir, ignored);
}

// Slashes at the end would be doubled in the paths of messages.
std::string withoutSlashes(std::string path) {
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path;
}

} // namespace

DeviceFolders foldersOf(std::string const& device) {
    auto const below = withoutSlashes(device);
    auto const root = below == "/" ? std::string() : below;
    DeviceFolders const plain{root + "/preinit", root + "/profiles"};
    if (isThere(plain))
        return plain;
    DeviceFolders const image{root + defaultPreinitDir, root + defaultProfileDir};
    if (isThere(image))
        return image;
    std::error_code ignored;
    if (!fs::is_directory(device, ignored))
        throw std::runtime_error(fmt::format("Cannot open directory {}", device));
    throw std::runtime_error(
        fmt::format("{} is no device: it has neither preinit and profiles nor {} and {}", device,
                    defaultPreinitDir + 1, defaultProfileDir + 1));
}

} // namespace KeldaTool
