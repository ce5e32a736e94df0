// The table of rules: complete, and every example has what it is an example of.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <sys/stat.h>

#include "database/DatabaseMountFileInfo.h"
#include "database/findings/Rules.h"
#include "database/findings/RulesManual.h"
#include "database/findings/Suppressions.h"
#include "support/CleanEnvironment.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryDirectory.h"

namespace {

using namespace KeldaDatabase;
using support::EnvironmentVariable;
using support::TemporaryDirectory;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

std::vector<Rule const*> rulesWithExamples() {
    std::vector<Rule const*> rules;
    for (auto const& rule : allRules())
        if (!rule.failing.empty())
            rules.push_back(&rule);
    return rules;
}

// A device in a temporary directory; what is found in it, told by the rules' names.
class ExampleDevice {
  public:
    ExampleDevice() {
        directory.makeDirectory("preinit");
        directory.makeDirectory("profiles");
    }
    explicit ExampleDevice(std::string_view example) : ExampleDevice() {
        for (auto const& [name, text] : filesOf(example))
            directory.write(name, text);
    }

    std::vector<Finding> findings() const {
        DatabaseMountFileInfo parser((directory / "preinit").string(),
                                     (directory / "profiles").string());
        parser.staticCheckIs(true);
        return suppress(parser.device(), parser.findings()).findings;
    }
    std::vector<std::string> found() const {
        std::vector<std::string> names;
        for (auto const& finding : findings())
            names.emplace_back(ruleOf(finding.rule).name);
        return names;
    }
    std::vector<std::string> errors() const {
        std::vector<std::string> names;
        for (auto const& finding : findings())
            if (finding.severity == Severity::error)
                names.emplace_back(ruleOf(finding.rule).name);
        return names;
    }

    TemporaryDirectory const directory;

  private:
    support::CleanEnvironment environment_;
};

// --- the table ---

TEST(Rules, AreFoundByTheirNumberAndByTheirName) {
    for (auto const& rule : allRules()) {
        EXPECT_EQ(&ruleOf(rule.id), &rule) << rule.name;
        EXPECT_EQ(ruleNamed(rule.name), &rule) << rule.name;
    }
    EXPECT_EQ(ruleOf(RuleId::flagUnknown).name, "flag-unknown");
    EXPECT_EQ(ruleNamed("no-such-rule"), nullptr);
    EXPECT_EQ(ruleNamed(""), nullptr);
}

TEST(Rules, HaveNamesInKebabCaseNoneOfThemTwice) {
    std::set<std::string_view> names;
    for (auto const& rule : allRules()) {
        EXPECT_THAT(std::string(rule.name), testing::MatchesRegex("[a-z]+(-[a-z]+)*"));
        EXPECT_TRUE(names.insert(rule.name).second) << rule.name;
    }
}

TEST(Rules, HaveASummaryInOneLineWithoutAFullStop) {
    for (auto const& rule : allRules()) {
        ASSERT_FALSE(rule.summary.empty()) << rule.name;
        EXPECT_NE(rule.summary.back(), '.') << rule.name;
        EXPECT_EQ(rule.summary.find('\n'), std::string_view::npos) << rule.name;
        EXPECT_LE(rule.summary.size(), 80U) << rule.name;
    }
}

TEST(Rules, AreExplainedInParagraphsOfWholeSentences) {
    for (auto const& rule : allRules()) {
        std::string const text(rule.explanation);
        EXPECT_GT(text.size(), 100U) << rule.name;
        EXPECT_TRUE(text.ends_with('.') || text.ends_with(".)")) << rule.name;
        EXPECT_EQ(text.find("\n\n\n"), std::string::npos) << rule.name;
    }
}

TEST(Rules, OfLoadingAreErrorsAndTheOthersAreNone) {
    for (auto const& rule : allRules())
        EXPECT_EQ(rule.severity == Severity::error, rule.id < RuleId::agentMatchedTwice)
            << rule.name;
}

TEST(Rules, HaveBothExamplesUnlessNoTextCanShowThem) {
    std::vector<std::string> without;
    for (auto const& rule : allRules()) {
        EXPECT_EQ(rule.failing.empty(), rule.passing.empty()) << rule.name;
        if (rule.failing.empty())
            without.emplace_back(rule.name);
    }
    EXPECT_THAT(without, ElementsAre("directory-unreadable", "file-unreadable",
                                     "extra-preinit-unreadable", "nul-character", "other-fault"));
}

TEST(Rules, HaveSeveritiesWithNames) {
    EXPECT_EQ(nameOf(Severity::note), "note");
    EXPECT_EQ(nameOf(Severity::warning), "warning");
    EXPECT_EQ(nameOf(Severity::error), "error");
}

// --- examples ---

TEST(RuleExamples, ConsistOfFilesOfBothFamilies) {
    for (auto const* const rule : rulesWithExamples())
        for (auto const example : {rule->failing, rule->passing}) {
            EXPECT_TRUE(example.starts_with("== ")) << rule->name;
            EXPECT_TRUE(example.ends_with('\n')) << rule->name;
            for (auto const& [name, text] : filesOf(example)) {
                EXPECT_THAT(name, testing::MatchesRegex("(preinit|profiles)/[A-Za-z.]+"));
                EXPECT_NE(text, "") << rule->name << ": " << name;
            }
        }
}

TEST(RuleExamples, AreTakenApartIntoFiles) {
    auto const files = filesOf("nobody's\n== preinit/P\na,T\n\nb,T\n== profiles/A\n=== not one\n"
                               "== profiles/Empty\n== profiles/B\nno line end");
    ASSERT_EQ(files.size(), 4U);
    EXPECT_EQ(files[0].name, "preinit/P");
    EXPECT_EQ(files[0].text, "a,T\n\nb,T\n");
    EXPECT_EQ(files[1].name, "profiles/A");
    EXPECT_EQ(files[1].text, "=== not one\n");
    EXPECT_EQ(files[2].name, "profiles/Empty");
    EXPECT_EQ(files[2].text, "");
    EXPECT_EQ(files[3].name, "profiles/B");
    EXPECT_EQ(files[3].text, "no line end");
    EXPECT_THAT(filesOf(""), IsEmpty());
    EXPECT_THAT(filesOf("== profiles/A"), testing::SizeIs(1));
}

TEST(RuleExamples, MayRepeatACharacter) {
    auto const textOf = [](std::string const& text) {
        return filesOf("== profiles/A\n" + text).at(0).text;
    };
    EXPECT_EQ(textOf("a{3*x}b{0*y}c{2**}"), "axxxbc**");
    EXPECT_EQ(textOf("{1100*x}").size(), 1100U);
    for (std::string const text : {"{", "{}", "{3}", "{3*}", "{3*x", "{*x}", "{x*3}", "{-1*x}",
                                   "{3*xy}", "{99999999999999999999999*x}"})
        EXPECT_EQ(textOf(text), text);
}

std::vector<std::string> namesOfRulesWithExamples() {
    std::vector<std::string> names;
    for (auto const* const rule : rulesWithExamples())
        names.emplace_back(rule->name);
    return names;
}

class Examples : public testing::TestWithParam<std::string> {};

TEST_P(Examples, TheFailingOneHasTheFindingAndNoOtherError) {
    auto const& name = GetParam();
    ExampleDevice const device(ruleNamed(name)->failing);
    EXPECT_THAT(device.found(), Contains(name));
    EXPECT_THAT(device.errors(), Each(name));
}

TEST_P(Examples, ThePassingOneHasNoFindingAndNoError) {
    ExampleDevice const device(ruleNamed(GetParam())->passing);
    EXPECT_THAT(device.found(), Not(Contains(GetParam())));
    EXPECT_THAT(device.errors(), IsEmpty());
}

std::string nameInCamelCase(testing::TestParamInfo<std::string> const& info) {
    std::string name;
    bool upper = true;
    for (char const c : info.param) {
        if (c != '-')
            name += upper ? static_cast<char>(c - 'a' + 'A') : c;
        upper = c == '-';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Of, Examples, testing::ValuesIn(namesOfRulesWithExamples()),
                         nameInCamelCase);

// --- what no text can show ---

TEST(RulesWithoutExamples, AFolderThatIsNotThereIsUnreadable) {
    ExampleDevice const device;
    std::filesystem::remove(device.directory / "profiles");
    EXPECT_THAT(device.found(), Contains("directory-unreadable"));
    EXPECT_THAT(device.errors(), Each("directory-unreadable"));
}

TEST(RulesWithoutExamples, APipeIsAnUnreadableFile) {
    ExampleDevice const device("== preinit/P\na, T\n");
    ASSERT_EQ(mkfifo((device.directory / "profiles/Pipe").c_str(), 0600), 0);
    EXPECT_THAT(device.found(), Contains("file-unreadable"));
    EXPECT_THAT(device.errors(), Each("file-unreadable"));
}

TEST(RulesWithoutExamples, AnExtraPreinitThatIsNotThereIsUnreadable) {
    ExampleDevice const device("== preinit/P\na, T\n");
    EnvironmentVariable const extra("KELDA_EXTRA_PREINIT_PATH", "/nonexistent");
    EXPECT_THAT(device.errors(), ElementsAre("extra-preinit-unreadable"));
}

TEST(RulesWithoutExamples, ANulIsAFault) {
    using namespace std::string_literals;
    ExampleDevice const device;
    device.directory.write("preinit/P", "a, T\0x\n"s);
    EXPECT_THAT(device.errors(), ElementsAre("nul-character"));
}

// --- the manual page ---

TEST(RulesManual, BeginsWithTheTitleAndNamesTheOtherPages) {
    auto const page = rulesManual();
    EXPECT_TRUE(page.starts_with("kelda-rules(7) \"KeldaBase\" "));
    EXPECT_TRUE(
        page.ends_with("# SEE ALSO\n\n*kelda*(1), *kelda-preinit*(5), *kelda-profile*(5)\n"));
}

TEST(RulesManual, HasASectionForEachRuleInTheOrderOfTheTable) {
    auto const page = rulesManual();
    std::size_t last = 0;
    for (auto const& rule : allRules()) {
        auto const at = page.find("\n## " + std::string(rule.name) + "\n\n*" +
                                  std::string(nameOf(rule.severity)) + "*: ");
        ASSERT_NE(at, std::string::npos) << rule.name;
        EXPECT_GT(at, last) << rule.name;
        last = at;
    }
}

TEST(RulesManual, ShowsMarkupAsText) {
    auto const page = rulesManual();
    EXPECT_NE(page.find("KELDA\\_EXTRA\\_PREINIT\\_PATH lists"), std::string::npos);
    EXPECT_NE(page.find("with a \"\\*\" in the place"), std::string::npos);
    // Examples are shown as they are, but for backslashes.
    EXPECT_NE(page.find("```\n== preinit/System\nsys/clock, \\\\\n"), std::string::npos);
}

TEST(RulesManual, HoldsTheExamplesAsLiteralBlocks) {
    auto const page = rulesManual();
    for (auto const* const rule : rulesWithExamples())
        for (auto const example : {rule->failing, rule->passing}) {
            if (example.find('\\') != std::string_view::npos)
                continue;
            EXPECT_NE(page.find("\n```\n" + std::string(example) + "```\n"), std::string::npos)
                << rule->name;
        }
}

} // namespace
