// Random files in the words of both languages: the lenient agent survives them and every query, and
// the strict one throws exactly the first fault that the lenient one records.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Answers.h"
#include "support/CleanEnvironment.h"
#include "support/Descriptors.h"
#include "support/RandomFiles.h"
#include "support/Thrown.h"

namespace {

using support::answersOf;
using support::firstDifference;
using support::RandomDevice;
using support::thrownText;

// Asks for what is known and for what is not.
void callEveryQuery(support::LenientAgent& parser) {
    answersOf(parser);
    for (auto const* const word : {"", "*", "%", "/", "no/such", "a/b", "A::", "M1", "M*"}) {
        parser.mountInfo(word);
        parser.isExplicit(word);
        parser.getType(word);
        parser.getPreinitAttr(word);
        parser.pathIsConfig(word, true);
        parser.profileFilePaths(word, true);
        parser.mountGroupPaths(word);
        parser.agentPaths(word);
        parser.fileIsLoaded(word);
        parser.foundMountProfile(word);
        parser.getIntermediateFlags(Fen::MountTable::Flags(0x80012), word);
        parser.infoCompatible(word, "T", Fen::MountTable::Flags(0x80003), true, true, false);
        parser.addConfigChildPath(word);
        parser.updateMountFlags(word, Fen::MountTable::Flags(1));
    }
    parser.getTitleTemplates();
    parser.firstException();
    parser.recordMountArgsExternal("a/b", {"T", Fen::MountTable::Flags(0x80001), true}, true, true);
}

std::string firstFaultOf(Kelda::MountFileInfo const& parser) {
    auto const fault = parser.firstException();
    return fault ? std::string(Kelda::MountFileInfo::mfiExceptionToString(*fault).view())
                 : support::nothingThrown;
}

// Each seed names one batch of devices, so that a crash tells which.
class RandomFiles : public testing::TestWithParam<std::uint64_t> {
  protected:
    static constexpr std::uint64_t devices = 50;

    // Calls `check` with every device of the batch; the number of a device tells it apart in a
    // failure.
    template <class Check>
    static void forEachDevice(std::size_t faultOdds, Check check) {
        for (std::uint64_t i = 0; i < devices; ++i) {
            auto const seed = GetParam() * devices + i;
            SCOPED_TRACE("device " + std::to_string(seed));
            check(RandomDevice(seed, faultOdds));
        }
    }

    support::CleanEnvironment environment;
};

INSTANTIATE_TEST_SUITE_P(Seed, RandomFiles, testing::Range<std::uint64_t>(1, 13));

TEST_P(RandomFiles, TheStrictSideThrowsExactlyTheFirstFaultOfTheLenientOne) {
    std::uint64_t faulty = 0;
    forEachDevice(30, [&](RandomDevice const& random) {
        support::LenientAgent lenient(random.device().preinitDir(), random.device().profileDir());
        random.addAgents(lenient);
        lenient.doInit();
        auto const strict = random.device().emptyAgent();
        random.addAgents(*strict);
        EXPECT_EQ(thrownText([&] { strict->doInit(); }), firstFaultOf(lenient));
        EXPECT_EQ(strict->exceptions().empty(), lenient.exceptions().empty());
        faulty += lenient.exceptions().empty() ? 0 : 1;
    });
    EXPECT_GT(faulty, devices / 10);
    EXPECT_LT(faulty, devices - devices / 10);
}

TEST_P(RandomFiles, WithoutAFaultBothSidesGiveTheSameAnswersAlsoWhenInitialisedAgain) {
    std::uint64_t clean = 0;
    forEachDevice(200, [&](RandomDevice const& random) {
        support::LenientAgent lenient(random.device().preinitDir(), random.device().profileDir());
        random.addAgents(lenient);
        lenient.doInit();
        if (!lenient.exceptions().empty())
            return;
        ++clean;
        auto const strict = random.device().emptyAgent();
        random.addAgents(*strict);
        auto const answers = answersOf(*strict);
        EXPECT_EQ(firstDifference(answersOf(lenient), answers), "");
        strict->unDoInit();
        EXPECT_EQ(firstDifference(answers, answersOf(*strict)), "");
    });
    EXPECT_GT(clean, devices / 10);
}

TEST_P(RandomFiles, EveryQueryOfALenientParserComesToAnEnd) {
    forEachDevice(8, [&](RandomDevice const& random) {
        support::LenientAgent parser(random.device().preinitDir(), random.device().profileDir());
        random.addAgents(parser);
        parser.doInit();
        callEveryQuery(parser);
        parser.unDoInit();
        callEveryQuery(parser);
        EXPECT_TRUE(parser.isInitialized());
    });
}

TEST_P(RandomFiles, AFaultyDeviceLeavesNothingOpen) {
    auto const descriptors = support::descriptorsInUse();
    auto const memory = Kelda::mountFileInfoSlab().bytesInUse();
    forEachDevice(8, [&](RandomDevice const& random) {
        auto strict = random.device().emptyAgent();
        random.addAgents(*strict);
        thrownText([&] { strict->doInit(); });
        thrownText([&] { answersOf(*strict); });
        EXPECT_EQ(support::descriptorsInUse(), descriptors);
        strict.reset();
        EXPECT_EQ(Kelda::mountFileInfoSlab().bytesInUse(), memory);
    });
}

TEST_P(RandomFiles, BytesOfAnyValueAreSurvivedAndTheFirstFaultIsTheSame) {
    for (std::uint64_t i = 0; i < devices; ++i) {
        support::Dice dice(GetParam() * devices + i);
        SCOPED_TRACE("bytes " + std::to_string(GetParam() * devices + i));
        auto const bytes = [&dice](std::size_t n) {
            std::string text;
            while (text.size() < n)
                text += dice.oneIn(40) ? '\n' : static_cast<char>(dice.below(256));
            return text;
        };
        support::Device device;
        device.preinit("Garbage", dice.oneIn(2) ? bytes(dice.below(3000)) : "a/b,T\n");
        device.profile("Garbage", "agentName: A\n" + bytes(dice.below(3000)));
        device.profile("More", bytes(dice.below(3000)));
        support::LenientAgent lenient(device.preinitDir(), device.profileDir());
        lenient.addAgent("A", "");
        lenient.doInit();
        callEveryQuery(lenient);
        auto const strict = device.agent("A");
        EXPECT_EQ(thrownText([&] { strict->doInit(); }), firstFaultOf(lenient));
    }
}

} // namespace
