// Programming errors of whoever uses the published entity.
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/PublishedDevice.h"
#include "support/TraceRecorder.h"

namespace {

using Kelda::AgentMountFileInfoWrap;
using support::Wrap;
using testing::AllOf;
using testing::HasSubstr;

// What is printed for a path with a "/" at its front.
auto const slashInFront = AllOf(HasSubstr("path[ 0 ] != '/', "),
                                HasSubstr("Fen::String Kelda::doCleanPath(Fen::String, bool)"));

// What is printed for an operation that needs the parser when there is none.
auto const noParser = HasSubstr("mountFileInfoPtr() != nullptr");

class WrapDeathTest : public testing::Test {
  protected:
    support::CleanEnvironment environment;
    support::PublishedDevice device;
    Wrap const wrap = device.wrap();
};

// --- a "/" at the front of a path ---

TEST_F(WrapDeathTest, APathWithASlashInFrontIsAProgrammingError) {
    for (char const* const path : {"/a/b", "/a/b/", "/a", "//", "//a", "///"})
        EXPECT_DEATH(wrap->getMountPathInfo(path), slashInFront) << path;
}

TEST_F(WrapDeathTest, ThePathIsLookedAtBeforeAnythingIsLoaded) {
    device.profile("Fan", "agentName: Fan-%slot\nnonsense\n");
    EXPECT_DEATH(wrap->getMountPathInfo("/a/b"), slashInFront);
}

TEST_F(WrapDeathTest, APathThatAProfileWritesSoDoesNotEndTheProcess) {
    device.preinit("More", "/x/y,T\n");
    device.profile("Fan", "agentName: Fan-%slot\nMountGroup: g\n/x/y,T,r\n");
    for (auto const& mounts :
         {wrap->getMountPathInfoAll("Fan-3"), wrap->getMountPathInfoFile("Fan", false),
          wrap->getMountPathInfoGroup("Fan::g")}) {
        auto const info = mounts->mountPathData("/x/y");
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(*info, Kelda::MountPathInfo("/x/y", "T", "r"));
    }
    EXPECT_DEATH(wrap->getMountPathInfo("/x/y"), slashInFront);
}

// --- no parser ---

using Operation = std::function<void(AgentMountFileInfoWrap&)>;

std::vector<std::pair<char const*, Operation>> const needTheParser{
    {"addAgent", [](auto& wrap) { wrap.addAgent("Up", ""); }},
    {"disableUnDoInit", [](auto& wrap) { wrap.disableUnDoInit(); }},
    {"getMountPathInfo", [](auto& wrap) { wrap.getMountPathInfo("slot/3"); }},
    {"getMountPathInfoAll", [](auto& wrap) { wrap.getMountPathInfoAll("Fan-3"); }},
    {"getMountPathInfoFile", [](auto& wrap) { wrap.getMountPathInfoFile("Fan", true); }},
    {"getMountPathInfoGroup", [](auto& wrap) { wrap.getMountPathInfoGroup("Fan::g"); }},
    {"getConfigPathInfo", [](auto& wrap) { wrap.getConfigPathInfo(); }},
    {"getPreinitPathInfo", [](auto& wrap) { wrap.getPreinitPathInfo(); }},
    {"fileIsLoaded", [](auto& wrap) { wrap.fileIsLoaded("Fan"); }},
};

TEST_F(WrapDeathTest, AfterTheParserIsGoneWhateverNeedsItIsAProgrammingError) {
    wrap->handleDestruction();
    for (auto const& [name, operation] : needTheParser)
        EXPECT_DEATH(operation(*wrap), noParser) << name;
}

TEST_F(WrapDeathTest, WithoutAParserFromOutsideItIsNoDifferent) {
    delete wrap->mountFileInfoPtr();
    wrap->mountFileInfoPtrIs(nullptr);
    for (auto const& [name, operation] : needTheParser)
        EXPECT_DEATH(operation(*wrap), noParser) << name;
}

TEST_F(WrapDeathTest, NamingTheAgentStringsNeedsTheParser) {
    wrap->handleDestruction();
    wrap->calledFromContainerIs(true);
    support::TraceRecorder const trace("MountFileInfoWrap");
    EXPECT_DEATH(wrap->isLikelyTest(), noParser);
}

TEST_F(WrapDeathTest, TheRestIsAllowedWithoutAParser) {
    wrap->handleDestruction();
    EXPECT_TRUE(wrap->isLikelyTest());
    wrap->calledFromContainerIs(true);
    EXPECT_FALSE(wrap->isLikelyTest());
    EXPECT_TRUE(wrap->configPathColIs() != nullptr);
    EXPECT_TRUE(wrap->preinitPathColIs() != nullptr);
    EXPECT_TRUE(wrap->configPathColDel() != nullptr);
    EXPECT_TRUE(wrap->preinitPathColDel() != nullptr);
    wrap->handleDestruction();
    wrap->doInit();
    for (auto const& [name, operation] : needTheParser)
        EXPECT_NO_THROW(operation(*wrap)) << name;
}

} // namespace
