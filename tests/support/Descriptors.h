// What the process holds open, and scopes in which it may open less than usual.
#pragma once

#include <algorithm>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace support {

inline std::set<int> descriptorsInUse() {
    std::unique_ptr<DIR, int (*)(DIR*)> const listing(opendir("/proc/self/fd"), &closedir);
    if (listing == nullptr)
        throw std::runtime_error("cannot list the open descriptors");
    std::set<int> descriptors;
    while (dirent const* const entry = readdir(listing.get()))
        if (entry->d_name[0] != '.')
            descriptors.insert(std::stoi(entry->d_name));
    descriptors.erase(dirfd(listing.get()));
    return descriptors;
}

// The descriptors opened since `before` that a program started now would inherit.
inline std::vector<int> inheritedSince(std::set<int> const& before) {
    std::vector<int> inherited;
    for (int const descriptor : descriptorsInUse())
        if (!before.contains(descriptor) && (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0)
            inherited.push_back(descriptor);
    return inherited;
}

// Leaves the process exactly `spare` descriptors to open.
class FewDescriptors {
  public:
    explicit FewDescriptors(unsigned spare) {
        getrlimit(RLIMIT_NOFILE, &old_);
        rlimit lowered = old_;
        lowered.rlim_cur = std::min<rlim_t>(old_.rlim_cur, 256);
        setrlimit(RLIMIT_NOFILE, &lowered);
        held_.reserve(256);
        for (int held; (held = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;)
            held_.push_back(held);
        for (; spare > 0 && !held_.empty(); --spare) {
            close(held_.back());
            held_.pop_back();
        }
    }
    ~FewDescriptors() {
        for (int const held : held_)
            close(held);
        setrlimit(RLIMIT_NOFILE, &old_);
    }
    FewDescriptors(FewDescriptors const&) = delete;
    FewDescriptors& operator=(FewDescriptors const&) = delete;

  private:
    rlimit old_{};
    std::vector<int> held_;
};

// Takes away root's right to read everything; does nothing for another user.
class Unprivileged {
  public:
    Unprivileged() : wasRoot_(geteuid() == 0) {
        if (wasRoot_ && seteuid(65534) != 0)
            throw std::runtime_error("cannot give up root's rights");
    }
    ~Unprivileged() {
        if (wasRoot_ && seteuid(0) != 0)
            std::terminate();
    }
    Unprivileged(Unprivileged const&) = delete;
    Unprivileged& operator=(Unprivileged const&) = delete;

  private:
    bool wasRoot_;
};

} // namespace support
