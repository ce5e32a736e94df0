// Many devices in one call: the same output whatever the number of jobs, broken devices among
// others, and the exit status of all together.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include <sys/stat.h>

#include "Fleet.h"
#include "support/Corpus.h"
#include "support/RandomFiles.h"

namespace {

namespace fs = std::filesystem;
using support::Fleet;
using Json = nlohmann::ordered_json;
using support::KeldaProgram;
using support::Outcome;
using support::Words;
using testing::HasSubstr;

std::string bigPreinit(int lines) {
    std::string text;
    for (int i = 0; i < lines; ++i)
        text += "big/" + std::to_string(i) + ",Some::Type\n";
    return text;
}

void addBroken(Fleet& fleet) {
    fleet.named("nowhere");
    fleet.folder().makeDirectory("empty");
    fleet.named("empty");
    fleet.folder().write("file", "");
    fleet.named("file").named("device 1").named("bytes \xff\x1b[31m");
    fleet.folder().makeDirectory("half/preinit");
    fleet.named("half");
}

// All cases of the corpus of broken files, where it is at hand.
void addCorpus(Fleet& fleet) {
    if (!support::corpusIsPresent())
        return;
    auto const broken = support::corpusDir("broken");
    auto rows = support::significantLines(broken / "INDEX.csv");
    for (std::size_t i = 1; i < rows.size(); ++i) { // behind the titles
        auto const name = support::fieldsOf(rows[i]).at(0);
        if (name.starts_with("preinit"))
            fleet.addCopy(name, broken / name, "");
        else
            fleet.addCopy(name, broken / "base/preinit", broken / name);
    }
}

// Devices of many sizes and kinds.
Fleet const& mixedFleet() {
    static Fleet fleet;
    if (fleet.size() > 0)
        return fleet;
    fleet.folder().write("large/preinit/P", bigPreinit(3000));
    fleet.folder().write("large/profiles/A", "agentName: A\nbig/1,Some::Type,r\nbig/2,T,q\n");
    fleet.named("large").add("device 1", 2).add("bytes \xff\x1b[31m").add("line 1\rline 2");
    for (std::uint64_t seed = 1; seed <= 24; ++seed) {
        support::RandomDevice const random(seed, 20);
        auto const& folder = random.device().directory();
        fleet.addCopy("random/" + std::to_string(seed), folder / "preinit", folder / "profiles");
    }
    addBroken(fleet);
    addCorpus(fleet);
    return fleet;
}

class EveryManyDevicesCall : public testing::TestWithParam<Words> {};

TEST_P(EveryManyDevicesCall, PrintsTheSameWhateverTheNumberOfJobs) {
    auto const one = mixedFleet().run(GetParam(), "1");
    EXPECT_GT(one.out.size(), 1000U);
    EXPECT_EQ(one.status, 2);
    for (auto const* const jobs : {"2", "7"}) {
        auto const several = mixedFleet().run(GetParam(), jobs);
        EXPECT_TRUE(several.out == one.out) << jobs;
        EXPECT_EQ(several.err, one.err);
        EXPECT_EQ(several.status, one.status);
    }
}

INSTANTIATE_TEST_SUITE_P(
    ManyDevices, EveryManyDevicesCall,
    testing::Values(Words{"check"}, Words{"check", "--format", "concise"},
                    Words{"check", "--format", "json"}, Words{"check", "--format", "jsonl"},
                    Words{"check", "--format", "sarif"}, Words{"check", "--format", "junit"},
                    Words{"check", "--format", "github"}, Words{"check", "-v", "--werror"},
                    Words{"who", "**"}, Words{"who", "**", "--format", "json"},
                    Words{"who", "**", "--format", "jsonl"}),
    [](auto const& call) {
        std::string name;
        for (auto const& word : call.param)
            for (char const c : word)
                name += std::isalpha(static_cast<unsigned char>(c)) != 0 ? std::string(1, c) : "";
        return name + std::to_string(call.index);
    });

// A device by itself says what it says among others.
TEST(ManyDevices, AnswerAsEachOfThemByItself) {
    auto const& fleet = mixedFleet();
    std::istringstream lines(fleet.run({"check", "--format", "jsonl"}, "2").out);
    std::size_t devices = 0;
    for (std::string line; std::getline(lines, line); ++devices) {
        auto document = Json::parse(line);
        auto const name = document["device"].get<std::string>();
        if (document.contains("error") || name.find("\ufffd") != std::string::npos)
            continue;
        auto const alone = fleet.run({"check", "--preinit", name + "/preinit", "--profiles",
                                      name + "/profiles", "--format", "json"});
        document.erase("device");
        EXPECT_EQ(document, alone.json()) << name;
    }
    EXPECT_EQ(devices, fleet.size());
}

TEST(ManyDevices, FindTheFaultsOfEachBrokenDevice) {
    SKIP_WITHOUT_CORPUS();
    Fleet fleet;
    addCorpus(fleet);
    auto const documents = fleet.run({"check", "--format", "json"}, "2").json()["devices"];
    ASSERT_EQ(documents.size(), 58U);
    for (auto const& document : documents)
        EXPECT_EQ(document["counts"]["error"], 1) << document["device"];
}

TEST(ManyDevices, AreShownOneAfterTheOther) {
    Fleet fleet;
    fleet.add("b", 1).add("a").named("nowhere").add("c", 2);
    auto const outcome = fleet.run({"check", "-q"}, "2");
    std::string const details = " error: Encountered unknown mount flag z [flag-unknown]\n"
                                "  hint: flags are letters of rwcifSDdOAKL and SNAE\n"
                                "  concerns A\n";
    EXPECT_EQ(outcome.out, "Device b\n"
                           "b/profiles/A:3:7:" +
                               details +
                               "\n"
                               "1 error in 1 profile and 1 preinit file\n"
                               "\n"
                               "Device a\n"
                               "no findings in 1 profile and 1 preinit file\n"
                               "\n"
                               "Device c\n"
                               "c/profiles/A:3:7:" +
                               details + "c/profiles/A:4:7:" + details +
                               "\n"
                               "2 errors in 1 profile and 1 preinit file\n"
                               "\n"
                               "4 devices, 2 with errors, 1 not checked: 3 errors\n");
    EXPECT_EQ(outcome.err, "kelda: Cannot open directory nowhere\n");
    EXPECT_EQ(outcome.status, 2);
}

struct Ending {
    Words devices;
    int status;
};

TEST(ManyDevices, EndWithTheWorstStatus) {
    Fleet fleet;
    fleet.add("clean").add("wrong", 1);
    for (auto const& [devices, status] : std::vector<Ending>{{{"clean"}, 0},
                                                             {{"clean", "clean"}, 0},
                                                             {{"wrong", "clean"}, 1},
                                                             {{"nowhere", "clean"}, 2},
                                                             {{"nowhere", "wrong", "clean"}, 2}}) {
        Words call{"check"};
        for (auto const& device : devices)
            call = call + Words{"--device", device};
        EXPECT_EQ(fleet.run(call).status, status) << testing::PrintToString(devices);
    }
}

TEST(ManyDevices, MayBeListedOnStandardInput) {
    Fleet fleet;
    fleet.add("a", 1).add("b", 1);
    auto const outcome =
        KeldaProgram()
            .inFolder(fleet.folder().path())
            .readingText("# two\r\nb\r\n\r\na\r\n")
            .run({"check", "--devices", "-", "--select", "flag-unknown", "--format", "concise"});
    EXPECT_EQ(outcome.out,
              "b/profiles/A:3:7: error: Encountered unknown mount flag z [flag-unknown]\n"
              "a/profiles/A:3:7: error: Encountered unknown mount flag z [flag-unknown]\n");
}

TEST(ManyDevices, MayBeImages) {
    Fleet fleet;
    fleet.add("plain");
    fs::create_directories(fleet.folder() / "image/usr/lib64");
    fs::copy(fleet.folder() / "plain/preinit", fleet.folder() / "image/usr/lib64/preinit");
    fs::copy(fleet.folder() / "plain/profiles",
             fleet.folder() / "image/usr/lib64/KeldaMountProfiles");
    auto const outcome = fleet.run({"who", "--device", "image", "a/b", "--format", "jsonl"});
    EXPECT_EQ(outcome.json()["mounts"][0]["places"][0]["file"],
              "image/usr/lib64/KeldaMountProfiles/A");
}

TEST(ManyDevices, WhoMountsAPathIsShownWhereSomebodyDoes) {
    Fleet fleet;
    fleet.add("a").add("b", 1);
    fleet.folder().write("other/preinit/P", "x,T\n");
    fleet.folder().makeDirectory("other/profiles");
    fleet.named("other");
    auto const outcome = fleet.run({"who", "a/b"}, "2");
    EXPECT_EQ(outcome.out, "Device a\n"
                           "AGENT  PATH  TYPE  FLAGS  PLACE\n"
                           "A      a/b   T     r      a/profiles/A:2\n"
                           "\n"
                           "1 mount: 1 path by 1 agent\n"
                           "\n"
                           "Device b\n"
                           "AGENT  PATH  TYPE  FLAGS  PLACE\n"
                           "A      a/b   T     r      b/profiles/A:2\n"
                           "\n"
                           "1 mount: 1 path by 1 agent\n"
                           "\n"
                           "2 mounts on 2 of 3 devices\n");
    EXPECT_EQ(outcome.err, "kelda: note: b: 1 fault in the files; see 'kelda check'\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST(ManyDevices, NobodyMountsAPathOnIsAFailure) {
    Fleet fleet;
    fleet.add("a").add("b");
    auto const outcome = fleet.run({"who", "a/*", "--flag", "w"}, "2");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "kelda: no agent of 2 devices mounts a path that matches 'a/*' with the flag 'w'\n");
    EXPECT_EQ(outcome.status, 1);
    fleet.named("nowhere");
    EXPECT_EQ(fleet.run({"who", "a/b"}, "2").status, 2);
    EXPECT_EQ(fleet.run({"who", "x", "--format", "json"}, "2").err,
              "kelda: Cannot open directory nowhere\n"
              "kelda: no agent of 2 devices mounts 'x'\n");
}

TEST(ManyDevices, OfWhoAreDocuments) {
    Fleet fleet;
    fleet.add("a").named("nowhere").add("b");
    auto const document = fleet.run({"who", "a/b", "--format", "json"}, "2").json();
    ASSERT_EQ(document["devices"].size(), 3U);
    auto first = document["devices"][0];
    EXPECT_EQ(first["device"], "a");
    EXPECT_EQ(document["devices"][1],
              Json::parse(R"({"device": "nowhere", "error": {"file": "", "line": -1,
                              "message": "Cannot open directory nowhere"}})"));
    first.erase("device");
    Words const alone{"who", "a/b", "--preinit", "a/preinit", "--profiles", "a/profiles"};
    EXPECT_EQ(first, fleet.run(alone + Words{"--format", "json"}).json());
    auto const line = fleet.run(alone + Words{"--format", "jsonl"});
    EXPECT_EQ(line.json(), first);
    EXPECT_EQ(std::count(line.out.begin(), line.out.end(), '\n'), 1);
    EXPECT_TRUE(line.out.starts_with("{\"path\": \"a/b\", \"flag\": \"\", ")) << line.out;
}

TEST(ManyDevices, AFolderThatCannotBeReadIsInTheDocument) {
    auto const outcome =
        KeldaProgram().run({"who", "a", "--preinit", "/nowhere", "--format", "jsonl"});
    EXPECT_EQ(outcome.json()["error"]["message"], "Cannot open directory /nowhere");
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1);
    EXPECT_EQ(outcome.status, 2);
}

struct Wrong {
    Words words;
    std::string message;
};

TEST(ManyDevices, AreNotToBeMixedWithASingleOne) {
    Fleet fleet;
    fleet.add("a");
    fleet.folder().write("none", "# none\n");
    auto const check = [](std::string const& what) {
        return "kelda check: " + what + "\nTry 'kelda check --help'.\n";
    };
    auto const who = [](std::string const& what) {
        return "kelda who: " + what + "\nTry 'kelda who --help'.\n";
    };
    for (auto const& [words, message] : std::vector<Wrong>{
             {{"check", "--device", "a", "--preinit", "a"}, check("--preinit excludes --device")},
             {{"check", "--devices", "list", "--profiles", "a"},
              check("--profiles excludes --devices")},
             {{"check", "--device", "a", "--root", "a"}, check("--root excludes --device")},
             {{"check", "--device", "a", "F"}, check("FILE excludes --device")},
             {{"check", "--devices", "list", "F"}, check("FILE excludes --devices")},
             {{"check", "-", "--stdin-filename", "F", "--device", "a"},
              check("FILE excludes --device")},
             {{"check", "--stdin-filename", "F", "--device", "a"},
              check("--stdin-filename excludes --device")},
             {{"check", "--device", "a", "--baseline", "F"}, check("--baseline excludes --device")},
             {{"check", "--devices", "list", "--write-baseline", "F"},
              check("--write-baseline excludes --devices")},
             {{"check", "--jobs", "2"}, check("--jobs requires --device or --devices")},
             {{"check", "--device", "a", "--jobs", "0"},
              check("--jobs: must be a number from 1 to 1024, not '0'")},
             {{"check", "--device", "a", "--jobs", "-1"},
              check("--jobs: must be a number from 1 to 1024, not '-1'")},
             {{"check", "--device", "a", "--jobs", "2x"},
              check("--jobs: must be a number from 1 to 1024, not '2x'")},
             {{"check", "--device", ""}, check("--device: must not be empty")},
             {{"check", "--devices", "nowhere"},
              "kelda check: cannot read nowhere: No such file or directory\n"},
             {{"check", "--devices", "none"}, "kelda check: none names no device\n"},
             {{"who", "--devices", "none", "a"}, "kelda who: none names no device\n"},
             {{"who", "--device", "a"}, who("PATH is required")},
             {{"check", "--device", "a", "b"}, check("FILE excludes --device")},
             {{"who", "a", "--device", "a", "--root", "a"}, who("--root excludes --device")}}) {
        auto const outcome = fleet.run(words);
        EXPECT_EQ(outcome.err, message);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 2);
    }
}

TEST(ManyDevices, AWrongListIsADocumentUnderJson) {
    auto const outcome = KeldaProgram().run({"check", "--devices", "/nowhere", "--format", "json"});
    EXPECT_EQ(outcome.json()["error"]["message"],
              "cannot read /nowhere: No such file or directory");
    EXPECT_EQ(outcome.status, 2);
}

TEST(ManyDevices, WhoseAnswersCannotBeWrittenAreAFailure) {
    Fleet fleet;
    for (int i = 0; i < 20; ++i)
        fleet.add(std::to_string(i), 1);
    Words const call{"check", "--devices", "list"};
    auto const program = KeldaProgram().inFolder(fleet.folder().path());
    auto const full = KeldaProgram(program).writingTo("/dev/full").run(call);
    EXPECT_EQ(full.err, "kelda: cannot write to standard output: No space left on device\n");
    EXPECT_EQ(full.status, 1);
    auto const unread = program.runWithoutReader(call);
    EXPECT_EQ(unread.err, "kelda: cannot write to standard output: Broken pipe\n");
    EXPECT_EQ(unread.status, 1);
    auto const closed = KeldaProgram(program).closing({1}).run(call);
    EXPECT_EQ(closed.err, "kelda: cannot write to standard output: Bad file descriptor\n");
    EXPECT_EQ(closed.status, 1);
    EXPECT_EQ(KeldaProgram(program).closing({0, 2}).run(call).status, 1);
}

TEST(ManyDevices, AreShownOnATerminalAsOneIs) {
    Fleet fleet;
    fleet.add("a").add("b", 1);
    auto const outcome = KeldaProgram()
                             .inFolder(fleet.folder().path())
                             .runOnTerminal({"check", "-q", "--devices", "list"});
    EXPECT_THAT(outcome.out, HasSubstr("\x1b[1mDevice b\x1b[0m\n"));
    EXPECT_THAT(outcome.out, HasSubstr("    3 | a/c,T,z\n"));
    EXPECT_EQ(outcome.err, "");
}

TEST(ManyDevices, DoNotHangOnFilesThatAreNoFiles) {
    Fleet fleet;
    fleet.add("a");
    ASSERT_EQ(mkfifo((fleet.folder() / "a/profiles/Pipe").c_str(), 0600), 0);
    auto const outcome = fleet.run({"check", "--format", "concise", "-q"}, "1");
    EXPECT_THAT(outcome.out, HasSubstr("Pipe"));
    EXPECT_EQ(outcome.status, 1);
}

} // namespace
