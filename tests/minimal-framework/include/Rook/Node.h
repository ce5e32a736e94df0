/// Rook::Node: the base of what is shared through Rook::Ptr.
#pragma once

#include <atomic>
#include <cstddef>

namespace Rook {

template <class T>
class Ptr;

class Node {
  public:
    Node(Node const&) = delete;
    Node& operator=(Node const&) = delete;

    std::size_t references() const noexcept { return references_.load(std::memory_order_relaxed); }
    bool isUnderDestruction() const noexcept { return underDestruction_; }

  protected:
    Node() noexcept = default;
    virtual ~Node() = default;

    /// For a destructor: from now on the last Rook::Ptr does not delete the node.
    void underDestructionIs() noexcept { underDestruction_ = true; }

  private:
    template <class T>
    friend class Ptr;

    void retain() const noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    void release() const noexcept {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1 && !underDestruction_)
            delete this;
    }

    mutable std::atomic<std::size_t> references_ = 0;
    bool underDestruction_ = false;
};

} // namespace Rook
