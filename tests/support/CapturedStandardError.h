// Takes what the process writes to standard error while the object lives.
#pragma once

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include <unistd.h>

namespace support {

class CapturedStandardError {
  public:
    CapturedStandardError() : file_(std::tmpfile(), &std::fclose), former_(dup(STDERR_FILENO)) {
        if (file_ == nullptr || former_ < 0 || dup2(fileno(file_.get()), STDERR_FILENO) < 0)
            throw std::runtime_error("cannot capture standard error");
    }
    ~CapturedStandardError() {
        std::fflush(stderr);
        dup2(former_, STDERR_FILENO);
        close(former_);
    }
    CapturedStandardError(CapturedStandardError const&) = delete;
    CapturedStandardError& operator=(CapturedStandardError const&) = delete;

    // All that was written so far.
    std::string text() const {
        std::fflush(stderr);
        std::string written(static_cast<std::size_t>(lseek(STDERR_FILENO, 0, SEEK_END)), '\0');
        auto const count = pread(STDERR_FILENO, written.data(), written.size(), 0);
        written.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return written;
    }

  private:
    std::unique_ptr<FILE, int (*)(FILE*)> file_;
    int former_;
};

} // namespace support
