/// The host's name.
#pragma once

#include <Rook/String.h>

namespace Fen {

Rook::String systemName();

} // namespace Fen
