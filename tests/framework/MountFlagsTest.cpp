// Mount flags: their letters and bits, conversion from and to text, and the merge.
#include <Fen/MountTable.h>
#include <KeldaUtil/MountFlags.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/Threads.h"

namespace {

using Fen::MountTable::Flags;
using KeldaUtil::mountTableFlagsToString;
using KeldaUtil::parseMountTableFlags;
using KeldaUtil::safelyMergeFlags;
using namespace std::string_literals;

struct Letter {
    char letter;
    std::uint32_t bit;
};

// In the order of their bits.
constexpr std::array<Letter, 20> letters = {{
    {'r', 0x1},    {'w', 0x2},     {'c', 0x4},     {'i', 0x8},     {'t', 0x10},
    {'f', 0x20},   {'S', 0x40},    {'D', 0x80},    {'d', 0x100},   {'O', 0x200},
    {'A', 0x400},  {'p', 0x800},   {'K', 0x1000},  {'L', 0x2000},  {'n', 0x4000},
    {'N', 0x8000}, {'E', 0x10000}, {'C', 0x20000}, {'e', 0x40000}, {'y', 0x80000},
}};
constexpr std::uint32_t instantiates = 0x80000;

std::uint32_t bitsOf(Letter const& entry) {
    bool const implies = entry.letter == 'r' || entry.letter == 'w';
    return entry.bit | (implies ? instantiates : 0U);
}

std::string printed(Flags flags) {
    return std::string(mountTableFlagsToString(flags).view());
}
std::string reprinted(std::string const& text) {
    return printed(parseMountTableFlags(text));
}
Flags merged(std::string const& a, std::string const& b) {
    return safelyMergeFlags(parseMountTableFlags(a), parseMountTableFlags(b));
}

// --- the value ---

TEST(FlagsTest, ADefaultValueHasNoBit) {
    EXPECT_EQ(Flags().bits(), 0U);
    EXPECT_EQ(Flags(), Flags(0));
    EXPECT_FALSE(Flags().instantiatingMount());
}

TEST(FlagsTest, AValueKeepsItsBits) {
    EXPECT_EQ(Flags(0x84010).bits(), 0x84010U);
    EXPECT_EQ(Flags(0x84010), Flags(0x84010));
    EXPECT_NE(Flags(0x84010), Flags(0x84011));
}

TEST(FlagsTest, ValuesUniteAndIntersect) {
    EXPECT_EQ(Flags(0x5) | Flags(0x6), Flags(0x7));
    EXPECT_EQ(Flags(0x5) & Flags(0x6), Flags(0x4));
    EXPECT_EQ(Flags(0x5) | Flags(), Flags(0x5));
    EXPECT_EQ(Flags(0x5) & Flags(), Flags());
}

TEST(FlagsTest, AMountInstantiatesItsPathByOneBit) {
    EXPECT_TRUE(Flags(0x80000).instantiatingMount());
    EXPECT_TRUE(Flags(0x80003).instantiatingMount());
    EXPECT_FALSE(Flags(0x3).instantiatingMount());
    EXPECT_FALSE(Flags(0x7ffff).instantiatingMount());
}

TEST(FlagsTest, FlagsAreConstants) {
    static_assert((Flags(0x1) | Flags(0x80000)).instantiatingMount());
    static_assert(Flags(0x1) != Flags(0x2) && Flags(0x3).bits() == 3 && Flags() == Flags(0));
    static_assert(!std::is_convertible_v<std::uint32_t, Flags>);
}

// --- letters ---

TEST(MountFlagsTest, EveryLetterHasItsBit) {
    for (auto const& entry : letters) {
        std::string const text(1, entry.letter);
        EXPECT_EQ(parseMountTableFlags(text), Flags(bitsOf(entry))) << text;
        EXPECT_EQ(printed(Flags(entry.bit)), text);
        EXPECT_EQ(reprinted(text), text);
    }
}

TEST(MountFlagsTest, NoTextGivesNoFlagAndNoFlagPrintsNothing) {
    EXPECT_EQ(parseMountTableFlags(""), Flags());
    EXPECT_EQ(parseMountTableFlags(nullptr), Flags());
    EXPECT_EQ(printed(Flags()), "");
}

TEST(MountFlagsTest, TextsParseToTheUnionOfTheirLetters) {
    struct Row {
        char const* text;
        std::uint32_t bits;
    };
    for (auto const& [text, bits] : std::vector<Row>{{"rw", 0x80003},
                                                     {"wr", 0x80003},
                                                     {"rwrw", 0x80003},
                                                     {"rwy", 0x80003},
                                                     {"tny", 0x84010},
                                                     {"ytn", 0x84010},
                                                     {"rtp", 0x80811},
                                                     {"wcd", 0x80106},
                                                     {"cD", 0x84},
                                                     {"SNAE", 0x18440},
                                                     {"rwcitfSDdOApKLnNECey", 0xfffff}})
        EXPECT_EQ(parseMountTableFlags(text), Flags(bits)) << text;
}

TEST(MountFlagsTest, FlagsPrintInTheOrderOfTheirBits) {
    struct Row {
        std::uint32_t bits;
        char const* text;
    };
    for (auto const& [bits, text] : std::vector<Row>{{0x80003, "rw"},
                                                     {0x80001, "r"},
                                                     {0x80002, "w"},
                                                     {0x3, "rw"},
                                                     {0x80000, "y"},
                                                     {0x84010, "tny"},
                                                     {0x80004, "cy"},
                                                     {0x80811, "rtp"},
                                                     {0x18440, "SANE"},
                                                     {0xffffc, "citfSDdOApKLnNECey"},
                                                     {0xfffff, "rwcitfSDdOApKLnNECe"}})
        EXPECT_EQ(printed(Flags(bits)), text) << std::hex << bits;
}

TEST(MountFlagsTest, TextsAreReprintedInOrderAndWithoutRepetition) {
    struct Row {
        char const* text;
        char const* again;
    };
    for (auto const& [text, again] : std::vector<Row>{{"wr", "rw"},
                                                      {"rwy", "rw"},
                                                      {"yw", "w"},
                                                      {"nyt", "tny"},
                                                      {"ccdd", "cd"},
                                                      {"ENAS", "SANE"}})
        EXPECT_EQ(reprinted(text), again) << text;
}

TEST(MountFlagsTest, ReadingOrWritingInstantiates) {
    EXPECT_TRUE(parseMountTableFlags("r").instantiatingMount());
    EXPECT_TRUE(parseMountTableFlags("cw").instantiatingMount());
    EXPECT_TRUE(parseMountTableFlags("y").instantiatingMount());
    EXPECT_FALSE(parseMountTableFlags("citfSDdOApKLnNECe").instantiatingMount());
}

// --- texts with letters that have no bit ---

TEST(MountFlagsTest, ATextWithAnUnknownLetterSurvivesUnchanged) {
    for (std::string const& text :
         {"x"s, ","s, "rw,"s, "xz"s, "wrx"s, "yrwyx"s, "R"s, "r w"s, "r\0w"s, "\0"s, "\xff"s,
          "r\x80"s, "0x80003"s, std::string(2000, 'x'), "rwcitfSDdOApKLnNECeyB"s}) {
        EXPECT_EQ(reprinted(text), text);
        EXPECT_TRUE(parseMountTableFlags(text).isUnknownText()) << text;
        EXPECT_FALSE(parseMountTableFlags(text).instantiatingMount()) << text;
    }
}

TEST(MountFlagsTest, EveryByteThatIsNoLetterSurvives) {
    std::string known;
    for (auto const& entry : letters)
        known += entry.letter;
    for (int byte = 0; byte < 256; ++byte) {
        std::string const text = "c"s + static_cast<char>(byte) + "d";
        bool const isLetter = known.find(static_cast<char>(byte)) != std::string::npos;
        EXPECT_EQ(parseMountTableFlags(text).isUnknownText(), !isLetter) << byte;
        if (isLetter)
            continue;
        EXPECT_EQ(reprinted(text), text) << byte;
    }
}

TEST(MountFlagsTest, EqualUnknownTextsGiveEqualFlags) {
    EXPECT_EQ(parseMountTableFlags("rx,"), parseMountTableFlags("rx,"s));
    EXPECT_NE(parseMountTableFlags("rx,"), parseMountTableFlags("r,x"));
    EXPECT_NE(parseMountTableFlags("x"), parseMountTableFlags("xx"));
    EXPECT_NE(parseMountTableFlags("x"), Flags());
}

TEST(MountFlagsTest, VeryManyUnknownTextsAreKeptApart) {
    std::vector<Flags> flags;
    std::set<std::uint32_t> different;
    for (int number = 0; number < 70000; ++number) {
        flags.push_back(parseMountTableFlags("rw" + std::to_string(number)));
        different.insert(flags.back().bits());
    }
    EXPECT_EQ(different.size(), 70000U);
    EXPECT_GT(*different.begin(), 0xfffffU);
    for (int number = 0; number < 70000; ++number)
        ASSERT_EQ(printed(flags[static_cast<std::size_t>(number)]), "rw" + std::to_string(number));
}

TEST(MountFlagsTest, UnknownTextsAreKeptApartAcrossThreads) {
    std::array<std::vector<Flags>, 2> flags;
    support::inThreads(2, [&flags](int thread) {
        for (int number = 0; number < 2000; ++number)
            flags[static_cast<std::size_t>(thread)].push_back(
                parseMountTableFlags("threads " + std::to_string(number)));
    });
    EXPECT_EQ(flags[0], flags[1]);
    for (int number = 0; number < 2000; ++number)
        ASSERT_EQ(printed(flags[0][static_cast<std::size_t>(number)]),
                  "threads " + std::to_string(number));
}

// --- merging ---

TEST(MountFlagsTest, AMergeIsTheUnionOfBits) {
    EXPECT_EQ(merged("r", "w"), Flags(0x80003));
    EXPECT_EQ(merged("rw", "rw"), Flags(0x80003));
    EXPECT_EQ(merged("c", "d"), Flags(0x104));
    EXPECT_EQ(merged("c", ""), Flags(0x4));
    EXPECT_EQ(merged("", ""), Flags());
    EXPECT_EQ(merged("c", "D"), Flags(0x84));
    EXPECT_EQ(printed(merged("tn", "r")), "rtn");
}

TEST(MountFlagsTest, AMergeKeepsEveryUnknownLetter) {
    EXPECT_EQ(printed(merged("x", "rw")), "xrw");
    EXPECT_EQ(printed(merged("rw", "x")), "rwx");
    EXPECT_EQ(printed(merged("x", "z")), "xz");
    EXPECT_EQ(printed(merged("x", "")), "x");
    EXPECT_EQ(printed(merged("", "x")), "x");
}

TEST(MountFlagsTest, AnUnknownTextMergedWithItselfStaysAsItIs) {
    EXPECT_EQ(merged("rx", "rx"), parseMountTableFlags("rx"));
    EXPECT_EQ(printed(merged("rx", "rx")), "rx");
}

// --- for any flags ---

rc::Gen<Flags> anyFlags() {
    return rc::gen::map(rc::gen::inRange<std::uint32_t>(0, 0x100000),
                        [](std::uint32_t bits) { return Flags(bits); });
}

rc::Gen<std::string> anyLetters() {
    return rc::gen::container<std::string>(rc::gen::map(
        rc::gen::elementOf(letters), [](Letter const& entry) { return entry.letter; }));
}

RC_GTEST_PROP(MountFlagsProperty, ParsingUnitesTheBitsOfTheLetters, ()) {
    auto const text = *anyLetters();
    std::uint32_t bits = 0;
    for (auto const& entry : letters)
        if (text.find(entry.letter) != std::string::npos)
            bits |= bitsOf(entry);
    RC_ASSERT(parseMountTableFlags(text).bits() == bits);
}

RC_GTEST_PROP(MountFlagsProperty, PrintingAndParsingGivesTheFlagsBack, ()) {
    auto const flags = parseMountTableFlags(*anyLetters());
    RC_ASSERT(parseMountTableFlags(mountTableFlagsToString(flags)) == flags);
}

RC_GTEST_PROP(MountFlagsProperty, PrintingNamesEachLetterOnceInOrder, ()) {
    auto const flags = *anyFlags();
    bool const implied = (flags.bits() & 0x3) != 0;
    std::string expected;
    for (auto const& entry : letters)
        if ((flags.bits() & entry.bit) != 0 && !(implied && entry.letter == 'y'))
            expected += entry.letter;
    RC_ASSERT(printed(flags) == expected);
}

RC_GTEST_PROP(MountFlagsProperty, MergingUnitesInAnyOrder, ()) {
    auto const a = *anyFlags();
    auto const b = *anyFlags();
    auto const c = *anyFlags();
    RC_ASSERT(safelyMergeFlags(a, b).bits() == (a.bits() | b.bits()));
    RC_ASSERT(safelyMergeFlags(a, b) == safelyMergeFlags(b, a));
    RC_ASSERT(safelyMergeFlags(safelyMergeFlags(a, b), c) ==
              safelyMergeFlags(a, safelyMergeFlags(b, c)));
}

RC_GTEST_PROP(MountFlagsProperty, ATextWithAnyUnknownByteSurvives, ()) {
    auto const text = *anyLetters() + *rc::gen::element(',', 'x', ' ', '\0', '\xc3', '2') +
                      *rc::gen::arbitrary<std::string>();
    RC_ASSERT(reprinted(text) == text);
}

} // namespace
