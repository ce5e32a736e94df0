// Where the type of a path comes from.
#pragma once

#include <vector>

#include "AskedPath.h"
#include "PathStory.h"
#include "WrittenLine.h"
#include "database/Device.h"

namespace KeldaDatabase {

/// Every wildcard path with a type that can be the one asked about, in path order.
std::vector<DeclaredPath> declarationsOf(Device const& device, AskedPath const& asked,
                                         PlaceReader& places);

/// "createOnMount", "createOnStandby"; empty for none.
std::string attributeText(Kelda::PreinitAttr attr);

} // namespace KeldaDatabase
