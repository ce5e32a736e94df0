// The two sides agree: an agent's own parser throws exactly where the side of the database has a
// fault that concerns the agent, and what it throws is the first of them.
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/DatabaseAgreement.h"
#include "support/DatabaseRandom.h"

namespace {

using KeldaDatabase::DatabaseMountFileInfo;
using support::FirstFault;

// The value of a token that the agent string gives it, in a path, as the side of the database has
// it; and of a conflict of keywords, which names the agent that meets it, no name.
std::string withAnyValues(std::string text) {
    for (auto const* const value : {"/Tray", "/S-1", "/S", "/Fan-3"})
        text = support::replaced(text, value, "/*");
    constexpr std::string_view before = "keyword for agent ";
    if (auto const at = text.find(before); at != std::string::npos)
        text.replace(at, text.find(", meaning", at) - at, before);
    return text;
}

struct Tally {
    std::size_t agents = 0;
    std::size_t variants = 0;
    std::size_t faulty = 0;
    std::size_t together = 0;
};

// Compares both sides over every agent of a device.
class BothSides {
  public:
    BothSides(std::string preinitDir, std::string profileDir)
        : preinitDir_(std::move(preinitDir)), profileDir_(std::move(profileDir)),
          parser_(preinitDir_, profileDir_) {}

    KeldaDatabase::Device const& device() { return parser_.device(); }

    // With "*" for the value of each token: file, line and message are the same.
    void expectTheSame(Tally& tally) {
        for (std::size_t i = 0; i < device().agents.size(); ++i) {
            auto const& agent = device().agents[i];
            auto const foreseen = support::faultForeseen(device(), i);
            EXPECT_EQ(withAnyValues(thrown(agent.agentString.view(), "*").text()),
                      withAnyValues(foreseen.text()))
                << "agent " << agent.agentString.view();
            ++tally.agents;
            tally.variants += agent.isActiveVariant ? 1 : 0;
            tally.faulty += foreseen.message.empty() ? 0 : 1;
            tally.together += foreseen.isTogether ? 1 : 0;
        }
    }

    // With a value as agents have it: a fault is thrown at the same place.
    void expectTheSamePlaceWithValues() {
        for (std::size_t i = 0; i < device().agents.size(); ++i) {
            auto const agent =
                support::replaced(std::string(device().agents[i].agentString.view()), "-*", "-7");
            EXPECT_EQ(thrown(agent, agent).place, support::faultForeseen(device(), i).place)
                << "agent " << agent;
        }
    }

    FirstFault thrown(std::string_view agentString, std::string_view overrideString) const {
        return support::faultThrownTo(agentString, overrideString, preinitDir_, profileDir_);
    }

  private:
    std::string preinitDir_;
    std::string profileDir_;
    DatabaseMountFileInfo parser_;
};

class Agreement : public testing::Test {
  protected:
    support::CleanEnvironment environment;
    Tally tally;
};

TEST_F(Agreement, HoldsForEveryAgentOfTheExampleDevice) {
    std::string const root = std::string(KELDA_SOURCE_DIR) + "/examples/device";
    BothSides sides(root + "/preinit", root + "/profiles");
    sides.expectTheSame(tally);
    sides.expectTheSamePlaceWithValues();
    EXPECT_GT(tally.agents, 10U);
    EXPECT_GT(tally.variants, 0U);
    EXPECT_EQ(tally.faulty, 0U);
}

TEST_F(Agreement, HoldsForEveryAgentOfALargeDevice) {
    SKIP_WITHOUT_CORPUS();
    BothSides sides(support::corpusDir("openconfig") / "preinit",
                    support::corpusDir("openconfig") / "profiles");
    sides.expectTheSame(tally);
    EXPECT_GE(tally.agents, 265U);
    EXPECT_EQ(tally.faulty, 0U);
}

struct BrokenDevice {
    std::string directory;
    std::string agent; // one that meets the fault
    bool isPreinit;
};

std::vector<BrokenDevice> brokenDevices() {
    std::vector<BrokenDevice> devices;
    for (auto const& line : support::significantLines(support::corpusDir("broken") / "INDEX.csv")) {
        auto const fields = support::fieldsOf(line);
        bool const isPreinit = fields.at(1) == "preinit"; // which every agent meets
        if (fields.at(0) != "case")                       // the line of titles
            devices.push_back({fields.at(0), isPreinit ? "Nobody" : fields.at(2), isPreinit});
    }
    return devices;
}

TEST_F(Agreement, HoldsForEveryAgentOfADeviceInWhichOneThingIsBroken) {
    SKIP_WITHOUT_CORPUS();
    auto const broken = support::corpusDir("broken");
    for (auto const& device : brokenDevices()) {
        SCOPED_TRACE(device.directory);
        support::TemporaryDirectory noProfiles;
        BothSides sides(broken / (device.isPreinit ? device.directory : "base/preinit"),
                        device.isPreinit ? noProfiles.string()
                                         : (broken / device.directory).string());
        sides.expectTheSame(tally);
        sides.expectTheSamePlaceWithValues();
        ASSERT_FALSE(sides.device().faults.empty());
        auto const& first = sides.device().faults.front().exception;
        EXPECT_EQ(sides.thrown(device.agent, device.agent).text(),
                  support::firstFaultOf(first).text());
    }
    EXPECT_GT(tally.faulty, 42U);
}

// The seeds of the environment variable, "FIRST:COUNT", or those of every run.
struct Seeds {
    std::uint64_t first = 1;
    std::uint64_t count = 2000;

    static Seeds chosen() {
        char const* const text = std::getenv("KELDA_RANDOM_DEVICES");
        if (text == nullptr)
            return {};
        char* end = nullptr;
        auto const first = std::strtoull(text, &end, 10);
        return {first, std::strtoull(end + 1, nullptr, 10)};
    }
    // From devices with a fault in nearly every profile to those in which lines are wrong together
    // only.
    static std::size_t faultOdds(std::uint64_t seed) {
        constexpr std::size_t odds[] = {40, 300, 3000};
        return odds[seed % 3];
    }
};

// A longer run: KELDA_RANDOM_DEVICES=1:100000 database_tests --gtest_filter='*RandomDevice*'
TEST_F(Agreement, HoldsForEveryAgentOfARandomDevice) {
    auto const seeds = Seeds::chosen();
    for (auto seed = seeds.first; seed < seeds.first + seeds.count && !HasFailure(); ++seed) {
        SCOPED_TRACE("device " + std::to_string(seed));
        support::RandomDatabase const random(seed, Seeds::faultOdds(seed));
        BothSides sides(random.device().preinitDir(), random.device().profileDir());
        sides.expectTheSame(tally);
        sides.expectTheSamePlaceWithValues();
    }
    EXPECT_GT(tally.agents, 2 * seeds.count);
    EXPECT_GT(tally.variants, tally.agents / 10);
    EXPECT_GT(tally.faulty, tally.agents / 4);
    EXPECT_LT(tally.faulty, tally.agents - tally.agents / 4);
    EXPECT_GT(tally.together, tally.faulty / 4);
}

TEST_F(Agreement, HoldsWhereTheFilesAreInTheExtraFoldersToo) {
    for (std::uint64_t seed = 1; seed < 200 && !HasFailure(); ++seed) {
        SCOPED_TRACE("device " + std::to_string(seed));
        support::RandomDatabase const base(seed, Seeds::faultOdds(seed));
        support::RandomDatabase const extra(seed + 1'000'000, Seeds::faultOdds(seed));
        support::EnvironmentVariable const profiles("KELDA_EXTRA_PROFILE_PATH",
                                                    extra.device().profileDir().c_str());
        BothSides sides(base.device().preinitDir(), base.device().profileDir());
        sides.expectTheSame(tally);
    }
    EXPECT_GT(tally.together, 50U);
}

} // namespace
