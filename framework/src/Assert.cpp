#include <Fen/Assert.h>

#include <cstdio>
#include <cstdlib>

namespace Fen {

void assertionFailed(char const* text, char const* file, int line, char const* function) noexcept {
    std::fprintf(stderr, "Assertion failed: %s, file %s, line %d, function %s\n", text, file, line,
                 function);
    std::abort();
}

} // namespace Fen
