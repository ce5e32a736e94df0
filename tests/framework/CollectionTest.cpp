// Keyed collections of values and of nodes: adding, replacing, removing, look-up and order. The
// references that they hold: SharedCollectionTest.
#include <Fen/Collection.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <Fen/Attribute.h>
#include <Rook/Node.h>
#include <Rook/Ptr.h>
#include <Rook/String.h>

namespace {

using Rook::Ptr;
using Rook::String;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using namespace std::string_literals;
using namespace std::string_view_literals;

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

// The same as a node. It tells how many of its kind are alive.
class ShipNode : public Rook::Node, public Ship {
  public:
    ShipNode(String const& name, String const& cargo) : Ship(name, cargo) { ++alive; }
    ~ShipNode() override { --alive; }

    static inline int alive = 0;
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

template <bool ordered, class Element, auto key>
struct Kind {
    using Base = std::conditional_t<ordered, Fen::OrderedCollection<Element, key>,
                                    Fen::HashedCollection<Element, key>>;
    using Collection = Fleet<Base>;
    static constexpr bool isOrdered = ordered;
    static constexpr bool holdsNodes = !std::is_same_v<Element, Ship>;

    static Element make(String const& name, String const& cargo) {
        if constexpr (holdsNodes)
            return new ShipNode(name, cargo);
        else
            return Ship(name, cargo);
    }
};
using OrderedValues = Kind<true, Ship, &Ship::name>;
using HashedValues = Kind<false, Ship, &Ship::name>;
using OrderedNodes = Kind<true, Ptr<ShipNode>, &ShipNode::name>;
using HashedNodes = Kind<false, Ptr<ShipNode>, &ShipNode::name>;

Ship const& valueOf(Ship const& ship) {
    return ship;
}
Ship const& valueOf(Ptr<ShipNode> const& ship) {
    return *ship;
}
std::string shown(auto const& ship) {
    return ship ? valueOf(ship).name().c_str() + "="s + valueOf(ship).cargo().c_str() : "none";
}
std::vector<std::string> allShown(auto const& fleet) {
    std::vector<std::string> all;
    for (auto const& ship : fleet)
        all.push_back(shown(ship));
    return all;
}

template <class KindOfCollection>
class CollectionTest : public testing::Test {
  protected:
    void TearDown() override {
        fleet = nullptr;
        EXPECT_EQ(ShipNode::alive, 0);
    }
    void add(String const& name, String const& cargo) {
        fleet->shipIs(KindOfCollection::make(name, cargo));
    }

    using Collection = typename KindOfCollection::Collection;
    Ptr<Collection> fleet = new Collection;
};
using AllKinds = testing::Types<OrderedValues, HashedValues, OrderedNodes, HashedNodes>;
TYPED_TEST_SUITE(CollectionTest, AllKinds, );

// --- every kind ---

TYPED_TEST(CollectionTest, ANewCollectionIsEmpty) {
    EXPECT_TRUE(this->fleet->empty());
    EXPECT_EQ(this->fleet->size(), 0U);
    EXPECT_EQ(this->fleet->begin(), this->fleet->end());
    EXPECT_THAT(*this->fleet, IsEmpty());
}

TYPED_TEST(CollectionTest, ElementsAreFoundByTheirKeys) {
    this->add("Ada", "tea");
    this->add("Eve", "tin");
    this->add("", "nothing");
    EXPECT_EQ(this->fleet->size(), 3U);
    EXPECT_FALSE(this->fleet->empty());
    EXPECT_EQ(shown(this->fleet->ship("Ada")), "Ada=tea");
    EXPECT_EQ(shown(this->fleet->ship("Eve")), "Eve=tin");
    EXPECT_EQ(shown(this->fleet->ship("")), "=nothing");
}

TYPED_TEST(CollectionTest, ALookUpThatFindsNothingGivesAnElementMadeOfNothing) {
    this->add("Ada", "tea");
    for (auto const& name : {String(""), String("ada"), String("Ad"), String("Ada\0"sv)})
        EXPECT_FALSE(this->fleet->ship(name)) << name;
    EXPECT_EQ(this->fleet->size(), 1U);
}

TYPED_TEST(CollectionTest, AnElementWithTheSameKeyIsReplaced) {
    this->add("Ada", "tea");
    this->add("Eve", "tin");
    this->add("Ada", "salt");
    EXPECT_THAT(allShown(*this->fleet), UnorderedElementsAre("Ada=salt", "Eve=tin"));
    EXPECT_EQ(shown(this->fleet->ship("Ada")), "Ada=salt");
}

TYPED_TEST(CollectionTest, AnElementMayBeReplacedByItself) {
    this->add("Ada", "tea");
    this->fleet->shipIs(*this->fleet->begin());
    EXPECT_THAT(allShown(*this->fleet), ElementsAre("Ada=tea"));
}

TYPED_TEST(CollectionTest, AnElementIsRemovedByItsKeyAndReturned) {
    this->add("Ada", "tea");
    this->add("Eve", "tin");
    EXPECT_EQ(shown(this->fleet->shipDel("Ada")), "Ada=tea");
    EXPECT_FALSE(this->fleet->ship("Ada"));
    EXPECT_THAT(allShown(*this->fleet), ElementsAre("Eve=tin"));
}

TYPED_TEST(CollectionTest, AKeyThatIsNotThereIsRemovedWithoutEffect) {
    EXPECT_FALSE(this->fleet->shipDel("Ada"));
    this->add("Ada", "tea");
    EXPECT_FALSE(this->fleet->shipDel("Eve"));
    EXPECT_FALSE(this->fleet->shipDel(""));
    EXPECT_THAT(allShown(*this->fleet), ElementsAre("Ada=tea"));
}

TYPED_TEST(CollectionTest, AnElementMayBeRemovedByTheKeyThatItHolds) {
    this->add("Ada", "tea");
    auto const& first = *this->fleet->begin();
    EXPECT_EQ(shown(this->fleet->shipDel(valueOf(first).name())), "Ada=tea");
    EXPECT_TRUE(this->fleet->empty());
}

TYPED_TEST(CollectionTest, AllElementsAreRemovedAtOnce) {
    this->fleet->shipDelAll();
    EXPECT_TRUE(this->fleet->empty());
    for (int number = 0; number < 1000; ++number)
        this->add(std::to_string(number), "tea");
    EXPECT_EQ(this->fleet->size(), 1000U);
    this->fleet->shipDelAll();
    EXPECT_TRUE(this->fleet->empty());
    EXPECT_EQ(ShipNode::alive, 0);
    EXPECT_FALSE(this->fleet->ship("1"));
    this->add("Ada", "tea");
    EXPECT_THAT(allShown(*this->fleet), ElementsAre("Ada=tea"));
}

TYPED_TEST(CollectionTest, KeysThatDifferInOneByteAreKeptApart) {
    std::vector<String> const keys = {
        "",   "\0"sv,  "a",    "a\0"sv, "a\0b"sv,
        "aa", "a\xff", "\xff", "A",     String(std::string(5000, 'a'))};
    for (auto const& key : keys)
        this->add(key, std::to_string(key.size()));
    EXPECT_EQ(this->fleet->size(), keys.size());
    for (auto const& key : keys)
        EXPECT_EQ(valueOf(this->fleet->ship(key)).name(), key);
}

TYPED_TEST(CollectionTest, ACollectionIsANodeWhoseElementsGoWithIt) {
    this->add("Ada", "tea");
    auto const another = this->fleet;
    EXPECT_EQ(another->references(), 2U);
    this->fleet = nullptr;
    EXPECT_EQ(shown(another->ship("Ada")), "Ada=tea");
}

TYPED_TEST(CollectionTest, IterationGivesConstantElements) {
    using Fleet = typename TypeParam::Collection;
    static_assert(std::forward_iterator<typename Fleet::const_iterator>);
    static_assert(
        std::is_same_v<decltype(*std::declval<Fleet&>().begin()), typename Fleet::Element const&>);
    static_assert(!std::is_copy_constructible_v<Fleet>);
    this->add("Ada", "tea");
    EXPECT_EQ(std::distance(this->fleet->begin(), this->fleet->end()), 1);
}

// --- order ---

template <class KindOfCollection>
class OrderedCollectionTest : public CollectionTest<KindOfCollection> {};
using OrderedKinds = testing::Types<OrderedValues, OrderedNodes>;
TYPED_TEST_SUITE(OrderedCollectionTest, OrderedKinds, );

TYPED_TEST(OrderedCollectionTest, IterationAscendsByTheBytesOfTheKeys) {
    std::vector<String> const ascending = {"",   "\0"sv, " ",    "B",    "a",        "a\0"sv, "a/b",
                                           "a0", "aa",   "\x7f", "\x80", "\xc3\xa4", "\xff"};
    auto added = ascending;
    std::rotate(added.begin(), added.begin() + 5, added.end());
    std::reverse(added.begin(), added.begin() + 7);
    for (auto const& key : added)
        this->add(key, "tea");
    std::vector<String> seen;
    for (auto const& ship : *this->fleet)
        seen.push_back(valueOf(ship).name());
    EXPECT_EQ(seen, ascending);
}

TYPED_TEST(OrderedCollectionTest, AReplacedElementKeepsItsPlace) {
    this->add("b", "1");
    this->add("a", "2");
    this->add("c", "3");
    this->add("b", "4");
    EXPECT_THAT(allShown(*this->fleet), ElementsAre("a=2", "b=4", "c=3"));
}

// --- any row of operations ---

// A collection and a std::map that get the same operations.
template <class KindOfCollection>
class CollectionAndModel {
  public:
    void step() {
        auto const key = *anyKey();
        switch (*rc::gen::weightedElement<int>({{8, 0}, {4, 1}, {2, 2}, {1, 3}, {1, 4}})) {
        case 0: {
            auto const ship = KindOfCollection::make(key, *rc::gen::arbitrary<std::string>());
            fleet_->shipIs(ship);
            model_.insert_or_assign(key, ship);
            break;
        }
        case 1:
            RC_ASSERT(fleet_->shipDel(key) == find(key));
            model_.erase(key);
            break;
        case 2:
            RC_ASSERT(fleet_->ship(key) == find(key));
            break;
        case 3:
            if (!fleet_->empty())
                fleet_->shipIs(*fleet_->begin());
            break;
        default:
            fleet_->shipDelAll();
            model_.clear();
        }
    }

    void compare() const {
        RC_ASSERT(fleet_->size() == model_.size());
        RC_ASSERT(fleet_->empty() == model_.empty());
        std::vector<Element> seen;
        for (auto const& ship : *fleet_) {
            if constexpr (KindOfCollection::holdsNodes)
                RC_ASSERT(ship->references() == 2U);
            seen.push_back(ship);
        }
        if constexpr (!KindOfCollection::isOrdered)
            std::sort(seen.begin(), seen.end(), [](Element const& a, Element const& b) {
                return valueOf(a).name() < valueOf(b).name();
            });
        std::vector<Element> expected;
        for (auto const& entry : model_)
            expected.push_back(entry.second);
        RC_ASSERT(seen == expected);
    }

  private:
    using Collection = typename KindOfCollection::Collection;
    using Element = typename Collection::Element;

    // Few keys, so that they meet; among them bytes of every sort.
    static rc::Gen<std::string> anyKey() {
        return rc::gen::resize(
            3, rc::gen::container<std::string>(rc::gen::elementOf("aB\x80\xff"s + '\0')));
    }
    // std::string compares its characters as bytes, so the map has the order that is asked for.
    Element find(std::string const& key) const {
        auto const found = model_.find(key);
        return found == model_.end() ? Element() : found->second;
    }

    Ptr<Collection> fleet_ = new Collection;
    std::map<std::string, Element> model_;
};

TYPED_TEST(CollectionTest, ItDoesAnyRowOfOperationsAsAMapDoes) {
    EXPECT_TRUE(rc::check([] {
        CollectionAndModel<TypeParam> both;
        for (auto left = *rc::gen::inRange(0, 60); left > 0; --left) {
            both.step();
            both.compare();
        }
    }));
}

} // namespace
