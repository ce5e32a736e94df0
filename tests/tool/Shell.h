// Shells that run scripts, and shells that somebody types into.
#pragma once

#include <array>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/KeldaProgram.h"

namespace support {

inline bool shellIsPresent(std::string const& shell) {
    return std::system(("command -v " + shell + " >/dev/null 2>&1").c_str()) == 0;
}

// Ends a test where the shell is not at hand.
#define SKIP_WITHOUT(shell)                                                                        \
    if (!support::shellIsPresent(shell))                                                           \
    GTEST_SKIP() << "no " << (shell) << " here"

inline std::string shellQuoted(std::string const& text) {
    std::string word = "'";
    for (char const character : text)
        word += character == '\'' ? "'\\''" : std::string(1, character);
    return word + "'";
}

// The folder of the built program, by which shells find it.
inline std::string programFolder() {
    return std::filesystem::path(testedProgram()).parent_path().string();
}

inline std::string completionScript(std::string const& shell) {
    return KeldaProgram().run({"completion", shell}).out;
}

// Runs a script by a call such as "bash --norc"; what it says on both streams is in `out`.
inline Outcome runScript(std::string const& call, std::string const& script) {
    TemporaryDirectory const folder;
    auto const file = folder.write("script", script);
    auto const command =
        "cd " + shellQuoted(folder.string()) +
        " && env -i PATH=" + shellQuoted(programFolder() + ":/usr/local/bin:/usr/bin:/bin") +
        " HOME=" + shellQuoted(folder.string()) + " TERM=xterm " + call + " " + shellQuoted(file) +
        " 2>&1";
    auto* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        throw std::runtime_error("popen failed");
    Outcome outcome;
    std::array<char, 4096> buffer;
    while (auto const count = fread(buffer.data(), 1, buffer.size(), pipe))
        outcome.out.append(buffer.data(), count);
    int const status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

// A shell on a terminal of its own. Its start-up file must make it prompt with "READY> " and, on
// Ctrl-T, print "LINE<", the line as it then is, and ">LINE".
class InteractiveShell {
  public:
    InteractiveShell(Words const& call, std::filesystem::path const& home) {
        winsize size{100, 200, 0, 0};
        child_ = forkpty(&terminal_, nullptr, nullptr, &size);
        if (child_ < 0)
            throw std::runtime_error("forkpty failed");
        if (child_ == 0)
            become(call, home);
        waitFor("READY> ");
    }
    ~InteractiveShell() {
        kill(child_, SIGKILL);
        close(terminal_);
        int status = 0;
        waitpid(child_, &status, 0);
    }
    InteractiveShell(InteractiveShell const&) = delete;
    InteractiveShell& operator=(InteractiveShell const&) = delete;

    // The line after these keys were typed into an empty one.
    std::string lineAfter(std::string const& keys) {
        shown_.clear();
        send(keys);
        return finishLine();
    }
    // What the terminal shows after these keys; each of the texts must come to be shown.
    std::string screenAfter(std::string const& keys, Words const& texts) {
        shown_.clear();
        send(keys);
        for (auto const& text : texts)
            waitFor(text);
        finishLine();
        return shown_;
    }

  private:
    [[noreturn]] static void become(Words call, std::filesystem::path const& home) {
        clearenv();
        setenv("PATH", (programFolder() + ":/usr/local/bin:/usr/bin:/bin").c_str(), 1);
        setenv("HOME", home.c_str(), 1);
        setenv("ZDOTDIR", home.c_str(), 1);
        setenv("TERM", "xterm", 1);
        setenv("LC_ALL", "C.UTF-8", 1);
        if (chdir(home.c_str()) != 0)
            _exit(126);
        std::vector<char*> arguments;
        for (auto& word : call)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        execvp(arguments.front(), arguments.data());
        _exit(127);
    }

    std::string finishLine() {
        send("\x14"); // Ctrl-T
        auto const begin = waitFor("LINE<") + 5;
        auto const end = waitFor(">LINE", begin);
        auto line = shown_.substr(begin, end - begin);
        send("\x15"); // Ctrl-U: an empty line again
        return line;
    }

    void send(std::string const& keys) const {
        if (write(terminal_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
            throw std::runtime_error("cannot type");
    }

    // Reads until the text is shown; returns where.
    std::size_t waitFor(std::string const& text, std::size_t from = 0) {
        using Clock = std::chrono::steady_clock;
        auto const deadline = Clock::now() + std::chrono::seconds(60);
        for (;;) {
            if (auto const at = shown_.find(text, from); at != std::string::npos)
                return at;
            if (Clock::now() > deadline || !readMore())
                throw std::runtime_error("the shell never showed '" + text + "' but:\n" + shown_);
        }
    }
    // False when the shell has gone.
    bool readMore() {
        pollfd wanted{terminal_, POLLIN, 0};
        if (poll(&wanted, 1, 1000) <= 0)
            return true;
        std::array<char, 4096> buffer;
        auto const count = read(terminal_, buffer.data(), buffer.size());
        if (count > 0)
            shown_.append(buffer.data(), static_cast<std::size_t>(count));
        return count > 0;
    }

    int terminal_ = -1;
    pid_t child_ = -1;
    std::string shown_;
};

} // namespace support
