// The example device that the demo reads: every agent that it names loads without a fault.
#include <filesystem>

#include <gtest/gtest.h>

#include <KeldaBase/AgentMountFileInfo.h>

#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/Thrown.h"

namespace {

class ExampleDevice : public testing::Test {
  protected:
    std::filesystem::path const root =
        std::filesystem::path(KELDA_SOURCE_DIR) / "examples" / "device";
    support::CleanEnvironment environment;
};

TEST_F(ExampleDevice, EveryAgentOfItsListLoadsWithoutAFault) {
    auto const agents = support::significantLines(root / "agents.txt");
    ASSERT_FALSE(agents.empty()) << (root / "agents.txt");
    for (auto const& line : agents) {
        auto const fields = support::fieldsOf(line);
        Kelda::AgentMountFileInfo parser(false, (root / "preinit").string(),
                                         (root / "profiles").string(), true, "DefaultMountGroup");
        parser.addAgent(fields.at(0), fields.size() > 1 ? fields.at(1) : "");
        EXPECT_EQ(support::thrownText([&] { parser.doInit(); }), support::nothingThrown) << line;
        EXPECT_TRUE(parser.isInitialized()) << line;
    }
}

} // namespace
