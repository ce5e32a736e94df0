// What is shown on a terminal while many devices are asked.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include <pty.h>
#include <termios.h>

#include "DeviceBatches.h"

namespace {

using namespace std::chrono_literals;
using KeldaTool::askEach;
using KeldaTool::ExitStatus;
using KeldaTool::Report;
using toolunits::BatchCall;
using toolunits::deviceWords;
using toolunits::OtherProcess;

using Ask = std::function<Report(std::string const&)>;

// What is shown on a terminal at standard error while devices take their time.
std::string shownOnTerminal(Ask const& ask) {
    int terminal = -1;
    int program = -1;
    termios raw{};
    cfmakeraw(&raw);
    if (openpty(&terminal, &program, nullptr, &raw, nullptr) != 0)
        throw std::runtime_error("openpty failed");
    OtherProcess batch([&] {
        dup2(program, STDERR_FILENO);
        dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
        return static_cast<int>(
            askEach(BatchCall(deviceWords({"a", "b"}, 1)).options(), ask).status);
    });
    close(program);
    std::string text;
    char buffer[4096];
    for (ssize_t count; (count = read(terminal, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(count));
    close(terminal);
    EXPECT_EQ(batch.wait(), 0);
    return text;
}

TEST(DeviceProgress, IsShownOnATerminalOnceASecondHasGoneBy) {
    auto const slow = [](std::string const& device) {
        std::this_thread::sleep_for(1500ms);
        return Report{"result\n", device + " is slow\n", ExitStatus::success};
    };
    auto const text = shownOnTerminal(slow);
    EXPECT_TRUE(text.starts_with("\r0 of 2 devices\x1b[K")) << text;
    // The line makes room for messages.
    EXPECT_THAT(text, testing::HasSubstr("\r\x1b[Ka is slow\n\r1 of 2 devices\x1b[K"));
    EXPECT_TRUE(text.ends_with("\r\x1b[Kb is slow\n")) << text;
    EXPECT_EQ(shownOnTerminal([](std::string const&) { return Report(); }), "");
}

} // namespace
