// fgets does not tell how many characters it read, so a NUL among them looks like the line's end.
// The room is therefore filled with newlines first: the first newline found afterwards is the
// line's own when a NUL follows it, and filling behind the closing NUL otherwise.
#include "PhysicalLine.h"

#include <cerrno>
#include <cstring>

namespace Kelda {

namespace {

ReadResult endOrFailure(FILE* file) {
    return std::ferror(file) == 0 || errno == EISDIR ? ReadResult::end : ReadResult::failure;
}

std::size_t lengthRead(std::span<char const> room) {
    void const* const found = std::memchr(room.data(), '\n', room.size());
    if (found == nullptr)
        return room.size() - 1;
    auto const newline = static_cast<std::size_t>(static_cast<char const*>(found) - room.data());
    bool const isLineEnd = newline + 1 < room.size() && room[newline + 1] == '\0';
    return isLineEnd ? newline + 1 : newline - 1;
}

} // namespace

ReadResult readPhysicalLine(FILE* file, std::span<char> room) {
    std::memset(room.data(), '\n', room.size());
    // A parser is used by one thread, and so are the files it opens.
    if (fgets_unlocked(room.data(), static_cast<int>(room.size()), file) == nullptr) {
        room.front() = '\0';
        return endOrFailure(file);
    }
    bool const holdsNul = std::memchr(room.data(), '\0', lengthRead(room)) != nullptr;
    return holdsNul ? ReadResult::lineWithNul : ReadResult::line;
}

} // namespace Kelda
