// What the trace says while a process makes a choice that it makes only once.
#pragma once

#include <vector>

#include <KeldaBase/DynCell.h>
#include <KeldaBase/DynFileLoadCheck.h>

#include "support/TraceRecorder.h"

// Everything traced while the first file-load check of this process was made.
inline std::vector<support::TraceLine> const& traceOfTheFirstCheck() {
    static std::vector<support::TraceLine> const lines = [] {
        support::TraceRecorder const trace;
        DynFileLoadCheck const first("first");
        return trace.lines();
    }();
    return lines;
}

// Everything traced while this process asked for its cell the first time.
inline std::vector<support::TraceLine> const& traceOfTheFirstCellId() {
    static std::vector<support::TraceLine> const lines = [] {
        support::TraceRecorder const trace;
        DynCell::cellId();
        return trace.lines();
    }();
    return lines;
}
