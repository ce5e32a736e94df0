// Reads one physical line, as fgets does, and notices what fgets hides.
#pragma once

#include <cstdio>
#include <span>

namespace Kelda {

enum class ReadResult {
    line,        // up to a line end, the end of the file or the end of the room
    lineWithNul, // the same, but a NUL character cuts the text short
    end,         // nothing was left to read
    failure      // the file could not be read; errno says why
};

// Reads into `room`, at least two characters, what the next physical line has room for and closes
// it with a NUL. When nothing was read the first character is NUL. A folder reads as an empty file.
ReadResult readPhysicalLine(FILE* file, std::span<char> room);

} // namespace Kelda
