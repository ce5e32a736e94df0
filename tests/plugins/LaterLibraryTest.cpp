// A process without plug-ins in which a library behind the parser's offers the same functions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ChoiceTrace.h"
#include "support/LenientParser.h"
#include "support/Scanner.h"
#include "support/TemporaryDirectory.h"

namespace {

using support::TraceLine;
using testing::Contains;
using testing::ElementsAre;

class LaterLibrary : public testing::Test {
  protected:
    std::vector<TraceLine> const& firstCheck_ = traceOfTheFirstCheck();
    std::vector<TraceLine> const& firstCellId_ = traceOfTheFirstCellId();
};

TEST_F(LaterLibrary, BringsItsFileLoadCheck) {
    EXPECT_THAT(firstCheck_,
                Contains(TraceLine{1, "getAnotherImpl dlopen of libPluginLoader unsuccessful"}));
    EXPECT_THAT(firstCheck_, Contains(TraceLine{9, "Using external FileLoadCheck implementation"}));
    DynFileLoadCheck check("preinit");
    EXPECT_EQ(check.fileType(), "later preinit");
}

TEST_F(LaterLibrary, ItsFileLoadCheckIsAskedByAScan) {
    support::TemporaryDirectory const directory;
    directory.write("allowed", "");
    directory.write("refused", "");
    support::Scanner scanner;
    scanner.scan(directory.string(), nullptr, &scanner.profileFileCheck());
    EXPECT_THAT(scanner.filesRead(), ElementsAre("allowed"));
}

TEST_F(LaterLibrary, TellsTheCell) {
    EXPECT_THAT(firstCellId_,
                ElementsAre(TraceLine{1, "cellId dlopen of libKeelKeldaTypes unsuccessful"},
                            TraceLine{9, "cellId using Keel::Cell impl"}));
    EXPECT_EQ(DynCell::cellId(), 2U);
    EXPECT_EQ(DynCell::peerCellId(2), 1U);
}

} // namespace
