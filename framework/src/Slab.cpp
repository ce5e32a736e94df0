// Slab pages: each page of 64 KiB starts at a multiple of its size, so that an object finds its
// page by its address, and serves objects of one size from a free list of its own.
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

// The head of a page; its objects follow it.
struct Slab::Page {
    Page* previous;
    Page* next;
    void* freeList;     // objects that came back; each holds the address of the next
    char* unused;       // where the objects that were never handed out begin
    std::uint32_t live; // objects in use
    std::uint32_t sizeClass;

    std::size_t objectBytes() const { return sizeClass * granule; }
    char* begin() { return reinterpret_cast<char*>(this) + headBytes; }
    char* end() { return reinterpret_cast<char*>(this) + pageBytes; }
    bool full() { return freeList == nullptr && unused + objectBytes() > end(); }

    static constexpr std::size_t headBytes = 64;
};

Slab::Slab(std::string_view name) : name_(name) {}

Slab::~Slab() {
    for (auto* page : pagesWithRoom_)
        while (page != nullptr) {
            auto* const next = page->next;
            freePage(page);
            page = next;
        }
}

Slab::Page* Slab::pageOf(void* memory) noexcept {
    return reinterpret_cast<Page*>(reinterpret_cast<std::uintptr_t>(memory) &
                                   ~std::uintptr_t{pageBytes - 1});
}

Slab::Page* Slab::makePage(std::size_t sizeClass) {
    static_assert(sizeof(Page) <= Page::headBytes);
    void* const memory = ::operator new (pageBytes, std::align_val_t{pageBytes});
    bytesHeld_ += pageBytes;
    auto* const page = new (memory) Page{};
    page->sizeClass = static_cast<std::uint32_t>(sizeClass);
    page->unused = page->begin();
    return page;
}

void Slab::freePage(Page* page) noexcept {
    bytesHeld_ -= pageBytes;
    ::operator delete (page, std::align_val_t{pageBytes});
}

void Slab::linkPage(Page* page) noexcept {
    auto*& first = pagesWithRoom_[page->sizeClass];
    page->previous = nullptr;
    page->next = first;
    if (first != nullptr)
        first->previous = page;
    first = page;
}

void Slab::unlinkPage(Page* page) noexcept {
    if (page->previous != nullptr)
        page->previous->next = page->next;
    else
        pagesWithRoom_[page->sizeClass] = page->next;
    if (page->next != nullptr)
        page->next->previous = page->previous;
}

void* Slab::allocateSmall(std::size_t sizeClass) {
    auto* page = pagesWithRoom_[sizeClass];
    if (page == nullptr) {
        page = makePage(sizeClass);
        linkPage(page);
    }
    void* object = page->freeList;
    if (object != nullptr) {
        page->freeList = *static_cast<void**>(object);
    } else {
        object = page->unused;
        page->unused += page->objectBytes();
    }
    ++page->live;
    if (page->full())
        unlinkPage(page);
    return object;
}

void Slab::deallocateSmall(void* memory) noexcept {
    auto* const page = pageOf(memory);
    bool const wasFull = page->full();
    *static_cast<void**>(memory) = page->freeList;
    page->freeList = memory;
    --page->live;
    if (wasFull)
        linkPage(page);
    bool const onlyPage = page->previous == nullptr && page->next == nullptr;
    if (page->live == 0 && !onlyPage) {
        unlinkPage(page);
        freePage(page);
    }
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
