/// Rook::String: a pointer to the only copy of its characters.
#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace Rook {

class String {
  public:
    static constexpr std::size_t npos = std::string_view::npos;

    String() noexcept = default;
    String(char const* text) : String(std::string_view(text)) {}
    String(std::string const& text) : String(std::string_view(text)) {}
    String(std::string_view text);

    String(String const& other) noexcept : entry_(other.entry_) {
        if (entry_ != nullptr)
            entry_->second.fetch_add(1, std::memory_order_relaxed);
    }
    String(String&& other) noexcept : entry_(std::exchange(other.entry_, nullptr)) {}
    String& operator=(String other) noexcept {
        std::swap(entry_, other.entry_);
        return *this;
    }
    ~String() {
        if (entry_ != nullptr)
            entry_->second.fetch_sub(1, std::memory_order_release);
    }

    char const* c_str() const noexcept { return entry_ == nullptr ? "" : entry_->first.c_str(); }
    std::size_t size() const noexcept { return view().size(); }
    bool empty() const noexcept { return entry_ == nullptr; }
    std::string_view view() const noexcept {
        return entry_ == nullptr ? std::string_view() : std::string_view(entry_->first);
    }
    operator std::string_view() const noexcept { return view(); }

    std::size_t find(std::string_view text, std::size_t from = 0) const noexcept {
        return view().find(text, from);
    }
    String substr(std::size_t from, std::size_t n) const { return view().substr(from, n); }
    bool startsWith(std::string_view prefix) const noexcept { return view().starts_with(prefix); }
    bool endsWith(std::string_view suffix) const noexcept { return view().ends_with(suffix); }
    /// ASCII letters only.
    String toLower() const;

    String& operator+=(String const& more) { return *this = *this + more; }
    friend String operator+(String const& a, String const& b) {
        return std::string(a.view()).append(b.view());
    }

    friend bool operator==(String const& a, String const& b) noexcept {
        return a.entry_ == b.entry_;
    }
    friend bool operator==(String const& a, char const* b) noexcept { return a.view() == b; }
    friend std::strong_ordering operator<=>(String const& a, String const& b) noexcept {
        return a.view() <=> b.view();
    }
    friend std::strong_ordering operator<=>(String const& a, char const* b) noexcept {
        return a.view() <=> b;
    }
    friend std::ostream& operator<<(std::ostream& stream, String const& text) {
        return stream << text.view();
    }

    /// Drops the texts that no String holds.
    static void defragment();

  private:
    friend struct std::hash<String>;
    /// A text, and how many Strings hold it.
    using Entry = std::pair<std::string const, std::atomic<std::size_t>>;

    Entry* entry_ = nullptr; // null: the empty text
};

} // namespace Rook

template <>
struct std::hash<Rook::String> {
    std::size_t operator()(Rook::String const& text) const noexcept {
        return std::hash<void const*>()(text.entry_);
    }
};

template <>
struct fmt::formatter<Rook::String> : fmt::formatter<std::string_view> {
    template <class Context>
    auto format(Rook::String const& text, Context& context) const {
        return fmt::formatter<std::string_view>::format(text.view(), context);
    }
};
