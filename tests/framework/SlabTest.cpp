// Named slabs: their figures, their pages and the memory they hand out.
#include <MemSlab/Slab.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Threads.h"

namespace {

using MemSlab::Slab;

constexpr std::size_t spanBytes = std::size_t{16} * 8 * 1024;

// A piece of a slab, filled with a pattern of its own.
class Piece {
  public:
    Piece(Slab& slab, std::size_t size, unsigned char pattern)
        : slab_(&slab), memory_(slab.allocate(size)), size_(size), pattern_(pattern) {
        std::memset(memory_, pattern_, size_);
    }
    Piece(Piece&& other) noexcept
        : slab_(other.slab_), memory_(std::exchange(other.memory_, nullptr)), size_(other.size_),
          pattern_(other.pattern_) {}
    Piece& operator=(Piece&& other) noexcept {
        std::swap(slab_, other.slab_);
        std::swap(memory_, other.memory_);
        std::swap(size_, other.size_);
        std::swap(pattern_, other.pattern_);
        return *this;
    }
    ~Piece() { slab_->deallocate(memory_, size_); }

    void* memory() const { return memory_; }
    std::size_t size() const { return size_; }
    bool unharmed() const {
        auto const* const bytes = static_cast<unsigned char const*>(memory_);
        return std::all_of(bytes, bytes + size_, [this](auto byte) { return byte == pattern_; });
    }

  private:
    Slab* slab_;
    void* memory_;
    std::size_t size_;
    unsigned char pattern_;
};

// One piece of every size from 0 to 2000.
std::vector<Piece> piecesOfEverySize(Slab& slab) {
    std::vector<Piece> pieces;
    for (std::size_t size = 0; size <= 2000; ++size)
        pieces.emplace_back(slab, size, static_cast<unsigned char>(size * 7));
    return pieces;
}

// --- slabs and their figures ---

TEST(SlabTest, ANameStandsForOneSlab) {
    auto& slab = MemSlab::slab("SlabTest one");
    EXPECT_EQ(&MemSlab::slab("SlabTest one"), &slab);
    EXPECT_NE(&MemSlab::slab("SlabTest two"), &slab);
    EXPECT_EQ(slab.name(), "SlabTest one");
}

TEST(SlabTest, AFreshSlabHoldsNothing) {
    Slab const slab("fresh");
    EXPECT_EQ(slab.bytesInUse(), 0U);
    EXPECT_EQ(slab.bytesHeld(), 0U);
}

TEST(SlabTest, BytesInUseAreThoseAskedForAndNotYetGivenBack) {
    Slab slab("figures");
    std::size_t expected = 0;
    std::vector<void*> memory;
    for (std::size_t size = 0; size <= 2000; ++size) {
        memory.push_back(slab.allocate(size));
        ASSERT_EQ(slab.bytesInUse(), expected += size) << size;
        ASSERT_GE(slab.bytesHeld(), slab.bytesInUse()) << size;
    }
    for (std::size_t size = 0; size <= 2000; ++size) {
        slab.deallocate(memory[size], size);
        ASSERT_EQ(slab.bytesInUse(), expected -= size) << size;
    }
    EXPECT_EQ(slab.bytesInUse(), 0U);
}

TEST(SlabTest, FiguresReturnToWhatTheyWere) {
    Slab slab("returning");
    piecesOfEverySize(slab);
    auto const held = slab.bytesHeld();
    for (int round = 0; round < 5; ++round) {
        piecesOfEverySize(slab);
        EXPECT_EQ(slab.bytesInUse(), 0U);
        EXPECT_EQ(slab.bytesHeld(), held);
    }
}

TEST(SlabTest, SlabsCountEachForItself) {
    Slab first("first");
    Slab second("second");
    Piece const piece(first, 100, 1);
    EXPECT_EQ(first.bytesInUse(), 100U);
    EXPECT_EQ(second.bytesInUse(), 0U);
    EXPECT_EQ(second.bytesHeld(), 0U);
}

TEST(SlabTest, LargePiecesComeAndGoOneByOne) {
    for (std::size_t const size : {513U, 1024U, 65536U, 1000000U}) {
        Slab slab("large");
        {
            Piece const piece(slab, size, 0xa5);
            EXPECT_EQ(slab.bytesInUse(), size);
            EXPECT_EQ(slab.bytesHeld(), size);
        }
        EXPECT_EQ(slab.bytesInUse(), 0U);
        EXPECT_EQ(slab.bytesHeld(), 0U);
    }
}

TEST(SlabTest, ANullPointerIsNothingToGiveBack) {
    Slab slab("null");
    slab.deallocate(nullptr, 16);
    slab.deallocate(nullptr, 5000);
    EXPECT_EQ(slab.bytesInUse(), 0U);
}

// --- pages ---

enum class Order { firstToLast, lastToFirst, mixed };

// Fills some spans with pieces of one size and gives all back in this order.
void fillAndEmpty(Slab& slab, std::size_t size, Order order) {
    std::vector<Piece> pieces;
    for (std::size_t bytes = 0; bytes < 4 * spanBytes; bytes += std::max(size, std::size_t{8}))
        pieces.emplace_back(slab, size, 1);
    if (order == Order::lastToFirst)
        std::reverse(pieces.begin(), pieces.end());
    else if (order == Order::mixed)
        std::shuffle(pieces.begin(), pieces.end(), std::mt19937(7));
    pieces.clear();
}

TEST(SlabTest, NoMoreThanOneSpanIsKept) {
    for (std::size_t const size : {1U, 8U, 9U, 24U, 64U, 500U, 511U, 512U})
        for (auto const order : {Order::firstToLast, Order::lastToFirst, Order::mixed}) {
            Slab slab("spans");
            for (int round = 0; round < 2; ++round)
                fillAndEmpty(slab, size, order);
            EXPECT_EQ(slab.bytesInUse(), 0U);
            EXPECT_LE(slab.bytesHeld(), spanBytes) << size << ", order " << static_cast<int>(order);
        }
}

TEST(SlabTest, MemoryThatCameBackIsUsedAgain) {
    Slab slab("again");
    fillAndEmpty(slab, 48, Order::mixed);
    auto const held = slab.bytesHeld();
    for (int step = 0; step < 100000; ++step)
        Piece const passing(slab, 48, 3);
    EXPECT_EQ(slab.bytesHeld(), held);
}

TEST(SlabTest, HolesInFullPagesAreFilledFirst) {
    Slab slab("holes");
    std::vector<Piece> pieces;
    for (int number = 0; number < 5000; ++number)
        pieces.emplace_back(slab, 40, 1);
    auto const held = slab.bytesHeld();
    for (std::size_t hole = 0; hole < pieces.size(); hole += 3)
        Piece const emptied = std::move(pieces[hole]);
    for (std::size_t hole = 0; hole < pieces.size(); hole += 3)
        pieces[hole] = Piece(slab, 40, 2);
    EXPECT_EQ(slab.bytesHeld(), held);
    EXPECT_TRUE(std::all_of(pieces.begin(), pieces.end(),
                            [](Piece const& piece) { return piece.unharmed(); }));
}

// --- memory ---

TEST(SlabTest, PiecesDoNotOverlap) {
    Slab slab("apart");
    auto const pieces = piecesOfEverySize(slab);
    std::set<void*> starts;
    for (auto const& piece : pieces) {
        EXPECT_TRUE(piece.unharmed()) << piece.size();
        EXPECT_NE(piece.memory(), nullptr) << piece.size();
        starts.insert(piece.memory());
    }
    EXPECT_EQ(starts.size(), pieces.size());
}

TEST(SlabTest, PiecesAreAligned) {
    Slab slab("aligned");
    for (int round = 0; round < 3; ++round)
        for (auto const& piece : piecesOfEverySize(slab)) {
            std::size_t const alignment = piece.size() > 0 && piece.size() % 16 == 0 ? 16 : 8;
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece.memory()) % alignment, 0U)
                << piece.size();
        }
}

TEST(SlabTest, AnySequenceOfStepsKeepsThePiecesApart) {
    Slab slab("steps");
    std::mt19937 random(20240608);
    std::vector<Piece> pieces;
    std::size_t inUse = 0;
    for (int step = 0; step < 100000; ++step) {
        if (pieces.empty() || random() % 100 < (step / 10000 % 2 == 0 ? 60U : 40U)) {
            std::size_t const size = random() % (random() % 10 == 0 ? 2000 : 100);
            pieces.emplace_back(slab, size, static_cast<unsigned char>(random()));
            inUse += size;
        } else {
            std::swap(pieces[random() % pieces.size()], pieces.back());
            ASSERT_TRUE(pieces.back().unharmed()) << "step " << step;
            inUse -= pieces.back().size();
            pieces.pop_back();
        }
        ASSERT_EQ(slab.bytesInUse(), inUse);
    }
    EXPECT_TRUE(std::all_of(pieces.begin(), pieces.end(),
                            [](Piece const& piece) { return piece.unharmed(); }));
}

// --- threads ---

TEST(SlabThreadsTest, TwoThreadsDrawOnOneSlab) {
    Slab slab("threads");
    std::array<int, 2> harmed{};
    support::inThreads(2, [&](int thread) {
        std::mt19937 random(static_cast<unsigned>(thread));
        std::vector<Piece> pieces;
        for (int step = 0; step < 20000; ++step)
            if (pieces.size() < 200) {
                pieces.emplace_back(slab, random() % 700, static_cast<unsigned char>(random()));
            } else {
                std::swap(pieces[random() % pieces.size()], pieces.back());
                harmed[static_cast<std::size_t>(thread)] += pieces.back().unharmed() ? 0 : 1;
                pieces.pop_back();
            }
    });
    EXPECT_THAT(harmed, testing::Each(0));
    EXPECT_EQ(slab.bytesInUse(), 0U);
}

TEST(SlabThreadsTest, MemoryOfOneThreadIsGivenBackByAnother) {
    Slab slab("handed over");
    std::array<std::vector<Piece>, 2> pieces;
    support::inThreads(2, [&](int thread) {
        for (std::size_t number = 0; number < 5000; ++number)
            pieces[static_cast<std::size_t>(thread)].emplace_back(slab, number % 600, 9);
    });
    support::inThreads(2,
                       [&](int thread) { pieces[static_cast<std::size_t>(1 - thread)].clear(); });
    EXPECT_EQ(slab.bytesInUse(), 0U);
}

TEST(SlabThreadsTest, TwoThreadsThatNameASlabGetOne) {
    std::array<std::vector<Slab*>, 2> slabs;
    support::inThreads(2, [&slabs](int thread) {
        for (int number = 0; number < 200; ++number)
            slabs[static_cast<std::size_t>(thread)].push_back(
                &MemSlab::slab("SlabTest " + std::to_string(number)));
    });
    EXPECT_EQ(slabs[0], slabs[1]);
}

} // namespace
