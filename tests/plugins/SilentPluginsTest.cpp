// A process with plug-in libraries that offer none of the functions looked for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ChoiceTrace.h"

namespace {

using support::TraceLine;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

TEST(SilentPluginLoader, LeadsToTheBuiltInCheck) {
    auto const& lines = traceOfTheFirstCheck();
    EXPECT_THAT(lines,
                Contains(TraceLine{9, "getAnotherImpl dlopen of libPluginLoader successful"}));
    EXPECT_THAT(lines, Contains(TraceLine{9, "Using KeldaBase FileLoadCheck implementation"}));
    EXPECT_THAT(lines, Each(testing::Field(&TraceLine::text, Not(HasSubstr(" returned ptr 0x")))));
    DynFileLoadCheck const check("preinit");
    EXPECT_NE(dynamic_cast<FileLoadCheckNoOp*>(check.get()), nullptr);
}

TEST(SilentKeelKeldaTypes, LeadsToTheFirstCell) {
    auto const& lines = traceOfTheFirstCellId();
    EXPECT_THAT(lines,
                testing::ElementsAre(TraceLine{9, "cellId dlopen of libKeelKeldaTypes successful"},
                                     TraceLine{9, "cellId using non-Nimbo Cell impl"}));
    EXPECT_EQ(DynCell::cellId(), 1U);
    EXPECT_EQ(DynCell::peerCellId(0), 2U);
}

} // namespace
