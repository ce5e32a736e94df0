// A process with a plug-in that has no file-load check to offer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ChoiceTrace.h"
#include "Exported.h"
#include "support/LenientParser.h"

namespace {

using support::TraceLine;
using testing::Contains;
using testing::Not;

class DecliningPlugin : public testing::Test {
  protected:
    std::vector<TraceLine> const& firstCheck_ = traceOfTheFirstCheck();
};

TEST_F(DecliningPlugin, LeadsToTheBuiltInCheck) {
    DynFileLoadCheck check("preinit");
    EXPECT_NE(dynamic_cast<FileLoadCheckNoOp*>(check.get()), nullptr);
    EXPECT_EQ(check.fileType(), "preinit");
    EXPECT_TRUE(check.canLoad("directory", "file"));
    EXPECT_FALSE(check.parsed());
}

TEST_F(DecliningPlugin, IsAskedOnceHoweverManyChecksThereAre) {
    DynFileLoadCheck const check("preinit");
    support::LenientParser const one;
    support::LenientParser const two;
    EXPECT_EQ(exportedBy<int>("libPluginLoader.so", "timesAskedForTheFactory"), 1);
}

TEST_F(DecliningPlugin, IsToldInTheTrace) {
    EXPECT_THAT(firstCheck_,
                Contains(TraceLine{9, "getAnotherImpl dlopen of libPluginLoader successful"}));
    EXPECT_THAT(firstCheck_,
                Contains(testing::AllOf(
                    testing::Field(&TraceLine::level, 3),
                    testing::Field(&TraceLine::text,
                                   testing::StartsWith("getAnotherImpl returned ptr ")))));
    EXPECT_THAT(firstCheck_,
                Contains(TraceLine{9, "Using KeldaBase FileLoadCheck implementation"}));
    EXPECT_THAT(firstCheck_,
                Not(Contains(TraceLine{9, "Using external FileLoadCheck implementation"})));
}

} // namespace
