/// @file
/// Rook::String: an immutable, deduplicated string in one pointer.
///
/// All strings with the same characters share one buffer, which lives in a process-wide table.
/// Equality and hashing therefore cost O(1), a copy costs one counter, and a list of strings costs
/// eight bytes a string however often a text is repeated.
///
/// Making a String from characters looks the characters up in the table, so do that once per text
/// and pass the String on.
///
/// Threads: any number of threads may make, copy and drop strings at the same time. One String
/// object must not be changed by one thread while another uses it.
#pragma once

#include <atomic>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <sys/single_threaded.h>

#include <Fen/Export.h>

namespace Rook {

class String;

/// Anything that can be compared with or appended to a String without being one. A null pointer
/// counts as the empty string.
template <class T>
concept StringLike = !std::same_as<T, String> && std::convertible_to<T const&, std::string_view>;

/// A handle to a shared buffer; the head of this file tells the rest. Offsets and sizes are bytes.
/// std::hash knows it, and fmt formats it as it does a std::string_view.
class FEN_API String {
  public:
    /// What find returns when there is nothing, and "all that is left" for substr.
    static constexpr std::size_t npos = std::string_view::npos;

    /// The empty string; it needs no table.
    String() noexcept = default;

    /// The string with the characters up to the NUL; a null pointer gives the empty string.
    String(char const* text) : String(viewOf(text)) {}
    /// The string with these characters, which may hold NUL. Throws std::length_error for more than
    /// 4 GiB - 1: the length is kept in 32 bits.
    String(std::string_view text) : rep_(text.empty() ? nullptr : intern(text)) {}
    /// As from a std::string_view.
    String(std::string const& text) : String(std::string_view(text)) {}

    /// Shares the buffer of `other`.
    String(String const& other) noexcept : rep_(other.rep_) { retain(rep_); }
    /// Takes the buffer of `other`, which is empty then.
    String(String&& other) noexcept : rep_(std::exchange(other.rep_, nullptr)) {}
    /// Shares the buffer of `other`.
    String& operator=(String const& other) noexcept {
        String copy(other);
        std::swap(rep_, copy.rep_);
        return *this;
    }
    /// Exchanges the buffers.
    String& operator=(String&& other) noexcept {
        std::swap(rep_, other.rep_);
        return *this;
    }
    /// The buffer stays in the table; see defragment.
    ~String() { release(rep_); }

    /// The characters, followed by a NUL; valid as long as any String with this text lives.
    char const* c_str() const noexcept { return rep_ == nullptr ? "" : rep_->text(); }
    /// The number of characters, without the closing NUL.
    std::size_t size() const noexcept { return rep_ == nullptr ? 0 : rep_->size; }
    /// Whether it has no characters.
    bool empty() const noexcept { return rep_ == nullptr; }
    /// The characters; valid as long as c_str().
    std::string_view view() const noexcept { return {c_str(), size()}; }
    /// As view().
    operator std::string_view() const noexcept { return view(); }

    /// The offset of the first occurrence of `text` at or after offset `from`, or npos.
    std::size_t find(std::string_view text, std::size_t from = 0) const noexcept {
        return view().find(text, from);
    }
    /// Up to `n` characters from offset `from`; an offset past the end gives the empty string.
    String substr(std::size_t from, std::size_t n = npos) const;
    /// Whether it begins with `prefix`; every string begins with "".
    bool startsWith(std::string_view prefix) const noexcept { return view().starts_with(prefix); }
    /// Whether it ends in `suffix`; every string ends in "".
    bool endsWith(std::string_view suffix) const noexcept { return view().ends_with(suffix); }
    /// The string with A to Z turned into a to z; every other byte stays as it is.
    String toLower() const;

    /// Becomes the string with `more` appended; others that shared the buffer keep theirs.
    template <class T>
    requires std::convertible_to<T const&, std::string_view> String& operator+=(T const& more) {
        *this = concat(view(), viewOf(more));
        return *this;
    }

    /// A hash of the characters, computed once when the buffer was made: equal in every process.
    std::size_t hash() const noexcept { return rep_ == nullptr ? 0 : rep_->hash; }

    /// Whether both have the same characters; O(1).
    friend bool operator==(String const& a, String const& b) noexcept { return a.rep_ == b.rep_; }
    /// Byte order, as strcmp has it, with NUL characters counted like any other.
    friend std::strong_ordering operator<=>(String const& a, String const& b) noexcept {
        return a.rep_ == b.rep_ ? std::strong_ordering::equal : compare(a.view(), b.view());
    }
    /// Whether both have the same characters.
    template <StringLike T>
    friend bool operator==(String const& a, T const& b) noexcept {
        return a.view() == viewOf(b);
    }
    /// Byte order, as among strings.
    template <StringLike T>
    friend std::strong_ordering operator<=>(String const& a, T const& b) noexcept {
        return compare(a.view(), viewOf(b));
    }
    /// The characters of both, one after the other.
    friend String operator+(String const& a, String const& b) { return concat(a.view(), b.view()); }
    /// The same with a text that is no String.
    template <StringLike T>
    friend String operator+(String const& a, T const& b) {
        return concat(a.view(), viewOf(b));
    }
    /// The same with a text that is no String.
    template <StringLike T>
    friend String operator+(T const& a, String const& b) {
        return concat(viewOf(a), b.view());
    }

    /// Gives back the buffers that no String uses any more and shrinks the table to what is left.
    /// A dropped buffer otherwise stays until the table has to grow, so that a text that comes back
    /// is found again at once.
    static void defragment();

    /// Figures of the deduplication table.
    struct TableFigures {
        std::size_t buffers; ///< buffers it holds, used or not
        std::size_t bytes;   ///< bytes that they and the table take
    };
    /// The figures as they are now.
    static TableFigures tableFigures();

  private:
    /// One shared buffer; its characters and their closing NUL follow it in memory.
    struct Rep {
        std::atomic<std::uint32_t> references;
        std::uint32_t hash;
        std::uint32_t size;
        char* text() noexcept { return reinterpret_cast<char*>(this + 1); }
    };
    friend class StringTable;

    template <class T>
    static std::string_view viewOf(T const& text) {
        if constexpr (std::convertible_to<T const&, char const*>) {
            char const* const characters = text;
            return characters == nullptr ? std::string_view() : characters;
        } else {
            return text;
        }
    }

    static Rep* intern(std::string_view text);
    static String concat(std::string_view a, std::string_view b);
    static std::strong_ordering compare(std::string_view a, std::string_view b) noexcept {
        return a.compare(b) <=> 0;
    }

    /// Atomic once the process has a second thread, a plain load and store before.
    static void retain(Rep* rep) noexcept {
        if (rep == nullptr)
            return;
        if (__libc_single_threaded)
            rep->references.store(rep->references.load(std::memory_order_relaxed) + 1,
                                  std::memory_order_relaxed);
        else
            rep->references.fetch_add(1, std::memory_order_relaxed);
    }
    static void release(Rep* rep) noexcept {
        if (rep == nullptr)
            return;
        if (__libc_single_threaded)
            rep->references.store(rep->references.load(std::memory_order_relaxed) - 1,
                                  std::memory_order_relaxed);
        else
            rep->references.fetch_sub(1, std::memory_order_release);
    }

    Rep* rep_ = nullptr;
};

static_assert(sizeof(String) == sizeof(void*));

/// Writes the characters as they are.
FEN_API std::ostream& operator<<(std::ostream& stream, String const& text);

} // namespace Rook

/// @cond
template <>
struct std::hash<Rook::String> {
    std::size_t operator()(Rook::String const& text) const noexcept { return text.hash(); }
};

template <>
struct fmt::formatter<Rook::String> : fmt::formatter<std::string_view> {
    template <class Context>
    auto format(Rook::String const& text, Context& context) const {
        return fmt::formatter<std::string_view>::format(text.view(), context);
    }
};
/// @endcond
