// The words in which changes are told.
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "DiffSamples.h"
#include "Text.h"
#include "diff/DiffWords.h"

namespace {

using namespace toolunits;
using enum ChangeKind;
using KeldaTool::causeText;
using KeldaTool::clipped;
using KeldaTool::firstOf;
using KeldaTool::headlineOf;
using KeldaTool::valuesText;

std::string quoted(std::string_view text) {
    return "<" + KeldaTool::printable(text) + ">";
}

struct Told {
    ChangeKind kind;
    std::string before, after;
    std::string headline, values;
};

std::vector<Told> const everyKind = {
    {agentAdded, "", "", "agent added", ""},
    {agentRemoved, "", "", "agent removed", ""},
    {faultAdded, "", "m", "agent stops at a fault", "<m>"},
    {faultRemoved, "m", "", "agent no longer stops at a fault", "was: <m>"},
    {mountAdded, "", "rw", "mount added", "flags: <rw>"},
    {mountAdded, "", "", "mount added", "flags: none"},
    {mountRemoved, "rw", "", "mount removed", "flags were: <rw>"},
    {flagsWidened, "r", "rw", "flags widened", "<r> -> <rw> (<+w>)"},
    {flagsWidened, "", "rw", "flags widened", "no flags -> <rw> (<+rw>)"},
    {flagsNarrowed, "rw", "r", "flags narrowed", "<rw> -> <r> (<-w>)"},
    {flagsNarrowed, "rw", "", "flags narrowed", "<rw> -> no flags (<-rw>)"},
    {flagsReplaced, "ri", "rw", "flags replaced", "<ri> -> <rw> (<+w -i>)"},
    {flagsReplaced, "rw", "wr", "flags replaced", "<rw> -> <wr>"},
    {typeChanged, "A", "B", "type changed", "<A> -> <B>"},
    {groupAdded, "", "g", "mount group added", "also in <g>"},
    {groupAdded, "", "::", "mount group added", "also in the group without a name"},
    {groupRemoved, "g", "", "mount group removed", "no longer in <g>"},
    {groupRemoved, "::", "", "mount group removed", "no longer in the group without a name"},
    {groupPriorityChanged, "10", "0", "priority of the mount group changed", "<10> -> <0>"},
    {conditionChanged, "", "c", "condition changed", "no condition -> <c>"},
    {rootFlagsChanged, "rt", "rwt", "root flags changed", "<rt> -> <rwt> (<+w>)"},
    {connectionFlagsChanged, "S", "", "connection flags changed", "<S> -> no flags (<-S>)"},
    {subAgentsChanged, "", "A, B", "sub-agents changed", "none -> <A, B>"},
    {activeMountChanged, "passive", "active", "agent has active mounts now", ""},
    {activeMountChanged, "active", "passive", "agent has no active mounts any more", ""},
    {matchActiveNameChanged, "no", "yes", "agent has an -Active- variant now", ""},
    {matchActiveNameChanged, "yes", "no", "agent has no -Active- variant any more", ""},
    {noDefaultMountGroupChanged, "no", "yes", "agent refuses the default mount groups now", ""},
    {noDefaultMountGroupChanged, "yes", "no", "agent takes the default mount groups again", ""},
    {tokensChanged, "A-%b", "A-%b$", "token takes another part of the agent's name",
     "<A-%b> -> <A-%b$>"},
    {preinitAdded, "", "T", "declaration added", "type: <T>"},
    {preinitRemoved, "T", "", "declaration removed", "type was: <T>"},
    {preinitTypeChanged, "A", "B", "declared type changed", "<A> -> <B>"},
    {preinitAttributeChanged, "", "a", "declared attribute changed", "no attribute -> <a>"},
    {preinitConfigChanged, "no", "yes", "path became a config path", ""},
    {preinitConfigChanged, "yes", "no", "path is no config path any more", ""},
};

TEST(DiffWords, ThereAreSomeForEveryKind) {
    for (auto const& row : KeldaDatabase::changeTable())
        EXPECT_TRUE(std::any_of(everyKind.begin(), everyKind.end(), [&row](Told const& told) {
            return told.kind == row.kind;
        })) << nameOf(row.kind);
}

TEST(DiffWords, TellWhatWasAndIs) {
    for (auto const& told : everyKind) {
        auto const made = change(told.kind, ChangeClass::risky, told.before, told.after);
        EXPECT_EQ(headlineOf(made), told.headline);
        EXPECT_EQ(valuesText(made, quoted), told.values) << nameOf(told.kind);
    }
}

struct Caused {
    ChangeCause cause;
    std::string bothSides, onlyNew, onlyOld;
};

TEST(DiffWords, TellTheCauseByTheSideOfItsLines) {
    using enum ChangeCause;
    StoryPlace const place{"f", 1, {}, "alias: %root = a"};
    for (auto const& [cause, bothSides, onlyNew, onlyOld] : {
             Caused{line, "", "", ""},
             {file, "because another file is read", "because the file is new",
              "because the file is gone"},
             {include, "because an Include line finds other files",
              "because an Include line is new", "because an Include line is gone"},
             {alias, "because <%root> has another value", "because <%root> is defined now",
              "because <%root> is not defined any more"},
             {agentName, "because an agent-name line is for other agents",
              "because a profile is for the agent now",
              "because a profile is not for the agent any more"},
             {keyword, "because a keyword line is another one", "because a keyword line is new",
              "because a keyword line is gone"},
             {preinit, "because a preinit line is another one", "because a preinit line is new",
              "because a preinit line is gone"},
         }) {
        auto made = change(mountAdded, ChangeClass::risky, "", "w");
        made.cause = cause;
        made.newPlaces = {place};
        EXPECT_EQ(causeText(made, quoted), onlyNew);
        made.oldPlaces = {place};
        EXPECT_EQ(causeText(made, quoted), bothSides);
        made.newPlaces.clear();
        EXPECT_EQ(causeText(made, quoted), onlyOld);
    }
}

TEST(DiffWords, TellNoCauseOfWhatTheLineItselfSays) {
    for (auto const& row : KeldaDatabase::changeTable()) {
        auto made = change(row.kind, row.most, "a", "b");
        made.cause = ChangeCause::keyword;
        bool const isOfKeyword = row.kind >= groupAdded && row.kind < tokensChanged;
        EXPECT_EQ(causeText(made, quoted).empty(), isOfKeyword) << nameOf(row.kind);
        made.cause = ChangeCause::preinit;
        EXPECT_EQ(causeText(made, quoted).empty(), row.kind >= preinitAdded) << nameOf(row.kind);
        made.cause = ChangeCause::agentName;
        EXPECT_EQ(causeText(made, quoted).empty(), row.kind == tokensChanged) << nameOf(row.kind);
    }
}

TEST(DiffWords, NameAnAliasOnlyIfThereIsOne) {
    struct Named {
        std::string oldLine, newLine, name;
    };
    for (auto const& [oldLine, newLine, name] : {Named{"alias:%a=1", "alias : %a = 2", "<%a>"},
                                                 {"alias: %a\t=1", "alias:%a=2", "<%a>"},
                                                 {"alias:%a=1", "alias:%b=1", "an alias"},
                                                 {"", "", "an alias"},
                                                 {"alias:%\x1b=1", "alias:%\x1b=2", "<%\\x1b>"}}) {
        auto made = change(mountAdded, ChangeClass::risky, "", "w");
        made.cause = ChangeCause::alias;
        made.oldPlaces = {{"f", 1, {}, oldLine}};
        made.newPlaces = {{"f", 1, {}, newLine}};
        EXPECT_EQ(causeText(made, quoted), "because " + name + " has another value");
    }
}

TEST(Clipped, TextHasItsFirstCharacters) {
    for (auto const& [text, most, expected] : {
             std::tuple<std::string, std::size_t, std::string>{"", 5, ""},
             {"abcde", 5, "abcde"},
             {"abcdef", 5, "ab..."},
             {"\u00e4\u00f6\u00fc\u00e4\u00f6", 5, "\u00e4\u00f6\u00fc\u00e4\u00f6"},
             {"\u00e4\u00f6\u00fc\u00e4\u00f6\u00fc", 5, "\u00e4\u00f6..."},
         })
        EXPECT_EQ(clipped(text, most), expected);
}

TEST(FirstOf, SparesNobodyASingleOne) {
    for (auto const& [count, shown] :
         {std::pair<int, std::size_t>{0, 0}, {2, 2}, {3, 3}, {4, 2}, {9, 2}}) {
        std::vector<int> const items(static_cast<std::size_t>(count));
        EXPECT_EQ(firstOf(items, 2).shown.size(), shown);
        EXPECT_EQ(firstOf(items, 2).more, items.size() - shown);
    }
}

} // namespace
