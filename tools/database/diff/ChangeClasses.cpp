#include "ChangeClasses.h"

#include <algorithm>

namespace KeldaDatabase {
namespace {

using Fen::MountTable::Flags;

Flags without(Flags flags, Flags others) {
    return Flags(flags.bits() & ~others.bits());
}

} // namespace

ChangeKind kindOfFlags(Flags before, Flags after) {
    if (without(before, after) == Flags())
        return ChangeKind::flagsWidened;
    if (without(after, before) == Flags())
        return ChangeKind::flagsNarrowed;
    return ChangeKind::flagsReplaced;
}

ChangeClass classOfAddedMount(Flags flags) {
    return writes(flags) ? ChangeClass::risky : ChangeClass::notable;
}

ChangeClass classOfFlags(Flags before, Flags after) {
    auto severity = ChangeClass::harmless;
    if (without(after, before) != Flags())
        severity = !writes(before) && writes(after) ? ChangeClass::risky : ChangeClass::notable;
    if (without(before, after) != Flags()) {
        bool const lacks = (reads(before) && !reads(after)) || (writes(before) && !writes(after));
        severity = std::max(severity, lacks ? ChangeClass::dangerous : ChangeClass::risky);
    }
    return severity;
}

} // namespace KeldaDatabase
