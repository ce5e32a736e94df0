// A process with the library that knows the cell.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "ChoiceTrace.h"
#include "Exported.h"
#include "support/LenientParser.h"

namespace {

using support::TraceLine;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto plugin = "libKeelKeldaTypes.so";

class CellPlugin : public testing::Test {
  protected:
    CellPlugin() {
        traceOfTheFirstCellId();
        cell_ = 2;
        timesAsked_ = 0;
    }

    std::atomic<unsigned>& cell_ = exportedBy<std::atomic<unsigned>>(plugin, "cellToTell");
    std::atomic<int>& timesAsked_ = exportedBy<std::atomic<int>>(plugin, "timesAskedForTheCell");
};

TEST_F(CellPlugin, IsChosenByTheFirstCall) {
    EXPECT_THAT(traceOfTheFirstCellId(),
                ElementsAre(TraceLine{9, "cellId dlopen of libKeelKeldaTypes successful"},
                            TraceLine{9, "cellId using Keel::Cell impl"}));
}

TEST_F(CellPlugin, IsAskedByEachLaterCallAtOnce) {
    support::TraceRecorder const trace;
    EXPECT_EQ(DynCell::cellId(), 2U);
    cell_ = 1;
    EXPECT_EQ(DynCell::cellId(), 1U);
    EXPECT_EQ(timesAsked_, 2);
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(CellPlugin, TheOtherCellIsTheOneThatIsNotTheOwn) {
    for (unsigned const named : {0U, 1U, 2U, 9U}) {
        cell_ = 2;
        EXPECT_EQ(DynCell::peerCellId(named), 1U) << named;
        cell_ = 1;
        EXPECT_EQ(DynCell::peerCellId(named), 2U) << named;
    }
}

TEST_F(CellPlugin, TheOtherCellOfCellZeroAsksOnceMore) {
    DynCell::peerCellId(1);
    EXPECT_EQ(timesAsked_, 1);
    DynCell::peerCellId(0);
    EXPECT_EQ(timesAsked_, 3);
}

TEST_F(CellPlugin, APathOfCellZeroIsTheOwnCells) {
    EXPECT_EQ(DynCell::path("x", 0), "cell/2/x");
    EXPECT_EQ(timesAsked_, 1);
}

TEST_F(CellPlugin, APathOfANamedCellIsMadeWithoutAsking) {
    EXPECT_EQ(DynCell::path("x", 2), "cell/2/x");
    EXPECT_EQ(DynCell::path("x", 1), "cell/1/x");
    EXPECT_EQ(timesAsked_, 0);
}

TEST_F(CellPlugin, AParserKnowsTheCellOfItsConstruction) {
    support::LenientParser const second;
    cell_ = 1;
    support::LenientParser const first;
    EXPECT_EQ(second.lookupAlias("%cellId"), Rook::String("2"));
    EXPECT_EQ(second.lookupAlias("%peerCellId"), Rook::String("1"));
    EXPECT_EQ(first.lookupAlias("%cellId"), Rook::String("1"));
    EXPECT_EQ(first.lookupAlias("%peerCellId"), Rook::String("2"));
}

} // namespace
