// kelda diff as its users call it: two devices, what it tells of them, and how it ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

#include "support/KeldaProgram.h"

namespace {

namespace fs = std::filesystem;
using support::contentOf;
using support::expected;
using support::KeldaProgram;
using support::Outcome;
using support::Words;
using testing::HasSubstr;
using testing::Not;

// Copies of the example device, called from the folder that holds them: "old", "new", and more.
class Diff : public testing::Test {
  protected:
    Diff() {
        add("old");
        add("new");
    }
    void add(std::string const& device) const {
        fs::create_directories((folder_ / device).parent_path());
        for (auto const* const part : {"preinit", "profiles"}) {
            fs::create_directories(folder_ / device);
            fs::copy(support::exampleDevice() / part, folder_ / device / part,
                     fs::copy_options::recursive);
        }
    }
    // Replaces a text that stands once in a file.
    void edit(std::string const& file, std::string const& from, std::string const& to) const {
        auto text = contentOf(folder_ / file);
        auto const at = text.find(from);
        ASSERT_TRUE(at != std::string::npos && text.find(from, at + 1) == std::string::npos)
            << from;
        text.erase(at, from.size()).insert(at, to);
        folder_.write(file, text);
    }

    // An edit of each class.
    void editHarmlessly() const {
        edit("new/preinit/System", "sys/clock, Sys::Clock\n", "sys/clock, Sys::Clock\nsys/x,X\n");
    }
    void editNotably() const {
        edit("new/profiles/LedBlinker", "w\n", "w\nsys/identity, Sys::Identity, r\n");
    }
    void editRiskily() const { edit("new/profiles/shared.cell", "Health, r", "Health, rw"); }
    void editDangerously() const {
        edit("new/profiles/DefaultMountGroup", "sys/identity, Sys::Identity, r\n", "");
    }
    void editInEachClass() const {
        editHarmlessly();
        editNotably();
        editRiskily();
        editDangerously();
    }

    KeldaProgram program() const {
        KeldaProgram program;
        program.inFolder(folder_.path());
        return program;
    }
    Outcome diff(Words const& words = {}) const {
        return program().run(Words{"diff", "old", "new"} + words);
    }

    support::TemporaryDirectory folder_;
};

TEST_F(Diff, OfTheSameFilesIsNone) {
    auto const outcome = diff();
    EXPECT_EQ(outcome.out, "no differences in meaning\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Diff, OfLayoutAndCommentsIsNone) {
    edit("new/profiles/TimeSync", "sys/clock, Sys::Clock, w", "# moved\n\nsys/clock,Sys::Clock,w");
    EXPECT_EQ(diff({"--verbose", "--fail-on", "harmless"}).out, "no differences in meaning\n");
    EXPECT_EQ(diff({"--verbose", "--fail-on", "harmless"}).status, 0);
}

TEST_F(Diff, TellsPeopleWhatTheLinesDo) {
    editInEachClass();
    auto const outcome = diff();
    EXPECT_EQ(outcome.out, expected("diff-classes.txt"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Diff, TellsAReviewWhatTheLinesDo) {
    editInEachClass();
    EXPECT_EQ(diff({"--format", "markdown"}).out, expected("diff-classes.md"));
}

TEST_F(Diff, TellsProgramsWhatTheLinesDo) {
    editInEachClass();
    EXPECT_EQ(diff({"--format", "json"}).out, expected("diff-classes.json"));
}

TEST_F(Diff, TellsTheSameInALine) {
    editInEachClass();
    auto const outcome = diff({"--format", "jsonl"});
    EXPECT_EQ(outcome.json(), diff({"--format", "json"}).json());
    EXPECT_EQ(outcome.out.find('\n'), outcome.out.size() - 1);
}

// The record of a directory changes with the mounts below it.
TEST_F(Diff, TellsWhatFollowsOnlyIfAsked) {
    editRiskily();
    auto const few = diff();
    EXPECT_THAT(few.out, Not(HasSubstr("follows from other mounts")));
    EXPECT_THAT(few.out,
                HasSubstr("\n1 change left out that only follows from others; see --verbose\n"));
    auto const all = diff({"-v"});
    EXPECT_THAT(all.out, HasSubstr("(follows from other mounts)"));
    EXPECT_THAT(all.out, Not(HasSubstr("left out")));
    EXPECT_EQ(diff({"--verbose"}).out, all.out);
}

TEST_F(Diff, TellsOnlyWhatIsAtLeastOfAClass) {
    editInEachClass();
    std::size_t const all = diff({"--format", "json", "--verbose"}).json()["changes"].size();
    std::size_t before = all + 1;
    for (auto const* const severity : {"harmless", "notable", "risky", "dangerous"}) {
        auto const document = diff({"--format", "json", "--verbose", "--class", severity}).json();
        auto const told = document["changes"].size();
        EXPECT_LT(told, before) << severity;
        EXPECT_EQ(document["changes"].back()["class"], severity);
        EXPECT_EQ(document["leftOut"]["lesser"].get<std::size_t>() + told, all);
        before = told;
    }
}

TEST_F(Diff, TellsOnlyWhatIsForAnAgent) {
    editInEachClass();
    EXPECT_EQ(diff({"--agent", "LedBlinker"}).out,
              "1 notable change: agents get more than they had, and only read it\n"
              "\n"
              "  mount added: sys/identity, Sys::Identity\n"
              "    flags: r\n"
              "    for LedBlinker\n"
              "    new  new/profiles/LedBlinker:6  sys/identity, Sys::Identity, r\n"
              "\n"
              "1 change (1 notable) for 1 of 13 agents\n");
    EXPECT_THAT(diff({"--agent", "FanTray-7"}).out, HasSubstr("\n    for FanTray-%tray\n"));
    EXPECT_THAT(diff({"--agent", "Fan*", "--agent", "Port*"}).out,
                HasSubstr("\n    for 2 agents: FanTray-%tray and Port-%name$\n"));
    EXPECT_EQ(diff({"--agent", "LedBlinker", "--class", "risky"}).out,
              "no changes to show\n1 change of a lesser class left out\n");
}

TEST_F(Diff, FailsForAnAgentThatNeitherDeviceHas) {
    auto const outcome = diff({"--agent", "Nobody\x1b", "--agent", "TimeSync"});
    EXPECT_EQ(outcome.out, "no differences in meaning\n");
    EXPECT_EQ(outcome.err, "kelda: no agent 'Nobody\\x1b' is in old or new\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(diff({"--agent", "Nobody*"}).status, 0);
}

TEST_F(Diff, KnowsAnAgentThatOnlyOneDeviceHas) {
    fs::remove(folder_ / "new/profiles/TimeSync");
    auto const outcome = diff({"--agent", "TimeSync"});
    EXPECT_THAT(outcome.out, HasSubstr("agent removed\n    for TimeSync\n"));
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Diff, FailsOnAChangeOfAClassOrAbove) {
    std::vector<std::string> const classes{"harmless", "notable", "risky", "dangerous"};
    std::vector<std::function<void()>> const edits{
        [this] { editHarmlessly(); }, [this] { editNotably(); }, [this] { editRiskily(); },
        [this] { editDangerously(); }};
    for (auto const& severity : classes)
        EXPECT_EQ(diff({"--fail-on", severity}).status, 0) << severity;
    for (std::size_t worst = 0; worst < edits.size(); ++worst) {
        edits[worst]();
        EXPECT_EQ(diff().status, 0);
        for (std::size_t least = 0; least < classes.size(); ++least)
            EXPECT_EQ(diff({"--fail-on", classes[least]}).status, least <= worst ? 1 : 0)
                << classes[worst] << " against " << classes[least];
    }
}

// What is shown is one thing, what must not pass another.
TEST_F(Diff, FailsOnChangesThatAreNotShown) {
    editHarmlessly();
    auto const outcome = diff({"--class", "risky", "--fail-on", "harmless"});
    EXPECT_EQ(outcome.out, "no changes to show\n1 change of a lesser class left out\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(diff({"--agent", "TimeSync", "--fail-on", "harmless"}).status, 0);
}

TEST_F(Diff, NotesFaultsAndGoesOn) {
    edit("new/profiles/TimeSync", "Sys::Clock, w", "Sys::Clock, z");
    auto const outcome = diff();
    EXPECT_EQ(outcome.err, "kelda: note: 1 fault in the files of new; see 'kelda check'\n");
    EXPECT_THAT(outcome.out, HasSubstr("  agent stops at a fault\n"
                                       "    Encountered unknown mount flag z\n"
                                       "    for TimeSync\n"));
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(Diff, IsColouredOnATerminalOnlyAndNeverUnderNoColor) {
    editRiskily();
    Words const call{"diff", "old", "new"};
    EXPECT_THAT(program().runOnTerminal(call).out, HasSubstr("\x1b[1;33m1 risky change\x1b[0m: "));
    EXPECT_EQ(program().with("NO_COLOR", "1").runOnTerminal(call).out, diff().out);
    EXPECT_THAT(diff().out, Not(HasSubstr("\x1b")));
    for (auto const* const format : {"json", "jsonl", "markdown"})
        EXPECT_EQ(program().runOnTerminal(call + Words{"--format", format}).out,
                  diff({"--format", format}).out);
}

TEST_F(Diff, TakesImagesOfSystems) {
    fs::create_directories(folder_ / "image/usr/lib64");
    fs::rename(folder_ / "new/preinit", folder_ / "image/usr/lib64/preinit");
    fs::rename(folder_ / "new/profiles", folder_ / "image/usr/lib64/KeldaMountProfiles");
    auto const outcome = program().run({"diff", "old", "image", "--format", "json"});
    EXPECT_EQ(outcome.json()["new"]["profiles"], "image/usr/lib64/KeldaMountProfiles");
    EXPECT_EQ(outcome.json()["changes"].size(), 0U);
}

TEST_F(Diff, KnowsTheTokensOfANameFromEachOther) {
    edit("new/profiles/RouteLeak", "= %from, %to", "= %to, %from");
    EXPECT_THAT(diff().out, HasSubstr("  mount added: route/leak/%to-%from, Route::Leak\n"));
}

struct Wrong {
    Words words;
    std::string message;
};

TEST_F(Diff, WrongCallsSayWhatIsWrong) {
    std::string const help = "\nTry 'kelda diff --help'.\n";
    for (auto const& [words, message] : {
             Wrong{{}, "OLD is required" + help},
             {{"old"}, "NEW is required" + help},
             {{"", "new"}, "OLD: must not be empty" + help},
             {{"old", "new", "more"}, "unexpected argument 'more'" + help},
             {{"old", "new", "--format", "table"},
              "--format: must be text, json, jsonl or markdown, not 'table'" + help},
             {{"old", "new", "--fail-on", "bad"},
              "--fail-on: must be harmless, notable, risky or dangerous, not 'bad'" + help},
             {{"old", "new", "--class", "Risky"},
              "--class: must be harmless, notable, risky or dangerous, not 'Risky'" + help},
             {{"old", "new", "--agent", ""}, "--agent: must not be empty" + help},
             {{"old", "new", "--device", ""}, "--device: must not be empty" + help},
             {{"old", "new", "--jobs", "2"}, "--jobs requires --device or --devices" + help},
             {{"old", "nowhere"}, "Cannot open directory nowhere\n"},
             {{"old/profiles/TimeSync", "new"}, "old/profiles/TimeSync is no folder\n"},
             {{"old", "new/preinit"},
              "new/preinit is no device: it has neither preinit and profiles nor "
              "usr/lib64/preinit and usr/lib64/KeldaMountProfiles\n"},
             {{"no\x1bwhere", "new"}, "Cannot open directory no\\x1bwhere\n"},
         }) {
        auto const outcome = program().run(Words{"diff"} + words);
        EXPECT_EQ(outcome.err, "kelda diff: " + message);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 2);
    }
}

TEST_F(Diff, SaysSoInADocumentWhereOneIsExpected) {
    fs::remove_all(folder_ / "new/profiles");
    auto const outcome = diff({"--format", "json"});
    EXPECT_EQ(outcome.out, "{\n"
                           "  \"schemaVersion\": 1,\n"
                           "  \"error\": {\n"
                           "    \"message\": \"Cannot open directory new/profiles\"\n"
                           "  }\n"
                           "}\n");
    EXPECT_EQ(outcome.err, "kelda diff: Cannot open directory new/profiles\n");
    EXPECT_EQ(outcome.status, 2);
    std::string const line = "{\"schemaVersion\": 1,\"error\": {\"message\": \"";
    EXPECT_EQ(diff({"--format", "jsonl"}).out, line + "Cannot open directory new/profiles\"}}\n");
    EXPECT_EQ(diff({"--format=jsonl", "--loud"}).out, line + "unexpected argument '--loud'\"}}\n");
    EXPECT_EQ(diff({"--format=json", "--loud"}).json()["error"]["message"],
              "unexpected argument '--loud'");
}

TEST_F(Diff, OfBytesThatAreNoTextIsFitForEveryReader) {
    folder_.write("new/preinit/\xff", "a\x1b[31m|`<b>\xff,T\n");
    folder_.write("new/profiles/@x`|", "agentName: A\x1b|`\xff\na\x1b[31m|`<b>\xff,T,rw\n");
    for (auto const* const format : {"text", "markdown"}) {
        auto const out = diff({"--format", format}).out;
        EXPECT_TRUE(std::none_of(out.begin(), out.end(), [](unsigned char c) {
            return (c < 0x20 && c != '\n') || c >= 0x7f;
        })) << out;
    }
    auto const text = diff().out;
    EXPECT_THAT(text, HasSubstr("a\\x1b[31m|`<b>\\xff"));
    EXPECT_THAT(diff({"--format", "markdown"}).out, HasSubstr("`a\\x1b[31m`&#124;&#96;`<b>\\xff`"));
    EXPECT_EQ(diff({"--format", "json"}).status, 0);
    EXPECT_THAT(diff({"--format", "json"}).json().dump(), HasSubstr("<b>\ufffd"));
}

class DiffOfMany : public Diff {
  protected:
    DiffOfMany() {
        for (auto const* const device : {"was/rack1", "was/rack2", "is/rack1", "is/rack2"})
            add(device);
        edit("is/rack2/profiles/shared.cell", "Health, r", "Health, rw");
    }
    Outcome diffs(Words const& words) const {
        return program().run(Words{"diff", "was", "is"} + words);
    }
    static inline Words const both{"--device", "rack1", "--device", "rack2"};
};

TEST_F(DiffOfMany, HasAHeadingForEach) {
    auto const outcome = diffs(both);
    EXPECT_EQ(outcome.out,
              "Device rack1\n"
              "no differences in meaning\n"
              "\n"
              "Device rack2\n"
              "1 risky change: agents may act otherwise, or write what they did not write\n"
              "\n"
              "  flags widened: cell/1/health\n"
              "    r -> rw (+w)\n"
              "    for Routing-%table\n"
              "    old  was/rack2/profiles/shared.cell:2  %cellPath/health, Cell::Health, r\n"
              "    new  is/rack2/profiles/shared.cell:2   %cellPath/health, Cell::Health, rw\n"
              "         included by is/rack2/profiles/Routing:22\n"
              "\n"
              "1 change (1 risky) for 1 of 13 agents\n"
              "1 change left out that only follows from others; see --verbose\n"
              "\n"
              "2 devices, 1 with changes (1 risky)\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(DiffOfMany, MayBeListedInAFile) {
    folder_.write("racks", "# all\nrack1\n\nrack2\n");
    for (auto const* const format : {"text", "json", "jsonl", "markdown"})
        EXPECT_EQ(diffs({"--devices", "racks", "--format", format}).out,
                  diffs(both + Words{"--format", format}).out);
}

TEST_F(DiffOfMany, IsOneDocumentOrOneForEach) {
    auto const document = diffs(both + Words{"--format", "json"}).json();
    EXPECT_EQ(document["schemaVersion"], 1);
    ASSERT_EQ(document["devices"].size(), 2U);
    EXPECT_EQ(document["devices"][0]["device"], "rack1");
    EXPECT_EQ(document["devices"][1]["device"], "rack2");
    EXPECT_EQ(document["devices"][1]["changes"].size(), 1U);
    auto const lines = diffs(both + Words{"--format", "jsonl"}).out;
    auto const end = lines.find('\n');
    EXPECT_EQ(nlohmann::ordered_json::parse(lines.substr(0, end)), document["devices"][0]);
    EXPECT_EQ(nlohmann::ordered_json::parse(lines.substr(end)), document["devices"][1]);
}

TEST_F(DiffOfMany, HasAHeadingForEachInMarkdown) {
    auto const out = diffs(both + Words{"--format", "markdown"}).out;
    EXPECT_TRUE(out.starts_with("### `rack1`\n\n**no differences in meaning**\n\n### `rack2`\n\n"
                                "**1 change (1 risky) for 1 of 13 agents**\n"))
        << out;
}

TEST_F(DiffOfMany, FailsIfOneDoes) {
    EXPECT_EQ(diffs(both + Words{"--fail-on", "risky"}).status, 1);
    EXPECT_EQ(diffs(both + Words{"--fail-on", "dangerous"}).status, 0);
    EXPECT_EQ(diffs({"--device", "rack1", "--fail-on", "harmless"}).status, 0);
}

TEST_F(DiffOfMany, GoesOnWhereOneCannotBeCompared) {
    Words const devices = Words{"--device", "rack0"} + both + Words{"--fail-on", "risky"};
    auto const outcome = diffs(devices);
    EXPECT_EQ(outcome.err, "kelda: rack0: Cannot open directory was/rack0\n");
    EXPECT_TRUE(outcome.out.starts_with("Device rack1\n")) << outcome.out;
    EXPECT_TRUE(outcome.out.ends_with("\n3 devices, 1 with changes (1 risky), 1 not compared\n"))
        << outcome.out;
    EXPECT_EQ(outcome.status, 2);
    auto const document = diffs(devices + Words{"--format", "json"}).json();
    EXPECT_EQ(document["devices"][0].dump(),
              R"({"device":"rack0","schemaVersion":1,)"
              R"("error":{"message":"Cannot open directory was/rack0"}})");
    EXPECT_EQ(document["devices"].size(), 3U);
}

} // namespace
