// The rule for the flags of an intermediate path.
#include <KeldaBase/MountFileInfo.h>

#include <Fen/Assert.h>
#include <KeldaUtil/MountFlags.h>

#include "../Tracing.h"
#include "FlagBits.h"

namespace Kelda {

using Fen::MountTable::Flags;
using KeldaUtil::mountTableFlagsToString;

Flags getIntermediateFlagsImpl(Flags const& targetFlags, Flags const& parentFlags, bool topDown) {
    FEN_ASSERT(targetFlags.instantiatingMount());
    MFI_TRACE(8, "( targetFlags : {}, parentFlags : {}, topDown : {} )",
              mountTableFlagsToString(targetFlags), mountTableFlagsToString(parentFlags), topDown);
    auto const target = targetFlags.bits();
    auto const parent = parentFlags.bits();
    bool const inherit = topDown && (parent & FlagBits::inheritable) != 0;

    auto bits = FlagBits::instantiating | FlagBits::intermediate;
    if (inherit)
        bits |= FlagBits::inheritable | (parent & FlagBits::passive);
    bits |= target & FlagBits::passive;
    // A parent that does not write takes the write flag from what inherits from it.
    bits |= target & FlagBits::write & (inherit ? parent : FlagBits::write);

    Flags const result(bits);
    MFI_TRACE(9, "Intermediate flags{}: {}", topDown ? "" : " (bottom-up only)",
              mountTableFlagsToString(result));
    return result;
}

} // namespace Kelda
