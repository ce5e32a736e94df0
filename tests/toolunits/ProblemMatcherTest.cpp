// contrib/github-problem-matcher.json finds what kelda check --format concise prints.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include <nlohmann/json.hpp>

#include "CheckResults.h"
#include "check/CheckFormats.h"
#include "support/FileContent.h"

namespace {

using Json = nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

Json matchers() {
    auto const file =
        std::filesystem::path(KELDA_SOURCE_DIR) / "contrib/github-problem-matcher.json";
    return Json::parse(support::contentOf(file))["problemMatcher"];
}

// What an expression finds in a line: "owner|severity|file|line|column|code|message".
std::string found(Json const& matcher, std::smatch const& match) {
    auto const& pattern = matcher["pattern"][0];
    auto const group = [&](char const* name) {
        return pattern.contains(name) ? match[pattern[name].get<std::size_t>()].str() : "";
    };
    auto const severity =
        matcher.contains("severity") ? matcher["severity"].get<std::string>() : group("severity");
    std::string text = matcher["owner"];
    for (auto const& part :
         {severity, group("file"), group("line"), group("column"), group("code"), group("message")})
        text.append("|").append(part);
    return text;
}

// What all matchers find in a text.
std::vector<std::string> findingsIn(std::string const& text) {
    std::vector<std::string> findings;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        for (auto const& matcher : matchers()) {
            std::regex const expression(matcher["pattern"][0]["regexp"].get<std::string>());
            if (std::smatch match; std::regex_search(line, match, expression))
                findings.push_back(found(matcher, match));
        }
    return findings;
}

TEST(ProblemMatcher, FindsEachFindingOnce) {
    EXPECT_THAT(
        findingsIn(KeldaTool::checkConcise(toolunits::sampleResult())),
        ElementsAre("kelda|error|profiles/Fan|7|24|flag-unknown|Encountered unknown mount flag z",
                    "kelda|error|preinit/Slots|20|1|attribute-redefined|Redefining attribute for "
                    "slot/%x / Old Attribute: createOnStandby / New Attribute: createOnMount",
                    "kelda|error|profiles/Led|2|1|unknown-keyword|syntax error: 'MountGrop:leds'",
                    "kelda|error|kelda|||directory-unreadable|Cannot open directory profiles",
                    "kelda|warning|profiles/Old|||orphan-file|no agent loads this file",
                    "kelda-notes|notice|profiles/Led|5|8|alias-unused|alias 'led' is not used"));
}

TEST(ProblemMatcher, FindsPlacesWithoutAColumnAndNamesWithColons) {
    EXPECT_THAT(findingsIn("a: b:3: error: m: [n] [flag-unknown]\n"),
                ElementsAre("kelda|error|a: b|3||flag-unknown|m: [n]"));
}

TEST(ProblemMatcher, LeavesLinesOfOthersAlone) {
    EXPECT_THAT(findingsIn("main.cpp:3:4: error: expected ';'\n"
                           "main.cpp:3:4: warning: unused [-Wunused]\n"
                           "kelda: note: 2 faults in the files; see 'kelda check'\n"
                           "5 errors in 21 profiles and 4 preinit files\n"),
                IsEmpty());
}

TEST(ProblemMatcher, HasAnOwnerOfItsOwnForEachAndNumbersOfGroups) {
    auto const all = matchers();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_NE(all[0]["owner"], all[1]["owner"]);
    for (auto const& matcher : all) {
        auto const& pattern = matcher["pattern"][0];
        std::regex const expression(pattern["regexp"].get<std::string>());
        for (auto const& [name, group] : pattern.items())
            EXPECT_TRUE(name == "regexp" || group.get<unsigned>() <= expression.mark_count())
                << name;
    }
}

} // namespace
