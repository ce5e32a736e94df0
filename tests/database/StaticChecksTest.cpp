// All checks together, and what they say of files that are meant to be good.
#include <algorithm>

#include "CheckedDevice.h"
#include "database/findings/Rules.h"
#include "support/Corpus.h"

namespace {

using KeldaDatabase::DatabaseMountFileInfo;
using KeldaDatabase::Finding;
using KeldaDatabase::RuleId;
using KeldaDatabase::Severity;
using KeldaDatabase::staticFindings;
using support::CheckedDevice;
using support::FileTexts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// "Fan:3 rule-name" of each finding that is more than a note.
std::vector<std::string> warnings(KeldaDatabase::Device const& device) {
    std::vector<std::string> texts;
    for (auto const& finding : staticFindings(device))
        if (finding.severity != Severity::note)
            texts.push_back(fmt::format("{}:{} {}", device.files[finding.place.file].name,
                                        finding.place.line, ruleOf(finding.rule).name));
    return texts;
}

std::size_t countOf(KeldaDatabase::Device const& device, RuleId rule) {
    auto const findings = staticFindings(device);
    return static_cast<std::size_t>(std::ranges::count(findings, rule, &Finding::rule));
}

TEST(StaticFindings, ComeCheckByCheck) {
    CheckedDevice device({{"preinit/P", "a,T\na,U\nA,T\nb,T\n"},
                          {"profiles/1", "agentName:X-%s\nalias:%s=1\nInclude:n*\na,U,r\na,T,r\n"
                                         "MountGroup:g\n"},
                          {"profiles/2", "agentName:X-1\n"},
                          {"profiles/3", "# nothing\n"}});
    std::vector<std::string> names;
    for (auto const& finding : staticFindings(device.loaded()))
        names.emplace_back(ruleOf(finding.rule).name);
    EXPECT_THAT(names, ElementsAre("agent-matched-twice", "orphan-file", "include-matches-nothing",
                                   "alias-unused", "alias-redefined", "path-mounted-twice",
                                   "type-column-differs", "group-empty", "preinit-type-redefined",
                                   "preinit-never-mounted", "preinit-never-mounted",
                                   "read-never-written", "names-differ-in-case"));
}

TEST(StaticFindings, BelongToTheParsersFindingsOnRequest) {
    CheckedDevice device(FileTexts{{"profiles/A", "agentName:A\nalias:%a=1\n"}});
    EXPECT_THAT(device.parser().findings(), IsEmpty());
    device.parser().staticCheckIs(true);
    EXPECT_THAT(device.parser().findings(), SizeIs(1));
}

// Each of the four shows something on purpose; its comment says what.
TEST(StaticFindings, OfTheExampleDeviceAreWhatItShowsOnPurpose) {
    support::CleanEnvironment const environment;
    std::string const root = KELDA_SOURCE_DIR "/examples/device";
    DatabaseMountFileInfo parser(root + "/preinit", root + "/profiles");
    EXPECT_THAT(warnings(parser.device()),
                ElementsAre("Thermal:15 include-matches-nothing", "LinkReporter:16 alias-redefined",
                            "System:11 preinit-type-redefined"));
}

// The corpus declares twenty paths twice: as a directory and then as what they are.
TEST(StaticFindings, OfTheOpenConfigCorpusAreItsTwoTypesForAPath) {
    SKIP_WITHOUT_CORPUS();
    support::CleanEnvironment const environment;
    auto const root = support::corpusDir("openconfig").string();
    DatabaseMountFileInfo parser(root + "/preinit", root + "/profiles");
    auto const found = warnings(parser.device());
    EXPECT_EQ(found.size(), 20U);
    EXPECT_TRUE(std::ranges::all_of(found, [](std::string const& text) {
        return text.ends_with(" preinit-type-redefined");
    })) << testing::PrintToString(found);
    EXPECT_EQ(countOf(parser.device(), RuleId::readNeverWritten), 5U);
    EXPECT_EQ(countOf(parser.device(), RuleId::preinitNeverMounted), 288U);
}

} // namespace
