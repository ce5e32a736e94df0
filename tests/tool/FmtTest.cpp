// kelda fmt: files in place, on standard input and in folders; what is written, told and returned.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

#include "support/Device.h"
#include "support/KeldaProgram.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using support::contentOf;
using support::expected;
using support::KeldaProgram;
using support::Outcome;
using support::Words;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char const* ugly = "agentname:A\na ,T,r\nlonger,T,r\n";
constexpr char const* fine = "agentName: A\na,      T, r\nlonger, T, r\n";

class Fmt : public testing::Test {
  protected:
    Outcome fmt(Words const& words) const {
        return KeldaProgram().inFolder(folder.path()).run(Words{"fmt"} + words);
    }
    std::string content(std::string_view name) const { return contentOf(folder / name); }

    support::TemporaryDirectory folder;
};

void expectOutcome(Outcome const& outcome, int status, std::string const& out,
                   std::string const& err) {
    EXPECT_EQ(outcome.out, out);
    EXPECT_EQ(outcome.err, err);
    EXPECT_EQ(outcome.status, status);
}

// --- files ---

TEST_F(Fmt, WritesTheFilesThatChange) {
    folder.write("A", ugly);
    folder.write("B", fine);
    auto const before = fs::last_write_time(folder / "B");
    expectOutcome(fmt({"A", "B"}), 0, "", "1 file formatted, 1 unchanged\n");
    EXPECT_EQ(content("A"), fine);
    EXPECT_EQ(fs::last_write_time(folder / "B"), before);
    expectOutcome(fmt({"A", "B"}), 0, "", "0 files formatted, 2 unchanged\n");
}

TEST_F(Fmt, OnlyListsWithCheck) {
    folder.write("A", ugly);
    folder.write("B", fine);
    expectOutcome(fmt({"--check", "A", "B"}), 1, "A\n", "1 file would be formatted, 1 unchanged\n");
    EXPECT_EQ(content("A"), ugly);
    expectOutcome(fmt({"--check", "B"}), 0, "", "0 files would be formatted, 1 unchanged\n");
}

TEST_F(Fmt, OnlyPrintsWithDiff) {
    folder.write("A", ugly);
    folder.write("B", fine);
    expectOutcome(fmt({"--diff", "A", "B"}), 1,
                  "--- A\n+++ A\n@@ -1,3 +1,3 @@\n-agentname:A\n-a ,T,r\n-longer,T,r\n"
                  "+agentName: A\n+a,      T, r\n+longer, T, r\n",
                  "1 file would be formatted, 1 unchanged\n");
    EXPECT_EQ(content("A"), ugly);
    expectOutcome(fmt({"--diff", "B"}), 0, "", "0 files would be formatted, 1 unchanged\n");
}

TEST_F(Fmt, TakesAFileOnce) {
    folder.write("profiles/A", ugly);
    fs::create_symlink("A", folder / "profiles/B");
    for (auto const& words : {Words{"profiles", "profiles/A"}, Words{"./profiles/A", "profiles"}})
        EXPECT_EQ(fmt(Words{"--check"} + words).err, "1 file would be formatted, 0 unchanged\n");
    expectOutcome(fmt({"nosuch", "nosuch", "profiles"}), 2, "",
                  "kelda fmt: cannot read nosuch: No such file or directory\n"
                  "1 file formatted, 0 unchanged\n");
}

TEST_F(Fmt, TellsTheLinesThatItKeeps) {
    folder.write("A", "a ,T,r\nb\\c ,T,r\n# x\\\n");
    expectOutcome(fmt({"A"}), 0, "",
                  "A:2: kept as it is: a backslash does not end the line\n"
                  "A:3: kept as it is: a comment line may not hold a backslash\n"
                  "1 file formatted, 0 unchanged\n");
    expectOutcome(fmt({"--check", "A"}), 0, "",
                  "A:2: kept as it is: a backslash does not end the line\n"
                  "A:3: kept as it is: a comment line may not hold a backslash\n"
                  "0 files would be formatted, 1 unchanged\n");
}

TEST_F(Fmt, KeepsTheOwner) {
    folder.write("A", ugly);
    auto const file = (folder / "A").string();
    if (constexpr uid_t nobody = 65534; chown(file.c_str(), nobody, nobody) != 0)
        GTEST_SKIP() << "only root may give files away";
    expectOutcome(fmt({"A"}), 0, "", "1 file formatted, 0 unchanged\n");
    struct stat status {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 65534U);
    EXPECT_EQ(status.st_gid, 65534U);
}

TEST_F(Fmt, KeepsThePermissionsAndTheLink) {
    folder.write("A", ugly);
    fs::permissions(folder / "A", fs::perms::owner_all | fs::perms::group_read);
    fs::create_symlink("A", folder / "link");
    expectOutcome(fmt({"link"}), 0, "", "1 file formatted, 0 unchanged\n");
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(content("A"), fine);
    EXPECT_EQ(fs::status(folder / "A").permissions(), fs::perms::owner_all | fs::perms::group_read);
}

// Whoever has the old file open, as this other name of it does, goes on reading the old text.
TEST_F(Fmt, PutsAWholeNewFileInThePlaceOfTheOld) {
    folder.write("A", ugly);
    fs::create_hard_link(folder / "A", folder / "old");
    fmt({"A"});
    EXPECT_EQ(content("A"), fine);
    EXPECT_EQ(content("old"), ugly);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 2);
}

TEST_F(Fmt, GoesOnAfterWhatCannotBeRead) {
    folder.write("A", ugly);
    mkfifo((folder / "pipe").c_str(), 0600);
    expectOutcome(fmt({"nosuch", "pipe", "A"}), 2, "",
                  "kelda fmt: cannot read nosuch: No such file or directory\n"
                  "kelda fmt: pipe is no regular file\n"
                  "1 file formatted, 0 unchanged\n");
    EXPECT_EQ(content("A"), fine);
}

TEST_F(Fmt, TellsWhatCannotBeWritten) {
    folder.write("A", ugly);
    auto const outcome = fmt({"/proc/cpuinfo", "A"});
    EXPECT_THAT(outcome.err, StartsWith("kelda fmt: cannot write /proc/cpuinfo: "));
    EXPECT_THAT(outcome.err, HasSubstr("\n1 file formatted, 0 unchanged\n"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(content("A"), fine);
}

TEST_F(Fmt, ShowsHostileNamesAsTheyCanBeShown) {
    folder.write("A\n\x1b\xff", ugly);
    expectOutcome(fmt({"--check", "A\n\x1b\xff"}), 1, "A\\x0a\\x1b\\xff\n",
                  "1 file would be formatted, 0 unchanged\n");
    EXPECT_THAT(fmt({"--diff", "A\n\x1b\xff"}).out,
                StartsWith("--- A\\x0a\\x1b\\xff\n+++ A\\x0a\\x1b\\xff\n"));
}

TEST_F(Fmt, DoesNotLetFilesSpeakToTheTerminal) {
    folder.write("A", "agentName:A\n\x1b[2J ,T,r\n");
    auto const out =
        KeldaProgram().inFolder(folder.path()).runOnTerminal({"fmt", "--diff", "A"}).out;
    EXPECT_THAT(out, HasSubstr("-\\x1b[2J ,T,r\n"));
    EXPECT_THAT(fmt({"--diff", "A"}).out, HasSubstr("-\x1b[2J ,T,r\n"));
}

// --- standard input ---

TEST_F(Fmt, TakesStandardInput) {
    auto const run = [](Words const& words, std::string const& text) {
        return KeldaProgram().readingText(text).run(Words{"fmt", "-"} + words);
    };
    expectOutcome(run({}, ugly), 0, fine, "");
    expectOutcome(run({}, fine), 0, fine, "");
    expectOutcome(run({"--check"}, ugly), 1, "standard input\n", "");
    expectOutcome(run({"--check"}, fine), 0, "", "");
    expectOutcome(run({"--diff"}, "a ,T"), 1,
                  "--- standard input\t\n+++ standard input\t\n@@ -1 +1 @@\n-a ,T\n"
                  "\\ No newline at end of file\n+a, T\n",
                  "");
    expectOutcome(run({}, "a\0\\ \n"s), 0, "a\0\\ \n"s,
                  "standard input:1: kept as it is: the line holds a NUL character\n");
}

// --- families ---

// A line that the two families lay out differently.
constexpr char const* either = "config:a,T,r\n";
constexpr char const* asPreinit = "CONFIG: a, T, r\n";
constexpr char const* asProfile = "config:a, T, r\n";

TEST_F(Fmt, TellsTheFamilyByTheFolder) {
    folder.write("preinit/A", either);
    folder.write("profiles/A", either);
    folder.write("here/A", either);
    folder.write("there/A", either);
    fmt({"preinit/A", "profiles/A", "here/A", "there/A", "--preinit", "there", "--profiles",
         "./here/"});
    EXPECT_EQ(content("preinit/A"), asPreinit);
    EXPECT_EQ(content("profiles/A"), asProfile);
    EXPECT_EQ(content("here/A"), asProfile);
    EXPECT_EQ(content("there/A"), asPreinit);
}

TEST_F(Fmt, TellsTheFamilyByTheFolderItIsIn) {
    folder.write("preinit/A", either);
    KeldaProgram().inFolder(folder / "preinit").run({"fmt", "A"});
    EXPECT_EQ(content("preinit/A"), asPreinit);
}

TEST_F(Fmt, TellsTheFamilyByTheTextOtherwise) {
    folder.write("A", "a,T\nb,T,createOnMount\n"s + either);
    folder.write("B", "agentName:A\nb,T\nb,T\nb,T\n"s + either);
    folder.write("C", "# included\nb,T,r\nb,T,r\n"s + either);
    fmt({"A", "B", "C"});
    EXPECT_THAT(content("A"), HasSubstr("CONFIG: a, T, r\n"));
    EXPECT_THAT(content("B"), HasSubstr("config:a, T, r\n"));
    EXPECT_THAT(content("C"), HasSubstr("config:a, T, r\n"));
}

// As a preinit file, the first one would lose the blanks of its condition, and the second one would
// get an agent's name.
TEST_F(Fmt, TakesAFileWithAKeywordOfProfilesForAProfile) {
    for (auto const* const text : {"a,T\nb,T\nCondition:a, b  \n", " # x\nagentName:A\na,T\nb,T\n",
                                   "agentName:A # x\na,T\nb ,T\n"}) {
        folder.write("A", text);
        EXPECT_EQ(fmt({"A"}).status, 0);
        EXPECT_EQ(content("A"), text);
    }
}

TEST_F(Fmt, BelievesTheOptionFirst) {
    folder.write("preinit/A", either);
    fmt({"preinit/A", "--family", "profile"});
    EXPECT_EQ(content("preinit/A"), asProfile);
    fmt({"preinit/A", "--family=preinit"});
    EXPECT_EQ(content("preinit/A"), "CONFIG: a, T, r\n");
}

// --- folders ---

TEST_F(Fmt, TakesTheFilesOfTheFoldersThatOptionsName) {
    folder.write("p/A", either);
    folder.write("q/A", either);
    expectOutcome(fmt({"--preinit", "p", "--profiles", "q", "--check"}), 1, "p/A\nq/A\n",
                  "2 files would be formatted, 0 unchanged\n");
    expectOutcome(fmt({"--profiles", "q"}), 0, "", "1 file formatted, 0 unchanged\n");
    EXPECT_EQ(content("p/A"), either);
    EXPECT_EQ(content("q/A"), asProfile);
    expectOutcome(fmt({"--preinit", "nosuch", "--profiles", "q"}), 2, "",
                  "kelda fmt: cannot read nosuch: No such file or directory\n"
                  "0 files formatted, 1 unchanged\n");
}

TEST_F(Fmt, TakesTheFilesOfADeviceImage) {
    folder.write("image/usr/lib64/preinit/A", either);
    folder.write("image/usr/lib64/KeldaMountProfiles/A", either);
    expectOutcome(fmt({"--root", "image"}), 0, "", "2 files formatted, 0 unchanged\n");
    EXPECT_EQ(content("image/usr/lib64/preinit/A"), asPreinit);
    EXPECT_EQ(content("image/usr/lib64/KeldaMountProfiles/A"), asProfile);
}

TEST_F(Fmt, TakesTheFilesOfAFolderOrOfADevice) {
    folder.write("device/preinit/A", either);
    folder.write("device/profiles/B", either);
    folder.write("device/README", "  a   b\n");
    expectOutcome(fmt({"device", "--check"}), 1, "device/preinit/A\ndevice/profiles/B\n",
                  "2 files would be formatted, 0 unchanged\n");
    expectOutcome(fmt({"device/profiles/", "--check"}), 1, "device/profiles/B\n",
                  "1 file would be formatted, 0 unchanged\n");
    expectOutcome(fmt({"."}), 2, "",
                  "kelda fmt: whether . holds preinit files or profiles is not known; --family "
                  "says so\n0 files formatted, 0 unchanged\n");
    EXPECT_EQ(content("device/README"), "  a   b\n");
}

TEST_F(Fmt, PassesOverWhatTheParserDoes) {
    for (auto const* const name : {"A", "B~", ".C", "D;E", "F/G"})
        folder.write("preinit/"s + name, either);
    auto const listed = [&](KeldaProgram program) {
        return program.inFolder(folder.path()).run({"fmt", "preinit", "--check"}).out;
    };
    EXPECT_EQ(listed(KeldaProgram()), "preinit/A\npreinit/D;E\n");
    EXPECT_EQ(listed(KeldaProgram().with("Q9_CHROOT", "")), "preinit/A\n");
}

TEST_F(Fmt, LaysOutTheExampleDeviceLikeThis) {
    fs::copy(support::exampleDevice(), folder / "device", fs::copy_options::recursive);
    expectOutcome(fmt({"device/profiles/Watchdog", "--diff"}), 1, expected("fmt-watchdog.txt"),
                  "1 file would be formatted, 0 unchanged\n");
    fmt({"device"});
    EXPECT_EQ(fmt({"device", "--check"}).status, 0);
}

// --- calls ---

TEST_F(Fmt, PrintsItsHelp) {
    expectOutcome(fmt({"--help"}), 0, expected("help-fmt.txt"), "");
}

struct WrongCall {
    Words words;
    char const* message;
};

class EveryWrongFmtCall : public testing::TestWithParam<WrongCall> {};

TEST_P(EveryWrongFmtCall, IsRefused) {
    auto const outcome = KeldaProgram().readingText("").run(Words{"fmt"} + GetParam().words);
    expectOutcome(outcome, 2, "", "kelda fmt: "s + GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, EveryWrongFmtCall,
    testing::Values(
        WrongCall{{}, "a file or a folder is missing\n"},
        WrongCall{{"--check"}, "a file or a folder is missing\n"},
        WrongCall{{"-", "A"}, "'-' and files do not go together\n"},
        WrongCall{{"A", "--check", "--diff"}, "--check excludes --diff\nTry 'kelda fmt --help'.\n"},
        WrongCall{{"A", "--family", "x"},
                  "--family: must be preinit or profile, not 'x'\nTry 'kelda fmt --help'.\n"},
        WrongCall{{""}, "FILE: must not be empty\nTry 'kelda fmt --help'.\n"}));

} // namespace
