#include <Fen/Assert.h>

#include <cstdio>
#include <cstdlib>

namespace Fen {

void assertionViolated(char const* text, char const* file, int line,
                       char const* function) noexcept {
    std::fprintf(stderr, "%s:%d: %s does not hold in %s\n", file, line, text, function);
    std::abort();
}

} // namespace Fen
