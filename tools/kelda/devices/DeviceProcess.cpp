// An answer goes through the pipe as a head of numbers, then the counts, the messages and, at the
// end, the results: what may be large is not copied on its way.
#include "devices/DeviceProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace KeldaTool {
namespace {

struct Head {
    std::uint64_t hasAnswer = 0;
    std::uint64_t status = 0;
    std::uint64_t counts = 0;
    std::uint64_t messages = 0; // bytes
    std::uint64_t results = 0;
};

template <class Value>
std::string_view bytesOf(Value const* values, std::size_t count) {
    return {static_cast<char const*>(static_cast<void const*>(values)), count * sizeof(Value)};
}

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        auto const written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool send(int descriptor, CountedReport const& answer) {
    auto const& [report, counts] = answer;
    Head const head{1, static_cast<std::uint64_t>(report.status), counts.size(),
                    report.messages.size(), report.results.size()};
    return writeAll(descriptor, bytesOf(&head, 1)) &&
           writeAll(descriptor, bytesOf(counts.data(), counts.size())) &&
           writeAll(descriptor, report.messages) && writeAll(descriptor, report.results);
}

bool send(int descriptor, DeviceFailure const& failure) {
    Head const head{0, static_cast<std::uint64_t>(failure.status), 0, failure.what.size(), 0};
    return writeAll(descriptor, bytesOf(&head, 1)) && writeAll(descriptor, failure.what);
}

// What send() has sent; nothing if a part is missing.
std::optional<DeviceOutcome> outcomeIn(std::string&& received) {
    Head head;
    if (received.size() < sizeof head)
        return std::nullopt;
    std::memcpy(&head, received.data(), sizeof head);
    std::vector<std::uint64_t> counts(head.counts);
    auto const countBytes = counts.size() * sizeof counts.front();
    if (received.size() != sizeof head + countBytes + head.messages + head.results)
        return std::nullopt;
    if (!counts.empty())
        std::memcpy(counts.data(), received.data() + sizeof head, countBytes);
    auto messages = received.substr(sizeof head + countBytes, head.messages);
    received.erase(0, sizeof head + countBytes + head.messages);
    auto const status = static_cast<ExitStatus>(head.status);
    if (head.hasAnswer == 0)
        return DeviceFailure{std::move(messages), status};
    return CountedReport{{std::move(received), std::move(messages), status}, std::move(counts)};
}

DeviceOutcome outcomeOf(DeviceProcess::Ask const& ask, std::string const& device) {
    try {
        return ask(device);
    } catch (std::runtime_error const& error) {
        return DeviceFailure{error.what(), ExitStatus::wrongCall};
    } catch (std::exception const& error) {
        return DeviceFailure{error.what(), ExitStatus::failure}; // no memory, for instance
    }
}

// Nothing of the program's own is to be done once more: no destructor, nothing at exit.
[[noreturn]] void answerAndEnd(DeviceProcess::Ask const& ask, std::string const& device,
                               int descriptor) noexcept {
    auto const outcome = outcomeOf(ask, device);
    auto const isSent = [descriptor](auto const& content) { return send(descriptor, content); };
    _exit(std::visit(isSent, outcome) ? 0 : 1);
}

// Makes the process end with the program, which may have ended already.
void endWith(pid_t program) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != program)
        _exit(1);
}

std::string textOfEnd(int status) {
    if (!WIFSIGNALED(status))
        return "ended without an answer";
    return fmt::format("ended by signal {} ({})", WTERMSIG(status), strsignal(WTERMSIG(status)));
}

} // namespace

std::unique_ptr<DeviceProcess> DeviceProcess::start(Ask const& ask, std::string const& device) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return nullptr;
    auto const program = getpid();
    auto const process = fork();
    if (process == 0) {
        endWith(program);
        close(ends[0]);
        answerAndEnd(ask, device, ends[1]);
    }
    int const error = errno;
    close(ends[1]);
    if (process > 0)
        return std::unique_ptr<DeviceProcess>(new DeviceProcess(ends[0], process));
    close(ends[0]);
    errno = error;
    return nullptr;
}

DeviceProcess::~DeviceProcess() {
    closePipe();
    if (process_ <= 0)
        return;
    kill(process_, SIGKILL);
    waitForEnd();
}

bool DeviceProcess::readOn() {
    std::array<char, 65536> buffer;
    auto const count = read(pipe_, buffer.data(), buffer.size());
    if (count > 0)
        received_.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0 || (count < 0 && errno == EINTR);
}

DeviceOutcome DeviceProcess::outcome() {
    closePipe();
    int const status = waitForEnd();
    auto outcome = outcomeIn(std::move(received_));
    return outcome ? std::move(*outcome) : DeviceFailure{textOfEnd(status), ExitStatus::failure};
}

int DeviceProcess::waitForEnd() noexcept {
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR)
        ;
    process_ = -1;
    return status;
}

void DeviceProcess::closePipe() noexcept {
    if (pipe_ != -1)
        close(pipe_);
    pipe_ = -1;
}

} // namespace KeldaTool
