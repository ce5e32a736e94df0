#include "FileOutput.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
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

// Writes into what is there: a pipe, a terminal, a device.
bool writeInto(std::string const& path, std::string_view text) {
    Descriptor const file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    return file.number() != -1 && writeAll(file.number(), text);
}

// A name beside the file. Parsers that scan the folder pass over names that begin with a dot.
std::string temporaryBeside(std::filesystem::path const& path) {
    return (path.parent_path() / fmt::format(".{}.XXXXXX", path.filename().string())).string();
}

// Who owns the old file owns the new one, as far as the caller may give files away.
void keepOwner(int descriptor, struct stat const& old) {
    [[maybe_unused]] int const ignored = fchown(descriptor, old.st_uid, old.st_gid);
}

// Puts a new file in the place of the old one, if there is one.
bool replaceFile(std::string const& path, std::string_view text, struct stat const* old) {
    auto temporary = temporaryBeside(path);
    Descriptor const file(mkstemp(temporary.data()));
    if (file.number() == -1)
        return false;
    if (old != nullptr)
        keepOwner(file.number(), *old);
    auto const mode = old != nullptr ? old->st_mode & 07777 : usualMode();
    if (writeAll(file.number(), text) && fchmod(file.number(), mode) == 0 &&
        fsync(file.number()) == 0 && std::rename(temporary.c_str(), path.c_str()) == 0)
        return true;
    int const error = errno;
    unlink(temporary.c_str());
    errno = error;
    return false;
}

} // namespace

void writeWholeFile(std::string const& path, std::string_view text) {
    // Links stay; what they lead to is written.
    std::error_code ignored;
    auto const resolved = std::filesystem::canonical(path, ignored).string();
    auto const target = ignored ? path : resolved;
    struct stat status {};
    bool const exists = stat(target.c_str(), &status) == 0;
    bool const isWritten = exists && !S_ISREG(status.st_mode)
                               ? writeInto(target, text)
                               : replaceFile(target, text, exists ? &status : nullptr);
    if (!isWritten)
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
