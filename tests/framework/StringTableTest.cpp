// How strings share their buffers, and how the table of buffers gives them back.
#include <Rook/String.h>

#include <array>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Threads.h"

namespace {

using Rook::String;
using namespace std::string_literals;

std::string numbered(std::string_view prefix, int number) {
    return std::string(prefix) + std::to_string(number);
}

std::vector<String> manyStrings(std::string_view prefix, int count) {
    std::vector<String> strings;
    for (int number = 0; number < count; ++number)
        strings.emplace_back(numbered(prefix, number));
    return strings;
}

// The figures of a table that holds used buffers only.
String::TableFigures figuresOfUsed() {
    String::defragment();
    return String::tableFigures();
}

void expectSame(String::TableFigures const& figures, String::TableFigures const& expected) {
    EXPECT_EQ(figures.buffers, expected.buffers);
    EXPECT_EQ(figures.bytes, expected.bytes);
}

// --- sharing ---

TEST(StringTableTest, EqualStringsShareOneBuffer) {
    String const first = "StringTableTest: shared";
    String const fromString = "StringTableTest: shared"s;
    String const joined = String("StringTableTest: ") + "shared";
    String const cut = String("StringTableTest: shared or not").substr(0, 23);
    String const lowered = String("StringTableTest: SHARED").toLower();
    EXPECT_EQ(static_cast<void const*>(fromString.c_str()), first.c_str());
    EXPECT_EQ(static_cast<void const*>(joined.c_str()), first.c_str());
    EXPECT_EQ(static_cast<void const*>(cut.c_str()), first.c_str());
    EXPECT_EQ(static_cast<void const*>(lowered.c_str()), first.toLower().c_str());
}

TEST(StringTableTest, AThousandEqualStringsTakeOneBuffer) {
    auto const before = String::tableFigures();
    std::vector<String> const strings(1000, "StringTableTest: one of a thousand");
    std::set<void const*> buffers;
    for (auto const& string : strings)
        buffers.insert(string.c_str());
    EXPECT_EQ(buffers.size(), 1U);
    EXPECT_EQ(String::tableFigures().buffers, before.buffers + 1);
}

TEST(StringTableTest, DifferentStringsHaveBuffersOfTheirOwn) {
    auto const strings = manyStrings("StringTableTest: own ", 1000);
    std::set<void const*> buffers;
    for (auto const& string : strings)
        buffers.insert(string.c_str());
    EXPECT_EQ(buffers.size(), strings.size());
}

// So many texts that some of them have the same hash, and all alike up to the first NUL.
TEST(StringTableTest, TextsWithEqualHashesAreKeptApart) {
    auto const prefix = "StringTableTest\0"s;
    auto const strings = manyStrings(prefix, 300000);
    for (int number = 0; number < 300000; ++number)
        ASSERT_EQ(strings[static_cast<std::size_t>(number)], numbered(prefix, number));
}

TEST(StringTableTest, LongTextsAreSharedToo) {
    for (std::size_t const size : {499U, 500U, 512U, 513U, 1024U, 100000U}) {
        std::string const model(size, 'l');
        String const first = model;
        String const second = model;
        EXPECT_EQ(static_cast<void const*>(first.c_str()), second.c_str()) << size;
        EXPECT_TRUE(first == model) << size;
    }
}

TEST(StringTableTest, TheEmptyStringTakesNoBuffer) {
    auto const before = String::tableFigures();
    std::array<String, 3> const strings = {String(), String(""), String("a").substr(1)};
    EXPECT_LE(String::tableFigures().buffers, before.buffers + 1); // "a" may be new
    EXPECT_EQ(strings[0], strings[1]);
    EXPECT_EQ(strings[0], strings[2]);
}

// --- giving back ---

TEST(StringTableTest, DefragmentingGivesBackWhatNoStringUses) {
    auto const before = figuresOfUsed();
    {
        auto const strings = manyStrings("StringTableTest: given back ", 5000);
        EXPECT_EQ(String::tableFigures().buffers, before.buffers + 5000);
        EXPECT_GE(String::tableFigures().bytes, before.bytes + 5000 * 30);
    }
    expectSame(figuresOfUsed(), before);
}

TEST(StringTableTest, DefragmentingKeepsWhatAStringUses) {
    auto strings = manyStrings("StringTableTest: kept ", 3000);
    std::vector<char const*> buffers;
    for (auto const& string : strings)
        buffers.push_back(string.c_str());
    auto const before = String::tableFigures().buffers;
    String::defragment();
    EXPECT_LE(String::tableFigures().buffers, before);
    for (int number = 0; number < 3000; ++number) {
        auto const index = static_cast<std::size_t>(number);
        EXPECT_EQ(strings[index], numbered("StringTableTest: kept ", number));
        EXPECT_EQ(static_cast<void const*>(strings[index].c_str()), buffers[index]);
    }
}

TEST(StringTableTest, AnEqualStringIsStillSharedAfterDefragmenting) {
    auto strings = manyStrings("StringTableTest: holes ", 2000);
    for (std::size_t index = 0; index < strings.size(); index += 2)
        strings[index] = String();
    String::defragment();
    for (int number = 1; number < 2000; number += 2) {
        String const again = numbered("StringTableTest: holes ", number);
        EXPECT_EQ(again, strings[static_cast<std::size_t>(number)]) << number;
    }
}

TEST(StringTableTest, DroppingOneOfTwoStringsKeepsTheirBuffer) {
    auto const before = figuresOfUsed();
    auto first = std::make_unique<String>("StringTableTest: two of a kind");
    String const second = *first;
    first.reset();
    EXPECT_EQ(figuresOfUsed().buffers, before.buffers + 1);
    EXPECT_EQ(second, "StringTableTest: two of a kind");
}

TEST(StringTableTest, AssignmentDropsTheFormerText) {
    auto const before = figuresOfUsed();
    String text = "StringTableTest: former";
    text = "StringTableTest: latter";
    String const copied = "StringTableTest: copied";
    text = copied;
    EXPECT_EQ(figuresOfUsed().buffers, before.buffers + 1);
    text += " and appended to";
    EXPECT_EQ(figuresOfUsed().buffers, before.buffers + 2);
}

TEST(StringTableTest, ADroppedTextThatComesBackIsFoundAgain) {
    { String const dropped = "StringTableTest: comes back"; }
    auto const before = String::tableFigures();
    String const again = "StringTableTest: comes back";
    EXPECT_EQ(again, "StringTableTest: comes back");
    expectSame(String::tableFigures(), before);
    String::defragment();
    EXPECT_EQ(again, "StringTableTest: comes back");
    EXPECT_EQ(again, String("StringTableTest: comes "s + "back"));
}

TEST(StringTableTest, LongTextsAreGivenBackWhole) {
    auto const before = figuresOfUsed();
    {
        String const text = std::string(1000000, 'w');
        EXPECT_GE(String::tableFigures().bytes, before.bytes + 1000000);
    }
    expectSame(figuresOfUsed(), before);
}

TEST(StringTableTest, TextsThatComeAndGoDoNotPileUp) {
    auto const before = figuresOfUsed();
    auto const room = before.buffers + 1000;
    for (std::size_t number = 0; number < 6 * room; ++number)
        String const passing = "StringTableTest: passing " + std::to_string(number);
    EXPECT_LE(String::tableFigures().buffers, 4 * room);
    expectSame(figuresOfUsed(), before);
}

TEST(StringTableTest, ManyStringsAreDroppedAndMadeAgain) {
    auto const before = figuresOfUsed();
    for (int round = 0; round < 5; ++round) {
        auto const strings = manyStrings("StringTableTest: again ", 20000);
        auto const same = manyStrings("StringTableTest: again ", 20000);
        EXPECT_EQ(strings, same);
        for (int number = 0; number < 20000; ++number)
            ASSERT_EQ(strings[static_cast<std::size_t>(number)],
                      numbered("StringTableTest: again ", number));
        EXPECT_EQ(String::tableFigures().buffers, before.buffers + 20000);
    }
    expectSame(figuresOfUsed(), before);
}

// Strings and their models, changed together step by step.
class Shelf {
  public:
    void step(std::mt19937& random) {
        auto const to = random() % slots;
        auto const from = random() % slots;
        switch (random() % 8) {
        case 0:
            put(to, "", "");
            break;
        case 1:
            put(to, strings_[from], models_[from]);
            break;
        case 2:
            std::swap(strings_[to], strings_[from]), std::swap(models_[to], models_[from]);
            break;
        case 3:
            strings_[to] += "+", models_[to] += "+";
            break;
        default:
            make(to, static_cast<int>(random() % 3000));
            break;
        }
    }
    void expectEqualToModels() const {
        for (std::size_t index = 0; index < slots; ++index)
            ASSERT_EQ(strings_[index], models_[index]);
    }
    std::size_t differentTexts() const {
        std::set<std::string> texts(models_.begin(), models_.end());
        texts.erase("");
        return texts.size();
    }

  private:
    static constexpr std::size_t slots = 2000;

    void make(std::size_t to, int number) {
        auto const text = numbered("StringTableTest: shelf ", number);
        put(to, text, text);
    }
    void put(std::size_t to, String const& string, std::string const& model) {
        strings_[to] = string;
        models_[to] = model;
    }

    std::vector<String> strings_ = std::vector<String>(slots);
    std::vector<std::string> models_ = std::vector<std::string>(slots);
};

TEST(StringTableTest, AnySequenceOfStepsKeepsEveryTextAndNoOther) {
    auto const before = figuresOfUsed();
    std::mt19937 random(20240607);
    {
        Shelf shelf;
        for (int round = 0; round < 40; ++round) {
            for (int step = 0; step < 2500; ++step)
                shelf.step(random);
            ASSERT_NO_FATAL_FAILURE(shelf.expectEqualToModels()) << "round " << round;
            ASSERT_EQ(figuresOfUsed().buffers, before.buffers + shelf.differentTexts());
        }
    }
    expectSame(figuresOfUsed(), before);
}

// --- threads ---

TEST(StringTableTest, TwoThreadsMakeAndDropTheSameTexts) {
    auto const before = figuresOfUsed();
    std::array<int, 2> wrong{};
    support::inThreads(2, [&wrong](int thread) {
        for (int step = 0; step < 20000; ++step) {
            auto const model = numbered("StringTableTest: threads ", step % 300);
            String const made = model;
            String const copy = made;
            if (copy != model || copy.c_str() != made.c_str())
                ++wrong[static_cast<std::size_t>(thread)];
        }
    });
    EXPECT_THAT(wrong, testing::Each(0));
    expectSame(figuresOfUsed(), before);
}

TEST(StringTableTest, StringsOfTwoThreadsShareTheirBuffers) {
    std::array<std::vector<String>, 2> strings;
    support::inThreads(2, [&strings](int thread) {
        strings[static_cast<std::size_t>(thread)] = manyStrings("StringTableTest: both ", 5000);
    });
    ASSERT_EQ(strings[0].size(), 5000U);
    for (std::size_t index = 0; index < 5000; ++index)
        ASSERT_EQ(static_cast<void const*>(strings[0][index].c_str()), strings[1][index].c_str());
}

TEST(StringTableTest, NoReferenceIsLostWhenThreadsCopyOneString) {
    auto const before = figuresOfUsed();
    {
        String const shared = "StringTableTest: copied by all";
        support::inThreads(2, [&shared](int) {
            for (int step = 0; step < 1000000; ++step) {
                std::array<String, 3> copies = {shared, shared, shared};
                copies[0] = copies[1];
                copies[1] = std::move(copies[2]);
            }
        });
        EXPECT_EQ(figuresOfUsed().buffers, before.buffers + 1);
        EXPECT_EQ(shared, "StringTableTest: copied by all");
    }
    expectSame(figuresOfUsed(), before);
}

TEST(StringTableTest, AThreadMayDefragmentWhileOthersMakeStrings) {
    auto const before = figuresOfUsed();
    std::array<int, 3> wrong{};
    support::inThreads(3, [&wrong](int thread) {
        for (int step = 0; step < 3000; ++step) {
            if (thread == 0 && step % 50 == 0)
                String::defragment();
            auto const model = numbered("StringTableTest: swept ", step % 50);
            String const made = model;
            if (made != model)
                ++wrong[static_cast<std::size_t>(thread)];
        }
    });
    EXPECT_THAT(wrong, testing::Each(0));
    expectSame(figuresOfUsed(), before);
}

TEST(StringTableTest, AStringMadeInOneThreadIsDroppedInAnother) {
    auto const before = figuresOfUsed();
    std::vector<String> strings;
    support::inThreads(1, [&](int) { strings = manyStrings("StringTableTest: passed on ", 500); });
    support::inThreads(1, [&](int) {
        EXPECT_EQ(strings.back(), "StringTableTest: passed on 499");
        strings = {};
    });
    expectSame(figuresOfUsed(), before);
}

} // namespace
