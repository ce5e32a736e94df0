// The first question for the cell, asked by many threads at once.
#include <gtest/gtest.h>

#include <array>
#include <latch>
#include <thread>
#include <vector>

#include <KeldaBase/DynCell.h>

namespace {

TEST(CellPluginThreads, AllGetTheSameAnswer) {
    std::array<unsigned, 16> cells{};
    std::latch start(cells.size());
    std::vector<std::jthread> threads;
    for (auto& cell : cells)
        threads.emplace_back([&start, &cell] {
            start.arrive_and_wait();
            cell = DynCell::cellId();
        });
    threads.clear();
    for (unsigned const cell : cells)
        EXPECT_EQ(cell, 2U);
}

} // namespace
