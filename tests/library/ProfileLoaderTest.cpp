// The profile loader: which line goes to which handler, what is counted and numbered, and what
// happens at the end of a file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include <KeldaUtil/MountFlags.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/Faults.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::faultList;
using support::TraceRecorder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using Effects = std::vector<std::string>;

// Tells what the lines of a profile did.
class WatchedParser : public support::LenientParser {
  public:
    using LenientParser::LenientParser;

    void recordAlias(char const* key, char* rhs) override {
        log_.push_back(std::string("alias ") + key + " is " + rhs);
        LenientParser::recordAlias(key, rhs);
    }
    void recordMountGroup(char const* name, unsigned char priority) override {
        log_.push_back(std::string("group ") + name + " " + std::to_string(priority));
        LenientParser::recordMountGroup(name, priority);
    }
    void recordCondition(Kelda::LineBuffer const& buffer, bool blocking) override {
        log_.push_back((blocking ? "blocker [" : "condition [") + std::string(buffer.data()) + "]");
        LenientParser::recordCondition(buffer, blocking);
    }
    void reconcileFailedInclude(char const* pattern) const override {
        log_.push_back(std::string("include ") + pattern);
    }
    void maybeThrow(Rook::String const& message) const override {
        log_.push_back("fault " + std::string(message.view()));
        LenientParser::maybeThrow(message);
    }

    // Everything in the order it happened, then what the lines left behind.
    Effects effects() const {
        Effects all = log_;
        for (auto const& [path, args] : pathMountArgsMap_)
            all.push_back("mount " + std::string(path.view()) + " " +
                          std::string(KeldaUtil::mountTableFlagsToString(args.flags).view()));
        if (activeMountSeen_)
            all.emplace_back("active");
        if (matchActiveNameSeen_)
            all.emplace_back("matchActive");
        if (noDefaultMountGroup_)
            all.emplace_back("noDefault");
        for (auto const& agent : subAgents_)
            all.push_back("subAgent " + std::string(agent.view()));
        if (!rootFlags_.empty())
            all.push_back("root " + std::string(rootFlags_.view()));
        if (!connectionFlags_.empty())
            all.push_back("connection " + std::string(connectionFlags_.view()));
        return all;
    }

  private:
    mutable Effects log_;
};

class ProfileLoader : public testing::Test {
  protected:
    // What a text does to a parser that had read nothing else.
    Effects effectsOf(std::string const& text, bool included = false) const {
        WatchedParser fresh(device.preinitDir(), device.profileDir());
        fresh.declare({"a", "a/b"});
        fresh.inIncludeIs(included);
        fresh.loadProfile(text);
        return fresh.effects();
    }

    support::CleanEnvironment const environment{};
    support::Device device;
    WatchedParser parser{device.preinitDir(), device.profileDir()};
};

std::string const needsActiveMount = "'matchActiveName' keyword requires 'activeMount' keyword";

std::string noType(std::string const& path) {
    return "No type info for path '" + path +
           "' found in preinit files while loading profile file because the path was not loaded "
           "from any preinit...";
}
std::string includedError(std::string const& line) {
    return "Syntax error in included file: '" + line +
           "'. One may only specify mount paths or the activeMount keyword in an included file. "
           "For more information see REF482";
}

// --- one line, one handler ---

TEST_F(ProfileLoader, EveryKeywordHasItsHandler) {
    struct {
        char const* line;
        Effects effects;
    } const rows[] = {
        {"a/b,X,rw", {"mount a/b rw"}},
        {"activeMount", {"active"}},
        {"alias:%x=y", {"alias %x is y"}},
        {"MountGroup:g", {"group g 99"}},
        {"MountGroup:g,7", {"group g 7"}},
        {"noDefaultMountGroup", {"noDefault"}},
        {"matchActiveName", {"fault " + needsActiveMount, "matchActive"}},
        {"subAgent:Led", {"subAgent Led"}},
        {"Condition:on", {"condition [Condition:on\n]"}},
        {"ConditionBlocker:on", {"blocker [ConditionBlocker:on\n]"}},
        {"rootFlags:rw", {"root rw"}},
        {"connectionFlags:SN", {"connection SN"}},
        {"Include:Common", {"include Common"}},
        {"foo", {"fault syntax error: 'foo'"}},
    };
    for (auto const& row : rows)
        EXPECT_EQ(effectsOf(std::string(row.line) + "\n"), row.effects) << row.line;
}

TEST_F(ProfileLoader, KeywordsAreComparedWithoutRegardToCaseOrBlanks) {
    struct {
        char const* line;
        Effects effects;
    } const rows[] = {
        {"  MOUNTGROUP : g", {"group g 99"}},
        {"\ta / b , X , r w ", {"mount a/b rw"}},
        {" ACTIVE mount", {"active"}},
        {"ALIAS : %x = y", {"alias %x is y"}},
        {"NoDefault MountGroup\t", {"noDefault"}},
        {"MATCH ACTIVE NAME", {"fault " + needsActiveMount, "matchActive"}},
        {"subagent: Led", {"subAgent Led"}},
        {"ROOTFLAGS: r w", {"root rw"}},
        {"ConnectionFLAGS :S", {"connection S"}},
        {"include: Common", {"include Common"}},
        {"\v f\fo o \r", {"fault syntax error: 'foo'"}},
    };
    for (auto const& row : rows)
        EXPECT_EQ(effectsOf(std::string(row.line) + "\n"), row.effects) << row.line;
}

TEST_F(ProfileLoader, APathLineIsAPathLineWhateverItsFirstWord) {
    for (std::string const path :
         {"activeMount", "MountGroup:g", "noDefaultMountGroup", "matchActiveName", "subAgent:x",
          "Condition:x", "ConditionBlocker:x", "rootFlags:r", "connectionFlags:S", "Include:x",
          "alias:%x", "agentName:x"})
        EXPECT_THAT(effectsOf(path + ",T,r\n"), ElementsAre("fault " + noType(path))) << path;
}

TEST_F(ProfileLoader, AnEqualsSignMakesAPathLineSomethingElse) {
    struct {
        char const* line;
        Effects effects;
    } const rows[] = {
        {"a,X,r=w", {"fault syntax error: 'a,X,r=w'"}},
        {"alias:%x=a,b,c", {"alias %x is a,b,c"}},
        {"MountGroup:g=h,7,x", {"group g=h 7"}},
        {"subAgent:a,b=c,d", {"subAgent a,b=c,d"}},
    };
    for (auto const& row : rows)
        EXPECT_EQ(effectsOf(std::string(row.line) + "\n"), row.effects) << row.line;
}

TEST_F(ProfileLoader, WhatIsNoKeywordIsASyntaxError) {
    for (std::string const line : {"foo",
                                   "a,b",
                                   ",",
                                   "=",
                                   "activeMounts",
                                   "activeMount:",
                                   "xactiveMount",
                                   "alias:%x",
                                   "alias%x=y",
                                   "MountGroup",
                                   "noDefaultMountGroup:",
                                   "matchActiveNames",
                                   "subAgent",
                                   "Conditions:x",
                                   "ConditionBlocker",
                                   "rootFlags",
                                   "connectionFlags=S",
                                   "Include",
                                   "agentName:x",
                                   "{}",
                                   "%s%n"})
        EXPECT_THAT(effectsOf(line + "\n"), ElementsAre("fault syntax error: '" + line + "'"));
}

TEST_F(ProfileLoader, ConditionsGetTheirLineWithItsBlanksButWithoutItsComment) {
    EXPECT_THAT(effectsOf(" \tCondition : on  or off # why\n"),
                ElementsAre("condition [ \tCondition : on  or off ]"));
    EXPECT_THAT(effectsOf("conditionBLOCKER:on  and \\\n  off"),
                ElementsAre("blocker [conditionBLOCKER:on  and   off]"));
}

TEST_F(ProfileLoader, ALineOfBlanksAndCommentsDoesNothing) {
    for (auto const* text : {"\n", "  \t \n", "#\n", "# foo, bar\n", "  # foo\n", "", "\\\n\n"})
        EXPECT_THAT(effectsOf(text), IsEmpty()) << text;
}

TEST_F(ProfileLoader, ATrailingSlashOfAPathIsDropped) {
    EXPECT_THAT(effectsOf("a/,T,r\n"), ElementsAre("mount a r"));
}

TEST_F(ProfileLoader, AnIncludedFileMayHoldPathsAndActiveMountOnly) {
    EXPECT_THAT(effectsOf("a,X,r\n# note\nACTIVEMOUNT\na/b,X,w\n", true),
                ElementsAre("mount a r", "mount a/b w", "active"));
    for (std::string const line :
         {"alias:%x=y", "MountGroup:g", "noDefaultMountGroup", "matchActiveName", "subAgent:x",
          "Condition:x", "ConditionBlocker:x", "rootFlags:r", "connectionFlags:S", "Include:x",
          "foo"})
        EXPECT_THAT(effectsOf(line + "\n", true), ElementsAre("fault " + includedError(line)));
}

// --- faults and line numbers ---

TEST_F(ProfileLoader, AnUnknownWordIsRecordedWithItsFileAndLine) {
    TraceRecorder const trace;
    parser.loadProfile("# note\n\n f o o\n", "Fan");
    EXPECT_THAT(faultList(parser), ElementsAre("Fan:3: syntax error: 'foo'"));
    EXPECT_THAT(trace.at(0), ElementsAre(support::continued("Fan", 3, "syntax error: 'foo'")));
}

TEST_F(ProfileLoader, LinesAreNumberedByTheFirstPhysicalLineOfTheirOwn) {
    parser.loadProfile("foo1\n\nfoo\\\n2\nfoo3\nfoo\\\n4\\\n5\nfoo6\n");
    EXPECT_THAT(faultList(parser),
                ElementsAre("Profile:1: syntax error: 'foo1'", "Profile:3: syntax error: 'foo2'",
                            "Profile:5: syntax error: 'foo3'", "Profile:6: syntax error: 'foo45'",
                            "Profile:9: syntax error: 'foo6'"));
}

TEST_F(ProfileLoader, ALineThatCannotBePreparedIsCountedAndStillHandled) {
    parser.loadProfile("# note \\\nb\\ar\nfoo\n");
    EXPECT_THAT(faultList(parser),
                ElementsAre("Profile:1: syntax error: multi-line comment: # note \\\n",
                            "Profile:1: syntax error: '#note\\'",
                            "Profile:2: syntax error: additional characters after \\: b\\ar\n",
                            "Profile:2: syntax error: 'b\\ar'", "Profile:3: syntax error: 'foo'"));
}

TEST_F(ProfileLoader, LinesReadBeforeAreCountedAlready) {
    auto const file = support::streamOf("agentName:Fan\nfoo\n");
    Kelda::LineBuffer buffer{};
    ASSERT_NE(std::fgets(buffer.data(), 1024, file.get()), nullptr);
    parser.openFile("Fan", 1);
    parser.profileLoader(file.get());
    EXPECT_THAT(faultList(parser), ElementsAre("Fan:2: syntax error: 'foo'"));
    EXPECT_EQ(parser.currentLine(), 2);
}

TEST_F(ProfileLoader, NoFaultEndsAFile) {
    parser.declare({"a", "b"});
    EXPECT_EQ(parser.loadProfile("foo\na,T,r\nx,T,r\nb,T,?\nrootFlags:?\na/,T,w\n"), 1);
    EXPECT_THAT(parser.effects(), ElementsAre("fault syntax error: 'foo'", "fault " + noType("x"),
                                              "fault Encountered unknown mount flag ?",
                                              "fault Invalid flags ? in path b",
                                              "fault Encountered unknown mount flag ?",
                                              "fault Invalid root flags ?", "mount a rw"));
}

TEST_F(ProfileLoader, MatchActiveNameNeedsActiveMountInTheSameParser) {
    parser.loadProfile("matchActiveName\na,T\n# last\n\n", "Fan");
    EXPECT_THAT(faultList(parser),
                ElementsAre("Fan:2: syntax error: 'a,T'", "Fan:4: " + needsActiveMount));
    for (auto const* text : {"matchActiveName\nactiveMount\n", "activeMount\nmatchActiveName\n"})
        EXPECT_THAT(effectsOf(text), ElementsAre("active", "matchActive")) << text;
}

// --- the end of a file ---

TEST_F(ProfileLoader, AFileOfCommentsIsFiledUnderItsAgentAndNothingElse) {
    parser.agentStringIs("Fan");
    parser.agentKeyIs("Fan");
    EXPECT_EQ(parser.loadProfile("# note\n\n  \t\n"), 1);
    EXPECT_THAT(parser.effects(), IsEmpty());
    EXPECT_TRUE(parser.profileFilePathsMap().empty() ||
                parser.profileFilePathsMap().at("Profile").empty());
    ASSERT_EQ(parser.agentStringProfileFileMap().size(), 1U);
    EXPECT_THAT(parser.agentStringProfileFileMap().at("Fan"), ElementsAre("Profile"));
}

TEST_F(ProfileLoader, AProfileIsFiledUnderTheAgentStringAndTheMatchedName) {
    parser.agentStringIs("Fan-3");
    parser.agentKeyIs("Fan");
    parser.loadProfile("");
    EXPECT_THAT(parser.agentStringProfileFileMap().at("Fan-3"), ElementsAre("Profile"));
    EXPECT_THAT(parser.agentStringProfileFileMap().at("Fan"), ElementsAre("Profile"));
}

TEST_F(ProfileLoader, ThePathsOfAFileAreSortedAtItsEnd) {
    parser.declare({"a", "b", "b/a", "B"});
    parser.loadProfile("b/a,T,r\nb,T,r\na,T,r\nB,T,r\na,T,w\n");
    EXPECT_THAT(parser.profileFilePathsMap().at("Profile"), ElementsAre("B", "a", "a", "b", "b/a"));
}

TEST_F(ProfileLoader, TheContextOfAFileEndsWithIt) {
    parser.loadProfile("alias:%x=y\nMountGroup:g\nCondition:on\n");
    EXPECT_EQ(parser.currentMountGroup(), "");
    EXPECT_FALSE(parser.inConditionalGroup());
    EXPECT_THAT(parser.perFileAliases(), IsEmpty());
    EXPECT_TRUE(parser.conditionSeen());
}

TEST_F(ProfileLoader, TheContextOfAnIncludedFileIsItsIncludersAndGoesOn) {
    parser.recordMountGroup("g", 1);
    parser.perFileAliasesPushBack("%x", "y");
    parser.inIncludeIs(true);
    EXPECT_EQ(parser.loadProfile("# note\n"), 1);
    EXPECT_EQ(parser.currentMountGroup(), "g");
    EXPECT_EQ(parser.perFileAliases().size(), 1U);
    EXPECT_THAT(parser.agentStringProfileFileMap(), IsEmpty());
}

TEST_F(ProfileLoader, EveryLoadedFileMeansThatAProfileWasFound) {
    parser.initializedIs(true);
    EXPECT_FALSE(parser.foundMountProfile());
    parser.loadProfile("");
    EXPECT_TRUE(parser.foundMountProfile());
}

TEST_F(ProfileLoader, IncludedFilesAreCounted) {
    device.profile("Common1", "a,T,r\n").profile("Common2", "foo\n").profile("Other", "foo\n");
    parser.declare({"a"});
    TraceRecorder const trace;
    EXPECT_EQ(parser.loadProfile("Include:Common*\nbar\n"), 3);
    EXPECT_THAT(trace.at(5), ElementsAre("processed 1 profiles", "processed 1 profiles",
                                         "processed 3 profiles"));
    EXPECT_THAT(faultList(parser), ElementsAre("Common2:1: " + includedError("foo"),
                                               "Profile:2: syntax error: 'bar'"));
    EXPECT_THAT(parser.profileFilePathsMap().at("Common1"), ElementsAre("a"));
}

// --- traces ---

TEST_F(ProfileLoader, AFilesBeginningAndEndAreTraced) {
    TraceRecorder const trace;
    parser.loadProfile("foo\n", "Fan");
    ASSERT_FALSE(trace.lines().empty());
    EXPECT_EQ(trace.lines().front(), (support::TraceLine{8, "( file : Fan )"}));
    EXPECT_THAT(trace.at(2), ElementsAre("( file : Fan )"));
    EXPECT_THAT(trace.at(5), ElementsAre("processed 1 profiles"));
}

TEST_F(ProfileLoader, TwoKeywordsAreTraced) {
    TraceRecorder const trace;
    parser.loadProfile("noDefaultMountGroup\nmatchActiveName\nactiveMount\n");
    EXPECT_EQ(trace.count(8, "handleNoDefaultMountGroupLine"), 1);
    EXPECT_EQ(trace.count(8, "matchActiveName keyword found"), 1);
}

} // namespace
