// Devices in which nothing is wrong: no error is found, and every agent is known.
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "database/Agents.h"
#include "database/DatabaseMountFileInfo.h"
#include "support/CleanEnvironment.h"
#include "support/Corpus.h"

namespace {

using KeldaDatabase::DatabaseMountFileInfo;

std::vector<std::string> errorsOf(DatabaseMountFileInfo& parser) {
    std::vector<std::string> errors;
    for (auto const& finding : parser.findings())
        if (finding.severity == KeldaDatabase::Severity::error)
            errors.push_back(parser.device().pathOf(finding.place) + ":" +
                             std::to_string(finding.place.line) + ": " + finding.message);
    return errors;
}

class FlawlessDevice : public testing::Test {
  protected:
    support::CleanEnvironment environment;
};

TEST_F(FlawlessDevice, TheExampleHasNoErrorWithAndWithoutFurtherChecks) {
    std::string const root = std::string(KELDA_SOURCE_DIR) + "/examples/device";
    for (bool const staticChecks : {false, true}) {
        DatabaseMountFileInfo parser(root + "/preinit", root + "/profiles");
        parser.staticCheckIs(staticChecks);
        EXPECT_THAT(errorsOf(parser), testing::IsEmpty());
        EXPECT_FALSE(parser.device().mounts.empty());
    }
}

class OpenConfigFindings : public FlawlessDevice {
  protected:
    void SetUp() override { SKIP_WITHOUT_CORPUS(); }

    DatabaseMountFileInfo parser() const {
        return {(support::corpusDir("openconfig") / "preinit").string(),
                (support::corpusDir("openconfig") / "profiles").string()};
    }
};

TEST_F(OpenConfigFindings, ThereIsNoFault) {
    auto mfi = parser();
    EXPECT_THAT(mfi.findings(), testing::IsEmpty());
    EXPECT_THAT(mfi.exceptions(), testing::IsEmpty());
}

TEST_F(OpenConfigFindings, FurtherChecksFindNoError) {
    auto mfi = parser();
    mfi.staticCheckIs(true);
    EXPECT_THAT(errorsOf(mfi), testing::IsEmpty());
}

TEST_F(OpenConfigFindings, EveryAgentOfTheListIsKnown) {
    auto mfi = parser();
    for (auto const& agentString : support::openConfigAgents()) {
        bool known = false;
        for (auto const& agent : mfi.device().agents)
            known = known || answersTo(agent, Rook::String(agentString));
        EXPECT_TRUE(known) << agentString;
    }
}

TEST_F(OpenConfigFindings, EveryPreinitLineAndEveryMountIsThere) {
    auto mfi = parser();
    EXPECT_EQ(mfi.device().preinits.size(), 5913U);
    std::set<Rook::String> mounted;
    for (auto const& mount : mfi.device().mounts) {
        ASSERT_TRUE(mount.place.isKnown());
        ASSERT_NE(mount.profile, KeldaDatabase::none);
        mounted.insert(mount.path);
    }
    EXPECT_EQ(mounted.size(), mfi.pathMountArgsMap().size());
}

} // namespace
