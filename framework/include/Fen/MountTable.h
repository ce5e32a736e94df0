/// The flags of a mount: a set of one-letter flags in 32 bits.
#pragma once

#include <cstdint>

namespace Fen::MountTable {

/// KeldaUtil/MountFlags.h holds the letters and converts from and to text.
///
/// A text with a letter that has no bit is kept whole: such a value has bit 0x80000000 set and its
/// other bits say which text it is. Only conversion to text and comparison make sense for it.
class Flags {
  public:
    static constexpr std::uint32_t instantiatingBit = 0x80000;
    static constexpr std::uint32_t unknownTextBit = 0x80000000;

    constexpr Flags() noexcept = default;
    constexpr explicit Flags(std::uint32_t bits) noexcept : bits_(bits) {}

    constexpr std::uint32_t bits() const noexcept { return bits_; }
    /// Whether the value stands for a text with letters that have no bit.
    constexpr bool isUnknownText() const noexcept { return (bits_ & unknownTextBit) != 0; }
    /// Whether a mount with these flags makes its path exist in the agent's mount table.
    constexpr bool instantiatingMount() const noexcept {
        return !isUnknownText() && (bits_ & instantiatingBit) != 0;
    }

    friend constexpr bool operator==(Flags a, Flags b) noexcept = default;
    friend constexpr Flags operator|(Flags a, Flags b) noexcept { return Flags(a.bits_ | b.bits_); }
    friend constexpr Flags operator&(Flags a, Flags b) noexcept { return Flags(a.bits_ & b.bits_); }

  private:
    std::uint32_t bits_ = 0;
};

} // namespace Fen::MountTable
