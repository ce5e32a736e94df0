// Writes with system calls, not through streams: every error is seen when it happens, and what a
// stream could not write is not tried again at exit.
#include "Output.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace KeldaTool {
namespace {

// Waits until a descriptor that does not block by itself takes more.
void waitUntilWritable(int descriptor) {
    pollfd wanted{descriptor, POLLOUT, 0};
    poll(&wanted, 1, -1);
}

// 0, or the number of the error.
int writeAll(int descriptor, std::string_view text) noexcept {
    while (!text.empty()) {
        auto const written = write(descriptor, text.data(), text.size());
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EAGAIN)
            waitUntilWritable(descriptor);
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

// Some file systems tell only when a file is closed that there was no room for it.
int closeAfterWriting(int descriptor) noexcept {
    return close(descriptor) == 0 || errno == EINTR ? 0 : errno;
}

int writeLastResults(std::string_view text) noexcept {
    int const error = writeAll(STDOUT_FILENO, text);
    return error != 0 ? error : closeAfterWriting(STDOUT_FILENO);
}

} // namespace

void prepareStandardStreams() {
    std::signal(SIGPIPE, SIG_IGN);
    // Opened the wrong way round, so that using the stream remains the error that it was.
    constexpr std::array wrongWay = {O_WRONLY, O_RDONLY, O_RDONLY};
    for (int descriptor = 0; descriptor < 3; ++descriptor)
        if (fcntl(descriptor, F_GETFD) == -1)
            open("/dev/null", wrongWay[static_cast<std::size_t>(descriptor)]);
}

bool outputIsTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

bool colourIsWelcome() {
    char const* const noColour = std::getenv("NO_COLOR");
    char const* const terminal = std::getenv("TERM");
    return outputIsTerminal() && (noColour == nullptr || *noColour == '\0') &&
           (terminal == nullptr || std::strcmp(terminal, "dumb") != 0);
}

OutputLost::OutputLost(int error)
    : what_(std::string("cannot write to standard output: ") + std::strerror(error)) {}

void writeResultsNow(std::string_view results) {
    if (int const error = writeAll(STDOUT_FILENO, results); error != 0)
        throw OutputLost(error);
}

ExitStatus writeReport(Report const& report) {
    int const error = writeLastResults(report.results);
    writeMessage(report.messages);
    if (error == 0)
        return report.status;
    writeMessage(std::string("kelda: ") + OutputLost(error).what() + "\n");
    return ExitStatus::failure;
}

void writeMessage(std::string_view text) noexcept {
    writeAll(STDERR_FILENO, text);
}

} // namespace KeldaTool
