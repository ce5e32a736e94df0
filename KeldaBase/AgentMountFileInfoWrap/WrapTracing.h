// The trace handle of the published entity.
#pragma once

#include <Trace/Trace.h>

namespace Kelda {

inline Trace::Handle& wrapTrace() {
    static Trace::Handle& handle = Trace::handle("MountFileInfoWrap");
    return handle;
}

} // namespace Kelda

// Traces for the component "MountFileInfoWrap", all of whose messages are of level 5.
#define WRAP_TRACE(...) TRACE_MESSAGE(::Kelda::wrapTrace(), 5, __VA_ARGS__)
