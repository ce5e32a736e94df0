// The program over the example device, with everything it prints. Agents come from agents.txt, so
// an agent that is added there needs a kept table, too.
#include <gtest/gtest.h>

#include <fstream>

#include <unistd.h>

#include "support/KeldaProgram.h"

namespace {

using support::exampleDevice;
using support::expected;
using support::KeldaProgram;
using support::Words;

struct SampleAgent {
    std::string agent;
    std::string overrideName;

    Words words() const {
        Words words{"mounts", agent};
        if (!overrideName.empty())
            words = words + Words{"--override", overrideName};
        return words + support::foldersOf(exampleDevice());
    }
    friend std::ostream& operator<<(std::ostream& stream, SampleAgent const& sample) {
        return stream << sample.agent << ',' << sample.overrideName;
    }
};

std::vector<SampleAgent> sampleAgents() {
    std::vector<SampleAgent> agents;
    std::ifstream stream(exampleDevice() / "agents.txt");
    for (std::string line; std::getline(stream, line);) {
        if (line.empty() || line.starts_with('#'))
            continue;
        auto const comma = line.find(',');
        agents.push_back(
            {line.substr(0, comma), comma == std::string::npos ? "" : line.substr(comma + 1)});
    }
    return agents;
}

std::string systemName() {
    char name[256] = "";
    gethostname(name, sizeof name - 1);
    return name;
}

void replaceAll(std::string& text, std::string const& from, std::string const& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

class EverySampleAgent : public testing::TestWithParam<SampleAgent> {};

TEST_P(EverySampleAgent, LoadsWithoutAFault) {
    auto const outcome = KeldaProgram().run(GetParam().words() + Words{"--format", "json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.json()["foundMountProfile"], true);
    EXPECT_EQ(outcome.json()["agent"], GetParam().agent);
}

TEST_P(EverySampleAgent, ShowsTheSameMountsAsTableAndAsJson) {
    auto const table = KeldaProgram().run(GetParam().words()).out;
    auto const document = KeldaProgram().run(GetParam().words() + Words{"--format", "json"}).json();
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line);
    EXPECT_TRUE(line.starts_with("PATH ")) << line;
    for (auto const& mount : document["mounts"]) {
        std::getline(lines, line);
        EXPECT_TRUE(line.starts_with(mount["path"].get<std::string>() + " ")) << line;
    }
    std::getline(lines, line);
    EXPECT_EQ(line, "");
}

INSTANTIATE_TEST_SUITE_P(ExampleDevice, EverySampleAgent, testing::ValuesIn(sampleAgents()));

// The paths of LinkReporter hold the name of the system that the test runs on.
std::vector<SampleAgent> agentsOfEverySystem() {
    auto agents = sampleAgents();
    std::erase_if(agents, [](auto const& sample) { return sample.agent == "LinkReporter"; });
    return agents;
}

class SampleAgentTable : public testing::TestWithParam<SampleAgent> {};

TEST_P(SampleAgentTable, IsTheKeptOne) {
    auto const outcome = KeldaProgram().run(GetParam().words());
    EXPECT_EQ(outcome.out, expected("mounts-" + GetParam().agent + ".txt"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

INSTANTIATE_TEST_SUITE_P(ExampleDevice, SampleAgentTable, testing::ValuesIn(agentsOfEverySystem()));

class SampleAgentDocument : public testing::TestWithParam<SampleAgent> {};

TEST_P(SampleAgentDocument, IsTheKeptOne) {
    auto const outcome = KeldaProgram().run(GetParam().words() + Words{"--format", "json"});
    EXPECT_EQ(outcome.out, expected("mounts-" + GetParam().agent + ".json"));
    EXPECT_EQ(outcome.err, "");
}

INSTANTIATE_TEST_SUITE_P(ExampleDevice, SampleAgentDocument,
                         testing::Values(SampleAgent{"FanTray-2", "FanTray-spare"},
                                         SampleAgent{"RouteLeak-red-blue", ""},
                                         SampleAgent{"CellKeeper", ""},
                                         SampleAgent{"LedBlinker", ""}));

TEST(ExampleDevice, TheLinkReporterUsesTheNameOfTheSystem) {
    SampleAgent const reporter{"LinkReporter", ""};
    auto const outcome = KeldaProgram().run(reporter.words() + Words{"--format", "json"});
    auto document = expected("mounts-LinkReporter.json");
    replaceAll(document, "@SYSTEM@", systemName());
    bool const isLab = systemName().find("lab") != std::string::npos;
    replaceAll(document, "@DURATION@", isLab ? "day" : "month");
    EXPECT_EQ(outcome.json(), nlohmann::ordered_json::parse(document));
}

TEST(ExampleDevice, TheKeptPreinitTable) {
    auto const outcome =
        KeldaProgram().run({"preinit", "--preinit", (exampleDevice() / "preinit").string()});
    EXPECT_EQ(outcome.out, expected("preinit.txt"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST(ExampleDevice, TheKeptPreinitDocument) {
    auto const outcome = KeldaProgram().run(
        {"preinit", "--format", "json", "--preinit", (exampleDevice() / "preinit").string()});
    EXPECT_EQ(outcome.out, expected("preinit.json"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

// What one of the options of a selection prints, as a table and as a document.
struct SampleSelection {
    Words words;
    std::string kept; // file without its ending
};

class EverySampleSelection : public testing::TestWithParam<SampleSelection> {};

TEST_P(EverySampleSelection, PrintsTheKeptTable) {
    auto const outcome = KeldaProgram().run(GetParam().words + support::foldersOf(exampleDevice()));
    EXPECT_EQ(outcome.out, expected(GetParam().kept + ".txt"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_P(EverySampleSelection, PrintsTheKeptDocument) {
    auto const outcome = KeldaProgram().run(GetParam().words + Words{"--format", "json"} +
                                            support::foldersOf(exampleDevice()));
    EXPECT_EQ(outcome.out, expected(GetParam().kept + ".json"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

INSTANTIATE_TEST_SUITE_P(
    ExampleDevice, EverySampleSelection,
    testing::Values(SampleSelection{{"mounts", "RouteLeak-red-blue", "--path", "route/table/red/"},
                                    "selected-path"},
                    SampleSelection{{"mounts", "Thermal", "--file", "Thermal"}, "selected-file"},
                    SampleSelection{{"mounts", "Thermal", "--file", "Thermal*", "--with-includes"},
                                    "selected-files-with-includes"},
                    SampleSelection{{"mounts", "FanTray-2", "--override", "FanTray-spare",
                                     "--group", "FanTray::default"},
                                    "selected-group"}));

TEST(ExampleDevice, TheKeptConfigTable) {
    auto const outcome =
        KeldaProgram().run({"config", "--preinit", (exampleDevice() / "preinit").string()});
    EXPECT_EQ(outcome.out, expected("config.txt"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST(ExampleDevice, TheKeptConfigDocument) {
    auto const outcome = KeldaProgram().run(
        {"config", "--format", "json", "--preinit", (exampleDevice() / "preinit").string()});
    EXPECT_EQ(outcome.out, expected("config.json"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

// The page names every file and shows every agent at work.
TEST(ExampleDevice, TheGuideNamesEveryFile) {
    auto const guide = support::contentOf(exampleDevice() / "README.md");
    for (char const* folder : {"preinit", "profiles"})
        for (auto const& entry : std::filesystem::directory_iterator(exampleDevice() / folder)) {
            auto const name = std::string(folder) + "/" + entry.path().filename().string();
            EXPECT_NE(guide.find("`" + name + "`"), std::string::npos) << name;
        }
    for (auto const& sample : sampleAgents())
        EXPECT_NE(guide.find("`" + sample.agent + "`"), std::string::npos) << sample;
}

} // namespace
