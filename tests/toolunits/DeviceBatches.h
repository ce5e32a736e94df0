// Batches of devices asked from a test: the options of a call, and processes that ask a batch and
// can be watched and ended.
#pragma once

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>

#include "devices/DeviceBatch.h"

namespace toolunits {

// The options as a call gives them.
class BatchCall {
  public:
    explicit BatchCall(std::vector<std::string> words) {
        options_.addTo(app_, "what");
        std::reverse(words.begin(), words.end());
        app_.parse(words);
    }
    KeldaTool::BatchOptions const& options() const { return options_; }

  private:
    CLI::App app_;
    KeldaTool::BatchOptions options_;
};

inline std::vector<std::string> deviceWords(std::vector<std::string> const& devices,
                                            unsigned jobs) {
    std::vector<std::string> words{"--jobs", std::to_string(jobs)};
    for (auto const& device : devices)
        words.insert(words.end(), {"--device", device});
    return words;
}

// Both ends of a pipe.
class Pipe {
  public:
    Pipe() {
        if (pipe2(ends_, O_CLOEXEC) != 0)
            throw std::runtime_error("pipe2 failed");
    }
    ~Pipe() {
        closeReadEnd();
        closeWriteEnd();
    }
    Pipe(Pipe const&) = delete;
    Pipe& operator=(Pipe const&) = delete;

    int readEnd() const { return ends_[0]; }
    int writeEnd() const { return ends_[1]; }
    void closeReadEnd() { closeEnd(ends_[0]); }
    void closeWriteEnd() { closeEnd(ends_[1]); }

    // Waits until there is a byte and returns it as text; "" at the end of all that write, and
    // "nothing" when neither comes within a time that is long for a machine at work.
    std::string next() const {
        pollfd wanted{ends_[0], POLLIN, 0};
        constexpr int patience = 60000;
        if (poll(&wanted, 1, patience) <= 0)
            return "nothing";
        char byte = 0;
        return read(ends_[0], &byte, 1) == 1 ? std::string(1, byte) : "";
    }
    std::string next(std::size_t count) const {
        std::string text;
        while (text.size() < count) {
            auto const byte = next();
            text += byte;
            if (byte.size() != 1)
                break;
        }
        return text;
    }
    // All that comes until the end.
    std::string rest() const {
        std::string text;
        for (;;) {
            auto const byte = next();
            text += byte;
            if (byte.size() != 1)
                return text;
        }
    }

    void put(char byte) const {
        if (write(ends_[1], &byte, 1) != 1)
            throw std::runtime_error("write failed");
    }

  private:
    static void closeEnd(int& end) {
        if (end != -1)
            close(end);
        end = -1;
    }

    int ends_[2] = {-1, -1};
};

// Devices that tell by a byte that they work, and then do so until they are ended. The pipe ends
// when none of them is left.
class EndlessDevices {
  public:
    KeldaTool::Report operator()(std::string const& device) const {
        if (device == "done")
            return {"done\n", "", KeldaTool::ExitStatus::success};
        lifeline_->put('.');
        for (;;)
            pause();
    }
    // To be asked where none was started any more: "" once all of them have ended.
    std::string untilTheEnd() const {
        lifeline_->closeWriteEnd();
        return lifeline_->rest();
    }
    std::string started(std::size_t count) const { return lifeline_->next(count); }

  private:
    std::shared_ptr<Pipe> lifeline_ = std::make_shared<Pipe>();
};

// A process that does something in the place of the test; its exit status is what that returns.
class OtherProcess {
  public:
    explicit OtherProcess(std::function<int()> const& work) : process_(fork()) {
        if (process_ < 0)
            throw std::runtime_error("fork failed");
        if (process_ == 0)
            _exit(statusOf(work));
    }
    ~OtherProcess() {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            wait();
        }
    }
    OtherProcess(OtherProcess const&) = delete;
    OtherProcess& operator=(OtherProcess const&) = delete;

    void signal(int number) const { kill(process_, number); }
    // The exit status, or 128 and the number of a signal.
    int wait() {
        int status = 0;
        while (waitpid(process_, &status, 0) < 0 && errno == EINTR)
            ;
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

  private:
    // What a shell starts in the background ignores some signals, and so would this process.
    static int statusOf(std::function<int()> const& work) noexcept {
        for (int const number : {SIGINT, SIGQUIT, SIGHUP, SIGTERM})
            std::signal(number, SIG_DFL);
        return work();
    }

    pid_t process_;
};

} // namespace toolunits
