// Finds the record of a path by the path's hash, so that a path met again costs no search in the
// ordered map.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <KeldaBase/MountFileInfoTypes.h>

namespace Kelda {

// An open-addressing table, with linear probing, of records that live in a MountArgsMap. It only
// grows; clear() empties it and gives its memory back.
class PathIndex {
  public:
    using Record = MountArgsMap::value_type;

    // The record of the path, or null when it is not in the index.
    Record* find(Rook::String const& path) const {
        if (records_.empty())
            return nullptr;
        auto const hash = hashOf(path);
        for (auto slot = hash & mask(); hashes_[slot] != 0; slot = (slot + 1) & mask())
            if (hashes_[slot] == hash && records_[slot]->first == path)
                return records_[slot];
        return nullptr;
    }

    // Adds a record that the index does not hold yet.
    void insert(Record& record) {
        if (size_ + 1 > records_.size() / 4 * 3)
            grow();
        place(hashes_, records_, hashOf(record.first), &record);
        ++size_;
    }

    std::size_t size() const { return size_; }

    void clear() {
        hashes_ = Hashes();
        records_ = Records();
        size_ = 0;
    }

  private:
    using Hashes = std::vector<std::uint32_t, Allocator<std::uint32_t>>;
    using Records = std::vector<Record*, Allocator<Record*>>;
    static constexpr std::size_t smallest = 64;

    // Never 0, which marks a free slot.
    static std::uint32_t hashOf(Rook::String const& path) {
        auto const hash = static_cast<std::uint32_t>(std::hash<Rook::String>()(path));
        return hash == 0 ? 1 : hash;
    }
    std::size_t mask() const { return records_.size() - 1; }

    static void place(Hashes& hashes, Records& records, std::uint32_t hash, Record* record) {
        auto const mask = records.size() - 1;
        auto slot = hash & mask;
        while (hashes[slot] != 0)
            slot = (slot + 1) & mask;
        hashes[slot] = hash;
        records[slot] = record;
    }

    void grow() {
        auto const capacity = records_.empty() ? smallest : records_.size() * 2;
        Hashes hashes(capacity);
        Records records(capacity);
        for (std::size_t i = 0; i < records_.size(); ++i)
            if (records_[i] != nullptr)
                place(hashes, records, hashes_[i], records_[i]);
        hashes_ = std::move(hashes);
        records_ = std::move(records);
    }

    Hashes hashes_;
    Records records_;
    std::size_t size_ = 0;
};

} // namespace Kelda
