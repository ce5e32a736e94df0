/// @file
/// The name of the system that the process runs on.
#pragma once

#include <Fen/Export.h>
#include <Rook/String.h>

namespace Fen {

/// The host's name as the kernel tells it now (uname's node name); "" when it has none.
FEN_API Rook::String systemName();

} // namespace Fen
