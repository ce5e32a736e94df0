// A lock for process-wide tables that costs nothing while the process has one thread.
#pragma once

#include <mutex>

#include <sys/single_threaded.h>

namespace KeldaFramework {

class SharedLock {
  public:
    explicit SharedLock(std::mutex& mutex) {
        if (!__libc_single_threaded)
            lock_ = std::unique_lock(mutex);
    }

  private:
    std::unique_lock<std::mutex> lock_;
};

} // namespace KeldaFramework
