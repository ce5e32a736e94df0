#include "Directory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <numeric>

#include <fcntl.h>
#include <fnmatch.h>
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

std::vector<char const*> DirectoryMatches::names() const {
    std::vector<char const*> names;
    if (code_ != 0)
        return names;
    names.reserve(matches_.gl_pathc);
    for (std::size_t i = 0; i < matches_.gl_pathc; ++i) {
        char const* const path = matches_.gl_pathv[i];
        char const* const slash = std::strrchr(path, '/');
        names.push_back(slash == nullptr ? path : slash + 1);
    }
    return names;
}

namespace {

constexpr std::string_view patternCharacters = "*?[\\";

} // namespace

bool DirectoryListing::answers(std::string_view directory, std::string_view pattern) const {
    bool const isPattern = pattern.find_first_of(patternCharacters) != std::string_view::npos;
    return isPattern && directory == directory_ && !pattern.starts_with('.') &&
           !pattern.starts_with('\\') && pattern.find('/') == std::string_view::npos;
}

void DirectoryListing::sortNames() {
    if (!byName_.empty())
        return;
    byName_.resize(names_.size());
    std::iota(byName_.begin(), byName_.end(), std::size_t{0});
    std::ranges::sort(byName_, {}, [this](std::size_t i) { return std::string_view(names_[i]); });
}

std::vector<char const*> DirectoryListing::matching(std::string const& pattern) {
    sortNames();
    // Only names that begin as the pattern does can match.
    auto const prefix =
        std::string_view(pattern).substr(0, pattern.find_first_of(patternCharacters));
    auto const nameOf = [&](std::size_t i) {
        return std::string_view(names_[i]).substr(0, prefix.size());
    };
    auto const first = std::ranges::lower_bound(byName_, prefix, {}, nameOf);
    auto const last = std::ranges::upper_bound(first, byName_.end(), prefix, {}, nameOf);
    std::vector<std::size_t> found;
    std::copy_if(first, last, std::back_inserter(found), [&](std::size_t i) {
        return ::fnmatch(pattern.c_str(), names_[i], FNM_PERIOD) == 0;
    });
    std::ranges::sort(found);
    std::vector<char const*> names;
    std::ranges::transform(found, std::back_inserter(names),
                           [this](std::size_t i) { return names_[i]; });
    return names;
}

} // namespace Kelda
