/// Named slabs: memory that is counted by name.
#pragma once

#include <atomic>
#include <cstddef>
#include <new>
#include <string_view>

namespace MemSlab {

/// Takes every piece from the heap and gives it back there, so it holds what is in use.
class Slab {
  public:
    void* allocate(std::size_t bytes) {
        void* const memory = ::operator new(bytes);
        bytesInUse_.fetch_add(bytes, std::memory_order_relaxed);
        return memory;
    }
    void deallocate(void* memory, std::size_t bytes) noexcept {
        ::operator delete(memory);
        bytesInUse_.fetch_sub(bytes, std::memory_order_relaxed);
    }

    std::size_t bytesInUse() const noexcept { return bytesInUse_.load(std::memory_order_relaxed); }
    std::size_t bytesHeld() const noexcept { return bytesInUse(); }

  private:
    std::atomic<std::size_t> bytesInUse_ = 0;
};

/// The slab of this name; it lives until the process ends.
Slab& slab(std::string_view name);

template <class T>
class Allocator {
  public:
    using value_type = T;

    explicit Allocator(Slab& slab) noexcept : slab_(&slab) {}
    template <class U>
    Allocator(Allocator<U> const& other) noexcept : slab_(&other.slab()) {}

    T* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / sizeof(T))
            throw std::bad_array_new_length();
        return static_cast<T*>(slab_->allocate(count * sizeof(T)));
    }
    void deallocate(T* memory, std::size_t count) noexcept {
        slab_->deallocate(memory, count * sizeof(T));
    }
    Slab& slab() const noexcept { return *slab_; }

    template <class U>
    friend bool operator==(Allocator const& a, Allocator<U> const& b) noexcept {
        return &a.slab() == &b.slab();
    }

  private:
    Slab* slab_;
};

} // namespace MemSlab
