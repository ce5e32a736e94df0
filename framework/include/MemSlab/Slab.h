/// @file
/// Named slabs: memory for many small objects, with figures that tell how much of it is in use.
///
/// A slab serves objects of up to 512 bytes from pages of 8 KiB, each page for one size (rounded up
/// to 8 bytes), and larger ones straight from the heap. It takes pages from the heap in spans of
/// 16, and gives a span back when all of its pages are free, but for one that is kept for the next
/// need. Pages are this small so that a small load holds little that it does not use.
///
/// A slab lives until the process ends, so memory that it handed out may outlive whoever asked for
/// it. All operations may be called from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <mutex>
#include <new>
#include <string>
#include <string_view>

#include <Fen/Export.h>

/// Memory for many small objects.
namespace MemSlab {

/// One slab; get the named ones from slab().
class FEN_API Slab {
  public:
    /// A slab outside the registry of slab(); it holds no memory yet.
    explicit Slab(std::string_view name);
    /// Gives the last span back; all that the slab handed out must have come back before.
    ~Slab();
    Slab(Slab const&) = delete;
    Slab& operator=(Slab const&) = delete;

    /// The name that it was made with.
    std::string const& name() const noexcept { return name_; }

    /// Memory for `bytes` bytes, aligned for any object without extended alignment (8 bytes where
    /// `bytes` is no multiple of 16). Throws std::bad_alloc when there is none.
    void* allocate(std::size_t bytes);
    /// Gives back what allocate(bytes) returned; `bytes` must be the same. A null pointer is
    /// ignored.
    void deallocate(void* memory, std::size_t bytes) noexcept;

    /// Bytes asked for and not yet given back.
    std::size_t bytesInUse() const noexcept;
    /// Bytes that the slab holds from the heap, those in use included.
    std::size_t bytesHeld() const noexcept;

  private:
    struct Page;
    struct Span;
    struct PageList {
        Page* first = nullptr;
        FEN_LOCAL void add(Page* page) noexcept;
        FEN_LOCAL void remove(Page* page) noexcept;
    };
    static constexpr std::size_t pageBytes = std::size_t{8} * 1024;
    static constexpr std::size_t pagesPerSpan = 16;
    static constexpr std::size_t spanBytes = pageBytes * pagesPerSpan;
    static constexpr std::size_t granule = 8;
    static constexpr std::size_t largestSmall = 512;

    static std::size_t sizeClass(std::size_t bytes) { return (bytes + granule - 1) / granule; }
    FEN_LOCAL static Page* pageOf(void* memory) noexcept;
    FEN_LOCAL void addSpan();
    FEN_LOCAL void freeSpan(Span* span) noexcept;
    FEN_LOCAL Page* takePage(std::size_t sizeClass);
    FEN_LOCAL void returnPage(Page* page) noexcept;
    FEN_LOCAL void* allocateSmall(std::size_t sizeClass);
    FEN_LOCAL void deallocateSmall(void* memory) noexcept;

    std::string const name_;
    mutable std::mutex mutex_;
    std::array<PageList, largestSmall / granule + 1> pagesWithRoom_; ///< per size
    PageList freePages_;
    Span* spareSpan_ = nullptr; ///< all of its pages are free
    std::size_t bytesInUse_ = 0;
    std::size_t bytesHeld_ = 0;
};

/// The slab of this name, made when it is first asked for and never destroyed.
FEN_API Slab& slab(std::string_view name);

/// A standard allocator that draws on one slab. Two allocators are equal when their slabs are the
/// same; containers take the allocator along when they are moved, copied or swapped.
template <class T>
class Allocator {
  public:
    using value_type = T; ///< what containers ask for
    /// Assigned containers take the other's allocator.
    using propagate_on_container_copy_assignment = std::true_type;
    /// Moved containers keep their memory: the allocator goes along.
    using propagate_on_container_move_assignment = std::true_type;
    /// Swapped containers swap allocators too.
    using propagate_on_container_swap = std::true_type;
    /// Memory goes back to the slab that it came from.
    using is_always_equal = std::false_type;

    /// Draws on `slab`, which must outlive what is allocated.
    explicit Allocator(Slab& slab) noexcept : slab_(&slab) {}
    /// Draws on the slab named "default".
    Allocator() : slab_(&MemSlab::slab("default")) {}
    /// Draws on the slab of `other`.
    template <class U>
    Allocator(Allocator<U> const& other) noexcept : slab_(&other.slab()) {}

    /// Memory for `count` objects; throws std::bad_array_new_length when no number of bytes can say
    /// how much that is, else as Slab::allocate.
    T* allocate(std::size_t count) {
        static_assert(alignof(T) <= alignof(std::max_align_t), "slabs do not align further");
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
            throw std::bad_array_new_length();
        return static_cast<T*>(slab_->allocate(count * sizeof(T)));
    }
    /// Gives back what allocate(count) returned.
    void deallocate(T* memory, std::size_t count) noexcept {
        slab_->deallocate(memory, count * sizeof(T));
    }
    /// The slab that it draws on.
    Slab& slab() const noexcept { return *slab_; }

    /// Whether both draw on the same slab.
    template <class U>
    friend bool operator==(Allocator const& a, Allocator<U> const& b) noexcept {
        return &a.slab() == &b.slab();
    }

  private:
    Slab* slab_;
};

} // namespace MemSlab
