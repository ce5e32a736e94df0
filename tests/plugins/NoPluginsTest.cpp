// A process without any plug-in: the choices that every other test program makes unseen.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ChoiceTrace.h"

namespace {

using support::TraceLine;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

TEST(NoPluginLoader, LeadsToTheBuiltInCheck) {
    auto const& lines = traceOfTheFirstCheck();
    EXPECT_THAT(lines,
                Contains(TraceLine{1, "getAnotherImpl dlopen of libPluginLoader unsuccessful"}));
    EXPECT_THAT(lines, Contains(TraceLine{9, "Using KeldaBase FileLoadCheck implementation"}));
    EXPECT_THAT(lines, Not(Contains(TraceLine{9, "Using external FileLoadCheck implementation"})));
    DynFileLoadCheck const check("preinit");
    EXPECT_NE(dynamic_cast<FileLoadCheckNoOp*>(check.get()), nullptr);
}

TEST(NoKeelKeldaTypes, LeadsToTheFirstCell) {
    EXPECT_THAT(traceOfTheFirstCellId(),
                ElementsAre(TraceLine{1, "cellId dlopen of libKeelKeldaTypes unsuccessful"},
                            TraceLine{9, "cellId using non-Nimbo Cell impl"}));
    EXPECT_EQ(DynCell::cellId(), 1U);
}

} // namespace
