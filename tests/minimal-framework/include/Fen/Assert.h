/// Assertions, on in every build.
#pragma once

namespace Fen {

[[noreturn]] void assertionViolated(char const* text, char const* file, int line,
                                    char const* function) noexcept;

} // namespace Fen

#define FEN_ASSERT(condition) FEN_ASSERT_MSG(condition, #condition)

#define FEN_ASSERT_MSG(condition, text)                                                            \
    ((condition) ? static_cast<void>(0)                                                            \
                 : ::Fen::assertionViolated((text), __FILE__, __LINE__, __func__))
