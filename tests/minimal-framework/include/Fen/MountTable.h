/// The flags of a mount: a set of letters, which <KeldaUtil/MountFlags.h> knows.
#pragma once

#include <cstdint>

namespace Fen::MountTable {

class Flags {
  public:
    Flags() noexcept = default;
    explicit Flags(std::uint32_t bits) noexcept : bits_(bits) {}

    std::uint32_t bits() const noexcept { return bits_; }
    bool instantiatingMount() const noexcept { return (bits_ & 0x80000) != 0; }

    friend bool operator==(Flags, Flags) noexcept = default;
    friend Flags operator|(Flags a, Flags b) noexcept { return Flags(a.bits_ | b.bits_); }
    friend Flags operator&(Flags a, Flags b) noexcept { return Flags(a.bits_ & b.bits_); }

  private:
    std::uint32_t bits_ = 0;
};

} // namespace Fen::MountTable
