// The rule for the flags of an intermediate path, and the query that applies it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <memory>
#include <string>

#include <KeldaUtil/MountFlags.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using Fen::MountTable::Flags;
using testing::ElementsAre;

constexpr std::uint32_t w = 0x2;
constexpr std::uint32_t t = 0x10;
constexpr std::uint32_t p = 0x800;
constexpr std::uint32_t n = 0x4000;
constexpr std::uint32_t y = 0x80000;

std::uint32_t rule(std::uint32_t target, std::uint32_t parent, bool topDown) {
    return Kelda::getIntermediateFlagsImpl(Flags(target), Flags(parent), topDown).bits();
}

std::string text(Flags flags) {
    return std::string(KeldaUtil::mountTableFlagsToString(flags).view());
}

struct RuleRow {
    std::uint32_t target;
    std::uint32_t parent;
    std::uint32_t bottomUp;
    std::uint32_t topDown;
};

TEST(IntermediateFlags, FollowFromTheTargetAndAParentThatPassesItsOwnOn) {
    for (auto const& row : std::vector<RuleRow>{
             {y, 0, y | n, y | n},
             {y | w, 0, y | w | n, y | w | n},
             {y | p, 0, y | p | n, y | p | n},
             {y | t, 0, y | n, y | n},
             {y | w | p, 0, y | w | p | n, y | w | p | n},
             // A parent without 0x10 passes nothing on and takes nothing away.
             {y, w | p, y | n, y | n},
             {y | w, p, y | w | n, y | w | n},
             {y | w | p, w, y | w | p | n, y | w | p | n},
             // A parent with 0x10 passes 0x10 and 0x800 on, and 0x2 down only where it has it too.
             {y, t, y | n, y | t | n},
             {y, t | w, y | n, y | t | n},
             {y | w, t, y | w | n, y | t | n},
             {y | w, t | w, y | w | n, y | w | t | n},
             {y, t | p, y | n, y | t | p | n},
             {y | p, t, y | p | n, y | t | p | n},
             {y | w | p, t, y | w | p | n, y | t | p | n},
             {y | w | p, t | w | p, y | w | p | n, y | w | t | p | n},
             {y | w | n, t | w | n | y, y | w | n, y | w | t | n},
         }) {
        SCOPED_TRACE(testing::Message() << std::hex << row.target << " below " << row.parent);
        EXPECT_EQ(rule(row.target, row.parent, false), row.bottomUp);
        EXPECT_EQ(rule(row.target, row.parent, true), row.topDown);
    }
}

TEST(IntermediateFlags, NoOtherBitIsEverPassedOn) {
    constexpr std::uint32_t others = 0xfffff & ~(w | t | p | n | y);
    EXPECT_EQ(rule(y | others, 0, false), y | n);
    EXPECT_EQ(rule(y | others, others, true), y | n);
    EXPECT_EQ(rule(y | others, t | others, true), y | t | n);
    EXPECT_EQ(rule(0xfffff, 0xfffff, true), y | w | t | p | n);
    EXPECT_EQ(rule(0xfffff, 0xfffff, false), y | w | p | n);
}

RC_GTEST_PROP(IntermediateFlagsProperty, EveryBitIsAsTheRuleSays,
              (std::uint32_t anyTarget, std::uint32_t anyParent, bool topDown)) {
    auto const target = (anyTarget & 0xfffff) | y;
    auto const parent = anyParent & 0xfffff;
    auto const result = rule(target, parent, topDown);
    bool const inherit = topDown && (parent & t) != 0;
    RC_ASSERT((result & ~(w | t | p | n | y)) == 0U);
    RC_ASSERT((result & (y | n)) == (y | n));
    RC_ASSERT(((result & t) != 0) == inherit);
    RC_ASSERT(((result & w) != 0) == ((target & w) != 0 && (!inherit || (parent & w) != 0)));
    RC_ASSERT(((result & p) != 0) == ((target & p) != 0 || (inherit && (parent & p) != 0)));
}

RC_GTEST_PROP(IntermediateFlagsProperty, BottomUpTheParentDoesNotMatter,
              (std::uint32_t anyTarget, std::uint32_t anyParent)) {
    auto const target = (anyTarget & 0xfffff) | y;
    RC_ASSERT(rule(target, anyParent & 0xfffff, false) == rule(target, 0, false));
}

TEST(IntermediateFlags, TheRuleIsTraced) {
    support::TraceRecorder const trace;
    rule(y | w, t, true);
    EXPECT_THAT(trace.at(8), ElementsAre("( targetFlags : w, parentFlags : t, topDown : true )"));
    EXPECT_THAT(trace.at(9), ElementsAre("Intermediate flags: tny"));
}

TEST(IntermediateFlags, TheRuleBottomUpIsTracedAsSuch) {
    support::TraceRecorder const trace;
    rule(y | w, 0, false);
    EXPECT_THAT(trace.at(8), ElementsAre("( targetFlags : w, parentFlags : , topDown : false )"));
    EXPECT_THAT(trace.at(9), ElementsAre("Intermediate flags (bottom-up only): wn"));
}

TEST(IntermediateFlags, ATargetThatDoesNotInstantiateIsAProgrammingError) {
    EXPECT_DEATH(rule(w | t | p | n, 0, false), "targetFlags.instantiatingMount\\(\\)");
    EXPECT_DEATH(rule(0, y, true), "targetFlags.instantiatingMount\\(\\)");
}

// --- the query ---

class IntermediateFlagsQuery : public testing::Test {
  protected:
    IntermediateFlagsQuery() {
        parser_.initializedIs(true);
        parser_.allProfilesLoadedIs(true);
        parser_.rootFlagsAre("rwt");
    }
    void mount(char const* path, std::uint32_t bits, bool named = true) {
        parser_.recordMountArgsInternal(path, {"Fen::Dir", Flags(bits), false}, named);
    }
    std::string ask(std::uint32_t target, char const* path) {
        return text(parser_.getIntermediateFlags(Flags(target), path));
    }

    support::CleanEnvironment environment_;
    support::LenientParser parser_;
};

TEST_F(IntermediateFlagsQuery, WithoutAnAncestorTheRootFlagsAreInherited) {
    support::TraceRecorder const trace;
    EXPECT_EQ(ask(y | w, "a/b"), "wtn");
    EXPECT_EQ(ask(y, "a"), "tny");
    EXPECT_TRUE(trace.has(7, "( targetFlags : w, intermediatePath : a/b )"));
    EXPECT_EQ(trace.count(9, "Inheriting from root flags rwt"), 2);
}

TEST_F(IntermediateFlagsQuery, EmptyRootFlagsPassNothingOn) {
    parser_.rootFlagsAre("");
    support::TraceRecorder const trace;
    EXPECT_EQ(ask(y | w, "a"), "wn");
    EXPECT_TRUE(trace.has(9, "Inheriting from root flags "));
}

TEST_F(IntermediateFlagsQuery, TheNearestAncestorIsInheritedFrom) {
    mount("a", t | w);
    mount("a/b/c", t);
    support::TraceRecorder const trace;
    EXPECT_EQ(ask(y | w, "a/b/c/d/e"), "tny");
    EXPECT_TRUE(trace.has(9, "Found parent a/b/c with flags t"));
    EXPECT_EQ(ask(y | w, "a/b"), "wtn");
    EXPECT_TRUE(trace.has(9, "Found parent a with flags wt"));
}

TEST_F(IntermediateFlagsQuery, AnIntermediateAncestorIsPassedOver) {
    mount("a", t | p);
    mount("a/b", y | w, false);
    ASSERT_TRUE(parser_.intermediatePaths().contains("a/b"));
    support::TraceRecorder const trace;
    EXPECT_EQ(ask(y, "a/b/c"), "tpny");
    EXPECT_TRUE(trace.has(9, "Found parent a with flags tp"));
}

TEST_F(IntermediateFlagsQuery, IntermediateAncestorsAloneLeadToTheRoot) {
    mount("a", y, false);
    support::TraceRecorder const trace;
    EXPECT_EQ(ask(y, "a/b"), "tny");
    EXPECT_TRUE(trace.has(9, "Inheriting from root flags rwt"));
}

TEST_F(IntermediateFlagsQuery, ASiblingWithALongerNameIsNoAncestor) {
    mount("a", t | w);
    mount("ab", 0);
    EXPECT_EQ(ask(y | w, "ab/c"), "wn");
    EXPECT_EQ(ask(y | w, "abc/d"), "wtn") << "from the root";
}

TEST_F(IntermediateFlagsQuery, APathBelowTheLeadingSlashHasNoAncestor) {
    mount("", 0);
    support::TraceRecorder const trace;
    EXPECT_EQ(ask(y | w, "/a"), "wtn");
    EXPECT_TRUE(trace.has(9, "Inheriting from root flags rwt"));
}

TEST_F(IntermediateFlagsQuery, APathWithARecordAddsToIt) {
    mount("a", t);
    mount("a/b", 0x1 | y | t);
    support::TraceRecorder const trace;
    EXPECT_EQ(ask(y | w, "a/b"), "rwtn");
    EXPECT_TRUE(trace.has(9, "Intermediate a/b already has data with flags rt. Doing bottom-up "
                             "inheritance only, giving flags rwtn."));
}

TEST_F(IntermediateFlagsQuery, NothingIsRecordedByAsking) {
    mount("a", t);
    ask(y, "a/b/c");
    EXPECT_EQ(parser_.pathMountArgsMap().size(), 1U);
    EXPECT_TRUE(parser_.intermediatePaths().empty());
}

TEST_F(IntermediateFlagsQuery, LoadsOnFirstUse) {
    support::Device device;
    device.preinit("Base", "a,T\n").profile("Fan", "agentName:Fan\na,T,rt\n");
    auto const parser = device.agent("Fan");
    EXPECT_EQ(text(parser->getIntermediateFlags(Flags(y | w), "a/b")), "tny");
    EXPECT_TRUE(parser->isInitialized());
}

TEST_F(IntermediateFlagsQuery, ATargetThatDoesNotInstantiateIsAProgrammingError) {
    EXPECT_DEATH(ask(w, "a"), "targetFlags.instantiatingMount\\(\\)");
}

} // namespace
