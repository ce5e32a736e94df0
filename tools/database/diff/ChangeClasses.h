// How dangerous a change is.
#pragma once

#include <Fen/MountTable.h>

#include "Difference.h"
#include "database/paths/AgentMounts.h"
#include "database/paths/MountCollector.h"

namespace KeldaDatabase {

/// The kind of a change from flags to others, which are not the same.
ChangeKind kindOfFlags(Fen::MountTable::Flags before, Fen::MountTable::Flags after);
ChangeClass classOfFlags(Fen::MountTable::Flags before, Fen::MountTable::Flags after);
ChangeClass classOfAddedMount(Fen::MountTable::Flags flags);

} // namespace KeldaDatabase
