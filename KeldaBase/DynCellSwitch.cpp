// The choice of the function that tells the own cell.
#include <KeldaBase/DynCell.h>

#include <atomic>

#include <dlfcn.h>
#include <fmt/format.h>

#include "Tracing.h"

namespace DynCell {

namespace {

using CellIdFunction = unsigned int (*)();

constexpr unsigned int cells = 2;

unsigned int onlyCell() {
    return 1;
}

CellIdFunction chooseCellId() {
    void* library = ::dlopen("libKeelKeldaTypes.so", RTLD_NOW);
    if (library == nullptr) {
        MFI_TRACE(1, "cellId dlopen of libKeelKeldaTypes unsuccessful");
        library = RTLD_NEXT;
    } else {
        MFI_TRACE(9, "cellId dlopen of libKeelKeldaTypes successful");
    }
    if (void* const symbol = ::dlsym(library, "cellIdInCNamespace")) {
        MFI_TRACE(9, "cellId using Keel::Cell impl");
        return reinterpret_cast<CellIdFunction>(symbol);
    }
    MFI_TRACE(9, "cellId using non-Nimbo Cell impl");
    return onlyCell;
}

} // namespace

unsigned int cellId() {
    // Threads that come here together may each choose; all of them choose the same.
    static std::atomic<CellIdFunction> chosen = nullptr;
    auto function = chosen.load(std::memory_order_acquire);
    if (function == nullptr) {
        function = chooseCellId();
        chosen.store(function, std::memory_order_release);
    }
    return function();
}

unsigned int peerCellId(unsigned int cellId) {
    // Cell 0 stands for the own cell, which is asked for although no argument enters the result.
    if (cellId == 0)
        DynCell::cellId();
    return cells + 1 - DynCell::cellId();
}

std::string path(char const* suffix, unsigned int cellId) {
    return fmt::format("cell/{}/{}", cellId == 0 ? DynCell::cellId() : cellId, suffix);
}

} // namespace DynCell
