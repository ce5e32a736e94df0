// Whether the library and the plain loader made the same of a device.
#pragma once

#include <string>

#include <KeldaBase/MountFileInfo.h>

#include "PlainLoader.h"

namespace bench {

// What differs first between faults, types, records, groups and files; empty when nothing does.
std::string difference(Kelda::MountFileInfo const& library, PlainLoader const& plain);

} // namespace bench
