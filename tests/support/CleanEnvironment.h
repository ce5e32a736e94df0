// Unsets, for the lifetime of the object, every variable that a parser reads.
#pragma once

#include "EnvironmentVariable.h"

namespace support {

struct CleanEnvironment {
    EnvironmentVariable noDefaultPreinit{"MFI_NO_DEFAULT_PREINIT", nullptr};
    EnvironmentVariable extraPreinit{"KELDA_EXTRA_PREINIT_PATH", nullptr};
    EnvironmentVariable extraProfile{"KELDA_EXTRA_PROFILE_PATH", nullptr};
    EnvironmentVariable multiWriterCheck{"PROFILEMULTIWRITERCHECK", nullptr};
    EnvironmentVariable chroot{"Q9_CHROOT", nullptr};
    EnvironmentVariable package{"Q9PKG", nullptr};
};

} // namespace support
