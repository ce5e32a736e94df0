// A stream whose medium breaks: it gives its text and then fails with EIO instead of ending.
#pragma once

#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "LenientParser.h"

namespace support {

namespace detail {

struct BreakingMedium {
    std::string text;
    std::size_t given = 0;
};

inline ssize_t readBreakingMedium(void* cookie, char* to, std::size_t size) {
    auto& medium = *static_cast<BreakingMedium*>(cookie);
    auto const count = medium.text.copy(to, size, medium.given);
    medium.given += count;
    if (count != 0)
        return static_cast<ssize_t>(count);
    errno = EIO;
    return -1;
}

inline int closeBreakingMedium(void* cookie) {
    delete static_cast<BreakingMedium*>(cookie);
    return 0;
}

} // namespace detail

inline Stream failingStream(std::string_view text) {
    auto medium = std::make_unique<detail::BreakingMedium>();
    medium->text = text;
    cookie_io_functions_t operations{};
    operations.read = &detail::readBreakingMedium;
    operations.close = &detail::closeBreakingMedium;
    Stream stream(fopencookie(medium.get(), "r", operations), &std::fclose);
    if (!stream)
        throw std::runtime_error("fopencookie failed");
    medium.release(); // the stream deletes it
    return stream;
}

} // namespace support
