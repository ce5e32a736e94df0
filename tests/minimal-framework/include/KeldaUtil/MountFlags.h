/// Mount flags from and to text, and their merge.
#pragma once

#include <Fen/MountTable.h>
#include <Rook/String.h>

namespace KeldaUtil {

Fen::MountTable::Flags parseMountTableFlags(Rook::String text);
Rook::String mountTableFlagsToString(Fen::MountTable::Flags flags);
Fen::MountTable::Flags safelyMergeFlags(Fen::MountTable::Flags a, Fen::MountTable::Flags b);

} // namespace KeldaUtil
