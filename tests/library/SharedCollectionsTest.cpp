// Threads that share what an entity published: they read the same collections, take references to
// the same elements, and any of them may drop the last one.
#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/PublishedDevice.h"
#include "support/Threads.h"

namespace {

using Kelda::ConfigPathInfoCol;
using Kelda::MountPathInfo;
using Kelda::MountPathInfoCol;
using Kelda::PreinitPathInfoCol;
using support::elementsOf;
using support::inThreads;
using support::Wrap;

constexpr int rounds = 200;

// Everything that an entity publishes.
struct Published {
    explicit Published(Kelda::AgentMountFileInfoWrap& wrap)
        : mounts(wrap.getMountPathInfoAll("Fan-3")), configs(wrap.getConfigPathInfo()),
          preinits(wrap.getPreinitPathInfo()) {}

    std::vector<std::string> lines() const {
        auto lines = elementsOf(mounts);
        for (auto const& line : elementsOf(configs))
            lines.push_back(line);
        for (auto const& line : elementsOf(preinits))
            lines.push_back(line);
        return lines;
    }

    Rook::Ptr<MountPathInfoCol> mounts;
    Rook::Ptr<ConfigPathInfoCol> configs;
    Rook::Ptr<PreinitPathInfoCol> preinits;
};

class CountedInfo : public MountPathInfo {
  public:
    CountedInfo(Rook::String const& path, std::atomic<int>& destroyed)
        : MountPathInfo(path, "T", "rw"), destroyed_(destroyed) {}
    ~CountedInfo() override { ++destroyed_; }

  private:
    std::atomic<int>& destroyed_;
};

class CountedCol : public MountPathInfoCol {
  public:
    explicit CountedCol(std::atomic<int>& destroyed) : destroyed_(destroyed) {}
    ~CountedCol() override { ++destroyed_; }

  private:
    std::atomic<int>& destroyed_;
};

class SharedCollections : public testing::Test {
  protected:
    static constexpr int elements = 20;
    static std::string pathOf(int i) { return "slot/" + std::to_string(i); }

    Rook::Ptr<MountPathInfoCol> countedCollection() {
        Rook::Ptr<MountPathInfoCol> collection = new CountedCol(destroyedCollections);
        for (int i = 0; i < elements; ++i)
            collection->mountPathDataIs(new CountedInfo(pathOf(i), destroyedElements));
        return collection;
    }

    support::CleanEnvironment environment;
    support::PublishedDevice device;
    std::atomic<int> destroyedElements = 0;
    std::atomic<int> destroyedCollections = 0;
};

TEST_F(SharedCollections, ReadTheSameInTwoThreads) {
    auto const wrap = device.wrap();
    Published const published(*wrap);
    auto const expected = published.lines();
    ASSERT_EQ(expected.size(), 7U + 2U + 10U);
    std::atomic<int> different = 0;
    inThreads(2, [&](int) {
        for (int round = 0; round < rounds; ++round)
            different += published.lines() != expected;
    });
    EXPECT_EQ(different, 0);
}

TEST_F(SharedCollections, AreLookedUpInTwoThreads) {
    auto const wrap = device.wrap();
    Published const published(*wrap);
    std::atomic<int> found = 0;
    inThreads(2, [&](int) {
        for (int round = 0; round < rounds; ++round) {
            found += published.mounts->mountPathData("slot/3")->flags() == "rw";
            found += published.mounts->mountPathData("nowhere") == nullptr;
            found += published.configs->configPathData("conf/y").type() == "Config::Y";
            found += published.preinits->preinitPathData("slot/%slot").attr() == "createOnMount";
        }
    });
    EXPECT_EQ(found, 2 * 4 * rounds);
}

TEST_F(SharedCollections, CountTheReferencesOfTwoThreads) {
    auto const collection = countedCollection();
    inThreads(2, [&](int) {
        for (int round = 0; round < rounds; ++round) {
            auto const mine = collection;
            for (auto const& element : *mine)
                Rook::Ptr<MountPathInfo> const reference = element;
        }
    });
    EXPECT_EQ(collection->references(), 1U);
    for (auto const& element : *collection)
        EXPECT_EQ(element->references(), 1U) << element->path();
    EXPECT_EQ(destroyedElements, 0);
}

TEST_F(SharedCollections, GoWithTheLastReferenceWhicheverThreadDropsIt) {
    for (int round = 0; round < rounds; ++round) {
        std::vector<Rook::Ptr<MountPathInfoCol>> references(2, countedCollection());
        inThreads(2, [&](int thread) {
            auto mine = std::move(references[static_cast<std::size_t>(thread)]);
            EXPECT_EQ(mine->size(), static_cast<std::size_t>(elements));
            mine = nullptr;
        });
    }
    EXPECT_EQ(destroyedCollections, rounds);
    EXPECT_EQ(destroyedElements, rounds * elements);
}

TEST_F(SharedCollections, LeaveTheirElementsToTheThreadsThatHoldThem) {
    for (int round = 0; round < rounds; ++round) {
        auto collection = countedCollection();
        std::vector<std::vector<Rook::Ptr<MountPathInfo>>> held(
            2, {collection->begin(), collection->end()});
        // One thread drops the collection, both their elements.
        inThreads(2, [&](int thread) {
            if (thread == 0)
                collection = nullptr;
            auto& mine = held[static_cast<std::size_t>(thread)];
            while (!mine.empty()) {
                EXPECT_EQ(mine.back()->type(), "T");
                mine.pop_back();
            }
        });
    }
    EXPECT_EQ(destroyedCollections, rounds);
    EXPECT_EQ(destroyedElements, rounds * elements);
}

TEST_F(SharedCollections, GiveAReferenceOfOneThreadToTheOther) {
    auto const collection = countedCollection();
    for (int round = 0; round < rounds; ++round) {
        std::atomic<MountPathInfo*> handedOver = nullptr;
        inThreads(2, [&](int thread) {
            if (thread == 0) {
                auto const info = collection->mountPathData(pathOf(round % elements));
                handedOver = info.get();
                return;
            }
            while (handedOver == nullptr)
                std::this_thread::yield();
            Rook::Ptr<MountPathInfo> const mine = handedOver.load();
            EXPECT_EQ(mine->path(), Rook::String(pathOf(round % elements)));
        });
    }
    EXPECT_EQ(destroyedElements, 0);
}

TEST_F(SharedCollections, AreReadWhileAnotherThreadDestroysTheEntity) {
    for (int round = 0; round < rounds / 10; ++round) {
        auto wrap = device.wrap();
        Published const published(*wrap);
        auto const expected = published.lines();
        inThreads(2, [&](int thread) {
            if (thread == 0)
                wrap = nullptr;
            else
                EXPECT_EQ(published.lines(), expected);
        });
        EXPECT_EQ(published.configs->references(), 1U);
        EXPECT_EQ(published.preinits->references(), 1U);
    }
}

TEST_F(SharedCollections, OfTheEntityGoWithTheLastThreadThatHoldsThem) {
    for (int round = 0; round < rounds / 10; ++round) {
        auto wrap = device.wrap();
        auto configs = wrap->getConfigPathInfo();
        auto preinits = wrap->getPreinitPathInfo();
        // The entity and its collections go at the same time, in either order.
        inThreads(2, [&](int thread) {
            if (thread == 0) {
                wrap = nullptr;
                return;
            }
            EXPECT_EQ(configs->size(), 2U);
            EXPECT_EQ(preinits->size(), 10U);
            configs = nullptr;
            preinits = nullptr;
        });
        EXPECT_TRUE(wrap == nullptr && configs == nullptr && preinits == nullptr);
    }
}

TEST_F(SharedCollections, OfTwoEntitiesInTwoThreadsAreApart) {
    auto const sortedLines = [this] {
        auto lines = Published(*device.wrap()).lines();
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    auto const expected = sortedLines();
    std::atomic<int> different = 0;
    inThreads(2, [&](int) {
        for (int round = 0; round < rounds / 10; ++round)
            different += sortedLines() != expected;
    });
    EXPECT_EQ(different, 0);
}

} // namespace
