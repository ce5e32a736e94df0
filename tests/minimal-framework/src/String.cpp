#include <Rook/String.h>

#include <mutex>
#include <unordered_map>

namespace Rook {

namespace {

// Every text in use, and those that were in use since the last defragment(). A count that is zero
// rises only under the mutex.
struct Table {
    std::mutex mutex;
    std::unordered_map<std::string, std::atomic<std::size_t>> texts;
};

// Never destroyed: there may be Strings in static variables.
Table& table() {
    static auto& table = *new Table;
    return table;
}

} // namespace

String::String(std::string_view text) {
    if (text.empty())
        return;
    std::scoped_lock const lock(table().mutex);
    entry_ = &*table().texts.try_emplace(std::string(text)).first;
    entry_->second.fetch_add(1, std::memory_order_relaxed);
}

String String::toLower() const {
    std::string lower(view());
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

void String::defragment() {
    std::scoped_lock const lock(table().mutex);
    std::erase_if(table().texts, [](Entry const& entry) {
        return entry.second.load(std::memory_order_acquire) == 0;
    });
    table().texts.rehash(0);
}

} // namespace Rook
