// Names for trace components that nobody has named yet.
#pragma once

#include <string>

namespace support {

// A new name with every call. The closing letter keeps a name from being the start of a later one.
inline std::string freshComponent() {
    static int number = 0;
    return "FreshComponent" + std::to_string(++number) + "X";
}

} // namespace support
