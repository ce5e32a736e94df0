// What becomes of a path that is recorded once, twice, by profiles, as somebody's ancestor, or at
// run time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <string_view>

#include "support/FaultLists.h"
#include "support/Faults.h"
#include "support/LenientParser.h"
#include "support/MountRecords.h"
#include "support/TraceRecorder.h"

namespace {

using support::mount;
using support::recordOf;
using support::TraceRecorder;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

constexpr bool named = true;
constexpr bool ancestor = false;
constexpr bool mergeType = true;

class MountPathMerge : public testing::Test {
  protected:
    MountPathMerge() {
        parser.openFile("Fan", 4);
        parser.agentKeyIs("Key");
    }

    void record(std::string_view type, std::string_view flags, bool targetPath) {
        parser.recordMountArgsInternal("a", mount(type, flags), targetPath);
    }
    void recordExternal(std::string_view type, std::string_view flags, bool targetPath,
                        bool mergingType = false) {
        parser.recordMountArgsExternal("a", mount(type, flags), targetPath, mergingType);
    }
    std::string theRecord() const { return recordOf(parser, "a"); }
    std::vector<std::string> intermediates() {
        return support::strings(parser.intermediatePaths());
    }

    support::LenientParser parser;
};

// --- the first time ---

TEST_F(MountPathMerge, ANamedPathIsExplicit) {
    record("T", "rw", named);
    EXPECT_EQ(theRecord(), "T rw explicit");
    EXPECT_THAT(intermediates(), IsEmpty());
}

TEST_F(MountPathMerge, AnAncestorIsIntermediate) {
    record("Fen::Dir", "r", ancestor);
    EXPECT_EQ(theRecord(), "Fen::Dir r intermediate");
    EXPECT_THAT(intermediates(), ElementsAre("a"));
}

TEST_F(MountPathMerge, TheExplicitMarkerOfTheArgumentsDoesNotCount) {
    parser.recordMountArgsInternal("a", mount("T", "r", true), ancestor);
    parser.recordMountArgsInternal("b", mount("T", "r", false), named);
    EXPECT_EQ(recordOf(parser, "a"), "T r intermediate");
    EXPECT_EQ(recordOf(parser, "b"), "T r explicit");
}

TEST_F(MountPathMerge, RecordsStandInPathOrder) {
    for (auto const* path : {"b", "a/b", "B", "", "a-b", "a"})
        parser.recordMountArgsInternal(path, mount("T", "r"), named);
    std::vector<std::string> paths;
    for (auto const& [path, args] : parser.pathMountArgsMap())
        paths.emplace_back(path.view());
    EXPECT_THAT(paths, ElementsAre("", "B", "a", "a-b", "a/b", "b"));
}

// --- once more ---

TEST_F(MountPathMerge, FlagsOfTheSamePathAreMerged) {
    record("T", "r", named);
    record("T", "w", named);
    EXPECT_EQ(theRecord(), "T rw explicit");
    EXPECT_EQ(parser.pathMountArgsMap().size(), 1U);
    EXPECT_THAT(support::messages(parser), IsEmpty());
}

TEST_F(MountPathMerge, AnIntermediatePathThatIsNamedBecomesExplicit) {
    record("T", "r", ancestor);
    parser.recordMountArgsInternal("b", mount("T", "r"), ancestor);
    record("T", "w", named);
    EXPECT_EQ(theRecord(), "T rw explicit");
    EXPECT_THAT(intermediates(), ElementsAre("b"));
}

TEST_F(MountPathMerge, AProfileLineTakesAPathOutOfTheIntermediateOnes) {
    record("T", "r", ancestor);
    parser.declare({"a"});
    parser.loadProfile("a,T,w\n");
    EXPECT_EQ(theRecord(), "T rw explicit");
    EXPECT_THAT(intermediates(), IsEmpty());
}

TEST_F(MountPathMerge, AnExplicitPathThatIsSomebodysAncestorStaysExplicit) {
    record("Fen::Dir", "r", named);
    record("Fen::Dir", "w", ancestor);
    EXPECT_EQ(theRecord(), "Fen::Dir rw explicit");
    EXPECT_THAT(intermediates(), IsEmpty());
}

TEST_F(MountPathMerge, AnAncestorOfTwoPathsHasTheFlagsOfBoth) {
    record("Fen::Dir", "r", ancestor);
    record("Fen::Dir", "w", ancestor);
    EXPECT_EQ(theRecord(), "Fen::Dir rw intermediate");
    EXPECT_THAT(intermediates(), ElementsAre("a"));
}

TEST_F(MountPathMerge, ASecondTypeIsRefusedAndTheFirstRecordStays) {
    std::string const message = "recordMountArgs: types don't match for path 'a': 'New'  'Old'";
    for (bool const targetPath : {named, ancestor}) {
        SCOPED_TRACE(targetPath);
        support::LenientParser fresh;
        fresh.openFile("Fan", 4);
        fresh.recordMountArgsInternal("a", mount("Old", "r"), targetPath);
        TraceRecorder const trace;
        fresh.recordMountArgsInternal("a", mount("New", "w"), !targetPath);
        EXPECT_THAT(support::faultList(fresh), ElementsAre("Fan:4: " + message));
        EXPECT_THAT(trace.at(0), ElementsAre(support::continued("Fan", 4, message)));
        EXPECT_EQ(recordOf(fresh, "a"), targetPath ? "Old r explicit" : "Old r intermediate");
        EXPECT_EQ(fresh.intermediatePaths().count("a"), targetPath ? 0U : 1U);
    }
}

TEST_F(MountPathMerge, TwoProfilesMayNotGiveAPathTwoTypes) {
    parser.declare({"a"}, "First");
    parser.loadProfile("a,T,r\n", "One");
    parser.declare({"a"}, "Second");
    parser.loadProfile("a,T,w\n", "Two");
    EXPECT_THAT(support::faultList(parser),
                ElementsAre("Two:1: recordMountArgs: types don't match for path 'a': 'Second'  "
                            "'First'"));
    EXPECT_EQ(theRecord(), "First r explicit");
}

TEST_F(MountPathMerge, AnEmptyTypeIsATypeOfItsOwn) {
    record("", "r", named);
    record("T", "w", named);
    EXPECT_THAT(support::messages(parser),
                ElementsAre("recordMountArgs: types don't match for path 'a': 'T'  ''"));
}

TEST_F(MountPathMerge, MergingTypesKeepsTheFirstThatIsNotEmpty) {
    struct {
        char const *first, *second, *record;
    } const rows[] = {
        {"Old", "New", "Old rw explicit"},
        {"", "New", "New rw explicit"},
        {"Old", "", "Old rw explicit"},
        {"", "", " rw explicit"},
    };
    for (auto const& row : rows) {
        support::LenientParser fresh;
        fresh.recordMountArgs("a", mount(row.first, "r"), named, mergeType, false);
        fresh.recordMountArgs("a", mount(row.second, "w"), named, mergeType, false);
        EXPECT_EQ(recordOf(fresh, "a"), row.record) << row.first << "," << row.second;
        EXPECT_THAT(support::messages(fresh), IsEmpty()) << row.first << "," << row.second;
    }
}

TEST_F(MountPathMerge, InvalidFlagsAreRefusedAndTheFirstRecordStays) {
    record("T", "r", ancestor);
    TraceRecorder const trace;
    record("T", "wx", named);
    EXPECT_THAT(support::faultList(parser), ElementsAre("Fan:4: Encountered unknown mount flag x",
                                                        "Fan:4: Invalid flags wx in path a"));
    EXPECT_THAT(trace.at(0),
                ElementsAre(support::continued("Fan", 4, "Encountered unknown mount flag x"),
                            support::continued("Fan", 4, "Invalid flags wx in path a")));
    EXPECT_EQ(theRecord(), "T r intermediate");
    EXPECT_THAT(intermediates(), ElementsAre("a"));
}

TEST_F(MountPathMerge, FlagsThatExcludeEachOtherAreRefused) {
    record("T", "cD", named);
    EXPECT_THAT(support::messages(parser),
                ElementsAre("c and D flags cannot be used simultaneously on mount path",
                            "Invalid flags cD in path a"));
    EXPECT_EQ(theRecord(), support::noRecord);
}

RC_GTEST_PROP(MountPathMergeProperty, TheOrderOfRecordsDoesNotMatterToTheirMerge, ()) {
    auto const letters =
        rc::gen::container<std::string>(rc::gen::elementOf(std::string("rwiftpS")));
    auto const first = *letters;
    auto const second = *letters;
    auto const firstNamed = *rc::gen::arbitrary<bool>();
    auto const secondNamed = *rc::gen::arbitrary<bool>();
    support::LenientParser oneWay;
    oneWay.recordMountArgsInternal("a", mount("T", first), firstNamed);
    oneWay.recordMountArgsInternal("a", mount("T", second), secondNamed);
    support::LenientParser otherWay;
    otherWay.recordMountArgsInternal("a", mount("T", second), secondNamed);
    otherWay.recordMountArgsInternal("a", mount("T", first), firstNamed);
    RC_ASSERT(recordOf(oneWay, "a") == recordOf(otherWay, "a"));
    RC_ASSERT(oneWay.intermediatePaths() == otherWay.intermediatePaths());
    RC_ASSERT(oneWay.intermediatePaths().empty() == (firstNamed || secondNamed));
}

// --- at run time ---

TEST_F(MountPathMerge, ADynamicPathIsFiledUnderAGroupAndAFileOfItsOwn) {
    parser.recordMountGroup("fast", 1);
    recordExternal("T", "r", named);
    EXPECT_EQ(theRecord(), "T r explicit");
    ASSERT_EQ(parser.mountGroupPathsMap().size(), 1U);
    EXPECT_THAT(parser.mountGroupPathsMap().at("Key::recordMountArgs"), ElementsAre("a"));
    ASSERT_EQ(parser.profileFilePathsMap().size(), 1U);
    EXPECT_THAT(parser.profileFilePathsMap().at("recordMountArgs"), ElementsAre("a"));
}

TEST_F(MountPathMerge, OnlyDynamicPathsThatAreNamedAreFiled) {
    recordExternal("T", "r", ancestor);
    record("T", "r", named);
    EXPECT_THAT(parser.mountGroupPathsMap(), IsEmpty());
    EXPECT_THAT(parser.profileFilePathsMap(), IsEmpty());
}

TEST_F(MountPathMerge, ADynamicPathWithInvalidFlagsIsNotFiled) {
    recordExternal("T", "x", named);
    EXPECT_THAT(parser.mountGroupPathsMap(), IsEmpty());
    EXPECT_THAT(parser.profileFilePathsMap(), IsEmpty());
    EXPECT_EQ(theRecord(), support::noRecord);
}

TEST_F(MountPathMerge, ADynamicPathMayTakeTheTypeOfItsRecord) {
    record("T", "r", named);
    recordExternal("", "w", named, mergeType);
    EXPECT_EQ(theRecord(), "T rw explicit");
    recordExternal("Other", "w", named);
    EXPECT_THAT(support::messages(parser),
                ElementsAre("recordMountArgs: types don't match for path 'a': 'Other'  'T'"));
}

// --- traces ---

// The steps of one merge, after the entry and the check of its flags.
std::vector<std::string> steps(TraceRecorder const& trace) {
    auto all = trace.at(9);
    EXPECT_THAT(all, Contains(MatchesRegex("path a .*")));
    if (!all.empty())
        all.erase(all.begin());
    return all;
}

// An entry with a record's type and flags, in whichever order.
testing::Matcher<std::string> entry(std::string const& type, std::string const& flags,
                                    std::string const& rest) {
    std::string const before = "( path : a, args : MountArgs( ";
    return testing::AnyOf(before + type + ", " + flags + " ), " + rest,
                          before + flags + ", " + type + " ), " + rest);
}

TEST_F(MountPathMerge, AMergeTracesItsArguments) {
    TraceRecorder const trace;
    parser.recordMountArgs("a", mount("T", "rw"), named, mergeType, true);
    EXPECT_EQ(trace.lines().front().level, 8);
    EXPECT_THAT(trace.lines().front().text,
                entry("T", "rw", "targetPath : true, mergeType : true, dynamic : true )"));
    EXPECT_THAT(trace.at(7), ElementsAre("( flags : rw, isConnectionFlags : false )"));
}

TEST_F(MountPathMerge, TheWayIntoAMergeIsTraced) {
    TraceRecorder const trace;
    record("T", "r", ancestor);
    recordExternal("T", "w", named, mergeType);
    EXPECT_THAT(trace.at(8), Contains(entry("T", "r", "targetPath : false )")));
    EXPECT_THAT(trace.at(7), Contains(entry("T", "w", "targetPath : true, mergeType : true )")));
}

TEST_F(MountPathMerge, ANewRecordIsTracedStepByStep) {
    TraceRecorder trace;
    record("T", "rw", named);
    EXPECT_THAT(steps(trace), ElementsAre("adding new flags rw", "result flags rw"));
}

TEST_F(MountPathMerge, ANewIntermediateRecordIsTracedWithItsOrigin) {
    {
        TraceRecorder const trace;
        record("T", "r", ancestor);
        EXPECT_THAT(steps(trace),
                    ElementsAre("adding new flags r", "adding mount profile intermediate path a",
                                "result flags r"));
    }
    support::LenientParser fresh;
    TraceRecorder const trace;
    fresh.recordMountArgsExternal("a", mount("T", "r"), ancestor, false);
    EXPECT_THAT(steps(trace), ElementsAre("adding new flags r",
                                          "adding dynamic intermediate path a", "result flags r"));
}

TEST_F(MountPathMerge, AMergedRecordIsTracedStepByStep) {
    struct {
        bool first, second;
        std::vector<std::string> between;
    } const rows[] = {
        {named, named, {}},
        {ancestor,
         named,
         {"a previously intermediate, now explicit, removing from intermediate set"}},
        {named, ancestor, {"a already explicit, skipping intermediate set"}},
        {ancestor, ancestor, {"a already intermediate, skipping intermediate set"}},
    };
    for (auto const& row : rows) {
        support::LenientParser fresh;
        fresh.recordMountArgsInternal("a", mount("T", "r"), row.first);
        TraceRecorder const trace;
        fresh.recordMountArgsInternal("a", mount("T", "w"), row.second);
        std::vector<std::string> expected = {"appending existing flags r with w"};
        expected.insert(expected.end(), row.between.begin(), row.between.end());
        expected.emplace_back("result flags rw");
        EXPECT_EQ(steps(trace), expected) << row.first << row.second;
    }
}

} // namespace
