// The agent side throws at the first fault; aliases that are not defined, types that are missing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/Device.h"
#include "support/Thrown.h"
#include "support/TraceRecorder.h"

namespace {

using support::faultIn;
using support::thrownText;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class AgentStrictness : public testing::Test {
  protected:
    AgentStrictness() { device.preinit("Base", "a/b,T\na/c,T\n"); }

    std::string loadFault(std::string_view agent = "Fan") {
        auto const parser = device.agent(agent);
        return thrownText([&] { parser->doInit(); });
    }

    support::CleanEnvironment environment;
    support::Device device;
};

// --- the first fault ends the load ---

TEST_F(AgentStrictness, AFaultInAProfileIsThrownWithItsFileAndLine) {
    device.profile("Fan", "agentName: Fan\n\nfoo\n");
    EXPECT_EQ(loadFault(), faultIn("Fan", 3, "syntax error: 'foo'"));
}

TEST_F(AgentStrictness, AFaultInAPreinitFileIsThrownWithItsFileAndLine) {
    device.preinit("Broken", "# comment\na/d\n");
    EXPECT_EQ(loadFault(), faultIn("Broken", 2, "preinit syntax error: a/d"));
}

TEST_F(AgentStrictness, AFaultOutsideEveryFileIsThrownAsItsMessageAlone) {
    std::filesystem::remove_all(device.profileDir());
    EXPECT_EQ(loadFault(), "Cannot open directory " + device.profileDir());
}

TEST_F(AgentStrictness, TheThrownTextIsTheTextOfTheRecordedFault) {
    device.profile("Fan", "agentName: Fan\nfoo\nbar\n");
    auto const parser = device.agent("Fan");
    auto const text = thrownText([&] { parser->doInit(); });
    EXPECT_THAT(parser->exceptions(),
                ElementsAre(Kelda::MfiException{"Fan", "syntax error: 'foo'", 2}));
    EXPECT_EQ(Kelda::MountFileInfo::mfiExceptionToString(parser->exceptions().back()), text);
}

TEST_F(AgentStrictness, WhatWasLoadedBeforeTheFaultStaysAndTheParserIsNotInitialized) {
    device.profile("Fan", "agentName: Fan\na/b,T,r\nfoo\na/c,T,r\n");
    auto const parser = device.agent("Fan");
    EXPECT_THROW(parser->doInit(), Fen::AgentException);
    EXPECT_EQ(parser->pathMountArgsMap().count("a/b"), 1U);
    EXPECT_EQ(parser->pathMountArgsMap().count("a/c"), 0U);
    EXPECT_EQ(parser->pathTypeMap().count("a/c"), 1U);
    EXPECT_FALSE(parser->isInitialized());
    EXPECT_THAT(parser->exceptions(), SizeIs(1));
}

TEST_F(AgentStrictness, MaybeThrowAlwaysThrowsWhatItWasGiven) {
    auto const parser = device.agent("Fan");
    EXPECT_EQ(thrownText([&] { parser->maybeThrow("some 'fault' %s {}"); }), "some 'fault' %s {}");
    EXPECT_THAT(parser->exceptions(),
                ElementsAre(Kelda::MfiException{"", "some 'fault' %s {}", -1}));
}

TEST_F(AgentStrictness, AFaultInTheProfileOfAnotherAgentIsNeverSeen) {
    device.profile("Fan", "agentName: Fan\na/b,T,r\n");
    device.profile("Psu", "agentName: Psu\nfoo\n");
    EXPECT_EQ(loadFault(), support::nothingThrown);
}

TEST_F(AgentStrictness, AQueryForWhatIsNotThereThrows) {
    device.profile("Fan", "agentName: Fan\na/b,T,r\n");
    auto const parser = device.agent("Fan");
    auto const explained = [&](char const* message, bool profileError) {
        return std::string(parser->fmtNotFoundError(message, profileError).view());
    };
    EXPECT_EQ(thrownText([&] { parser->mountInfo("x"); }),
              explained("mountInfo: no such path: x", true));
    EXPECT_EQ(thrownText([&] { parser->getType("x"); }), "getType: no type info for path x");
    EXPECT_THAT(thrownText([&] { parser->mountGroupPaths("x"); }),
                testing::StartsWith("mountGroupPaths: no such mount group: x"));
    EXPECT_EQ(thrownText([&] { parser->profileFilePaths("x", false); }),
              explained("profileFilePaths: no such file: x", true));
    EXPECT_THAT(parser->exceptions(), SizeIs(4));
}

// --- aliases ---

TEST_F(AgentStrictness, AnOperandWithoutPercentSignIsReturnedWithoutALookup) {
    auto const parser = device.agent("Fan");
    support::TraceRecorder const trace;
    EXPECT_EQ(parser->evaluateAliasValue("plain"), "plain");
    EXPECT_EQ(parser->evaluateAliasValue(""), "");
    EXPECT_EQ(trace.count(8, "( token : plain )"), 1);
    EXPECT_THAT(trace.at(9), IsEmpty());
}

TEST_F(AgentStrictness, AnOperandWithPercentSignIsLookedUp) {
    auto const parser = device.agent("Fan");
    EXPECT_EQ(parser->evaluateAliasValue("%SliceId"), "FixedSystem");
    parser->perFileAliasesPushBack("%Slot", "Three");
    EXPECT_EQ(parser->evaluateAliasValue("%slot"), "Three");
}

TEST_F(AgentStrictness, AnUndefinedAliasThrows) {
    auto const parser = device.agent("Fan");
    EXPECT_EQ(thrownText([&] { parser->evaluateAliasValue("%undefined"); }),
              "No such alias defined: '%undefined'");
}

TEST_F(AgentStrictness, AnUndefinedAliasIsTracedAndEmptyWhereFaultsDoNotThrow) {
    support::LenientAgent parser(device.preinitDir(), device.profileDir());
    support::TraceRecorder const trace;
    EXPECT_EQ(parser.evaluateAliasValue("%undefined"), "");
    EXPECT_EQ(trace.count(0, support::continued("No such alias defined: '%undefined'")), 1);
}

TEST_F(AgentStrictness, AnUndefinedAliasInAProfileNamesItsLine) {
    device.profile("Fan", "agentName: Fan\nalias:%x=%Undefined\n");
    EXPECT_EQ(loadFault(), faultIn("Fan", 2, "No such alias defined: '%Undefined'"));
}

TEST_F(AgentStrictness, AnAliasOfOneProfileIsUndefinedInTheNext) {
    device.profile("A", "agentName: Fan\nalias:%x=b\n");
    device.profile("B", "agentName: Fan\nalias:%y=%x\n");
    EXPECT_EQ(loadFault(), faultIn("B", 2, "No such alias defined: '%x'"));
}

// --- paths without a type ---

auto const missingType =
    std::string("No type info for path 'x/y' found in preinit files while loading profile file "
                "because the path was not loaded from any preinit...");

TEST_F(AgentStrictness, APathWithoutPreinitTypeThrows) {
    device.profile("Fan", "agentName: Fan\nx/y,My::Type,r\n");
    EXPECT_EQ(loadFault(), faultIn("Fan", 2, missingType));
}

TEST_F(AgentStrictness, APathInAConditionalGroupTakesTheTypeOfItsOwnLine) {
    device.profile("Fan", "agentName: Fan\nCondition: x == y\nx/y,My::Type,r\n");
    auto const parser = device.agent("Fan");
    support::TraceRecorder const trace;
    EXPECT_EQ(parser->mountInfo("x/y").type, "My::Type");
    EXPECT_EQ(trace.count(1, missingType + " Allowed since conditional mountgroup."), 1);
    EXPECT_THAT(parser->exceptions(), IsEmpty());
}

TEST_F(AgentStrictness, APathMayLackItsTypeWhileTheDefaultPreinitsAreOverridden) {
    support::EnvironmentVariable const none("MFI_NO_DEFAULT_PREINIT", "");
    device.profile("Fan", "agentName: Fan\nx/y,My::Type,r\n");
    auto const parser = device.agent("Fan");
    support::TraceRecorder const trace;
    EXPECT_EQ(parser->mountInfo("x/y").type, "My::Type");
    EXPECT_EQ(trace.count(1, missingType + " Allowed since default preinits are overriden."), 1);
}

TEST_F(AgentStrictness, TheConditionExcusesBeforeTheOverriddenPreinits) {
    support::EnvironmentVariable const none("MFI_NO_DEFAULT_PREINIT", "1");
    device.profile("Fan", "agentName: Fan\nConditionBlocker: x\nx/y,My::Type,r\n");
    auto const parser = device.agent("Fan");
    support::TraceRecorder const trace;
    parser->doInit();
    EXPECT_EQ(trace.count(1, missingType + " Allowed since conditional mountgroup."), 1);
}

TEST_F(AgentStrictness, AMountGroupEndsTheExcuseOfACondition) {
    device.profile("Fan", "agentName: Fan\nCondition: x\nMountGroup: g\nx/y,My::Type,r\n");
    EXPECT_EQ(loadFault(), faultIn("Fan", 4, missingType));
}

TEST_F(AgentStrictness, TheNextProfileIsNotExcusedByTheConditionOfThisOne) {
    device.profile("A", "agentName: Fan\nCondition: x\n");
    device.profile("B", "agentName: Fan\nx/y,My::Type,r\n");
    EXPECT_EQ(loadFault(), faultIn("B", 2, missingType));
}

TEST_F(AgentStrictness, APreinitTypeCountsMoreThanTheOneOfAnExcusedLine) {
    device.profile("Fan", "agentName: Fan\nCondition: x\na/b,My::Type,r\n");
    EXPECT_EQ(device.agent("Fan")->mountInfo("a/b").type, "T");
}

TEST_F(AgentStrictness, AnExcuseGivesTheTypeOfTheLineAndSaysWhy) {
    auto const parser = device.agent("Fan");
    std::ostringstream reason;
    EXPECT_EQ(parser->excuseMissingType(reason, "My::Type"), "My::Type");
    EXPECT_EQ(reason.str(), " Allowed since default preinits are overriden.");
}

TEST_F(AgentStrictness, WithTheDefaultPreinitsInForceNothingIsExcused) {
    auto const parser = device.agent("Fan");
    parser->doLoadPreinits();
    std::ostringstream reason;
    EXPECT_EQ(parser->excuseMissingType(reason, "My::Type"), std::nullopt);
    EXPECT_EQ(reason.str(), "");
}

} // namespace
