// Whole devices before and after: no agent and no preinit path notices the layout.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "database/diff/Difference.h"
#include "formatting/Layout.h"
#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/DatabaseRandom.h"
#include "support/ExampleDevice.h"
#include "support/FileContent.h"
#include "support/RandomFiles.h"

namespace {

namespace fs = std::filesystem;
using KeldaDatabase::DatabaseMountFileInfo;
using KeldaDatabase::FileFamily;

std::size_t layOut(fs::path const& from, support::TemporaryDirectory const& to,
                   std::string const& folder, FileFamily family) {
    std::size_t changed = 0;
    to.makeDirectory(folder);
    for (auto const& entry : fs::directory_iterator(from / folder)) {
        auto const text = support::contentOf(entry.path());
        auto const layout = KeldaTool::formatted(text, family).text;
        changed += layout == text ? 0 : 1;
        to.write(folder + "/" + entry.path().filename().string(), layout);
    }
    return changed;
}

// The kinds of what the layout changes; `changed` counts files.
std::vector<std::string> changesByLayout(fs::path const& device, std::size_t& changed) {
    support::TemporaryDirectory const after;
    changed += layOut(device, after, "preinit", FileFamily::preinit);
    changed += layOut(device, after, "profiles", FileFamily::profile);
    DatabaseMountFileInfo before((device / "preinit").string(), (device / "profiles").string());
    DatabaseMountFileInfo laidOut((after / "preinit").string(), (after / "profiles").string());
    before.numberedTokensIs(true);
    laidOut.numberedTokensIs(true);
    std::vector<std::string> kinds;
    for (auto const& change : KeldaDatabase::differenceOf(before, laidOut).changes)
        kinds.push_back(std::string(nameOf(change.kind)) + " " + change.paths.front().path);
    return kinds;
}

class LayoutOfDevice : public testing::Test {
  protected:
    void expectNoChange(fs::path const& device) {
        EXPECT_EQ(changesByLayout(device, changed), std::vector<std::string>());
    }

    support::CleanEnvironment environment;
    std::size_t changed = 0;
};

TEST_F(LayoutOfDevice, ChangesNothingInTheExampleDevice) {
    expectNoChange(support::exampleDevice());
}

TEST_F(LayoutOfDevice, ChangesNothingInTheCorpus) {
    SKIP_WITHOUT_CORPUS();
    expectNoChange(support::corpusDir("openconfig"));
    EXPECT_GT(changed, 100U);
}

TEST_F(LayoutOfDevice, ChangesNothingInRandomDevices) {
    for (std::uint64_t seed = 0; seed < 100; ++seed) {
        expectNoChange(support::RandomDatabase(seed, 12).device().directory().path());
        expectNoChange(support::RandomDevice(seed, 12).device().directory().path());
        ASSERT_FALSE(HasFailure()) << "seed " << seed;
    }
    EXPECT_GT(changed, 500U);
}

} // namespace
