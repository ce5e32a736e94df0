// A process that answers for one device, and the pipe through which its answer comes.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <variant>

#include <sys/types.h>

#include "devices/DeviceBatch.h"

namespace KeldaTool {

/// Why a device has no answer.
struct DeviceFailure {
    std::string what;
    ExitStatus status = ExitStatus::failure;
};

using DeviceOutcome = std::variant<CountedReport, DeviceFailure>;

class DeviceProcess {
  public:
    using Ask = std::function<CountedReport(std::string const& device)>;

    /// Null if there can be no further process or pipe; errno says why. The process gets SIGKILL
    /// when the program ends, whatever ends it.
    static std::unique_ptr<DeviceProcess> start(Ask const& ask, std::string const& device);
    /// Ends the process, if outcome() was not asked for.
    ~DeviceProcess();
    DeviceProcess(DeviceProcess const&) = delete;
    DeviceProcess& operator=(DeviceProcess const&) = delete;

    /// The end of the pipe, to wait for something to read.
    int descriptor() const { return pipe_; }
    /// Leaves the pipe to others: for another process, which has inherited it.
    void closePipe() noexcept;
    /// Takes what can be read now. False when nothing will come any more.
    bool readOn();
    /// The answer, or why there is none: an exception (a std::runtime_error is a wrong call), a
    /// signal, an early end. Waits for the process to end. To be called once, after readOn() was
    /// false.
    DeviceOutcome outcome();

  private:
    DeviceProcess(int pipe, pid_t process) : pipe_(pipe), process_(process) {}

    int waitForEnd() noexcept;

    int pipe_;
    pid_t process_;
    std::string received_;
};

} // namespace KeldaTool
