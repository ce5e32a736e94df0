#include "FileOutput.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Text.h"

namespace KeldaTool {
namespace {

[[noreturn]] void fail(std::string_view what, std::string const& path) {
    throw std::runtime_error(
        fmt::format("cannot {} {}: {}", what, printable(path), std::strerror(errno)));
}

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ != -1)
            close(number_);
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    int number() const { return number_; }

  private:
    int number_;
};

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        auto const written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Permissions as a new file has them.
mode_t usualMode() {
    auto const mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

void writeWholeFile(std::string const& path, std::string_view text) {
    auto temporary = path + ".XXXXXX";
    Descriptor const file(mkstemp(temporary.data()));
    if (file.number() == -1)
        fail("write", path);
    bool const isWritten = writeAll(file.number(), text) &&
                           fchmod(file.number(), usualMode()) == 0 && fsync(file.number()) == 0 &&
                           std::rename(temporary.c_str(), path.c_str()) == 0;
    if (isWritten)
        return;
    int const error = errno;
    unlink(temporary.c_str());
    errno = error;
    fail("write", path);
}

std::string readStandardInput() {
    std::string text;
    std::array<char, 65536> buffer{};
    for (;;) {
        auto const count = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count == 0)
            return text;
        if (count > 0)
            text.append(buffer.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            fail("read", "standard input");
    }
}

} // namespace KeldaTool
