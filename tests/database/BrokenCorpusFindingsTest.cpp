// Devices in which one thing is broken: exactly one error is found, at its line and under its name.
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "database/DatabaseMountFileInfo.h"
#include "database/findings/SourceText.h"
#include "support/CleanEnvironment.h"
#include "support/Corpus.h"
#include "support/TemporaryDirectory.h"

namespace {

using KeldaDatabase::DatabaseMountFileInfo;
using KeldaDatabase::Severity;

std::map<std::string, std::string> const ruleOfCase = {
    {"preinit/01-token-needs-createOnMount", "token-needs-create-on-mount"},
    {"preinit/02-token-with-createOnStandby", "token-needs-create-on-mount"},
    {"preinit/03-config-with-token", "token-needs-create-on-mount"},
    {"preinit/04-config-with-cell-token", "config-path-with-token"},
    {"preinit/05-config-createOnMount", "config-create-on-mount"},
    {"preinit/06-unknown-attribute", "attribute-unknown"},
    {"preinit/07-empty-attribute", "attribute-unknown"},
    {"preinit/08-extra-field", "attribute-unknown"},
    {"preinit/09-missing-type", "preinit-syntax"},
    {"preinit/10-two-attributes", "attribute-redefined"},
    {"preinit/11-two-files", "attribute-redefined"},
    {"preinit/12-long-line", "line-too-long"},
    {"preinit/13-comment-continued", "comment-continued"},
    {"preinit/14-text-after-backslash", "text-after-backslash"},
    {"preinit/15-cellPath-spelled-out", "attribute-redefined"},
    {"preinit/16-unknown-token", "token-needs-create-on-mount"},
    {"profiles/01-type-not-declared", "path-without-type"},
    {"profiles/02-absolute-path", "path-without-type"},
    {"profiles/03-unknown-flag", "flag-unknown"},
    {"profiles/04-flags-c-and-D", "flags-c-and-d"},
    {"profiles/05-flag-d-without-c", "flag-d-without-c"},
    {"profiles/06-missing-flags", "unknown-keyword"},
    {"profiles/07-extra-field", "flag-unknown"},
    {"profiles/08-unbound-token", "alias-undefined"},
    {"profiles/09-text-after-backslash", "text-after-backslash"},
    {"profiles/10-comment-continued", "comment-continued"},
    {"profiles/11-long-line", "line-too-long"},
    {"profiles/12-alias-without-value", "unknown-keyword"},
    {"profiles/13-alias-name-without-percent", "alias-name-invalid"},
    {"profiles/14-alias-name-with-digit", "alias-name-invalid"},
    {"profiles/15-alias-of-unbound-token", "alias-undefined"},
    {"profiles/16-alias-choice-without-else", "alias-choice-incomplete"},
    {"profiles/17-unknown-keyword", "unknown-keyword"},
    {"profiles/18-unknown-word", "text-after-keyword"},
    {"profiles/19-rootFlags-letter", "flag-unknown"},
    {"profiles/20-connectionFlags-letter", "connection-flag-unknown"},
    {"profiles/21-matchActiveName-alone", "match-active-name-alone"},
    {"profiles/22-group-default", "group-name-reserved"},
    {"profiles/23-group-all", "group-name-reserved"},
    {"profiles/24-priority-0", "group-priority-range"},
    {"profiles/25-priority-100", "group-priority-range"},
    {"profiles/26-priority-word", "group-priority-range"},
    {"profiles/27-include-nothing", "include-not-found"},
    {"profiles/28-subAgent-unbound", "alias-undefined"},
    {"profiles/29-active-and-condition", "condition-with-active-mount"},
    {"profiles/30-active-and-blocker", "condition-with-active-mount"},
    {"profiles/31-matchActiveName-rest-token", "match-active-name-with-rest"},
    {"profiles/32-included-alias", "not-allowed-in-include"},
    {"profiles/33-included-group", "not-allowed-in-include"},
    {"profiles/34-included-include", "not-allowed-in-include"},
    {"profiles/35-included-condition", "not-allowed-in-include"},
    {"profiles/36-included-bad-flags", "flags-c-and-d"},
    {"profiles/37-include-of-a-profile", "not-allowed-in-include"},
    {"profiles/38-condition-and-included-active", "condition-with-active-mount"},
    {"profiles/39-default-agentName", "unknown-keyword"},
    {"profiles/40-default-unbound-token", "alias-undefined"},
    {"profiles/41-per-agent-agentName", "unknown-keyword"},
    {"profiles/42-per-agent-unbound-token", "alias-undefined"},
};

// One row of the corpus: where the fault is, as an editor counts lines.
struct BrokenCase {
    std::string directory;
    bool isPreinit;
    std::string file;
    std::string line;

    std::string expected() const { return file + ":" + line + ": " + ruleOfCase.at(directory); }
};

std::vector<BrokenCase> brokenCases() {
    std::vector<BrokenCase> rows;
    for (auto const& line : support::significantLines(support::corpusDir("broken") / "INDEX.csv")) {
        auto const fields = support::fieldsOf(line);
        if (fields.at(0) != "case") // the line of titles
            rows.push_back({fields.at(0), fields.at(1) == "preinit", fields.at(3), fields.at(4)});
    }
    return rows;
}

class BrokenCorpusFindings : public testing::Test {
  protected:
    void SetUp() override { SKIP_WITHOUT_CORPUS(); }

    // Every error as "FILE:LINE: RULE".
    std::string errorsOf(BrokenCase const& row, bool staticChecks) {
        auto const broken = support::corpusDir("broken");
        DatabaseMountFileInfo parser(
            (broken / (row.isPreinit ? row.directory : "base/preinit")).string(),
            row.isPreinit ? noProfiles.string() : (broken / row.directory).string());
        parser.staticCheckIs(staticChecks);
        KeldaDatabase::SourceTexts texts;
        std::string errors;
        for (auto const& finding : parser.findings()) {
            if (finding.severity != Severity::error)
                continue;
            auto const& text = texts.of(parser.device().pathOf(finding.place));
            errors += (errors.empty() ? "" : "\n") +
                      parser.device().files.at(finding.place.file).name + ":" +
                      std::to_string(text.editorLine(finding.place.line)) + ": " +
                      std::string(ruleOf(finding.rule).name);
        }
        return errors;
    }

    support::CleanEnvironment environment;
    support::TemporaryDirectory noProfiles;
};

TEST_F(BrokenCorpusFindings, EveryCaseIsInTheTable) {
    EXPECT_EQ(brokenCases().size(), ruleOfCase.size());
}

TEST_F(BrokenCorpusFindings, ThereIsExactlyOneErrorAndItIsWhereTheFaultIs) {
    for (auto const& row : brokenCases())
        EXPECT_EQ(errorsOf(row, false), row.expected()) << row.directory;
}

TEST_F(BrokenCorpusFindings, FurtherChecksAddNoErrors) {
    for (auto const& row : brokenCases())
        EXPECT_EQ(errorsOf(row, true), row.expected()) << row.directory;
}

} // namespace
