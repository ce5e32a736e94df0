#include "Progress.h"

#include <chrono>
#include <memory>

#include <fmt/format.h>
#include <unistd.h>

#include "Output.h"

namespace KeldaTool {
namespace {

using Clock = std::chrono::steady_clock;

class ProgressLine {
  public:
    explicit ProgressLine(std::string what) : what_(std::move(what)) {}
    ProgressLine(ProgressLine const&) = delete;
    ProgressLine& operator=(ProgressLine const&) = delete;
    ~ProgressLine() {
        if (isShown_)
            writeMessage("\r\x1b[K");
    }

    void done(std::size_t count) {
        auto const now = Clock::now();
        if (now < next_)
            return;
        constexpr auto interval = std::chrono::milliseconds(200);
        next_ = now + interval;
        isShown_ = true;
        writeMessage(fmt::format("\r{} {}\x1b[K", count, what_));
    }

  private:
    std::string what_;
    Clock::time_point next_ = Clock::now() + std::chrono::seconds(1);
    bool isShown_ = false;
};

} // namespace

std::function<void(std::size_t)> progressOnTerminal(std::string what) {
    if (isatty(STDERR_FILENO) != 1)
        return {};
    // Shared, because functions are copied.
    auto const line = std::make_shared<ProgressLine>(std::move(what));
    return [line](std::size_t count) { line->done(count); };
}

} // namespace KeldaTool
