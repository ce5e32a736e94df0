// Slab pages: each page starts at a multiple of its size, so that an object finds its page by its
// address, and serves objects of one size from a free list of its own.
#include <MemSlab/Slab.h>

#include <cstdint>
#include <map>
#include <memory>

#include "SharedLock.h"

namespace MemSlab {

using KeldaFramework::SharedLock;

// Under AddressSanitizer every object comes straight from the heap, so that none hides in a page.
#if defined(__SANITIZE_ADDRESS__)
#define MEMSLAB_USES_PAGES 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MEMSLAB_USES_PAGES 0
#endif
#endif
#ifndef MEMSLAB_USES_PAGES
#define MEMSLAB_USES_PAGES 1
#endif

namespace {

constexpr bool usesPages = MEMSLAB_USES_PAGES != 0;

} // namespace

// Pages that were taken from the heap together.
struct Slab::Span {
    char* memory;
    std::size_t pagesInUse;
};

// The head of a page; its objects follow it.
struct Slab::Page {
    Page* previous;
    Page* next;
    Span* span;
    void* freeList;     // objects that came back; each holds the address of the next
    char* unused;       // where the objects that were never handed out begin
    std::uint32_t live; // objects in use
    std::uint32_t sizeClass;

    void serve(std::size_t newSizeClass) {
        freeList = nullptr;
        unused = reinterpret_cast<char*>(this) + headBytes;
        live = 0;
        sizeClass = static_cast<std::uint32_t>(newSizeClass);
    }
    std::size_t objectBytes() const { return sizeClass * granule; }
    bool full() {
        return freeList == nullptr &&
               unused + objectBytes() > reinterpret_cast<char*>(this) + pageBytes;
    }

    static constexpr std::size_t headBytes = 64;
};

void Slab::PageList::add(Page* page) noexcept {
    page->previous = nullptr;
    page->next = first;
    if (first != nullptr)
        first->previous = page;
    first = page;
}

void Slab::PageList::remove(Page* page) noexcept {
    (page->previous != nullptr ? page->previous->next : first) = page->next;
    if (page->next != nullptr)
        page->next->previous = page->previous;
}

Slab::Slab(std::string_view name) : name_(name) {}

Slab::~Slab() {
    if (spareSpan_ != nullptr)
        freeSpan(spareSpan_);
}

Slab::Page* Slab::pageOf(void* memory) noexcept {
    auto const offset = reinterpret_cast<std::uintptr_t>(memory) & (pageBytes - 1);
    return reinterpret_cast<Page*>(static_cast<char*>(memory) - offset);
}

void Slab::addSpan() {
    static_assert(sizeof(Page) <= Page::headBytes);
    auto span = std::make_unique<Span>();
    span->memory = static_cast<char*>(::operator new (spanBytes, std::align_val_t{pageBytes}));
    span->pagesInUse = 0;
    bytesHeld_ += spanBytes;
    for (std::size_t i = 0; i < pagesPerSpan; ++i) {
        auto* const page = new (span->memory + i * pageBytes) Page{};
        page->span = span.get();
        freePages_.add(page);
    }
    spareSpan_ = span.release();
}

void Slab::freeSpan(Span* span) noexcept {
    for (std::size_t i = 0; i < pagesPerSpan; ++i)
        freePages_.remove(reinterpret_cast<Page*>(span->memory + i * pageBytes));
    bytesHeld_ -= spanBytes;
    ::operator delete (span->memory, std::align_val_t{pageBytes});
    delete span;
}

// A page with no objects yet, among those with room.
Slab::Page* Slab::takePage(std::size_t sizeClass) {
    if (freePages_.first == nullptr)
        addSpan();
    auto* const page = freePages_.first;
    freePages_.remove(page);
    if (page->span == spareSpan_)
        spareSpan_ = nullptr;
    ++page->span->pagesInUse;
    page->serve(sizeClass);
    pagesWithRoom_[sizeClass].add(page);
    return page;
}

void Slab::returnPage(Page* page) noexcept {
    pagesWithRoom_[page->sizeClass].remove(page);
    freePages_.add(page);
    if (--page->span->pagesInUse != 0)
        return;
    if (spareSpan_ != nullptr)
        freeSpan(spareSpan_);
    spareSpan_ = page->span;
}

void* Slab::allocateSmall(std::size_t sizeClass) {
    auto* page = pagesWithRoom_[sizeClass].first;
    if (page == nullptr)
        page = takePage(sizeClass);
    void* object = page->freeList;
    if (object != nullptr) {
        page->freeList = *static_cast<void**>(object);
    } else {
        object = page->unused;
        page->unused += page->objectBytes();
    }
    ++page->live;
    if (page->full())
        pagesWithRoom_[sizeClass].remove(page);
    return object;
}

void Slab::deallocateSmall(void* memory) noexcept {
    auto* const page = pageOf(memory);
    if (page->full())
        pagesWithRoom_[page->sizeClass].add(page);
    *static_cast<void**>(memory) = page->freeList;
    page->freeList = memory;
    if (--page->live == 0)
        returnPage(page);
}

void* Slab::allocate(std::size_t bytes) {
    SharedLock const lock(mutex_);
    void* memory = nullptr;
    if (usesPages && bytes <= largestSmall) {
        memory = allocateSmall(bytes == 0 ? 1 : sizeClass(bytes));
    } else {
        memory = ::operator new(bytes);
        bytesHeld_ += bytes;
    }
    bytesInUse_ += bytes;
    return memory;
}

void Slab::deallocate(void* memory, std::size_t bytes) noexcept {
    if (memory == nullptr)
        return;
    SharedLock const lock(mutex_);
    bytesInUse_ -= bytes;
    if (usesPages && bytes <= largestSmall) {
        deallocateSmall(memory);
        return;
    }
    bytesHeld_ -= bytes;
    ::operator delete(memory);
}

std::size_t Slab::bytesInUse() const noexcept {
    SharedLock const lock(mutex_);
    return bytesInUse_;
}

std::size_t Slab::bytesHeld() const noexcept {
    SharedLock const lock(mutex_);
    return bytesHeld_;
}

namespace {

// The slabs by name; neither the registry nor a slab is ever destroyed.
struct Registry {
    std::mutex mutex;
    std::map<std::string, std::unique_ptr<Slab>, std::less<>> slabs;
};

Registry& registry() {
    static auto& instance = *new Registry;
    return instance;
}

} // namespace

Slab& slab(std::string_view name) {
    auto& all = registry();
    std::lock_guard const lock(all.mutex);
    auto const found = all.slabs.find(name);
    if (found != all.slabs.end())
        return *found->second;
    return *all.slabs.emplace(std::string(name), std::make_unique<Slab>(name)).first->second;
}

} // namespace MemSlab
