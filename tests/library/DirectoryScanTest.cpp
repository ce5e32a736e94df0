// Which files of a directory are read, in which order, and what the trace says of each.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "support/CleanEnvironment.h"
#include "support/FaultLists.h"
#include "support/Scanner.h"
#include "support/TemporaryDirectory.h"
#include "support/TraceRecorder.h"

namespace {

using support::Strings;
using testing::ElementsAre;
using testing::IsEmpty;

class DirectoryScan : public testing::Test {
  protected:
    void files(Strings const& names) const {
        for (auto const& name : names)
            directory_.write(name, "text of " + name);
    }
    int scan(char const* pattern = nullptr) { return scanner_.scan(directory_.string(), pattern); }

    support::CleanEnvironment environment_;
    support::TemporaryDirectory directory_;
    support::Scanner scanner_;
};

TEST_F(DirectoryScan, FilesAreReadInAscendingNameOrder) {
    files({"b", "a~", ".hidden", "c"});
    EXPECT_EQ(scan(), 2);
    EXPECT_THAT(scanner_.filesRead(), ElementsAre("b", "c"));
    EXPECT_THAT(support::faultList(scanner_), IsEmpty());
}

TEST_F(DirectoryScan, DigitsComeBeforeCapitalsBeforeSmallLetters) {
    files({"a", "B", "b", "A", "9", "10", "_", "a-", "aa"});
    scan();
    EXPECT_THAT(scanner_.filesRead(), ElementsAre("10", "9", "A", "B", "_", "a", "a-", "aa", "b"));
}

TEST_F(DirectoryScan, AnyNameThatAFileMayHaveIsRead) {
    std::string const longest(255, 'n');
    files(
        {"two words", "line\nend", "\xc3\xa9t\xc3\xa9", "\xff\xfe", "%s{}", "a*b", "[x]", longest});
    EXPECT_EQ(scan(), 8);
    EXPECT_THAT(scanner_.filesRead(), ElementsAre("%s{}", "[x]", "a*b", "line\nend", longest,
                                                  "two words", "\xc3\xa9t\xc3\xa9", "\xff\xfe"));
    EXPECT_THAT(support::faultList(scanner_), IsEmpty());
}

TEST_F(DirectoryScan, TheLoaderGetsTheOpenFile) {
    files({"a", "b"});
    Strings texts;
    scanner_.onFile = [&](FILE* file) {
        texts.push_back(support::remainingText(file));
        return 1;
    };
    scan();
    EXPECT_THAT(texts, ElementsAre("text of a", "text of b"));
}

TEST_F(DirectoryScan, TheResultIsTheSumOfWhatTheLoaderReturns) {
    files({"a", "b", "c"});
    scanner_.onFile = [next = 1](FILE*) mutable { return next *= 10; };
    EXPECT_EQ(scan(), 10 + 100 + 1000);
}

TEST_F(DirectoryScan, ADirectoryWithoutFilesGivesNothingAndNoFault) {
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(scan("x*"), 0);
    EXPECT_THAT(scanner_.filesRead(), IsEmpty());
    EXPECT_THAT(support::faultList(scanner_), IsEmpty());
}

TEST_F(DirectoryScan, ASlashAfterTheDirectoryNameIsHarmless) {
    files({"a"});
    EXPECT_EQ(scanner_.scan(directory_.string() + "/"), 1);
    EXPECT_THAT(scanner_.filesRead(), ElementsAre("a"));
}

struct PatternRow {
    char const* pattern;
    Strings read;
};

TEST_F(DirectoryScan, APatternChoosesAmongTheNames) {
    files({"Fan", "Fan-1", "Fan-2", "Fans", "Pan", ".Fan", "a*", "DefaultMountGroup"});
    for (auto const& [pattern, read] : std::vector<PatternRow>{
             {"Fan", {"Fan"}},
             {"fan", {}},
             {"Fan*", {"Fan", "Fan-1", "Fan-2", "Fans"}},
             {"Fan-?", {"Fan-1", "Fan-2"}},
             {"[FP]an", {"Fan", "Pan"}},
             {"[!F]an", {"Pan"}},
             {"*an", {"Fan", "Pan"}},
             {"a\\*", {"a*"}},
             {".F*", {".Fan"}},
             {"?Fan", {}},
             {"Default*Group", {"DefaultMountGroup"}},
             {"Fa", {}},
         }) {
        SCOPED_TRACE(pattern);
        support::Scanner scanner;
        EXPECT_EQ(scanner.scan(directory_.string(), pattern), static_cast<int>(read.size()));
        EXPECT_EQ(scanner.filesRead(), read);
        EXPECT_THAT(support::faultList(scanner), IsEmpty());
    }
}

TEST_F(DirectoryScan, TheDefaultGroupsAreNamesLikeAnyOther) {
    files({"DefaultMountGroup", "DefaultMountGroupPerAgent"});
    EXPECT_EQ(scan("DefaultMountGroup"), 1);
    EXPECT_EQ(scan("DefaultMountGroupPerAgent"), 1);
    EXPECT_THAT(scanner_.filesRead(),
                ElementsAre("DefaultMountGroup", "DefaultMountGroupPerAgent"));
}

TEST_F(DirectoryScan, AFileBelowAFolderIsLookedForInTheDirectoryItself) {
    files({"sub/File"});
    EXPECT_EQ(scan("sub/File"), 0);
    EXPECT_THAT(support::faultList(scanner_),
                ElementsAre(":-1: Cannot openat file File in " + directory_.string()));
}

TEST_F(DirectoryScan, OnlyATildeAtTheEndMarksABackup) {
    files({"~", "a~", "a~b", "~a"});
    scan();
    EXPECT_THAT(scanner_.filesRead(), ElementsAre("a~b", "~a"));
}

TEST_F(DirectoryScan, ASemicolonIsALetterLikeAnyOtherOutsideAChroot) {
    files({"a;1", ";", "b"});
    scan();
    EXPECT_THAT(scanner_.filesRead(), ElementsAre(";", "a;1", "b"));
}

TEST_F(DirectoryScan, ASemicolonIsPassedOverInAChroot) {
    files({"a;1", ";", "b"});
    for (char const* const value : {"", "1", "/chroot"}) {
        support::EnvironmentVariable const chroot("Q9_CHROOT", value);
        support::Scanner scanner;
        EXPECT_EQ(scanner.scan(directory_.string()), 1) << value;
        EXPECT_THAT(scanner.filesRead(), ElementsAre("b")) << value;
    }
}

TEST_F(DirectoryScan, TheChrootIsTakenFromTheTimeOfConstruction) {
    files({"a;1"});
    support::EnvironmentVariable const chroot("Q9_CHROOT", "1");
    EXPECT_EQ(scan(), 1);
}

TEST_F(DirectoryScan, AnExclusionThatIsFoundAnywhereInANamePassesItOver) {
    files({"Fan", "Fantastic", "ThePan", "Pan"});
    scanner_.exclusionRegexIs("tas|^P");
    EXPECT_EQ(scan(), 2);
    EXPECT_THAT(scanner_.filesRead(), ElementsAre("Fan", "ThePan"));
}

TEST_F(DirectoryScan, TheExclusionLooksAtTheNameAlone) {
    directory_.write("folder/Fan", "");
    scanner_.exclusionRegexIs("folder|/");
    EXPECT_EQ(scanner_.scan((directory_ / "folder").string()), 1);
}

// --- what the loader finds ---

TEST_F(DirectoryScan, WhileAFileIsReadItIsTheCurrentOneAtLineZero) {
    files({"a"});
    scanner_.openFile("Before", 7);
    std::vector<Kelda::FileContext> seen;
    scanner_.onFile = [&](FILE*) {
        seen.assign(scanner_.currentFiles().begin(), scanner_.currentFiles().end());
        return 1;
    };
    scan();
    EXPECT_EQ(seen, (std::vector<Kelda::FileContext>{{"Before", 7}, {"a", 0}}));
    EXPECT_EQ(scanner_.currentFileName(), "Before");
    EXPECT_EQ(scanner_.currentLine(), 7);
}

TEST_F(DirectoryScan, AScanWithinAScanStacksItsFilesOnTop) {
    files({"outer", "inner/file"});
    Strings inner;
    scanner_.onFile = [&](FILE*) {
        if (scanner_.currentFileName() == "outer")
            return scanner_.scan((directory_ / "inner").string());
        for (auto const& context : scanner_.currentFiles())
            inner.emplace_back(context.file.view());
        return 1;
    };
    EXPECT_EQ(scan("outer"), 1);
    EXPECT_THAT(inner, ElementsAre("outer", "file"));
    EXPECT_THAT(scanner_.currentFiles(), IsEmpty());
}

TEST_F(DirectoryScan, AnIncludedFileIsNotedUnderTheFileThatIncludesIt) {
    files({"one", "two", "other~"});
    scanner_.openFile("Includer");
    scanner_.inIncludeIs(true);
    scan();
    ASSERT_EQ(scanner_.profileFileIncludesMap().size(), 1U);
    EXPECT_THAT(support::strings(scanner_.profileFileIncludesMap().at("Includer")),
                ElementsAre("one", "two"));
}

TEST_F(DirectoryScan, OutsideAnIncludeNothingIsNoted) {
    files({"one"});
    scanner_.openFile("Includer");
    scan();
    EXPECT_THAT(scanner_.profileFileIncludesMap(), IsEmpty());
}

TEST_F(DirectoryScan, AnIncludeWithoutAnOpenFileIsAProgrammingError) {
    files({"one"});
    scanner_.inIncludeIs(true);
    EXPECT_DEATH(scan(), "!currentFiles_.empty\\(\\)");
}

// --- what the trace says ---

using DirectoryScanTrace = DirectoryScan;

TEST_F(DirectoryScanTrace, TheScanAndEachFileAreTold) {
    files({"Fan", "Fan-1"});
    support::TraceRecorder const trace;
    scan("Fan*");
    EXPECT_TRUE(trace.has(8, "( dirName : " + directory_.string() + ", _ , pattern : Fan*, _ )"));
    EXPECT_THAT(trace.at(4), ElementsAre("No json check.", "found match for Fan*: 'Fan'",
                                         "No json check.", "found match for Fan*: 'Fan-1'"));
}

TEST_F(DirectoryScanTrace, NoPatternIsToldAsAStar) {
    files({"Fan"});
    support::TraceRecorder const trace;
    scan();
    EXPECT_THAT(trace.at(4), ElementsAre("No json check.", "found match for *: 'Fan'"));
}

TEST_F(DirectoryScanTrace, ABackupIsToldAndNoCheckIsAskedForIt) {
    files({"a~"});
    support::TraceRecorder const trace;
    scan();
    EXPECT_THAT(trace.at(4), ElementsAre("skipping filename ending in  '~' :a~"));
}

TEST_F(DirectoryScanTrace, TheSemicolonIsToldBeforeTheTilde) {
    files({"a;~"});
    support::EnvironmentVariable const chroot("Q9_CHROOT", "");
    support::Scanner scanner;
    support::TraceRecorder const trace;
    scanner.scan(directory_.string());
    EXPECT_THAT(trace.at(4), ElementsAre("skipping filename with ';' :a;~"));
}

TEST_F(DirectoryScanTrace, TheCheckIsToldBeforeTheExclusion) {
    files({"Fan", "Pan"});
    scanner_.exclusionRegexIs("Fan");
    support::TraceRecorder const trace;
    scanner_.scan(directory_.string(), nullptr, &scanner_.profileFileCheck());
    EXPECT_THAT(trace.at(4), ElementsAre("canLoad oks loading 'Fan'",
                                         "excluding Fan based on the keldaExclusionRegex",
                                         "canLoad oks loading 'Pan'", "found match for *: 'Pan'"));
}

} // namespace
