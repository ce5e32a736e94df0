// The deduplication table behind Rook::String: open addressing with linear probing over two
// parallel arrays, the hashes (probed first, sixteen to a cache line) and the buffers.
//
// A buffer whose last String is gone stays in the table with a count of zero and can be taken up
// again under the table's lock. Unused buffers are swept out when the table is about to grow and by
// defragment(). Nobody but the holder of the lock can raise a count from zero, so a count that the
// sweep reads as zero stays zero.
#include <Rook/String.h>

#include <cstring>
#include <mutex>
#include <new>
#include <ostream>
#include <stdexcept>
#include <vector>

#include <MemSlab/Slab.h>

#include "SharedLock.h"

namespace Rook {

namespace {

// Reads the last, partial word of a text without reading past its end.
std::uint64_t readTail(char const* bytes, std::size_t count) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, count);
    return word;
}

std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
    __extension__ using Wide = unsigned __int128;
    auto const product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

// A multiply-and-fold hash, eight characters a step. The constants are the fractional parts of the
// golden ratio and of the square root of two: any odd numbers with evenly spread bits would do.
std::uint32_t hashOf(std::string_view text) {
    constexpr std::uint64_t golden = 0x9e3779b97f4a7c15;
    constexpr std::uint64_t root = 0x6a09e667f3bcc909;
    std::uint64_t state = text.size() * root;
    char const* at = text.data();
    std::size_t left = text.size();
    for (; left >= 8; at += 8, left -= 8)
        state = mix(state ^ readTail(at, 8), golden);
    state = mix(state ^ readTail(at, left), root);
    return static_cast<std::uint32_t>(state ^ (state >> 32));
}

} // namespace

class StringTable {
  public:
    // Never destroyed: strings in static objects may outlive any static table.
    static StringTable& instance() {
        static auto& table = *new StringTable;
        return table;
    }

    String::Rep* intern(std::string_view text) {
        if (text.size() > UINT32_MAX)
            throw std::length_error("Rook::String: text too long");
        auto const hash = hashOf(text);
        KeldaFramework::SharedLock const lock(mutex_);
        if (used_ + 1 > capacity() / 4 * 3)
            rebuild(sweep());
        auto const slot = findSlot(text, hash);
        if (reps_[slot] != nullptr) {
            String::retain(reps_[slot]);
            return reps_[slot];
        }
        auto* const rep = makeRep(text, hash);
        hashes_[slot] = hash;
        reps_[slot] = rep;
        ++used_;
        return rep;
    }

    void defragment() {
        KeldaFramework::SharedLock const lock(mutex_);
        rebuild(sweep());
    }

    String::TableFigures figures() {
        KeldaFramework::SharedLock const lock(mutex_);
        auto const tableBytes = capacity() * (sizeof(std::uint32_t) + sizeof(String::Rep*));
        return {used_, slab_.bytesInUse() + tableBytes};
    }

  private:
    static constexpr std::size_t smallestCapacity = 1024;

    StringTable() = default;

    std::size_t capacity() const { return reps_.size(); }

    // The slot that holds `text`, or the free slot where it belongs.
    std::size_t findSlot(std::string_view text, std::uint32_t hash) const {
        auto const mask = capacity() - 1;
        for (auto slot = hash & mask;; slot = (slot + 1) & mask) {
            auto* const rep = reps_[slot];
            if (rep == nullptr)
                return slot;
            if (hashes_[slot] == hash && rep->size == text.size() &&
                std::memcmp(rep->text(), text.data(), text.size()) == 0)
                return slot;
        }
    }

    static std::size_t repBytes(std::size_t textSize) { return sizeof(String::Rep) + textSize + 1; }

    String::Rep* makeRep(std::string_view text, std::uint32_t hash) {
        void* const memory = slab_.allocate(repBytes(text.size()));
        auto* const rep =
            new (memory) String::Rep{{1}, hash, static_cast<std::uint32_t>(text.size())};
        std::memcpy(rep->text(), text.data(), text.size());
        rep->text()[text.size()] = '\0';
        return rep;
    }

    // Frees every unused buffer, leaving empty slots behind, and returns how many remain. The table
    // must be rebuilt afterwards: probing may not stop at the new gaps.
    std::size_t sweep() {
        std::size_t kept = 0;
        for (auto*& rep : reps_) {
            if (rep == nullptr)
                continue;
            if (rep->references.load(std::memory_order_acquire) != 0) {
                ++kept;
                continue;
            }
            slab_.deallocate(rep, repBytes(rep->size));
            rep = nullptr;
        }
        return kept;
    }

    // Moves all buffers to a table that is at most three eighths full, so that a sweep is paid for
    // by at least as many insertions.
    void rebuild(std::size_t kept) {
        auto wanted = smallestCapacity;
        while (kept > wanted / 8 * 3)
            wanted *= 2;
        std::vector<std::uint32_t> hashes(wanted);
        std::vector<String::Rep*> reps(wanted);
        auto const mask = wanted - 1;
        for (std::size_t old = 0; old < capacity(); ++old) {
            if (reps_[old] == nullptr)
                continue;
            auto slot = hashes_[old] & mask;
            while (reps[slot] != nullptr)
                slot = (slot + 1) & mask;
            hashes[slot] = hashes_[old];
            reps[slot] = reps_[old];
        }
        hashes_ = std::move(hashes);
        reps_ = std::move(reps);
        used_ = kept;
    }

    std::mutex mutex_;
    std::vector<std::uint32_t> hashes_ = std::vector<std::uint32_t>(smallestCapacity);
    std::vector<String::Rep*> reps_ = std::vector<String::Rep*>(smallestCapacity);
    std::size_t used_ = 0;
    MemSlab::Slab& slab_ = MemSlab::slab("Rook::String");
};

String::Rep* String::intern(std::string_view text) {
    return StringTable::instance().intern(text);
}

void String::defragment() {
    StringTable::instance().defragment();
}

String::TableFigures String::tableFigures() {
    return StringTable::instance().figures();
}

} // namespace Rook
