/// Rook::Ptr: a counted reference to a Rook::Node.
#pragma once

#include <utility>

#include <Rook/Node.h>

namespace Rook {

template <class T>
class Ptr {
  public:
    Ptr(T* node = nullptr) noexcept : node_(node) {
        if (node_ != nullptr)
            static_cast<Node const*>(node_)->retain();
    }
    Ptr(Ptr const& other) noexcept : Ptr(other.node_) {}
    Ptr(Ptr&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
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
    friend bool operator==(Ptr const&, Ptr const&) noexcept = default;

  private:
    T* node_;
};

} // namespace Rook
