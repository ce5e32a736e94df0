// Runs work in several threads at once.
#pragma once

#include <latch>
#include <thread>
#include <vector>

namespace support {

// Calls work(0) to work(count - 1), each in a thread of its own that waits until all are there;
// returns when the last is done.
template <class Work>
void inThreads(int count, Work const& work) {
    std::latch start(count);
    std::vector<std::jthread> threads;
    for (int index = 0; index < count; ++index)
        threads.emplace_back([&start, &work, index] {
            start.arrive_and_wait();
            work(index);
        });
}

} // namespace support
