// kelda graph: the example device with everything that is printed, small devices, wrong calls.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using support::Device;
using support::expected;
using support::KeldaProgram;
using support::Words;
using testing::HasSubstr;

support::Outcome graphOfExample(Words const& words) {
    return KeldaProgram()
        .inFolder(support::exampleDevice())
        .run(Words{"graph", "--preinit", "preinit", "--profiles", "profiles"} + words);
}

struct Kept {
    Words words;
    std::string file;
};

class EveryKeptGraph : public testing::TestWithParam<Kept> {};

TEST_P(EveryKeptGraph, PrintsTheKeptText) {
    auto const outcome = graphOfExample(GetParam().words);
    EXPECT_EQ(outcome.out, expected(GetParam().file));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

INSTANTIATE_TEST_SUITE_P(
    ExampleDevice, EveryKeptGraph,
    testing::Values(Kept{{}, "graph-device.dot"}, Kept{{"--format", "svg"}, "graph-device.svg"},
                    Kept{{"--all-paths", "--format", "svg"}, "graph-all-paths.svg"},
                    Kept{{"Thermal", "Fan*", "--path", "hardware/**", "--all-paths"},
                         "graph-cooling.dot"},
                    Kept{{"Thermal", "FanTray-2", "--path", "hardware/fan/**", "--path",
                          "sys/clock", "--format", "svg"},
                         "graph-cooling.svg"},
                    Kept{{"--help"}, "help-graph.txt"}));

// Whether a program can be called.
bool isInstalled(std::string const& program) {
    return std::system(("command -v " + program + " > /dev/null 2>&1").c_str()) == 0;
}

// Hands a text to a program; true if it exits with success and without a word.
bool isAcceptedBy(std::string const& command, std::string const& text) {
    support::TemporaryDirectory const directory;
    auto const file = directory.write("text", text);
    auto const words = (directory / "words").string();
    int const status = std::system((command + " '" + file + "' > '" + words + "' 2>&1").c_str());
    auto const said = support::contentOf(words);
    EXPECT_EQ(said, "");
    return status == 0 && said.empty();
}

// A device with names that mean something to those who draw.
struct HostileDevice : Device {
    HostileDevice() {
        std::string paths;
        std::string writes = "agentName:A\"\\\n";
        std::string reads = "agentName:<B>&amp;\xff\n";
        for (std::string const name :
             {"q\"uote", "back\\slash\\n\\N", "<b>&lt;&copy;", "\x1b[31m", "\xff\xc3",
              "\xed\xa0\x80", "\uffff", "\u202eturned", "]]>", "{|}", "\\", "'"}) {
            paths += name + ",T\n";
            writes += name + "/,T,w\n"; // no line may end in a backslash
            reads += name + "/,T,r\n";
        }
        preinit("P", paths).profile("1\n", writes).profile("2", reads);
    }
};

support::Outcome graphOf(Device const& device, Words const& words) {
    return KeldaProgram().run(Words{"graph"} + support::foldersOf(device.directory().path()) +
                              words);
}

TEST(Graph, IsTakenByGraphvizWhateverTheNames) {
    if (!isInstalled("dot"))
        GTEST_SKIP() << "Graphviz is not installed";
    auto const outcome = graphOf(HostileDevice(), {});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr("\"q\\\"uote\""));
    EXPECT_TRUE(isAcceptedBy("dot -Tsvg -o /dev/null", outcome.out)) << outcome.out;
    EXPECT_TRUE(isAcceptedBy("dot -Tsvg -o /dev/null", graphOfExample({}).out));
}

TEST(Graph, IsTakenByReadersOfXmlWhateverTheNames) {
    if (!isInstalled("python3"))
        GTEST_SKIP() << "python3 is not installed";
    auto const outcome = graphOf(HostileDevice(), {"--format", "svg"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr(">q&quot;uote</text>"));
    std::string const read = "python3 -c 'import sys, xml.dom.minidom as m; m.parse(sys.argv[1])'";
    EXPECT_TRUE(isAcceptedBy(read, outcome.out)) << outcome.out;
    EXPECT_TRUE(isAcceptedBy(read, graphOfExample({"--format", "svg"}).out));
}

TEST(Graph, IsDrawnInSpiteOfFaultsAndSaysThatThereAreSome) {
    Device device;
    device.preinit("P", "a,T\n")
        .profile("1", "agentName:A\na,T,w\nno keyword\n")
        .profile("2", "agentName:B\na,T,r\n");
    auto const outcome = graphOf(device, {});
    EXPECT_THAT(outcome.out, HasSubstr("  p0 -> a1 [label=\"r\""));
    EXPECT_EQ(outcome.err, "kelda: note: 1 fault in the files; see 'kelda check'\n");
    EXPECT_EQ(outcome.status, 0);
}

struct Nothing {
    Words words;
    std::string message;
};

class EveryNothing : public testing::TestWithParam<Nothing> {};

TEST_P(EveryNothing, IsToldOnStandardError) {
    for (char const* const format : {"dot", "svg"}) {
        auto const outcome = graphOfExample(GetParam().words + Words{"--format", format});
        EXPECT_EQ(outcome.err, GetParam().message);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 1);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Messages, EveryNothing,
    testing::Values(
        Nothing{{"FanTry-%tray"},
                "kelda: there is no agent 'FanTry-%tray'; did you mean 'FanTray-%tray'?\n"},
        Nothing{{"fantray"}, "kelda: there is no agent 'fantray'; did you mean 'FanTray-%tray'?\n"},
        Nothing{{"Fan"}, "kelda: there is no agent 'Fan'; did you mean 'Fan*'?\n"},
        Nothing{{"Zebra"}, "kelda: there is no agent 'Zebra'\n"},
        Nothing{{"Z\x1b*"}, "kelda: no agent matches 'Z\\x1b*'\n"},
        Nothing{{"One", "Thermal", "Other\xff"},
                "kelda: there is no agent 'One'\nkelda: there is no agent 'Other\\xff'\n"},
        Nothing{{"LedBlinker"},
                "kelda: no path is written by one agent and read by another, one of them asked "
                "for; with --all-paths there is 1 path\n"},
        Nothing{{"--path", "hardware/led/**"},
                "kelda: no path of those asked for is written by one agent and read by another; "
                "with --all-paths there are 2 paths\n"},
        Nothing{{"LedBlinker", "--path", "sys/**", "--all-paths"},
                "kelda: no path of those asked for is read or written by the agents asked for\n"},
        Nothing{{"--path", "zebra", "--all-paths"},
                "kelda: no path of those asked for is read or written\n"}));

TEST(Graph, CannotBeDrawnWithoutAFolder) {
    Device const device;
    for (Words const& folders : {Words{"--preinit", "gone", "--profiles", "profiles"},
                                 Words{"--preinit", "preinit", "--profiles", "gone"}}) {
        auto const outcome = KeldaProgram()
                                 .inFolder(device.directory().path())
                                 .run(Words{"graph", "--format", "svg"} + folders);
        EXPECT_EQ(outcome.err, "kelda: Cannot open directory gone\n");
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 2);
    }
}

struct WrongCall {
    Words words;
    std::string message;
};

class EveryWrongGraph : public testing::TestWithParam<WrongCall> {};

TEST_P(EveryWrongGraph, SaysWhatIsWrong) {
    auto const outcome = KeldaProgram().run(Words{"graph"} + GetParam().words);
    EXPECT_EQ(outcome.err, GetParam().message + "\nTry 'kelda graph --help'.\n");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 2);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, EveryWrongGraph,
    testing::Values(WrongCall{{""}, "kelda graph: AGENT: must not be empty"},
                    WrongCall{{"A", "--format", "png"},
                              "kelda graph: --format: must be dot or svg, not 'png'"},
                    WrongCall{{"--path", ""}, "kelda graph: --path: must not be empty"},
                    WrongCall{{"--path", "/sys"},
                              "kelda graph: --path: must not begin with '/', as paths are "
                              "relative to the root"},
                    WrongCall{{"--depth", "1"}, "kelda graph: unexpected argument '--depth'"}));

} // namespace
