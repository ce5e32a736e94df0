/// @file
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
/// std::hash knows it: equal pointers have equal hashes.
template <class T>
class Ptr {
  public:
    using element_type = T; ///< the node's type

    Ptr() noexcept = default;       ///< null
    Ptr(std::nullptr_t) noexcept {} ///< null
    /// A reference more to `node`, or null.
    Ptr(T* node) noexcept : node_(node) { retain(); }
    /// A reference more to the node of `other`.
    Ptr(Ptr const& other) noexcept : node_(other.node_) { retain(); }
    /// Takes the reference of `other`, which is null then.
    Ptr(Ptr&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
    /// A reference more to a node of a type that converts to T.
    template <class U>
    requires std::is_convertible_v<U*, T*> Ptr(Ptr<U> const& other)
    noexcept : Ptr(other.get()) {}
    /// Drops the reference held and takes that of `other`.
    Ptr& operator=(Ptr other) noexcept {
        std::swap(node_, other.node_);
        return *this;
    }
    /// Drops the reference.
    ~Ptr() {
        if (node_ != nullptr)
            static_cast<Node const*>(node_)->release();
    }

    /// The node, or null; no reference is added.
    T* get() const noexcept { return node_; }
    /// The node; undefined for null, as with any pointer.
    T& operator*() const noexcept { return *node_; }
    /// The node's members; undefined for null.
    T* operator->() const noexcept { return node_; }
    /// Whether it is not null.
    explicit operator bool() const noexcept { return node_ != nullptr; }

    /// Whether both refer to the same node, or are null.
    template <class U>
    friend bool operator==(Ptr const& a, Ptr<U> const& b) noexcept {
        return a.get() == b.get();
    }
    /// Whether it is null.
    friend bool operator==(Ptr const& a, std::nullptr_t) noexcept { return a.node_ == nullptr; }

  private:
    void retain() const noexcept {
        if (node_ != nullptr)
            static_cast<Node const*>(node_)->retain();
    }

    T* node_ = nullptr;
};

} // namespace Rook

/// @cond
template <class T>
struct std::hash<Rook::Ptr<T>> {
    std::size_t operator()(Rook::Ptr<T> const& ptr) const noexcept {
        return std::hash<T*>()(ptr.get());
    }
};
/// @endcond
