#include "devices/DeviceBatch.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <deque>
#include <memory>
#include <utility>

#include <fmt/format.h>
#include <poll.h>

#include "Output.h"
#include "Progress.h"
#include "Text.h"
#include "devices/DeviceProcess.h"

namespace KeldaTool {
namespace {

// What is shown where results do not pass by anyway.
class DevicesDone {
  public:
    explicit DevicesDone(std::size_t devices)
        : what_(fmt::format("of {}", counted(devices, "device"))), show_(progress()) {}

    bool isShown() const { return show_ != nullptr; }
    void show(std::size_t done) const {
        if (show_)
            show_(done);
    }
    // Makes room for a message.
    void clear() {
        show_ = {};
        show_ = progress();
    }

  private:
    std::function<void(std::size_t)> progress() const {
        return outputIsTerminal() ? nullptr : progressOnTerminal(what_);
    }

    std::string what_;
    std::function<void(std::size_t)> show_;
};

// A device on its way: a process that works, or its outcome that waits for its turn.
struct Started {
    std::unique_ptr<DeviceProcess> process; // null once there is the outcome
    DeviceOutcome outcome;
};

std::string failureMessage(std::string const& device, std::string const& what) {
    bool const isNamed =
        what.starts_with(fmt::format("{} ", device)) || what.ends_with(fmt::format(" {}", device));
    return isNamed ? fmt::format("kelda: {}\n", printable(what))
                   : fmt::format("kelda: {}: {}\n", printable(device), printable(what));
}

// Whoever started the program may have had it ignore this signal: then the system forgets how a
// process ended.
void letProcessesTellTheirEnds() {
    std::signal(SIGCHLD, SIG_DFL);
}

class Batch {
  public:
    Batch(std::vector<std::string> devices, unsigned jobs, DeviceProcess::Ask const& ask,
          BatchText const& text)
        : devices_(std::move(devices)), jobs_(jobs), ask_(ask), text_(text),
          progress_(devices_.size()) {
        totals_.devices = devices_.size();
    }

    // Returns the worst status.
    ExitStatus run() {
        letProcessesTellTheirEnds();
        writeResultsNow(text_.begin);
        while (written_ < devices_.size()) {
            startMore();
            waitForNews();
            writeFinished();
            progress_.show(written_);
        }
        return status_;
    }

    BatchTotals const& totals() const { return totals_; }

  private:
    std::size_t nextToStart() const { return written_ + started_.size(); }
    std::size_t working() const {
        return static_cast<std::size_t>(
            std::count_if(started_.begin(), started_.end(),
                          [](Started const& started) { return started.process != nullptr; }));
    }

    void startMore() {
        while (working() < jobs_ && started_.size() < batchWindow(jobs_) &&
               nextToStart() < devices_.size() && start(devices_[nextToStart()]))
            ;
    }

    // False when a process has to end before there can be another one.
    bool start(std::string const& device) {
        auto process = DeviceProcess::start(
            [this](std::string const& name) { return askAlone(name); }, device);
        if (process == nullptr && working() > 0)
            return false;
        DeviceFailure failure;
        if (process == nullptr)
            failure.what = fmt::format("cannot start a process: {}", std::strerror(errno));
        started_.push_back({std::move(process), std::move(failure)});
        return true;
    }

    // In the process of the device. The pipes of the others take the places of files that it may
    // open: what it can read must not depend on how many there are.
    CountedReport askAlone(std::string const& device) {
        for (auto& started : started_)
            if (started.process != nullptr)
                started.process->closePipe();
        return ask_(device);
    }

    void waitForNews() {
        std::vector<pollfd> pipes;
        std::vector<Started*> owners;
        for (auto& started : started_)
            if (started.process != nullptr) {
                pipes.push_back({started.process->descriptor(), POLLIN, 0});
                owners.push_back(&started);
            }
        constexpr int whileShown = 200; // milliseconds
        if (pipes.empty() ||
            poll(pipes.data(), pipes.size(), progress_.isShown() ? whileShown : -1) <= 0)
            return; // nothing yet, or a signal
        for (std::size_t i = 0; i < pipes.size(); ++i)
            if (pipes[i].revents != 0 && !owners[i]->process->readOn())
                finish(*owners[i]);
    }

    static void finish(Started& started) {
        started.outcome = started.process->outcome();
        started.process = nullptr;
    }

    void writeFinished() {
        for (; !started_.empty() && started_.front().process == nullptr; started_.pop_front()) {
            auto const& device = devices_[written_++];
            write(started_.front().outcome, device);
        }
    }

    void write(DeviceOutcome const& outcome, std::string const& device) {
        if (auto const* const answer = std::get_if<CountedReport>(&outcome)) {
            add(answer->counts);
            write(answer->report.results, answer->report.messages, answer->report.status);
            return;
        }
        auto const& failure = std::get<DeviceFailure>(outcome);
        ++totals_.failed;
        write(text_.failure ? text_.failure(device, failure.what) : std::string(),
              failureMessage(device, failure.what), failure.status);
    }

    void write(std::string_view results, std::string_view messages, ExitStatus status) {
        if (!results.empty()) {
            if (std::exchange(hasResults_, true))
                writeResultsNow(text_.between);
            writeResultsNow(results);
        }
        if (!messages.empty()) {
            progress_.clear();
            writeMessage(messages);
        }
        status_ = std::max(status_, status);
    }

    void add(std::vector<std::uint64_t> const& counts) {
        totals_.counts.resize(std::max(totals_.counts.size(), counts.size()));
        for (std::size_t i = 0; i < counts.size(); ++i)
            totals_.counts[i] += counts[i];
    }

    std::vector<std::string> devices_;
    unsigned jobs_;
    DeviceProcess::Ask const& ask_;
    BatchText const& text_;
    DevicesDone progress_;
    std::deque<Started> started_; // the first one is that of devices_[written_]
    std::size_t written_ = 0;
    bool hasResults_ = false;
    ExitStatus status_ = ExitStatus::success;
    BatchTotals totals_;
};

} // namespace

Report askEachCounted(BatchOptions const& options, DeviceProcess::Ask const& ask,
                      BatchText const& text, std::function<Report(BatchTotals const&)> const& end) {
    Batch batch(options.devices(), options.jobs(), ask, text);
    auto const status = batch.run();
    auto report = end(batch.totals());
    report.results += text.end;
    report.status = std::max(report.status, status);
    return report;
}

Report askEach(BatchOptions const& options,
               std::function<Report(std::string const& device)> const& ask, BatchText const& text) {
    return askEachCounted(
        options,
        [&ask](std::string const& device) {
            return CountedReport{ask(device), {}};
        },
        text, [](BatchTotals const&) { return Report(); });
}

} // namespace KeldaTool
