// Questions about the records of mount paths, and the change of a dynamic path's flags.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include <Fen/MountTable.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/Faults.h"
#include "support/LenientParser.h"
#include "support/MountRecords.h"
#include "support/TraceRecorder.h"

namespace {

using Fen::MountTable::Flags;
using support::mount;
using support::recordOf;
using support::TraceLine;
using support::TraceRecorder;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class MountPathQueries : public testing::Test {
  protected:
    MountPathQueries() {
        parser.initializedIs(true);
        parser.openFile("Fan", 4);
        parser.recordMountPath("profile", "T", "r");
        parser.recordMountArgsExternal("dynamic", mount("T", "r"), true, false);
        parser.recordMountArgsExternal("ancestor", mount("Fen::Dir", "r"), false, false);
        parser.closeFile();
    }

    support::CleanEnvironment const environment{};
    support::LenientParser parser;
};

// --- mountInfo, infoExists, isExplicit ---

TEST_F(MountPathQueries, MountInfoIsTheRecordOfAPath) {
    TraceRecorder const trace;
    EXPECT_EQ(support::shown(parser.mountInfo("profile")), "T r explicit");
    EXPECT_EQ(support::shown(parser.mountInfo("ancestor")), "Fen::Dir r intermediate");
    EXPECT_THAT(trace.at(7), ElementsAre("( path : profile )", "( path : ancestor )"));
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

TEST_F(MountPathQueries, MountInfoOfAnUnknownPathIsReportedAndEmpty) {
    auto const message = "mountInfo: no such path: nowhere" + support::loadedAgents("");
    TraceRecorder const trace;
    EXPECT_EQ(parser.mountInfo("nowhere"), Kelda::MountArgs());
    EXPECT_THAT(support::faultList(parser), ElementsAre(":-1: " + message));
    EXPECT_THAT(trace.at(0), ElementsAre(support::continued(message)));
    EXPECT_THAT(trace.at(3), ElementsAre("Returning empty vector"));
    EXPECT_EQ(recordOf(parser, "nowhere"), support::noRecord);
}

TEST_F(MountPathQueries, AnUnknownPathIsExplainedByTheLoadedAgents) {
    parser.agentStringsAre({"Fan-1", "Led"});
    parser.mountInfo("nowhere");
    EXPECT_THAT(support::messages(parser), ElementsAre("mountInfo: no such path: nowhere" +
                                                       support::loadedAgents(" Fan-1, Led")));
}

TEST_F(MountPathQueries, APathIsKnownByItsExactName) {
    struct {
        char const* path;
        bool exists, isExplicit;
    } const rows[] = {
        {"profile", true, true},   {"dynamic", true, true},    {"ancestor", true, false},
        {"nowhere", false, false}, {"profile/", false, false}, {"", false, false},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(parser.infoExists(row.path), row.exists) << row.path;
        EXPECT_EQ(parser.isExplicit(row.path), row.isExplicit) << row.path;
    }
    EXPECT_THAT(support::messages(parser), IsEmpty());
    EXPECT_EQ(parser.pathMountArgsMap().size(), 3U);
}

TEST_F(MountPathQueries, InfoExistsTracesItsPathWithABlankAtTheEnd) {
    TraceRecorder const trace;
    parser.infoExists("profile");
    EXPECT_THAT(trace.lines(), ElementsAre(TraceLine{7, "( path : profile ) "}));
}

TEST(MountPathQueriesOnDemand, TheFirstQueryLoadsEverything) {
    support::CleanEnvironment const environment{};
    support::Device device;
    device.preinit("Sys", "sys/clock,Clock\n").profile("Sys", "agentName:Sys\nsys/clock,T,r\n");
    auto const first = device.lenient();
    EXPECT_EQ(support::shown(first->mountInfo("sys/clock")), "Clock r explicit");
    auto const second = device.lenient();
    EXPECT_TRUE(second->infoExists("sys/clock"));
    auto const third = device.lenient();
    EXPECT_TRUE(third->isExplicit("sys/clock"));
    for (auto const* parser : {first.get(), second.get(), third.get()})
        EXPECT_EQ(parser->doInitCount(), 1);
}

TEST(MountPathQueriesOnDemand, ALaterQueryLoadsNothingMore) {
    support::CleanEnvironment const environment{};
    support::Device const device;
    auto const parser = device.lenient();
    parser->infoExists("a");
    parser->mountInfo("a");
    parser->isExplicit("a");
    EXPECT_EQ(parser->doInitCount(), 1);
}

// --- updateMountFlags ---

TEST_F(MountPathQueries, TheFlagsOfADynamicPathAreReplacedAndNothingElse) {
    TraceRecorder const trace;
    parser.updateMountFlags("dynamic", support::flags("w"));
    EXPECT_EQ(recordOf(parser, "dynamic"), "T w explicit");
    EXPECT_THAT(trace.at(7), Contains("( path : dynamic, flags : w )"));
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

TEST_F(MountPathQueries, TheFlagsOfAPathThatProfilesBroughtStay) {
    std::string const message = "Attempting to update flags for path profile, which is present in "
                                "a mount profile (not a dynamic path)";
    TraceRecorder const trace;
    parser.updateMountFlags("profile", support::flags("w"));
    EXPECT_EQ(recordOf(parser, "profile"), "T r explicit");
    EXPECT_THAT(support::messages(parser), ElementsAre(message));
    EXPECT_THAT(trace.at(0), ElementsAre(support::continued(message)));
}

TEST_F(MountPathQueries, APathThatWasNotNamedIsNotDynamic) {
    parser.updateMountFlags("ancestor", support::flags("w"));
    EXPECT_EQ(recordOf(parser, "ancestor"), "Fen::Dir r intermediate");
    EXPECT_THAT(support::messages(parser),
                ElementsAre("Attempting to update flags for path ancestor, which is present in a "
                            "mount profile (not a dynamic path)"));
}

TEST_F(MountPathQueries, WithoutDynamicPathsEveryKnownPathIsAProfiles) {
    support::LenientParser fresh;
    fresh.openFile("Fan", 1);
    fresh.recordMountPath("a", "T", "r");
    fresh.updateMountFlags("a", support::flags("w"));
    EXPECT_EQ(recordOf(fresh, "a"), "T r explicit");
    EXPECT_EQ(fresh.exceptions().size(), 1U);
}

TEST_F(MountPathQueries, TheFlagsOfAnUnknownPathCannotBeReplaced) {
    std::string const message = "Attempting to update flags for path nowhere, which does not exist "
                                "in MountFileInfo";
    TraceRecorder const trace;
    parser.updateMountFlags("nowhere", support::flags("w"));
    EXPECT_THAT(support::messages(parser), ElementsAre(message));
    EXPECT_THAT(trace.at(0), ElementsAre(support::continued(message)));
    EXPECT_EQ(recordOf(parser, "nowhere"), support::noRecord);
}

TEST_F(MountPathQueries, AProfilesPathThatIsMountedAtRunTimeTooBecomesDynamic) {
    parser.recordMountArgsExternal("profile", mount("T", "r"), true, false);
    parser.updateMountFlags("profile", support::flags("w"));
    EXPECT_EQ(recordOf(parser, "profile"), "T w explicit");
}

// --- infoCompatible ---

struct Question {
    char const* type;
    std::uint32_t newFlags;
    bool mountSynchronized, active, prevUnmounted;
};
constexpr bool synchronized = true;
constexpr bool active = true;
constexpr bool unmounted = true;

constexpr std::uint32_t y = 0x80000; // instantiating
constexpr std::uint32_t p = 0x800;   // takes the place of w
constexpr std::uint32_t w = 0x2;
constexpr std::uint32_t r = 0x1;
constexpr std::uint32_t t = 0x10;

// The answer for a path that is recorded with type "T" and these flags.
bool answer(std::uint32_t recorded, Question const& question) {
    support::LenientParser parser;
    parser.initializedIs(true);
    parser.recordMountArgsInternal("a", {"T", Flags(recorded), false}, true);
    return parser.infoCompatible("a", question.type, Flags(question.newFlags),
                                 question.mountSynchronized, question.active,
                                 question.prevUnmounted);
}

void expectAnswer(std::uint32_t recorded, Question const& question, bool expected) {
    EXPECT_EQ(answer(recorded, question), expected)
        << std::hex << "recorded " << recorded << ", new " << question.newFlags << " type "
        << question.type << (question.mountSynchronized ? " synchronized" : "")
        << (question.active ? " active" : "") << (question.prevUnmounted ? " unmounted" : "");
}

TEST(InfoCompatible, FlagsThatAreRecordedAlreadyChangeNothing) {
    for (auto const flags : {0U, r, t, y, y | r, y | r | w, y | r | w | t})
        expectAnswer(y | r | w | t, {"T", flags, false, false, false}, true);
    expectAnswer(y | r, {"T", y | w, false, false, false}, false);
    expectAnswer(y | r, {"T", y | r | w, false, false, false}, false);
    expectAnswer(0, {"T", t, false, false, false}, false);
    expectAnswer(0, {"T", 0, false, false, false}, true);
}

TEST(InfoCompatible, TheTypeCountsForAnInstantiatingMountOnly) {
    expectAnswer(y | r | t, {"Other", y | r, false, false, false}, false);
    expectAnswer(y | r | t, {"Other", t, false, false, false}, true);
    expectAnswer(y | r | t, {"", r, false, false, false}, true);
    expectAnswer(y | r | t, {"Other", y, synchronized, false, false}, false);
}

TEST(InfoCompatible, TheTypeCountsForAPathThatWasUnmounted) {
    expectAnswer(y | r | t, {"Other", t, false, false, unmounted}, false);
    expectAnswer(y | r | t, {"T", t, false, false, unmounted}, true);
}

TEST(InfoCompatible, AMountThatIsSynchronizedNeedNotBeInstantiatingAgain) {
    expectAnswer(r, {"T", y | r, false, false, false}, false);
    expectAnswer(r, {"T", y | r, synchronized, false, false}, true);
    expectAnswer(r, {"T", y | w, synchronized, false, false}, false);
}

TEST(InfoCompatible, OnTheActiveSideThePassiveLetterTakesTheWriteLetterAway) {
    expectAnswer(y | r, {"T", y | r | w | p, false, active, false}, true);
    expectAnswer(y | r, {"T", y | r | w | p, false, false, false}, false);
    expectAnswer(y | r, {"T", y | r | w, false, active, false}, false);
    expectAnswer(y | r, {"T", y | r | p, false, active, false}, true);
    expectAnswer(y | r, {"T", y | r | p, false, false, false}, false);
}

TEST(InfoCompatible, ARecordedPassiveLetterTakesTheWriteLetterAway) {
    expectAnswer(y | r | w | p, {"T", y | w, false, false, false}, false);
    expectAnswer(y | r | w | p, {"T", y | r, false, false, false}, true);
    expectAnswer(y | r | w | p, {"T", y | r | p, false, false, false}, true);
    expectAnswer(y | r | w | p, {"T", y | r | w | p, false, active, false}, true);
    expectAnswer(y | r | w | p, {"T", y | r | w | p, false, false, false}, false);
}

TEST(InfoCompatible, AnAnswerChangesNoRecord) {
    support::LenientParser parser;
    parser.initializedIs(true);
    parser.recordMountArgsInternal("a", {"T", Flags(y | r | w | p), false}, true);
    parser.infoCompatible("a", "Other", Flags(y | t), synchronized, active, unmounted);
    EXPECT_EQ(parser.pathMountArgsMap().at("a"),
              (Kelda::MountArgs{"T", Flags(y | r | w | p), true}));
}

TEST(InfoCompatible, AnUnknownPathGetsAnEmptyRecord) {
    support::LenientParser parser;
    parser.initializedIs(true);
    EXPECT_TRUE(parser.infoCompatible("a", "T", Flags(), false, false, false));
    EXPECT_FALSE(parser.infoCompatible("b", "T", Flags(y | r), false, false, false));
    EXPECT_FALSE(parser.infoCompatible("c", "T", Flags(t), false, false, false));
    EXPECT_TRUE(parser.infoCompatible("d", "", Flags(p), false, active, unmounted));
    for (auto const* path : {"a", "b", "c", "d"})
        EXPECT_EQ(parser.mountInfo(path), Kelda::MountArgs()) << path;
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

TEST(InfoCompatible, AQuestionTracesItsArguments) {
    support::LenientParser parser;
    parser.initializedIs(true);
    TraceRecorder const trace;
    parser.infoCompatible("a", "T", support::flags("rw"), synchronized, false, unmounted);
    EXPECT_THAT(trace.at(7), Contains("( path : a, type : T, newFlag : rw, mountSynchronized : "
                                      "true, active : false, prevUnmounted : true )"));
}

} // namespace
