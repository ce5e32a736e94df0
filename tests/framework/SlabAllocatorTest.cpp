// The allocator with which containers draw on a slab.
#include <MemSlab/Slab.h>

#include <functional>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <new>
#include <numeric>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using MemSlab::Allocator;
using MemSlab::Slab;

template <class T>
using Vector = std::vector<T, Allocator<T>>;
using Text = std::basic_string<char, std::char_traits<char>, Allocator<char>>;
template <class K, class V>
using Map = std::map<K, V, std::less<>, Allocator<std::pair<K const, V>>>;
template <class K, class V>
using HashMap =
    std::unordered_map<K, V, std::hash<K>, std::equal_to<>, Allocator<std::pair<K const, V>>>;

TEST(SlabAllocatorTest, ContainersDrawOnItsSlab) {
    Slab slab("containers");
    {
        Vector<int> vector({1, 2, 3}, Allocator<int>(slab));
        EXPECT_EQ(slab.bytesInUse(), 3 * sizeof(int));
        vector.reserve(1000);
        EXPECT_EQ(slab.bytesInUse(), 1000 * sizeof(int));
        EXPECT_THAT(vector, testing::ElementsAre(1, 2, 3));
    }
    EXPECT_EQ(slab.bytesInUse(), 0U);
}

TEST(SlabAllocatorTest, MapsOfAnyKindWorkWithIt) {
    Slab slab("maps");
    {
        Map<std::string, int> map{Allocator<int>(slab)};
        HashMap<std::string, int> hashMap{Allocator<int>(slab)};
        for (int number = 0; number < 3000; ++number)
            map[std::to_string(number)] = hashMap[std::to_string(number)] = number;
        for (int number = 0; number < 3000; number += 2)
            map.erase(std::to_string(number)), hashMap.erase(std::to_string(number));
        EXPECT_EQ(map.size(), 1500U);
        EXPECT_EQ(hashMap.size(), 1500U);
        EXPECT_EQ(map.at("2999"), 2999);
        EXPECT_EQ(hashMap.at("2999"), 2999);
        EXPECT_GE(slab.bytesInUse(), 3000 * (sizeof(std::string) + sizeof(int)));
    }
    EXPECT_EQ(slab.bytesInUse(), 0U);
}

TEST(SlabAllocatorTest, ListsAndTextsWorkWithIt) {
    Slab slab("lists");
    {
        std::list<int, Allocator<int>> list{Allocator<int>(slab)};
        for (int number = 0; number < 100; ++number)
            list.push_back(number);
        EXPECT_EQ(std::accumulate(list.begin(), list.end(), 0), 4950);
        Text text(300, 'x', Allocator<char>(slab));
        text += text;
        EXPECT_EQ(text, Text(600, 'x', Allocator<char>(slab)));
        EXPECT_GE(slab.bytesInUse(), 100 * sizeof(int) + 600);
    }
    EXPECT_EQ(slab.bytesInUse(), 0U);
}

TEST(SlabAllocatorTest, AllocatorsOfOneSlabAreEqualWhateverTheyAllocate) {
    Slab slab("equal");
    Slab other("other");
    Allocator<int> const ints(slab);
    Allocator<double> const doubles = ints;
    EXPECT_TRUE(ints == doubles);
    EXPECT_TRUE(ints == Allocator<int>(slab));
    EXPECT_TRUE(ints != Allocator<int>(other));
    EXPECT_EQ(&doubles.slab(), &slab);
}

TEST(SlabAllocatorTest, WithoutASlabItDrawsOnTheDefaultOne) {
    auto& slab = MemSlab::slab("default");
    auto const before = slab.bytesInUse();
    Vector<char> const vector(100);
    EXPECT_EQ(&vector.get_allocator().slab(), &slab);
    EXPECT_EQ(slab.bytesInUse(), before + 100);
}

TEST(SlabAllocatorTest, ACountThatOverflowsIsRefused) {
    Slab slab("overflow");
    Allocator<int> ints(slab);
    auto const tooMany = std::numeric_limits<std::size_t>::max() / sizeof(int) + 1;
    EXPECT_THROW(static_cast<void>(ints.allocate(tooMany)), std::bad_array_new_length);
    EXPECT_EQ(slab.bytesInUse(), 0U);
    EXPECT_EQ(slab.bytesHeld(), 0U);
}

TEST(SlabAllocatorTest, AMovedContainerTakesItsMemoryAndSlabAlong) {
    Slab from("from");
    Slab to("to");
    Vector<int> source(1000, 7, Allocator<int>(from));
    auto const* const memory = source.data();
    Vector<int> target(10, 1, Allocator<int>(to));
    target = std::move(source);
    EXPECT_EQ(target.data(), memory);
    EXPECT_EQ(&target.get_allocator().slab(), &from);
    EXPECT_EQ(from.bytesInUse(), 1000 * sizeof(int));
    EXPECT_EQ(to.bytesInUse(), 0U);
}

TEST(SlabAllocatorTest, SwappedContainersSwapTheirSlabs) {
    Slab first("first");
    Slab second("second");
    Map<int, int> a({{1, 1}}, Allocator<int>(first));
    Map<int, int> b({{2, 2}, {3, 3}}, Allocator<int>(second));
    std::swap(a, b);
    EXPECT_EQ(&a.get_allocator().slab(), &second);
    EXPECT_EQ(&b.get_allocator().slab(), &first);
    EXPECT_EQ(a.size(), 2U);
    a.clear();
    EXPECT_EQ(second.bytesInUse(), 0U);
    EXPECT_GT(first.bytesInUse(), 0U);
    EXPECT_EQ(b.at(1), 1);
}

TEST(SlabAllocatorTest, ACopyDrawsOnTheSlabOfItsOriginal) {
    Slab slab("original");
    Slab other("other");
    Vector<int> const original(100, 7, Allocator<int>(slab));
    auto const copy = original;
    EXPECT_EQ(slab.bytesInUse(), 200 * sizeof(int));
    Vector<int> assigned(5, 1, Allocator<int>(other));
    assigned = original;
    EXPECT_EQ(&assigned.get_allocator().slab(), &slab);
    EXPECT_EQ(slab.bytesInUse(), 300 * sizeof(int));
    EXPECT_EQ(other.bytesInUse(), 0U);
    EXPECT_EQ(assigned, copy);
}

TEST(SlabAllocatorTest, SwappingWithAnEmptyContainerGivesTheMemoryBack) {
    Slab slab("emptied");
    HashMap<int, int> map{Allocator<int>(slab)};
    for (int number = 0; number < 1000; ++number)
        map[number] = number;
    HashMap<int, int>(map.get_allocator()).swap(map);
    EXPECT_EQ(map.size(), 0U);
    EXPECT_EQ(map.bucket_count(), 1U);
    EXPECT_EQ(slab.bytesInUse(), 0U);
    map[1] = 1;
    EXPECT_GT(slab.bytesInUse(), 0U);
}

TEST(SlabAllocatorTest, MemoryOutlivesWhoeverAskedForIt) {
    struct Asker {
        Vector<int> numbers{Allocator<int>(MemSlab::slab("SlabTest asker"))};
    };
    auto asker = std::make_unique<Asker>();
    asker->numbers.assign(500, 42);
    auto const kept = std::move(asker->numbers);
    asker.reset();
    EXPECT_THAT(kept, testing::AllOf(testing::SizeIs(500), testing::Each(42)));
}

} // namespace
