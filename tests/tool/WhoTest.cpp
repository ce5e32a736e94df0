// kelda who: the example device with everything that is printed, small devices, wrong calls.
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
using testing::ElementsAre;
using testing::HasSubstr;

support::Outcome whoOfExample(Words const& words) {
    return KeldaProgram()
        .inFolder(support::exampleDevice())
        .run(Words{"who", "--preinit", "preinit", "--profiles", "profiles"} + words);
}

struct Kept {
    Words words;
    std::string file;
};

class EveryKeptWho : public testing::TestWithParam<Kept> {};

TEST_P(EveryKeptWho, PrintsTheKeptText) {
    auto const outcome = whoOfExample(GetParam().words);
    EXPECT_EQ(outcome.out, expected(GetParam().file));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

INSTANTIATE_TEST_SUITE_P(
    ExampleDevice, EveryKeptWho,
    testing::Values(Kept{{"sys/clock"}, "who-clock.txt"},
                    Kept{{"sys/clock", "--flag", "w"}, "who-clock-writers.txt"},
                    Kept{{"sys/clock", "--flag", "w", "--format", "json"},
                         "who-clock-writers.json"},
                    Kept{{"hardware/**", "--type", "Fan::*"}, "who-fan.txt"},
                    Kept{{"port/*/counters", "--format", "json"}, "who-counters.json"}));

// A device in a folder that the program is called from.
class Who : public testing::Test {
  protected:
    Who() { device.preinit("P", "a/b,A\na/c,B\nfan/%slot/state,F::State,createOnMount\n"); }

    support::Outcome who(Words const& words) const {
        return KeldaProgram()
            .inFolder(device.directory().path())
            .run(Words{"who", "--preinit", "preinit", "--profiles", "profiles"} + words);
    }
    Json mounts(Words const& words) const {
        return who(words + Words{"--format", "json"}).json()["mounts"];
    }
    // "agent path" of each row.
    std::vector<std::string> rows(Words const& words) const {
        std::vector<std::string> rows;
        for (auto const& mount : mounts(words))
            rows.push_back(mount["agent"].get<std::string>() + " " +
                           mount["path"].get<std::string>());
        return rows;
    }

    Device device;
};

TEST_F(Who, ShowsARowForEachPathAndAgentWithTheFirstLine) {
    device
        .profile("1", "agentName:B-%x\n"
                      "a/b,A,r\n"
                      "fan/%x/state,F::State,rw\n"
                      "a/b,A,w\n")
        .profile("2", "agentName:A\n"
                      "Include:shared\n")
        .profile("shared", "\na/b,A,i\n");
    auto const outcome = who({"**"});
    EXPECT_EQ(outcome.out, "AGENT  PATH         TYPE      FLAGS  PLACE\n"
                           "A      a/b          A         i      profiles/shared:2\n"
                           "B-%x   a/b          A         rw     profiles/1:2\n"
                           "B-%x   fan/*/state  F::State  rw     profiles/1:3\n"
                           "\n"
                           "3 mounts: 2 paths by 2 agents\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Who, TellsAllPlacesInADocument) {
    device
        .profile("1", "agentName:A\n"
                      "\n"
                      "Include:shared\n"
                      "a/b,A,w\n")
        .profile("shared", "a/b,A,r\n");
    EXPECT_EQ(who({"a/b", "--format", "json"}).out, R"({
  "path": "a/b",
  "flag": "",
  "type": "",
  "mounts": [
    {
      "agent": "A",
      "path": "a/b",
      "type": "A",
      "flags": "rw",
      "places": [
        {
          "file": "profiles/shared",
          "line": 1,
          "flags": "r",
          "includedFrom": [
            {
              "file": "profiles/1",
              "line": 3
            }
          ]
        },
        {
          "file": "profiles/1",
          "line": 4,
          "flags": "w",
          "includedFrom": []
        }
      ]
    }
  ]
}
)");
}

TEST_F(Who, FindsTheFirstLineThatGivesAFlag) {
    device.profile("1", "agentName:A\na/b,A,r\na/b,A,i\na/b,A,w\n");
    EXPECT_THAT(who({"a/b"}).out, HasSubstr("  rwi    profiles/1:2\n"));
    EXPECT_THAT(who({"a/b", "--flag", "w"}).out, HasSubstr("  rwi    profiles/1:4\n"));
    EXPECT_THAT(who({"a/b", "--flag", "wi"}).out, HasSubstr("  rwi    profiles/1:3\n"));
}

TEST_F(Who, AsksForAllOfTheFlags) {
    device.profile("1", "agentName:A\na/b,A,r\n").profile("2", "agentName:B\na/b,A,rw\n");
    EXPECT_THAT(rows({"a/b", "--flag", "r"}), ElementsAre("A a/b", "B a/b"));
    EXPECT_THAT(rows({"a/b", "--flag", "wr"}), ElementsAre("B a/b"));
    EXPECT_THAT(rows({"a/b", "--flag", "y"}), ElementsAre("A a/b", "B a/b"));
    EXPECT_THAT(rows({"a/b", "--flag", "rc"}), ElementsAre());
}

TEST_F(Who, AsksForATypeOrAPatternOfTypes) {
    device.profile("1", "agentName:A\na/b,A,r\na/c,B,r\nfan/%cellId/state,F,r\n");
    EXPECT_THAT(rows({"**", "--type", "A"}), ElementsAre("A a/b"));
    EXPECT_THAT(rows({"a/*", "--type", "*"}), ElementsAre("A a/b", "A a/c"));
    for (auto const* const type : {"F::*", "*::State", "*:*", "F*e", "F::State", "**", "F::State*"})
        EXPECT_THAT(rows({"fan/**", "--type", type}), testing::SizeIs(1)) << type;
    for (auto const* const type : {"F", "F::", "*::*::*", "State", "*x", "F::Stat?", "f::State"})
        EXPECT_THAT(rows({"fan/**", "--type", type}), ElementsAre()) << type;
}

TEST_F(Who, KnowsThatTokensTakeAnyValue) {
    device.profile("1", "agentName:Fan-%slot\nfan/%slot/state,F::State,r\n");
    for (auto const* const path : {"fan/3/state", "fan/*/state", "fan/%slot/state", "fan/3*/st*",
                                   "**/state/", "fan/?/state"})
        EXPECT_THAT(rows({path}), ElementsAre("Fan-%slot fan/*/state")) << path;
    EXPECT_THAT(rows({"fan/state"}), ElementsAre());
    EXPECT_THAT(rows({"fan/3/4/state"}), ElementsAre());
}

TEST_F(Who, CountsDefaultGroupsForAgentsThatLoadThem) {
    device.profile("DefaultMountGroup", "a/b,A,r\n")
        .profile("1", "agentName:A\n")
        .profile("2", "agentName:B\nnoDefaultMountGroup\n");
    EXPECT_THAT(rows({"a/b"}), ElementsAre("A a/b"));
}

TEST_F(Who, LeavesActiveVariantsOut) {
    device.profile("1", "agentName:A-%x\nactiveMount\nmatchActiveName\na/b,A,r\n");
    EXPECT_THAT(rows({"a/b"}), ElementsAre("A-%x a/b"));
}

// To the parser, each piece of a line that is longer than its buffer is a line.
TEST_F(Who, CountsLinesAsAnEditorDoes) {
    device.profile("1", "agentName:A\n#" + std::string(3000, 'x') + "\na/b,A,r\n");
    EXPECT_THAT(who({"a/b"}).out, HasSubstr("profiles/1:3\n"));
}

// Nobody.

struct Nobody {
    Words words;
    std::string message;
};

class EveryNobody : public Who, public testing::WithParamInterface<Nobody> {};

TEST_P(EveryNobody, IsToldOnStandardError) {
    device.profile("1", "agentName:A\na/b,A,r\nfan/%cellId/state,F,r\nsys/clock,C,r\n")
        .profile("2", "agentName:B\na/b,A,r\nx/%any/y,X,w\n")
        .preinit("Q", "\nsys/clock,C\nsys/unused,C\nx/%y/y,X,createOnMount\n");
    auto const outcome = who(GetParam().words);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.substr(0, outcome.err.find('\n')), GetParam().message);
    EXPECT_EQ(outcome.status, 1);
    auto const document = who(GetParam().words + Words{"--format", "json"});
    EXPECT_EQ(document.json()["mounts"], Json::array());
    EXPECT_EQ(document.err, outcome.err);
    EXPECT_EQ(document.status, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Messages, EveryNobody,
    testing::Values(
        Nobody{{"something/else"}, "kelda: no agent mounts 'something/else'"},
        Nobody{{"else*"}, "kelda: no agent mounts a path that matches 'else*'"},
        Nobody{{"sys/Clock"}, "kelda: no agent mounts 'sys/Clock'; did you mean 'sys/clock'?"},
        Nobody{{"SYS/CLOCK/"}, "kelda: no agent mounts 'SYS/CLOCK/'; did you mean 'sys/clock'?"},
        Nobody{{"sys/clok"}, "kelda: no agent mounts 'sys/clok'; did you mean 'sys/clock'?"},
        Nobody{{"sys/clocck"}, "kelda: no agent mounts 'sys/clocck'; did you mean 'sys/clock'?"},
        Nobody{{"sys/cl0ck"}, "kelda: no agent mounts 'sys/cl0ck'; did you mean 'sys/clock'?"},
        Nobody{{"sys/colck"}, "kelda: no agent mounts 'sys/colck'; did you mean 'sys/clock'?"},
        Nobody{{"sys/cokc"}, "kelda: no agent mounts 'sys/cokc'"},
        Nobody{{"sys/unused"}, "kelda: no agent mounts 'sys/unused', which preinit/Q:3 declares"},
        Nobody{{"a"}, "kelda: no agent mounts 'a'; below it, paths are mounted: see 'a/**'"},
        Nobody{{"x/"}, "kelda: no agent mounts 'x/'; below it, paths are mounted: see 'x/**'"},
        Nobody{{"sys/clock", "--flag", "w"},
               "kelda: no agent mounts 'sys/clock' with the flag 'w'; there is 1 mount without "
               "--flag"},
        Nobody{{"a/*", "--flag", "rw", "--type", "A"},
               "kelda: no agent mounts a path that matches 'a/*' with the flags 'rw' and the type "
               "'A'; there are 2 mounts without --flag and --type"},
        Nobody{{"a/b", "--type", "B"},
               "kelda: no agent mounts 'a/b' with the type 'B'; there are 2 mounts without "
               "--type"},
        Nobody{{"no\x1b[31m/\xff"}, "kelda: no agent mounts 'no\\x1b[31m/\\xff'"}));

TEST_F(Who, SuggestsThePathWithTheValuesThatWereAskedFor) {
    device.profile("1", "agentName:Fan-%slot\nfan/%slot/state,F::State,r\n");
    EXPECT_EQ(who({"fan/3/stat"}).err,
              "kelda: no agent mounts 'fan/3/stat'; did you mean 'fan/3/state'?\n");
}

// Faults, hostile bytes.

TEST_F(Who, AnswersInSpiteOfFaultsAndSaysThatThereAreSome) {
    device.profile("1", "agentName:A\na/b,A,r\nno keyword\na/c,B,?\n");
    auto const outcome = who({"a/*"});
    EXPECT_THAT(outcome.out, HasSubstr("\nA      a/b   A     r      profiles/1:2\n"));
    EXPECT_EQ(outcome.err, "kelda: note: 2 faults in the files; see 'kelda check'\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Who, ShowsHostileBytesAsText) {
    device.preinit("P", "a\x1b[31m\xff,T\n").profile("\x1b", "agentName:\x07\na\x1b[31m\xff,T,r\n");
    EXPECT_EQ(who({"*"}).out, "AGENT  PATH           TYPE  FLAGS  PLACE\n"
                              "\\x07   a\\x1b[31m\\xff  T     r      profiles/\\x1b:2\n"
                              "\n"
                              "1 mount: 1 path by 1 agent\n");
    EXPECT_EQ(rows({"a\x1b[31m?"}), Words{"\a a\x1b[31m\ufffd"});
}

TEST_F(Who, CannotAnswerWithoutAFolder) {
    for (Words const& folders : {Words{"--preinit", "gone", "--profiles", "profiles"},
                                 Words{"--preinit", "preinit", "--profiles", "gone"}}) {
        KeldaProgram const program = KeldaProgram().inFolder(device.directory().path());
        auto const outcome = program.run(Words{"who", "a"} + folders);
        EXPECT_EQ(outcome.err, "kelda: Cannot open directory gone\n");
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 2);
        auto const document = program.run(Words{"who", "a", "--format", "json"} + folders);
        EXPECT_EQ(document.json()["error"]["message"], "Cannot open directory gone");
        EXPECT_EQ(document.status, 2);
    }
}

struct WrongCall {
    Words words;
    std::string message;
};

class EveryWrongWho : public testing::TestWithParam<WrongCall> {};

TEST_P(EveryWrongWho, SaysWhatIsWrong) {
    auto const outcome = KeldaProgram().run(Words{"who"} + GetParam().words);
    EXPECT_EQ(outcome.err, GetParam().message + "\nTry 'kelda who --help'.\n");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.status, 2);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, EveryWrongWho,
    testing::Values(
        WrongCall{{}, "kelda who: PATH is required"},
        WrongCall{{""}, "kelda who: PATH: must not be empty"},
        WrongCall{{"/sys"},
                  "kelda who: PATH: must not begin with '/', as paths are relative to "
                  "the root"},
        WrongCall{{"a", "b"}, "kelda who: unexpected argument 'b'"},
        WrongCall{{"a", "--flag", ""}, "kelda who: --flag: must not be empty"},
        WrongCall{{"a", "--flag", "rx"},
                  "kelda who: --flag: must be letters of rwcitfSDdOApKLnNECey, not 'rx'"},
        WrongCall{{"a", "--flag", "r,w"},
                  "kelda who: --flag: must be letters of rwcitfSDdOApKLnNECey, not 'r,w'"},
        WrongCall{{"a", "--flag", "\xc3\xa9\x1b"},
                  "kelda who: --flag: must be letters of rwcitfSDdOApKLnNECey, not "
                  "'\xc3\xa9\\x1b'"},
        WrongCall{{"a", "--flag"}, "kelda who: --flag: 1 required LETTERS missing"},
        WrongCall{{"a", "--type", ""}, "kelda who: --type: must not be empty"},
        WrongCall{{"a", "--type"}, "kelda who: --type: 1 required TYPE missing"},
        WrongCall{{"a", "--format", "text"},
                  "kelda who: --format: must be table, json or jsonl, not 'text'"},
        WrongCall{{"a", "--loud"}, "kelda who: unexpected argument '--loud'"}));

// The mounts that kelda mounts tells of an agent, which reads the files as the agent does. Nothing
// for agents whose paths and flags are more than their lines': with tokens, sub-agents or
// active mounts.
std::map<std::string, std::string> mountsOfPlainAgent(std::string const& agent) {
    auto const own = KeldaProgram()
                         .run(Words{"mounts", agent, "--override", "*", "--format", "json"} +
                              support::foldersOf(support::corpusDir("openconfig")))
                         .json();
    std::map<std::string, std::string> flags;
    if (agent.find('%') == std::string::npos && own["subAgents"].empty() &&
        !own["activeMount"].get<bool>())
        for (auto const& mount : own["mounts"])
            flags[mount["path"]] = mount["flags"];
    return flags;
}

TEST(WhoOfTheCorpus, GivesEachAgentTheMountsThatItGetsAlone) {
    SKIP_WITHOUT_CORPUS();
    auto const all = KeldaProgram()
                         .run(Words{"who", "**", "--format", "json"} +
                              support::foldersOf(support::corpusDir("openconfig")))
                         .json();
    std::map<std::string, std::map<std::string, std::string>> flagsOf;
    for (auto const& mount : all["mounts"])
        flagsOf[mount["agent"]][mount["path"]] = mount["flags"];
    int compared = 0;
    for (auto const& [agent, flags] : flagsOf)
        if (auto const own = mountsOfPlainAgent(agent); !own.empty()) {
            EXPECT_EQ(flags, own) << agent;
            ++compared;
        }
    EXPECT_GT(compared, 50);
}

} // namespace
