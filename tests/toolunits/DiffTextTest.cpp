// The differences of two devices as people read them.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <fmt/format.h>

#include "DiffSamples.h"
#include "diff/DiffFormats.h"

namespace {

using namespace toolunits;
using KeldaTool::diffText;

// What is written of a change, without its class and the totals.
std::string textOf(Change const& change) {
    auto const text = diffText(diffOf({change}), false);
    auto const begin = text.find("\n\n") + 2;
    return text.substr(begin, text.rfind("\n\n") + 1 - begin);
}

constexpr char const* sampleText =
    "1 dangerous change: agents may not start, or lack what they had\n"
    "\n"
    "  mount removed: sys/log, Sys::Log\n"
    "    flags were: r\n"
    "    for Led\n"
    "    old  old/profiles/Led:3  sys/log, Sys::Log, r\n"
    "\n"
    "1 risky change: agents may act otherwise, or write what they did not write\n"
    "\n"
    "  flags widened: cell/1/health\n"
    "    r -> rw (+w)\n"
    "    for 2 agents: Routing-%table and Routing-Active-*\n"
    "    old  old/profiles/shared.cell:2   %cellPath/health, Cell::Health, r\n"
    "    new  new/profiles/shared.cell:12  %cellPath/health, Cell::Health, rw\n"
    "         included by new/profiles/Routing:22\n"
    "         included by new/profiles/Outer:1\n"
    "\n"
    "1 notable change: agents get more than they had, and only read it\n"
    "\n"
    "  agent added\n"
    "    for Fan-%slot\n"
    "    mounts 2 paths: fan/%slot/speed rw and sys/clock r\n"
    "    because the file is new\n"
    "    new  new/profiles/Fan:1  agentName: Fan-%slot\n"
    "\n"
    "1 harmless change: no agent loses anything, or does anything that it did not do\n"
    "\n"
    "  declaration added: sys/spare\n"
    "    type: Sys::Spare\n"
    "    new  new/preinit/System:9  sys/spare, Sys::Spare\n"
    "\n"
    "4 changes (1 dangerous, 1 risky, 1 notable, 1 harmless) for 4 of 19 agents\n"
    "2 changes of a lesser class left out\n"
    "1 change left out that only follows from others; see --verbose\n";

TEST(DiffText, TellsTheWorstFirst) {
    EXPECT_EQ(diffText(sampleDiff(), false), sampleText);
}

TEST(DiffText, NamesTheDeviceOfMany) {
    auto result = sampleDiff();
    result.device = "rack\x1b";
    EXPECT_EQ(diffText(result, false), std::string("Device rack\\x1b\n") + sampleText);
}

TEST(DiffText, ColoursClassesKindsAndSides) {
    auto removed = change(ChangeKind::mountRemoved, ChangeClass::dangerous, "r", "");
    removed.oldPlaces = {{"f", 3, {}, "t"}};
    removed.newPlaces = removed.oldPlaces;
    auto result = diffOf({removed});
    result.device = "rack1";
    EXPECT_EQ(diffText(result, true),
              "\x1b[1mDevice rack1\x1b[0m\n"
              "\x1b[1;31m1 dangerous change\x1b[0m: agents may not start, or lack what they had\n"
              "\n"
              "  \x1b[1mmount removed\x1b[0m: sys/log, Sys::Log\n"
              "    flags were: r\n"
              "    for Led\n"
              "    \x1b[31mold\x1b[0m  f:3  t\n"
              "    \x1b[32mnew\x1b[0m  f:3  t\n"
              "\n"
              "1 change (1 dangerous) for 1 of 19 agents\n");
    auto const all = diffText(sampleDiff(), true);
    for (auto const* const severity :
         {"\x1b[1;31m1 dangerous", "\x1b[1;33m1 risky", "\x1b[1;36m1 notable", "\x1b[1;32m1 harm"})
        EXPECT_NE(all.find(severity), std::string::npos) << severity;
}

struct Totals {
    std::vector<ChangeClass> classes;
    std::size_t before, after, lesser, following;
    std::string text;
};

TEST(DiffText, SaysOfNoAgentThatItHasChanged) {
    DiffResult result;
    auto declared = change(ChangeKind::preinitAdded, ChangeClass::harmless, "", "T");
    declared.paths = {{"a/b", {}, "T"}};
    result.difference = {{declared}, 7, 7};
    auto const text = diffText(result, false);
    EXPECT_TRUE(text.ends_with("\n1 change (1 harmless) of declared paths only\n")) << text;
}

TEST(DiffText, EndsWithTotals) {
    using enum ChangeClass;
    for (auto const& [classes, before, after, lesser, following, text] : {
             Totals{{}, 7, 7, 0, 0, "no differences in meaning\n"},
             {{}, 7, 8, 1, 0, "no changes to show\n1 change of a lesser class left out\n"},
             {{},
              7,
              7,
              0,
              2,
              "no changes to show\n2 changes left out that only follow from others; see "
              "--verbose\n"},
             {{risky}, 1, 1, 0, 0, "1 change (1 risky) for 1 of 1 agent\n"},
             {{risky, risky, harmless},
              7,
              7,
              0,
              0,
              "3 changes (2 risky, 1 harmless) for 1 of 7 agents\n"},
             {{notable}, 7, 8, 0, 0, "1 change (1 notable) for 1 agent\n"},
             {{notable}, 0, 0, 0, 0, "1 change (1 notable) for 1 agent\n"},
         }) {
        DiffResult result;
        for (auto const severity : classes)
            result.difference.changes.push_back(
                change(ChangeKind::typeChanged, severity, "A", "B"));
        result.difference.agentsBefore = before;
        result.difference.agentsAfter = after;
        result.lesser = lesser;
        result.following = following;
        auto const whole = diffText(result, false);
        EXPECT_TRUE(whole == text || whole.ends_with("\n\n" + text)) << whole;
        EXPECT_EQ(whole == text, classes.empty()) << whole;
    }
}

TEST(DiffText, NamesTheFirstOfManyPathsAndAgents) {
    auto many = change(ChangeKind::mountAdded, ChangeClass::notable, "", "r");
    many.paths.clear();
    for (int i = 10; i < 22; ++i)
        many.paths.push_back({fmt::format("path/{}", i), {fmt::format("Agent{}", i)}, "T"});
    EXPECT_EQ(textOf(many), "  mount added: 12 paths\n"
                            "      path/10, T\n"
                            "      path/11, T\n"
                            "      path/12, T\n"
                            "      path/13, T\n"
                            "      path/14, T\n"
                            "      and 7 more\n"
                            "    flags: r\n"
                            "    for 12 agents: Agent10, Agent11, Agent12, Agent13, Agent14 and 7 "
                            "more\n");
}

TEST(DiffText, SparesNobodyASinglePathOrAgent) {
    auto six = change(ChangeKind::mountAdded, ChangeClass::notable, "", "r");
    six.paths.clear();
    for (int i = 1; i < 7; ++i)
        six.paths.push_back({fmt::format("p{}", i), {fmt::format("A{}", i)}, ""});
    EXPECT_EQ(textOf(six), "  mount added: 6 paths\n"
                           "      p1\n      p2\n      p3\n      p4\n      p5\n      p6\n"
                           "    flags: r\n"
                           "    for 6 agents: A1, A2, A3, A4, A5 and A6\n");
}

TEST(DiffText, CountsEachAgentOnce) {
    auto two = change(ChangeKind::typeChanged, ChangeClass::dangerous, "A", "B");
    two.paths = {{"a", {"Fan", "Led"}, "B"}, {"b", {"Led"}, "B"}};
    EXPECT_EQ(textOf(two), "  type changed: 2 paths\n"
                           "      a\n"
                           "      b\n"
                           "    A -> B\n"
                           "    for 2 agents: Fan and Led\n");
}

TEST(DiffText, ShowsTheFirstOfManyLines) {
    auto many = change(ChangeKind::typeChanged, ChangeClass::dangerous, "A", "B");
    for (int i = 1; i < 6; ++i)
        many.oldPlaces.push_back({"old/f", i, {}, "o"});
    for (int i = 7; i < 11; ++i)
        many.newPlaces.push_back({"new/file", i, {}, "n"});
    EXPECT_EQ(textOf(many), "  type changed: sys/log\n"
                            "    A -> B\n"
                            "    for Led\n"
                            "    old  old/f:1      o\n"
                            "    old  old/f:2      o\n"
                            "    old  old/f:3      o\n"
                            "         and 2 more lines\n"
                            "    new  new/file:7   n\n"
                            "    new  new/file:8   n\n"
                            "    new  new/file:9   n\n"
                            "    new  new/file:10  n\n");
}

// Where the line is gone, that is how its file was met; else the new one tells.
TEST(DiffText, ShowsIncludesOfTheOldSideOnlyWhereThereIsNoNewOne) {
    auto made = sharedChange();
    made.newPlaces.clear();
    EXPECT_EQ(textOf(made),
              "  flags widened: cell/1/health\n"
              "    r -> rw (+w)\n"
              "    for 2 agents: Routing-%table and Routing-Active-*\n"
              "    old  old/profiles/shared.cell:2  %cellPath/health, Cell::Health, r\n"
              "         included by old/profiles/Routing:22\n");
}

TEST(DiffText, TellsWhatFollows) {
    auto made = change(ChangeKind::mountAdded, ChangeClass::harmless, "", "tn");
    made.follows = true;
    EXPECT_EQ(textOf(made), "  mount added: sys/log, Sys::Log (follows from other mounts)\n"
                            "    flags: tn\n"
                            "    for Led\n");
}

TEST(DiffText, ShowsPlacesWithoutAFileAndWithoutAText) {
    auto made = change(ChangeKind::typeChanged, ChangeClass::dangerous, "A", "B");
    made.oldPlaces = {{"", 0, {}, ""}};
    made.newPlaces = {{"f", 2, {}, ""}};
    EXPECT_EQ(textOf(made), "  type changed: sys/log\n"
                            "    A -> B\n"
                            "    for Led\n"
                            "    old  no file\n"
                            "    new  f:2\n");
}

TEST(DiffText, CutsAVeryLongLine) {
    auto made = change(ChangeKind::typeChanged, ChangeClass::dangerous, "A", "B");
    made.newPlaces = {{"f", 2, {}, std::string(5000, 'x')}};
    EXPECT_NE(textOf(made).find("  " + std::string(197, 'x') + "...\n"), std::string::npos);
}

TEST(DiffText, IsAMessageOnOneLine) {
    auto made = change(ChangeKind::faultAdded, ChangeClass::dangerous, "", "one\n  two\n");
    made.paths = {{"", {"Led"}, ""}};
    EXPECT_EQ(textOf(made), "  agent stops at a fault\n"
                            "    one / two\n"
                            "    for Led\n");
}

RC_GTEST_PROP(DiffTextProperty, IsFitForATerminalWhateverThereIs, ()) {
    RC_ASSERT(isFitForATerminal(diffText(anyDiff(), false)));
}

} // namespace
