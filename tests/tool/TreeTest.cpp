// kelda tree: the example device with everything that is printed, small devices, wrong calls.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "support/Corpus.h"
#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using Json = nlohmann::ordered_json;
using support::Device;
using support::expected;
using support::KeldaProgram;
using support::Words;
using testing::HasSubstr;

support::Outcome tree(std::filesystem::path const& device, Words const& more = {}) {
    return KeldaProgram().inFolder(device).run(
        Words{"tree", "--preinit", "preinit", "--profiles", "profiles"} + more);
}
support::Outcome tree(Device const& device, Words const& more = {}) {
    return tree(device.directory().path(), more);
}
// The top nodes of the document.
Json nodesOf(Device const& device, Words const& more = {}) {
    return tree(device, more + Words{"--format", "json"}).json()["tree"];
}

struct Kept {
    Words words;
    std::string file;
};

class EveryKeptTree : public testing::TestWithParam<Kept> {};

TEST_P(EveryKeptTree, PrintsTheKeptText) {
    auto const outcome = tree(support::exampleDevice(), GetParam().words);
    EXPECT_EQ(outcome.out, expected(GetParam().file));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

// Nothing of the paths that hold the name of the system that the test runs on.
INSTANTIATE_TEST_SUITE_P(ExampleDevice, EveryKeptTree,
                         testing::Values(Kept{{"--depth", "2"}, "tree-depth.txt"},
                                         Kept{{"hardware"}, "tree-hardware.txt"},
                                         Kept{{"sys/", "--depth", "1"}, "tree-sys-depth.txt"},
                                         Kept{{"route", "--format", "json"}, "tree-route.json"},
                                         Kept{{"cell/%peerCellId"}, "tree-cell.txt"}));

struct SmallDevice : Device {
    SmallDevice() {
        preinit("P", "a/b,B\n"
                     "fan/%tray/state,F::State,createOnMount\n"
                     "CONFIG:a/config,C,createOnStandby\n"
                     "fan/%slot/speed,F::Speed,createOnMount\n")
            .profile("1", "agentName:Fan-%x\nfan/%x/state,F,rw\n")
            .profile("2", "agentName:A\na/b,B,r\nalias:%one=1\nfan/%one/state,F,w\n"
                          "Condition:x\nonly/here,H,i\n");
    }
};

TEST(Tree, IsDrawnWithLines) {
    auto const outcome = tree(SmallDevice());
    EXPECT_EQ(outcome.out, "PATH           TYPE      ATTRIBUTE                AGENTS  READ  WRITE\n"
                           "a              Fen::Dir  -                        -       -     -\n"
                           "|-- b          B         -                        1       1     -\n"
                           "`-- config     C         config, createOnStandby  -       -     -\n"
                           "fan            -         -                        -       -     -\n"
                           "|-- %tray      -         -                        -       -     -\n"
                           "|   |-- speed  F::Speed  createOnMount            -       -     -\n"
                           "|   `-- state  F::State  createOnMount            1       1     1\n"
                           "`-- 1          -         -                        -       -     -\n"
                           "    `-- state  F::State  -                        1       -     1\n"
                           "only           -         -                        -       -     -\n"
                           "`-- here       H         -                        1       -     -\n"
                           "\n"
                           "11 paths (4 declared, 4 mounted)\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Tree, LooksTheSameOnATerminalWithoutColour) {
    SmallDevice const device;
    auto const onTerminal =
        KeldaProgram()
            .with("NO_COLOR", "1")
            .runOnTerminal(Words{"tree"} + support::foldersOf(device.directory().path()));
    EXPECT_EQ(onTerminal.out, tree(device).out);
}

TEST(Tree, IsANestedDocument) {
    auto const outcome = tree(SmallDevice(), {"fan/%tray", "--format", "json"});
    EXPECT_EQ(outcome.out, R"({
  "prefix": "fan/%tray",
  "tree": [
    {
      "name": "%tray",
      "path": "fan/%tray",
      "type": "",
      "attr": "",
      "config": false,
      "declared": false,
      "mounts": [],
      "hidden": 0,
      "children": [
        {
          "name": "speed",
          "path": "fan/%slot/speed",
          "type": "F::Speed",
          "attr": "createOnMount",
          "config": false,
          "declared": true,
          "mounts": [],
          "hidden": 0,
          "children": []
        },
        {
          "name": "state",
          "path": "fan/%tray/state",
          "type": "F::State",
          "attr": "createOnMount",
          "config": false,
          "declared": true,
          "mounts": [
            {
              "agent": "Fan-%x",
              "flags": "rw"
            }
          ],
          "hidden": 0,
          "children": []
        }
      ]
    }
  ]
}
)");
}

TEST(Tree, OfAnEmptyDeviceIsEmpty) {
    Device const device;
    EXPECT_EQ(tree(device).out, "PATH  TYPE  ATTRIBUTE  AGENTS  READ  WRITE\n"
                                "\n"
                                "0 paths (0 declared, 0 mounted)\n");
    EXPECT_EQ(nodesOf(device), Json::array());
}

TEST(Tree, CountsWhatADepthHides) {
    SmallDevice const device;
    EXPECT_EQ(tree(device, {"--depth", "1"}).out,
              "PATH      TYPE      ATTRIBUTE  AGENTS  READ  WRITE\n"
              "a/...     Fen::Dir  -          -       -     -\n"
              "fan/...   -         -          -       -     -\n"
              "only/...  -         -          -       -     -\n"
              "\n"
              "3 paths (0 declared, 0 mounted), 8 more below\n");
    EXPECT_EQ(tree(device, {"fan", "--depth", "1"}).out,
              "PATH           TYPE  ATTRIBUTE  AGENTS  READ  WRITE\n"
              "fan            -     -          -       -     -\n"
              "|-- %tray/...  -     -          -       -     -\n"
              "`-- 1/...      -     -          -       -     -\n"
              "\n"
              "3 paths (0 declared, 0 mounted), 3 more below\n");
    auto const nodes = nodesOf(device, {"--depth", "2"});
    EXPECT_EQ(nodes[1]["hidden"], 0);
    EXPECT_EQ(nodes[1]["children"][0]["hidden"], 2);
    EXPECT_EQ(nodes[1]["children"][0]["children"], Json::array());
    EXPECT_EQ(nodesOf(device, {"--depth", "3"}), nodesOf(device));
}

TEST(Tree, FindsAPrefixWithWhateverTokens) {
    SmallDevice const device;
    for (auto const* const prefix : {"fan/%tray", "fan/%slot/", "fan/%other", "fan/*"})
        EXPECT_EQ(nodesOf(device, {prefix})[0]["path"], "fan/%tray") << prefix;
    EXPECT_EQ(nodesOf(device, {"fan/1"})[0]["path"], "fan/1");
    EXPECT_THAT(tree(device, {"fan/%slot/state"}).out, HasSubstr("\nfan/%tray/state  F::State  "));
}

struct NoPath {
    std::string prefix;
    std::string message;
};

class EveryMissingPath : public testing::TestWithParam<NoPath> {};

TEST_P(EveryMissingPath, IsToldOnStandardError) {
    for (auto const* const format : {"table", "json"}) {
        auto const outcome = tree(SmallDevice(), {GetParam().prefix, "--format", format});
        EXPECT_EQ(outcome.err, GetParam().message + "\n");
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 1);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Messages, EveryMissingPath,
    testing::Values(NoPath{"nowhere", "kelda: there is no path 'nowhere'"},
                    NoPath{"a/B", "kelda: there is no path 'a/B'; did you mean 'a/b'?"},
                    NoPath{"fan/%x/speeed", "kelda: there is no path 'fan/%x/speeed'; did you mean "
                                            "'fan/%slot/speed'?"},
                    NoPath{"fan/3", "kelda: there is no path 'fan/3'; did you mean 'fan/%tray'?"},
                    NoPath{"a//", "kelda: there is no path 'a//'"},
                    NoPath{"\x1b\xff", "kelda: there is no path '\\x1b\\xff'"},
                    NoPath{std::string(2000, 'x'),
                           "kelda: there is no path '" + std::string(2000, 'x') + "'"}));

TEST(Tree, TakesTheTypeOfTheLastLineAndTheAttributeOfTheFirst) {
    Device device;
    device.preinit("P", "cell/%cellId/x,Old,createOnStandby\ncell/%peerCellId/x,New\n");
    auto const node = nodesOf(device, {"cell/*/x"})[0];
    EXPECT_EQ(node["path"], "cell/%cellId/x");
    EXPECT_EQ(node["type"], "New");
    EXPECT_EQ(node["attr"], "createOnStandby");
}

// As the library does: no line makes directories above one that has a type already.
TEST(Tree, GivesTheTypeOfDirectoriesUpToTheNextPathWithAType) {
    Device device;
    device.preinit("P", "a/%cellId,D,createOnMount\na/%cellId/b/c,T\n");
    auto const a = nodesOf(device)[0];
    EXPECT_EQ(a["type"], "");
    EXPECT_EQ(a["children"][0]["type"], "D");
    EXPECT_EQ(a["children"][0]["children"][0]["type"], "Fen::Dir");
}

TEST(Tree, CallsANodeAsItsOwnDeclarationDoes) {
    Device device;
    device.preinit("P", "a/%x/b,T,createOnMount\na/%y,Fen::Dir,createOnMount\n");
    EXPECT_EQ(nodesOf(device)[0]["children"][0]["path"], "a/%y");
    EXPECT_EQ(nodesOf(device)[0]["children"][0]["children"][0]["path"], "a/%x/b");
}

TEST(Tree, ShowsHostileBytesAndEmptyNamesAsText) {
    Device device;
    device.preinit("P", "a//b\x1b[1m\xff,T\x07\n/x,T\n");
    EXPECT_EQ(tree(device).out, "PATH                  TYPE      ATTRIBUTE  AGENTS  READ  WRITE\n"
                                "\"\"                    Fen::Dir  -          -       -     -\n"
                                "`-- x                 T         -          -       -     -\n"
                                "a                     Fen::Dir  -          -       -     -\n"
                                "`-- \"\"                Fen::Dir  -          -       -     -\n"
                                "    `-- b\\x1b[1m\\xff  T\\x07     -          -       -     -\n"
                                "\n"
                                "5 paths (2 declared, 0 mounted)\n");
    EXPECT_EQ(nodesOf(device, {"a//b\x1b[1m\xff"})[0]["name"], "b\x1b[1m\ufffd");
}

TEST(Tree, AnswersInSpiteOfFaultsAndSaysThatThereAreSome) {
    Device device;
    device.preinit("P", "a,A\nno comma\n").profile("1", "agentName:A\nb,B,r\n");
    auto const outcome = tree(device);
    EXPECT_THAT(outcome.out, HasSubstr("\na     A     -          -       -     -\n"));
    EXPECT_EQ(outcome.err, "kelda: note: 2 faults in the files; see 'kelda check'\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Tree, CannotBeShownWithoutAFolder) {
    Device const device;
    auto const call = Words{"tree", "--preinit", device.preinitDir(), "--profiles", "gone"};
    auto const outcome = KeldaProgram().run(call);
    EXPECT_EQ(outcome.err, "kelda: Cannot open directory gone\n");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 2);
    auto const document = KeldaProgram().run(call + Words{"--format", "json"});
    EXPECT_EQ(document.json()["error"]["message"], "Cannot open directory gone");
    EXPECT_EQ(document.status, 2);
}

struct WrongCall {
    Words words;
    std::string message;
};

class EveryWrongTree : public testing::TestWithParam<WrongCall> {};

TEST_P(EveryWrongTree, SaysWhatIsWrong) {
    auto const outcome = KeldaProgram().run(Words{"tree"} + GetParam().words);
    EXPECT_EQ(outcome.err, GetParam().message + "\nTry 'kelda tree --help'.\n");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 2);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, EveryWrongTree,
    testing::Values(
        WrongCall{{""}, "kelda tree: PREFIX: must not be empty"},
        WrongCall{{"/a"},
                  "kelda tree: PREFIX: must not begin with '/', as paths are relative to "
                  "the root"},
        WrongCall{{"a", "b"}, "kelda tree: unexpected argument 'b'"},
        WrongCall{{"--depth", "0"},
                  "kelda tree: --depth: must be a number from 1 to 9999, not '0'"},
        WrongCall{{"--depth", "-1"},
                  "kelda tree: --depth: must be a number from 1 to 9999, not '-1'"},
        WrongCall{{"--depth", "two"},
                  "kelda tree: --depth: must be a number from 1 to 9999, not 'two'"},
        WrongCall{{"--depth", "99999999999999999999"},
                  "kelda tree: --depth: must be a number from 1 to 9999, not "
                  "'99999999999999999999'"},
        WrongCall{{"--depth", ""}, "kelda tree: --depth: must be a number from 1 to 9999, not ''"},
        WrongCall{{"--depth"}, "kelda tree: --depth: 1 required N missing"},
        WrongCall{{"--format", "yaml"},
                  "kelda tree: --format: must be table or json, not 'yaml'"}));

// The wildcard form of a path.
std::string withStars(std::string const& path) {
    std::string stars;
    for (std::size_t i = 0; i < path.size();) {
        stars += path[i] == '%' ? '*' : path[i];
        if (path[i++] == '%')
            while (i < path.size() &&
                   (std::isalnum(static_cast<unsigned char>(path[i])) != 0 || path[i] == '_'))
                ++i;
    }
    return stars;
}

void collect(Json const& nodes, std::map<std::string, Json>& byPath) {
    for (auto const& node : nodes) {
        EXPECT_TRUE(byPath.emplace(withStars(node["path"]), node).second) << node["path"];
        collect(node["children"], byPath);
    }
}

// kelda preinit, which asks the library, says the same of types and attributes.
TEST(TreeOfTheCorpus, HasThePathsAndTypesOfThePreinitFiles) {
    SKIP_WITHOUT_CORPUS();
    auto const corpus = support::corpusDir("openconfig");
    std::map<std::string, Json> nodes;
    collect(tree(corpus, {"--format", "json"}).json()["tree"], nodes);
    auto const preinit =
        KeldaProgram()
            .run({"preinit", "--format", "json", "--preinit", (corpus / "preinit").string()})
            .json();
    for (auto const& [path, type] : preinit["types"].items())
        EXPECT_EQ(nodes[path]["type"], type) << path;
    for (auto const& path : preinit["paths"]) {
        auto const& node = nodes[withStars(path["path"])];
        EXPECT_EQ(node["declared"], true) << path;
        EXPECT_EQ(node["config"], path["config"]) << path;
        if (node["path"] == path["path"]) {
            EXPECT_EQ(node["attr"], path["attr"]) << path;
        }
    }
    for (auto const& [path, node] : nodes)
        if (node["mounts"].empty() && !preinit["types"].contains(path)) {
            EXPECT_EQ(node["type"], "") << path;
        }
}

} // namespace
