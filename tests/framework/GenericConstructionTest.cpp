// Fen::construct: a factory is called with arguments that are given in their string forms.
#include <Fen/Attribute.h>

#include <array>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <Rook/Node.h>
#include <Rook/Ptr.h>
#include <Rook/String.h>

namespace {

using Fen::construct;
using Rook::Ptr;
using Rook::String;

// A value as an argument.
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

// A node as an argument; it tells how many of its kind are alive.
class Crane : public Rook::Node, public Fen::AttributeValue<Crane> {
  public:
    static constexpr std::string_view typeName = "Harbour::Crane";
    static constexpr auto attributes() {
        using Attribute = Fen::Attribute<Crane>;
        return std::array{Attribute{"name", &Crane::name}, Attribute{"load", &Crane::load},
                          Attribute{"berth", &Crane::berth}};
    }
    Crane(String nameVal, String loadVal, String berthVal)
        : name(std::move(nameVal)), load(std::move(loadVal)), berth(std::move(berthVal)) {
        ++alive;
    }
    ~Crane() override { --alive; }

    static inline int alive = 0;
    String name;
    String load;
    String berth;
};

// The node that is constructed.
class Pilot : public Rook::Node {
  public:
    Pilot(bool onDutyVal, String nameVal, Berth berthVal)
        : onDuty(onDutyVal), name(std::move(nameVal)), berth(std::move(berthVal)) {
        ++made;
    }
    static inline int made = 0;
    bool const onDuty;
    String const name;
    Berth const berth;
};

Ptr<Pilot> pilotFactory(bool onDuty, String const& name, Berth const& berth) {
    return new Pilot(onDuty, name, berth);
}

using Arguments = std::vector<String>;

// What construction is refused with.
struct Fault {
    std::string what;
    std::size_t position = 0;

    friend bool operator==(Fault const&, Fault const&) = default;
    friend std::ostream& operator<<(std::ostream& stream, Fault const& fault) {
        return stream << fault.what << " [" << fault.position << "]";
    }
};

template <class Factory>
Fault faultOf(Factory* factory, Arguments const& arguments) {
    try {
        construct(factory, arguments);
    } catch (Fen::AttributeFormatException const& fault) {
        return {fault.what(), fault.position()};
    }
    return {"(nothing was thrown)", 0};
}

Fault faultOf(Arguments const& arguments) {
    return faultOf(&pilotFactory, arguments);
}

// --- what is constructed ---

TEST(GenericConstructionTest, AFactoryGetsItsArgumentsInTheirOrder) {
    auto const pilot = construct(
        &pilotFactory, Arguments{"true", R"("Eve")", R"(Harbour::Berth(pier: "2", ship: "Ada"))"});
    static_assert(std::is_same_v<decltype(pilot), Ptr<Pilot> const>);
    EXPECT_TRUE(pilot->onDuty);
    EXPECT_EQ(pilot->name, "Eve");
    EXPECT_EQ(pilot->berth, Berth("2", "Ada"));
    EXPECT_EQ(pilot->references(), 1U);
}

TEST(GenericConstructionTest, WhatWasWrittenIsConstructedAgain) {
    Berth const berth("\"2\"", "\\\n");
    auto const pilot =
        construct(&pilotFactory, Arguments{Fen::valueToStrep(false), Fen::valueToStrep(String()),
                                           Fen::valueToStrep(berth)});
    EXPECT_FALSE(pilot->onDuty);
    EXPECT_EQ(pilot->name, "");
    EXPECT_EQ(pilot->berth, berth);
}

TEST(GenericConstructionTest, EveryCallConstructsAnother) {
    Arguments const arguments = {"true", "\"\"", R"(Harbour::Berth(pier: "", ship: ""))"};
    EXPECT_NE(construct(&pilotFactory, arguments), construct(&pilotFactory, arguments));
}

TEST(GenericConstructionTest, ParametersAreTakenByValueAndByReference) {
    auto* const factory =
        +[](String value, String const constant, String const& reference, String&& temporary) {
            return value + constant + reference + temporary;
        };
    EXPECT_EQ(construct(factory, Arguments{"\"a\"", "\"b\"", "\"c\"", "\"d\""}), "abcd");
}

TEST(GenericConstructionTest, ANodeIsAnArgumentThroughAReferenceToANewOne) {
    auto* const factory = +[](Ptr<Crane> const& crane) { return crane; };
    {
        auto const crane = construct(
            factory, Arguments{R"(Harbour::Crane(name: "north", load: "tin", berth: "2"))"});
        EXPECT_EQ(crane->name, "north");
        EXPECT_EQ(crane->load, "tin");
        EXPECT_EQ(crane->berth, "2");
        EXPECT_EQ(crane->references(), 1U);
    }
    EXPECT_EQ(Crane::alive, 0);
}

TEST(GenericConstructionTest, AFactoryMayHaveAnyResult) {
    static int calls = 0;
    construct(
        +[](bool) { ++calls; }, Arguments{"true"});
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(&construct(
                  +[](bool) -> int& { return calls; }, Arguments{"true"}),
              &calls);
}

TEST(GenericConstructionTest, AFactoryMayHaveNoParameter) {
    static int calls = 0;
    EXPECT_EQ(construct(+[] { return 7; }, {}), 7);
    construct(+[] { ++calls; }, {});
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(faultOf(+[] { return 0; }, {""}),
              (Fault{"expected 0 constructor arguments, not 1", 0}));
}

TEST(GenericConstructionTest, AFactoryMayPromiseNotToThrow) {
    auto* const factory = +[](bool value) noexcept { return !value; };
    EXPECT_TRUE(construct(factory, Arguments{"false"}));
}

TEST(GenericConstructionTest, ArgumentsComeFromAnyRowOfStrings) {
    auto* const factory = +[](String const& a, String const& b) { return a + "," + b; };
    std::array<String, 3> const strings = {"\"a\"", "\"b\"", "\"c\""};
    EXPECT_EQ(construct(factory, std::span(strings).first(2)), "a,b");
    EXPECT_EQ(construct(factory, std::span(strings).last<2>()), "b,c");
}

TEST(GenericConstructionTest, WhatAFactoryThrowsReachesTheCallerAsItIs) {
    auto* const factory =
        +[](bool) -> int { throw Fen::AttributeFormatException("thrown by the factory", 7); };
    EXPECT_EQ(faultOf(factory, {"true"}), (Fault{"thrown by the factory", 7}));
}

// --- what is refused ---

TEST(GenericConstructionTest, TooFewAndTooManyArgumentsAreRefused) {
    Arguments const arguments = {"true", "\"Eve\"", R"(Harbour::Berth(pier: "", ship: ""))",
                                 "\"one too many\""};
    for (std::size_t count : {0U, 1U, 2U, 4U}) {
        Arguments const given(arguments.begin(), arguments.begin() + static_cast<int>(count));
        EXPECT_EQ(faultOf(given),
                  (Fault{"expected 3 constructor arguments, not " + std::to_string(count), 0}));
    }
}

TEST(GenericConstructionTest, TheCountIsLookedAtBeforeTheArguments) {
    EXPECT_EQ(faultOf({"no", "no"}), (Fault{"expected 3 constructor arguments, not 2", 0}));
}

TEST(GenericConstructionTest, TheArgumentThatCannotBeReadIsNamedWithThePositionInIt) {
    String const yes = "true";
    String const name = R"("Eve")";
    String const berth = R"(Harbour::Berth(pier: "", ship: ""))";
    struct {
        Arguments arguments;
        Fault fault;
    } const rows[] = {
        {{"truest", name, berth},
         {"constructor argument 1: expected the end of the text at offset 4", 4}},
        {{yes, "Eve", berth}, {"constructor argument 2: expected '\"' at offset 0", 0}},
        {{yes, R"("E\ve")", berth},
         {R"(constructor argument 2: expected '"', '\' or 'x' at offset 3)", 3}},
        {{yes, "", berth}, {"constructor argument 2: expected '\"' at offset 0", 0}},
        {{yes, name, name}, {"constructor argument 3: expected 'Harbour::Berth' at offset 0", 0}},
        {{yes, name, R"(Harbour::Berth(pier: "2"))"},
         {"constructor argument 3: expected ',' at offset 24", 24}},
    };
    for (auto const& [arguments, fault] : rows)
        EXPECT_EQ(faultOf(arguments), fault);
}

TEST(GenericConstructionTest, ANodeThatCannotBeReadIsNamedToo) {
    auto* const factory = +[](bool, Ptr<Crane> const&) { return 0; };
    EXPECT_EQ(faultOf(factory, {"true", R"(Harbour::Crane(name: "", load: "",))"}),
              (Fault{"constructor argument 2: expected 'berth' at offset 34", 34}));
}

TEST(GenericConstructionTest, TheFirstOfTwoBadArgumentsIsNamed) {
    EXPECT_EQ(faultOf({"true", "bad", "bad"}),
              (Fault{"constructor argument 2: expected '\"' at offset 0", 0}));
}

TEST(GenericConstructionTest, TheFactoryIsNotCalledForArgumentsThatAreRefused) {
    auto const madeBefore = Pilot::made;
    faultOf({"true", "\"Eve\""});
    faultOf({"true", "\"Eve\"", "bad"});
    EXPECT_EQ(Pilot::made, madeBefore);
}

TEST(GenericConstructionTest, ArgumentsThatWereReadGoWithTheOneThatWasNot) {
    auto* const factory = +[](Ptr<Crane> const&, bool, Ptr<Crane> const&) { return 0; };
    String const crane = R"(Harbour::Crane(name: "", load: "", berth: ""))";
    EXPECT_EQ(faultOf(factory, {crane, "\"bad\"", crane}).what.substr(0, 22),
              "constructor argument 2");
    EXPECT_EQ(Crane::alive, 0);
}

} // namespace
