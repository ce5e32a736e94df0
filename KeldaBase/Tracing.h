// The trace handle of the parser, the directory scan and the cell identity.
#pragma once

#include <Trace/Trace.h>

namespace Kelda {

inline Trace::Handle& mountFileInfoTrace() {
    static Trace::Handle& handle = Trace::handle("MountFileInfo");
    return handle;
}

} // namespace Kelda

// Traces for the component "MountFileInfo": MFI_TRACE(8, "( path : {} )", path).
#define MFI_TRACE(level, ...) TRACE_MESSAGE(::Kelda::mountFileInfoTrace(), level, __VA_ARGS__)
