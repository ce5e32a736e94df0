// The deduplication table behind Rook::String: open addressing with linear probing over two
// parallel arrays, the hashes (sixteen to a cache line; 0 marks a free slot) and the buffers, which
// are looked at only where the hashes are equal.
//
// A buffer whose last String is gone stays in the table with a count of zero and can be taken up
// again under the table's lock. Unused buffers go when the table is about to grow and by
// defragment(). Nobody but the holder of the lock can raise a count from zero, so a count that is
// read as zero under the lock stays zero.
#include <Rook/String.h>

#include <algorithm>
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

// A multiply-and-fold hash, eight characters a step; never 0. The constants are the fractional
// parts of the golden ratio and of the square root of two: any odd numbers with evenly spread bits
// would do.
std::uint32_t hashOf(std::string_view text) {
    constexpr std::uint64_t golden = 0x9e3779b97f4a7c15;
    constexpr std::uint64_t root = 0x6a09e667f3bcc909;
    std::uint64_t state = text.size() * root;
    char const* at = text.data();
    std::size_t left = text.size();
    for (; left >= 8; at += 8, left -= 8)
        state = mix(state ^ readTail(at, 8), golden);
    state = mix(state ^ readTail(at, left), root);
    auto const folded = static_cast<std::uint32_t>(state ^ (state >> 32));
    return folded == 0 ? 1 : folded;
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
        if (used_ + 1 > capacity() / 16 * 13)
            rebuild();
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
        rebuild();
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
            if (hashes_[slot] == 0 || (hashes_[slot] == hash && holds(*reps_[slot], text)))
                return slot;
        }
    }

    static bool holds(String::Rep& rep, std::string_view text) {
        return rep.size == text.size() && std::memcmp(rep.text(), text.data(), text.size()) == 0;
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

    static bool isUsed(String::Rep const* rep) {
        return rep != nullptr && rep->references.load(std::memory_order_acquire) != 0;
    }

    // Moves the buffers in use to a table that is at most half as full as it may get, so that the
    // work is paid for by at least as many insertions, and frees the others. Changes nothing when
    // there is no memory for the table.
    void rebuild() {
        auto const kept =
            static_cast<std::size_t>(std::count_if(reps_.begin(), reps_.end(), isUsed));
        auto wanted = smallestCapacity;
        while (kept > wanted / 32 * 13)
            wanted *= 2;
        std::vector<std::uint32_t> hashes(wanted);
        std::vector<String::Rep*> reps(wanted);
        std::size_t moved = 0;
        for (std::size_t old = 0; old < capacity(); ++old) {
            if (isUsed(reps_[old])) {
                place(hashes, reps, hashes_[old], reps_[old]);
                ++moved;
            } else if (reps_[old] != nullptr) {
                slab_.deallocate(reps_[old], repBytes(reps_[old]->size));
            }
        }
        hashes_ = std::move(hashes);
        reps_ = std::move(reps);
        used_ = moved;
    }

    static void place(std::vector<std::uint32_t>& hashes, std::vector<String::Rep*>& reps,
                      std::uint32_t hash, String::Rep* rep) {
        auto const mask = hashes.size() - 1;
        auto slot = hash & mask;
        while (hashes[slot] != 0)
            slot = (slot + 1) & mask;
        hashes[slot] = hash;
        reps[slot] = rep;
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
