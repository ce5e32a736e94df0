// Baselines: which findings they leave out, which of their entries are stale, and where paths lead.
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "check/Baseline.h"
#include "database/findings/Rules.h"
#include "support/TemporaryDirectory.h"

namespace {

using KeldaDatabase::RuleId;
using KeldaTool::Baseline;
using KeldaTool::baselineText;
using KeldaTool::CheckedFinding;
using KeldaTool::CheckResult;
using support::TemporaryDirectory;
using testing::ElementsAre;
using testing::IsEmpty;

CheckedFinding found(std::string const& file, int line, std::string const& message,
                     RuleId rule = RuleId::flagUnknown) {
    CheckedFinding finding;
    finding.rule = &KeldaDatabase::ruleOf(rule);
    finding.place.file = file;
    finding.place.line = line;
    finding.message = message;
    return finding;
}

CheckResult resultOf(std::vector<CheckedFinding> findings) {
    CheckResult result;
    result.findings = std::move(findings);
    return result;
}

// "FILE:LINE: MESSAGE" of each finding.
std::vector<std::string> textsOf(CheckResult const& result) {
    std::vector<std::string> texts;
    for (auto const& finding : result.findings)
        texts.push_back(finding.place.file + ":" + std::to_string(finding.place.line) + ": " +
                        finding.message);
    return texts;
}

// Makes the folder the working one, as long as it lives.
class WorkingFolder {
  public:
    explicit WorkingFolder(std::filesystem::path const& folder) {
        std::filesystem::current_path(folder);
    }
    ~WorkingFolder() { std::filesystem::current_path(before_); }
    WorkingFolder(WorkingFolder const&) = delete;
    WorkingFolder& operator=(WorkingFolder const&) = delete;

  private:
    std::filesystem::path before_ = std::filesystem::current_path();
};

class BaselineTest : public testing::Test {
  protected:
    std::string path() const { return (directory / "baseline.json").string(); }
    std::string file(std::string const& name) const { return (directory / name).string(); }

    // What remains of findings after a baseline of others.
    CheckResult apply(std::vector<CheckedFinding> known, std::vector<CheckedFinding> findings) {
        directory.write("baseline.json", baselineText(resultOf(std::move(known)), path()));
        auto result = resultOf(std::move(findings));
        Baseline::read(path()).apply(result);
        return result;
    }

    TemporaryDirectory directory;
};

// --- what it covers ---

TEST_F(BaselineTest, KnownFindingsAreLeftOut) {
    auto const result =
        apply({found(file("a"), 3, "m")}, {found(file("a"), 3, "m"), found(file("a"), 4, "n")});
    EXPECT_THAT(textsOf(result), ElementsAre(file("a") + ":4: n"));
    EXPECT_EQ(result.inBaseline, 1U);
    EXPECT_THAT(result.staleBaseline, IsEmpty());
}

TEST_F(BaselineTest, AFindingMayHaveMovedToAnotherLine) {
    auto const result = apply({found(file("a"), 3, "m")}, {found(file("a"), 30, "m")});
    EXPECT_THAT(result.findings, IsEmpty());
    EXPECT_EQ(result.inBaseline, 1U);
}

TEST_F(BaselineTest, FileRuleAndMessageMakeAFinding) {
    auto const known = found(file("a"), 3, "m");
    for (auto const& other : {found(file("b"), 3, "m"), found(file("a"), 3, "n"),
                              found(file("a"), 3, "m", RuleId::flagsCAndD), found("", 3, "m")}) {
        auto const result = apply({known}, {other});
        EXPECT_EQ(result.findings.size(), 1U);
        EXPECT_EQ(result.inBaseline, 0U);
        EXPECT_THAT(result.staleBaseline, ElementsAre("a:3: m [flag-unknown]"));
    }
}

TEST_F(BaselineTest, AnEntryCoversOneFinding) {
    auto const twice = {found(file("a"), 3, "m"), found(file("a"), 5, "m")};
    auto const thrice = {found(file("a"), 2, "m"), found(file("a"), 5, "m"),
                         found(file("a"), 7, "m")};
    auto const more = apply(twice, thrice);
    EXPECT_THAT(textsOf(more), ElementsAre(file("a") + ":7: m"));
    EXPECT_EQ(more.inBaseline, 2U);
    auto const fewer = apply(thrice, twice);
    EXPECT_THAT(fewer.findings, IsEmpty());
    EXPECT_THAT(fewer.staleBaseline, ElementsAre("a:7: m [flag-unknown]"));
}

TEST_F(BaselineTest, OfSeveralAlikeThoseInTheLinesOfTheEntriesAreKnown) {
    auto const result =
        apply({found(file("a"), 5, "m")},
              {found(file("a"), 2, "m"), found(file("a"), 5, "m"), found(file("a"), 9, "m")});
    EXPECT_THAT(textsOf(result), ElementsAre(file("a") + ":2: m", file("a") + ":9: m"));
}

TEST_F(BaselineTest, AFindingNeedsNoFile) {
    auto const result = apply({found("", 0, "m"), found("", 0, "n")}, {found("", 0, "m")});
    EXPECT_THAT(result.findings, IsEmpty());
    EXPECT_THAT(result.staleBaseline, ElementsAre("n [flag-unknown]"));
}

TEST_F(BaselineTest, NamesAndMessagesMayHoldAnyBytes) {
    auto const odd = found(file("a\xff\n"), 1, "m\xfe\x01\n\"");
    EXPECT_THAT(apply({odd}, {odd}).findings, IsEmpty());
    EXPECT_THAT(apply({odd}, {}).staleBaseline,
                ElementsAre("a\uFFFD\\x0a:1: m\uFFFD\\x01\\x0a\" [flag-unknown]"));
}

TEST_F(BaselineTest, CountsAndListsOfAResultGrow) {
    directory.write(
        "baseline.json",
        baselineText(resultOf({found(file("a"), 1, "m"), found(file("b"), 1, "m")}), path()));
    auto result = resultOf({found(file("a"), 1, "m")});
    result.inBaseline = 7;
    result.staleBaseline = {"former"};
    Baseline::read(path()).apply(result);
    EXPECT_EQ(result.inBaseline, 8U);
    EXPECT_THAT(result.staleBaseline, ElementsAre("former", "b:1: m [flag-unknown]"));
}

TEST_F(BaselineTest, WhatWasNotCheckedIsNotStale) {
    directory.write("sub/baseline.json",
                    baselineText(resultOf({found(file("a"), 1, "m"), found(file("b"), 1, "m"),
                                           found("", 0, "m", RuleId::fileUnreadable)}),
                                 file("sub/baseline.json")));
    std::vector<std::string> asked;
    auto result = resultOf({});
    Baseline::read(file("sub/baseline.json"))
        .apply(result, [&](Baseline::Entry const& entry, std::string const& opened) {
            asked.push_back(entry.rule + " " + entry.file + " " + opened);
            return opened == file("a");
        });
    EXPECT_THAT(asked, ElementsAre("file-unreadable  ", "flag-unknown ../a " + file("a"),
                                   "flag-unknown ../b " + file("b")));
    EXPECT_THAT(result.staleBaseline, ElementsAre("../a:1: m [flag-unknown]"));
}

TEST_F(BaselineTest, WhatLiesOutsideOfALinkedFolderIsFoundFromItsRealPlace) {
    directory.makeDirectory("deep/real");
    std::filesystem::create_directory_symlink(directory / "deep/real", directory / "link");
    directory.write("link/known",
                    baselineText(resultOf({found(file("a"), 1, "m")}), file("link/known")));
    std::vector<std::string> asked;
    auto result = resultOf({});
    Baseline::read(file("link/known"))
        .apply(result, [&](Baseline::Entry const& entry, std::string const& opened) {
            asked.push_back(entry.file + " " + opened);
            return true;
        });
    EXPECT_THAT(asked, ElementsAre("../../a " + file("a")));
}

// --- what it says ---

TEST_F(BaselineTest, IsSortedByPlace) {
    EXPECT_EQ(baselineText(resultOf({found(file("b"), 1, "m"), found(file("a"), 10, "m"),
                                     found(file("a"), 9, "n"), found(file("a"), 9, "m"),
                                     found(file("a"), 9, "z", RuleId::flagDWithoutC)}),
                           path()),
              R"({
  "schemaVersion": 1,
  "findings": [
    {
      "file": "a",
      "line": 9,
      "rule": "flag-d-without-c",
      "message": "z"
    },
    {
      "file": "a",
      "line": 9,
      "rule": "flag-unknown",
      "message": "m"
    },
    {
      "file": "a",
      "line": 9,
      "rule": "flag-unknown",
      "message": "n"
    },
    {
      "file": "a",
      "line": 10,
      "rule": "flag-unknown",
      "message": "m"
    },
    {
      "file": "b",
      "line": 1,
      "rule": "flag-unknown",
      "message": "m"
    }
  ]
}
)");
}

TEST_F(BaselineTest, OfNoFindingsIsEmpty) {
    EXPECT_EQ(baselineText(resultOf({}), path()),
              "{\n  \"schemaVersion\": 1,\n  \"findings\": []\n}\n");
    EXPECT_THAT(textsOf(apply({}, {found("a", 1, "m")})), ElementsAre("a:1: m"));
}

// --- paths ---

// The files of the entries of a baseline.
std::vector<std::string> filesIn(std::string const& text) {
    std::vector<std::string> files;
    auto const document = nlohmann::json::parse(text);
    for (auto const& entry : document.at("findings"))
        files.push_back(entry.at("file"));
    return files;
}

TEST_F(BaselineTest, FilesAreNamedFromItsFolderOn) {
    directory.makeDirectory("sub");
    WorkingFolder const working(directory.path());
    EXPECT_THAT(filesIn(baselineText(resultOf({found("x/f", 1, "m"), found("sub/../x/./f", 1, "m"),
                                               found(file("x/f"), 2, "m")}),
                                     "baseline.json")),
                ElementsAre("x/f", "x/f", "x/f"));
    EXPECT_THAT(filesIn(baselineText(resultOf({found("x/f", 1, "m"), found("sub/f", 2, "m")}),
                                     "sub/baseline.json")),
                ElementsAre("../x/f", "f"));
}

TEST_F(BaselineTest, HoldsFromEveryWorkingFolder) {
    directory.makeDirectory("device/profiles");
    directory.makeDirectory("ci");
    {
        WorkingFolder const working(directory.path());
        directory.write("ci/known",
                        baselineText(resultOf({found("device/profiles/f", 1, "m")}), "ci/known"));
    }
    for (auto const& [folder, name, baseline] :
         std::vector<std::array<std::string, 3>>{{"", "device/profiles/f", "ci/known"},
                                                 {"device", "profiles/f", "../ci/known"},
                                                 {"device/profiles", "f", file("ci/known")},
                                                 {"ci", file("device/profiles/f"), "known"}}) {
        WorkingFolder const working(directory / folder);
        auto result = resultOf({found(name, 1, "m")});
        Baseline::read(baseline).apply(result);
        EXPECT_THAT(result.findings, IsEmpty()) << folder;
    }
}

TEST_F(BaselineTest, HoldsWhenItsFolderIsReachedByALink) {
    directory.makeDirectory("real/profiles");
    std::filesystem::create_directory_symlink(directory / "real", directory / "link");
    directory.write("real/known", baselineText(resultOf({found(file("link/profiles/f"), 1, "m"),
                                                         found(file("real/profiles/g"), 1, "m")}),
                                               file("link/known")));
    auto result =
        resultOf({found(file("real/profiles/f"), 1, "m"), found(file("link/profiles/g"), 1, "m")});
    Baseline::read(file("real/known")).apply(result);
    EXPECT_THAT(result.findings, IsEmpty());
}

TEST_F(BaselineTest, ALinkBelowItsFolderKeepsItsName) {
    directory.makeDirectory("elsewhere");
    directory.makeDirectory("device");
    std::filesystem::create_directory_symlink(directory / "elsewhere",
                                              directory / "device/profiles");
    EXPECT_THAT(filesIn(baselineText(resultOf({found(file("device/profiles/f"), 1, "m")}),
                                     file("device/known"))),
                ElementsAre("profiles/f"));
}

// --- files that are no baselines ---

std::string whyNot(std::string const& path) {
    try {
        Baseline::read(path);
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "it was read";
}

TEST_F(BaselineTest, AFileThatCannotBeReadIsToldWithTheReason) {
    EXPECT_EQ(whyNot(path()), "cannot read baseline " + path() + ": No such file or directory");
    EXPECT_EQ(whyNot(directory.string()),
              "cannot read baseline " + directory.string() + ": Is a directory");
    EXPECT_EQ(whyNot("no\nne"), "cannot read baseline no\\x0ane: No such file or directory");
}

TEST_F(BaselineTest, WhatIsNoBaselineIsToldWithTheReason) {
    std::string const deep(100000, '[');
    std::string const start = R"({"schemaVersion": 1, "findings": [)";
    for (auto const& [text, why] : std::vector<std::pair<std::string, std::string>>{
             {"", "is no JSON document"},
             {"{", "is no JSON document"},
             {"{} {}", "is no JSON document"},
             {"\"\xff\"", "is no JSON document"},
             {deep, "is no JSON document"},
             {deep + std::string(deep.size(), ']'), "has no whole number 'schemaVersion'"},
             {"[1]", "has no whole number 'schemaVersion'"},
             {"{}", "has no whole number 'schemaVersion'"},
             {R"({"schemaVersion": "1"})", "has no whole number 'schemaVersion'"},
             {R"({"schemaVersion": 1.5})", "has no whole number 'schemaVersion'"},
             {R"({"schemaVersion": 2, "findings": []})", "has the version 2; only 1 can be read"},
             {R"({"schemaVersion": 1})", "has no list 'findings'"},
             {R"({"schemaVersion": 1, "findings": {}})", "has no list 'findings'"},
             {start + "1]}", "has no text 'file' in finding 1"},
             {start + R"({"file": "a", "rule": "b", "message": "c"}, {"file": "a", "rule": 1}]})",
              "has no text 'rule' in finding 2"},
             {start + R"({"file": "a", "rule": "b"}]})", "has no text 'message' in finding 1"}}) {
        directory.write("baseline.json", text);
        EXPECT_EQ(whyNot(path()), "baseline " + path() + " " + why) << text.substr(0, 100);
    }
}

TEST_F(BaselineTest, MembersThatAreNotKnownAndLinesThatDoNotFitArePassedOver) {
    directory.write("baseline.json", R"({"made": "by hand", "schemaVersion": 1, "findings": [
        {"file": "a", "rule": "b", "message": "c", "why": "d", "line": "x"},
        {"file": "a", "rule": "b", "message": "c", "line": -1},
        {"file": "a", "rule": "b", "message": "c", "line": 99999999999},
        {"file": "a", "rule": "b", "message": "c", "line": 7},
        {"file": "a", "rule": "b", "message": "c"}]})");
    std::vector<int> lines;
    auto const baseline = Baseline::read(path());
    for (auto const& entry : baseline.entries())
        lines.push_back(entry.line);
    EXPECT_THAT(lines, ElementsAre(0, 0, 0, 7, 0));
}

} // namespace
