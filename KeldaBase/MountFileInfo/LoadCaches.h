// What the parser remembers to make loading fast. Everything here follows from the parser's maps
// and may be dropped at any time.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include <KeldaBase/MountFileInfo.h>

#include "Directory.h"
#include "PathIndex.h"

namespace Kelda {

// Appends to the lists of a map, remembering the list of the last key.
class ListAppender {
  public:
    // Returns whether the list is another one than that of the call before.
    bool append(StringListMap& lists, Rook::String const& key, Rook::String const& value) {
        bool const isOther = list_ == nullptr || key != key_;
        if (isOther) {
            list_ = &lists[key];
            key_ = key;
        }
        list_->push_back(value);
        return isOther;
    }

    void clear() {
        list_ = nullptr;
        key_ = Rook::String();
    }

  private:
    Rook::String key_;
    StringList* list_ = nullptr;
};

// The keys of lists that are to be put in order before somebody reads them.
class UnsettledLists {
  public:
    void add(Rook::String const& key) { keys_.insert(key); }

    template <class Operation>
    void settle(StringListMap& lists, Operation putInOrder) {
        for (auto const& key : keys_)
            if (auto const list = lists.find(key); list != lists.end())
                putInOrder(list->second);
        clear();
    }

    void clear() { UnorderedStringSet().swap(keys_); }

  private:
    UnorderedStringSet keys_;
};

// The key of the current mount group, put together once per group.
class MountGroupKey {
  public:
    Rook::String const& of(Rook::String const& agentKey, Rook::String const& group) {
        if (key_.empty() || agentKey != agentKey_ || group != group_) {
            agentKey_ = agentKey;
            group_ = group;
            key_ = agentKey + "::" + group;
        }
        return key_;
    }

  private:
    Rook::String agentKey_;
    Rook::String group_;
    Rook::String key_;
};

// Flag values that were found valid; a small table in which a newer value takes an older one's
// place.
class ValidFlags {
  public:
    bool holds(Fen::MountTable::Flags flags) const { return values_[slot(flags)] == flags.bits(); }
    void add(Fen::MountTable::Flags flags) { values_[slot(flags)] = flags.bits(); }

  private:
    static constexpr std::size_t slots = 64;
    static std::size_t slot(Fen::MountTable::Flags flags) {
        constexpr std::uint32_t spread = 0x9e3779b1; // multiplicative hashing
        return (flags.bits() * spread) >> 26U;
    }

    std::array<std::uint32_t, slots> values_{}; // 0, the empty flags, is always valid
};

class MountFileInfo::LoadCaches {
  public:
    PathIndex records;
    std::optional<MountArgsMap::iterator> lastRecord; // the one inserted last
    ListAppender mountGroups;
    UnsettledLists grownMountGroups;
    ListAppender profileFiles;
    UnsettledLists endedProfileFiles;
    MountGroupKey mountGroupKey;
    ValidFlags validFlags;
    DirectoryListing* listing = nullptr; // of the directory that is being scanned as a whole

    void clear() {
        records.clear();
        lastRecord.reset();
        mountGroups.clear();
        grownMountGroups.clear();
        profileFiles.clear();
        endedProfileFiles.clear();
    }
};

} // namespace Kelda
