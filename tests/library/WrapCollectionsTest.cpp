// The entity's own collections, of config paths and of preinit paths: what they are filled with,
// when, and what taking them out does.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/PublishedDevice.h"

namespace {

using support::configLines;
using support::elementsOf;
using support::preinitLines;
using support::textOf;
using support::Wrap;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class WrapCollections : public testing::Test {
  protected:
    Kelda::MountFileInfo& parser() const { return *wrap->mountFileInfoPtr(); }

    support::CleanEnvironment environment;
    support::PublishedDevice device;
    Wrap const wrap = device.wrap();
};

// --- config paths ---

TEST_F(WrapCollections, ConfigPathsHaveTheirTypes) {
    auto const configs = wrap->getConfigPathInfo();
    EXPECT_THAT(elementsOf(configs), UnorderedElementsAre("conf/x Config::X", "conf/y Config::Y"));
    EXPECT_EQ(support::sortedStrings(elementsOf(configs)), configLines(*device.agent("Fan-3")));
    EXPECT_TRUE(configs == wrap->configPathCol()) << "the entity's own";
}

TEST_F(WrapCollections, OnlyDeclaredConfigPathsCount) {
    parser().addConfigChildPath("conf/x/child");
    parser().addNonConfigPath("a/b");
    parser().addPathConfigInfo("a/c", false, true);
    EXPECT_THAT(elementsOf(wrap->getConfigPathInfo()),
                UnorderedElementsAre("conf/x Config::X", "conf/y Config::Y"));
}

TEST_F(WrapCollections, AConfigPathWithTokensIsKnownByThemAndTypedWithoutThem) {
    parser().doInit();
    parser().addPathConfigInfo("slot/%other", true, true);
    EXPECT_EQ(wrap->getConfigPathInfo()->configPathData("slot/%other").type(), "Slot");
}

TEST_F(WrapCollections, ConfigPathsAreCollectedOnce) {
    auto const first = wrap->getConfigPathInfo();
    parser().addPathConfigInfo("a/b", true, true);
    parser().unDoInit();
    auto const second = wrap->getConfigPathInfo();
    EXPECT_TRUE(first == second);
    EXPECT_EQ(second->size(), 2U);
    EXPECT_FALSE(parser().isInitialized()) << "the parser was not asked";
}

TEST_F(WrapCollections, WhileThereAreNoneConfigPathsAreLookedForAgain) {
    device.preinit("Base", "a/b,T\n");
    device.profile("Fan", "agentName: Fan-3\n");
    for (char const* const name : {"FanBudget", "DefaultMountGroup", "DefaultMountGroupPerAgent"})
        device.profile(name, "");
    auto const first = wrap->getConfigPathInfo();
    EXPECT_TRUE(first->empty());
    parser().addPathConfigInfo("a/b", true, true);
    EXPECT_THAT(elementsOf(wrap->getConfigPathInfo()), ElementsAre("a/b T"));
    EXPECT_TRUE(wrap->getConfigPathInfo() == first);
}

// --- preinit paths ---

TEST_F(WrapCollections, PreinitPathsHaveTheirTypesAndAttributes) {
    auto const preinits = wrap->getPreinitPathInfo();
    EXPECT_THAT(elementsOf(preinits),
                ElementsAre("a/b T ", "a/c T ", "cell/%cellId/state Cell::State ",
                            "conf/x Config::X ", "conf/y Config::Y createOnStandby",
                            "d/e Fen::Dir ", "d/e/f Leaf createOnStandby",
                            "each/%agentString Each createOnMount", "slot/%slot Slot createOnMount",
                            "sys/clock Sys::Clock "));
    EXPECT_EQ(elementsOf(preinits), preinitLines(*device.agent("Fan-3")));
    EXPECT_TRUE(preinits == wrap->preinitPathCol()) << "the entity's own";
}

TEST_F(WrapCollections, PathsThatDifferInTheirTokensOnlyShareATypeButNotAnAttribute) {
    device.preinit("More", "slot/%bay,Bay,createOnMount\nslot/%cellId,Cell\n");
    auto const preinits = wrap->getPreinitPathInfo();
    EXPECT_EQ(textOf(preinits->preinitPathData("slot/%bay")), "slot/%bay Cell createOnMount");
    EXPECT_EQ(textOf(preinits->preinitPathData("slot/%cellId")), "slot/%cellId Cell ");
    EXPECT_EQ(textOf(preinits->preinitPathData("slot/%slot")), "slot/%slot Cell createOnMount");
}

TEST_F(WrapCollections, PreinitPathsAreCollectedOnce) {
    auto const first = wrap->getPreinitPathInfo();
    parser().unDoInit();
    device.preinit("More", "x/y,T\n");
    auto const second = wrap->getPreinitPathInfo();
    EXPECT_TRUE(first == second);
    EXPECT_EQ(second->size(), 10U);
    EXPECT_FALSE(parser().isInitialized()) << "the parser was not asked";
}

TEST_F(WrapCollections, WhileThereAreNonePreinitPathsAreLookedForAgain) {
    auto const empty = support::Device();
    auto const bare = Kelda::agentMountFileInfoWrapFactory(false, "Fan", "", empty.preinitDir(),
                                                           empty.profileDir(), true);
    auto const first = bare->getPreinitPathInfo();
    EXPECT_TRUE(first->empty());
    bare->mountFileInfoPtr()->pathAttrMapIs("a/%b", Kelda::PreinitAttr::createOnMount);
    bare->mountFileInfoPtr()->pathTypeMapIs("a/*", "T");
    EXPECT_THAT(elementsOf(bare->getPreinitPathInfo()), ElementsAre("a/%b T createOnMount"));
    EXPECT_TRUE(bare->getPreinitPathInfo() == first);
}

// --- the collections themselves ---

TEST_F(WrapCollections, AreThereFromTheStartAndStayTheSameObjects) {
    auto const configs = wrap->configPathCol();
    auto const preinits = wrap->preinitPathCol();
    EXPECT_TRUE(wrap->configPathColIs() == configs);
    EXPECT_TRUE(wrap->preinitPathColIs() == preinits);
    EXPECT_TRUE(wrap->getConfigPathInfo() == configs);
    EXPECT_TRUE(wrap->getPreinitPathInfo() == preinits);
    EXPECT_EQ(configs->references(), 2U) << "the entity's and this test's";
    EXPECT_EQ(preinits->references(), 2U);
}

TEST_F(WrapCollections, AreTakenOutAndMadeAnew) {
    auto const configs = wrap->configPathColDel();
    auto const preinits = wrap->preinitPathColDel();
    EXPECT_EQ(configs->references(), 1U) << "the caller has the only one";
    EXPECT_EQ(preinits->references(), 1U);
    EXPECT_TRUE(wrap->configPathCol() == nullptr);
    EXPECT_TRUE(wrap->preinitPathCol() == nullptr);
    auto const newConfigs = wrap->configPathColIs();
    auto const newPreinits = wrap->preinitPathColIs();
    EXPECT_FALSE(newConfigs == configs);
    EXPECT_FALSE(newPreinits == preinits);
    EXPECT_TRUE(newConfigs->empty());
    EXPECT_TRUE(newPreinits->empty());
    EXPECT_TRUE(wrap->configPathCol() == newConfigs);
    EXPECT_TRUE(wrap->preinitPathCol() == newPreinits);
}

TEST_F(WrapCollections, ThatAreNotThereCannotBeTakenOut) {
    wrap->configPathColDel();
    wrap->preinitPathColDel();
    EXPECT_TRUE(wrap->configPathColDel() == nullptr);
    EXPECT_TRUE(wrap->preinitPathColDel() == nullptr);
}

TEST_F(WrapCollections, OfOneKindAreTakenOutWithoutThoseOfTheOther) {
    auto const configs = wrap->getConfigPathInfo();
    auto const preinits = wrap->getPreinitPathInfo();
    wrap->configPathColDel();
    EXPECT_TRUE(wrap->preinitPathCol() == preinits);
    wrap->configPathColIs();
    wrap->preinitPathColDel();
    EXPECT_TRUE(wrap->configPathCol() != nullptr);
    EXPECT_TRUE(wrap->preinitPathCol() == nullptr);
}

TEST_F(WrapCollections, AreFilledAfreshAfterTheyWereTakenOut) {
    auto const configs = wrap->getConfigPathInfo();
    auto const preinits = wrap->getPreinitPathInfo();
    EXPECT_TRUE(wrap->configPathColDel() == configs);
    EXPECT_TRUE(wrap->preinitPathColDel() == preinits);
    auto const newConfigs = wrap->getConfigPathInfo();
    auto const newPreinits = wrap->getPreinitPathInfo();
    EXPECT_FALSE(newConfigs == configs);
    EXPECT_FALSE(newPreinits == preinits);
    EXPECT_THAT(elementsOf(newConfigs), testing::UnorderedElementsAreArray(elementsOf(configs)));
    EXPECT_EQ(elementsOf(newPreinits), elementsOf(preinits));
    EXPECT_EQ(configs->size(), 2U) << "the caller's stay filled";
    EXPECT_EQ(preinits->size(), 10U);
}

TEST_F(WrapCollections, AreFilledWithWhatTheParserKnowsByThen) {
    wrap->getConfigPathInfo();
    wrap->getPreinitPathInfo();
    parser().addPathConfigInfo("a/b", true, true);
    parser().pathAttrMapIs("slot/%new", Kelda::PreinitAttr::createOnMount);
    wrap->configPathColDel();
    wrap->preinitPathColDel();
    EXPECT_EQ(wrap->getConfigPathInfo()->configPathData("a/b").type(), "T");
    EXPECT_EQ(wrap->getPreinitPathInfo()->preinitPathData("slot/%new").type(), "Slot");
}

TEST_F(WrapCollections, ThatSomebodyElseFilledAreReturnedAsTheyAre) {
    wrap->configPathColIs()->configPathDataIs({"mine", "T"});
    wrap->preinitPathColIs()->preinitPathDataIs({"mine", "T", ""});
    EXPECT_THAT(elementsOf(wrap->getConfigPathInfo()), ElementsAre("mine T"));
    EXPECT_THAT(elementsOf(wrap->getPreinitPathInfo()), ElementsAre("mine T "));
    EXPECT_FALSE(parser().isInitialized()) << "the parser was not asked";
}

TEST_F(WrapCollections, ThatSomebodyElseEmptiedAreFilledAgain) {
    wrap->getConfigPathInfo()->configPathDataDelAll();
    wrap->getPreinitPathInfo()->preinitPathDataDelAll();
    EXPECT_EQ(wrap->getConfigPathInfo()->size(), 2U);
    EXPECT_EQ(wrap->getPreinitPathInfo()->size(), 10U);
}

TEST_F(WrapCollections, ThatAreFilledNeedNoParser) {
    auto const configs = wrap->getConfigPathInfo();
    auto const preinits = wrap->getPreinitPathInfo();
    wrap->handleDestruction();
    EXPECT_TRUE(wrap->getConfigPathInfo() == configs);
    EXPECT_TRUE(wrap->getPreinitPathInfo() == preinits);
    EXPECT_TRUE(wrap->configPathColIs() == configs);
    EXPECT_TRUE(wrap->preinitPathColDel() == preinits);
}

} // namespace
