/// @file
/// Assertions that are on in every build: they guard against programming errors, never against
/// faults in input.
#pragma once

#include <Fen/Export.h>

namespace Fen {

/// Prints "Assertion failed: TEXT, file F, line N, function G" on standard error and aborts.
[[noreturn]] FEN_API void assertionFailed(char const* text, char const* file, int line,
                                          char const* function) noexcept;

} // namespace Fen

/// Aborts unless the condition holds; the message is the condition as written.
#define FEN_ASSERT(...) FEN_ASSERT_MSG((__VA_ARGS__), #__VA_ARGS__)

/// Aborts unless `condition` holds; the message is `text`, a C string.
#define FEN_ASSERT_MSG(condition, text)                                                            \
    (static_cast<bool>(condition)                                                                  \
         ? static_cast<void>(0)                                                                    \
         : ::Fen::assertionFailed((text), __FILE__, __LINE__, static_cast<char const*>(__func__)))
