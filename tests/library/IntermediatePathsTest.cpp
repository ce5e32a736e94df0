// The records of the paths above mounted ones: which are made, and what they inherit.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include <KeldaUtil/MountFlags.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using Fen::MountTable::Flags;
using support::Strings;
using testing::ElementsAre;
using testing::IsEmpty;

using Mounts = std::map<std::string, std::string>;

// Every record as "TYPE FLAGS", with a "*" after those that were named themselves.
Mounts mountsOf(Kelda::MountFileInfo const& parser) {
    Mounts mounts;
    for (auto const& [path, args] : parser.pathMountArgsMap())
        mounts.emplace(path.view(),
                       std::string(args.type.view()) + " " +
                           std::string(KeldaUtil::mountTableFlagsToString(args.flags).view()) +
                           (args.isExplicit ? "*" : ""));
    return mounts;
}

class IntermediatePaths : public testing::Test {
  protected:
    IntermediatePaths() { prepare(parser_); }

    static void prepare(support::LenientParser& parser) {
        parser.initializedIs(true);
        parser.allProfilesLoadedIs(true);
        parser.activeMountSeenIs(true);
        parser.rootFlagsAre("rt");
    }
    static void mount(support::LenientParser& parser, char const* path, char const* flags,
                      char const* type = "T") {
        parser.recordMountArgsInternal(path, {type, KeldaUtil::parseMountTableFlags(flags), false},
                                       true);
    }
    void mount(char const* path, char const* flags, char const* type = "T") {
        mount(parser_, path, flags, type);
    }
    Mounts mounts() const { return mountsOf(parser_); }
    Strings intermediates() { return support::strings(parser_.intermediatePaths()); }

    support::CleanEnvironment environment_;
    support::LenientParser parser_;
};

// --- bottom-up ---

TEST_F(IntermediatePaths, EveryAncestorOfAnInstantiatingMountGetsARecord) {
    mount("a/b/c", "w");
    parser_.recordIntermediatePaths();
    EXPECT_EQ(mounts(), (Mounts{{"a", "Fen::Dir wn"}, {"a/b", "Fen::Dir wn"}, {"a/b/c", "T w*"}}));
    EXPECT_EQ(parser_.pathMountArgsMap().at("a").flags, Flags(0x80000 | 0x2 | 0x4000));
    EXPECT_THAT(intermediates(), ElementsAre("a", "a/b"));
}

TEST_F(IntermediatePaths, AMountThatDoesNotInstantiateNeedsNoAncestors) {
    mount("a/b", "S");
    mount("c/d", "t");
    mount("e/f", "y");
    parser_.recordIntermediatePaths();
    EXPECT_EQ(mounts(),
              (Mounts{{"a/b", "T S*"}, {"c/d", "T t*"}, {"e", "Fen::Dir ny"}, {"e/f", "T y*"}}));
}

TEST_F(IntermediatePaths, FlagsOfSeveralMountsBelowAreMerged) {
    mount("a/b", "r");
    mount("a/c", "wp");
    parser_.recordIntermediatePaths();
    EXPECT_EQ(mounts().at("a"), "Fen::Dir wpn");
    EXPECT_THAT(support::faultList(parser_), IsEmpty());
}

TEST_F(IntermediatePaths, APathAtTheTopNeedsNone) {
    mount("a", "rw");
    parser_.recordIntermediatePaths();
    EXPECT_EQ(mounts(), (Mounts{{"a", "T rw*"}}));
}

TEST_F(IntermediatePaths, ALeadingSlashGivesTheEmptyPath) {
    mount("/a/b", "r");
    parser_.recordIntermediatePaths();
    EXPECT_THAT(intermediates(), ElementsAre("", "/a"));
}

TEST_F(IntermediatePaths, EachIsTracedNearestFirst) {
    mount("a/b/c", "w");
    support::TraceRecorder const trace;
    parser_.recordIntermediatePaths();
    Strings added;
    for (auto const& text : trace.at(9))
        if (text.starts_with("adding mount profile"))
            added.push_back(text);
    EXPECT_THAT(added, ElementsAre("adding mount profile intermediate path a/b",
                                   "adding mount profile intermediate path a"));
    EXPECT_TRUE(trace.has(9, "Intermediate flags (bottom-up only): wn"));
}

TEST_F(IntermediatePaths, ANamedDirectoryAboveAMountStaysNamedAndTakesTheFlagsToo) {
    mount("a", "r", "Fen::Dir");
    mount("a/b", "w");
    support::TraceRecorder const trace;
    parser_.recordIntermediatePaths();
    EXPECT_EQ(mounts().at("a"), "Fen::Dir rwn*");
    EXPECT_THAT(intermediates(), IsEmpty());
    EXPECT_TRUE(trace.has(9, "a already explicit, skipping intermediate set"));
}

TEST_F(IntermediatePaths, ANamedPathAboveAMountMustBeADirectory) {
    mount("a", "r", "Leaf");
    mount("a/b", "w");
    parser_.recordIntermediatePaths();
    EXPECT_EQ(mounts().at("a"), "Leaf r*");
    EXPECT_THAT(support::messages(parser_),
                ElementsAre("recordMountArgs: types don't match for path 'a': 'Fen::Dir'  'Leaf'"));
}

TEST_F(IntermediatePaths, NoneIsRecordedWhenFlagsAreNotMerged) {
    support::LenientParser parser("/nonexistent", "/nonexistent", true);
    prepare(parser);
    mount(parser, "a/b", "rw");
    parser.inheritParentFlags();
    EXPECT_EQ(mountsOf(parser), (Mounts{{"a/b", "T rw*"}}));
    EXPECT_TRUE(parser.intermediatePaths().empty());
}

TEST_F(IntermediatePaths, NoneIsRecordedForAPassiveAgent) {
    parser_.activeMountSeenIs(false);
    mount("a/b", "rw");
    parser_.inheritParentFlags();
    EXPECT_EQ(mounts(), (Mounts{{"a/b", "T rw*"}}));
    EXPECT_THAT(intermediates(), IsEmpty());
}

// --- top-down ---

struct RootRow {
    char const* rootFlags;
    char const* ofA; ///< flags of the intermediate path "a" above a mount "a/b" with "rw"
};

TEST_F(IntermediatePaths, OnesAtTheTopInheritFromTheRoot) {
    for (auto const& [rootFlags, ofA] : std::vector<RootRow>{
             {"", "wn"},
             {"r", "wn"},
             {"rwp", "wn"},
             {"rt", "tny"},
             {"rwt", "wtn"},
             {"rtp", "tpny"},
             {"rwtp", "wtpn"},
             {"tK", "tny"},
         }) {
        support::LenientParser parser;
        prepare(parser);
        parser.rootFlagsAre(rootFlags);
        mount(parser, "a/b", "rw");
        parser.inheritParentFlags();
        EXPECT_EQ(mountsOf(parser).at("a"), std::string("Fen::Dir ") + ofA) << rootFlags;
    }
}

TEST_F(IntermediatePaths, OnesBelowInheritWhatTheirParentInherited) {
    parser_.rootFlagsAre("rtp");
    mount("a/b/c/d", "w");
    parser_.inheritParentFlags();
    EXPECT_EQ(mounts(), (Mounts{{"a", "Fen::Dir tpny"},
                                {"a/b", "Fen::Dir tpny"},
                                {"a/b/c", "Fen::Dir tpny"},
                                {"a/b/c/d", "T w*"}}));
}

struct ParentRow {
    char const* parentFlags;
    char const* child; ///< flags of the intermediate path "a/b" below it, above a mount with "w"
};

TEST_F(IntermediatePaths, OnesBelowANamedPathInheritFromIt) {
    for (auto const& [parentFlags, child] : std::vector<ParentRow>{
             {"S", "wn"},
             {"p", "wn"},
             {"t", "wtn"}, // the record below added its "w" to the parent first
             {"tp", "wtpn"},
         }) {
        support::LenientParser parser;
        prepare(parser);
        mount(parser, "a", parentFlags, "Fen::Dir");
        mount(parser, "a/b/c", "w");
        parser.inheritParentFlags();
        EXPECT_EQ(mountsOf(parser).at("a/b"), std::string("Fen::Dir ") + child) << parentFlags;
    }
}

TEST_F(IntermediatePaths, AParentThatKeepsItsOwnLosesTheChildsWrite) {
    mount("a", "t", "Leaf"); // no directory, so nothing is added to it
    mount("a/b/c", "w");
    parser_.inheritParentFlags();
    EXPECT_EQ(mounts().at("a/b"), "Fen::Dir tny");
}

TEST_F(IntermediatePaths, AfterwardsNoneIsKnownAsIntermediateAnyMore) {
    mount("a/b", "r");
    parser_.inheritParentFlags();
    EXPECT_THAT(intermediates(), IsEmpty());
    EXPECT_FALSE(parser_.pathMountArgsMap().at("a").isExplicit);
}

TEST_F(IntermediatePaths, ADynamicIntermediateInheritsToo) {
    parser_.activeMountSeenIs(false);
    parser_.recordMountArgsExternal("a", {"Fen::Dir", Flags(0x80002), false}, false, false);
    parser_.inheritParentFlags();
    EXPECT_EQ(mounts(), (Mounts{{"a", "Fen::Dir tny"}}));
}

TEST_F(IntermediatePaths, TheInheritanceIsTraced) {
    mount("a/b/c", "w");
    support::TraceRecorder const trace;
    parser_.inheritParentFlags();
    for (char const* const text : {
             "Inheriting flags for a",
             "Inheriting from root flags rt",
             "Flags for intermediate path a inherited from wn to tny",
             "Inheriting flags for a/b",
             "Parent a has flags tny",
             "Flags for intermediate path a/b inherited from wn to tny",
         })
        EXPECT_EQ(trace.count(9, text), 1) << text;
}

TEST_F(IntermediatePaths, UnchangedFlagsAreTracedAsSuch) {
    parser_.rootFlagsAre("");
    mount("a/b/c", "w");
    support::TraceRecorder const trace;
    parser_.inheritParentFlags();
    for (char const* const text : {
             "Inheriting from root flags ",
             "Flags for intermediate path a left unchanged (wn)",
             "Parent a has flags wn",
             "Flags for intermediate path a/b left unchanged (wn)",
         })
        EXPECT_EQ(trace.count(9, text), 1) << text;
}

TEST_F(IntermediatePaths, ParentsComeBeforeTheirChildren) {
    mount("b/c", "r");
    mount("a/b/c", "r");
    support::TraceRecorder const trace;
    parser_.inheritParentFlags();
    Strings order;
    for (auto const& text : trace.at(9))
        if (text.starts_with("Inheriting flags for "))
            order.push_back(text.substr(21));
    EXPECT_THAT(order, ElementsAre("a", "a/b", "b"));
}

TEST_F(IntermediatePaths, APathWithALeadingSlashInheritsFromTheRoot) {
    mount("/a/b", "w");
    support::TraceRecorder const trace;
    parser_.inheritParentFlags();
    EXPECT_EQ(mounts().at("/a"), "Fen::Dir tny");
    EXPECT_EQ(mounts().at(""), "Fen::Dir tny");
    EXPECT_EQ(trace.count(9, "Inheriting from root flags rt"), 2);
}

// --- programming errors ---

TEST_F(IntermediatePaths, BothPassesNeedAllProfilesLoaded) {
    parser_.allProfilesLoadedIs(false);
    EXPECT_DEATH(parser_.recordIntermediatePaths(), "allProfilesLoaded_");
    EXPECT_DEATH(parser_.inheritParentFlags(), "allProfilesLoaded_");
}

TEST_F(IntermediatePaths, AnIntermediateWithoutItsParentIsAProgrammingError) {
    parser_.intermediatePaths().insert("lost/child");
    EXPECT_DEATH(parser_.inheritParentFlags(), "parent != pathMountArgsMap_.end\\(\\)");
}

TEST_F(IntermediatePaths, AnIntermediateWithoutItsRecordIsAProgrammingError) {
    parser_.intermediatePaths().insert("lost");
    EXPECT_DEATH(parser_.inheritParentFlags(), "intermediate != pathMountArgsMap_.end\\(\\)");
}

// --- an agent from end to end ---

class IntermediatePathsOfAnAgent : public testing::Test {
  protected:
    IntermediatePathsOfAnAgent() { device_.preinit("Base", "hw/fan/1,Fan\nhw/fan/2,Fan\n"); }
    Mounts load(std::string const& profile, bool dontMergeFlags = false) {
        device_.profile("Fan", profile);
        auto const parser = device_.agent("Fan", "", dontMergeFlags);
        parser->doInit();
        return mountsOf(*parser);
    }

    support::CleanEnvironment environment_;
    support::Device device_;
};

TEST_F(IntermediatePathsOfAnAgent, AnActiveAgentGetsThem) {
    EXPECT_EQ(load("agentName:Fan\nactiveMount\nhw/fan/1,Fan,rw\nhw/fan/2,Fan,S\n"),
              (Mounts{{"hw", "Fen::Dir tny"},
                      {"hw/fan", "Fen::Dir tny"},
                      {"hw/fan/1", "Fan rw*"},
                      {"hw/fan/2", "Fan S*"}}));
}

TEST_F(IntermediatePathsOfAnAgent, TheRootFlagsOfTheProfileAreInherited) {
    EXPECT_EQ(
        load("agentName:Fan\nactiveMount\nrootFlags:rw\nhw/fan/1,Fan,rw\n"),
        (Mounts{{"hw", "Fen::Dir wtn"}, {"hw/fan", "Fen::Dir wtn"}, {"hw/fan/1", "Fan rw*"}}));
}

TEST_F(IntermediatePathsOfAnAgent, APassiveAgentGetsNone) {
    EXPECT_EQ(load("agentName:Fan\nhw/fan/1,Fan,rw\n"), (Mounts{{"hw/fan/1", "Fan rw*"}}));
}

TEST_F(IntermediatePathsOfAnAgent, AnAgentThatDoesNotMergeFlagsGetsNone) {
    EXPECT_EQ(load("agentName:Fan\nactiveMount\nhw/fan/1,Fan,rw\n", true),
              (Mounts{{"hw/fan/1", "Fan rw*"}}));
}

TEST_F(IntermediatePathsOfAnAgent, InitialisingAgainMakesTheSameOnes) {
    device_.profile("Fan", "agentName:Fan\nactiveMount\nhw/fan/1,Fan,rw\n");
    auto const parser = device_.agent("Fan");
    parser->doInit();
    auto const before = mountsOf(*parser);
    parser->unDoInit();
    EXPECT_THAT(mountsOf(*parser), IsEmpty());
    parser->doInit();
    EXPECT_EQ(mountsOf(*parser), before);
}

} // namespace
