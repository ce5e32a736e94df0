// String forms and back: every value survives; a text that is no string form is refused where it
// stops being one, with a text and a position that say so.
#include <Fen/Attribute.h>

#include <array>
#include <optional>
#include <ostream>
#include <regex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <Rook/Node.h>
#include <Rook/Ptr.h>
#include <Rook/String.h>

namespace {

using Fen::strepToValue;
using Fen::valueToStrep;
using Rook::Ptr;
using Rook::String;
using namespace std::string_literals;

class Berth : public Fen::AttributeValue<Berth> {
  public:
    static constexpr std::string_view typeName = "Harbour::Berth";
    static constexpr auto attributes() {
        return std::array{Fen::Attribute<Berth>{"pier", &Berth::pier},
                          Fen::Attribute<Berth>{"ship", &Berth::ship}};
    }
    Berth() = default;
    Berth(String pierVal, String shipVal) : pier(std::move(pierVal)), ship(std::move(shipVal)) {}
    String pier;
    String ship;
};

// The name of its second attribute begins with that of its first.
class Ship : public Rook::Node, public Fen::AttributeValue<Ship> {
  public:
    static constexpr std::string_view typeName = "Harbour::Ship";
    static constexpr auto attributes() {
        using Attribute = Fen::Attribute<Ship>;
        return std::array{Attribute{"flag", &Ship::flag}, Attribute{"flags", &Ship::flags},
                          Attribute{"cargo", &Ship::cargo}};
    }
    Ship() = default;
    Ship(String flagVal, String flagsVal, String cargoVal)
        : flag(std::move(flagVal)), flags(std::move(flagsVal)), cargo(std::move(cargoVal)) {}
    String flag;
    String flags;
    String cargo;
};

// --- texts that are no string form ---

struct Fault {
    std::string what;
    std::size_t position = 0;

    friend bool operator==(Fault const&, Fault const&) = default;
    friend std::ostream& operator<<(std::ostream& stream, Fault const& fault) {
        return stream << fault.what << " [" << fault.position << "]";
    }
};

template <class T>
std::optional<Fault> faultOf(std::string_view text) {
    try {
        strepToValue<T>(text);
    } catch (Fen::AttributeFormatException const& fault) {
        return Fault{fault.what(), fault.position()};
    }
    return std::nullopt;
}

struct BadText {
    std::string text;
    std::string expected; // as in "expected WHAT at offset N"
    std::size_t position;
};

template <class T>
void expectFaults(std::vector<BadText> const& bad) {
    for (auto const& [text, expected, position] : bad) {
        auto const what = "expected " + expected + " at offset " + std::to_string(position);
        EXPECT_EQ(faultOf<T>(text), (Fault{what, position})) << text;
    }
}

TEST(AttributeRoundTripTest, TheFirstPieceOfAValueThatDoesNotFitIsNamedWithItsOffset) {
    expectFaults<Berth>({
        {"", "'Harbour::Berth'", 0},
        {"  ", "'Harbour::Berth'", 2},
        {" Harbour::Ship(", "'Harbour::Berth'", 1},
        {"\0Harbour::Berth("s, "'Harbour::Berth'", 0},
        {"Harbour::Berth", "'('", 14},
        {"Harbour::Berths(", "'('", 14},
        {"Harbour::Berth(ship: \"A\"", "'pier'", 15},
        {"Harbour::Berth(piers: \"\"", "':'", 19},
        {"Harbour::Berth(pier= \"\"", "':'", 19},
        {"Harbour::Berth(pier: 2", "'\"'", 21},
        {"Harbour::Berth(pier: \"2\"", "','", 24},
        {"Harbour::Berth(pier: \"2\")", "','", 24},
        {"Harbour::Berth(pier: \"2\", pier: \"", "'ship'", 26},
        {"Harbour::Berth(pier: \"2\",\nship: \"A\")", "'ship'", 25},
        {"Harbour::Berth(pier: \"2\", ship: \"A\"", "')'", 35},
        {"Harbour::Berth(pier: \"2\", ship: \"A\",", "')'", 35},
        {"Harbour::Berth(pier: \"2\", ship: \"A\") )", "the end of the text", 37},
    });
}

TEST(AttributeRoundTripTest, ANodeIsReadAsStrictlyAsAValue) {
    expectFaults<Ptr<Ship>>({
        {"Harbour::Berth(", "'Harbour::Ship'", 0},
        {"Harbour::Ship(flags: \"\"", "':'", 18},
        {"Harbour::Ship(flag: \"\", flag: \"\"", "'flags'", 24},
        {"Harbour::Ship(flag: \"\", flags: \"\")", "','", 33},
    });
}

TEST(AttributeRoundTripTest, TheFirstByteOfAStringThatDoesNotFitIsNamedWithItsOffset) {
    expectFaults<String>({
        {"", "'\"'", 0},
        {"a", "'\"'", 0},
        {"'a'", "'\"'", 0},
        {"\"", "'\"'", 1},
        {"\"ab", "'\"'", 3},
        {"\"ab\" c", "the end of the text", 5},
        {"\"ab\"\n", "the end of the text", 4},
        {"\"ab\"\0"s, "the end of the text", 4},
    });
}

TEST(AttributeRoundTripTest, ABadEscapeIsNamedWithTheOffsetOfTheByteThatMakesItBad) {
    expectFaults<String>({
        {R"("\)", R"('"', '\' or 'x')", 2},
        {R"("\n")", R"('"', '\' or 'x')", 2},
        {R"("\X41")", R"('"', '\' or 'x')", 2},
        {"\"\\\0\""s, R"('"', '\' or 'x')", 2},
        {R"("\x)", "a hexadecimal digit", 3},
        {R"("\x4)", "a hexadecimal digit", 4},
        {R"("\x4")", "a hexadecimal digit", 4},
        {R"("\xg0")", "a hexadecimal digit", 3},
        {R"("\x0G")", "a hexadecimal digit", 4},
        {"\"\\x0\0\""s, "a hexadecimal digit", 4},
    });
}

TEST(AttributeRoundTripTest, ControlCharactersAreRefusedBetweenTheQuotes) {
    std::vector<BadText> bad = {{"\"a\x7f\"", "a character that is no control character", 2}};
    for (char c = '\0'; c < ' '; ++c)
        bad.push_back({"\"a"s + c + '"', "a character that is no control character", 2});
    expectFaults<String>(bad);
}

TEST(AttributeRoundTripTest, BothWordsAreNamedWhereATruthValueIsExpected) {
    expectFaults<bool>({
        {"", "'true' or 'false'", 0},
        {"  ", "'true' or 'false'", 2},
        {"1", "'true' or 'false'", 0},
        {" True", "'true' or 'false'", 1},
        {"\"true\"", "'true' or 'false'", 0},
        {"tru", "'true' or 'false'", 0},
        {"fals", "'true' or 'false'", 0},
    });
}

TEST(AttributeRoundTripTest, NothingMayFollowATruthValue) {
    expectFaults<bool>({
        {"trues", "the end of the text", 4},
        {"false,", "the end of the text", 5},
        {"true false", "the end of the text", 5},
    });
}

// --- any value ---

// A byte; those that mean something to a reader come often.
rc::Gen<char> anyByte() {
    auto const any = rc::gen::map(rc::gen::inRange(0, 256), [](int byte) {
        return static_cast<char>(static_cast<unsigned char>(byte));
    });
    auto const special = rc::gen::elementOf("\"\"\\\\xX09afAFgG,:() \t\n\x7f\x80"s + '\0');
    return rc::gen::weightedOneOf<char>({{2, any}, {3, special}});
}

rc::Gen<std::string> anyBytes() {
    return rc::gen::container<std::string>(anyByte());
}

bool isOneLineOfPrintableAscii(std::string_view text) {
    for (char const c : text)
        if (c < ' ' || c > '~')
            return false;
    return true;
}

TEST(AttributeRoundTripTest, EveryByteSurvives) {
    for (int byte = 0; byte < 256; ++byte) {
        String const value = std::string(1, static_cast<char>(static_cast<unsigned char>(byte)));
        EXPECT_EQ(strepToValue<String>(valueToStrep(value)), value) << byte;
    }
}

TEST(AttributeRoundTripTest, ALongStringSurvives) {
    std::string bytes;
    for (int number = 0; number < 1000000; ++number)
        bytes += static_cast<char>(static_cast<unsigned char>(number % 251));
    EXPECT_EQ(strepToValue<String>(valueToStrep(String(bytes))), bytes);
}

RC_GTEST_PROP(AttributeRoundTripTest, EveryStringSurvives, ()) {
    String const value = *anyBytes();
    auto const text = valueToStrep(value);
    RC_ASSERT(isOneLineOfPrintableAscii(text));
    RC_ASSERT(strepToValue<String>(text) == value);
}

RC_GTEST_PROP(AttributeRoundTripTest, EveryValueSurvives, ()) {
    Berth const value(*anyBytes(), *anyBytes());
    auto const text = valueToStrep(value);
    RC_ASSERT(isOneLineOfPrintableAscii(text));
    RC_ASSERT(strepToValue<Berth>(text) == value);
}

RC_GTEST_PROP(AttributeRoundTripTest, EveryNodeSurvives, ()) {
    Ptr<Ship> const ship = new Ship(*anyBytes(), *anyBytes(), *anyBytes());
    RC_ASSERT(strepToValue<Ptr<Ship>>(valueToStrep(*ship))->isEq(*ship));
}

RC_GTEST_PROP(AttributeRoundTripTest, DifferentValuesHaveDifferentTexts, ()) {
    Berth const a(*anyBytes(), *anyBytes());
    Berth const b(*anyBytes(), *anyBytes());
    RC_ASSERT((valueToStrep(a) == valueToStrep(b)) == (a == b));
}

// --- any text ---

// The language of texts that a Berth is read from, written once more in another way.
bool isTextOfBerth(std::string const& text) {
    static auto const language = [] {
        std::string const quoted =
            R"("(?:[^\x00-\x1f\x7f"\\]|\\"|\\\\|\\x[0-9A-Fa-f][0-9A-Fa-f])*")";
        std::string expression;
        for (auto const& piece : {"Harbour::Berth"s, R"(\()"s, "pier"s, ":"s, quoted, ","s, "ship"s,
                                  ":"s, quoted, R"(\))"s, ""s})
            expression += "[ \\t]*" + piece;
        return std::regex(expression);
    }();
    return std::regex_match(text, language);
}

// What is wrong with the way a text is read as a Berth; nothing if it is read or refused rightly.
std::string complaintAbout(std::string const& text) {
    auto const fault = faultOf<Berth>(text);
    if (fault.has_value() == isTextOfBerth(text))
        return (fault ? "refused: " : "accepted: ") + text;
    if (!fault) {
        auto const value = strepToValue<Berth>(text);
        return strepToValue<Berth>(valueToStrep(value)) == value ? "" : "not the same: " + text;
    }
    if (fault->position > text.size())
        return "a position outside of the text: " + text;
    if (!fault->what.ends_with(" at offset " + std::to_string(fault->position)))
        return "another position than in the words '" + fault->what + "': " + text;
    return "";
}

// A text of a Berth with blanks where they may be.
rc::Gen<std::string> textOfBerth() {
    return rc::gen::exec([] {
        std::string text;
        auto const quoted = [] {
            return std::string(valueToStrep(String(*rc::gen::resize(8, anyBytes()))).view());
        };
        for (auto const& piece : {"Harbour::Berth"s, "("s, "pier"s, ":"s, quoted(), ","s, "ship"s,
                                  ":"s, quoted(), ")"s, ""s})
            text += *rc::gen::elementOf(std::vector{""s, ""s, " "s, "\t "s}) + piece;
        return text;
    });
}

RC_GTEST_PROP(AttributeRoundTripTest, BlanksBetweenThePiecesChangeNothing, ()) {
    auto const text = *textOfBerth();
    RC_ASSERT(!faultOf<Berth>(text).has_value());
    RC_ASSERT(complaintAbout(text) == "");
}

RC_GTEST_PROP(AttributeRoundTripTest, AnyBytesAreReadOrRefused, ()) {
    RC_ASSERT(complaintAbout(*anyBytes()) == "");
}

RC_GTEST_PROP(AttributeRoundTripTest, AnyRowOfPiecesIsReadOrRefused, ()) {
    auto const pieces = std::vector{"Harbour::Berth("s, "pier:"s, "ship:"s, "\"a\""s, "\""s,
                                    "\\x41"s,           "\\"s,    ","s,     ")"s,     " "s};
    auto const row = *rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(pieces));
    std::string text = *rc::gen::elementOf(std::vector{""s, "Harbour::Berth(pier:\"a\""s});
    for (auto const& piece : row)
        text += piece;
    RC_ASSERT(complaintAbout(text) == "");
}

RC_GTEST_PROP(AttributeRoundTripTest, AValueThatIsCutShortIsRefused, ()) {
    auto const whole = *textOfBerth();
    for (std::size_t size = 0; size <= whole.find_last_of(')'); ++size) {
        auto const fault = faultOf<Berth>(whole.substr(0, size));
        RC_ASSERT(fault.has_value());
        RC_ASSERT(fault->position <= size);
    }
}

RC_GTEST_PROP(AttributeRoundTripTest, AFaultDoesNotDependOnWhatFollowsItsPiece, ()) {
    auto text = *textOfBerth();
    text[*rc::gen::inRange<std::size_t>(0, text.size())] = *anyByte();
    auto const fault = faultOf<Berth>(text);
    RC_PRE(fault.has_value() && fault->position < text.size());
    auto const longestPiece = Berth::typeName.size();
    auto const changed = text.substr(0, fault->position + longestPiece) + *anyBytes();
    RC_ASSERT(faultOf<Berth>(changed) == fault);
}

// Everything that one byte can do to a text: change, come in between, and go.
TEST(AttributeRoundTripTest, OneWrongByteIsReadOrRefused) {
    std::string const text = R"(Harbour::Berth(pier: "2\"", ship: "\x0aA"))";
    ASSERT_EQ(complaintAbout(text), "");
    for (std::size_t at = 0; at <= text.size(); ++at) {
        for (int byte = 0; byte < 256; ++byte) {
            auto const character = static_cast<char>(static_cast<unsigned char>(byte));
            auto longer = text;
            longer.insert(at, 1, character);
            EXPECT_EQ(complaintAbout(longer), "");
            auto changed = text;
            changed.replace(at, 1, 1, character);
            EXPECT_EQ(complaintAbout(changed), "");
        }
        auto shorter = text;
        shorter.erase(at, 1);
        EXPECT_EQ(complaintAbout(shorter), "");
    }
}

RC_GTEST_PROP(AttributeRoundTripTest, AnyTextWithAnyWrongByteIsReadOrRefused, ()) {
    auto text = *textOfBerth();
    text[*rc::gen::inRange<std::size_t>(0, text.size())] = *anyByte();
    RC_ASSERT(complaintAbout(text) == "");
}

} // namespace
