#include <KeldaUtil/MountFlags.h>

#include <array>
#include <bit>
#include <mutex>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace KeldaUtil {

using Fen::MountTable::Flags;

namespace {

// Position N is the letter of bit N.
constexpr std::string_view letters = "rwcitfSDdOApKLnNECey";
constexpr std::uint32_t readBit = 0x1;
constexpr std::uint32_t writeBit = 0x2;
static_assert(letters.size() == 20 && letters[19] == 'y' &&
              Flags::instantiatingBit == std::uint32_t{1} << 19U);

// The bits that each byte sets; 0 for a byte that is no letter.
constexpr auto bitsOfLetter = [] {
    std::array<std::uint32_t, 256> bits{};
    for (std::size_t i = 0; i < letters.size(); ++i)
        bits[static_cast<unsigned char>(letters[i])] = std::uint32_t{1} << i;
    bits['r'] |= Flags::instantiatingBit;
    bits['w'] |= Flags::instantiatingBit;
    return bits;
}();

// The bits of a text; nothing when it holds a letter that has none.
std::optional<std::uint32_t> bitsOf(std::string_view text) {
    std::uint32_t bits = 0;
    for (char const letter : text) {
        auto const bit = bitsOfLetter[static_cast<unsigned char>(letter)];
        if (bit == 0)
            return std::nullopt;
        bits |= bit;
    }
    return bits;
}

// The texts with unknown letters, numbered in the order they were met.
class UnknownTexts {
  public:
    static UnknownTexts& instance() {
        static auto& texts = *new UnknownTexts;
        return texts;
    }

    std::uint32_t numberOf(Rook::String const& text) {
        std::lock_guard const lock(mutex_);
        if (auto const found = numbers_.find(text); found != numbers_.end())
            return found->second;
        auto const number = static_cast<std::uint32_t>(texts_.size());
        texts_.push_back(text);
        numbers_.emplace(text, number);
        return number;
    }

    Rook::String text(std::uint32_t number) {
        std::lock_guard const lock(mutex_);
        return number < texts_.size() ? texts_[number] : Rook::String();
    }

  private:
    std::mutex mutex_;
    std::vector<Rook::String> texts_;
    std::unordered_map<Rook::String, std::uint32_t> numbers_;
};

} // namespace

Flags parseMountTableFlags(Rook::String const& text) {
    if (auto const bits = bitsOf(text.view()))
        return Flags(*bits);
    return Flags(Flags::unknownTextBit | UnknownTexts::instance().numberOf(text));
}

Rook::String mountTableFlagsToString(Flags flags) {
    if (flags.isUnknownText())
        return UnknownTexts::instance().text(flags.bits() & ~Flags::unknownTextBit);
    auto bits = flags.bits();
    if ((bits & (readBit | writeBit)) != 0)
        bits &= ~Flags::instantiatingBit;
    std::array<char, letters.size()> text{};
    std::size_t length = 0;
    for (; bits != 0 && length < text.size(); bits &= bits - 1) {
        auto const position = static_cast<std::size_t>(std::countr_zero(bits));
        if (position < letters.size())
            text[length++] = letters[position];
    }
    return std::string_view(text.data(), length);
}

namespace {

// The first text, and the letters of the second that it lacks.
Rook::String joinedLetters(Rook::String const& a, Rook::String const& b) {
    std::string joined(a.view());
    for (char const letter : b.view())
        if (joined.find(letter) == std::string::npos)
            joined += letter;
    return joined;
}

} // namespace

Flags safelyMergeFlags(Flags a, Flags b) {
    if (!a.isUnknownText() && !b.isUnknownText())
        return a | b;
    return parseMountTableFlags(
        joinedLetters(mountTableFlagsToString(a), mountTableFlagsToString(b)));
}

} // namespace KeldaUtil
