/// @file
/// Rook::Node: the base of everything that is shared through counted references (Rook::Ptr).
#pragma once

#include <atomic>
#include <cstdint>

#include <sys/single_threaded.h>

#include <Fen/Export.h>

/// Shared strings and counted references.
namespace Rook {

template <class T>
class Ptr;

/// A node lives as long as a Rook::Ptr to it. Its count is kept inside the node: it changes
/// atomically once the process has more than one thread and plainly before.
class FEN_API Node {
  public:
    Node(Node const&) = delete;
    Node& operator=(Node const&) = delete;

    /// How many Rook::Ptr hold the node; meant for tests and traces.
    std::uint32_t references() const noexcept {
        return references_.load(std::memory_order_relaxed);
    }
    /// Whether the node's destructor has said that it runs.
    bool isUnderDestruction() const noexcept { return underDestruction_; }

  protected:
    /// A node without references; the first Rook::Ptr to it owns it.
    Node() noexcept = default;
    /// Only the last Rook::Ptr deletes a node.
    virtual ~Node() = default;
    /// Called first by a destructor that runs operations of its node: whoever takes and drops a
    /// reference meanwhile does not delete the node a second time. No reference may outlive the
    /// destructor.
    void underDestructionIs() noexcept { underDestruction_ = true; }

  private:
    template <class T>
    friend class Ptr;

    void retain() const noexcept {
        if (__libc_single_threaded)
            references_.store(references() + 1, std::memory_order_relaxed);
        else
            references_.fetch_add(1, std::memory_order_relaxed);
    }
    /// Deletes the node with its last reference, unless its destructor runs already.
    void release() const noexcept {
        std::uint32_t before = 0;
        if (__libc_single_threaded) {
            before = references();
            references_.store(before - 1, std::memory_order_relaxed);
        } else {
            before = references_.fetch_sub(1, std::memory_order_acq_rel);
        }
        if (before == 1 && !underDestruction_)
            delete this;
    }

    mutable std::atomic<std::uint32_t> references_ = 0;
    bool underDestruction_ = false;
};

} // namespace Rook
