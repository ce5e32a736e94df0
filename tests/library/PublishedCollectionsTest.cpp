// The collections that the published entity hands out: one element per path, added, replaced, found
// and removed by it.
#include <algorithm>
#include <map>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/PublishedDevice.h"

namespace {

using Kelda::ConfigPathInfo;
using Kelda::ConfigPathInfoCol;
using Kelda::MountPathInfo;
using Kelda::MountPathInfoCol;
using Kelda::PreinitPathInfo;
using Kelda::PreinitPathInfoCol;
using support::elementsOf;
using support::textOf;
using testing::ElementsAre;
using testing::IsEmpty;

using Info = Rook::Ptr<MountPathInfo>;

// --- one way to call the three collections ---

struct Mounts {
    using Collection = MountPathInfoCol;
    static auto make() { return Kelda::mountPathInfoColFactory(); }
    static void is(Collection& collection, Rook::String const& path, Rook::String const& type) {
        collection.mountPathDataIs(Kelda::mountPathInfoFactory(path, type, "r"));
    }
    static void del(Collection& collection, Rook::String const& path) {
        collection.mountPathDataDel(path);
    }
    static void delAll(Collection& collection) { collection.mountPathDataDelAll(); }
    // The type that is kept for the path, "(none)" without an element.
    static std::string type(Collection const& collection, Rook::String const& path) {
        auto const info = collection.mountPathData(path);
        return info == nullptr ? "(none)" : info->type().c_str();
    }
    static Rook::String pathOf(Info const& info) { return info->path(); }
};

struct Configs {
    using Collection = ConfigPathInfoCol;
    static auto make() { return Kelda::configPathInfoColFactory(); }
    static void is(Collection& collection, Rook::String const& path, Rook::String const& type) {
        collection.configPathDataIs(ConfigPathInfo(path, type));
    }
    static void del(Collection& collection, Rook::String const& path) {
        collection.configPathDataDel(path);
    }
    static void delAll(Collection& collection) { collection.configPathDataDelAll(); }
    static std::string type(Collection const& collection, Rook::String const& path) {
        auto const info = collection.configPathData(path);
        return info ? info.type().c_str() : "(none)";
    }
    static Rook::String pathOf(ConfigPathInfo const& info) { return info.path(); }
};

struct Preinits {
    using Collection = PreinitPathInfoCol;
    static auto make() { return Kelda::preinitPathInfoColFactory(); }
    static void is(Collection& collection, Rook::String const& path, Rook::String const& type) {
        collection.preinitPathDataIs(PreinitPathInfo(path, type, "createOnMount"));
    }
    static void del(Collection& collection, Rook::String const& path) {
        collection.preinitPathDataDel(path);
    }
    static void delAll(Collection& collection) { collection.preinitPathDataDelAll(); }
    static std::string type(Collection const& collection, Rook::String const& path) {
        auto const info = collection.preinitPathData(path);
        return info ? info.type().c_str() : "(none)";
    }
    static Rook::String pathOf(PreinitPathInfo const& info) { return info.path(); }
};

template <class Kind>
class PublishedCollection : public testing::Test {
  protected:
    using Collection = typename Kind::Collection;

    void is(char const* path, char const* type) { Kind::is(*collection, path, type); }
    std::string type(char const* path) const { return Kind::type(*collection, path); }
    std::vector<std::string> paths() const {
        std::vector<std::string> paths;
        for (auto const& element : *collection)
            paths.emplace_back(Kind::pathOf(element).view());
        return paths;
    }

    Rook::Ptr<Collection> const collection = Kind::make();
};

using Kinds = testing::Types<Mounts, Configs, Preinits>;
TYPED_TEST_SUITE(PublishedCollection, Kinds);

TYPED_TEST(PublishedCollection, IsNewAndEmptyAtFirst) {
    EXPECT_EQ(this->collection->size(), 0U);
    EXPECT_TRUE(this->collection->empty());
    EXPECT_THAT(this->paths(), IsEmpty());
    EXPECT_EQ(this->type("a"), "(none)");
    EXPECT_EQ(this->type(""), "(none)");
    EXPECT_EQ(this->collection->references(), 1U);
    EXPECT_FALSE(this->collection == TypeParam::make());
}

TYPED_TEST(PublishedCollection, FindsAnElementByItsPath) {
    this->is("a/b", "T");
    this->is("a/c", "U");
    EXPECT_EQ(this->type("a/b"), "T");
    EXPECT_EQ(this->type("a/c"), "U");
    for (char const* const path : {"a", "a/b/", "/a/b", "A/B", "a/bb", ""})
        EXPECT_EQ(this->type(path), "(none)") << path;
    EXPECT_EQ(this->collection->size(), 2U);
    EXPECT_FALSE(this->collection->empty());
}

TYPED_TEST(PublishedCollection, KeepsOnlyTheSecondElementOfAPath) {
    this->is("a/c", "Other");
    this->is("a/b", "First");
    this->is("a/b", "Second");
    EXPECT_EQ(this->type("a/b"), "Second");
    EXPECT_EQ(this->type("a/c"), "Other");
    EXPECT_EQ(this->collection->size(), 2U);
    EXPECT_THAT(this->paths(), testing::UnorderedElementsAre("a/b", "a/c"));
}

TYPED_TEST(PublishedCollection, TakesTheEmptyPathForAPath) {
    this->is("", "T");
    this->is("", "U");
    EXPECT_EQ(this->type(""), "U");
    EXPECT_EQ(this->collection->size(), 1U);
    TypeParam::del(*this->collection, "");
    EXPECT_TRUE(this->collection->empty());
}

TYPED_TEST(PublishedCollection, RemovesAnElementByItsPath) {
    this->is("a/b", "T");
    this->is("a/c", "U");
    TypeParam::del(*this->collection, "a/b");
    EXPECT_EQ(this->type("a/b"), "(none)");
    EXPECT_THAT(this->paths(), ElementsAre("a/c"));
}

TYPED_TEST(PublishedCollection, RemovesWhatIsNotThereWithoutAFault) {
    TypeParam::del(*this->collection, "a/b");
    this->is("a/b", "T");
    for (char const* const path : {"a", "a/b/", "a/c", ""})
        TypeParam::del(*this->collection, path);
    EXPECT_THAT(this->paths(), ElementsAre("a/b"));
}

TYPED_TEST(PublishedCollection, RemovesEverythingAtOnce) {
    TypeParam::delAll(*this->collection);
    EXPECT_TRUE(this->collection->empty());
    for (char const* const path : {"a", "b", "c"})
        this->is(path, "T");
    TypeParam::delAll(*this->collection);
    EXPECT_EQ(this->collection->size(), 0U);
    EXPECT_THAT(this->paths(), IsEmpty());
    EXPECT_EQ(this->type("b"), "(none)");
}

TYPED_TEST(PublishedCollection, IsFilledAgainAfterRemoving) {
    this->is("a", "T");
    this->is("b", "T");
    TypeParam::del(*this->collection, "a");
    this->is("a", "U");
    EXPECT_EQ(this->type("a"), "U");
    TypeParam::delAll(*this->collection);
    this->is("b", "V");
    EXPECT_THAT(this->paths(), ElementsAre("b"));
    EXPECT_EQ(this->type("b"), "V");
}

TYPED_TEST(PublishedCollection, IsSharedNotCopied) {
    auto const other = this->collection;
    this->is("a", "T");
    EXPECT_EQ(other->size(), 1U);
    EXPECT_EQ(this->collection->references(), 2U);
    EXPECT_FALSE((std::is_copy_constructible_v<typename TypeParam::Collection>));
}

// A collection that tells of its end.
template <class Collection>
class CountedCollection : public Collection {
  public:
    explicit CountedCollection(int& destroyed) : destroyed_(destroyed) {}
    ~CountedCollection() override { ++destroyed_; }

  private:
    int& destroyed_;
};

TYPED_TEST(PublishedCollection, LivesAsLongAsItsLastReference) {
    using Counted = CountedCollection<typename TypeParam::Collection>;
    int destroyed = 0;
    Rook::Ptr<typename TypeParam::Collection> first = new Counted(destroyed);
    TypeParam::is(*first, "a", "T");
    auto second = first;
    first = nullptr;
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(TypeParam::type(*second, "a"), "T");
    second = nullptr;
    EXPECT_EQ(destroyed, 1);
}

// Adds and removes at random, and does the same to a map.
template <class Kind>
void compareWithAMap() {
    std::map<std::string, std::string> model;
    auto const collection = Kind::make();
    auto const steps = *rc::gen::container<std::vector<std::pair<std::uint8_t, bool>>>(
        rc::gen::pair(rc::gen::inRange<std::uint8_t>(0, 20), rc::gen::arbitrary<bool>()));
    for (std::size_t i = 0; i < steps.size(); ++i) {
        auto const path = "path/" + std::to_string(steps[i].first);
        if (steps[i].second) {
            model[path] = std::to_string(i);
            Kind::is(*collection, path, std::to_string(i));
        } else {
            model.erase(path);
            Kind::del(*collection, path);
        }
    }
    std::map<std::string, std::string> found;
    for (auto const& element : *collection) {
        auto const path = Kind::pathOf(element);
        found.emplace(path.view(), Kind::type(*collection, path));
    }
    RC_ASSERT(found == model);
    RC_ASSERT(collection->size() == model.size());
}

RC_GTEST_PROP(PublishedCollections, OfMountsHoldWhatAMapWouldHold, ()) {
    compareWithAMap<Mounts>();
}
RC_GTEST_PROP(PublishedCollections, OfConfigPathsHoldWhatAMapWouldHold, ()) {
    compareWithAMap<Configs>();
}
RC_GTEST_PROP(PublishedCollections, OfPreinitPathsHoldWhatAMapWouldHold, ()) {
    compareWithAMap<Preinits>();
}

// --- order ---

template <class Kind>
using OrderedPublishedCollection = PublishedCollection<Kind>;
using OrderedKinds = testing::Types<Mounts, Preinits>;
TYPED_TEST_SUITE(OrderedPublishedCollection, OrderedKinds);

TYPED_TEST(OrderedPublishedCollection, GivesItsPathsInByteOrder) {
    for (char const* const path :
         {"b", "a/b", "\xc3\xa9", "a", "a-b", "B", "", "a/a", "%a", "a/b/c", "~", "aa", "10", "9"})
        this->is(path, "T");
    EXPECT_THAT(this->paths(), ElementsAre("", "%a", "10", "9", "B", "a", "a-b", "a/a", "a/b",
                                           "a/b/c", "aa", "b", "~", "\xc3\xa9"));
}

TYPED_TEST(OrderedPublishedCollection, KeepsItsOrderWhenAnElementIsReplaced) {
    for (char const* const path : {"c", "a", "b", "a", "c", "b"})
        this->is(path, "T");
    EXPECT_THAT(this->paths(), ElementsAre("a", "b", "c"));
}

TYPED_TEST(OrderedPublishedCollection, IsInOrderWhateverCameFirst) {
    std::vector<std::string> expected;
    for (int i = 0; i < 500; ++i)
        expected.push_back("slot/" + std::to_string(i * 7919 % 500) + "/fan");
    for (auto const& path : expected)
        this->is(path.c_str(), "T");
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(this->paths(), expected);
}

TEST(ConfigPathCollection, GivesEveryElementOnce) {
    auto const collection = Kelda::configPathInfoColFactory();
    std::vector<std::string> expected;
    for (int i = 0; i < 500; ++i) {
        auto const path = "conf/" + std::to_string(i);
        collection->configPathDataIs(ConfigPathInfo(path, "T"));
        expected.push_back(path + " T");
    }
    EXPECT_THAT(elementsOf(collection), testing::UnorderedElementsAreArray(expected));
}

// --- whole elements ---

TEST(ConfigPathCollection, KeepsAndReplacesWholeValues) {
    auto const collection = Kelda::configPathInfoColFactory();
    ConfigPathInfo info("a", "T");
    collection->configPathDataIs(info);
    info = ConfigPathInfo("a", "U");
    EXPECT_EQ(collection->configPathData("a"), ConfigPathInfo("a", "T")) << "it holds a copy";
    collection->configPathDataIs(info);
    EXPECT_EQ(collection->configPathData("a"), info);
    EXPECT_FALSE(collection->configPathData("b"));
}

TEST(PreinitPathCollection, KeepsAndReplacesWholeValues) {
    auto const collection = Kelda::preinitPathInfoColFactory();
    PreinitPathInfo info("a/%b", "T", "");
    collection->preinitPathDataIs(info);
    info = PreinitPathInfo("a/%b", "U", "createOnMount");
    EXPECT_EQ(collection->preinitPathData("a/%b"), PreinitPathInfo("a/%b", "T", ""));
    collection->preinitPathDataIs(info);
    EXPECT_EQ(collection->preinitPathData("a/%b"), info);
    EXPECT_FALSE(collection->preinitPathData("a/*")) << "tokens stand for themselves";
}

// --- shared elements ---

class MountCollection : public testing::Test {
  protected:
    Rook::Ptr<MountPathInfoCol> const collection = Kelda::mountPathInfoColFactory();
    Info const info = Kelda::mountPathInfoFactory("a/b", "T", "r");
    Info const later = Kelda::mountPathInfoFactory("a/b", "U", "rw");
};

TEST_F(MountCollection, HoldsTheVeryObject) {
    collection->mountPathDataIs(info);
    EXPECT_TRUE(collection->mountPathData("a/b") == info);
    EXPECT_TRUE(*collection->begin() == info);
    EXPECT_EQ(info->references(), 2U);
}

TEST_F(MountCollection, GivesUpTheElementThatIsReplaced) {
    collection->mountPathDataIs(info);
    collection->mountPathDataIs(later);
    EXPECT_TRUE(collection->mountPathData("a/b") == later);
    EXPECT_EQ(info->references(), 1U);
    EXPECT_EQ(later->references(), 2U);
    EXPECT_EQ(textOf(info), "a/b T r") << "the old object itself stays as it was";
}

TEST_F(MountCollection, HoldsAnElementOnceThatIsAddedTwice) {
    collection->mountPathDataIs(info);
    collection->mountPathDataIs(info);
    EXPECT_EQ(info->references(), 2U);
    EXPECT_EQ(collection->size(), 1U);
}

TEST_F(MountCollection, ReturnsTheElementThatItRemoves) {
    collection->mountPathDataIs(info);
    auto const removed = collection->mountPathDataDel("a/b");
    EXPECT_TRUE(removed == info);
    EXPECT_EQ(info->references(), 2U) << "this test's two";
    EXPECT_TRUE(collection->empty());
}

TEST_F(MountCollection, ReturnsNullWhereThereIsNothingToRemove) {
    EXPECT_TRUE(collection->mountPathDataDel("a/b") == nullptr);
    collection->mountPathDataIs(info);
    EXPECT_TRUE(collection->mountPathDataDel("a") == nullptr);
    EXPECT_EQ(collection->size(), 1U);
}

TEST_F(MountCollection, GivesUpAllElementsAtOnce) {
    collection->mountPathDataIs(info);
    collection->mountPathDataDelAll();
    EXPECT_EQ(info->references(), 1U);
}

TEST_F(MountCollection, GivesUpItsElementsAtItsEnd) {
    auto other = Kelda::mountPathInfoColFactory();
    other->mountPathDataIs(info);
    collection->mountPathDataIs(info);
    EXPECT_EQ(info->references(), 3U) << "an element may be in two collections";
    other = nullptr;
    EXPECT_EQ(info->references(), 2U);
    EXPECT_EQ(elementsOf(collection), (std::vector<std::string>{"a/b T r"}));
}

TEST_F(MountCollection, RefusesNullAndStaysAsItIs) {
    EXPECT_THROW(collection->mountPathDataIs(nullptr), Fen::NullArgumentException);
    EXPECT_TRUE(collection->empty());
    collection->mountPathDataIs(info);
    EXPECT_THROW(collection->mountPathDataIs(Info()), Fen::NullArgumentException);
    EXPECT_THAT(elementsOf(collection), ElementsAre("a/b T r"));
    EXPECT_EQ(info->references(), 2U);
}

} // namespace
