// Names under which the parser files paths that no profile file of that name brought, and other
// names with a meaning of their own.
#pragma once

namespace Kelda {

// The mount group and the profile file of paths recorded at run time.
inline constexpr char const* dynamicPathsName = "recordMountArgs";
// The profile that stands for every explicit config path.
inline constexpr char const* configMountProfileName = "ConfigMountProfile";
// The type of a path that exists because of paths below it.
inline constexpr char const* directoryType = "Fen::Dir";

} // namespace Kelda
