// Rook::String as a value: what it is made from, what it tells, and what is made from it.
#include <Rook/String.h>

#include <algorithm>
#include <compare>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

using Rook::String;
using namespace std::string_literals;
using namespace std::string_view_literals;

static_assert(sizeof(String) == sizeof(void*));
static_assert(std::is_convertible_v<char const*, String>);
static_assert(std::is_convertible_v<std::string_view, String>);
static_assert(std::is_convertible_v<std::string, String>);
static_assert(std::is_convertible_v<String, std::string_view>);
static_assert(std::is_nothrow_copy_constructible_v<String>);
static_assert(std::is_nothrow_move_constructible_v<String>);
static_assert(std::three_way_comparable<String, std::strong_ordering>);

// --- construction ---

TEST(StringTest, ADefaultStringIsEmpty) {
    String const text;
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(text.size(), 0U);
    EXPECT_STREQ(text.c_str(), "");
    EXPECT_EQ(text.view(), ""sv);
}

TEST(StringTest, AnEmptyTextOfAnyKindGivesTheDefaultString) {
    for (String const& text : {String(""), String(""sv), String(""s), String(std::string_view()),
                               String("x").substr(1), String() + ""}) {
        EXPECT_TRUE(text.empty());
        EXPECT_EQ(text, String());
        EXPECT_EQ(text.hash(), String().hash());
    }
}

TEST(StringTest, ANullPointerGivesTheEmptyString) {
    char const* const nothing = nullptr;
    String const text = nothing;
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(text, String());
    EXPECT_STREQ(text.c_str(), "");
}

TEST(StringTest, CharactersViewsAndStandardStringsMakeTheSameString) {
    String const fromCharacters = "hardware/fan";
    String const fromView = "hardware/fan/3"sv.substr(0, 12);
    String const fromString = "hardware/fan"s;
    EXPECT_EQ(fromCharacters, fromView);
    EXPECT_EQ(fromCharacters, fromString);
    EXPECT_EQ(fromCharacters.size(), 12U);
    EXPECT_FALSE(fromCharacters.empty());
}

TEST(StringTest, TheCharactersEndWithANulAlsoWhenMadeFromAPartOfAText) {
    String const part = "sys/clock/extra"sv.substr(4, 5);
    EXPECT_STREQ(part.c_str(), "clock");
    EXPECT_EQ(part.c_str()[part.size()], '\0');
}

TEST(StringTest, AStringIsReadThroughItsViewAndByConversion) {
    String const text = "sys/clock";
    std::string_view const converted = text;
    EXPECT_EQ(converted, "sys/clock"sv);
    EXPECT_EQ(text.view(), "sys/clock"sv);
    EXPECT_EQ(static_cast<void const*>(converted.data()), text.c_str());
}

TEST(StringTest, NulCharactersAreCharactersLikeAnyOther) {
    String const text = "a\0b"sv;
    EXPECT_EQ(text.size(), 3U);
    EXPECT_EQ(text.view(), "a\0b"sv);
    EXPECT_NE(text, String("a"));
    EXPECT_NE(text, String("a\0c"sv));
    EXPECT_NE(String("\0"sv), String());
    EXPECT_NE(String("a\0"sv), String("a"));
    EXPECT_EQ(text.find("b"), 2U);
}

TEST(StringTest, TheSourceMayChangeAfterwards) {
    std::string source = "before";
    String const text = source;
    source = "after!";
    EXPECT_EQ(text, "before");
}

// --- copies and moves ---

TEST(StringTest, ACopyOutlivesItsOriginal) {
    String copy;
    {
        String const original = "StringTest: a text that only this test has";
        copy = original;
    }
    EXPECT_EQ(copy, "StringTest: a text that only this test has");
}

TEST(StringTest, AMoveHandsTheTextOver) {
    String source = "moved text";
    String made = std::move(source);
    EXPECT_EQ(made, "moved text");
    String assigned = "former text";
    assigned = std::move(made);
    EXPECT_EQ(assigned, "moved text");
    made = "used again";
    EXPECT_EQ(made, "used again");
}

TEST(StringTest, AssigningAStringToItselfChangesNothing) {
    String text = "StringTest: assigned to itself";
    auto& same = text;
    text = same;
    EXPECT_EQ(text, "StringTest: assigned to itself");
    text = std::move(same);
    EXPECT_EQ(text, "StringTest: assigned to itself");
}

TEST(StringTest, StringsSwap) {
    String a = "left";
    String b;
    std::swap(a, b);
    EXPECT_EQ(a, "");
    EXPECT_EQ(b, "left");
}

// --- comparison and hash ---

TEST(StringTest, AStringComparesWithTextsOfAnyKindFromEitherSide) {
    String const text = "fan";
    EXPECT_TRUE(text == "fan" && "fan" == text && text == "fan"s && "fan"sv == text);
    EXPECT_TRUE(text != "fa" && "fann" != text && text != "Fan"s && ""sv != text);
    EXPECT_TRUE(text < "fao" && "fam" < text && text > "fa"s && "fb"sv > text);
    EXPECT_TRUE(text <= "fan" && "fan" >= text && text >= "fan"s && "fan"sv <= text);
    EXPECT_TRUE(text == String("fan") && text < String("fans") && text > String());
}

TEST(StringTest, TheOrderIsThatOfUnsignedBytes) {
    std::vector<String> const inOrder = {"",      "\0"sv, "\0a"sv, "A",    "Z",    "a",   "a\0"sv,
                                         "a\x01", "aa",   "b",     "\x7f", "\x80", "\xff"};
    for (std::size_t i = 0; i < inOrder.size(); ++i)
        for (std::size_t j = 0; j < inOrder.size(); ++j) {
            EXPECT_EQ(inOrder[i] <=> inOrder[j], i <=> j) << i << " and " << j;
            EXPECT_EQ(inOrder[i] <=> inOrder[j].view(), i <=> j) << i << " and " << j;
        }
}

TEST(StringTest, EqualStringsHaveEqualHashes) {
    for (auto const text : {""sv, "a"sv, "seven77"sv, "eight888"sv, "nine99999"sv, "\0\0"sv}) {
        EXPECT_EQ(String(text).hash(), String(std::string(text)).hash()) << text;
        EXPECT_EQ(std::hash<String>()(text), String(text).hash()) << text;
    }
}

TEST(StringTest, DifferentStringsRarelyShareAHash) {
    std::set<std::size_t> hashes;
    for (int number = 0; number < 10000; ++number)
        hashes.insert(String("hardware/fan/" + std::to_string(number)).hash());
    EXPECT_GE(hashes.size(), 9990U);
}

TEST(StringTest, TextsThatDifferInLengthByNulsOnlyHaveDifferentHashes) {
    std::set<std::size_t> hashes;
    for (std::size_t size = 0; size < 40; ++size)
        hashes.insert(String(std::string(size, '\0')).hash());
    EXPECT_EQ(hashes.size(), 40U);
}

TEST(StringTest, HashedContainersFindEveryKey) {
    std::unordered_map<String, int> numbers;
    for (int number = 0; number < 2000; ++number)
        numbers["key " + std::to_string(number)] = number;
    ASSERT_EQ(numbers.size(), 2000U);
    for (int number = 0; number < 2000; ++number)
        EXPECT_EQ(numbers.at("key " + std::to_string(number)), number);
    EXPECT_FALSE(numbers.contains("key 2000"));
    std::unordered_set<String> const set = {"a", "b", "a"s, "b"sv};
    EXPECT_EQ(set.size(), 2U);
}

TEST(StringTest, OrderedContainersKeepByteOrderAndFindPlainTexts) {
    std::map<String, int, std::less<>> const numbers = {{"b", 2}, {"\xff", 4}, {"", 0}, {"a", 1}};
    std::vector<int> inOrder;
    for (auto const& [key, number] : numbers)
        inOrder.push_back(number);
    EXPECT_THAT(inOrder, testing::ElementsAre(0, 1, 2, 4));
    EXPECT_NE(numbers.find("b"sv), numbers.end());
    EXPECT_EQ(numbers.find("c"), numbers.end());
}

// --- operations ---

TEST(StringTest, FindGivesTheFirstOffsetAtOrAfterTheGivenOne) {
    String const text = "ab%ab%";
    EXPECT_EQ(text.find("%"), 2U);
    EXPECT_EQ(text.find("%", 2), 2U);
    EXPECT_EQ(text.find("%", 3), 5U);
    EXPECT_EQ(text.find("%", 6), String::npos);
    EXPECT_EQ(text.find(String("b%")), 1U);
    EXPECT_EQ(text.find("x"), String::npos);
    EXPECT_EQ(text.find("", 6), 6U);
    EXPECT_EQ(text.find("", 7), String::npos);
}

TEST(StringTest, SubstrCutsAtTheEndAndIsEmptyBeyondIt) {
    String const text = "hardware";
    EXPECT_EQ(text.substr(4), "ware");
    EXPECT_EQ(text.substr(0, 4), "hard");
    EXPECT_EQ(text.substr(4, 100), "ware");
    EXPECT_EQ(text.substr(4, 0), "");
    EXPECT_EQ(text.substr(8), "");
    EXPECT_EQ(text.substr(9), "");
    EXPECT_EQ(text.substr(String::npos), "");
    EXPECT_EQ(text.substr(0), text);
}

TEST(StringTest, StartsWithAndEndsWithCompareTheWholeAffix) {
    String const text = "Fan-%slot";
    EXPECT_TRUE(text.startsWith("Fan-") && text.startsWith("") && text.startsWith(text));
    EXPECT_TRUE(text.endsWith("%slot") && text.endsWith("") && text.endsWith(text));
    EXPECT_FALSE(text.startsWith("fan") || text.startsWith("Fan-%slot$"));
    EXPECT_FALSE(text.endsWith("Slot") || text.endsWith("-Fan-%slot"));
    EXPECT_FALSE(String().startsWith("a") || String().endsWith("a"));
}

TEST(StringTest, ToLowerTurnsOnlyTheLettersAToZ) {
    std::string everyByte;
    std::string lowered;
    for (int byte = 0; byte < 256; ++byte) {
        everyByte += static_cast<char>(byte);
        lowered += static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + 32 : byte);
    }
    EXPECT_EQ(String(everyByte).toLower(), lowered);
    EXPECT_EQ(String("%CellId").toLower(), "%cellid");
    EXPECT_EQ(String().toLower(), "");
}

TEST(StringTest, PlusJoinsStringsWithTextsOfAnyKind) {
    String const text = "b";
    EXPECT_EQ(text + text, "bb");
    EXPECT_EQ("a" + text + "c", "abc");
    EXPECT_EQ("a"s + text + "c"s, "abc");
    EXPECT_EQ("a"sv + text + "c"sv, "abc");
    EXPECT_EQ(text + "\0c"sv, "b\0c"sv);
    EXPECT_EQ(String() + String(), String());
    EXPECT_TRUE((std::is_same_v<decltype("a" + text), String>));
}

TEST(StringTest, PlusEqualsAppendsTextsOfAnyKind) {
    String text;
    text += "a";
    text += String("b");
    text += "c"s;
    text += "d"sv;
    EXPECT_EQ(text, "abcd");
    EXPECT_EQ(text += text, "abcdabcd");
    text += "";
    EXPECT_EQ(text, "abcdabcd");
}

TEST(StringTest, AppendingLeavesCopiesAsTheyWere) {
    String text = "path";
    String const copy = text;
    text += "/more";
    EXPECT_EQ(text, "path/more");
    EXPECT_EQ(copy, "path");
}

TEST(StringTest, StreamsPrintTheWholeTextAndKeepToTheirWidth) {
    std::ostringstream stream;
    stream.width(6);
    stream << String("fan") << '|' << String("a\0b"sv) << '|' << String();
    EXPECT_EQ(stream.str(), "   fan|a\0b|"s);
}

TEST(StringTest, FmtFormatsAStringLikeAnyText) {
    EXPECT_EQ(fmt::format("{}", String("fan")), "fan");
    EXPECT_EQ(fmt::format("{:>5}|{:<5}|{:.2}", String("fan"), String("fan"), String("fan")),
              "  fan|fan  |fa");
    EXPECT_EQ(fmt::format("\"{}\"", String()), "\"\"");
    EXPECT_EQ(fmt::format("{}", String("a\0b"sv)), "a\0b"s);
}

TEST(StringTest, TextsOfManyLengthsSurvive) {
    for (std::size_t const size :
         {1U,   2U,   7U,   8U,   9U,   15U,   16U,   17U,    498U,   499U,
          500U, 501U, 511U, 512U, 513U, 1023U, 1024U, 65535U, 65536U, 1000000U}) {
        std::string model(size, 'x');
        model.back() = 'y';
        String const text = model;
        EXPECT_EQ(text.size(), size);
        EXPECT_TRUE(text == model) << size;
        EXPECT_TRUE((text + "z").substr(0, size) == text) << size;
    }
}

// --- the same as the standard's texts, for any text ---

// Texts over few characters, so that one often occurs in another.
rc::Gen<std::string> anyText() {
    return rc::gen::container<std::string>(
        rc::gen::element('\0', '\x01', 'A', 'Z', 'a', 'b', '\x7f', '\x80', '\xc1', '\xff'));
}

RC_GTEST_PROP(StringProperty, ComparesAndHashesAsItsBytes, ()) {
    auto const a = *anyText();
    auto const b = *rc::gen::oneOf(anyText(), rc::gen::just(a));
    RC_ASSERT((String(a) <=> String(b)) == (a.compare(b) <=> 0));
    RC_ASSERT((String(a) <=> b) == (a.compare(b) <=> 0));
    RC_ASSERT((String(a) == String(b)) == (a == b));
    RC_ASSERT((String(a) == b) == (a == b));
    RC_ASSERT(a != b || String(a).hash() == String(b).hash());
}

RC_GTEST_PROP(StringProperty, KeepsItsBytes, ()) {
    auto const text = *rc::gen::arbitrary<std::string>();
    String const string = text;
    RC_ASSERT(std::string(string.view()) == text);
    RC_ASSERT(string.size() == text.size());
    RC_ASSERT(string.empty() == text.empty());
    RC_ASSERT(std::string(string.c_str(), text.size() + 1) == text + '\0');
}

RC_GTEST_PROP(StringProperty, FindsAndCutsLikeAView, ()) {
    auto const text = *anyText();
    auto const part = *rc::gen::resize(3, anyText());
    auto const from = *rc::gen::inRange<std::size_t>(0, text.size() + 3);
    auto const count = *rc::gen::inRange<std::size_t>(0, text.size() + 3);
    String const string = text;
    RC_ASSERT(string.find(part, from) == std::string_view(text).find(part, from));
    RC_ASSERT(string.find(part) == std::string_view(text).find(part));
    RC_ASSERT(string.startsWith(part) == std::string_view(text).starts_with(part));
    RC_ASSERT(string.endsWith(part) == std::string_view(text).ends_with(part));
    auto const cut = from > text.size() ? std::string() : text.substr(from, count);
    RC_ASSERT(string.substr(from, count) == cut);
}

RC_GTEST_PROP(StringProperty, JoinsLikeTheStandardStrings, ()) {
    auto const a = *anyText();
    auto const b = *anyText();
    RC_ASSERT(String(a) + String(b) == a + b);
    RC_ASSERT(String(a) + b == a + b);
    RC_ASSERT(a + String(b) == a + b);
    String sum = a;
    sum += b;
    RC_ASSERT(sum == a + b);
    RC_ASSERT(sum.startsWith(a) && sum.endsWith(b));
}

RC_GTEST_PROP(StringProperty, LowersEveryByteByItself, ()) {
    auto const text = *anyText();
    auto lowered = text;
    std::replace(lowered.begin(), lowered.end(), 'A', 'a');
    std::replace(lowered.begin(), lowered.end(), 'Z', 'z');
    RC_ASSERT(String(text).toLower() == lowered);
    RC_ASSERT(String(text).toLower().toLower() == String(text).toLower());
}

} // namespace
