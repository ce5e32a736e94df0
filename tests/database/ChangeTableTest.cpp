// The names of kinds, classes and causes of changes, and how kinds mirror each other.
#include <set>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "database/diff/Difference.h"

namespace {

using KeldaDatabase::Change;
using KeldaDatabase::ChangeCause;
using KeldaDatabase::ChangeClass;
using KeldaDatabase::changeClassNamed;
using KeldaDatabase::ChangeKind;
using KeldaDatabase::changeTable;
using KeldaDatabase::Difference;

TEST(ChangeTable, HoldsEveryKindOnceInItsOrder) {
    auto const last = static_cast<std::size_t>(ChangeKind::preinitConfigChanged);
    ASSERT_EQ(changeTable().size(), last + 1);
    for (std::size_t i = 0; i <= last; ++i)
        EXPECT_EQ(static_cast<std::size_t>(changeTable()[i].kind), i);
}

TEST(ChangeTable, GivesEveryKindANameOfItsOwn) {
    std::set<std::string_view> names;
    for (auto const& row : changeTable()) {
        auto const name = nameOf(row.kind);
        EXPECT_TRUE(names.insert(name).second) << name;
        EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), name.npos) << name;
        EXPECT_LE(row.least, row.most) << name;
        EXPECT_TRUE(row.meaning.ends_with('.')) << name;
    }
    EXPECT_TRUE(names.contains("mount-added"));
    EXPECT_TRUE(names.contains("no-default-mount-group-changed"));
}

TEST(ChangeTable, MirrorsEveryKindBackToItself) {
    for (auto const& row : changeTable())
        EXPECT_EQ(mirrorOf(mirrorOf(row.kind)), row.kind) << nameOf(row.kind);
    EXPECT_EQ(mirrorOf(ChangeKind::agentAdded), ChangeKind::agentRemoved);
    EXPECT_EQ(mirrorOf(ChangeKind::flagsNarrowed), ChangeKind::flagsWidened);
    EXPECT_EQ(mirrorOf(ChangeKind::preinitRemoved), ChangeKind::preinitAdded);
    EXPECT_EQ(mirrorOf(ChangeKind::typeChanged), ChangeKind::typeChanged);
}

TEST(ChangeClasses, AreFoundByTheirNames) {
    for (auto const severity :
         {ChangeClass::harmless, ChangeClass::notable, ChangeClass::risky, ChangeClass::dangerous})
        EXPECT_EQ(changeClassNamed(nameOf(severity)), severity);
    for (auto const* const name : {"", "Risky", "risk", "none"})
        EXPECT_EQ(changeClassNamed(name), std::nullopt) << name;
}

TEST(ChangeCauses, HaveNamesForPrograms) {
    EXPECT_EQ(nameOf(ChangeCause::line), "line");
    EXPECT_EQ(nameOf(ChangeCause::agentName), "agent-name");
    EXPECT_EQ(nameOf(ChangeCause::preinit), "preinit");
}

TEST(AChange, CountsEachAgentOnce) {
    Change change;
    EXPECT_EQ(change.agentCount(), 0U);
    change.paths = {{"a", {"A", "B"}, ""}, {"b", {"B", "C"}, ""}};
    EXPECT_EQ(change.agentCount(), 3U);
}

TEST(ADifference, IsAsBadAsItsWorstChange) {
    Difference difference;
    EXPECT_EQ(difference.worst(), std::nullopt);
    for (auto const severity : {ChangeClass::harmless, ChangeClass::risky, ChangeClass::notable}) {
        difference.changes.emplace_back();
        difference.changes.back().severity = severity;
    }
    EXPECT_EQ(difference.worst(), ChangeClass::risky);
}

} // namespace
