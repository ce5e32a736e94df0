// A process with a plug-in that brings a file-load check of its own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <Fen/Exception.h>

#include "ChoiceTrace.h"
#include "Exported.h"
#include "support/CleanEnvironment.h"
#include "support/Descriptors.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/PreinitMaps.h"
#include "support/Scanner.h"
#include "support/TraceRecorder.h"

namespace {

using support::Strings;
using support::TraceLine;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

constexpr auto plugin = "libPluginLoader.so";

class RefusingPlugin : public testing::Test {
  protected:
    RefusingPlugin() {
        traceOfTheFirstCheck();
        calls_.clear();
        refused_.clear();
        unparsable_.clear();
        whenAsked_ = [] {};
    }
    // The calls since the test began that hold this text.
    Strings calls(std::string_view text) const {
        Strings found;
        for (auto const& call : calls_)
            if (call.find(text) != std::string::npos)
                found.push_back(call);
        return found;
    }

    support::CleanEnvironment environment_;
    support::Device device_;
    Strings& calls_ = exportedBy<Strings>(plugin, "callsOfThePlugin");
    std::set<std::string>& refused_ = exportedBy<std::set<std::string>>(plugin, "refusedNames");
    std::set<std::string>& unparsable_ =
        exportedBy<std::set<std::string>>(plugin, "unparsableTypes");
    std::function<void()>& whenAsked_ =
        exportedBy<std::function<void()>>(plugin, "actionWhenAsked");
};

// --- the choice ---

TEST(RefusingPluginChoice, IsTraced) {
    auto const& lines = traceOfTheFirstCheck();
    EXPECT_THAT(lines,
                Contains(TraceLine{9, "getAnotherImpl dlopen of libPluginLoader successful"}));
    EXPECT_THAT(lines, Contains(TraceLine{9, "Using external FileLoadCheck implementation"}));
    EXPECT_THAT(lines, Not(Contains(TraceLine{9, "Using KeldaBase FileLoadCheck implementation"})));
    auto const at = [&](int level, char const* pattern) {
        return std::any_of(lines.begin(), lines.end(), [&](auto const& line) {
            return line.level == level && testing::Matches(MatchesRegex(pattern))(line.text);
        });
    };
    EXPECT_TRUE(at(3, "getAnotherImpl returned ptr 0x[0-9a-f]+"));
    EXPECT_TRUE(at(9, "DynFileLoadCheck returned ptr is 0x[0-9a-f]+.*"));
    EXPECT_TRUE(at(9, "DynFileLoadCheck.* cast ptr is 0x[0-9a-f]+"));
}

TEST_F(RefusingPlugin, IsAskedForItsFactoryOnceHoweverManyParsersThereAre) {
    DynFileLoadCheck const check("preinit");
    support::LenientParser const one;
    support::LenientParser const two;
    EXPECT_THAT(calls("getFileLoadCheckFactory"), IsEmpty()) << "that was done by the first check";
}

TEST_F(RefusingPlugin, MakesACheckForEachType) {
    DynFileLoadCheck one("one");
    DynFileLoadCheck two("two");
    EXPECT_EQ(one.fileType(), "one");
    EXPECT_EQ(two->fileType(), "two");
    EXPECT_EQ(dynamic_cast<FileLoadCheckNoOp*>(one.get()), nullptr);
}

TEST_F(RefusingPlugin, EachOperationReachesItsOwnSlot) {
    {
        DynFileLoadCheck check("type");
        EXPECT_EQ(check.parse(), 17);
        EXPECT_TRUE(check.canLoad("dir", "file"));
        EXPECT_EQ(check.fileType(), "type");
        EXPECT_TRUE(check.parsed());
    }
    EXPECT_THAT(calls_, ElementsAre("type: made", "type: parse", "type: canLoad dir file",
                                    "type: fileType", "type: parsed", "type: destroyed"));
}

// --- in a parser ---

TEST_F(RefusingPlugin, AParserMakesAndParsesTwoChecksAndDestroysThem) {
    { support::LenientParser const parser; }
    for (char const* const type : {"KeldaMountProfiles", "preinit"})
        EXPECT_THAT(calls(type),
                    ElementsAre(std::string(type) + ": made", std::string(type) + ": parse",
                                std::string(type) + ": parsed", std::string(type) + ": destroyed"));
}

TEST_F(RefusingPlugin, AParserSaysNothingOfAParsedCheck) {
    support::TraceRecorder const trace;
    support::LenientParser const parser;
    EXPECT_THAT(trace.at(1), IsEmpty());
}

TEST_F(RefusingPlugin, AParserTellsWhichCheckWasNotParsed) {
    for (std::string const type : {"KeldaMountProfiles", "preinit"}) {
        unparsable_ = {type};
        support::TraceRecorder const trace;
        support::LenientParser const parser;
        EXPECT_THAT(trace.at(1), ElementsAre("Failed to parse " + type + " json files "));
    }
}

TEST_F(RefusingPlugin, ARefusedPreinitFileIsPassedOver) {
    device_.preinit("a", "a,T\n").preinit("b", "b,T\n").preinit("c", "c,T\n");
    refused_ = {"b"};
    auto const parser = device_.lenient();
    support::TraceRecorder const trace;
    parser->doLoadPreinits();
    EXPECT_EQ(support::declaredTypes(*parser), (support::Types{{"a", "T"}, {"c", "T"}}));
    EXPECT_THAT(trace.at(4), ElementsAre("canLoad oks loading 'a'", "found match for *: 'a'",
                                         "json disabled loading 'b' by check of type preinit",
                                         "canLoad oks loading 'c'", "found match for *: 'c'"));
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
}

TEST_F(RefusingPlugin, ACheckIsAskedWithTheDirectoryAndTheNameAlone) {
    device_.preinit("a", "");
    device_.lenient()->doLoadPreinits();
    EXPECT_THAT(calls("canLoad"), ElementsAre("preinit: canLoad " + device_.preinitDir() + " a"));
}

TEST_F(RefusingPlugin, APatternCharacterInTheDirectoryIsNotHiddenFromTheCheck) {
    device_.directory().write("[odd]*/a", "");
    auto const odd = (device_.directory() / "[odd]*").string();
    support::Scanner scanner;
    scanner.scan(odd, nullptr, &scanner.preinitFileCheck());
    EXPECT_THAT(calls("canLoad"), ElementsAre("preinit: canLoad " + odd + " a"));
}

TEST_F(RefusingPlugin, ABackupIsPassedOverWithoutAskingAndAnExcludedFileAfterwards) {
    device_.preinit("a~", "").preinit("excluded", "");
    support::Scanner scanner;
    scanner.exclusionRegexIs("exc");
    EXPECT_EQ(scanner.scan(device_.preinitDir(), nullptr, &scanner.preinitFileCheck()), 0);
    EXPECT_THAT(calls("canLoad"),
                ElementsAre("preinit: canLoad " + device_.preinitDir() + " excluded"));
}

TEST_F(RefusingPlugin, ARefusedFileIsNotHeldAgainstTheExclusion) {
    device_.preinit("a", "");
    refused_ = {"a"};
    support::Scanner scanner;
    scanner.exclusionRegexIs("a");
    support::TraceRecorder const trace;
    scanner.scan(device_.preinitDir(), nullptr, &scanner.preinitFileCheck());
    EXPECT_THAT(trace.at(4), ElementsAre("json disabled loading 'a' by check of type preinit"));
}

TEST_F(RefusingPlugin, ARefusedFileNeedNotOpen) {
    std::filesystem::create_symlink("nowhere", device_.directory() / "preinit/a");
    refused_ = {"a"};
    auto const parser = device_.lenient();
    parser->doLoadPreinits();
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
}

TEST_F(RefusingPlugin, ARefusedExtraPreinitFileInADirectoryIsPassedOver) {
    device_.directory().write("extra/a", "a,T\n");
    device_.directory().write("extra/b", "b,T\n");
    refused_ = {"a"};
    auto const list = (device_.directory() / "extra").string();
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", list.c_str());
    auto const parser = device_.lenient();
    parser->doLoadPreinits();
    EXPECT_EQ(support::declaredTypes(*parser), (support::Types{{"b", "T"}}));
}

TEST_F(RefusingPlugin, AnExtraPreinitFileThatIsNamedItselfIsReadUnasked) {
    auto const list = device_.directory().write("a", "a,T\n");
    refused_ = {"a", list};
    support::EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", list.c_str());
    auto const parser = device_.lenient();
    parser->doLoadPreinits();
    EXPECT_EQ(support::declaredTypes(*parser), (support::Types{{"a", "T"}}));
    EXPECT_THAT(calls("canLoad"), IsEmpty());
}

// --- profiles ---

class RefusedProfiles : public RefusingPlugin {
  protected:
    RefusedProfiles() {
        device_.preinit("Base", "a,T\nb,T\n")
            .profile("Fan", "agentName:Fan\na,T,r\n")
            .profile("Fan-more", "agentName:Fan\nb,T,r\n");
    }
};

TEST_F(RefusedProfiles, DoNotBelongToTheAgent) {
    refused_ = {"Fan-more"};
    auto const parser = device_.agent("Fan");
    support::TraceRecorder const trace;
    parser->doInit();
    EXPECT_TRUE(parser->infoExists("a"));
    EXPECT_FALSE(parser->infoExists("b"));
    EXPECT_THAT(trace.at(4), Contains("json disabled loading 'Fan-more' by check of type "
                                      "KeldaMountProfiles"));
}

TEST_F(RefusedProfiles, LeaveAnAgentWithoutAProfileWhenAllAreRefused) {
    refused_ = {"Fan", "Fan-more"};
    auto const parser = device_.agent("Fan");
    EXPECT_FALSE(parser->foundMountProfile("Fan"));
}

TEST_F(RefusedProfiles, CannotBeIncluded) {
    device_.profile("Pan", "agentName:Pan\nInclude:Fan\n");
    refused_ = {"Fan"};
    try {
        device_.agent("Pan")->doInit();
        FAIL() << "nothing was thrown";
    } catch (Fen::AgentException const& fault) {
        EXPECT_STREQ(fault.what(), "\n\t\t\tError in mount profile: Pan\n\t\t\tline: 2\n\t\t\tmsg: "
                                   "Cannot find profile to include matching Fan");
    }
}

TEST_F(RefusedProfiles, AreNotLookedForAmongTheDefaultGroups) {
    device_.profile("DefaultMountGroup", "b,T,r\n");
    refused_ = {"DefaultMountGroup", "Fan-more"};
    auto const parser = device_.agent("Fan");
    support::TraceRecorder const trace;
    EXPECT_TRUE(parser->infoExists("b")) << "the default groups are read without a check";
    EXPECT_THAT(trace.at(4), Contains("No json check."));
}

TEST_F(RefusedProfiles, GiveTheVirtualConfigProfileItsTurn) {
    device_.preinit("Base", "CONFIG:a,T\n")
        .profile("ConfigMountProfile", "")
        .profile("Pan", "agentName:Pan\nInclude:ConfigMountProfile\n");
    refused_ = {"ConfigMountProfile"};
    support::EnvironmentVariable const check("PROFILEMULTIWRITERCHECK", "1");
    EXPECT_TRUE(device_.agent("Pan")->infoExists("a"));
}

// --- what a check sees and does ---

TEST_F(RefusingPlugin, NoDescriptorIsInheritedByAProgramThatACheckStarts) {
    device_.preinit("a", "").preinit("b", "");
    auto const before = support::descriptorsInUse();
    whenAsked_ = [&] { EXPECT_THAT(support::inheritedSince(before), IsEmpty()); };
    device_.lenient()->doLoadPreinits();
    EXPECT_EQ(calls("canLoad").size(), 2U);
}

TEST_F(RefusingPlugin, AnExceptionOfACheckGoesOnAndLeavesNoDescriptorBehind) {
    device_.preinit("a", "");
    auto const before = support::descriptorsInUse();
    whenAsked_ = [] { throw std::runtime_error("enough"); };
    EXPECT_THROW(device_.lenient()->doLoadPreinits(), std::runtime_error);
    EXPECT_EQ(support::descriptorsInUse(), before);
}

} // namespace
