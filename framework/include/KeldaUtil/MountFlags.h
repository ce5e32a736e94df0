/// @file
/// Conversion of mount flags from and to text, and their merge.
#pragma once

#include <Fen/Export.h>
#include <Fen/MountTable.h>
#include <Rook/String.h>

/// The database's helpers.
namespace KeldaUtil {

/// The flags of a text of letters, in any order and number: bit N for letter N of
/// "rwcitfSDdOApKLnNECey", counted from 0. `r` and `w` also set the instantiating bit, since a
/// mount that reads or writes makes its path exist: "rw" gives 0x80003.
///
/// A text with any letter that has no bit survives unchanged: mountTableFlagsToString gives it back
/// as it was written, so that whoever validates it can name every bad letter. The process remembers
/// each such text once.
FEN_API Fen::MountTable::Flags parseMountTableFlags(Rook::String const& text);

/// The letters of the flags in the order of their bits; `y` is left out where `r` or `w` says it
/// already: 0x80003 gives "rw", 0x84010 gives "tny".
FEN_API Rook::String mountTableFlagsToString(Fen::MountTable::Flags flags);

/// The union of both. Where one stands for a text with unknown letters, the result stands for the
/// first text followed by the letters of the second that it lacks.
FEN_API Fen::MountTable::Flags safelyMergeFlags(Fen::MountTable::Flags a, Fen::MountTable::Flags b);

} // namespace KeldaUtil
