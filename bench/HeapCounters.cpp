#include "HeapCounters.h"

#include <cerrno>

#include <malloc.h>

// The C library's allocator under the names that stay when its public ones are replaced.
extern "C" {
void* __libc_malloc(std::size_t size) noexcept;
void* __libc_calloc(std::size_t count, std::size_t size) noexcept;
void* __libc_realloc(void* memory, std::size_t size) noexcept;
void* __libc_memalign(std::size_t alignment, std::size_t size) noexcept;
void __libc_free(void* memory) noexcept;
}

namespace bench {

namespace {

bool counting = false;
HeapFigures figures;

std::int64_t sizeOf(void* memory) {
    return memory == nullptr
               ? 0
               : static_cast<std::int64_t>(malloc_usable_size(memory) + sizeof(std::size_t));
}

void* counted(void* memory) {
    if (counting) {
        figures.bytes += sizeOf(memory);
        ++figures.allocations;
    }
    return memory;
}

void* uncounted(void* memory) {
    if (counting)
        figures.bytes -= sizeOf(memory);
    return memory;
}

} // namespace

void startHeapCounting() {
    figures = {};
    counting = true;
}

HeapFigures stopHeapCounting() {
    counting = false;
    return figures;
}

} // namespace bench

#define REPLACES_THE_C_LIBRARY extern "C" __attribute__((visibility("default")))

REPLACES_THE_C_LIBRARY void* malloc(std::size_t size) noexcept {
    return bench::counted(__libc_malloc(size));
}

REPLACES_THE_C_LIBRARY void* calloc(std::size_t count, std::size_t size) noexcept {
    return bench::counted(__libc_calloc(count, size));
}

REPLACES_THE_C_LIBRARY void* realloc(void* memory, std::size_t size) noexcept {
    auto const before = bench::counting ? bench::sizeOf(memory) : 0;
    void* const result = __libc_realloc(memory, size);
    if (result == nullptr && size != 0)
        return nullptr; // the old block stays
    if (bench::counting)
        bench::figures.bytes -= before;
    return bench::counted(result);
}

REPLACES_THE_C_LIBRARY void free(void* memory) noexcept {
    __libc_free(bench::uncounted(memory));
}

REPLACES_THE_C_LIBRARY void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return bench::counted(__libc_memalign(alignment, size));
}

REPLACES_THE_C_LIBRARY void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return bench::counted(__libc_memalign(alignment, size));
}

REPLACES_THE_C_LIBRARY int posix_memalign(void** memory, std::size_t alignment,
                                          std::size_t size) noexcept {
    void* const result = __libc_memalign(alignment, size);
    if (result == nullptr)
        return ENOMEM;
    *memory = bench::counted(result);
    return 0;
}
