// Assertions, as a release build has them: NDEBUG must not switch them off.
#ifndef NDEBUG
#define NDEBUG
#endif
#include <Fen/Assert.h>

#include <csignal>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CapturedStandardError.h"

namespace {

using testing::KilledBySignal;
using testing::StrEq;

// What a violated assertion of this file prints.
std::string violation(std::string_view text, int line, std::string_view function) {
    return "Assertion failed: " + std::string(text) + ", file " + __FILE__ + ", line " +
           std::to_string(line) + ", function " + std::string(function) + "\n";
}

class Stack {
  public:
    int pop() {
        FEN_ASSERT(!values_.empty());
        auto const value = values_.back();
        values_.pop_back();
        return value;
    }
    static constexpr int lineOfPop = __LINE__ - 5;
    void push(int value) { values_.push_back(value); }

  private:
    std::vector<int> values_;
};

void open(char const* name, char const* text) {
    FEN_ASSERT_MSG(name != nullptr, text);
}
constexpr int lineOfOpen = __LINE__ - 2;

TEST(AssertDeathTest, AViolatedConditionIsPrintedAsWrittenWithItsPlace) {
    Stack stack;
    EXPECT_EXIT(stack.pop(), KilledBySignal(SIGABRT),
                StrEq(violation("!values_.empty()", Stack::lineOfPop, "pop")));
}

TEST(AssertDeathTest, AMessageStandsInPlaceOfTheCondition) {
    EXPECT_EXIT(open(nullptr, "a file needs a name"), KilledBySignal(SIGABRT),
                StrEq(violation("a file needs a name", lineOfOpen, "open")));
}

TEST(AssertDeathTest, FormatCharactersInTheTextStandForThemselves) {
    EXPECT_EXIT(open(nullptr, "100%s of %d"), KilledBySignal(SIGABRT),
                StrEq(violation("100%s of %d", lineOfOpen, "open")));
    int const rest = 1;
    int const line = __LINE__ + 1;
    EXPECT_EXIT(FEN_ASSERT(rest % 2 == 0), KilledBySignal(SIGABRT),
                StrEq(violation("rest % 2 == 0", line, "TestBody")));
}

TEST(AssertDeathTest, APlaceGivenByHandIsPrinted) {
    EXPECT_EXIT(Fen::assertionFailed("condition", "Some.cpp", 42, "someFunction"),
                KilledBySignal(SIGABRT),
                StrEq("Assertion failed: condition, file Some.cpp, line 42, "
                      "function someFunction\n"));
}

TEST(AssertTest, AConditionThatHoldsPrintsNothingAndGoesOn) {
    Stack stack;
    stack.push(7);
    support::CapturedStandardError const standardError;
    EXPECT_EQ(stack.pop(), 7);
    open("Fan", "a file needs a name");
    EXPECT_EQ(standardError.text(), "");
}

TEST(AssertTest, AConditionIsEvaluatedOnce) {
    int evaluations = 0;
    FEN_ASSERT(++evaluations > 0);
    EXPECT_EQ(evaluations, 1);
    FEN_ASSERT_MSG(++evaluations > 0, "counts");
    EXPECT_EQ(evaluations, 2);
}

TEST(AssertTest, AMessageIsOnlyMadeWhenItIsNeeded) {
    int made = 0;
    auto const text = [&made] {
        ++made;
        return "text";
    };
    FEN_ASSERT_MSG(true, text());
    EXPECT_EQ(made, 0);
}

TEST(AssertTest, AConditionMayBeAnythingThatConvertsToBool) {
    auto const pointer = std::make_unique<int>(1);
    FEN_ASSERT(pointer);
    FEN_ASSERT(pointer.get());
    FEN_ASSERT(*pointer);
}

TEST(AssertTest, AnAssertionIsOneStatement) {
    bool reached = false;
    if (reached)
        FEN_ASSERT(!reached);
    else
        reached = true;
    EXPECT_TRUE(reached);
}

} // namespace
