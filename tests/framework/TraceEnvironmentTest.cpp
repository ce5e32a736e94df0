// KELDA_TRACE, which switches trace levels on from outside.
#include <Trace/Trace.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CapturedStandardError.h"
#include "support/EnvironmentVariable.h"
#include "support/FreshComponent.h"

namespace {

using support::CapturedStandardError;
using support::EnvironmentVariable;
using support::freshComponent;
using testing::HasSubstr;

// What KELDA_TRACE makes of a component, "@" in its value standing for the component's name.
struct Setting {
    std::uint16_t mask;
    std::string standardError; // with "@" again
};

std::string replaced(std::string text, std::string_view from, std::string const& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

Setting settingBy(std::string const& value) {
    auto const name = freshComponent();
    EnvironmentVariable const variable("KELDA_TRACE", replaced(value, "@", name).c_str());
    CapturedStandardError const standardError;
    auto const mask = Trace::handle(name).mask();
    return {mask, replaced(standardError.text(), name, "@")};
}

struct Row {
    char const* value;
    unsigned mask;
};

TEST(KeldaTraceTest, LevelsAndRangesAreSwitchedOn) {
    for (auto const& [value, mask] : std::vector<Row>{{"@=0", 0x1},
                                                      {"@=3", 0x8},
                                                      {"@=15", 0x8000},
                                                      {"@=0-4,8", 0x11f},
                                                      {"@=0-15", 0xffff},
                                                      {"@=5-5", 0x20},
                                                      {"@=14-15,0-1", 0xc003},
                                                      {"@=2,2,1-3", 0xe}}) {
        auto const setting = settingBy(value);
        EXPECT_EQ(setting.mask, mask) << value;
        EXPECT_EQ(setting.standardError, "") << value;
    }
}

TEST(KeldaTraceTest, EachComponentTakesItsOwnPart) {
    for (auto const& [value, mask] : std::vector<Row>{{"@=5;Other=0-15", 0x20},
                                                      {"Other=0-15;@=5", 0x20},
                                                      {"Other=1;@=2;Third=3", 0x4},
                                                      {"Other=0-15", 0},
                                                      {"@Wrap=0-15", 0},
                                                      {"My@=0-15", 0},
                                                      {"@Wrap=5;@=1", 0x2},
                                                      {";;@=1;", 0x2},
                                                      {"Other;@=1", 0x2},
                                                      {"@=5;@Wrap=x;Other=y", 0x20},
                                                      {"", 0}}) {
        auto const setting = settingBy(value);
        EXPECT_EQ(setting.mask, mask) << value;
        EXPECT_EQ(setting.standardError, "") << value;
    }
}

TEST(KeldaTraceTest, APartThatCannotBeReadIsNamedAndLeftOut) {
    struct Malformed {
        char const* value;
        unsigned mask;
        char const* part;
    };
    for (auto const& [value, mask, part] : std::vector<Malformed>{{"@=16", 0, "16"},
                                                                  {"@=x", 0, "x"},
                                                                  {"@=1,x,2", 0x6, "x"},
                                                                  {"@=4-2,1", 0x2, "4-2"},
                                                                  {"@=-3", 0, "-3"},
                                                                  {"@=3-", 0, "3-"},
                                                                  {"@=1-2-3", 0, "1-2-3"},
                                                                  {"@=0-16", 0, "0-16"},
                                                                  {"@=+1,1", 0x2, "+1"},
                                                                  {"@=1, 2", 0x2, " 2"},
                                                                  {"@=4294967296", 0, "4294967296"},
                                                                  {"@=1=2", 0, "1=2"},
                                                                  {"@=1,,2", 0x6, ""}}) {
        auto const setting = settingBy(value);
        EXPECT_EQ(setting.mask, mask) << value;
        EXPECT_EQ(setting.standardError,
                  "KELDA_TRACE: no trace level: '" + std::string(part) + "' of component '@'\n")
            << value;
    }
}

TEST(KeldaTraceTest, EveryPartThatCannotBeReadIsNamed) {
    auto const setting = settingBy("@=a,1,b");
    EXPECT_EQ(setting.mask, 0x2);
    EXPECT_EQ(setting.standardError, "KELDA_TRACE: no trace level: 'a' of component '@'\n"
                                     "KELDA_TRACE: no trace level: 'b' of component '@'\n");
}

TEST(KeldaTraceTest, AComponentWithoutLevelsIsNamed) {
    for (char const* const value : {"@", "@=", "Other=1;@;Third=2"}) {
        auto const setting = settingBy(value);
        EXPECT_EQ(setting.mask, 0) << value;
        EXPECT_THAT(setting.standardError, HasSubstr("@")) << value;
    }
}

TEST(KeldaTraceTest, ItIsReadWhenAComponentIsFirstNamed) {
    auto const name = freshComponent();
    EnvironmentVariable const first("KELDA_TRACE", (name + "=1").c_str());
    auto const& handle = Trace::handle(name);
    EnvironmentVariable const second("KELDA_TRACE", (name + "=2").c_str());
    EXPECT_EQ(Trace::handle(name).mask(), 0x2);
    EXPECT_EQ(handle.mask(), 0x2);
}

TEST(KeldaTraceTest, AMaskSetLaterReplacesIt) {
    auto const name = freshComponent();
    EnvironmentVariable const variable("KELDA_TRACE", (name + "=0-15").c_str());
    Trace::handle(name).setMask(0x10);
    EXPECT_EQ(Trace::handle(name).mask(), 0x10);
}

} // namespace
