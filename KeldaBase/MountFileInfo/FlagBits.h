// The positions in a flags value that the parser itself reads or sets.
#pragma once

#include <cstdint>

namespace Kelda::FlagBits {

inline constexpr std::uint32_t write = 0x2;
inline constexpr std::uint32_t inheritable = 0x10;      // "t": intermediate paths below inherit
inline constexpr std::uint32_t passive = 0x800;         // "p": suppresses write
inline constexpr std::uint32_t intermediate = 0x4000;   // "n"
inline constexpr std::uint32_t instantiating = 0x80000; // "y"

constexpr std::uint32_t withoutSuppressedWrite(std::uint32_t bits) {
    return (bits & passive) != 0 ? bits & ~write : bits;
}

} // namespace Kelda::FlagBits
