// Runs a piece of a test in a child process that sees a directory of the test's as the root
// directory, so that files at fixed absolute paths can be made.
#pragma once

#include <array>
#include <exception>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

namespace detail {

[[noreturn]] inline void runChild(std::filesystem::path const& root, int out,
                                  std::function<std::string()> const& work) {
    // Whoever is not root may change the root directory of a user namespace of its own.
    if (geteuid() != 0 && unshare(CLONE_NEWUSER) != 0)
        _exit(2);
    if (chroot(root.c_str()) != 0 || chdir("/") != 0)
        _exit(2);
    try {
        auto const text = work();
        _exit(write(out, text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
    } catch (std::exception const&) {
        _exit(1);
    }
}

} // namespace detail

// The text that `work` returns below `root`; throws when the child cannot run it.
inline std::string inChangedRoot(std::filesystem::path const& root,
                                 std::function<std::string()> const& work) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        throw std::runtime_error("pipe failed");
    pid_t const child = fork();
    if (child == 0)
        detail::runChild(root, ends[1], work);
    close(ends[1]);
    std::string text;
    std::array<char, 4096> chunk{};
    for (ssize_t count; (count = read(ends[0], chunk.data(), chunk.size())) > 0;)
        text.append(chunk.data(), static_cast<std::size_t>(count));
    close(ends[0]);
    int status = -1;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 2)
        throw std::runtime_error("this process may not change its root directory");
    if (status != 0)
        throw std::runtime_error("the child process failed");
    return text;
}

} // namespace support
