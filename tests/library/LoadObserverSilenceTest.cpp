// An observer changes nothing: with one, without one, and after it is gone a parser gives the same
// answers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/Diary.h"
#include "support/ParserDump.h"
#include "support/RandomFiles.h"
#include "support/Thrown.h"

namespace {

using testing::IsEmpty;
using testing::Not;

struct Nothing : Kelda::LoadObserver {};

class LoadObserverSilence : public testing::Test {
  protected:
    static support::Dump dumpOf(std::string const& preinits, std::string const& profiles,
                                Kelda::LoadObserver* observer) {
        support::DumpableParser parser(preinits, profiles);
        parser.loadObserverIs(observer);
        parser.doInit();
        return parser.dump();
    }

    support::CleanEnvironment environment;
    support::Diary diary{"/nowhere"};
};

TEST_F(LoadObserverSilence, ALargeDeviceIsTheSameWithAndWithoutOne) {
    SKIP_WITHOUT_CORPUS();
    auto const preinits = support::corpusDir("openconfig") / "preinit";
    auto const profiles = support::corpusDir("openconfig") / "profiles";
    auto const alone = dumpOf(preinits, profiles, nullptr);
    EXPECT_TRUE(alone == dumpOf(preinits, profiles, &diary));
    EXPECT_THAT(diary.lines(), Not(IsEmpty()));
    Nothing nothing;
    EXPECT_TRUE(alone == dumpOf(preinits, profiles, &nothing));
}

TEST_F(LoadObserverSilence, RandomDevicesAreTheSameWithAndWithoutOne) {
    for (std::uint64_t seed = 1; seed <= 100; ++seed) {
        support::RandomDevice const random(seed, 20);
        auto const& device = random.device();
        EXPECT_EQ(dumpOf(device.preinitDir(), device.profileDir(), nullptr),
                  dumpOf(device.preinitDir(), device.profileDir(), &diary))
            << "device " << seed;
    }
}

TEST_F(LoadObserverSilence, TheStrictSideThrowsTheSameWithAndWithoutOne) {
    for (std::uint64_t seed = 1; seed <= 100; ++seed) {
        support::RandomDevice const random(seed, 40);
        auto const agent = random.device().emptyAgent();
        auto const observed = random.device().emptyAgent();
        observed->loadObserverIs(&diary);
        random.addAgents(*agent);
        random.addAgents(*observed);
        EXPECT_EQ(support::thrownText([&] { agent->doInit(); }),
                  support::thrownText([&] { observed->doInit(); }))
            << "device " << seed;
        if (agent->isInitialized()) {
            EXPECT_EQ(
                support::firstDifference(support::answersOf(*agent), support::answersOf(*observed)),
                "");
        }
    }
}

TEST_F(LoadObserverSilence, NoneIsAttachedAtFirst) {
    support::Device const device;
    auto const parser = device.lenient();
    EXPECT_EQ(parser->loadObserver(), nullptr);
    parser->loadObserverIs(&diary);
    EXPECT_EQ(parser->loadObserver(), &diary);
    parser->loadObserverIs(nullptr);
    EXPECT_EQ(parser->loadObserver(), nullptr);
}

TEST_F(LoadObserverSilence, OneThatWasDetachedIsToldNothing) {
    support::Device device;
    device.preinit("P", "a,T\n").profile("Fan", "agentName: Fan\na,T,r\n");
    auto const parser = device.lenient();
    parser->loadObserverIs(&diary);
    parser->loadObserverIs(nullptr);
    parser->doInit();
    EXPECT_THAT(diary.lines(), IsEmpty());
}

TEST_F(LoadObserverSilence, OneStaysAttachedWhenTheParserIsInitialisedAgain) {
    support::Device device;
    device.preinit("P", "a,T\n").profile("Fan", "agentName: Fan-%x\na,T,r\n");
    auto const agent = device.agent("Fan-3");
    agent->loadObserverIs(&diary);
    agent->doInit();
    auto const first = diary.lines();
    diary.clear();
    agent->unDoInit();
    EXPECT_THAT(diary.lines(), IsEmpty());
    agent->doInit();
    EXPECT_EQ(diary.lines(), first);
}

TEST_F(LoadObserverSilence, AnAgentThatIsAddedLateIsToldOfToo) {
    support::Device device;
    device.preinit("P", "a,T\n").profile("Fan", "agentName: Fan\na,T,r\n");
    auto const agent = device.emptyAgent();
    agent->doInit();
    agent->loadObserverIs(&diary);
    agent->addAgent("Fan", "");
    EXPECT_THAT(diary.about({"mount"}), testing::ElementsAre("Fan:2: mount a,T,r = a,T"));
}

} // namespace
