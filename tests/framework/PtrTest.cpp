// Rook::Ptr and Rook::Node: counted references.
#include <Rook/Node.h>
#include <Rook/Ptr.h>

#include <array>
#include <atomic>
#include <barrier>
#include <map>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Threads.h"

namespace {

using Rook::Ptr;

// A node that tells how many of its kind are alive.
class Part : public Rook::Node {
  public:
    explicit Part(std::string name = "part") : name_(std::move(name)) { ++alive; }
    std::string const& name() const { return name_; }

    static inline std::atomic<int> alive = 0;

  protected:
    ~Part() override { --alive; }

  private:
    std::string const name_;
};

class Wheel : public Part {
  public:
    Wheel() : Part("wheel") {}
    static inline std::atomic<int> destroyed = 0;

  protected:
    ~Wheel() override { ++destroyed; }
};

// A node that holds the next one of a chain.
class Link : public Part {
  public:
    explicit Link(std::string name, Ptr<Link> following = nullptr)
        : Part(std::move(name)), next(std::move(following)) {}
    Ptr<Link> next;

  protected:
    ~Link() override = default;
};

class PtrTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(Part::alive, 0); }
    void TearDown() override { EXPECT_EQ(Part::alive, 0); }
};

static_assert(!std::is_copy_constructible_v<Part> && !std::is_copy_assignable_v<Part>);
static_assert(std::is_nothrow_copy_constructible_v<Ptr<Part>>);
static_assert(std::is_nothrow_move_constructible_v<Ptr<Part>>);
static_assert(std::is_convertible_v<Ptr<Wheel>, Ptr<Part>>);
static_assert(std::is_convertible_v<Ptr<Part>, Ptr<Part const>>);
static_assert(!std::is_convertible_v<Ptr<Part>, Ptr<Wheel>>);
static_assert(!std::is_convertible_v<Ptr<Part const>, Ptr<Part>>);
static_assert(!std::is_convertible_v<Ptr<Part>, bool>);

// --- what a pointer tells ---

TEST_F(PtrTest, ADefaultPointerIsNull) {
    Ptr<Part> const pointer;
    EXPECT_FALSE(pointer);
    EXPECT_EQ(pointer.get(), nullptr);
    EXPECT_TRUE(pointer == nullptr);
    EXPECT_EQ(pointer, Ptr<Part>(nullptr));
}

TEST_F(PtrTest, APointerLeadsToItsNode) {
    auto* const node = new Part("front");
    Ptr<Part> const pointer = node;
    EXPECT_TRUE(pointer);
    EXPECT_TRUE(pointer != nullptr);
    EXPECT_EQ(pointer.get(), node);
    EXPECT_EQ(&*pointer, node);
    EXPECT_EQ(pointer->name(), "front");
}

TEST_F(PtrTest, PointersToTheSameNodeAreEqual) {
    Ptr<Wheel> const wheel = new Wheel;
    Ptr<Part> const part = wheel;
    Ptr<Part> const other = new Part;
    EXPECT_TRUE(part == wheel);
    EXPECT_TRUE(wheel == part);
    EXPECT_TRUE(part != other);
    EXPECT_EQ(part, Ptr<Part>(part));
    EXPECT_EQ(std::hash<Ptr<Part>>()(part), std::hash<Ptr<Part>>()(wheel));
}

TEST_F(PtrTest, HashedContainersHoldEachNodeOnce) {
    Ptr<Part> const first = new Part;
    Ptr<Part> const second = new Part;
    std::unordered_set<Ptr<Part>> const set = {first, second, first};
    EXPECT_EQ(set.size(), 2U);
    EXPECT_TRUE(set.contains(first));
    EXPECT_FALSE(set.contains(nullptr));
}

// --- counts ---

TEST_F(PtrTest, ANewNodeHasNoReference) {
    auto* const node = new Part;
    EXPECT_EQ(node->references(), 0U);
    Ptr<Part> const pointer = node;
    EXPECT_EQ(node->references(), 1U);
}

TEST_F(PtrTest, ACopyAddsAReferenceAndItsEndDropsIt) {
    Ptr<Part> const pointer = new Part;
    {
        auto const copy = pointer;
        Ptr<Part> assigned;
        assigned = pointer;
        EXPECT_EQ(pointer->references(), 3U);
    }
    EXPECT_EQ(pointer->references(), 1U);
}

TEST_F(PtrTest, AMoveHandsTheReferenceOver) {
    Ptr<Part> source = new Part;
    auto* const node = source.get();
    Ptr<Part> made = std::move(source);
    EXPECT_EQ(node->references(), 1U);
    Ptr<Part> assigned;
    assigned = std::move(made);
    EXPECT_EQ(node->references(), 1U);
    EXPECT_EQ(assigned.get(), node);
    source = nullptr;
    made = nullptr;
    EXPECT_EQ(assigned->references(), 1U);
}

TEST_F(PtrTest, AMovedFromPointerIsNull) {
    Ptr<Part> source = new Part;
    Ptr<Part> const made = std::move(source);
    EXPECT_EQ(source.get(), nullptr); // NOLINT(bugprone-use-after-move)
}

TEST_F(PtrTest, APlainPointerMayBeTakenUpAgain) {
    Ptr<Part> const first = new Part;
    Ptr<Part> const second = first.get();
    EXPECT_EQ(first->references(), 2U);
    EXPECT_EQ(first, second);
}

TEST_F(PtrTest, AConvertedPointerSharesTheCount) {
    Ptr<Wheel> const wheel = new Wheel;
    Ptr<Part> const part = wheel;
    Ptr<Rook::Node const> const node = part;
    EXPECT_EQ(wheel->references(), 3U);
    EXPECT_EQ(part.get(), wheel.get());
    EXPECT_EQ(node.get(), wheel.get());
    EXPECT_EQ(part->name(), "wheel");
}

TEST_F(PtrTest, CopyingNullChangesNothing) {
    Ptr<Part> const null;
    auto copy = null;
    Ptr<Part const> const converted = null;
    copy = null;
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(converted, nullptr);
}

TEST_F(PtrTest, PointersSwap) {
    Ptr<Part> first = new Part("first");
    Ptr<Part> second = new Part("second");
    std::swap(first, second);
    EXPECT_EQ(first->name(), "second");
    EXPECT_EQ(second->name(), "first");
    EXPECT_EQ(first->references(), 1U);
    EXPECT_EQ(second->references(), 1U);
}

// --- life of the node ---

TEST_F(PtrTest, TheNodeGoesWithItsLastReference) {
    Ptr<Part> first = new Part;
    Ptr<Part> second = first;
    first = nullptr;
    EXPECT_EQ(Part::alive, 1);
    second = nullptr;
    EXPECT_EQ(Part::alive, 0);
}

TEST_F(PtrTest, AssignmentDropsTheFormerNode) {
    Ptr<Part> pointer = new Part("former");
    pointer = new Part("latter");
    EXPECT_EQ(Part::alive, 1);
    EXPECT_EQ(pointer->name(), "latter");
}

TEST_F(PtrTest, AssigningAPointerToItselfKeepsTheNode) {
    Ptr<Part> pointer = new Part("same");
    auto& same = pointer;
    pointer = same;
    EXPECT_EQ(pointer->name(), "same");
    EXPECT_EQ(pointer->references(), 1U);
    pointer = std::move(same);
    ASSERT_NE(pointer, nullptr);
    EXPECT_EQ(pointer->name(), "same");
    EXPECT_EQ(pointer->references(), 1U);
}

TEST_F(PtrTest, ANodeGoesAsWhatItWasMade) {
    auto const destroyedBefore = Wheel::destroyed.load();
    Ptr<Part> pointer = new Wheel;
    pointer = nullptr;
    EXPECT_EQ(Wheel::destroyed, destroyedBefore + 1);
}

TEST_F(PtrTest, APointerToConstantKeepsTheNodeAlive) {
    Ptr<Part const> constant;
    {
        Ptr<Part> const pointer = new Part("kept");
        constant = pointer;
    }
    EXPECT_EQ(constant->name(), "kept");
    EXPECT_EQ(constant->references(), 1U);
}

TEST_F(PtrTest, APointerMayBeReplacedByOneThatItsOwnNodeHolds) {
    Ptr<Link> head = new Link("first", new Link("second", new Link("third")));
    head = head->next;
    EXPECT_EQ(head->name(), "second");
    EXPECT_EQ(Part::alive, 2);
    head = std::move(head->next);
    EXPECT_EQ(head->name(), "third");
    EXPECT_EQ(Part::alive, 1);
}

TEST_F(PtrTest, ContainersKeepTheirNodes) {
    std::vector<Ptr<Part>> parts;
    std::map<std::string, Ptr<Part>> byName;
    for (int number = 0; number < 100; ++number) {
        parts.emplace_back(new Part(std::to_string(number)));
        byName[parts.back()->name()] = parts.back();
    }
    EXPECT_EQ(Part::alive, 100);
    EXPECT_EQ(byName.at("42")->references(), 2U);
    parts.clear();
    EXPECT_EQ(Part::alive, 100);
    byName.erase("42");
    EXPECT_EQ(Part::alive, 99);
}

TEST_F(PtrTest, ANodeSurvivesTheThrowOfAPointerToIt) {
    try {
        throw Ptr<Part>(new Part("thrown"));
    } catch (Ptr<Part> const& caught) {
        EXPECT_EQ(caught->name(), "thrown");
        EXPECT_EQ(Part::alive, 1);
    }
}

// --- threads ---

TEST_F(PtrTest, NoReferenceIsLostWhenThreadsCopyOnePointer) {
    Ptr<Part> const shared = new Part;
    support::inThreads(2, [&shared](int) {
        for (int step = 0; step < 1000000; ++step) {
            std::array<Ptr<Part>, 3> copies = {shared, shared, shared};
            copies[0] = copies[1];
            copies[1] = std::move(copies[2]);
        }
    });
    EXPECT_EQ(shared->references(), 1U);
    EXPECT_EQ(Part::alive, 1);
}

TEST_F(PtrTest, TheLastOfTwoThreadsDestroysTheNodeOnce) {
    constexpr int rounds = 2000;
    auto const destroyedBefore = Wheel::destroyed.load();
    std::vector<std::array<Ptr<Part>, 2>> held;
    for (int round = 0; round < rounds; ++round) {
        Ptr<Part> const wheel = new Wheel;
        held.push_back({wheel, wheel});
    }
    std::barrier together(2);
    support::inThreads(2, [&](int thread) {
        for (auto& pair : held) {
            together.arrive_and_wait();
            pair[static_cast<std::size_t>(thread)] = nullptr;
        }
    });
    EXPECT_EQ(Part::alive, 0);
    EXPECT_EQ(Wheel::destroyed, destroyedBefore + rounds);
}

TEST_F(PtrTest, WhatAThreadWroteIsSeenByTheOneThatDestroys) {
    class Counter : public Part {
      public:
        explicit Counter(int& total) : total_(total) {}
        std::array<int, 2> counts{};

      protected:
        ~Counter() override { total_ += counts[0] + counts[1]; }

      private:
        int& total_;
    };
    int total = 0;
    for (int round = 0; round < 200; ++round) {
        Ptr<Counter> counter = new Counter(total);
        std::array<Ptr<Counter>, 2> held = {counter, counter};
        counter = nullptr;
        support::inThreads(2, [&held](int thread) {
            auto const own = static_cast<std::size_t>(thread);
            ++held[own]->counts[own];
            held[own] = nullptr;
        });
    }
    EXPECT_EQ(total, 400);
}

} // namespace
