// Runs the program kelda as its users do: as a process of its own, with its own environment.
#pragma once

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "ExampleDevice.h"
#include "FileContent.h"
#include "TemporaryDirectory.h"

namespace support {

struct Outcome {
    int status = 0; // exit status, or 128 and the number of the signal
    std::string out;
    std::string err;

    nlohmann::ordered_json json() const { return nlohmann::ordered_json::parse(out); }
};

// The words of a call, without the program's name.
struct Words : std::vector<std::string> {
    using vector::vector;

    friend Words operator+(Words words, Words const& more) {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
};

// The built program, or the one that the environment names: tests need not be compiled once more to
// run on another build of it.
inline std::string testedProgram() {
    char const* const named = std::getenv("KELDA_TESTED_PROGRAM");
    return named == nullptr ? KELDA_PROGRAM : named;
}

class KeldaProgram {
  public:
    // Variables that would change what the program does are unset, whatever the test's own
    // environment holds.
    KeldaProgram() {
        for (char const* name :
             {"NO_COLOR", "KELDA_EXTRA_PREINIT_PATH", "KELDA_EXTRA_PROFILE_PATH", "KELDA_TRACE",
              "MFI_NO_DEFAULT_PREINIT", "PROFILEMULTIWRITERCHECK", "Q9_CHROOT", "Q9PKG"})
            unset_.push_back(name);
        set_["TERM"] = "xterm";
    }

    KeldaProgram& with(std::string const& variable, std::string const& value) {
        set_[variable] = value;
        return *this;
    }
    KeldaProgram& inFolder(std::filesystem::path const& folder) {
        folder_ = folder.string();
        return *this;
    }
    // The descriptors to close before the program starts.
    KeldaProgram& closing(std::vector<int> descriptors) {
        closed_ = std::move(descriptors);
        return *this;
    }
    // What stands on standard input; otherwise the test's own is there.
    KeldaProgram& readingText(std::string text) {
        input_ = std::move(text);
        readsInput_ = true;
        return *this;
    }
    // A file to write standard output to; it is then not in the outcome.
    KeldaProgram& writingTo(std::string const& file) {
        outputFile_ = file;
        return *this;
    }

    // Standard output and standard error go to files of their own.
    Outcome run(Words const& words) const {
        TemporaryDirectory const directory;
        auto const out = outputFile_.empty() ? (directory / "out").string() : outputFile_;
        auto const err = (directory / "err").string();
        int const status = waitFor(start(words, [&out, &err] {
            redirect(STDOUT_FILENO, out);
            redirect(STDERR_FILENO, err);
        }));
        return {status, outputFile_.empty() ? contentOf(out) : "", contentOf(err)};
    }

    // Standard output is a pipe whose reader is gone.
    Outcome runWithoutReader(Words const& words) const {
        TemporaryDirectory const directory;
        auto const err = (directory / "err").string();
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw std::runtime_error("pipe2 failed");
        close(ends[0]);
        auto const child = start(words, [&ends, &err] {
            dup2(ends[1], STDOUT_FILENO);
            redirect(STDERR_FILENO, err);
        });
        close(ends[1]);
        return {waitFor(child), "", contentOf(err)};
    }

    // Standard output is a terminal that passes on every byte as it is.
    Outcome runOnTerminal(Words const& words) const {
        TemporaryDirectory const directory;
        auto const err = (directory / "err").string();
        termios raw{};
        cfmakeraw(&raw);
        winsize narrow{24, 40, 0, 0};
        int terminal = -1;
        pid_t const child = forkpty(&terminal, nullptr, &raw, &narrow);
        if (child < 0)
            throw std::runtime_error("forkpty failed");
        if (child == 0) {
            redirect(STDERR_FILENO, err);
            becomeProgram(words);
        }
        auto const out = readTerminal(terminal);
        return {waitFor(child), out, contentOf(err)};
    }

  private:
    static void redirect(int descriptor, std::string const& file) {
        int const opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (opened < 0 || dup2(opened, descriptor) < 0)
            _exit(126);
    }

    template <class Prepare>
    pid_t start(Words const& words, Prepare const& prepare) const {
        pid_t const child = fork();
        if (child < 0)
            throw std::runtime_error("fork failed");
        if (child == 0) {
            prepare();
            becomeProgram(words);
        }
        return child;
    }

    [[noreturn]] void becomeProgram(Words words) const {
        auto const program = testedProgram();
        for (auto const& name : unset_)
            unsetenv(name.c_str());
        for (auto const& [name, value] : set_)
            setenv(name.c_str(), value.c_str(), 1);
        if (!folder_.empty() && chdir(folder_.c_str()) != 0)
            _exit(126);
        if (readsInput_)
            provideInput();
        for (int const descriptor : closed_)
            close(descriptor);
        words.insert(words.begin(), "kelda");
        std::vector<char*> arguments;
        for (auto& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        execv(program.c_str(), arguments.data());
        _exit(127);
    }

    // A file without a name takes texts of any size.
    void provideInput() const {
        int const file = open("/tmp", O_RDWR | O_TMPFILE | O_CLOEXEC, 0600);
        auto const length = static_cast<ssize_t>(input_.size());
        if (file < 0 || write(file, input_.data(), input_.size()) != length ||
            lseek(file, 0, SEEK_SET) != 0 || dup2(file, STDIN_FILENO) < 0)
            _exit(126);
    }

    static std::string readTerminal(int terminal) {
        std::string text;
        char buffer[4096];
        for (;;) {
            auto const count = read(terminal, buffer, sizeof buffer);
            if (count > 0)
                text.append(buffer, static_cast<std::size_t>(count));
            else if (count == 0 || errno != EINTR)
                break; // EIO: the program has closed its end
        }
        close(terminal);
        return text;
    }

    static int waitFor(pid_t child) {
        int status = 0;
        while (waitpid(child, &status, 0) < 0)
            if (errno != EINTR)
                throw std::runtime_error("waitpid failed");
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    std::vector<std::string> unset_;
    std::map<std::string, std::string> set_;
    std::vector<int> closed_;
    std::string folder_;
    std::string outputFile_;
    std::string input_;
    bool readsInput_ = false;
};

// The options that name a device's folders.
inline Words foldersOf(std::filesystem::path const& device) {
    return {"--preinit", (device / "preinit").string(), "--profiles",
            (device / "profiles").string()};
}

// What the program is expected to print, kept beside the tests.
inline std::string expected(std::string const& name) {
    return contentOf(std::filesystem::path(KELDA_SOURCE_DIR) / "tests/tool/expected" / name);
}

} // namespace support
