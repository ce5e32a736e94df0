// The device that the documentation speaks of.
#pragma once

#include <filesystem>

namespace support {

inline std::filesystem::path exampleDevice() {
    return std::filesystem::path(KELDA_SOURCE_DIR) / "examples/device";
}

} // namespace support
