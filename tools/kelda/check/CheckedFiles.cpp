#include "check/CheckedFiles.h"

#include <cerrno>
#include <cstring>
#include <map>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Text.h"

namespace KeldaTool {
namespace {

// 0, or the number of the error.
int errorOfOpening(std::string const& name) {
    int const descriptor = open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor == -1)
        return errno;
    close(descriptor);
    return 0;
}

// What tells whether two names mean the same file.
using Identity = std::pair<dev_t, ino_t>;

std::optional<Identity> identityOf(std::string const& name) {
    struct stat status {};
    if (stat(name.c_str(), &status) != 0)
        return std::nullopt;
    return Identity{status.st_dev, status.st_ino};
}

std::multimap<Identity, std::size_t> identitiesOf(KeldaDatabase::Device const& device) {
    std::multimap<Identity, std::size_t> identities;
    for (std::size_t i = 0; i < device.files.size(); ++i)
        if (auto const identity = identityOf(device.files[i].path()))
            identities.emplace(*identity, i);
    return identities;
}

} // namespace

std::optional<std::string> CheckedFiles::problem(KeldaDatabase::Device const& device) {
    wanted_.assign(device.files.size(), names_.empty());
    if (names_.empty())
        return std::nullopt;
    auto const identities = identitiesOf(device);
    for (auto const& name : names_) {
        if (int const error = errorOfOpening(name))
            return fmt::format("cannot read {}: {}", printable(name), std::strerror(error));
        auto const identity = identityOf(name);
        auto const [first, last] = identity ? identities.equal_range(*identity)
                                            : std::pair(identities.end(), identities.end());
        for (auto file = first; file != last; ++file)
            wanted_[file->second] = true;
        if (first == last)
            return fmt::format("{} is none of the files that are read from {} and {}",
                               printable(name), printable(device.preinitDirectory),
                               printable(device.profileDirectory));
    }
    return std::nullopt;
}

bool CheckedFiles::hold(KeldaDatabase::FileId file) const {
    return names_.empty() || (file != KeldaDatabase::none && wanted_[file]);
}

} // namespace KeldaTool
