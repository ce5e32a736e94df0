/// Rook::Ptr: a counted reference to a Rook::Node.
#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

#include <Rook/Node.h>

namespace Rook {

/// Holds one reference to a T, which derives from Rook::Node, or null. Copying adds a reference,
/// moving hands it over, destruction drops it; the last one deletes the node.
template <class T>
class Ptr {
  public:
    using element_type = T;

    Ptr() noexcept = default;
    Ptr(std::nullptr_t) noexcept {}
    Ptr(T* node) noexcept : node_(node) { retain(); }
    Ptr(Ptr const& other) noexcept : node_(other.node_) { retain(); }
    Ptr(Ptr&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> Ptr(Ptr<U> const& other)
    noexcept : Ptr(other.get()) {}
    Ptr& operator=(Ptr other) noexcept {
        std::swap(node_, other.node_);
        return *this;
    }
    ~Ptr() {
        if (node_ != nullptr)
            static_cast<Node const*>(node_)->release();
    }

    T* get() const noexcept { return node_; }
    T& operator*() const noexcept { return *node_; }
    T* operator->() const noexcept { return node_; }
    explicit operator bool() const noexcept { return node_ != nullptr; }

    template <class U>
    friend bool operator==(Ptr const& a, Ptr<U> const& b) noexcept {
        return a.get() == b.get();
    }
    friend bool operator==(Ptr const& a, std::nullptr_t) noexcept { return a.node_ == nullptr; }

  private:
    void retain() const noexcept {
        if (node_ != nullptr)
            static_cast<Node const*>(node_)->retain();
    }

    T* node_ = nullptr;
};

} // namespace Rook

template <class T>
struct std::hash<Rook::Ptr<T>> {
    std::size_t operator()(Rook::Ptr<T> const& ptr) const noexcept {
        return std::hash<T*>()(ptr.get());
    }
};
