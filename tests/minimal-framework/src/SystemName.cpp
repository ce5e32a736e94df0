#include <Fen/SystemName.h>

#include <sys/utsname.h>

namespace Fen {

Rook::String systemName() {
    utsname names{};
    return uname(&names) == 0 ? Rook::String(names.nodename) : Rook::String();
}

} // namespace Fen
