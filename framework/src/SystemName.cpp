#include <Fen/SystemName.h>

#include <sys/utsname.h>

namespace Fen {

Rook::String systemName() {
    utsname names{};
    if (uname(&names) != 0)
        return {};
    return static_cast<char const*>(names.nodename);
}

} // namespace Fen
