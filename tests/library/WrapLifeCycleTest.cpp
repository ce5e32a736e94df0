// The published entity: which parser it owns, and what is left when it goes.
#include <functional>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <KeldaBase/AgentMountFileInfo.h>

#include "support/CleanEnvironment.h"
#include "support/LenientParser.h"
#include "support/PublishedDevice.h"
#include "support/TraceRecorder.h"

namespace {

using support::elementsOf;
using support::strings;
using support::textOf;
using support::Wrap;
using testing::ElementsAre;

// An agent-side parser that tells of its end, and may do something more there.
class WatchedParser : public Kelda::AgentMountFileInfo {
  public:
    WatchedParser(support::Device const& device, int& destroyed)
        : AgentMountFileInfo(false, device.preinitDir(), device.profileDir(), true,
                             "DefaultMountGroup"),
          destroyed_(destroyed) {}
    ~WatchedParser() override {
        ++destroyed_;
        if (atTheEnd)
            atTheEnd();
    }

    std::function<void()> atTheEnd;

  private:
    int& destroyed_;
};

class WrapLifeCycle : public testing::Test {
  protected:
    // Gives the entity a parser that counts its end.
    WatchedParser* watch(Kelda::AgentMountFileInfoWrap& wrap) {
        std::unique_ptr<Kelda::MountFileInfo> const old(wrap.mountFileInfoPtr());
        auto* const parser = new WatchedParser(device, destroyed);
        parser->addAgent("Fan-3", "");
        wrap.mountFileInfoPtrIs(parser);
        return parser;
    }

    support::CleanEnvironment environment;
    support::PublishedDevice device;
    int destroyed = 0;
};

// --- initialising ---

TEST_F(WrapLifeCycle, InitialisingAgainChangesNothing) {
    auto const wrap = device.wrap();
    auto const* const parser = wrap->mountFileInfoPtr();
    auto const configs = wrap->configPathCol();
    wrap->getPreinitPathInfo();
    wrap->doInit();
    EXPECT_EQ(wrap->mountFileInfoPtr(), parser);
    EXPECT_EQ(wrap->mountFileInfoPtr()->doInitCount(), 1);
    EXPECT_TRUE(wrap->configPathCol() == configs);
    EXPECT_EQ(wrap->preinitPathCol()->size(), 10U);
}

TEST_F(WrapLifeCycle, WhetherItIsCalledFromItsContainerIsWrittenFromOutside) {
    auto const wrap = device.wrap();
    wrap->calledFromContainerIs(true);
    EXPECT_TRUE(wrap->calledFromContainer());
    wrap->calledFromContainerIs(false);
    EXPECT_FALSE(wrap->calledFromContainer());
}

// --- giving up the parser ---

TEST_F(WrapLifeCycle, HandlingDestructionDestroysTheParserAsWhatItIs) {
    auto const wrap = device.wrap();
    watch(*wrap);
    wrap->handleDestruction();
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(wrap->mountFileInfoPtr(), nullptr);
    EXPECT_FALSE(wrap->initialized());
    EXPECT_FALSE(wrap->isUnderDestruction()) << "only the entity's own end says so";
}

TEST_F(WrapLifeCycle, HandlingDestructionKeepsAttributesAndCollections) {
    auto const wrap = device.wrap("Fan-3", "Other");
    wrap->calledFromContainerIs(true);
    auto const configs = wrap->getConfigPathInfo();
    auto const preinits = wrap->getPreinitPathInfo();
    wrap->handleDestruction();
    EXPECT_TRUE(wrap->configPathCol() == configs);
    EXPECT_TRUE(wrap->preinitPathCol() == preinits);
    EXPECT_EQ(configs->size(), 2U);
    EXPECT_EQ(preinits->size(), 10U);
    EXPECT_EQ(wrap->agentString(), "Fan-3");
    EXPECT_EQ(wrap->overrideAgentString(), "Other");
    EXPECT_EQ(wrap->preinitDir(), device.preinitDir());
    EXPECT_TRUE(wrap->calledFromContainer());
}

TEST_F(WrapLifeCycle, HandlingDestructionAgainChangesNothing) {
    auto const wrap = device.wrap();
    watch(*wrap);
    wrap->handleDestruction();
    wrap->handleDestruction();
    EXPECT_EQ(destroyed, 1);
    EXPECT_FALSE(wrap->initialized());
}

TEST_F(WrapLifeCycle, InitialisingAfterwardsMakesANewParser) {
    auto const wrap = device.wrap("Fan-3", "Other");
    auto const before = elementsOf(wrap->getMountPathInfoAll("Fan-3"));
    ASSERT_THAT(before, testing::Contains("each/Other Each r"));
    wrap->disableUnDoInit();
    wrap->addAgent("Up", "");
    wrap->handleDestruction();
    wrap->doInit();
    EXPECT_TRUE(wrap->initialized());
    auto& parser = *wrap->mountFileInfoPtr();
    EXPECT_FALSE(parser.isInitialized());
    EXPECT_EQ(parser.preinitDir(), device.preinitDir());
    EXPECT_EQ(parser.defaultGroupName(), "DefaultMountGroup");
    EXPECT_THAT(strings(parser.getAgentStrings()), ElementsAre("Fan-3"))
        << "only the entity's own agent string is added";
    EXPECT_EQ(elementsOf(wrap->getMountPathInfoAll("Fan-3")), before);
    parser.unDoInit();
    EXPECT_FALSE(parser.isInitialized()) << "nobody pinned this one";
}

TEST_F(WrapLifeCycle, InitialisingAfterwardsKeepsTheCollectionsThatThereAre) {
    auto const wrap = device.wrap();
    auto const configs = wrap->getConfigPathInfo();
    auto const preinits = wrap->preinitPathColDel();
    wrap->handleDestruction();
    wrap->doInit();
    EXPECT_TRUE(wrap->configPathCol() == configs);
    EXPECT_EQ(configs->size(), 2U);
    ASSERT_TRUE(wrap->preinitPathCol() != nullptr) << "made anew where there was none";
    EXPECT_FALSE(wrap->preinitPathCol() == preinits);
}

// --- another parser ---

TEST_F(WrapLifeCycle, AnotherParserTakesTheOldOnesPlaceWithoutDestroyingIt) {
    auto const wrap = device.wrap();
    auto* const first = watch(*wrap);
    auto* const second = new WatchedParser(device, destroyed);
    second->addAgent("Up", "");
    wrap->mountFileInfoPtrIs(second);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(wrap->mountFileInfoPtr(), second);
    EXPECT_TRUE(wrap->initialized());
    EXPECT_THAT(elementsOf(wrap->getMountPathInfoAll("Up")), testing::Contains("d/e/f Leaf w"));
    EXPECT_EQ(first->mountInfo("slot/3").type, "Slot") << "the old one still works";
    delete first;
    EXPECT_EQ(destroyed, 1);
}

TEST_F(WrapLifeCycle, AnotherParserIsDestroyedAsTheEntitysOwn) {
    {
        auto const wrap = device.wrap();
        watch(*wrap);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST_F(WrapLifeCycle, AParserGivenWhileThereIsNoneGoesWithTheNextInitialisation) {
    auto const wrap = device.wrap();
    wrap->handleDestruction();
    auto* const given = watch(*wrap);
    EXPECT_EQ(wrap->mountFileInfoPtr(), given);
    EXPECT_FALSE(wrap->initialized());
    wrap->doInit();
    EXPECT_EQ(destroyed, 1);
    EXPECT_NE(wrap->mountFileInfoPtr(), given);
    EXPECT_EQ(textOf(wrap->getMountPathInfo("slot/3")), "slot/3 Slot rw");
}

TEST_F(WrapLifeCycle, AnotherFlavourAnswersInItsOwnWay) {
    auto const wrap = device.wrap();
    std::unique_ptr<Kelda::MountFileInfo> const old(wrap->mountFileInfoPtr());
    auto* const lenient = device.lenient().release();
    wrap->mountFileInfoPtrIs(lenient);
    EXPECT_EQ(textOf(wrap->getMountPathInfo("slot/*")), "slot/* Slot rw");
    EXPECT_EQ(textOf(wrap->getMountPathInfo("nowhere")), "nowhere  ") << "recorded, not thrown";
    EXPECT_EQ(lenient->exceptions().size(), 1U);
    EXPECT_THROW(wrap->addAgent("Up", ""), Fen::NoImplementationException);
    EXPECT_THROW(wrap->disableUnDoInit(), Fen::NoImplementationException);
}

// --- the end ---

TEST_F(WrapLifeCycle, TheEntityGoesWithItsLastReference) {
    auto wrap = device.wrap();
    watch(*wrap);
    auto other = wrap;
    wrap = nullptr;
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(other->references(), 1U);
    other = nullptr;
    EXPECT_EQ(destroyed, 1);
}

TEST_F(WrapLifeCycle, TheEntityReleasesItsCollections) {
    auto wrap = device.wrap();
    auto const configs = wrap->getConfigPathInfo();
    auto const preinits = wrap->getPreinitPathInfo();
    EXPECT_EQ(configs->references(), 2U) << "handing it out added a reference";
    EXPECT_EQ(preinits->references(), 2U);
    wrap = nullptr;
    EXPECT_EQ(configs->references(), 1U);
    EXPECT_EQ(preinits->references(), 1U);
}

TEST_F(WrapLifeCycle, CollectionsOutliveTheEntity) {
    auto wrap = device.wrap();
    auto const mounts = wrap->getMountPathInfoFile("Fan", false);
    auto const mount = wrap->getMountPathInfo("slot/3");
    auto const configs = wrap->getConfigPathInfo();
    auto const preinits = wrap->getPreinitPathInfo();
    wrap = nullptr;
    EXPECT_THAT(elementsOf(mounts), ElementsAre("conf/x Config::X wi", "slot/3 Slot rw"));
    EXPECT_EQ(textOf(mount), "slot/3 Slot rw");
    EXPECT_EQ(configs->configPathData("conf/y").type(), "Config::Y");
    EXPECT_EQ(preinits->preinitPathData("slot/%slot").attr(), "createOnMount");
}

TEST_F(WrapLifeCycle, AnEntityWithoutAParserOrCollectionsGoesAsWell) {
    auto wrap = device.wrap();
    watch(*wrap);
    wrap->configPathColDel();
    wrap->preinitPathColDel();
    wrap->handleDestruction();
    wrap = nullptr;
    EXPECT_EQ(destroyed, 1);
}

TEST_F(WrapLifeCycle, AReferenceTakenWhileTheEntityIsDestroyedDoesNotDestroyItTwice) {
    auto wrap = device.wrap();
    auto* const entity = wrap.get();
    bool saidSo = false;
    watch(*wrap)->atTheEnd = [&] {
        Wrap const first = entity;
        Wrap const second = first;
        saidSo = second->isUnderDestruction();
    };
    wrap = nullptr;
    EXPECT_EQ(destroyed, 1);
    EXPECT_TRUE(saidSo);
}

TEST_F(WrapLifeCycle, AListenerToTracesMayTakeAReferenceWhileTheEntityIsDestroyed) {
    auto wrap = device.wrap();
    auto* const entity = wrap.get();
    watch(*wrap);
    int heard = 0;
    support::TraceRecorder const recorder("MountFileInfoWrap");
    auto const old = Trace::setSink([&](std::string const&, int, std::string const& text) {
        Wrap const reference = entity;
        heard += text == "handleDestruction" && reference->isUnderDestruction();
    });
    wrap = nullptr;
    Trace::setSink(old);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(destroyed, 1);
}

} // namespace
