#include "Directory.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Kelda {

Descriptor::~Descriptor() {
    if (isOpen())
        ::close(descriptor_);
}

int Descriptor::release() noexcept {
    int const descriptor = descriptor_;
    descriptor_ = -1;
    return descriptor;
}

namespace {

bool isFileOrFolder(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 &&
           (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

} // namespace

Descriptor openForReading(int base, char const* name) {
    // O_NONBLOCK keeps a pipe without a writer from holding up the load; it has no effect on files.
    Descriptor opened(::openat(base, name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (opened.isOpen() && !isFileOrFolder(opened.get()))
        return Descriptor(-1);
    return opened;
}

OpenFile streamOf(Descriptor descriptor) {
    OpenFile file(::fdopen(descriptor.get(), "r"));
    if (file)
        descriptor.release();
    return file;
}

namespace {

std::string escaped(std::string_view directory) {
    std::string text;
    for (char const c : directory) {
        if (c == '*' || c == '?' || c == '[' || c == ']' || c == '\\')
            text += '\\';
        text += c;
    }
    return text;
}

// glob passes over a folder that it cannot open. Without descriptors or memory that would make
// files vanish in silence, so it has to give up then.
int giveUpWhenExhausted(char const* /*path*/, int error) {
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == EIO ? 1 : 0;
}

} // namespace

DirectoryMatches::DirectoryMatches(std::string_view directory, std::string_view pattern) {
    auto const expression = escaped(directory) + "/" + std::string(pattern);
    code_ = ::glob(expression.c_str(), 0, giveUpWhenExhausted, &matches_);
}

DirectoryMatches::~DirectoryMatches() {
    ::globfree(&matches_);
}

char const* DirectoryMatches::name(std::size_t index) const noexcept {
    char const* const path = matches_.gl_pathv[index];
    char const* const slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

} // namespace Kelda
