// Two threads, each with a parser of its own over the same directories.
#include <thread>

#include <gtest/gtest.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/Device.h"
#include "support/Thrown.h"

namespace {

using support::firstDifference;

struct Directories {
    std::string preinit;
    std::string profile;
};

std::unique_ptr<Kelda::AgentMountFileInfo> parserOf(Directories const& directories,
                                                    std::string const& agent) {
    auto parser = std::make_unique<Kelda::AgentMountFileInfo>(
        false, directories.preinit, directories.profile, true, "DefaultMountGroup");
    parser->addAgent(agent, "");
    return parser;
}

// Loads, asks everything, and does so again after un-initialising; the answers of the last round.
std::vector<std::string> loadAndAsk(Directories const& directories, std::string const& agent,
                                    int rounds) {
    auto const parser = parserOf(directories, agent);
    std::vector<std::string> answers;
    for (int round = 0; round < rounds; ++round) {
        parser->unDoInit();
        answers = support::answersOf(*parser);
    }
    return answers;
}

class TwoParsers : public testing::Test {
  protected:
    // Both threads work at the same time; what they find must be what one thread finds alone.
    static void expectSameAnswers(Directories const& directories, std::string const& one,
                                  std::string const& other, int rounds) {
        auto const expectedOne = loadAndAsk(directories, one, 1);
        auto const expectedOther = loadAndAsk(directories, other, 1);
        std::vector<std::string> foundOne;
        std::vector<std::string> foundOther;
        std::thread first([&] { foundOne = loadAndAsk(directories, one, rounds); });
        std::thread second([&] { foundOther = loadAndAsk(directories, other, rounds); });
        first.join();
        second.join();
        EXPECT_EQ(firstDifference(expectedOne, foundOne), "") << one;
        EXPECT_EQ(firstDifference(expectedOther, foundOther), "") << other;
    }

    support::CleanEnvironment environment;
};

class TwoParsersOfADevice : public TwoParsers {
  protected:
    TwoParsersOfADevice() {
        device.preinit("Base", "a/b,T\na/c,T\nCONFIG:conf/x,T\nd/e/f,T\n"
                               "slot/%slot,T,createOnMount\neach/%agentString,T,createOnMount\n");
        device.profile("Fan", "agentName: Fan-%slot\nalias:%both=%slot,%sliceId\nInclude: Shared\n"
                              "Include: ConfigMountProfile\nMountGroup: g\nslot/%both,T,rw\n"
                              "Condition: some text\nelse/%slot,My::Type,r\n");
        device.profile("Shared", "a/b,T,r\na/c,T,w\n");
        device.profile("Up", "agentName: Up\nactiveMount\nrootFlags:w\nd/e/f,T,w\n");
        device.profile("DefaultMountGroupPerAgent", "each/%agentString,T,r\n");
        directories = {device.preinitDir(), device.profileDir()};
    }

    support::Device device;
    Directories directories;
};

TEST_F(TwoParsersOfADevice, FindWhatOneFindsForTheSameAgent) {
    expectSameAnswers(directories, "Fan-3", "Fan-3", 20);
}

TEST_F(TwoParsersOfADevice, FindWhatOneFindsForTwoAgents) {
    expectSameAnswers(directories, "Fan-3", "Up", 20);
}

TEST_F(TwoParsersOfADevice, FindWhatOneFindsWithoutAnyProfile) {
    expectSameAnswers(directories, "Nobody", "Up", 20);
}

TEST_F(TwoParsersOfADevice, BothThrowTheFaultThatOneThrows) {
    device.profile("Shared", "a/b,T,r\na/c,T,xyz\n");
    auto const faults = [this] {
        std::vector<std::string> texts;
        for (int round = 0; round < 20; ++round) {
            auto const parser = parserOf(directories, "Fan-" + std::to_string(round));
            texts.push_back(support::thrownText([&] { parser->doInit(); }));
        }
        return texts;
    };
    auto const expected = faults();
    std::vector<std::string> found;
    std::thread other([&] { found = faults(); });
    EXPECT_EQ(faults(), expected);
    other.join();
    EXPECT_EQ(found, expected);
    EXPECT_EQ(expected.front(), support::faultIn("Shared", 2, "Encountered unknown mount flag x"));
}

TEST_F(TwoParsersOfADevice, AParserMayBeHandedToAnotherThread) {
    auto const expected = loadAndAsk(directories, "Fan-3", 1);
    auto parser = parserOf(directories, "Fan-3");
    parser->doInit();
    std::vector<std::string> found;
    std::thread other([&found, owned = std::move(parser)] { found = support::answersOf(*owned); });
    other.join();
    EXPECT_EQ(firstDifference(expected, found), "");
}

TEST_F(TwoParsers, FindWhatOneFindsOnALargeDevice) {
    SKIP_WITHOUT_CORPUS();
    auto const root = support::corpusDir("openconfig");
    expectSameAnswers({root / "preinit", root / "profiles"}, "BfdVrf-blue", "MplsTe", 2);
}

} // namespace
