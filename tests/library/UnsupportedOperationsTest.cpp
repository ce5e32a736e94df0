// Operations that only one flavour offers refuse to work in the others, each with its own text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <regex>
#include <string>

#include <Fen/Exception.h>

#include "support/LenientParser.h"

namespace {

using Kelda::MountFileInfo;

// The text of the refusal, or what came in its place.
std::string refusal(std::function<void(MountFileInfo&)> const& operation, MountFileInfo& parser) {
    try {
        operation(parser);
    } catch (Fen::NoImplementationException const& exception) {
        return exception.what();
    }
    return "(nothing was thrown)";
}

struct Row {
    char const* name;
    std::function<void(MountFileInfo&)> operation;
    char const* text;
};

// Called by their qualified names where the lenient parser offers the operation.
Row const agentSideOnly[] = {
    {"setRootFlags", [](MountFileInfo& parser) { parser.setRootFlags("r"); },
     "Not Implemented: Manually setting root flags is only supported for Agent-side parsing, and "
     "even then only if no profiles are loaded (this is only used in EntityManager at the moment). "
     "This is not supported for Kelda-side parsing"},
    {"disableUnDoInit", [](MountFileInfo& parser) { parser.disableUnDoInit(); },
     "Not Implemented: Disabling unDoInit is a feature for Agent-side parsing only (and even then "
     "only for use in ConfigAgent, Tidewell, and standby Kelda)"},
    {"addAgent", [](MountFileInfo& parser) { parser.addAgent("Fan", ""); },
     "Not Implemented: Per-Agent loading is supported for Agent-side parsing but not for "
     "Kelda-side"},
    {"profileSearcher",
     [](MountFileInfo& parser) { parser.MountFileInfo::profileSearcher(nullptr); },
     "Not Implemented: Per-Agent loading is supported for Agent-side parsing but not for "
     "Kelda-side."},
    {"foundMountProfile", [](MountFileInfo& parser) { parser.foundMountProfile("Fan"); },
     "Per-agent profile loading is only supported for Agent-side parsing."},
};

Row const databaseSideOnly[] = {
    {"setWaitForActiveReady", [](MountFileInfo& parser) { parser.setWaitForActiveReady(); },
     "Not Implemented: Only on Kelda-side do we need this option. It exists so we know to add "
     "additional default mounts for sso standby agents"},
    {"setForceNoDefaultMountGroup",
     [](MountFileInfo& parser) { parser.setForceNoDefaultMountGroup(); },
     "Not Implemented: Only on Kelda-side do we need this option. It exists so we know to skip "
     "writing all default mounts to Kelda, independent of whether we have 'noDefaultMountGroup' in "
     "a profile This behavior can be replicated with the \"noDefaultMountGroup\" keyword in mount "
     "profiles."},
    {"staticCheckIs on", [](MountFileInfo& parser) { parser.staticCheckIs(true); },
     "Not Implemented: We only use the Kelda-side version of MountFileInfo to perform static "
     "checks."},
    {"staticCheckIs off", [](MountFileInfo& parser) { parser.staticCheckIs(false); },
     "Not Implemented: We only use the Kelda-side version of MountFileInfo to perform static "
     "checks."},
    {"addProfile", [](MountFileInfo& parser) { parser.addProfile("Fan"); },
     "Not Implemented: Individual file loading is supported for Kelda-side parsing but not for "
     "Agent-side."},
    {"agentName", [](MountFileInfo& parser) { parser.agentName(); },
     "Not Implemented: This only makes sense when mfi holds a single agent, which is not a "
     "reasonable assumption in general for Agent-side parsing."},
    {"setExclusionRegex", [](MountFileInfo& parser) { parser.setExclusionRegex(std::regex("x")); },
     "Not Implemented: Exclusion regex is only supported for Kelda-side parsing."},
};

TEST(UnsupportedOperations, TheBaseRefusesWhatOnlyAgentsNeed) {
    support::LenientParser parser;
    for (auto const& row : agentSideOnly)
        EXPECT_EQ(refusal(row.operation, parser), row.text) << row.name;
}

TEST(UnsupportedOperations, TheBaseRefusesWhatOnlyTheDatabaseNeeds) {
    support::LenientParser parser;
    for (auto const& row : databaseSideOnly)
        EXPECT_EQ(refusal(row.operation, parser), row.text) << row.name;
}

TEST(UnsupportedOperations, TheAgentSideRefusesWhatOnlyTheDatabaseNeeds) {
    support::LenientAgent parser("/nonexistent/preinit", "/nonexistent/profiles");
    for (auto const& row : databaseSideOnly)
        EXPECT_EQ(refusal(row.operation, parser), row.text) << row.name;
}

TEST(UnsupportedOperations, ARefusalIsNoFaultAndLoadsNothing) {
    support::LenientParser parser;
    for (auto const& row : agentSideOnly)
        refusal(row.operation, parser);
    for (auto const& row : databaseSideOnly)
        refusal(row.operation, parser);
    EXPECT_THAT(support::messages(parser), testing::IsEmpty());
    EXPECT_FALSE(parser.isInitialized());
}

} // namespace
