// What is loaded before what, and what the environment says of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include <Fen/Exception.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/PreinitMaps.h"
#include "support/TraceRecorder.h"

namespace {

using support::Strings;
using support::Types;
using testing::ElementsAre;
using testing::IsEmpty;

class LoadOrder : public testing::Test {
  protected:
    // The names of the scanned directories, in order, without the path before them.
    Strings scannedDirectories(support::TraceRecorder const& trace) const {
        Strings names;
        std::string const start = "( dirName : " + device_.directory().string() + "/";
        for (auto const& text : trace.at(8))
            if (text.starts_with(start))
                names.push_back(text.substr(start.size(), text.find(',') - start.size()));
        return names;
    }
    std::string path(char const* name) const { return (device_.directory() / name).string(); }

    support::CleanEnvironment environment_;
    support::Device device_;
};

TEST_F(LoadOrder, EveryFileOfThePreinitDirectoryIsRead) {
    device_.preinit("Base", "a,A\n").preinit("Extra", "b,B\n");
    auto const parser = device_.lenient();
    parser->doLoadPreinits();
    EXPECT_EQ(support::declaredTypes(*parser), (Types{{"a", "A"}, {"b", "B"}}));
    EXPECT_TRUE(parser->defaultPreinitsLoaded());
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
}

TEST_F(LoadOrder, PreinitFilesAreReadInNameOrder) {
    device_.preinit("2", "a,Second\n").preinit("1", "a,First\n");
    auto const parser = device_.lenient();
    parser->doLoadPreinits();
    EXPECT_EQ(support::declaredTypes(*parser), (Types{{"a", "Second"}}));
}

TEST_F(LoadOrder, APreinitDirectoryWithoutFilesIsNoFault) {
    auto const parser = device_.lenient();
    parser->doLoadPreinits();
    EXPECT_THAT(support::declaredTypes(*parser), IsEmpty());
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
    EXPECT_TRUE(parser->defaultPreinitsLoaded());
}

TEST_F(LoadOrder, AMissingPreinitDirectoryIsReportedAndLoadingGoesOn) {
    auto const extra = device_.directory().write("extra", "a,T\n");
    support::EnvironmentVariable const list("KELDA_EXTRA_PREINIT_PATH", extra.c_str());
    support::LenientParser parser(path("missing"), device_.profileDir());
    parser.doLoadPreinits();
    EXPECT_THAT(support::faultList(parser),
                ElementsAre(":-1: Cannot open directory " + path("missing")));
    EXPECT_EQ(support::declaredTypes(parser), (Types{{"a", "T"}}));
    EXPECT_TRUE(parser.defaultPreinitsLoaded());
}

TEST_F(LoadOrder, AFaultInAPreinitFileNamesItsFileAndLine) {
    device_.preinit("Bad", "a,T\n\nno comma\nb,T\n");
    auto const parser = device_.lenient();
    parser->doLoadPreinits();
    EXPECT_THAT(support::faultList(*parser), ElementsAre("Bad:3: preinit syntax error: nocomma"));
    EXPECT_EQ(support::declaredTypes(*parser), (Types{{"a", "T"}, {"b", "T"}}));
}

TEST_F(LoadOrder, ThePreinitCheckIsAskedForPreinitFiles) {
    device_.preinit("Base", "");
    auto const parser = device_.lenient();
    support::TraceRecorder const trace;
    parser->doLoadPreinits();
    EXPECT_THAT(trace.at(4),
                ElementsAre("canLoad oks loading 'Base'", "found match for *: 'Base'"));
}

TEST_F(LoadOrder, AnOpenFileIsAProgrammingError) {
    auto const parser = device_.lenient();
    parser->openFile("Open");
    EXPECT_DEATH(parser->doLoadPreinits(), "[^!]currentFiles_.empty\\(\\)");
}

// --- without the default preinit files ---

TEST_F(LoadOrder, TheDefaultPreinitsCanBeSwitchedOff) {
    device_.preinit("Base", "a,A\n");
    for (char const* const value : {"", "0", "1"}) {
        SCOPED_TRACE(value);
        support::EnvironmentVariable const off("MFI_NO_DEFAULT_PREINIT", value);
        auto const parser = device_.lenient();
        support::TraceRecorder const trace;
        parser->doLoadPreinits();
        EXPECT_THAT(trace.at(2), ElementsAre("Skipping default preinit load because "
                                             "MFI_NO_DEFAULT_PREINIT is in the environment "
                                             "variables"));
        EXPECT_THAT(support::declaredTypes(*parser), IsEmpty());
        EXPECT_FALSE(parser->defaultPreinitsLoaded());
    }
}

TEST_F(LoadOrder, TheSwitchIsReadAtEachLoad) {
    device_.preinit("Base", "a,A\n");
    auto const parser = device_.lenient();
    {
        support::EnvironmentVariable const off("MFI_NO_DEFAULT_PREINIT", "");
        parser->doLoadPreinits();
    }
    EXPECT_FALSE(parser->defaultPreinitsLoaded());
    parser->doLoadPreinits();
    EXPECT_TRUE(parser->defaultPreinitsLoaded());
    EXPECT_EQ(support::declaredTypes(*parser), (Types{{"a", "A"}}));
}

TEST_F(LoadOrder, WithoutDefaultPreinitsExtraOnesAreStillRead) {
    device_.preinit("Base", "a,A\n");
    auto const extra = device_.directory().write("extra", "b,B\n");
    support::EnvironmentVariable const off("MFI_NO_DEFAULT_PREINIT", "");
    support::EnvironmentVariable const list("KELDA_EXTRA_PREINIT_PATH", extra.c_str());
    auto const parser = device_.lenient();
    parser->doLoadPreinits();
    EXPECT_EQ(support::declaredTypes(*parser), (Types{{"b", "B"}}));
    EXPECT_FALSE(parser->defaultPreinitsLoaded());
}

// --- the extra profile directory ---

TEST_F(LoadOrder, TheExtraProfileDirectoryIsTakenAsItIsWritten) {
    for (std::string const value : {"/one/", "/one:/two", "relative//", ""}) {
        support::EnvironmentVariable const extra("KELDA_EXTRA_PROFILE_PATH", value.c_str());
        auto const parser = device_.lenient();
        parser->doLoadPreinits();
        EXPECT_EQ(parser->extraProfileDir(), value);
        EXPECT_THAT(support::faultList(*parser), IsEmpty()) << value;
    }
}

TEST_F(LoadOrder, ThereIsNoExtraProfileDirectoryUnlessItIsSet) {
    auto const parser = device_.lenient();
    parser->doLoadPreinits();
    EXPECT_EQ(parser->extraProfileDir(), "");
}

TEST_F(LoadOrder, TheExtraProfileDirectoryIsNotReadWithThePreinits) {
    device_.directory().write("extra/Fan", "agentName:Fan\nbad line\n");
    support::EnvironmentVariable const extra("KELDA_EXTRA_PROFILE_PATH", path("extra").c_str());
    auto const parser = device_.lenient();
    support::TraceRecorder const trace;
    parser->doLoadPreinits();
    EXPECT_THAT(scannedDirectories(trace), ElementsAre("preinit"));
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
}

// --- preinits before profiles ---

TEST_F(LoadOrder, PreinitFilesAreReadBeforeAnyProfile) {
    device_.preinit("Base", "a,A\n").profile("Fan", "agentName:Fan\na,A,r\n");
    device_.directory().makeDirectory("extra");
    support::EnvironmentVariable const extra("KELDA_EXTRA_PROFILE_PATH", path("extra").c_str());
    auto const parser = device_.agent("Fan");
    support::TraceRecorder const trace;
    EXPECT_EQ(parser->mountInfo("a").type, "A");
    EXPECT_THAT(scannedDirectories(trace), ElementsAre("preinit", "profiles", "extra", "extra",
                                                       "profiles", "extra", "profiles"))
        << "preinits, then the agent's profiles, then the two default groups";
}

TEST_F(LoadOrder, PreinitFilesAreReadOnceForAllAgents) {
    device_.preinit("Base", "a,A\n").profile("Fan", "agentName:Fan\na,A,r\n");
    auto const parser = device_.agent("Fan");
    parser->addAgent("Pan", "");
    support::TraceRecorder const trace;
    parser->doInit();
    auto const scanned = scannedDirectories(trace);
    EXPECT_EQ(std::count(scanned.begin(), scanned.end(), "preinit"), 1);
    EXPECT_EQ(scanned.front(), "preinit");
}

TEST_F(LoadOrder, AFaultInAPreinitFileKeepsTheStrictFlavourFromItsProfiles) {
    device_.preinit("Base", "no comma\n").profile("Fan", "agentName:Fan\nbad line\n");
    auto const parser = device_.agent("Fan");
    EXPECT_THROW(parser->doInit(), Fen::AgentException);
    EXPECT_THAT(support::faultList(*parser), ElementsAre("Base:1: preinit syntax error: nocomma"));
    EXPECT_FALSE(parser->isInitialized());
}

TEST_F(LoadOrder, UnInitialisingForgetsWhatWasLoadedAndLoadingRebuildsIt) {
    device_.preinit("Base", "CONFIG:a,A\nb,B,createOnMount\n");
    auto const parser = device_.lenient();
    parser->doInit();
    auto const types = support::declaredTypes(*parser);
    auto const attributes = support::declaredAttributes(*parser);
    parser->unDoInit();
    EXPECT_THAT(support::declaredTypes(*parser), IsEmpty());
    EXPECT_THAT(support::declaredAttributes(*parser), IsEmpty());
    parser->doInit();
    EXPECT_EQ(support::declaredTypes(*parser), types);
    EXPECT_EQ(support::declaredAttributes(*parser), attributes);
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
}

// --- whether a profile file is loaded ---

TEST_F(LoadOrder, AProfileThatBroughtAPathIsLoaded) {
    device_.preinit("Base", "a,A\n")
        .profile("Fan", "agentName:Fan\na,A,r\n")
        .profile("Empty", "agentName:Empty\n");
    auto const parser = device_.lenient();
    EXPECT_TRUE(parser->fileIsLoaded("Fan"));
    EXPECT_FALSE(parser->fileIsLoaded("Empty")) << "it brought no path";
    EXPECT_FALSE(parser->fileIsLoaded("Base")) << "a preinit file";
    EXPECT_FALSE(parser->fileIsLoaded("Fa"));
    EXPECT_FALSE(parser->fileIsLoaded(device_.profileDir() + "/Fan"));
    EXPECT_FALSE(parser->fileIsLoaded(""));
    EXPECT_THAT(support::faultList(*parser), IsEmpty());
}

TEST_F(LoadOrder, AskingWhetherAFileIsLoadedLoadsEverythingFirst) {
    device_.preinit("Base", "a,A\n").profile("Fan", "agentName:Fan\na,A,r\n");
    auto const parser = device_.agent("Fan");
    support::TraceRecorder const trace;
    EXPECT_TRUE(parser->fileIsLoaded("Fan"));
    EXPECT_TRUE(parser->isInitialized());
    ASSERT_FALSE(trace.at(7).empty());
    EXPECT_EQ(trace.at(7).front(), "( path : Fan ) ");
}

} // namespace
