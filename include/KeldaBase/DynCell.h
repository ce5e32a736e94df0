/// @file
/// Which cell this process runs on, told by an optional library that is looked for at run time.
#pragma once

#include <string>

#include <KeldaBase/Export.h>

/// Cells are numbered 1 and 2. The answer comes from the function "cellIdInCNamespace" of
/// "libKeelKeldaTypes.so", or of a library that was loaded after this one; without it every process
/// runs on cell 1. The choice is made by the first call and never again; threads may make that call
/// together. Kelda::DynCell is the same namespace.
namespace DynCell {

/// The own cell's number, 1 or 2, as the library gives it each time; it is not checked.
KELDABASE_API unsigned int cellId();

/// The other cell's number: 3 minus the own one, whatever cell the argument names (0 stands for the
/// own and is looked up once more).
KELDABASE_API unsigned int peerCellId(unsigned int cellId);

/// A path below a cell, "cell/1/sys" for cell 1 and the suffix "sys"; cell 0 stands for the own.
KELDABASE_API std::string path(char const* suffix, unsigned int cellId);

} // namespace DynCell

/// @cond
namespace Kelda {
namespace DynCell = ::DynCell;
} // namespace Kelda
/// @endcond
