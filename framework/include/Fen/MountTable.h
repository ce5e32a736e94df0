/// @file
/// The flags of a mount: a set of one-letter flags in 32 bits.
#pragma once

#include <cstdint>

/// What an agent mounts, and how.
namespace Fen::MountTable {

/// A set of flags, by value. <KeldaUtil/MountFlags.h> holds the letters and converts from and to
/// text.
///
/// A text with a letter that has no bit is kept whole: such a value has bit 0x80000000 set and its
/// other bits say which text it is. Only conversion to text and comparison make sense for it.
class Flags {
  public:
    /// The letter `y`: the mount makes its path exist.
    static constexpr std::uint32_t instantiatingBit = 0x80000;
    /// Set in a value that stands for a text; no letter has it.
    static constexpr std::uint32_t unknownTextBit = 0x80000000;

    /// No flags.
    constexpr Flags() noexcept = default;
    /// The flags with these bits, taken as they are.
    constexpr explicit Flags(std::uint32_t bits) noexcept : bits_(bits) {}

    /// All 32 bits.
    constexpr std::uint32_t bits() const noexcept { return bits_; }
    /// Whether the value stands for a text with letters that have no bit.
    constexpr bool isUnknownText() const noexcept { return (bits_ & unknownTextBit) != 0; }
    /// Whether a mount with these flags makes its path exist in the agent's mount table.
    constexpr bool instantiatingMount() const noexcept {
        return !isUnknownText() && (bits_ & instantiatingBit) != 0;
    }

    /// Equal when the bits are; two different texts with unknown letters never are.
    friend constexpr bool operator==(Flags a, Flags b) noexcept = default;
    /// Union and intersection of the bits; use KeldaUtil::safelyMergeFlags where a value may stand
    /// for a text.
    friend constexpr Flags operator|(Flags a, Flags b) noexcept { return Flags(a.bits_ | b.bits_); }
    /// See operator|.
    friend constexpr Flags operator&(Flags a, Flags b) noexcept { return Flags(a.bits_ & b.bits_); }

  private:
    std::uint32_t bits_ = 0;
};

} // namespace Fen::MountTable
