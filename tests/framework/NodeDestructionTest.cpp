// Nodes whose destructors still use them: references to a node that is under destruction are taken
// and dropped without destroying it a second time.
#include <Rook/Node.h>
#include <Rook/Ptr.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/Threads.h"

namespace {

using Rook::Node;
using Rook::Ptr;

// A node whose destructor says so and then runs what the test gives it.
class Station : public Node {
  public:
    using Work = std::function<void(Station&)>;

    explicit Station(Work last) : last_(std::move(last)) {}

    // An operation as any other: it needs a reference to its own node for a while.
    std::uint32_t referencesInAnOperation() {
        Ptr<Station> const self = this;
        return self->references();
    }
    Ptr<Station> self() { return this; }

    static inline std::atomic<int> destroyed = 0;
    static inline std::atomic<std::uint32_t> leftAtTheEnd = 0;

  protected:
    ~Station() override {
        underDestructionIs();
        if (last_)
            last_(*this);
        leftAtTheEnd = references();
        ++destroyed;
    }

  private:
    Work const last_;
};

class NodeDestructionTest : public testing::Test {
  protected:
    void SetUp() override {
        Station::destroyed = 0;
        Station::leftAtTheEnd = 0;
    }

    // Makes a station and drops the only reference to it.
    static void destroyStation(Station::Work last) {
        Ptr<Station> const station = new Station(std::move(last));
    }
    static void expectDestroyedOnce() {
        EXPECT_EQ(Station::destroyed, 1);
        EXPECT_EQ(Station::leftAtTheEnd, 0U);
    }
};

// --- the flag ---

TEST_F(NodeDestructionTest, ANodeIsNotUnderDestructionWhileItLives) {
    auto* const station = new Station(nullptr);
    EXPECT_FALSE(station->isUnderDestruction());
    Ptr<Station> const first = station;
    auto second = first;
    EXPECT_FALSE(station->isUnderDestruction());
    second = nullptr;
    EXPECT_FALSE(station->isUnderDestruction());
}

TEST_F(NodeDestructionTest, ANodeIsUnderDestructionOnceItsDestructorHasSaidSo) {
    bool seen = false;
    destroyStation([&seen](Station const& station) { seen = station.isUnderDestruction(); });
    EXPECT_TRUE(seen);
}

TEST_F(NodeDestructionTest, TheFlagIsSeenThroughReferencesOfEveryKind) {
    bool seen = false;
    destroyStation([&seen](Station& station) {
        Ptr<Station> const self = &station;
        Ptr<Node const> const node = self;
        seen = self->isUnderDestruction() && node->isUnderDestruction();
    });
    EXPECT_TRUE(seen);
    expectDestroyedOnce();
}

TEST_F(NodeDestructionTest, TheFlagBelongsToOneNode) {
    Ptr<Station> const other = new Station(nullptr);
    bool seen = true;
    destroyStation([&](Station const&) { seen = other->isUnderDestruction(); });
    EXPECT_FALSE(seen);
    EXPECT_EQ(Station::destroyed, 1);
}

static_assert(std::is_nothrow_invocable_v<decltype(&Node::isUnderDestruction), Node const&>);

// --- a destructor that takes and drops references ---

TEST_F(NodeDestructionTest, ANodeThatNobodyUsesAnyMoreIsDestroyedOnce) {
    destroyStation(nullptr);
    expectDestroyedOnce();
}

TEST_F(NodeDestructionTest, AReferenceTakenAndDroppedDirectlyDestroysNothing) {
    destroyStation([](Station& station) {
        { Ptr<Station> const self = &station; }
        EXPECT_EQ(Station::destroyed, 0);
        Ptr<Node const> const again = &station;
        EXPECT_EQ(again->references(), 1U);
    });
    expectDestroyedOnce();
}

TEST_F(NodeDestructionTest, ReferencesTakenByOperationsDestroyNothing) {
    destroyStation([](Station& station) {
        EXPECT_EQ(station.referencesInAnOperation(), 1U);
        EXPECT_EQ(station.referencesInAnOperation(), 1U);
        EXPECT_EQ(station.self()->self()->referencesInAnOperation(), 3U);
    });
    expectDestroyedOnce();
}

TEST_F(NodeDestructionTest, ReferencesAreCountedAsEver) {
    destroyStation([](Station& station) {
        EXPECT_EQ(station.references(), 0U);
        Ptr<Station> first = &station;
        auto const second = first;
        EXPECT_EQ(station.references(), 2U);
        auto const moved = std::move(first);
        EXPECT_EQ(station.references(), 2U);
        first = second;
        EXPECT_EQ(station.references(), 3U);
        first = nullptr;
        EXPECT_EQ(station.references(), 2U);
    });
    expectDestroyedOnce();
}

TEST_F(NodeDestructionTest, ManyReferencesInAContainerDestroyNothing) {
    destroyStation([](Station& station) {
        std::vector<Ptr<Node>> references;
        for (int number = 0; number < 1000; ++number)
            references.emplace_back(&station);
        EXPECT_EQ(station.references(), 1000U);
        references.clear();
        references.emplace_back(&station);
    });
    expectDestroyedOnce();
}

TEST_F(NodeDestructionTest, ThousandsOfNodesAreDestroyedOnceEach) {
    for (int number = 0; number < 5000; ++number)
        destroyStation([](Station& station) { station.referencesInAnOperation(); });
    EXPECT_EQ(Station::destroyed, 5000);
}

TEST_F(NodeDestructionTest, ADestructorMayDestroyOtherNodes) {
    int destroyedBefore = 0;
    destroyStation([&](Station& outer) {
        // The inner node knows the outer one, which is under destruction, and uses it at its end.
        destroyStation([&outer](Station& station) {
            EXPECT_EQ(outer.referencesInAnOperation(), 1U);
            EXPECT_EQ(station.referencesInAnOperation(), 1U);
        });
        destroyedBefore = Station::destroyed;
    });
    EXPECT_EQ(destroyedBefore, 1);
    EXPECT_EQ(Station::destroyed, 2);
}

// --- derived nodes ---

TEST_F(NodeDestructionTest, TheDestructorsOfEveryClassMayUseTheNode) {
    static std::vector<int> order;
    class Terminus : public Station {
      public:
        Terminus() : Station([](Station& station) { order.push_back(use(station)); }) {}

      protected:
        ~Terminus() override {
            underDestructionIs();
            order.push_back(10 + use(*this));
        }

      private:
        static int use(Station& station) {
            return static_cast<int>(station.referencesInAnOperation());
        }
    };
    order.clear();
    { Ptr<Node> const node = new Terminus; }
    EXPECT_EQ(order, (std::vector{11, 1}));
    expectDestroyedOnce();
}

TEST_F(NodeDestructionTest, MembersMayBeNodesThatGoWithTheirOwner) {
    class Depot : public Node {
      public:
        explicit Depot(Ptr<Station> station) : station_(std::move(station)) {}

      protected:
        ~Depot() override {
            underDestructionIs();
            Ptr<Depot> const self = this;
            EXPECT_EQ(self->station_->references(), 1U);
        }

      private:
        Ptr<Station> const station_;
    };
    { Ptr<Depot> const depot = new Depot(new Station(&Station::referencesInAnOperation)); }
    expectDestroyedOnce();
}

// --- threads ---

// From here on the counts change atomically.
TEST_F(NodeDestructionTest, ADestructorThatRunsInAnotherThreadMayUseItsNode) {
    Ptr<Station> station = new Station([](Station& self) { self.referencesInAnOperation(); });
    support::inThreads(1, [&station](int) { station = nullptr; });
    expectDestroyedOnce();
}

TEST_F(NodeDestructionTest, ADestructorMayLendItsNodeToThreads) {
    destroyStation([](Station& station) {
        support::inThreads(3, [&station](int) {
            for (int step = 0; step < 10000; ++step) {
                auto const self = station.self();
                EXPECT_TRUE(self->isUnderDestruction());
            }
        });
    });
    expectDestroyedOnce();
}

TEST_F(NodeDestructionTest, TheLastOfSeveralThreadsDestroysTheNodeOnce) {
    constexpr int threads = 3;
    constexpr int rounds = 1000;
    std::vector<std::vector<Ptr<Station>>> held(threads);
    for (int round = 0; round < rounds; ++round) {
        Ptr<Station> const station =
            new Station([](Station& self) { self.self()->referencesInAnOperation(); });
        for (auto& ofThread : held)
            ofThread.push_back(station);
    }
    support::inThreads(threads, [&held](int thread) {
        for (auto& station : held[static_cast<std::size_t>(thread)])
            station = nullptr;
    });
    EXPECT_EQ(Station::destroyed, rounds);
}

} // namespace
