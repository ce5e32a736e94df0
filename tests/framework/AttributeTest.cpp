// Values that are made of named attributes: equality, the truth test, the string form, and how it
// is read back. What is said about texts that are none: AttributeRoundTripTest.
#include <Fen/Attribute.h>

#include <array>
#include <exception>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include <Rook/Node.h>
#include <Rook/Ptr.h>
#include <Rook/String.h>

namespace {

using Fen::AttributeCursor;
using Fen::AttributeFormatException;
using Fen::strepToValue;
using Fen::valueToStrep;
using Rook::Ptr;
using Rook::String;
using namespace std::string_literals;
using namespace std::string_view_literals;

// Two attributes.
class Berth : public Fen::AttributeValue<Berth> {
  public:
    static constexpr std::string_view typeName = "Harbour::Berth";
    static constexpr auto attributes() {
        return std::array{Fen::Attribute<Berth>{"pier", &Berth::pier_},
                          Fen::Attribute<Berth>{"ship", &Berth::ship_}};
    }
    Berth() = default;
    Berth(String pier, String ship) : pier_(std::move(pier)), ship_(std::move(ship)) {}
    String const& pier() const noexcept { return pier_; }
    String const& ship() const noexcept { return ship_; }

  private:
    String pier_;
    String ship_;
};

// Three.
class Ship : public Fen::AttributeValue<Ship> {
  public:
    static constexpr std::string_view typeName = "Harbour::Ship";
    static constexpr auto attributes() {
        using Attribute = Fen::Attribute<Ship>;
        return std::array{Attribute{"name", &Ship::name}, Attribute{"flag", &Ship::flag},
                          Attribute{"cargo", &Ship::cargo}};
    }
    Ship() = default;
    Ship(String nameVal, String flagVal, String cargoVal)
        : name(std::move(nameVal)), flag(std::move(flagVal)), cargo(std::move(cargoVal)) {}
    String name;
    String flag;
    String cargo;
};

// A node.
class Crane : public Rook::Node, public Fen::AttributeValue<Crane> {
  public:
    static constexpr std::string_view typeName = "Harbour::Crane";
    static constexpr auto attributes() {
        return std::array{Fen::Attribute<Crane>{"name", &Crane::name_},
                          Fen::Attribute<Crane>{"load", &Crane::load_}};
    }
    Crane() = default;
    Crane(String name, String load) : name_(std::move(name)), load_(std::move(load)) {}

  private:
    String name_;
    String load_;
};

static_assert(Fen::HasAttributes<Berth> && Fen::HasAttributes<Ship> && Fen::HasAttributes<Crane>);
static_assert(!Fen::HasAttributes<String> && !Fen::HasAttributes<bool>);
static_assert(!Fen::HasAttributes<Ptr<Crane>>);
static_assert(Fen::attributeCount<Berth> == 2 && Fen::attributeCount<Ship> == 3);
static_assert(!std::is_convertible_v<Berth, bool> && std::is_constructible_v<bool, Berth>);
static_assert(std::is_nothrow_copy_constructible_v<Berth>);
static_assert(!std::is_copy_constructible_v<Crane>);
static_assert(!std::is_convertible_v<std::string, AttributeFormatException>);

std::string written(auto const& value) {
    return std::string(valueToStrep(value).view());
}

// What a fault tells.
struct Fault {
    std::string what;
    std::size_t position = 0;

    friend bool operator==(Fault const&, Fault const&) = default;
    friend std::ostream& operator<<(std::ostream& stream, Fault const& fault) {
        return stream << fault.what << " [" << fault.position << "]";
    }
};

template <class Action>
Fault faultOf(Action const& action) {
    try {
        action();
    } catch (AttributeFormatException const& fault) {
        return {fault.what(), fault.position()};
    }
    return {"(nothing was thrown)", 0};
}

// --- the truth test ---

TEST(AttributeTest, ADefaultValueIsFalse) {
    EXPECT_FALSE(Berth());
    EXPECT_FALSE(Ship());
    EXPECT_FALSE(*Ptr<Crane>(new Crane));
}

TEST(AttributeTest, AValueOfEmptyAttributesIsFalse) {
    EXPECT_FALSE(Ship("", "", ""));
    EXPECT_FALSE(*Ptr<Crane>(new Crane("", "")));
}

TEST(AttributeTest, AValueIsTrueWhenAnyAttributeIsNotEmpty) {
    EXPECT_TRUE(Ship("Ada", "", ""));
    EXPECT_TRUE(Ship("", "red", ""));
    EXPECT_TRUE(Ship("", "", "tea"));
    EXPECT_TRUE(Ship("", "", "\0"sv));
    EXPECT_TRUE(*Ptr<Crane>(new Crane("", "tea")));
}

// --- equality ---

TEST(AttributeTest, ValuesAreEqualWhenAllTheirAttributesAre) {
    EXPECT_EQ(Ship("Ada", "red", "tea"), Ship("Ada", "red", "tea"));
    EXPECT_TRUE(Ship("Ada", "red", "tea").isEq(Ship("Ada", "red", "tea")));
    EXPECT_EQ(Ship(), Ship("", "", ""));
}

TEST(AttributeTest, ValuesDifferWhenAnyAttributeDoes) {
    Ship const ship("Ada", "red", "tea");
    for (auto const& other :
         {Ship("Eve", "red", "tea"), Ship("Ada", "blue", "tea"), Ship("Ada", "red", "tin"),
          Ship("Ada", "red", ""), Ship("Ada", "red", "tea\0"sv), Ship("red", "Ada", "tea")}) {
        EXPECT_NE(ship, other);
        EXPECT_FALSE(ship.isEq(other));
        EXPECT_FALSE(other.isEq(ship));
    }
}

TEST(AttributeTest, AValueIsEqualToItself) {
    Ship const ship("Ada", "red", "tea");
    EXPECT_TRUE(ship.isEq(ship));
    EXPECT_TRUE(Ship().isEq(Ship()));
}

TEST(AttributeTest, NodesAreComparedByTheirAttributesAndPointersByTheirNodes) {
    Ptr<Crane> const crane = new Crane("north", "tin");
    Ptr<Crane> const twin = new Crane("north", "tin");
    EXPECT_TRUE(*crane == *twin);
    EXPECT_TRUE(crane->isEq(*twin));
    EXPECT_FALSE(crane == twin);
    EXPECT_FALSE(*crane == *Ptr<Crane>(new Crane("north", "tea")));
}

TEST(AttributeTest, ACopyIsEqualAndOnItsOwn) {
    Ship ship("Ada", "red", "tea");
    auto const copy = ship;
    EXPECT_EQ(copy, ship);
    ship = Ship("Eve", "blue", "tin");
    EXPECT_EQ(copy, Ship("Ada", "red", "tea"));
}

// --- writing ---

TEST(AttributeTest, AValueIsWrittenWithItsTypeAndItsAttributesInTheirOrder) {
    EXPECT_EQ(written(Berth("2/a", "Ada")), R"(Harbour::Berth(pier: "2/a", ship: "Ada"))");
    EXPECT_EQ(written(Ship("Ada", "red", "tea")),
              R"(Harbour::Ship(name: "Ada", flag: "red", cargo: "tea"))");
    EXPECT_EQ(written(Ship()), R"(Harbour::Ship(name: "", flag: "", cargo: ""))");
}

TEST(AttributeTest, ANodeIsWrittenLikeAValue) {
    EXPECT_EQ(written(*Ptr<Crane>(new Crane("north", "tin"))),
              R"(Harbour::Crane(name: "north", load: "tin"))");
}

TEST(AttributeTest, AStreamShowsTheStringForm) {
    std::ostringstream stream;
    stream << Berth("2", "Ada") << '/' << *Ptr<Crane>(new Crane("north", "tin"));
    EXPECT_EQ(
        stream.str(),
        R"(Harbour::Berth(pier: "2", ship: "Ada")/Harbour::Crane(name: "north", load: "tin"))");
}

TEST(AttributeTest, StringsAreWrittenWithTheirQuotes) {
    EXPECT_EQ(written(String("a/b")), R"("a/b")");
    EXPECT_EQ(written(String()), R"("")");
    EXPECT_EQ(written("made/of/characters"s), R"("made/of/characters")");
    EXPECT_EQ(written("a view"sv), R"("a view")");
}

TEST(AttributeTest, CharactersAreWrittenLikeAStringOfThem) {
    char const* const characters = "a/b";
    EXPECT_EQ(valueToStrep(characters), R"("a/b")");
}

TEST(AttributeTest, TruthValuesAreWrittenAsWords) {
    EXPECT_EQ(written(true), "true");
    EXPECT_EQ(written(false), "false");
}

TEST(AttributeTest, QuotesAndBackslashesStandBehindABackslash) {
    EXPECT_EQ(written(String(R"(a "b" \c\)")), R"("a \"b\" \\c\\")");
    EXPECT_EQ(written(Berth(R"(")", R"(\)")), R"(Harbour::Berth(pier: "\"", ship: "\\"))");
}

TEST(AttributeTest, WhatIsNotPrintableIsWrittenInTwoHexadecimalDigits) {
    EXPECT_EQ(written(String("\0\t\n\r\x1f\x7f\x80\xff"sv)),
              R"("\x00\x09\x0a\x0d\x1f\x7f\x80\xff")");
    EXPECT_EQ(written(String("K\xc3\xb6ln")), R"("K\xc3\xb6ln")");
    // The digit after an escaped byte stays what it was.
    EXPECT_EQ(written(String("\0017"sv)), R"("\x017")");
}

TEST(AttributeTest, AllPrintableCharactersButTwoAreWrittenAsTheyAre) {
    std::string printable;
    for (char c = ' '; c <= '~'; ++c)
        if (c != '"' && c != '\\')
            printable += c;
    EXPECT_EQ(written(printable), '"' + printable + '"');
}

TEST(AttributeTest, AttributesAreWrittenBehindWhatIsThere) {
    std::string text = "> ";
    Fen::serAttrPre(text, "Any::Type", "a", "1");
    EXPECT_EQ(text, R"(> Any::Type(a: "1")");
    Fen::serAttrIntra(text, "b", "\"");
    EXPECT_EQ(text, R"(> Any::Type(a: "1", b: "\"")");
    Fen::serAttrPost(text, "c", "");
    EXPECT_EQ(text, R"(> Any::Type(a: "1", b: "\"", c: ""))");
}

// --- reading ---

TEST(AttributeTest, AValueIsReadFromItsStringForm) {
    EXPECT_EQ(strepToValue<Berth>(R"(Harbour::Berth(pier: "2/a", ship: "Ada"))"),
              Berth("2/a", "Ada"));
    EXPECT_EQ(strepToValue<Ship>(R"(Harbour::Ship(name: "Ada", flag: "red", cargo: "tea"))"),
              Ship("Ada", "red", "tea"));
    EXPECT_EQ(strepToValue<Ship>(R"(Harbour::Ship(name: "", flag: "", cargo: ""))"), Ship());
}

TEST(AttributeTest, ANodeIsReadAsAReferenceToANewOne) {
    auto const text = valueToStrep(*Ptr<Crane>(new Crane("north", "tin")));
    auto const crane = strepToValue<Ptr<Crane>>(text);
    auto const another = strepToValue<Ptr<Crane>>(text);
    EXPECT_TRUE(crane->isEq(*Ptr<Crane>(new Crane("north", "tin"))));
    EXPECT_EQ(crane->references(), 1U);
    EXPECT_NE(crane, another);
    EXPECT_EQ(valueToStrep(*another), text);
}

TEST(AttributeTest, StringsAndTruthValuesAreRead) {
    EXPECT_EQ(strepToValue<String>(R"("a/b")"), "a/b");
    EXPECT_EQ(strepToValue<String>(R"("")"), String());
    EXPECT_TRUE(strepToValue<bool>("true"));
    EXPECT_FALSE(strepToValue<bool>("false"));
}

TEST(AttributeTest, BlanksBetweenThePiecesDoNotCount) {
    EXPECT_EQ(strepToValue<Berth>("Harbour::Berth(pier:\"2\",ship:\"Ada\")"), Berth("2", "Ada"));
    EXPECT_EQ(strepToValue<Berth>("\t Harbour::Berth \t( pier : \"2\" , ship\t:\t\"Ada\" )\t "),
              Berth("2", "Ada"));
    EXPECT_EQ(strepToValue<String>("\t \"a\" \t"), "a");
    EXPECT_TRUE(strepToValue<bool>(" \ttrue\t "));
    EXPECT_FALSE(strepToValue<bool>(" false "));
}

TEST(AttributeTest, BlanksBetweenTheQuotesCount) {
    EXPECT_EQ(strepToValue<String>("\"  a  b \""), "  a  b ");
}

TEST(AttributeTest, EscapedCharactersAreRead) {
    EXPECT_EQ(strepToValue<String>(R"("\"\\\x41\x00\xfF\x7F0")"), "\"\\A\0\xff\x7f\x30"sv);
}

TEST(AttributeTest, BytesBeyondAsciiAreReadAsTheyAre) {
    EXPECT_EQ(strepToValue<String>("\"K\xc3\xb6ln \x80\xff\""), "K\xc3\xb6ln \x80\xff");
}

TEST(AttributeTest, WhatLooksLikeTheEndOfAValueIsReadAsAPartOfAString) {
    Ship const ship("\")", "a\", cargo: \"b", "Harbour::Ship(name: \"");
    EXPECT_EQ(strepToValue<Ship>(valueToStrep(ship)), ship);
}

// --- reading piece by piece ---

TEST(AttributeTest, TheCursorMovesBehindWhatWasRead) {
    AttributeCursor cursor{R"(> Any::Type(a: "1", b: "\"", c: "") <)", 2};
    EXPECT_EQ(Fen::desAttrPre(cursor, "Any::Type", "a"), "1");
    EXPECT_EQ(cursor.position, 18U);
    EXPECT_EQ(Fen::desAttrIntra(cursor, "b"), "\"");
    EXPECT_EQ(cursor.position, 27U);
    EXPECT_EQ(Fen::desAttrPost(cursor, "c"), "");
    EXPECT_EQ(cursor.position, 35U);
    EXPECT_EQ(faultOf([&cursor] { Fen::desEnd(cursor); }),
              (Fault{"expected the end of the text at offset 36", 36}));
}

TEST(AttributeTest, OnlyBlanksMayBeLeftAtTheEnd) {
    for (auto const* const text : {"", " ", "\t \t"}) {
        AttributeCursor cursor{text};
        EXPECT_NO_THROW(Fen::desEnd(cursor));
        EXPECT_EQ(cursor.position, cursor.text.size());
    }
}

TEST(AttributeTest, TheCursorStandsWhereReadingStopped) {
    AttributeCursor cursor{R"(Any::Type(a: "1" b: "2"))"};
    Fen::desAttrPre(cursor, "Any::Type", "a");
    EXPECT_EQ(faultOf([&cursor] { Fen::desAttrPost(cursor, "b"); }),
              (Fault{"expected ',' at offset 17", 17}));
    EXPECT_EQ(cursor.position, 17U);
}

// --- the exception ---

TEST(AttributeFormatExceptionTest, TellsThePositionItWasGiven) {
    EXPECT_EQ(AttributeFormatException("expected 'x' at offset 7", 7).position(), 7U);
    EXPECT_EQ(AttributeFormatException("no text at all").position(), 0U);
}

TEST(AttributeFormatExceptionTest, KeepsItsPositionWhenCopiedAndAssigned) {
    AttributeFormatException const original("original", 7);
    auto const copy = original;
    AttributeFormatException assigned("former", 3);
    assigned = copy;
    EXPECT_EQ(copy.position(), 7U);
    EXPECT_EQ(assigned.position(), 7U);
    EXPECT_STREQ(assigned.what(), "original");
    EXPECT_EQ(original.position(), 7U);
}

TEST(AttributeFormatExceptionTest, KeepsItsPositionOnItsWayThroughAnExceptionPointer) {
    auto const pointer = std::make_exception_ptr(AttributeFormatException("passed on", 7));
    EXPECT_EQ(faultOf([&pointer] { std::rethrow_exception(pointer); }), (Fault{"passed on", 7}));
}

TEST(AttributeFormatExceptionTest, KeepsItsPositionWhenCaughtAsAnExceptionOfTheFramework) {
    try {
        strepToValue<String>("\"unfinished");
        FAIL() << "nothing was thrown";
    } catch (Fen::Exception const& fault) {
        auto const* const format = dynamic_cast<AttributeFormatException const*>(&fault);
        ASSERT_NE(format, nullptr);
        EXPECT_EQ(format->position(), 11U);
    }
}

} // namespace
