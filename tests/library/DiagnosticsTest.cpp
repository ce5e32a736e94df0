// Faults as records, as texts and as traces, and the explanations of missing data.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <Fen/Exception.h>

#include "support/EnvironmentVariable.h"
#include "support/FaultLists.h"
#include "support/Faults.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using Kelda::MfiException;
using Kelda::MountFileInfo;
using support::EnvironmentVariable;
using support::TraceLine;
using support::TraceRecorder;
using testing::ElementsAre;
using testing::IsEmpty;

class Diagnostics : public testing::Test {
  protected:
    EnvironmentVariable const package{"Q9PKG", nullptr};
    support::LenientParser parser;
};

// --- records ---

TEST_F(Diagnostics, AFaultIsRecordedWithTheCurrentFileAndLine) {
    parser.openFile("Outer", 7);
    parser.openFile("Inner", 2);
    parser.maybeThrow("first");
    parser.closeFile();
    parser.maybeThrow("second");
    EXPECT_THAT(parser.exceptions(),
                ElementsAre(MfiException{"Inner", "first", 2}, MfiException{"Outer", "second", 7}));
}

TEST_F(Diagnostics, AFaultWithoutAnOpenFileHasNoPlaceAndIsShownAsItsMessageAlone) {
    parser.maybeThrow("nowhere");
    ASSERT_THAT(parser.exceptions(), ElementsAre(MfiException{"", "nowhere", -1}));
    EXPECT_EQ(MountFileInfo::mfiExceptionToString(parser.exceptions().front()), "nowhere");
}

TEST_F(Diagnostics, AFaultBeforeTheFirstLineIsShownWithoutALine) {
    parser.openFile("Fan", 0);
    parser.maybeThrow("early");
    EXPECT_EQ(MountFileInfo::mfiExceptionToString(parser.exceptions().front()),
              "\n\t\t\tError in mount profile: Fan\n\t\t\tmsg: early");
}

TEST_F(Diagnostics, FaultsAreKeptOnceForEveryTimeTheyAreFound) {
    parser.loadProfile("foo\nfoo\n", "Fan");
    parser.loadProfile("foo\nfoo\n", "Fan");
    std::string const fault = ": syntax error: 'foo'";
    EXPECT_THAT(support::faultList(parser),
                ElementsAre("Fan:1" + fault, "Fan:2" + fault, "Fan:1" + fault, "Fan:2" + fault));
}

TEST_F(Diagnostics, RecordingAFaultTracesNothing) {
    TraceRecorder const trace("MountFileInfo", 1);
    parser.maybeThrow("silent");
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Diagnostics, TheFirstFaultIsTheEarliest) {
    EXPECT_EQ(parser.firstException(), std::nullopt);
    parser.maybeThrow("first");
    parser.openFile("Fan", 1);
    parser.maybeThrow("second");
    EXPECT_EQ(parser.firstException(), (MfiException{"", "first", -1}));
}

TEST_F(Diagnostics, ClearingProfileDataForgetsTheFaults) {
    parser.maybeThrow("first");
    parser.clearProfileData();
    EXPECT_EQ(parser.firstException(), std::nullopt);
}

TEST_F(Diagnostics, AFaultIsShownWithTheFileAndLineThatItHas) {
    struct {
        MfiException fault;
        char const* text;
    } const rows[] = {
        {{"Fan", "m", 3}, "\n\t\t\tError in mount profile: Fan\n\t\t\tline: 3\n\t\t\tmsg: m"},
        {{"Fan", "m", 1}, "\n\t\t\tError in mount profile: Fan\n\t\t\tline: 1\n\t\t\tmsg: m"},
        {{"Fan", "m", 2147483647},
         "\n\t\t\tError in mount profile: Fan\n\t\t\tline: 2147483647\n\t\t\tmsg: m"},
        {{"Fan", "m", 0}, "\n\t\t\tError in mount profile: Fan\n\t\t\tmsg: m"},
        {{"Fan", "m", -1}, "\n\t\t\tError in mount profile: Fan\n\t\t\tmsg: m"},
        {{"Fan", "", 3}, "\n\t\t\tError in mount profile: Fan\n\t\t\tline: 3\n\t\t\tmsg: "},
        {{"", "m", -1}, "m"},
        {{"", "m", 3}, "m"},
        {{"", "", -1}, ""},
        {{"%s", "{} %d", 3}, "\n\t\t\tError in mount profile: %s\n\t\t\tline: 3\n\t\t\tmsg: {} %d"},
    };
    for (auto const& row : rows)
        EXPECT_EQ(MountFileInfo::mfiExceptionToString(row.fault), row.text);
}

// --- report and trace ---

TEST_F(Diagnostics, AReportedFaultIsRecordedAndTraced) {
    parser.openFile("Fan", 3);
    TraceRecorder const trace;
    parser.reportAndTrace("message");
    EXPECT_THAT(support::faultList(parser), ElementsAre("Fan:3: message"));
    EXPECT_THAT(trace.lines(),
                ElementsAre(TraceLine{
                    0, "Encountered exception \n\t\t\tError in mount profile: Fan\n\t\t\tline: "
                       "3\n\t\t\tmsg: message during kelda-side parsing. Continuing..."}));
}

TEST_F(Diagnostics, TheLastFaultIsTheOneThatIsTraced) {
    TraceRecorder const trace;
    parser.reportAndTrace("first");
    parser.reportAndTrace("{} second");
    EXPECT_THAT(trace.at(0),
                ElementsAre(support::continued("first"), support::continued("{} second")));
}

TEST_F(Diagnostics, WithLevelZeroOffAFaultIsOnlyRecorded) {
    TraceRecorder const trace("MountFileInfo", 0xfffe);
    parser.reportAndTrace("message");
    EXPECT_THAT(support::messages(parser), ElementsAre("message"));
    EXPECT_THAT(trace.lines(), IsEmpty());
}

// Throws instead of going on, as the agent side does.
class ThrowingParser : public support::LenientParser {
  public:
    void maybeThrow(Rook::String const& message) const override {
        LenientParser::maybeThrow(message);
        throw Fen::AgentException(std::string(message.view()));
    }
};

TEST_F(Diagnostics, AFlavourThatThrowsEndsALoadAtTheFirstFault) {
    ThrowingParser throwing;
    throwing.openFile("Fan");
    auto const file = support::streamOf("activeMount\nfoo\nbar\n");
    TraceRecorder const trace;
    EXPECT_THROW(throwing.profileLoader(file.get()), Fen::AgentException);
    EXPECT_THAT(support::faultList(throwing), ElementsAre("Fan:2: syntax error: 'foo'"));
    EXPECT_TRUE(throwing.activeMountSeen());
    EXPECT_THAT(trace.at(0), IsEmpty());
}

// Neither records nor throws.
class ForgetfulParser : public support::LenientParser {
  public:
    void maybeThrow(Rook::String const&) const override {}
};

TEST(DiagnosticsDeathTest, AFlavourThatNeitherRecordsNorThrowsIsAProgrammingError) {
    ForgetfulParser const forgetful;
    EXPECT_DEATH(forgetful.reportAndTrace("message"), testing::HasSubstr("!exceptions_.empty()"));
}

// --- explanations of missing data ---

TEST_F(Diagnostics, AMissingDataErrorIsUnchangedWhereNothingExplainsIt) {
    for (auto const* error : {"no such path: a", "", "{} %s"})
        EXPECT_EQ(parser.fmtNotFoundError(error, false), error);
}

TEST_F(Diagnostics, AMissingDataErrorIsExplainedByThePackage) {
    for (auto const* name : {"fan", "", "a b%s{}"}) {
        EnvironmentVariable const restricted("Q9PKG", name);
        EXPECT_EQ(parser.fmtNotFoundError("error", false), "error" + support::restrictedTo(name));
    }
}

TEST_F(Diagnostics, AProfileErrorIsExplainedByTheLoadedAgents) {
    struct {
        std::vector<Rook::String> agents;
        char const* shown;
    } const rows[] = {
        {{}, ""},
        {{"Fan-1"}, " Fan-1"},
        {{"Fan-1", "Led"}, " Fan-1, Led"},
        {{"b", "a", "b"}, " b, a, b"},
        {{"", "a"}, " , a"},
    };
    for (auto const& row : rows) {
        parser.agentStringsAre(row.agents);
        EXPECT_EQ(parser.fmtNotFoundError("error", true),
                  "error" + support::loadedAgents(row.shown));
    }
}

TEST_F(Diagnostics, ThePackageIsNamedBeforeTheAgents) {
    EnvironmentVariable const restricted("Q9PKG", "fan");
    parser.agentStringsAre({"Fan-1"});
    EXPECT_EQ(parser.fmtNotFoundError("error", true),
              "error" + support::restrictedTo("fan") + support::loadedAgents(" Fan-1"));
}

TEST_F(Diagnostics, AnExplanationTracesItsArgumentsAndReportsNothing) {
    TraceRecorder const trace;
    parser.fmtNotFoundError("error", true);
    parser.fmtNotFoundError("other", false);
    EXPECT_THAT(trace.lines(),
                ElementsAre(TraceLine{8, "( error : error, profileError : true )"},
                            TraceLine{8, "( error : other, profileError : false )"}));
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

// --- small things ---

TEST_F(Diagnostics, AListIsShownInBraces) {
    EXPECT_EQ(MountFileInfo::vecToString(std::vector<Rook::String>{}), "{}");
    EXPECT_EQ(MountFileInfo::vecToString({"a"}), "{a}");
    EXPECT_EQ(MountFileInfo::vecToString({"a", "", "b c"}), "{a, , b c}");
}

TEST_F(Diagnostics, TheBaseExcusesNoMissingType) {
    std::ostringstream message;
    message << "unchanged";
    EXPECT_EQ(parser.excuseMissingType(message, "T"), std::nullopt);
    EXPECT_EQ(message.str(), "unchanged");
}

TEST_F(Diagnostics, ReadingATypeThatIsNotThereThrows) {
    EXPECT_EQ(Kelda::valueOf(Rook::String("T")), "T");
    EXPECT_THROW(Kelda::valueOf(std::nullopt), Fen::BadOptionalAccess);
}

} // namespace
