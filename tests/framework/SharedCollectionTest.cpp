// What is shared with a collection: the nodes whose references it holds, and the collection itself
// among threads that read it.
#include <Fen/Collection.h>

#include <array>
#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Fen/Attribute.h>
#include <Rook/Node.h>
#include <Rook/Ptr.h>
#include <Rook/String.h>

#include "support/Threads.h"

namespace {

using Rook::Ptr;
using Rook::String;
using testing::ElementsAre;

// A value.
class Ship : public Fen::AttributeValue<Ship> {
  public:
    static constexpr std::string_view typeName = "Harbour::Ship";
    static constexpr auto attributes() {
        return std::array{Fen::Attribute<Ship>{"name", &Ship::name_},
                          Fen::Attribute<Ship>{"cargo", &Ship::cargo_}};
    }
    Ship() = default;
    Ship(String name, String cargo) : name_(std::move(name)), cargo_(std::move(cargo)) {}
    String const& name() const noexcept { return name_; }
    String const& cargo() const noexcept { return cargo_; }

  private:
    String name_;
    String cargo_;
};

// The same as a node. It tells how many of its kind are alive, and does what it is told at its end.
class ShipNode : public Rook::Node, public Ship {
  public:
    ShipNode(String const& name, String const& cargo) : Ship(name, cargo) { ++alive; }
    ~ShipNode() override {
        --alive;
        if (atItsEnd)
            atItsEnd(*this);
    }

    static inline std::atomic<int> alive = 0;
    std::function<void(Ship const&)> atItsEnd;
    // Written by the threads of a test, each its own; the node's end reads them.
    std::array<int, 4> visits{};
};

// A collection type as it is declared, with the names of its operations.
template <class Base>
class Fleet : public Base {
  public:
    using Element = typename Base::value_type;
    void shipIs(Element const& ship) { this->elementIs(ship); }
    Element shipDel(String const& name) { return this->elementDel(name); }
    void shipDelAll() { this->elementDelAll(); }
    Element ship(String const& name) const { return this->element(name); }
};
using OrderedNodes = Fleet<Fen::OrderedCollection<Ptr<ShipNode>, &ShipNode::name>>;
using HashedNodes = Fleet<Fen::HashedCollection<Ptr<ShipNode>, &ShipNode::name>>;
using OrderedValues = Fleet<Fen::OrderedCollection<Ship, &Ship::name>>;
using HashedValues = Fleet<Fen::HashedCollection<Ship, &Ship::name>>;

// --- nodes ---

// A collection, and a node that is in it only if the test puts it there.
template <class Collection>
class SharedCollectionTest : public testing::Test {
  protected:
    void TearDown() override {
        fleet = nullptr;
        EXPECT_EQ(ShipNode::alive, 1);
        EXPECT_EQ(ada->references(), 1U);
    }
    Ptr<ShipNode> add(String const& name, String const& cargo) {
        Ptr<ShipNode> ship = new ShipNode(name, cargo);
        fleet->shipIs(ship);
        return ship;
    }

    Ptr<Collection> fleet = new Collection;
    Ptr<ShipNode> const ada = new ShipNode("Ada", "tea");
};
using KindsOfNodes = testing::Types<OrderedNodes, HashedNodes>;
TYPED_TEST_SUITE(SharedCollectionTest, KindsOfNodes, );

TYPED_TEST(SharedCollectionTest, AnElementIsTheNodeItself) {
    this->fleet->shipIs(this->ada);
    EXPECT_EQ(this->fleet->ship("Ada"), this->ada);
    EXPECT_EQ(*this->fleet->begin(), this->ada);
    EXPECT_EQ(this->ada->references(), 2U);
}

TYPED_TEST(SharedCollectionTest, NullIsRefusedAndChangesNothing) {
    this->fleet->shipIs(this->ada);
    try {
        this->fleet->shipIs(nullptr);
        ADD_FAILURE() << "nothing was thrown";
    } catch (Fen::NullArgumentException const& exception) {
        EXPECT_STREQ(exception.what(), "a collection holds no null element");
    }
    EXPECT_THAT(*this->fleet, ElementsAre(this->ada));
}

TYPED_TEST(SharedCollectionTest, AReplacedNodeLosesItsReference) {
    this->fleet->shipIs(this->ada);
    Ptr<ShipNode> const successor = new ShipNode("Ada", "salt");
    this->fleet->shipIs(successor);
    EXPECT_EQ(this->ada->references(), 1U);
    EXPECT_EQ(successor->references(), 2U);
    EXPECT_EQ(this->fleet->ship("Ada"), successor);
}

TYPED_TEST(SharedCollectionTest, ANodeThatIsAddedAgainIsHeldOnce) {
    this->fleet->shipIs(this->ada);
    this->fleet->shipIs(this->ada);
    EXPECT_EQ(this->ada->references(), 2U);
    EXPECT_EQ(this->fleet->size(), 1U);
}

TYPED_TEST(SharedCollectionTest, ARemovedNodeIsHandedToTheCaller) {
    this->fleet->shipIs(this->ada);
    auto const removed = this->fleet->shipDel("Ada");
    EXPECT_EQ(removed, this->ada);
    EXPECT_EQ(this->ada->references(), 2U);
    EXPECT_EQ(this->fleet->shipDel("Ada"), nullptr);
}

TYPED_TEST(SharedCollectionTest, RemovingAllDropsTheReferences) {
    this->fleet->shipIs(this->ada);
    this->add("Eve", "tin");
    this->fleet->shipDelAll();
    EXPECT_EQ(this->ada->references(), 1U);
    EXPECT_EQ(ShipNode::alive, 1);
}

TYPED_TEST(SharedCollectionTest, ANodeMayBeInSeveralCollections) {
    Ptr<TypeParam> const second = new TypeParam;
    this->fleet->shipIs(this->ada);
    second->shipIs(this->ada);
    EXPECT_EQ(this->ada->references(), 3U);
    this->fleet->shipDelAll();
    EXPECT_EQ(second->ship("Ada"), this->ada);
}

TYPED_TEST(SharedCollectionTest, NodesGoWithTheCollectionUnlessSomebodyHoldsThem) {
    auto const eve = this->add("Eve", "tin");
    this->add("Ida", "salt");
    this->fleet->shipIs(this->ada);
    this->fleet = nullptr;
    EXPECT_EQ(ShipNode::alive, 2);
    EXPECT_EQ(eve->references(), 1U);
}

TYPED_TEST(SharedCollectionTest, ANodeThatGoesWithTheOthersFindsAnEmptyCollection) {
    std::size_t size = 99;
    this->add("Eve", "tin")->atItsEnd = [&](Ship const&) { size = this->fleet->size(); };
    this->add("Ida", "salt");
    this->fleet->shipDelAll();
    EXPECT_EQ(size, 0U);
}

TYPED_TEST(SharedCollectionTest, ANodeThatIsRemovedFindsItselfGone) {
    bool found = true;
    this->add("Eve", "tin")->atItsEnd = [&](Ship const& eve) {
        found = this->fleet->ship(eve.name()) != nullptr;
    };
    this->fleet->shipDel("Eve");
    EXPECT_FALSE(found);
}

TYPED_TEST(SharedCollectionTest, ANodeThatIsReplacedFindsItsSuccessor) {
    Ptr<ShipNode> found;
    this->add("Eve", "tin")->atItsEnd = [&](Ship const& eve) {
        found = this->fleet->ship(eve.name());
    };
    auto const successor = this->add("Eve", "salt");
    EXPECT_EQ(found, successor);
}

// --- threads ---

// What the tests below put into a collection.
constexpr int shipCount = 50;
String const& nameOf(int number) {
    static auto const names = [] {
        std::vector<String> all;
        for (int each = 0; each < shipCount; ++each)
            all.emplace_back("ship " + std::to_string(each));
        return all;
    }();
    return names[static_cast<std::size_t>(number)];
}

TYPED_TEST(SharedCollectionTest, NoReferenceIsLostWhileThreadsIterate) {
    std::vector<Ptr<ShipNode>> ships;
    for (int number = 0; number < shipCount; ++number)
        ships.push_back(this->add(nameOf(number), "tea"));
    support::inThreads(3, [this](int) {
        for (int round = 0; round < 2000; ++round) {
            std::vector<Ptr<ShipNode>> taken;
            for (auto const& ship : *this->fleet)
                taken.push_back(ship);
            EXPECT_EQ(taken.size(), this->fleet->size());
        }
    });
    for (auto const& ship : ships)
        EXPECT_EQ(ship->references(), 2U);
}

TYPED_TEST(SharedCollectionTest, NoReferenceIsLostWhileThreadsLookUp) {
    std::vector<Ptr<ShipNode>> ships;
    for (int number = 0; number < shipCount; ++number)
        ships.push_back(this->add(nameOf(number), "tea"));
    support::inThreads(2, [&](int) {
        for (int step = 0; step < 20000; ++step) {
            auto const number = step % shipCount;
            EXPECT_EQ(this->fleet->ship(nameOf(number)), ships[static_cast<std::size_t>(number)]);
            EXPECT_EQ(this->fleet->ship("none"), nullptr);
        }
    });
    for (auto const& ship : ships)
        EXPECT_EQ(ship->references(), 2U);
}

TYPED_TEST(SharedCollectionTest, NoReferenceToTheCollectionIsLostAmongThreads) {
    this->fleet->shipIs(this->ada);
    support::inThreads(3, [this](int) {
        for (int step = 0; step < 200000; ++step) {
            auto const taken = this->fleet;
            auto const again = taken;
            EXPECT_EQ(again.get(), this->fleet.get());
        }
        EXPECT_EQ(this->fleet->ship("Ada"), this->ada);
    });
    EXPECT_EQ(this->fleet->references(), 1U);
    EXPECT_EQ(this->ada->references(), 2U);
}

TYPED_TEST(SharedCollectionTest, TheLastOfSeveralThreadsDestroysTheCollectionOnce) {
    constexpr int threads = 3;
    constexpr int rounds = 2000;
    std::vector<std::vector<Ptr<TypeParam>>> held(threads);
    for (int round = 0; round < rounds; ++round) {
        this->add("Eve", "tin");
        this->fleet->shipIs(this->ada);
        for (auto& ofThread : held)
            ofThread.push_back(this->fleet);
        this->fleet = new TypeParam;
    }
    support::inThreads(threads, [&](int thread) {
        for (auto& own : held[static_cast<std::size_t>(thread)]) {
            auto const eve = own->ship("Eve");
            own = nullptr;
            EXPECT_EQ(eve->cargo(), "tin");
        }
    });
    EXPECT_EQ(ShipNode::alive, 1);
}

TYPED_TEST(SharedCollectionTest, WhatThreadsWroteIsSeenByTheOneThatDestroysTheElement) {
    constexpr int threads = 4;
    constexpr int rounds = 200;
    std::atomic<int> visits = 0;
    for (int round = 0; round < rounds; ++round) {
        auto const eve = this->add("Eve", "tin").get();
        eve->atItsEnd = [&visits, eve](Ship const&) {
            for (int const visit : eve->visits)
                visits += visit;
        };
        std::array<Ptr<TypeParam>, threads> held;
        held.fill(this->fleet);
        this->fleet = new TypeParam;
        support::inThreads(threads, [&held](int thread) {
            auto const own = static_cast<std::size_t>(thread);
            ++held[own]->ship("Eve")->visits[own];
            held[own] = nullptr;
        });
    }
    EXPECT_EQ(visits, threads * rounds);
}

TYPED_TEST(SharedCollectionTest, AThreadReadsWhatAnotherPutInBeforeItHandedTheCollectionOver) {
    std::atomic<TypeParam*> handedOver = nullptr;
    support::inThreads(3, [&](int thread) {
        if (thread == 0) {
            for (int number = 0; number < shipCount; ++number)
                this->add(nameOf(number), nameOf(number));
            handedOver = this->fleet.get();
            handedOver.notify_all();
        } else {
            handedOver.wait(nullptr);
            Ptr<TypeParam> const taken = handedOver.load();
            EXPECT_EQ(taken->size(), std::size_t{shipCount});
            for (auto const& ship : *taken)
                EXPECT_EQ(ship->cargo(), ship->name());
        }
    });
}

template <class Collection>
class SharedValuesTest : public testing::Test {};
using KindsOfValues = testing::Types<OrderedValues, HashedValues>;
TYPED_TEST_SUITE(SharedValuesTest, KindsOfValues, );

TYPED_TEST(SharedValuesTest, ThreadsCopyTheValuesOfOneCollection) {
    Ptr<TypeParam> const fleet = new TypeParam;
    for (int number = 0; number < shipCount; ++number)
        fleet->shipIs(Ship(nameOf(number), "tea of " + nameOf(number)));
    support::inThreads(3, [&fleet](int thread) {
        for (int round = 0; round < 100; ++round) {
            auto const held = fleet;
            std::vector<Ship> const copies(held->begin(), held->end());
            EXPECT_EQ(copies.size(), std::size_t{shipCount});
            auto const& name = nameOf((round + thread) % shipCount);
            EXPECT_EQ(held->ship(name), Ship(name, "tea of " + name));
        }
    });
    EXPECT_EQ(fleet->references(), 1U);
    EXPECT_EQ(fleet->ship(nameOf(7)), Ship(nameOf(7), "tea of " + nameOf(7)));
}

} // namespace
