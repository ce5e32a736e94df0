// Logical lines: open files and their line numbers, continuations, comments, and what can be told
// of a line at a glance.
#include <KeldaBase/MountFileInfo.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include <Fen/Assert.h>
#include <fmt/format.h>

#include "../Text.h"
#include "../Tracing.h"
#include "PhysicalLine.h"

namespace Kelda {

namespace {

constexpr std::string_view continuation = "\\\n";

constexpr char const* cellShorthand = "%cellPath";
constexpr char const* peerCellShorthand = "%peerCellPath";

// Few paths hold one, and a look at each "%" tells.
bool holdsShorthand(char const* path) {
    for (char const* at = std::strchr(path, '%'); at != nullptr; at = std::strchr(at + 1, '%'))
        if (startsWithIgnoringCase(at, cellShorthand) ||
            startsWithIgnoringCase(at, peerCellShorthand))
            return true;
    return false;
}

void cutAtComment(LineBuffer& buffer) {
    if (char* const comment = std::strchr(buffer.data(), '#'))
        *comment = '\0';
}

} // namespace

Rook::String MountFileInfo::currentFileName() const {
    FEN_ASSERT(!currentFiles_.empty());
    return currentFiles_.back().file;
}

std::int32_t MountFileInfo::currentLine() const {
    FEN_ASSERT(!currentFiles_.empty());
    return currentFiles_.back().line;
}

void MountFileInfo::nextLine(int n) {
    FEN_ASSERT(!currentFiles_.empty());
    currentFiles_.back().line += n;
}

bool MountFileInfo::readLogicalLine(FILE* file, LineBuffer& buffer, int& step) {
    auto const result = readPhysicalLine(file, buffer);
    if (result == ReadResult::end)
        return false;
    int const error = errno;
    nextLine(step);
    if (result == ReadResult::failure) {
        reportReadError(error);
        return false;
    }
    if (result == ReadResult::lineWithNul)
        reportNul(buffer.data());
    step = prepareLine(buffer, file);
    return true;
}

void MountFileInfo::reportReadError(int error) const {
    reportAndTrace(fmt::format("Cannot read file {}: {}", currentFileName(), std::strerror(error)));
}

void MountFileInfo::reportNul(char const* line) const {
    reportAndTrace(fmt::format("syntax error: NUL character in line after: {}", line));
}

int MountFileInfo::prepareLine(LineBuffer& buffer, FILE* file) const {
    MFI_TRACE(8, "( file : {}, buffer : \"{}\" )", currentFileName(), buffer.data());
    int lines = 1;
    while (char const* const backslash = std::strchr(buffer.data(), '\\')) {
        if (buffer[0] == '#') {
            reportAndTrace(fmt::format("syntax error: multi-line comment: {}", buffer.data()));
            return lines;
        }
        if (backslash != continuation) {
            reportAndTrace(
                fmt::format("syntax error: additional characters after \\: {}", buffer.data()));
            return lines;
        }
        if (!readContinuation(buffer, static_cast<std::size_t>(backslash - buffer.data()), file))
            break;
        ++lines;
    }
    cutAtComment(buffer);
    return lines;
}

// Reads the next physical line over the backslash at this position. False, with the buffer as it
// was, when nothing can be read.
bool MountFileInfo::readContinuation(LineBuffer& buffer, std::size_t backslash, FILE* file) const {
    auto const room = std::span(buffer).subspan(backslash);
    auto const result = readPhysicalLine(file, room);
    if (result == ReadResult::line)
        return true;
    if (result == ReadResult::lineWithNul) {
        reportNul(buffer.data());
        return true;
    }
    int const error = errno;
    std::copy_n(continuation.data(), continuation.size(), room.begin());
    room[continuation.size()] = '\0';
    if (result == ReadResult::failure)
        reportReadError(error);
    return false;
}

void MountFileInfo::convertPath(LineBuffer& buffer) const {
    if (!holdsShorthand(buffer.data()))
        return;
    strcCaseReplace(buffer, cellShorthand, "cell/%cellId");
    strcCaseReplace(buffer, peerCellShorthand, "cell/%peerCellId");
}

bool MountFileInfo::matchProfilePathLine(LineBuffer const& buffer) {
    char const* const comma = std::strchr(buffer.data(), ',');
    return comma != nullptr && std::strchr(comma + 1, ',') != nullptr &&
           std::strchr(buffer.data(), '=') == nullptr;
}

bool MountFileInfo::matchAliasLine(LineBuffer const& buffer) {
    return startsWithIgnoringCase(buffer.data(), "alias:") &&
           std::strchr(buffer.data(), '=') != nullptr;
}

} // namespace Kelda
