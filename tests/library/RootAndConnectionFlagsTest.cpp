// The two flag texts that a profile sets for the agent as a whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <Fen/Exception.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/FaultLists.h"
#include "support/LenientParser.h"
#include "support/TraceRecorder.h"

namespace {

using support::Strings;
using testing::ElementsAre;
using testing::IsEmpty;

class RootAndConnectionFlags : public testing::Test {
  protected:
    RootAndConnectionFlags() { parser_.initializedIs(true); }

    void rootLine(std::string const& flags) {
        parser_.handleRootFlagsLine(support::lineOf("rootFlags:" + flags));
    }
    void connectionLine(std::string const& flags) {
        parser_.handleConnectionFlagsLine(support::lineOf("connectionFlags:" + flags));
    }
    Strings messages() const { return support::messages(parser_); }

    support::CleanEnvironment environment_;
    support::LenientParser parser_;
};

// --- the lines ---

TEST_F(RootAndConnectionFlags, AreEmptyAtTheStart) {
    EXPECT_EQ(parser_.rootFlags(), "");
    EXPECT_EQ(parser_.connectionFlags(), "");
}

TEST_F(RootAndConnectionFlags, EachLineSetsItsOwn) {
    rootLine("rw");
    connectionLine("SE");
    EXPECT_EQ(parser_.rootFlags(), "rw");
    EXPECT_EQ(parser_.connectionFlags(), "SE");
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(RootAndConnectionFlags, ALaterLineReplacesAnEarlierOne) {
    rootLine("r");
    rootLine("w");
    connectionLine("S");
    connectionLine("N");
    EXPECT_EQ(parser_.rootFlags(), "w");
    EXPECT_EQ(parser_.connectionFlags(), "N");
}

TEST_F(RootAndConnectionFlags, AnEmptyTextIsValidAndIsStored) {
    rootLine("r");
    rootLine("");
    connectionLine("S");
    connectionLine("");
    EXPECT_EQ(parser_.rootFlags(), "");
    EXPECT_EQ(parser_.connectionFlags(), "");
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(RootAndConnectionFlags, RootFlagsMayHoldEveryLetterOfAPathLine) {
    for (char const* const flags :
         {"w", "r", "c", "i", "f", "S", "dc", "D", "O", "A", "K", "L", "N", "E", "wrr", "tpCney"}) {
        rootLine(flags);
        EXPECT_EQ(parser_.rootFlags(), flags);
    }
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(RootAndConnectionFlags, ConnectionFlagsMayHoldTheirOwnAndInternalLetters) {
    for (char const* const flags : {"S", "N", "A", "E", "SNAE", "EANS", "SS", "tpCney"}) {
        connectionLine(flags);
        EXPECT_EQ(parser_.connectionFlags(), flags);
    }
    EXPECT_THAT(messages(), IsEmpty());
}

struct FlagsRow {
    char const* flags;
    Strings messages;
};

TEST_F(RootAndConnectionFlags, InvalidRootFlagsLeaveTheFormerOnesInPlace) {
    for (auto const& [flags, messages] : std::vector<FlagsRow>{
             {"x", {"Encountered unknown mount flag x", "Invalid root flags x"}},
             {"xz",
              {"Encountered unknown mount flag x", "Encountered unknown mount flag z",
               "Invalid root flags xz"}},
             {"r,w", {"Encountered unknown mount flag ,", "Invalid root flags r,w"}},
             {"cD",
              {"c and D flags cannot be used simultaneously on mount path",
               "Invalid root flags cD"}},
             {"d", {"d flag must be used with c flag on same mount path", "Invalid root flags d"}},
             {"R", {"Encountered unknown mount flag R", "Invalid root flags R"}},
         }) {
        support::LenientParser parser;
        parser.initializedIs(true);
        parser.handleRootFlagsLine(support::lineOf("rootFlags:w"));
        support::TraceRecorder const trace("MountFileInfo", 1);
        parser.handleRootFlagsLine(support::lineOf(std::string("rootFlags:") + flags));
        EXPECT_EQ(support::messages(parser), messages) << flags;
        EXPECT_EQ(trace.at(0), support::continuedTraces(parser)) << flags;
        EXPECT_EQ(parser.rootFlags(), "w") << flags;
    }
}

TEST_F(RootAndConnectionFlags, InvalidConnectionFlagsLeaveTheFormerOnesInPlace) {
    for (auto const& [flags, messages] : std::vector<FlagsRow>{
             {"w", {"Encountered invalid connection flag w", "Invalid connection flags w"}},
             {"Srw",
              {"Encountered invalid connection flag r", "Encountered invalid connection flag w",
               "Invalid connection flags Srw"}},
             {"s", {"Encountered invalid connection flag s", "Invalid connection flags s"}},
             {"D", {"Encountered invalid connection flag D", "Invalid connection flags D"}},
         }) {
        support::LenientParser parser;
        parser.initializedIs(true);
        parser.handleConnectionFlagsLine(support::lineOf("connectionFlags:NA"));
        support::TraceRecorder const trace("MountFileInfo", 1);
        parser.handleConnectionFlagsLine(support::lineOf(std::string("connectionFlags:") + flags));
        EXPECT_EQ(support::messages(parser), messages) << flags;
        EXPECT_EQ(trace.at(0), support::continuedTraces(parser)) << flags;
        EXPECT_EQ(parser.connectionFlags(), "NA") << flags;
    }
}

// --- in a profile ---

TEST_F(RootAndConnectionFlags, TheKeywordsAreTakenInAnyCaseAndBlanksDoNotCount) {
    parser_.loadProfile("ROOTFLAGS : r w\n  connectionflags:S N # note\n");
    EXPECT_EQ(parser_.rootFlags(), "rw");
    EXPECT_EQ(parser_.connectionFlags(), "SN");
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(RootAndConnectionFlags, AFaultNamesTheLineOfTheKeyword) {
    parser_.loadProfile("\nrootFlags:q\nconnectionFlags:r\n", "Fan");
    EXPECT_THAT(support::faultList(parser_),
                ElementsAre("Fan:2: Encountered unknown mount flag q",
                            "Fan:2: Invalid root flags q",
                            "Fan:3: Encountered invalid connection flag r",
                            "Fan:3: Invalid connection flags r"));
}

TEST_F(RootAndConnectionFlags, TheyOutliveTheProfileThatSetThem) {
    parser_.loadProfile("rootFlags:r\nconnectionFlags:S\n", "One");
    parser_.loadProfile("# nothing\n", "Two");
    EXPECT_EQ(parser_.rootFlags(), "r");
    EXPECT_EQ(parser_.connectionFlags(), "S");
}

// --- the defaults ---

struct DefaultRow {
    char const* input;
    char const* output;
};

TEST_F(RootAndConnectionFlags, EveryAgentsRootFlagsHoldAT) {
    for (auto const& [input, output] : std::vector<DefaultRow>{
             {"", "rt"},
             {"w", "wt"},
             {"rt", "rt"},
             {"t", "t"},
             {"tr", "tr"},
             {"r", "rt"},
             {"rw", "rwt"},
             {"T", "Tt"},
         }) {
        support::TraceRecorder const trace;
        EXPECT_EQ(parser_.addDefaultRootFlags(input), output);
        EXPECT_THAT(trace.at(8), ElementsAre(std::string("( inputFlags : ") + input + " )"));
        EXPECT_THAT(trace.at(3), ElementsAre(std::string("Returning ") + output));
    }
}

TEST_F(RootAndConnectionFlags, TheDefaultsChangeNothingByThemselves) {
    parser_.addDefaultRootFlags("w");
    EXPECT_EQ(parser_.rootFlags(), "");
}

// --- the queries ---

TEST_F(RootAndConnectionFlags, TheRootFlagsReturnedAreTraced) {
    rootLine("rw");
    support::TraceRecorder const trace;
    parser_.rootFlags();
    EXPECT_EQ(trace.at(7).size(), 1U);
    EXPECT_THAT(trace.at(3), ElementsAre("Returning rw"));
}

TEST_F(RootAndConnectionFlags, TheQueriesLoadOnFirstUse) {
    support::Device device;
    device.profile("Fan", "agentName:Fan\nrootFlags:w\nconnectionFlags:SE\n");
    EXPECT_EQ(device.agent("Fan")->rootFlags(), "wtp");
    EXPECT_EQ(device.agent("Fan")->connectionFlags(), "SE");
    auto const parser = device.agent("Fan");
    parser->rootFlags();
    parser->connectionFlags();
    EXPECT_EQ(parser->doInitCount(), 1);
}

TEST_F(RootAndConnectionFlags, InitialisingAgainStartsFromNone) {
    support::Device device;
    device.profile("Fan", "agentName:Fan\nrootFlags:w\nconnectionFlags:SE\n");
    auto const parser = device.agent("Fan");
    parser->doInit();
    device.profile("Fan", "agentName:Fan\n");
    parser->unDoInit();
    EXPECT_EQ(parser->rootFlags(), "rtp");
    EXPECT_EQ(parser->connectionFlags(), "");
}

struct AgentRow {
    char const* profile;
    char const* rootFlags;
};

TEST_F(RootAndConnectionFlags, AnAgentsRootFlagsAreCompletedAfterItsProfiles) {
    for (auto const& [profile, rootFlags] : std::vector<AgentRow>{
             {"agentName:Fan\n", "rtp"},
             {"agentName:Fan\nactiveMount\n", "rt"},
             {"agentName:Fan\nrootFlags:w\nactiveMount\n", "wt"},
             {"agentName:Fan\nrootFlags:rtp\n", "rtp"},
             {"agentName:Fan\nrootFlags:\n", "rtp"},
             {"agentName:Pan\nrootFlags:w\n", ""},
         }) {
        support::Device device;
        device.profile("Fan", profile);
        EXPECT_EQ(device.agent("Fan")->rootFlags(), rootFlags) << profile;
    }
}

TEST_F(RootAndConnectionFlags, TheStrictFlavourEndsAtTheFirstBadLetter) {
    support::Device device;
    device.profile("Fan", "agentName:Fan\nconnectionFlags:rw\n");
    auto const parser = device.agent("Fan");
    try {
        parser->doInit();
        FAIL() << "nothing was thrown";
    } catch (Fen::AgentException const& fault) {
        EXPECT_STREQ(fault.what(), "\n\t\t\tError in mount profile: Fan\n\t\t\tline: 2\n\t\t\tmsg: "
                                   "Encountered invalid connection flag r");
    }
}

} // namespace
