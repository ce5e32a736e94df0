// kelda check as its users call it: what it tells in which format, what is left out, and how it
// ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

using support::Device;
using support::KeldaProgram;
using support::Outcome;
using support::Words;
using testing::HasSubstr;
using testing::StartsWith;

// A device with one finding of each severity, called from its own folder.
class Check : public testing::Test {
  protected:
    Check() {
        device_.preinit("P", "a/b,T\na/c,T\n")
            .profile("A", "agentName: A\n"
                          "a/b,T,w\n"
                          "\ta/c, U, rz\n"
                          "a/c,U,w\n"
                          "alias:%unused=1\n");
    }

    KeldaProgram program() const {
        KeldaProgram program;
        program.inFolder(device_.directory().path());
        return program;
    }
    Outcome check(Words const& words = {}) const { return program().run(call(words)); }
    static Words call(Words const& words) {
        return Words{"check", "--preinit", "preinit", "--profiles", "profiles"} + words;
    }
    std::string fileNamed(std::string const& name) const {
        return support::contentOf(device_.directory() / name);
    }

    Device device_;
};

std::string const error =
    "profiles/A:3:11: error: Encountered unknown mount flag z [flag-unknown]\n";
std::string const warning = "profiles/A:4:5: warning: type 'U' is not the type of path 'a/c': the "
                            "preinit files give it the type 'T' [type-column-differs]\n";
std::string const note = "profiles/A:5:7: note: alias '%unused' is never used [alias-unused]\n";

TEST_F(Check, TellsEachFindingOnALineOfItsOwn) {
    auto const outcome = check({"--format", "concise"});
    EXPECT_EQ(outcome.out, error + note + warning);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(Check, ShowsTheSourceLineWithACaretOnATerminalOnly) {
    std::string const line = "\n    3 |         a/c, U, rz\n      |                  ^\n";
    EXPECT_THAT(program().with("NO_COLOR", "1").runOnTerminal(call({})).out, HasSubstr(line));
    EXPECT_THAT(check().out, testing::Not(HasSubstr(" | ")));
}

TEST_F(Check, IsColouredOnATerminalOnlyAndNeverUnderNoColor) {
    EXPECT_THAT(program().runOnTerminal(call({})).out, HasSubstr("\x1b["));
    EXPECT_THAT(program().with("NO_COLOR", "1").runOnTerminal(call({})).out,
                testing::Not(HasSubstr("\x1b")));
    EXPECT_THAT(check().out, testing::Not(HasSubstr("\x1b")));
}

TEST_F(Check, GivesOneJsonDocument) {
    auto const outcome = check({"--format", "json"});
    auto const document = outcome.json();
    EXPECT_EQ(document["schemaVersion"], 1);
    EXPECT_EQ(document["preinitFiles"], 1);
    EXPECT_EQ(document["profiles"], 1);
    ASSERT_EQ(document["findings"].size(), 3U);
    auto const& first = document["findings"][0];
    EXPECT_EQ(first["severity"], "error");
    EXPECT_EQ(first["rule"], "flag-unknown");
    EXPECT_EQ(first["file"], "profiles/A");
    EXPECT_EQ(first["line"], 3);
    EXPECT_EQ(first["column"], 11);
    EXPECT_EQ(first["message"], "Encountered unknown mount flag z");
    EXPECT_FALSE(document.contains("filesRead"));
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(Check, KnowsFormatsForOtherPrograms) {
    EXPECT_EQ(check({"--format", "sarif"}).json()["version"], "2.1.0");
    EXPECT_THAT(check({"--format", "jsonl"}).out, StartsWith("{\"type\":\"finding\""));
    EXPECT_THAT(check({"--format", "github"}).out, StartsWith("::error file=profiles/A,line=3,"));
    auto const junit = check({"--format", "junit"}).out;
    EXPECT_THAT(junit, HasSubstr("<testcase name=\"profiles/A\""));
    EXPECT_THAT(junit, HasSubstr("<testcase name=\"preinit/P\""));
}

TEST_F(Check, ExitsWithZeroWhenThereIsNoError) {
    device_.profile("A", "agentName: A\na/b,T,w\na/c,U,w\n");
    auto const outcome = check();
    EXPECT_THAT(outcome.out, HasSubstr("1 warning"));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(check({"--werror"}).status, 1);
    EXPECT_THAT(check({"--werror"}).out, HasSubstr("profiles/A:3:5: error: "));
}

TEST_F(Check, SaysThatACleanDeviceIsClean) {
    device_.profile("A", "agentName: A\na/b,T,w\na/c,T,w\n");
    auto const outcome = check();
    EXPECT_EQ(outcome.out, "no findings in 1 profile and 1 preinit file\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(check({"--format", "concise"}).out, "");
}

TEST_F(Check, TellsOnlyWhatIsSelected) {
    Words const concise{"--format", "concise"};
    EXPECT_EQ(check(concise + Words{"--select", "alias-unused"}).out, note);
    EXPECT_EQ(check(concise + Words{"--select", "alias-unused,flag-unknown"}).out, error + note);
    EXPECT_EQ(check(concise + Words{"--select", "alias-unused", "--select", "flag-unknown"}).out,
              error + note);
    EXPECT_EQ(check(concise + Words{"--ignore", "alias-unused,flag-unknown"}).out, warning);
    EXPECT_EQ(check(concise + Words{"--ignore", "flag-unknown"}).status, 0);
    // A file may stand behind the rules.
    EXPECT_EQ(check(concise + Words{"--select", "alias-unused", "profiles/A"}).out, note);
}

TEST_F(Check, TellsErrorsOnlyWhenItIsToBeQuiet) {
    EXPECT_EQ(check({"-q", "--format", "concise"}).out, error);
    EXPECT_EQ(check({"--quiet", "--werror", "--format", "concise"}).status, 1);
}

TEST_F(Check, ListsTheFilesWhenItIsToBeVerbose) {
    device_.profile("A~", "agentName: A\n");
    auto const outcome = check({"-v"});
    EXPECT_THAT(outcome.out, StartsWith("read preinit/P\nread profiles/A\n"
                                        "skipped profiles/A~: its name ends in '~'\n"));
    EXPECT_EQ(check({"-v", "--format", "json"}).json()["filesSkipped"][0]["file"], "profiles/A~");
}

TEST_F(Check, TellsOnlyWhatIsFoundInTheFilesNamed) {
    device_.profile("B", "agentName: B\na/b,T,q\n");
    EXPECT_EQ(check({"profiles/B", "--format", "concise"}).out,
              "profiles/B:2:7: error: Encountered unknown mount flag q [flag-unknown]\n");
    EXPECT_EQ(check({"./profiles/../profiles/A", "--format", "concise"}).out,
              error + note + warning);
    EXPECT_EQ(check({"preinit/P"}).status, 0);
}

TEST_F(Check, AllowsWhatACommentAllows) {
    device_.profile("A", "agentName: A\na/b,T,w\n"
                         "a/c,U,w # kelda: allow type-column-differs: renamed next month\n"
                         "a/b,T,w # kelda: allow alias-unused: why not\n");
    auto const outcome = check({"--format", "concise"});
    EXPECT_THAT(outcome.out, testing::Not(HasSubstr("type-column-differs")));
    EXPECT_THAT(outcome.out, HasSubstr("profiles/A:4:"));
    EXPECT_THAT(outcome.out, HasSubstr("[suppression-unused]"));
    EXPECT_EQ(check({"--format", "json"}).json()["suppressed"], 1);
}

TEST_F(Check, TellsOnlyWhatTheBaselineDoesNotHave) {
    auto const written = check({"--write-baseline", "known.json"});
    EXPECT_EQ(written.out, "");
    EXPECT_EQ(written.err, "kelda check: 3 findings written to known.json\n");
    EXPECT_EQ(written.status, 0);
    EXPECT_EQ(check({"--baseline", "known.json", "--format", "concise"}).out, "");
    device_.profile("A", "agentName: A\n\n\na/b,T,w\n\ta/c, U, rz\na/b,T,q\n");
    auto const outcome = check({"--baseline", "known.json", "--format", "concise"});
    EXPECT_THAT(outcome.out, StartsWith("profiles/A:6:7: error: Encountered unknown mount flag q"));
    EXPECT_EQ(outcome.status, 1);
    auto const stale = check({"--baseline", "known.json", "--format", "json"}).json();
    EXPECT_EQ(stale["staleBaseline"].size(), 2U);
    EXPECT_EQ(stale["inBaseline"], 1);
}

TEST_F(Check, DoesNotTakeWhatItIsQuietAboutForStale) {
    check({"--write-baseline", "known.json"});
    auto const outcome = check({"--baseline", "known.json", "-q"});
    EXPECT_EQ(outcome.out, "no findings in 1 profile and 1 preinit file, 3 in the baseline\n");
}

TEST_F(Check, WritesABaselineThroughALinkAndKeepsItsPermissions) {
    auto const folder = device_.directory().path();
    device_.directory().write("real.json", "old");
    std::filesystem::permissions(folder / "real.json", std::filesystem::perms::owner_all);
    std::filesystem::create_symlink("real.json", folder / "link.json");
    check({"--write-baseline", "link.json"});
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.json"));
    EXPECT_THAT(fileNamed("real.json"), HasSubstr("schemaVersion"));
    EXPECT_EQ(std::filesystem::status(folder / "real.json").permissions(),
              std::filesystem::perms::owner_all);
}

TEST_F(Check, SaysThatAFileThatCannotBeOpenedHidesThoseBehindIt) {
    std::filesystem::create_symlink("nowhere", device_.directory() / "preinit/A");
    auto const outcome = check({"-q"});
    EXPECT_EQ(outcome.out, "kelda: error: Cannot openat file A in preinit [file-unreadable]\n"
                           "  hint: the files behind it in this folder are not read\n"
                           "\n"
                           "1 error in 1 profile and 0 preinit files\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST_F(Check, NamesFilesWithoutDetours) {
    auto const outcome = program().run({"check", "--preinit", "./preinit/", "--profiles",
                                        "./profiles//", "--format", "concise", "-q"});
    EXPECT_EQ(outcome.out, error);
}

TEST_F(Check, TakesAFileBesideItsNewText) {
    auto const words =
        call({"-", "profiles/A", "--stdin-filename", "profiles/A", "--format", "concise"});
    EXPECT_EQ(program().readingText("agentName: A\na/b,T,qw\na/c,T,w\n").run(words).out,
              "profiles/A:2:7: error: Encountered unknown mount flag q [flag-unknown]\n");
}

TEST_F(Check, ReadsAFileThatStandsOnStandardInput) {
    auto const words = call({"-", "--stdin-filename", "profiles/A", "--format", "concise"});
    EXPECT_EQ(program().readingText("agentName: A\na/b,T,qw\na/c,T,w\n").run(words).out,
              "profiles/A:2:7: error: Encountered unknown mount flag q [flag-unknown]\n");
    EXPECT_EQ(program().readingText("agentName: A\na/b,T,w\na/c,T,w\n").run(words).status, 0);
    auto const newFile = call({"-", "--stdin-filename", "profiles/New", "--format", "concise"});
    EXPECT_EQ(program().readingText("agentName: New\na/b,T,w\n").run(newFile).out, "");
}

TEST_F(Check, LooksForTheDefaultFoldersBelowTheRoot) {
    auto const root = device_.directory() / "image";
    std::filesystem::create_directories(root / "usr/lib64");
    std::filesystem::copy(device_.directory() / "preinit", root / "usr/lib64/preinit");
    std::filesystem::copy(device_.directory() / "profiles", root / "usr/lib64/KeldaMountProfiles");
    auto const outcome = program().run({"check", "--root", "image", "--format", "concise"});
    EXPECT_THAT(outcome.out, StartsWith("image/usr/lib64/KeldaMountProfiles/A:3:11: error: "));
}

TEST_F(Check, ShowsNoProgressWhereThereIsNoTerminal) {
    EXPECT_EQ(check().err, "");
}

TEST_F(Check, EscapesWhatFilesHold) {
    device_.profile("A", "agentName: A\na/b,T,w\nfoo \x1b[31m\xff\n");
    EXPECT_THAT(check().out, HasSubstr("syntax error: 'foo\\x1b[31m\\xff'"));
    EXPECT_THAT(program().with("NO_COLOR", "1").runOnTerminal(call({})).out,
                testing::Not(HasSubstr("\x1b")));
}

struct WrongCheck {
    Words words;
    std::string message;
};

TEST_F(Check, SaysWhatIsWrongWithACall) {
    std::string const tryHelp = "\nTry 'kelda check --help'.\n";
    for (auto const& [words, message] : std::vector<WrongCheck>{
             {{"--loud"}, "unexpected argument '--loud'" + tryHelp},
             {{"--format", "xml"},
              "--format: must be text, concise, json, jsonl, sarif, github or junit, not 'xml'" +
                  tryHelp},
             {{"--select", "nothing"},
              "--select: there is no rule 'nothing'; 'kelda explain --rule list' shows all" +
                  tryHelp},
             {{"--ignore", ""},
              "--ignore: there is no rule ''; 'kelda explain --rule list' shows all" + tryHelp},
             {{""}, "FILE: must not be empty" + tryHelp},
             {{"-"}, "'-' needs --stdin-filename\n"},
             {{"--stdin-filename", "profiles/A"}, "--stdin-filename needs '-'\n"},
             {{"profiles/B"}, "cannot read profiles/B: No such file or directory\n"},
             {{"."}, ". is none of the files that are read from preinit and profiles\n"},
             {{"--preinit", "nowhere"}, "Cannot open directory nowhere\n"},
             {{"--baseline", "a", "--write-baseline", "b"},
              "--baseline excludes --write-baseline" + tryHelp},
             {{"--write-baseline", "b", "-q"}, "--write-baseline excludes --quiet" + tryHelp},
             {{"--write-baseline", "b", "profiles/A"}, "FILE excludes --write-baseline" + tryHelp},
             {{"--write-baseline", "nowhere/b"},
              "cannot write nowhere/b: No such file or directory\n"}}) {
        auto const call = words.front() == "--preinit"
                              ? Words{"check", "--profiles", "profiles"} + words
                              : Check::call(words);
        auto const outcome = program().readingText("").run(call);
        EXPECT_EQ(outcome.err, "kelda check: " + message);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, 2) << message;
    }
}

TEST_F(Check, GivesAJsonDocumentForAWrongCallToo) {
    for (auto const& words : std::vector<Words>{{"--format", "json", "--loud"},
                                                {"--loud", "--format=json"},
                                                {"--format", "json", "profiles/B"},
                                                {"--format", "json", "-"}}) {
        auto const outcome = check(words);
        EXPECT_EQ(outcome.json()["schemaVersion"], 1);
        EXPECT_THAT(outcome.err,
                    StartsWith("kelda check: " +
                               outcome.json()["error"]["message"].get<std::string>() + "\n"));
        EXPECT_EQ(outcome.status, 2);
    }
}

} // namespace
