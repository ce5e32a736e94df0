// kelda explain: the example device, small devices, and calls that are wrong.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using support::Device;
using support::KeldaProgram;
using support::Words;
using testing::HasSubstr;
using testing::Not;

Words const folders{"--preinit", "preinit", "--profiles", "profiles"};

support::Outcome explain(std::filesystem::path const& folder, Words const& words) {
    return KeldaProgram().inFolder(folder).run(Words{"explain"} + words + folders);
}

support::Outcome explain(Device const& device, Words const& words) {
    return explain(device.directory().path(), words);
}

struct Sample {
    Words words;
    std::string kept; // file with the expected text
};

class ExplainedSample : public testing::TestWithParam<Sample> {};

TEST_P(ExplainedSample, IsTheKeptText) {
    auto const outcome = explain(support::exampleDevice(), GetParam().words);
    EXPECT_EQ(outcome.out, support::expected(GetParam().kept));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

INSTANTIATE_TEST_SUITE_P(
    ExampleDevice, ExplainedSample,
    testing::Values(Sample{{"sys/clock"}, "explain-clock.txt"},
                    Sample{{"route/table"}, "explain-directory.txt"},
                    Sample{{"media/part", "--agent", "Port-Ethernet-3-1"}, "explain-alias.txt"},
                    Sample{{"route/table/red", "--agent", "Routing-red"}, "explain-active.txt"},
                    Sample{{"cell/*/status", "--agent", "Routing-Active-red", "--format", "json"},
                           "explain-include.json"}));

TEST(Explain, ADeclaredPathThatNobodyMountsIsAnAnswer) {
    Device device;
    device.preinit("P", "a/b,T\n");
    auto const outcome = explain(device, {"a"});
    EXPECT_EQ(outcome.out, "a\n"
                           "\n"
                           "Declaration\n"
                           "  a is a Fen::Dir\n"
                           "    preinit/P:1: makes it a directory, as it lies below\n"
                           "      a/b,T\n"
                           "\n"
                           "Agents\n"
                           "  No agent mounts it.\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Explain, APathThatNobodyKnowsIsAFailureThatShowsWhatIsClose) {
    Device device;
    device.preinit("P", "sys/clock,T\n");
    auto const outcome = explain(device, {"sys/clok"});
    EXPECT_THAT(outcome.out, HasSubstr("  No preinit line declares it.\n"));
    EXPECT_THAT(outcome.out, HasSubstr("\nClose to it\n"
                                       "  preinit/P:1: spells a name otherwise: sys/clock\n"
                                       "    sys/clock,T\n"));
    EXPECT_EQ(outcome.status, 1);
}

TEST(Explain, AFaultThatEndsTheLoadOfTheAgentIsAFailure) {
    Device device;
    device.preinit("P", "a,T\n")
        .profile("A", "agentName:A\na,T,w\nfoo\n")
        .profile("B", "agentName:B\n");
    auto const outcome = explain(device, {"a", "--agent", "A"});
    EXPECT_THAT(outcome.out,
                HasSubstr("\nFault\n"
                          "  profiles/A:3: syntax error: 'foo'\n"
                          "    foo\n"
                          "  The agent does not start. The rest is told as if it went on.\n"));
    EXPECT_THAT(outcome.out, HasSubstr("    profiles/A:2: w\n"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(explain(device, {"a", "--agent", "B"}).status, 0);
    EXPECT_EQ(explain(device, {"a"}).status, 0);
}

TEST(Explain, AnAgentWithoutAProfileIsToldOfNearOnes) {
    Device device;
    device.preinit("P", "a,T\n").profile("A", "agentName:Lamp-%s\na,T,w\n");
    auto const outcome = explain(device, {"a", "--agent", "Lmap-1"});
    EXPECT_THAT(outcome.out, HasSubstr("\nAgent Lmap-1\n"
                                       "  No mount profile is for it.\n"
                                       "  There are profiles for Lamp-%s.\n"
                                       "\n"
                                       "Close to it\n"
                                       "  profiles/A:2: is for Lamp-%s\n"
                                       "    a,T,w\n"));
    auto const document = explain(device, {"a", "--agent", "Lmap-1", "--format", "json"}).json();
    EXPECT_EQ(document["foundMountProfile"], false);
    EXPECT_EQ(document["nearAgents"], nlohmann::ordered_json({"Lamp-%s"}));
    EXPECT_EQ(document["agents"].size(), 0U);
}

TEST(Explain, LongListsAreCutForPeopleOnly) {
    Device device;
    std::string preinits;
    std::string mounts = "agentName:A\nactiveMount\n";
    for (char c = 'a'; c < 'h'; ++c) {
        preinits += std::string("d/") + c + ",T\n";
        mounts += std::string("d/") + c + ",T,r\n";
    }
    device.preinit("P", preinits).profile("A", mounts);
    EXPECT_THAT(explain(device, {"d"}).out, HasSubstr("      d/e, r\n      and 2 more\n"));
    auto const document = explain(device, {"d", "--format", "json"}).json();
    EXPECT_EQ(document["agents"][0]["mounts"][0]["directory"]["below"].size(), 7U);
}

TEST(Explain, EveryReasonHasAText) {
    Device device;
    device.preinit("P", "a/name,T\na/%v,T,createOnMount\n")
        .profile("A", "agentName:A-%s\nactiveMount\nnoDefaultMountGroup\n"
                      "/a/name,T,r\na/Name,T,r\na/nmae,T,r\na/name,T,z\nalias:%x=1\na/%x,T,r\n")
        .profile("B", "agentName:B\na/name,T,r\n")
        .profile("C", "agentName:A-%s\nactiveMount\nmatchActiveName\nnoDefaultMountGroup\n")
        .profile("DefaultMountGroup", "a/name,T,r\n")
        .profile("Lost", "a/name,T,r\n");
    auto const text = explain(device, {"a/name", "--agent", "A-1"}).out;
    for (char const* line :
         {"  profiles/A:4: has other slashes: /a/name; for A-%s\n",
          "  profiles/A:5: has letters in another case: a/Name; for A-%s\n",
          "  profiles/A:6: spells a name otherwise: a/nmae; for A-%s\n",
          "  profiles/B:2: is for B\n",
          "  profiles/A:7: is refused: Encountered unknown mount flag z\n",
          "  profiles/A:9: stands for a/1: %x is \"1\", an alias for 1 (profiles/A:8)\n",
          "  profiles/DefaultMountGroup:1: is not for A-1, which says noDefaultMountGroup "
          "(profiles/A:3)\n",
          "  profiles/Lost:1: is in a file that no agent reads: it has no agent-name line, and no "
          "Include: line names it\n"})
        EXPECT_THAT(text, HasSubstr(line));
    EXPECT_THAT(explain(device, {"a/name", "--agent", "A-Active-1"}).out,
                HasSubstr("  profiles/A:7: is refused: Encountered unknown mount flag z; for"));
}

TEST(Explain, ShowsNothingUnescaped) {
    Device device;
    device.preinit("P\x1b", "a\x1b,T\xff\x1b\n")
        .profile("A\x1b", "agentName:A\x1b\na\x1b,T,r\nMountGroup:g\x1b\na\x1b,T,w\n"
                          "A\x1b,T,w\n");
    for (Words const& more : {Words{}, Words{"--agent", "A\x1b"}, Words{"--agent", "B\x1b"}}) {
        auto const outcome = explain(device, Words{"a\x1b"} + more);
        EXPECT_THAT(outcome.out, Not(HasSubstr("\x1b")));
        EXPECT_THAT(outcome.out, HasSubstr("preinit/P\\x1b:1: gives the type"));
        EXPECT_THAT(outcome.out, HasSubstr("profiles/A\\x1b:"));
        auto const json = explain(device, Words{"a\x1b", "--format", "json"} + more);
        EXPECT_EQ(json.json()["declarations"][0]["type"], "T\ufffd\x1b");
    }
}

TEST(Explain, NamesTheFolderThatCannotBeRead) {
    auto const call = [](Words const& more) {
        return KeldaProgram().run(Words{"explain", "a", "--preinit", "/nonexistent"} + more);
    };
    EXPECT_EQ(call({}).err, "kelda: Cannot open directory /nonexistent\n");
    EXPECT_EQ(call({}).status, 2);
    EXPECT_EQ(call({"--format", "json"}).json()["error"]["message"],
              "Cannot open directory /nonexistent");
    EXPECT_EQ(call({"--format", "json"}).status, 2);
}

TEST(ExplainRule, PrintsThePageOrTheList) {
    auto const page = KeldaProgram().run({"explain", "--rule", "path-without-type"});
    EXPECT_THAT(page.out, HasSubstr("path-without-type"));
    EXPECT_EQ(page.status, 0);
    auto const list = KeldaProgram().run({"explain", "--rule", "list"});
    EXPECT_THAT(list.out, HasSubstr("alias-unused"));
    EXPECT_EQ(list.status, 0);
    EXPECT_NE(page.out, list.out);
}

struct WrongCall {
    Words words;
    std::string message;
};

class WronglyExplained : public testing::TestWithParam<WrongCall> {};

TEST_P(WronglyExplained, SaysWhy) {
    auto const outcome = KeldaProgram().run(Words{"explain"} + GetParam().words);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "kelda explain: " + GetParam().message + "\nTry 'kelda explain --help'.\n");
    EXPECT_EQ(outcome.status, 2);
}

INSTANTIATE_TEST_SUITE_P(
    Explain, WronglyExplained,
    testing::Values(
        WrongCall{{}, "PATH is required"}, WrongCall{{"--agent", "A"}, "PATH is required"},
        WrongCall{{"a", "--rule", "list"}, "PATH excludes --rule"},
        WrongCall{{"a", "--agent", ""}, "--agent: must not be empty"},
        WrongCall{{"a", "--format", "table"}, "--format: must be text or json, not 'table'"},
        WrongCall{{"--rule", "lst"}, "--rule: there is no rule 'lst'; did you mean 'list'?"},
        WrongCall{{"--rule", "path-withut-type"},
                  "--rule: there is no rule 'path-withut-type'; did you mean "
                  "'path-without-type'?"},
        WrongCall{{"--rule", "zzzzzzzzzzzz"},
                  "--rule: there is no rule 'zzzzzzzzzzzz'; '--rule list' shows all"}));

} // namespace
